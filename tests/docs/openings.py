#!/usr/bin/env python3
"""Whether the page of every class and record, and of every family of functions, opens with the same paragraphs.

usage: openings.py HTML_FOLDER
"""
import glob
import os
import re
import sys

EXPECTED = ['Purpose', 'Example', 'Ownership', 'Threads', 'Cost', 'Failure']


def is_page_of_one(path):
    """Of one class, record or namespace: there are lists of them under similar names, too."""
    with open(path, encoding='utf-8') as file:
        return 'group__' in path or re.search(r'<div class="title">.* Reference', file.read())


def main():
    pages = [path for kind in ('class', 'struct', 'namespace', 'group__runtime')
             for path in glob.glob(os.path.join(sys.argv[1], kind + '*.html'))
             if not path.endswith('-members.html') and is_page_of_one(path)]
    wrong = 0
    for path in pages:
        with open(path, encoding='utf-8') as file:
            titles = re.findall(r'<dl class="section user"><dt>(.*?)</dt>', file.read())[:len(EXPECTED)]
        if titles != EXPECTED:
            wrong += 1
            print(f'{os.path.basename(path)} opens with {", ".join(titles) or "no such paragraphs"}')
    print(f'{len(pages)} pages, {wrong} of them open otherwise than with "@par" {", ".join(EXPECTED)}')
    sys.exit(wrong > 0 or not pages)


main()

#!/usr/bin/env python3
"""Whether the page of every class and record, and of every family of functions, opens as readers expect.

A page opens with one sentence that says what the class is for, and shows an example; a record may leave that to the
class it is used with. What more there is to say of ownership, threads, cost and failure stands below headings of these
names, in this order; a page without anything unusual to say has none of them.

usage: openings.py HTML_FOLDER
"""
import glob
import os
import re
import sys

HEADINGS = ['Example', 'Ownership', 'Threads', 'Cost', 'Failure']


def is_page_of_one(path, page):
    """Of one class, record or namespace: there are lists of them under similar names, too."""
    return 'group__' in path or re.search(r'<div class="title">.* Reference', page)


def complaints(path, page):
    own = page.split('<h2 class="groupheader">Member Function Documentation</h2>')[0]
    titles = [title for title in re.findall(r'<dl class="section user"><dt>(.*?)</dt>', own)]
    opening = [title for title in titles if title in HEADINGS]
    if not re.search(r'<p ?>\s*\w', own):
        yield 'does not say what it is for'
    if 'Purpose' in titles:
        yield 'has a heading "Purpose": its first sentence says that'
    if opening != sorted(set(opening), key=HEADINGS.index):
        yield f'has its headings in another order: {", ".join(opening)}'
    if 'Example' not in opening and not os.path.basename(path).startswith('struct'):
        yield 'shows no example'


def main():
    count = wrong = 0
    for kind in ('class', 'struct', 'namespace', 'group__runtime'):
        for path in sorted(glob.glob(os.path.join(sys.argv[1], kind + '*.html'))):
            with open(path, encoding='utf-8') as file:
                page = file.read()
            if path.endswith('-members.html') or not is_page_of_one(path, page):
                continue
            count += 1
            for complaint in complaints(path, page):
                wrong += 1
                print(f'{os.path.basename(path)} {complaint}')
    print(f'{count} pages; the headings are {", ".join(HEADINGS)}')
    sys.exit(wrong > 0 or not count)


main()

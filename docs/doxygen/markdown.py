#!/usr/bin/env python3
"""Filter of Doxygen for Markdown pages: usage: markdown.py SOURCE_FOLDER PAGE.md

The pages are written for a browser of the repository. This makes their links work among the pages of Doxygen as well:
headings get the anchors that such a browser gives them, links to pages, headings and headers become references, and
links to other files of the repository become plain text.
"""
import os
import re
import sys

root, page = (os.path.realpath(path) for path in sys.argv[1:3])


def label_of(path):
    """Label of the page of a Markdown file."""
    relative = os.path.relpath(path, root)
    return 'mainpage' if relative == 'README.md' else 'page_' + re.sub(r'\W', '_', relative[:-len('.md')]).lower()


def anchor_of(heading):
    """The anchor that browsers of repositories give to a heading."""
    text = re.sub(r'\[([^]]*)\]\([^)]*\)', r'\1', heading).replace('`', '').strip().lower()
    return re.sub(r'[^\w\- ]', '', text).replace(' ', '-')


def page_of_header(name):
    """The class of a header's name has a page of its own; other headers are pages themselves."""
    stem = name[:-len('.h')]
    with open(os.path.join(root, 'include', name), encoding='utf-8') as file:
        declared = re.search(r'^(?:class|namespace) (?:QEL_API )?' + stem + r'$', file.read(), re.MULTILINE)
    return stem if declared else name


def rewrite_link(match):
    image, text, target = match.groups()
    if re.match(r'[a-z]+:', target):
        return match.group()
    path, _, anchor = target.partition('#')
    path = os.path.normpath(os.path.join(os.path.dirname(page), path)) if path else page
    if image:
        return f'![{text}]({os.path.basename(path)})'
    if path.endswith('.md'):
        return f'[{text}](@ref {label_of(path)}{"_" + anchor if anchor else ""})'
    if os.path.dirname(path) == os.path.join(root, 'include') and path.endswith('.h'):
        return f'[{text}](@ref {page_of_header(os.path.basename(path))})'
    return text


def rewrite(lines):
    fence = None
    titled = False
    for line in lines:
        if fence is not None:
            fence = None if line.strip() == fence else fence
        elif match := re.match(r'\s*(```+|~~~+)', line):
            fence = match[1]
        elif match := re.match(r'(#+) (.+?)\s*#*$', line):
            label = f'{label_of(page)}_{anchor_of(match[2])}' if titled else label_of(page)
            titled = True
            line = f'{match[1]} {match[2]} {{#{label}}}\n'
        elif not line.startswith('    '):
            line = re.sub(r'(!?)\[((?:[^][]|\[[^]]*\])*)\]\(([^)\s]+)\)', rewrite_link, line)
        yield line


with open(page, encoding='utf-8') as file:
    sys.stdout.reconfigure(encoding='utf-8', newline='\n')
    sys.stdout.writelines(rewrite(file))

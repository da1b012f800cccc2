#!/usr/bin/env python3
"""Whether every link in the Markdown pages and in the pages of Doxygen leads somewhere, and every page has its group.

usage: links.py SOURCE_FOLDER HTML_FOLDER
"""
import glob
import html.parser
import os
import re
import sys
import urllib.parse

sys.path.insert(0, os.path.join(sys.argv[1], 'docs', 'doxygen'))
import markdown_filter  # noqa: E402


class MarkdownPage:
    def __init__(self, path):
        self.links = []     # (line, target)
        self.anchors = set()
        taken = {}
        with open(path, encoding='utf-8') as file:
            for number, (kind, line) in enumerate(markdown_filter.classify(file), 1):
                if kind == 'heading':
                    self.anchors.add(markdown_filter.anchor_of(line.lstrip('#'), taken))
                if kind != 'code':
                    line = markdown_filter.CODE_SPAN.sub('code', line)
                    self.links += [(number, match[3]) for match in markdown_filter.LINK.finditer(line)]


class HtmlPage(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.links = []
        self.anchors = set()
        with open(path, encoding='utf-8') as file:
            self.feed(file.read())

    def handle_starttag(self, tag, attrs):
        attrs = dict(attrs)
        self.anchors.update(value for key, value in attrs.items() if key == 'id' or (tag == 'a' and key == 'name'))
        for key in ('href', 'src'):
            if attrs.get(key):
                self.links.append((self.getpos()[0], attrs[key]))


class ScriptOfNavigation:
    """The tree beside the pages is made of lists in scripts."""

    def __init__(self, path):
        self.anchors = set()
        with open(path, encoding='utf-8') as file:
            self.links = [(number, link) for number, line in enumerate(file, 1)
                          for link in re.findall(r'"([\w-]+\.html(?:#\w+)?)"', line)]


def dead_links(pages):
    for path, page in pages.items():
        for line, target in page.links:
            if re.match(r'[a-z]+:|//', target):
                continue
            file, _, anchor = urllib.parse.unquote(target).partition('#')
            file = os.path.normpath(os.path.join(os.path.dirname(path), file)) if file else path
            if not os.path.exists(file):
                yield f'{path}:{line}: there is no {target}'
            elif anchor and file in pages and anchor not in pages[file].anchors:
                yield f'{path}:{line}: {os.path.basename(file)} has no anchor "{anchor}"'


def ungrouped(source, built):
    """Pages that would stand in the navigation beside the groups of pages."""
    with open(os.path.join(source, 'docs', 'doxygen', 'groups.dox'), encoding='utf-8') as file:
        grouped = set(re.findall(r'@subpage (\w+)', file.read()))
    for path in glob.glob(os.path.join(built, 'page_*.html')):
        label = os.path.basename(path)[:-len('.html')]
        if label not in grouped:
            yield f'{path} belongs to none of the groups in docs/doxygen/groups.dox'


def main():
    source, built = sys.argv[1:]
    pages = {path: MarkdownPage(path)
             for pattern in ('*.md', 'docs/*.md') for path in glob.glob(os.path.join(source, pattern))}
    pages |= {path: HtmlPage(path) for path in glob.glob(os.path.join(built, '*.html'))}
    pages |= {path: ScriptOfNavigation(path) for path in glob.glob(os.path.join(built, '*.js'))}
    if os.path.join(built, 'index.html') not in pages:
        sys.exit(f'there are no pages in {built}')
    dead = list(dead_links(pages))
    lonely = list(ungrouped(source, built))
    print('\n'.join(dead + lonely))
    print('%d links in %d pages, %d of them dead' % (sum(len(p.links) for p in pages.values()), len(pages), len(dead)))
    sys.exit(bool(dead or lonely))


main()

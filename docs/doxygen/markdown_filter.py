#!/usr/bin/env python3
"""Filter of Doxygen for Markdown pages; usage: markdown_filter.py SOURCE_FOLDER PAGE.md

The pages are written for a browser of the repository. This makes their links work among the pages of Doxygen as well:
headings get the anchors that such a browser gives them, links to the pages for users (cmake/Pages.cmake), to headings
and to headers become references, and links to other files of the repository become plain text. Code within a line
becomes HTML, in which the names of classes are links. Of README.md, what is for those who have the repository is left
out.
"""
import os
import re
import sys

LINK = re.compile(r'(!?)\[((?:[^][]|\[[^]]*\])*)\]\(([^)\s]+)\)')
END_OF_FIRST_PAGE = '<!-- For those who have the repository'
WHERE_TO_GO_ON = ('All guides: @ref first_steps, @ref installation, @ref guides, @ref facts. The terms of what is '
                  'inside the DLL: <code>THIRD-PARTY-NOTICES.md</code>, in the package.\n')
CODE_SPAN = re.compile(r'(?<!`)(`+)(?!`)(.+?)(?<!`)\1(?!`)')


def anchor_of(heading, taken):
    """The anchor that browsers of repositories give to a heading; `taken` counts those of the page so far."""
    text = LINK.sub(r'\2', heading).replace('`', '').strip().lower()
    anchor = re.sub(r'[^\w\- ]', '', text).replace(' ', '-')
    taken[anchor] = taken.get(anchor, -1) + 1
    return f'{anchor}-{taken[anchor]}' if taken[anchor] else anchor


def classify(lines):
    """Each line with what it is: 'heading', 'code' or 'text'."""
    fence = None
    for line in lines:
        if fence is not None:
            yield 'code', line
            fence = None if line.strip() == fence else fence
        elif match := re.match(r'\s*(```+|~~~+)', line):
            fence = match[1]
            yield 'code', line
        elif re.match(r'#+ ', line):
            yield 'heading', line
        else:
            yield 'code' if line.startswith('    ') else 'text', line


def pages_for_users(root):
    """Paths of the pages that the pages of Doxygen are made of."""
    with open(os.path.join(root, 'cmake', 'Pages.cmake'), encoding='utf-8') as file:
        return {os.path.join(root, name) for name in ['README.md', *re.findall(r'\S+\.md', file.read())]}


class Page:
    def __init__(self, root, path):
        self.root = root
        self.path = path
        self.others = pages_for_users(root)

    def label(self, path, anchor=''):
        """Name of a page, or of a heading in it, for Doxygen."""
        relative = os.path.relpath(path, self.root)
        page = 'mainpage' if relative == 'README.md' else 'page_' + re.sub(r'\W', '_', relative[:-len('.md')]).lower()
        return f'{page}_{anchor}' if anchor else page

    def page_of_header(self, path):
        """A class that is named like its header has the better page."""
        stem = os.path.basename(path)[:-len('.h')]
        with open(path, encoding='utf-8') as file:
            has_class = re.search(rf'^(?:class|namespace) (?:QEL_API )?{stem}$', file.read(), re.MULTILINE)
        return stem if has_class else stem + '.h'

    def rewrite_link(self, match):
        image, text, target = match.groups()
        # Doxygen would show the tags.
        text = re.sub(r'</?code>', '', text)
        if re.match(r'[a-z]+:', target):
            return match.group()
        path, _, anchor = target.partition('#')
        path = os.path.normpath(os.path.join(os.path.dirname(self.path), path)) if path else self.path
        if image:
            return f'![{text}]({os.path.basename(path)})'
        if path in self.others:
            return f'[{text}](@ref {self.label(path, anchor)})'
        if os.path.dirname(path) == os.path.join(self.root, 'include') and path.endswith('.h') and os.path.exists(path):
            return f'[{text}](@ref {self.page_of_header(path)})'
        return text

    def rewrite_text(self, line):
        line = LINK.sub(self.rewrite_link, CODE_SPAN.sub(self.rewrite_code, line))
        # Doxygen misses the end behind a tag.
        return re.sub(r'(?<!\\)\*\*(.+?)\*\*', r'<b>\1</b>', line)

    @staticmethod
    def rewrite_code(match):
        code = match[2].replace('&', '&amp;').replace('<', '&lt;').replace('>', '&gt;')
        code = re.sub(r'\\(?!\|)|[*_@#%$"`]|--', r'\\\g<0>', code)
        return f'<code>{code.strip()}</code>'

    def rewrite(self, lines):
        taken = {}
        for kind, line in classify(lines):
            if line.startswith(END_OF_FIRST_PAGE):
                yield WHERE_TO_GO_ON
                return
            if kind == 'heading':
                marks, text = re.match(r'(#+) (.+?)\s*#*$', line).groups()
                anchor = anchor_of(text, taken)
                if len(marks) == 1:
                    line = f'{marks} {text} {{#{self.label(self.path)}}}\n'
                elif self.label(self.path) == 'mainpage':
                    # A plain anchor: the headings of the first page are no part of the navigation.
                    line = f'@anchor {self.label(self.path, anchor)}\n{marks} {text}\n'
                else:
                    line = f'{marks} {text} {{#{self.label(self.path, anchor)}}}\n'
            elif kind == 'text':
                line = self.rewrite_text(line)
            yield line


def main():
    root, path = (os.path.realpath(argument) for argument in sys.argv[1:])
    with open(path, encoding='utf-8') as file:
        sys.stdout.reconfigure(encoding='utf-8', newline='\n')
        sys.stdout.writelines(Page(root, path).rewrite(file))


if __name__ == '__main__':
    main()

#!/usr/bin/env python3
"""Makes a test program of the examples in the headers and in the Markdown pages.

usage: examples.py SOURCE_FOLDER OUTPUT.cpp HEADER_OR_PAGE ...

Every @code block of a header and every ```cpp block of a page becomes a function; its definitions of classes and
functions are put in front of it. A comment behind a statement that begins with == says what the statement gives, and is
checked; a remark may follow behind a comma:

    path.find(L"model");               // == 8
    const int key = registerIt();      // == 0, the main process

An example of a header states at least one result, or asks the preprocessor (#if). One that cannot run everywhere says
so in its first line ("// Needs a user who presses OK.") and is only compiled, and so is a fragment in a page that
states no result. A whole program in a page has to be one of the files of examples/, which are built anyway.
"""
import os
import re
import sys

CONTROL = ('if', 'for', 'while', 'do', 'else', 'switch', 'try', 'catch', 'return', 'case')
DECLARATION = re.compile(r'\s*(?:static |const |constexpr )*(?!return\b|delete\b|new\b|throw\b)'
                         r'[A-Za-z_][\w:]*(?:<.*>)?(?:\s*[*&]+\s*|\s+)(?:const\s+)?([A-Za-z_]\w*)\s*(?:=[^=]|\{|;|\()')
ASSIGNMENT = re.compile(r'\s*([A-Za-z_][\w.\[\]]*)\s*=[^=]')


class Problem(Exception):
    pass


class Block:
    def __init__(self, path, line):
        self.path = path      # as shown in messages
        self.line = line      # number of the first line of code
        self.code = []

    def problem(self, index, text):
        return Problem(f'{self.path}:{self.line + index}: {text}')

    @property
    def in_header(self):
        return self.path.endswith('.h')

    @property
    def name(self):
        return re.sub(r'\W', '_', os.path.basename(self.path)) + f'_{self.line}'


def blocks_of(path, text):
    """The examples of a header or a page, in order."""
    begin, end = (r'\s*(?:\*|///) ?@code(?:\{\.cpp\})?$', r'\s*(?:\*|///) ?@endcode') if path.endswith('.h') \
        else (r'( *)```cpp$', r' *```$')
    block = None
    for number, line in enumerate(text.splitlines(), 1):
        if block is None:
            if match := re.match(begin, line):
                block = Block(path, number + 1)
                indent = '' if path.endswith('.h') else match[1]
        elif re.match(end, line):
            yield block
            block = None
        elif path.endswith('.h'):
            block.code.append(re.sub(r'^\s*(?:\*|///) ?', '', line))
        else:
            block.code.append(line.removeprefix(indent))
    if block is not None:
        raise block.problem(-1, 'this example has no end')


def find_outside_literals(text, tokens, depth_counts=False):
    """Position of the first of the tokens that is not in a literal (nor in brackets), or -1."""
    quote = None
    depth = 0
    i = 0
    while i < len(text):
        if quote:
            if text[i] == '\\':
                i += 1
            elif text[i] == quote:
                quote = None
        elif any(text.startswith(token, i) for token in tokens) and not (depth_counts and depth):
            return i
        elif text[i] in '"\'':
            quote = text[i]
        else:
            depth += (text[i] in '([{') - (text[i] in ')]}')
        i += 1
    return -1


def expectation(block, index, line):
    """The line with the check of its comment, and whether there is one."""
    at = find_outside_literals(line, ['//'])
    comment = line[at + 2:].strip() if at >= 0 else ''
    if not comment.startswith('=='):
        return line, False
    code = line[:at].rstrip()
    value = comment[2:].strip()
    end = find_outside_literals(value, [', ', '; ', ': '], depth_counts=True)
    value = value if end < 0 else value[:end]
    if not code.endswith(';') or not value:
        raise block.problem(index, 'a result stands behind a whole statement, as in "count();  // == 3"')
    expression = code[:-1].strip()
    match = DECLARATION.match(code) or ASSIGNMENT.match(code)
    if match:
        return f'{code} QEL_EXPECT({match[1]}, {value});', True
    return f'QEL_EXPECT({expression}, {value});', True


def definition_end(code, begin):
    """Index behind the definition of a class or function that begins in that line, or begin when none does."""
    first = code[begin]
    word = re.match(r'[A-Za-z_]\w*', first)
    if not word or word[0] in CONTROL:
        return begin
    is_type = re.match(r'(class|struct|enum|union|namespace|template|typedef|using)\b', first)
    if is_type and first.rstrip().endswith(';'):
        return begin + 1
    brace = begin
    while brace < len(code) and code[brace] != '{':
        if re.search(r';\s*(//.*)?$', code[brace]) or not code[brace].strip():
            return begin
        brace += 1
    for end in range(brace, len(code)):
        if re.match(r'\};?$', code[end]):
            return end + 1
    return begin


class Example:
    """A block, cut into what stands in front of its function and what stands in it."""

    def __init__(self, block):
        self.block = block
        self.includes = []
        self.definitions = {}
        self.statements = {}
        self.results = 0
        i = 0
        while i < len(block.code):
            line = block.code[i]
            end = definition_end(block.code, i)
            if match := re.match(r'#include\s+(.*)', line):
                self.includes.append(match[1])
            elif re.match(r'#define (UNICODE|NOMINMAX|WIN32_LEAN_AND_MEAN)$', line):
                pass  # the test program is built with it
            elif end > i:
                self.definitions.update((k, block.code[k]) for k in range(i, end))
                i = end - 1
            elif line.strip() != '...':
                self.statements[i], checked = expectation(block, i, line)
                self.results += checked
            i += 1
        self.needs = block.code[0].startswith('// Needs ') if block.code else False
        self.runs = self.results > 0 and not self.needs
        asks_preprocessor = any(line.startswith('#if') for line in block.code)
        if block.in_header and not (self.runs or self.needs or asks_preprocessor):
            raise block.problem(0, 'this example states no result (// == VALUE); or begin it with "// Needs ..."')

    def lines(self, part):
        """The lines of a part where they stand in the source, so that messages of the compiler lead there."""
        return [f'#line {self.block.line} "{self.block.path}"'] + [part.get(i, '') for i in range(len(self.block.code))]


def is_program(block):
    return any(re.match(r'int (w?main|APIENTRY|WINAPI)\b', line) for line in block.code)


def check_program(block, programs):
    if '\n'.join(block.code).strip() not in programs:
        raise block.problem(0, 'a whole program has to be one of the files of examples/, as it stands there')


def programs_of(source):
    texts = set()
    for folder, _, names in os.walk(os.path.join(source, 'examples')):
        for name in names:
            if name.endswith('.cpp'):
                with open(os.path.join(folder, name), encoding='utf-8') as file:
                    texts.add(file.read().strip())
    return texts


def generate(source, paths):
    programs = programs_of(source)
    examples = []
    for path in paths:
        with open(os.path.join(source, path), encoding='utf-8') as file:
            for block in blocks_of(path, file.read()):
                if is_program(block):
                    check_program(block, programs)
                else:
                    examples.append(Example(block))

    headers = sorted({os.path.basename(path) for path in paths if path.endswith('.h')})
    known = {f'"{name}"' for name in headers} | {'<windows.h>'}
    others = sorted({name for example in examples for name in example.includes} - known)
    out = ['// Made by tests/docs/examples.py.', '#include "docs/Examples.h"', '']
    out += [f'#include "{name}"' for name in headers] + [f'#include {name}' for name in others]
    for example in examples:
        # The fragments of one page build on one another; the examples of a header are on their own.
        home = example.block.name if example.block.in_header else re.sub(r'\W', '_', example.block.path)
        head = f'TEST_F(Examples, {example.block.name})' if example.runs \
            else f'[[maybe_unused]] static void compiled_{example.block.name}()'
        out += [f'namespace {home}', '{'] + example.lines(example.definitions)
        out += [head, '{'] + example.lines(example.statements) + ['}', '}']
    counts = (len(examples), sum(e.runs for e in examples), sum(e.results for e in examples))
    print('%d examples, of which %d run and check %d results' % counts)
    return '\n'.join(out) + '\n'


def main():
    source, output, *paths = sys.argv[1:]
    try:
        text = generate(source, [os.path.relpath(path, source) for path in paths])
    except Problem as problem:
        sys.exit(str(problem))
    with open(output, 'w', encoding='utf-8', newline='\n') as file:
        file.write(text)


main()

#!/usr/bin/env python3
"""Checks the text files of a source tree against its .editorconfig, and says which lines differ.

What .editorconfig says about indentation is checked in part: a file indented with blanks must not begin a line with a
tab. By how many blanks is left to the author, since continuation lines stand where they read best.
"""

import argparse
import fnmatch
import os
import re
import sys

# Made by builds and by editors.
SKIPPED_FOLDERS = {"build", "out", "__pycache__"}
# All other folders and files whose names begin with a dot belong to tools, not to the tree.
HIDDEN_IN_TREE = {".ci", ".clang-format", ".clang-tidy", ".editorconfig", ".gitattributes", ".gitignore"}

KNOWN_VALUES = {
    "charset": {"utf-8"},
    "end_of_line": {"lf", "crlf"},
    "insert_final_newline": {"true", "false"},
    "trim_trailing_whitespace": {"true", "false"},
    "indent_style": {"space", "tab"},
}
NUMBERS = {"indent_size", "max_line_length"}


class BadConfiguration(Exception):
    """Something in .editorconfig that this check does not understand."""


def alternatives(pattern):
    """A pattern without braces for each way through its braces: *.{a,b} gives *.a and *.b."""
    found = re.search(r"\{([^{}]*)\}", pattern)
    if not found:
        return [pattern]
    return [
        whole
        for part in found.group(1).split(",")
        for whole in alternatives(pattern[: found.start()] + part + pattern[found.end() :])
    ]


def read_configuration(path):
    """The sections of the file in order, each as its patterns and its properties."""
    sections = []
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            line = line.strip()
            if not line or line[0] in "#;" or line == "root = true":
                continue
            if line.startswith("[") and line.endswith("]"):
                sections.append((alternatives(line[1:-1]), {}))
                continue
            name, sign, value = (part.strip() for part in line.partition("="))
            known = value in KNOWN_VALUES.get(name, ()) or (name in NUMBERS and (value.isdigit() or value == "off"))
            if not sign or not sections or not known:
                raise BadConfiguration(f"{path}:{number}: this check does not know \"{line}\"")
            sections[-1][1][name] = value
    return sections


def properties_of(name, sections):
    """What holds for a file of that name: later sections win."""
    properties = {}
    for patterns, values in sections:
        if any(fnmatch.fnmatchcase(name, pattern) for pattern in patterns):
            properties.update(values)
    return properties


def files_of(root):
    """The files of the tree, without those that builds and tools have made."""
    for folder, folders, names in os.walk(root):
        folders[:] = sorted(
            name
            for name in folders
            if name not in SKIPPED_FOLDERS
            and (name[0] != "." or name in HIDDEN_IN_TREE)
            and not os.path.exists(os.path.join(folder, name, "CMakeCache.txt"))
        )
        for name in sorted(names):
            if name[0] != "." or name in HIDDEN_IN_TREE:
                yield os.path.join(folder, name)


def check(content, properties):
    """Yields the number of each line that differs, and how."""
    try:
        text = content.decode("utf-8")
    except UnicodeDecodeError as error:
        yield content.count(b"\n", 0, error.start) + 1, "is not UTF-8"
        return
    if text.startswith("\ufeff"):
        yield 1, "begins with a byte order mark"
    if not text:
        return

    crlf = properties.get("end_of_line") == "crlf"
    limit = properties.get("max_line_length", "off")
    lines = text.split("\n")
    if properties.get("insert_final_newline") == "true" and lines[-1]:
        yield len(lines), "has no line end"
    for number, line in enumerate(lines, 1):
        last = number == len(lines)
        if crlf and not last and not line.endswith("\r"):
            yield number, "ends with LF alone instead of CR LF"
        if "\r" in (line[:-1] if crlf and line.endswith("\r") else line):
            yield number, "has a CR, which no line should have" if not crlf else "has a CR in its middle"
        line = line.rstrip("\r")
        if properties.get("trim_trailing_whitespace") == "true" and line != line.rstrip(" \t"):
            yield number, "has blanks at its end"
        if properties.get("indent_style") == "space" and re.match(r" *\t", line):
            yield number, "is indented with a tab"
        if limit != "off" and len(line) > int(limit):
            yield number, f"is {len(line)} characters long, {limit} are allowed"


def main():
    """Returns the exit status: 0 when every file is as .editorconfig says."""
    parser = argparse.ArgumentParser(description="Checks the text files of a source tree against its .editorconfig.")
    parser.add_argument("root", help="folder of the source tree")
    root = parser.parse_args().root

    checked = differences = 0
    try:
        sections = read_configuration(os.path.join(root, ".editorconfig"))
    except (OSError, BadConfiguration) as error:
        sys.exit(str(error))
    for path in files_of(root):
        with open(path, "rb") as file:
            content = file.read()
        if b"\0" in content:
            continue  # a picture or the like
        checked += 1
        for number, difference in check(content, properties_of(os.path.basename(path), sections)):
            differences += 1
            print(f"{os.path.relpath(path, root)}:{number}: the line {difference}")
    if checked == 0:
        sys.exit(f"no files in {root}")
    if differences:
        sys.exit(f"{differences} lines are not as .editorconfig says; please correct them")
    print(f"{checked} files are as .editorconfig says")
    return 0


if __name__ == "__main__":
    sys.exit(main())

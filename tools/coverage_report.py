#!/usr/bin/env python3
"""Says which lines, branches and functions of the library its tests have not reached; tools/long/coverage.sh calls it.

An edge that only an exception takes counts as no branch, nor does the other way out of that call, nor whether a deleted
pointer is null, which the compiler asks. Of the instantiations of a template, and of the objects that hold the code of
a header, any one counts.
"""
import argparse
import collections
import json
import os
import pathlib
import re
import subprocess
import sys

SOURCE = pathlib.Path(__file__).resolve().parent.parent
LIST = SOURCE / "tests/coverage/unreached.txt"
# What counts; the rest comes with the compiler and its libraries.
FOLDERS = ("src/", "include/")
# A statement without a choice of its own.
DELETES = re.compile(r"delete(\[\])? \w+;$")
# The least share of branches, in percent.
BRANCHES = 98.0


class Coverage:
    """How often each line, branch and function has run, all objects taken together."""

    def __init__(self, text_of):
        self.text_of = text_of
        self.lines = collections.Counter()
        self.branches = collections.Counter()
        self.functions = collections.Counter()
        self.names = {}

    def add(self, name, data):
        """Adds what one object says about the file of that name."""
        for function in data["functions"]:
            place = (name, function["start_line"])
            self.functions[place] += function["execution_count"]
            self.names[place] = function["demangled_name"]
        for line in data["lines"]:
            place = (name, line["line_number"])
            self.lines[place] += line["count"]
            choices = [] if DELETES.match(self.text_of(*place)) else choices_of(line["branches"])
            for number, count in enumerate(choices):
                # Instantiations that differ in their branches are kept apart.
                self.branches[(*place, len(choices), number)] += count
        # Of a function of a template on one line gcov may know the line alone.
        for place in self.functions:
            if place[0] == name:
                self.functions[place] += self.lines.get(place, 0)


def choices_of(branches):
    """The counts of those branches that no exception has to do with."""
    kept = []
    for branch in branches:
        if not branch["throw"]:
            kept.append(branch)
        elif kept and kept[-1]["fallthrough"]:
            kept.pop()
    return [branch["count"] for branch in kept]


def name_in_tree(path, folder):
    """A path of the compiler, which worked in that folder, as written below the source tree; None for other files."""
    for start in (SOURCE, folder):
        whole = pathlib.Path(os.path.normpath(start / path))
        if whole.is_file() and whole.is_relative_to(SOURCE):
            name = whole.relative_to(SOURCE).as_posix()
            return name if name.startswith(FOLDERS) else None
    return None


def read(build, gcov, text_of):
    """Asks gcov about every object of the build that was counted."""
    coverage = Coverage(text_of)
    objects = sorted(build.rglob("*.gcno"))
    if not objects:
        sys.exit(f"{build} holds no build that counts")
    for notes in objects:
        command = [gcov, "--json-format", "--stdout", "--branch-probabilities", notes]
        result = subprocess.run(command, cwd=build, capture_output=True, text=True, check=True)
        for text in result.stdout.splitlines():
            data = json.loads(text)
            for file in data["files"]:
                name = name_in_tree(file["file"], pathlib.Path(data["current_working_directory"]))
                if name:
                    coverage.add(name, file)
    return coverage


def read_list():
    """The lines that are known to be unreached, each with the number of its entries."""
    known = collections.Counter()
    for number, line in enumerate(LIST.read_text(encoding="utf-8").splitlines(), 1):
        if line and not line.startswith("#"):
            columns = line.split(" | ")
            if len(columns) < 3 or not columns[-1].strip():
                sys.exit(f"{LIST.name}:{number}: a line is FILE | TEXT | REASON")
            known[(columns[0].strip(), " | ".join(columns[1:-1]).strip())] += 1
    return known


class Texts:
    """The text of the source lines."""

    def __init__(self):
        self.files = {}

    def __call__(self, name, number):
        if name not in self.files:
            self.files[name] = (SOURCE / name).read_text(encoding="utf-8").splitlines()
        return self.files[name][number - 1].strip()


def share(counts):
    """How many of the counts are not 0, in percent."""
    return 100.0 * sum(1 for count in counts.values() if count) / len(counts)


def rounded_down(percent):
    """With two decimals, and 100 only for all."""
    return f"{int(percent * 100) / 100:.2f}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path, help="folder of the build whose programs were run")
    parser.add_argument("--gcov", default="x86_64-w64-mingw32-gcov-posix", help="the gcov of the compiler")
    parser.add_argument("--branches", action="store_true", help="show the branches too that were not taken")
    arguments = parser.parse_args()

    text_of = Texts()
    coverage = read(arguments.build.resolve(), arguments.gcov, text_of)
    if not any(coverage.lines.values()):
        sys.exit(f"nothing of {arguments.build} has run")
    known = read_list()
    left = known.copy()
    without_reason = 0

    def has_reason(place):
        entry = (place[0], text_of(*place))
        left[entry] -= 1
        return left[entry] >= 0

    for place in sorted(place for place, count in coverage.lines.items() if not count):
        listed = has_reason(place)
        without_reason += not listed
        print(f"{place[0]}:{place[1]}: {'listed' if listed else 'UNREACHED'}: {text_of(*place)}")
    unreached = sorted(place for place, count in coverage.functions.items() if not count)
    for place in unreached:
        listed = (place[0], text_of(*place)) in known
        without_reason += not listed
        print(f"{place[0]}:{place[1]}: {'listed' if listed else 'UNREACHED'} function: {coverage.names[place]}")
    if arguments.branches:
        for place in sorted(place for place, count in coverage.branches.items() if not count):
            print(f"{place[0]}:{place[1]}: branch {place[3]} of {place[2]} not taken: {text_of(*place[:2])}")
    stale = 0
    for (name, text), count in sorted(left.items()):
        if count > 0:
            stale += count
            print(f"{LIST.name}: {name} has no such unreached line any more: {text}")

    branches = share(coverage.branches)
    functions = len(coverage.functions)
    print(f"{without_reason} without a reason, {stale} reasons without an unreached line")
    print(
        f"figures: lines {rounded_down(share(coverage.lines))} %, branches {rounded_down(branches)} %, functions "
        f"{functions - len(unreached)} of {functions}; {sum(known.values())} lines listed with their reason"
    )
    return 1 if without_reason or stale or branches < BRANCHES else 0


if __name__ == "__main__":
    sys.exit(main())

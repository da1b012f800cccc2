#!/usr/bin/env python3
"""Says which tests have failed with other ANSI code pages; tools/long/code-pages.sh calls it.

Those of tests/codepages/known-differences.txt are meant to fail.
"""
import argparse
import collections
import pathlib
import re
import sys

LIST = pathlib.Path(__file__).resolve().parent.parent / "tests/codepages/known-differences.txt"
NAMES = {"65001": "UTF-8"}


def results_of(log):
    """The result of each test in a log of CTest.

    A test without an end took its program down. A program that failed without a failed test counts as one.
    """
    results = {}
    program = {}
    passed = False
    for line in log.read_text(encoding="utf-8", errors="replace").splitlines():
        # Behind words of a program that does not end its lines, or of Wine.
        begun = re.search(r"\[ RUN      \] (\S+)", line)
        ended = re.search(r"\[ +(OK|FAILED|SKIPPED) +\] ([^\s,]+).* \(\d+ ms\)", line)
        if begun:
            # Some tests run again in a process of their own.
            program.setdefault(begun[1], "CRASHED")
        elif ended and program.get(ended[2]) != "FAILED":
            program[ended[2]] = ended[1]
        elif line.startswith("Test Passed."):
            passed = True
        elif end := re.match(r'"(.*)" end time:', line):
            if not passed and not {"FAILED", "CRASHED"} & set(program.values()):
                program[end[1]] = "FAILED"
            results.update(program)
            program = {}
            passed = False
    return results


def read_list():
    """The tests that are meant to fail, by code page."""
    known = collections.defaultdict(set)
    for number, line in enumerate(LIST.read_text(encoding="utf-8").splitlines(), 1):
        if line and not line.startswith("#"):
            columns = [column.strip() for column in line.split(" | ", 2)]
            if len(columns) < 3 or not all(columns):
                sys.exit(f"{LIST.name}:{number}: a line is CODEPAGE | TEST | REASON")
            known[columns[0]].add(columns[1])
    return known


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("logs", nargs="+", metavar="CODEPAGE=LOG", help="a log of CTest")
    arguments = parser.parse_args()

    known = read_list()
    good = True
    figures = []
    for item in arguments.logs:
        page, log = item.split("=", 1)
        ran = {name: result for name, result in results_of(pathlib.Path(log)).items() if result != "SKIPPED"}
        failed = {name for name, result in ran.items() if result != "OK"}
        for name in sorted(failed):
            print(f"{page}: {name}: {'listed' if name in known[page] else ran[name]}")
        # Only tests that were run tell whether the list is right.
        stale = sorted(name for name in known[page] - failed if name in ran)
        for name in stale:
            print(f"{LIST.name}: {name} passes with {page}")
        good = good and bool(ran) and not stale and failed <= known[page]
        figures.append(f"{NAMES.get(page, page)}: {len(ran) - len(failed)} passed of {len(ran)}, "
                       f"{len(failed & known[page])} listed")
    print("figures: " + "; ".join(figures))
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())

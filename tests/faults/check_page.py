#!/usr/bin/env python3
"""Compares the tables of docs/system-calls.md with those that the test program compares the library with.

usage: check_page.py [--renew] PROGRAM...

PROGRAM is the command that prints the tables with --page. --renew puts them into the page.
"""

import argparse
import difflib
import subprocess
import sys
from pathlib import Path

PAGE = Path(__file__).resolve().parent.parent.parent / "docs" / "system-calls.md"
BEGIN = "<!-- From here on written by tests/faults/check_page.py --renew -->\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--renew", action="store_true", help="put the tables into the page")
    parser.add_argument("program", nargs="+", help="the command that prints the tables with --page")
    arguments = parser.parse_args()

    printed = subprocess.run([*arguments.program, "--page"], check=True, capture_output=True, text=True,
                             stdin=subprocess.DEVNULL).stdout.strip() + "\n"
    head, begin, tables = PAGE.read_text(encoding="utf-8").partition(BEGIN)
    if not begin:
        sys.exit(f"{PAGE.name} has lost the comment behind which the tables stand")
    if arguments.renew:
        PAGE.write_text(head + begin + "\n" + printed, encoding="utf-8", newline="\n")
        return
    if tables.strip() + "\n" != printed:
        sys.stdout.writelines(difflib.unified_diff(tables.splitlines(True)[1:], printed.splitlines(True),
                                                   str(PAGE), "the test program"))
        sys.exit("The page says something else than the tests: renew it with\n"
                 f"  tests/faults/check_page.py --renew {' '.join(arguments.program)}")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Puts the figures of a long test into the table of docs/testing.md."""
import argparse
import datetime
import pathlib
import re
import subprocess
import sys

SOURCE = pathlib.Path(__file__).resolve().parent.parent
PAGE = SOURCE / "docs/testing.md"


def commit():
    """The commit of the tree, marked where files differ from it."""
    command = ["git", "-C", SOURCE, "describe", "--always", "--abbrev=7", "--dirty=+"]
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()


def with_commas(figures):
    """The figures with commas in large numbers."""
    return re.sub(r"(?<![\d.,])\d{4,}\b", lambda number: f"{int(number[0]):,}", figures)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("name", help="the long test, as the first column of the table has it")
    parser.add_argument("figures", help="what came out of it")
    parser.add_argument("--tree", help="the commit that was tested, where it is not the one checked out")
    arguments = parser.parse_args()

    lines = PAGE.read_text(encoding="utf-8").splitlines(keepends=True)
    start = f"| `{arguments.name}` |"
    rows = [number for number, line in enumerate(lines) if line.startswith(start)]
    if len(rows) != 1:
        sys.exit(f"{PAGE.name} has {len(rows)} rows of the name {arguments.name}")
    cells = lines[rows[0]].split(" | ")
    tree = f"{arguments.tree or commit()}, {datetime.date.today()}"
    lines[rows[0]] = " | ".join(cells[:3] + [with_commas(arguments.figures.replace("|", "/")), tree]) + " |\n"
    PAGE.write_text("".join(lines), encoding="utf-8", newline="\n")


if __name__ == "__main__":
    main()

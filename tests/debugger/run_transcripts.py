"""Runs in GDB: repeats the sessions in the files that QEL_TRANSCRIPTS names and compares what GDB prints.

A session is whatever stands between a line that begins with "(gdb) ", the command, and the next one, an empty line or
the end of an indented or fenced block. Addresses and the numbers of the value history differ from run to run: they are
compared as "0x..." and "$".
"""

import os
import re

import gdb


def transcripts(path):
    """The commands of a file with the number of their line and the lines expected."""
    found = []
    expected = None
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            line = line.rstrip("\n")
            if line.startswith("(gdb) "):
                expected = []
                found.append((number, line[len("(gdb) "):], expected))
            elif not line or line.startswith("```"):
                expected = None
            elif expected is not None:
                expected.append(line)
    return found


def comparable(line):
    line = re.sub(r"^\$\d+ = ", "$ = ", line)
    return re.sub(r"0x[0-9a-f]{4,}", "0x...", line)


def run(command):
    try:
        printed = gdb.execute(command, to_string=True)
    except gdb.error as error:
        printed = str(error)
    return [line.rstrip() for line in printed.splitlines()]


def check(path):
    sessions = transcripts(path)
    if not sessions:
        print("%s: there is no line that begins with (gdb)" % path)
        return len(sessions), 1
    failed = 0
    for number, command, expected in sessions:
        printed = run(command)
        if [comparable(line) for line in printed] != [comparable(line) for line in expected]:
            failed += 1
            print("%s:%d: %s" % (path, number, command))
            print("  expected:\n    " + "\n    ".join(expected))
            print("  printed:\n    " + "\n    ".join(printed))
    return len(sessions), failed


total = 0
total_failed = 0
for name in os.environ["QEL_TRANSCRIPTS"].split(os.pathsep):
    ran, failures = check(name)
    total += ran
    total_failed += failures
print("%d of %d commands printed what is expected" % (total - total_failed, total))
gdb.execute("quit %d" % (1 if total_failed else 0))

#!/usr/bin/env python3
"""Compares the interface of the built DLL with the lists of abi/."""

import argparse
import sys
from itertools import groupby
from pathlib import Path

sys.dont_write_bytecode = True
SOURCE = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(SOURCE / "tools" / "abi"))

from agreement import disagreements  # noqa: E402
from build import Build  # noqa: E402
from changes import changes  # noqa: E402
from exported import Declared  # noqa: E402
from lists import read, read_lines, write  # noqa: E402

HEADERS = SOURCE / "include"
LISTS = SOURCE / "abi"
ABIS = {"mingw": "MinGW-w64", "visualcpp": "Visual C++"}
DESCRIPTION = """\
Compares what hosts are built against (exported names, sizes, offsets, values, virtual tables), as the DLL in BUILD/bin
and its debug information have it, with the lists checked in below abi/. Says of each difference whether it breaks
hosts. Exit status: 0 when there is none.

Without BUILD, the release builds for Linux that are there."""


def arguments():
    parser = argparse.ArgumentParser(prog="abi.py", description=DESCRIPTION,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("builds", metavar="BUILD", nargs="*", type=Path, help="build folder")
    group = parser.add_mutually_exclusive_group()
    group.add_argument("--renew", action="store_true", help="write the lists instead of comparing with them")
    group.add_argument("--agree", action="store_true",
                       help="compare the lists of the two ABIs with each other; needs no build")
    return parser.parse_args()


def present_builds():
    found = [folder for folder in sorted((SOURCE / "build").glob("linux-*-release")) if
             (folder / "bin" / "VarnelQELRoots.dll").exists()]
    if not found:
        sys.exit("abi.py: there is no build; run tools/test.sh, or name one")
    return found


def shown(path):
    return path.resolve().relative_to(SOURCE) if path.resolve().is_relative_to(SOURCE) else path


def check(folder, build):
    """Prints what differs; returns whether nothing does."""
    is_clean = report_unmeant(build)
    lists = LISTS / build.abi
    found = changes(read(lists), build.lists())
    if not found:
        print(f"{ABIS[build.abi]}: the interface is that of {shown(lists)}.")
        return is_clean
    print(f"{ABIS[build.abi]}: the interface is not that of {shown(lists)}.")
    for breaks, title in ((True, "Breaks hosts that were built before"), (False, "Does not break hosts")):
        report(title, [change for change in found if change.breaks == breaks])
    print("\nWas it not meant? Then change the code back. Was it? docs/binary-compatibility.md says what else to do;\n"
          f"the lists are renewed with\n    tools/abi.py --renew {shown(folder)}")
    return False


def report(title, found):
    if found:
        print(f"\n{title}:")
    for reason, together in groupby(found, key=lambda change: change.reason):
        for change in together:
            print(f"  - {change.text}")
        print(f"      {reason}")


def report_unmeant(build):
    unmeant = Declared(HEADERS).unmeant(build.spelled)
    if unmeant:
        print(f"{ABIS[build.abi]}: exported, but no declaration with QEL_API in include/ has this name:")
    for decorated, name in sorted(unmeant.items()):
        print(f"  - {name}\n      {decorated}")
    return not unmeant


def renew(build):
    write(LISTS / build.abi, build.lists())
    print(f"{ABIS[build.abi]}: {shown(LISTS / build.abi)} is as the build has it.")


def check_agreement():
    found = disagreements(*(read(LISTS / abi) for abi in ABIS), read_lines(LISTS / "visualcpp-only.txt"))
    if not found:
        print("Both ABIs offer the same functions, data and layouts.")
        return True
    print("The lists of the two ABIs do not agree:\n")
    print("\n".join(f"  - {line}" for line in found))
    print("\nHosts of both are built from the same sources, so level it. An export that only Visual C++ makes belongs\n"
          "into abi/visualcpp-only.txt, with the reason. When one set of lists is merely old, renew both.")
    return False


def main():
    options = arguments()
    if options.agree:
        return 0 if check_agreement() else 1
    headers = {header.name for header in HEADERS.glob("*.h")}
    is_clean = True
    for folder in options.builds or present_builds():
        build = Build(folder / "bin", headers)
        if options.renew:
            renew(build)
        else:
            is_clean = check(folder, build) and is_clean
    return 0 if is_clean else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (OSError, ValueError) as error:
        sys.exit(f"abi.py: {error}")

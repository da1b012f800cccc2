#!/usr/bin/env python3
"""Writes THIRD-PARTY-NOTICES.md: whose code the DLL carries inside, and under which terms.

usage: notices.py --headers FILE [--map FILE] OUTPUT

FILE of --headers holds, one a line, what the one source that uses third parties' headers was compiled from; that of
--map is what GNU ld wrote of the link. Every header and every member of an archive is looked up among the installed
Debian packages, and the texts are those of the packages' own copyright files. A file of a package that is not expected
here is an error: somebody has to look at its terms first.
"""

import argparse
import re
import subprocess
import sys
from pathlib import Path

# What may be inside, by the beginning of the package's name. The whole copyright file is given, save for Boost, whose
# file describes thousands of libraries that are not inside.
EXPECTED = {
    "libboost": "Boost, headers: regular expressions",
    "g++-mingw-w64": "the C++ library and the runtime of GCC",
    "gcc-mingw-w64": "the runtime of GCC",
    "mingw-w64": "the runtime of MinGW-w64, with its thread library",
    "libc++": "libc++, headers: what Boost uses of the C++ library",
}
# Declarations and macros, of which no code is in the DLL.
DECLARATIONS = ("libwine", "libclang-common", "wine")


def packages_of(paths):
    """The package of each file."""
    paths = sorted(str(Path(path).resolve()) for path in paths)
    done = subprocess.run(["dpkg-query", "-S", *paths], capture_output=True, text=True, check=False)
    found = {}
    for line in done.stdout.splitlines():
        package, _, path = line.partition(": ")
        found[path] = package.split(",")[0].split(":")[0]
    missing = [path for path in paths if path not in found]
    if missing:
        sys.exit("notices.py: these files are of no Debian package:\n  " + "\n  ".join(missing[:10]))
    return found


def linked_files(map_file):
    """The archives of which members were linked, and the compiler's own objects."""
    text = map_file.read_text(encoding="utf-8", errors="replace")
    archives = set(re.findall(r"^(/\S+\.a)\(\S+\)$", text, re.MULTILINE))
    objects = set(re.findall(r"^LOAD (/usr/\S+\.o)$", text, re.MULTILINE))
    return archives | objects


def version_of(package):
    return subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], check=True, capture_output=True,
                          text=True).stdout


def copyright_file(package):
    return Path(f"/usr/share/doc/{package}/copyright").read_text(encoding="utf-8")


def boost_notice(package, headers):
    """The holders that the headers name, and the licence that each of them must be under."""
    holders = set()
    for header in headers:
        text = Path(header).read_text(encoding="utf-8", errors="replace")
        if not re.search(r"Boost Software License|boost\.org/LICENSE|LICENSE_1_0\.txt", text):
            # Without a word of its own a file is under the terms of the whole.
            if re.search(r"licen[cs]e", text, re.IGNORECASE):
                sys.exit(f"notices.py: {header} is not under the Boost Software License")
        for line in re.findall(r"(?:\(c\)\s*)?copyright\b.*\d{4}.*", text, re.IGNORECASE):
            line = re.sub(r"\.?\s+(Distributed under|Use, modification|Permission to).*", "", line)
            holders.add(" ".join(line.rstrip("*/ ").split()))
    terms = re.search(r"^License: BSL-1\.0\n((?: .*\n)+)", copyright_file(package), re.MULTILINE)
    lines = [re.sub(r"^ \.?", "", line).strip() for line in terms[1].splitlines()]
    return "\n".join(sorted(holders)) + "\n\n" + "\n".join(lines).strip()


def fenced(text):
    return "~~~text\n" + text.rstrip() + "\n~~~\n"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--headers", type=Path, required=True)
    parser.add_argument("--map", type=Path)
    parser.add_argument("output", type=Path)
    arguments = parser.parse_args()

    # Paths may be relative to the build folder, and lead to Boost through a link there.
    lines = arguments.headers.read_text(encoding="utf-8").splitlines()
    headers = [str((arguments.headers.parent / line.strip()).resolve()) for line in lines]
    headers = [path for path in headers if path.startswith("/usr/")]
    if not any("/boost/" in header for header in headers):
        sys.exit(f"notices.py: {arguments.headers} names no header of Boost")
    found = packages_of(set(headers) | (linked_files(arguments.map) if arguments.map else set()))

    used = {}
    for path, package in found.items():
        if not package.startswith(DECLARATIONS):
            used.setdefault(package, []).append(path)
    unexpected = [package for package in used if not package.startswith(tuple(EXPECTED))]
    if unexpected:
        sys.exit(f"notices.py: somebody has to look at the terms of: {', '.join(unexpected)}")

    table, texts = [], {}
    for package, paths in sorted(used.items()):
        what = next(text for name, text in EXPECTED.items() if package.startswith(name))
        table.append(f"| {what} | {package} {version_of(package)} |")
        text = boost_notice(package, paths) if package.startswith("libboost") else copyright_file(package)
        texts.setdefault(text, []).append(package)
    page = ["# Third-party notices\n",
            "`VarnelQELRoots.dll` and the programs beside it carry parts of other programs inside. They are named here",
            "with the Debian packages they come from, and the terms that those packages state.\n",
            "| part | package |", "|---|---|", *table, ""]
    for text, packages in texts.items():
        page += [f"## {', '.join(packages)}\n", fenced(text)]
    arguments.output.write_text("\n".join(page), encoding="utf-8")


main()

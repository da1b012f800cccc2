"""Checks the ZIPs that cpack has made: their names, what lies in them, and what the files know of where they were
built.

usage: check_package.py --source DIR --build DIR --abi NAME [--suffix TEXT] FOLDER

FOLDER holds the whole ZIP and that of each component. --suffix is what the names end in beside version, ABI and
architecture. What the ZIPs should hold follows from the headers and pages of the source tree and from the list below;
the version from include/qelVersion.h.
"""

import argparse
import json
import pathlib
import posixpath
import re
import sys
import zipfile

CMAKE = "lib/cmake/VarnelQELRoots/"
LIBRARIES = {"mingw": "lib/libVarnelQELRoots.dll.a", "visualcpp": "lib/VarnelQELRoots.lib"}
VIEWS = {"mingw": {"bin/VarnelQELRoots.dll-gdb.py"}, "visualcpp": set()}
# Of what the DLL carries inside.
TERMS = {"mingw": (b"Boost Software License - Version 1.0", b"GCC RUNTIME LIBRARY EXCEPTION", b"the mingw-w64 project"),
         "visualcpp": (b"Boost Software License - Version 1.0", b"LLVM Exceptions")}
SYMBOLS = {"mingw": "bin/VarnelQELRoots.dll.debug", "visualcpp": "bin/VarnelQELRoots.pdb"}


def version_of_header(source):
    text = (source / "include/qelVersion.h").read_text(encoding="utf-8")
    return ".".join(re.search(rf"#define QEL_VERSION_{part} (\d+)", text)[1] for part in ("MAJOR", "MINOR", "PATCH"))


def expected_files(source, abi, configuration):
    """What each component should hold. Every header and every page on the disk belongs in the package."""
    return {
        "runtime": {"bin/VarnelQELRoots.dll", "THIRD-PARTY-NOTICES.md"},
        "tools": {"bin/qelDiagnose.exe"},
        "development": {f"include/{path.name}" for path in (source / "include").iterdir()} | VIEWS[abi] | {
            LIBRARIES[abi],
            CMAKE + "VarnelQELRootsConfig.cmake",
            CMAKE + "VarnelQELRootsConfigVersion.cmake",
            CMAKE + "VarnelQELRootsTargets.cmake",
            CMAKE + f"VarnelQELRootsTargets-{configuration}.cmake",
            "share/VarnelQELRoots/VarnelQELRoots.natvis",
        },
        "symbols": {SYMBOLS[abi]},
        "documentation": {f"docs/{path.name}" for path in (source / "docs").iterdir() if path.is_file()} | {
            "CHANGELOG.md",
            "CONTRIBUTING.md",
            "README.md",
            "docs/html/index.html",
        },
    }


def files_of(path, top):
    """The names and contents in a ZIP, without the folder that all of them must lie in."""
    with zipfile.ZipFile(path) as archive:
        names = [name for name in archive.namelist() if not name.endswith("/")]
        for name in names:
            if not name.startswith(top + "/"):
                raise ValueError(f"{path.name}: {name} lies outside the folder {top}")
        return {name[len(top) + 1:]: archive.read(name) for name in names}


def differences(name, found, expected):
    for missing in sorted(expected - found):
        yield f"{name}: {missing} is missing: cmake/Install.cmake should install it"
    # Doxygen names its pages.
    for extra in sorted(file for file in found - expected if not file.startswith("docs/html/")):
        yield f"{name}: {extra} should not be there, or tests/package/check_package.py should expect it"


def broken_links(files):
    """Links between the pages that lead nowhere in the package."""
    for name, data in files.items():
        if name.endswith(".md"):
            for target in re.findall(r"\]\(([^)#\s]+)", data.decode("utf-8")):
                path = posixpath.normpath(posixpath.join(posixpath.dirname(name), target))
                if "://" not in target and path not in files and not any(file.startswith(path + "/") for file in files):
                    yield f"{name} links to {target}, which the package does not have"


def paths_of_the_build(name, data, places):
    """The folders of this machine that a file names, in either width of characters."""
    for place in places:
        for encoding in ("utf-8", "utf-16-le"):
            # Behind a letter, a digit or a colon it is the end of another path, such as /usr/src for /src.
            before = rb"(?<![0-9A-Za-z:])" if encoding == "utf-8" else rb"(?<![0-9A-Za-z:]\0)"
            if re.search(before + re.escape(str(place).encode(encoding)), data):
                yield f"{name} names the folder {place}, which no other machine has"
                break
    if name.endswith(".cmake"):
        for path in re.findall(rb'"(/[^"]+|[A-Za-z]:[/\\][^"]*)"', data):
            if b"${_IMPORT_PREFIX}" in path:
                continue  # an option of a linker of Windows, followed by the place of the package
            yield f"{name} names the absolute path {path.decode()}"


def check(arguments):
    version = version_of_header(arguments.source)
    top = f"VarnelQELRoots-{version}-{arguments.abi}-x64{arguments.suffix}"
    components = expected_files(arguments.source, arguments.abi, "debug" if arguments.suffix else "release")

    zips = {f"{top}.zip": set().union(*components.values())}
    zips.update({f"{top}-{name}.zip": files for name, files in components.items()})
    found_zips = {path.name for path in arguments.folder.glob("*.zip")}
    for name in sorted(set(zips) - found_zips):
        yield f"{name} is missing; there are: {', '.join(sorted(found_zips))}"
    contents = {name: files_of(arguments.folder / name, top) for name in sorted(set(zips) & found_zips)}
    for name, files in contents.items():
        yield from differences(name, set(files), zips[name])

    whole = contents.get(f"{top}.zip", {})
    yield from broken_links(whole)
    for name, data in whole.items():
        if name.endswith(".pdb"):
            continue  # tells the debugger where the sources were, for those who build from them
        yield from paths_of_the_build(name, data, (arguments.source, arguments.build))
    for name in ("VarnelQELRoots.dll", pathlib.PurePosixPath(SYMBOLS[arguments.abi]).name):
        if whole.get(f"bin/{name}") != (arguments.build / "bin" / name).read_bytes():
            yield f"the package's {name} is not the one that the tests run on"

    notices = whole.get("THIRD-PARTY-NOTICES.md", b"")
    for terms in TERMS[arguments.abi]:
        if terms not in notices:
            yield f"THIRD-PARTY-NOTICES.md lacks the {terms.decode()}"

    config = CMAKE + "VarnelQELRootsConfigVersion.cmake"
    manifest = "packaging/vcpkg/ports/varnelqelroots/vcpkg.json"
    found = re.search(rb'set\(PACKAGE_VERSION "([^"]*)"\)', whole.get(config, b""))
    stated = {
        config: found[1].decode() if found else None,
        manifest: json.loads((arguments.source / manifest).read_text(encoding="utf-8"))["version"],
    }
    for name, text in stated.items():
        if text != version:
            yield f"{name} states the version {text}, include/qelVersion.h {version}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--abi", choices=LIBRARIES, required=True)
    parser.add_argument("--suffix", default="")
    parser.add_argument("folder", type=pathlib.Path)
    problems = list(check(parser.parse_args()))
    for problem in problems:
        print(problem)
    sys.exit(1 if problems else 0)


main()

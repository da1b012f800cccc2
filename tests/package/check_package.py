"""Checks the ZIPs that cpack has made: their names, what lies in them, and what the files know of where they were
built.

usage: check_package.py --source DIR --build DIR --abi NAME [--suffix TEXT] FOLDER

FOLDER holds the whole ZIP and that of each component. --suffix is what the names end in beside version, ABI and
architecture. What the ZIPs should hold follows from the headers and pages of the source tree and from the list below;
the version from include/qelVersion.h.
"""

import argparse
import html
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
# Of the repository; what they say is nothing that a host needs.
PAGES_OF_THE_REPOSITORY = {"architecture.md", "building.md", "demo.md", "system-calls.md", "test-kit.md", "testing.md"}
SYMBOLS = {"mingw": "bin/VarnelQELRoots.dll.debug", "visualcpp": "bin/VarnelQELRoots.pdb"}


def version_of_header(source):
    text = (source / "include/qelVersion.h").read_text(encoding="utf-8")
    return ".".join(re.search(rf"#define QEL_VERSION_{part} (\d+)", text)[1] for part in ("MAJOR", "MINOR", "PATCH"))


def expected_files(source, abi, configuration):
    """What each component should hold. Every header and every page for users on the disk belongs in the package."""
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
        "documentation": {f"docs/{path.name}" for path in (source / "docs").glob("*.md")
                          if path.name not in PAGES_OF_THE_REPOSITORY} | {
            f"docs/{path.name}" for path in (source / "docs").iterdir() if path.suffix in (".png", ".svg")} | {
            "CHANGELOG.md",
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
        yield f"{name}: {missing} is missing: cmake/Install.cmake or cmake/Pages.cmake should name it"
    # Doxygen names its pages.
    for extra in sorted(file for file in found - expected if not file.startswith("docs/html/")):
        yield f"{name}: {extra} should not be there, or tests/package/check_package.py should expect it"


def broken_links(files):
    """Links between the pages that lead nowhere in the package, and headings that are not there."""
    anchors = {name: anchors_of(data.decode("utf-8")) for name, data in files.items() if name.endswith(".md")}
    for name in anchors:
        for target in re.findall(r"\]\(([^)\s]+)\)", without_code(files[name].decode("utf-8"))):
            path, _, anchor = target.partition("#")
            path = posixpath.normpath(posixpath.join(posixpath.dirname(name), path)) if path else name
            if "://" in target:
                continue
            if not is_in(files, path):
                yield f"{name} links to {target}, which the package does not have"
            elif anchor and path in anchors and anchor not in anchors[path]:
                yield f"{name} links to {target}, and there is no such heading"


def without_code(page):
    return re.sub(r"^ *```.*?^ *```$|`[^`\n]+`", "", page, flags=re.MULTILINE | re.DOTALL)


def anchors_of(page):
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
            for heading in re.findall(r"^#+ (.+)$", page, re.MULTILINE)}


def is_in(files, path):
    return path in files or any(file.startswith(path.rstrip("/") + "/") for file in files)


def names_of_the_repository(files, source):
    """What the package's texts name although only the repository has it: tools/test.sh, src/, CMakePresets.json."""
    entries = [path.name for path in source.iterdir() if path.name not in (".git", "build", "CMakeLists.txt")]
    folders = "|".join(re.escape(name) for name in entries if (source / name).is_dir())
    root_files = "|".join(re.escape(name) for name in entries if not (source / name).is_dir())
    # Behind one of these characters it is the end of another path, such as D:/src or lib/cmake.
    token = re.compile(rf"(?<![\w./\\$-])(?:(?:\./)?(?:{folders})/[\w./-]*|(?:{root_files})(?![\w/-]))")
    for name, data in files.items():
        # The notices are the words of others.
        if not name.endswith((".md", ".h", ".html")) or name == "THIRD-PARTY-NOTICES.md":
            continue
        text = data.decode("utf-8")
        if name.endswith(".html"):
            text = html.unescape(re.sub(r"<script.*?</script>|<[^>]*>", "", text, flags=re.DOTALL))
        elif name.endswith(".md"):
            text = re.sub(r"\]\([^)\s]+\)", "]", text)  # links are checked above
        for found in sorted(set(token.findall(text))):
            if not is_in(files, found.strip("./")):
                yield f"{name} names {found}, which the package does not have"


def first_page(files, source):
    """README.md is the repository's as far as it is for users, and says where everything else is."""
    whole = (source / "README.md").read_text(encoding="utf-8")
    users, mark, others = whole.partition("<!-- For those who have the repository")
    readme = files.get("README.md", b"").decode("utf-8")
    if not mark or not readme.startswith(users):
        yield "README.md does not begin like that of the repository, up to the comment about those who have it"
    for target in ("docs/html/index.html", "THIRD-PARTY-NOTICES.md"):
        if f"]({target})" not in readme:
            yield f"README.md has no link to {target}"
    # What is for those who have the repository begins with a heading.
    heading = re.search(r"^## (.+)$", others, re.MULTILINE)
    for name in ("README.md", "docs/html/index.html"):
        if heading and heading[1] in files.get(name, b"").decode("utf-8"):
            yield f'{name} has the part "{heading[1]}", which is for those who have the repository'


def strange_html_pages(files):
    """The pages for a browser are made of the Markdown pages in the package."""
    made = {"docs/html/page_" + re.sub(r"\W", "_", name[:-len(".md")]).lower() + ".html"
            for name in files if name.endswith(".md") and name not in ("README.md", "THIRD-PARTY-NOTICES.md")}
    there = {name for name in files if name.startswith("docs/html/page_") and name.endswith(".html")}
    for name in sorted(made - there):
        yield f"{name} is missing: cmake/Pages.cmake should name the page"
    for name in sorted(there - made):
        yield f"{name} is made of a page that the package does not have"


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
    yield from names_of_the_repository(whole, arguments.source)
    yield from first_page(whole, arguments.source)
    yield from strange_html_pages(whole)
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

"""Readable spellings of decorated names, the same for both compilers wherever the declaration is the same."""

import re
import shutil
import subprocess

from model import plain

GNU_TOOLS = ("x86_64-w64-mingw32-c++filt", "c++filt")
VISUAL_CPP_TOOLS = ("llvm-undname-19", "llvm-undname")
VISUAL_CPP_OPTIONS = ("--no-access-specifier", "--no-calling-convention", "--no-return-type", "--no-member-type",
                      "--no-variable-type")

# What the compilers add to a class by themselves, by the name in which it ends.
CONSTRUCTORS = {"C1": "complete object", "C2": "base object"}
DESTRUCTORS = {"D0": "deleting", "D1": "complete object", "D2": "base object"}


def readable(decorated):
    """A dictionary from each decorated name to its readable one."""
    gnu = [name for name in decorated if name.startswith("_Z")]
    visual_cpp = [name for name in decorated if name.startswith("?")]
    found = {name: name for name in decorated}
    found.update(zip(gnu, map(_readable_gnu, gnu, _run(GNU_TOOLS, (), gnu))))
    found.update(zip(visual_cpp, map(_readable_visual_cpp, _run_undname(visual_cpp))))
    return found


def common(name):
    """The readable name without what one of the compilers alone makes of it; None where nothing is left."""
    if name.startswith(("vtable for ", "typeinfo for ", "typeinfo name for ")) or "`" in name:
        return None
    return re.sub(r" \[[a-z ]+\]$", "", name)


def _run(tools, options, names):
    if not names:
        return []
    tool = next(filter(None, map(shutil.which, tools)), None)
    if tool is None:
        raise FileNotFoundError(f"none of these programs is installed: {', '.join(tools)}")
    result = subprocess.run([tool, *options], input="\n".join(names) + "\n", capture_output=True, text=True, check=True)
    return result.stdout.splitlines()


def _run_undname(names):
    """It answers each name with the name, its readable form and an empty line."""
    lines = _run(VISUAL_CPP_TOOLS, VISUAL_CPP_OPTIONS, names)
    return [line for line in lines if line and not line.startswith("?")]


def _readable_gnu(decorated, text):
    variant = _variant(decorated)
    return plain(text) + (f" [{variant}]" if variant else "")


def _variant(decorated):
    """Which of the copies of a constructor or destructor it is; None for anything else."""
    rest = re.sub(r"^_ZN?", "", decorated)
    while rest[:1].isdigit():
        digits = re.match(r"\d+", rest)[0]
        rest = rest[len(digits) + int(digits):]
    return {**CONSTRUCTORS, **DESTRUCTORS}.get(rest[:2])


def _readable_visual_cpp(text):
    return plain(re.sub(r"^const (?=.*`vftable')", "", text).replace("(void)", "()"))

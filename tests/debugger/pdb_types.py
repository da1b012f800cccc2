"""Reads the PDB of a program: its classes and variables, in the form that describe_types.py prints, and its views."""

import os
import re
import subprocess
import tempfile

_RECORD = re.compile(r"^\s*(0x[0-9A-F]+) \| (LF_\w+) \[size = \d+\](?: `(.*)`)?$")
_MEMBER = re.compile(r"^\s*- (LF_MEMBER|LF_STMEMBER) \[name = `(.*?)`, [Tt]ype = (0x[0-9A-F]+)(?: \((.*?)\))?[,\]]")
_REFERENT = re.compile(r"^\s*referent = (0x[0-9A-F]+)(?: \((.*?)\))?, (?:modifiers|mode = (\w+))")
_GLOBAL = re.compile(r"S_GDATA32 \[size = \d+\] `(.*)`\s*\n\s*type = (0x[0-9A-F]+)(?: \((.*?)\))?,")


class _Records:
    """The type records by their numbers, each as kind, name and lines."""

    def __init__(self, text):
        self._records = {}
        current = None
        for line in text.splitlines():
            match = _RECORD.match(line)
            if match:
                current = (match.group(2), match.group(3), [])
                self._records[match.group(1)] = current
            elif current is not None:
                current[2].append(line)

    def __iter__(self):
        return iter(self._records.values())

    def lines(self, number):
        return self._records[number][2] if number in self._records else []

    def describe(self, number, simple):
        """The type with that number; `simple` is the name that stands beside the numbers of built-in types."""
        if number not in self._records:
            return "number" + "*" * (simple or "").count("*")
        kind, name, lines = self._records[number]
        if kind in ("LF_CLASS", "LF_STRUCTURE", "LF_UNION"):
            return name
        if kind == "LF_ENUM":
            return "enum %s" % name
        for line in lines:
            match = _REFERENT.match(line)
            if match:
                return self.describe(match.group(1), match.group(2)) + ("*" if match.group(3) == "pointer" else "")
        return "number"


def _dump(pdbutil, path, what):
    return subprocess.run([pdbutil, "dump", what, path], check=True, capture_output=True, text=True).stdout


def embedded_views(pdbutil, path):
    """The contents of the natvis files that the linker has put into the PDB."""
    streams = _dump(pdbutil, path, "--streams")
    views = []
    with tempfile.TemporaryDirectory() as folder:
        for number in re.findall(r'Stream\s+(\d+) .*\[Named Stream "/src/files/.*\.natvis"\]', streams, re.IGNORECASE):
            copy = os.path.join(folder, number)
            subprocess.run([pdbutil, "export", "--stream=" + number, "--out=" + copy, path], check=True,
                           capture_output=True)
            with open(copy, "rb") as file:
                views.append(file.read())
    return views


def read(pdbutil, path):
    records = _Records(_dump(pdbutil, path, "--types"))
    classes = {}
    for kind, name, lines in records:
        if kind not in ("LF_CLASS", "LF_STRUCTURE"):
            continue
        match = re.search(r"vtable: (.*?), base list: .*?, field list: (0x[0-9A-F]+)", "\n".join(lines))
        if match is None:
            continue  # a declaration
        members = {}
        for line in records.lines(match.group(2)):
            member = _MEMBER.match(line)
            if member:
                members[member.group(2)] = records.describe(member.group(3), member.group(4))
        classes[name] = {"members": members, "polymorphic": match.group(1) != "<no type>"}
    found = _GLOBAL.findall(_dump(pdbutil, path, "--globals"))
    variables = {name: records.describe(number, simple) for name, number, simple in found}
    return {"classes": classes, "variables": variables}

"""What is known of a type, whichever debug information it came from."""

import re
from dataclasses import dataclass, field


@dataclass
class Member:
    """A base class has no name."""
    offset: int
    size: int
    name: str
    type: str


@dataclass
class Class:
    name: str
    size: int
    alignment: int
    members: list = field(default_factory=list)
    statics: list = field(default_factory=list)   # (name, type) of the static members
    virtuals: dict = field(default_factory=dict)  # slot -> signature, of the functions first declared here


@dataclass
class Enumeration:
    name: str
    underlying: str
    size: int
    values: list = field(default_factory=list)    # (name, value) in the order of declaration


def plain(name):
    """One spelling of a type's name for both compilers: no blanks that mean nothing, no keyword in front."""
    name = re.sub(r"\b(class|struct|union|enum) ", "", name)
    name = re.sub(r"\b(long long|long|short) (unsigned )?int\b", lambda m: (m[2] or "") + m[1], name)
    name = re.sub(r"\bunsigned __int64\b", "unsigned long long", name)
    name = re.sub(r"\b__int64\b", "long long", name)
    name = name.replace("__cdecl ", "").replace("__cdecl", "")
    name = re.sub(r"\s*,\s*", ", ", name)
    name = re.sub(r"\s+([&*>)])", r"\1", name)
    return re.sub(r"([*&])\s*(?=const\b)", r"\1 ", name).strip()

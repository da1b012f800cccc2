"""Runs in GDB: prints the library's classes as the debug information of the loaded image describes them, as JSON.

{"classes": {name: {"members": {name: type}, "polymorphic": bool}}, "variables": {name: type}}

A type is the name of a class, "enum" and a name, or "number", with a * for each pointer; a reference is what it refers
to. check_natvis.py makes the same of a PDB.
"""

import json
import re

import gdb

# How the names of the library's classes begin.
BEGINNINGS = ("qel", "Struct", "ProcessInfo", "ProgressDisplayProtocol")


def describe(type_):
    type_ = type_.strip_typedefs().unqualified()
    if type_.code == gdb.TYPE_CODE_PTR:
        return describe(type_.target()) + "*"
    if type_.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
        return describe(type_.target())
    if type_.code in (gdb.TYPE_CODE_STRUCT, gdb.TYPE_CODE_UNION):
        return type_.name
    if type_.code == gdb.TYPE_CODE_ENUM:
        return "enum %s" % type_.name
    return "number"


def names(kind):
    """The names after the line number in what "info types" and "info variables" print."""
    found = [gdb.execute("info %s -q ^%s" % (kind, beginning), to_string=True) for beginning in BEGINNINGS]
    return re.findall(r"^\d+:\s+(.*);$", "\n".join(found), re.MULTILINE)


def classes():
    result = {}
    for name in names("types"):
        try:
            type_ = gdb.lookup_type(name).strip_typedefs()
        except gdb.error:
            continue  # a namespace
        if type_.code != gdb.TYPE_CODE_STRUCT:
            continue
        fields = type_.fields()
        result[type_.name] = {
            "members": {f.name: describe(f.type) for f in fields if f.name and not f.is_base_class},
            "polymorphic": any((f.name or "").startswith("_vptr") for f in fields),
        }
    return result


def variables():
    result = {}
    for declaration in names("variables"):
        name = re.search(r"([\w:]+)(\[.*\])?$", declaration).group(1)
        symbol = gdb.lookup_global_symbol(name)
        if symbol is not None:
            result[name] = describe(symbol.type)
    return result


print(json.dumps({"classes": classes(), "variables": variables()}))

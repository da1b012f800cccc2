"""Checks VarnelQELRoots.natvis against the debug information of a build.

Everything that a view mentions must be there: its type, each member, what a member is of, each module. Every exported
class with an object to look at must have a view, classes with a virtual table only for themselves, and the parts of a
view must have the names that they have in qel_printers.py.
"""

import argparse
import ast
import json
import os
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

import pdb_types

NAMESPACE = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
DLL = "VarnelQELRoots.dll"

# What may stand where, as far as this file goes: the attributes and the children of each element.
GRAMMAR = {
    "AutoVisualizer": ((), ("Type",)),
    "Type": (("Name", "Inheritable"), ("DisplayString", "StringView", "Expand")),
    "DisplayString": (("Condition",), ()),
    "StringView": (("Condition",), ()),
    "Expand": ((), ("Item", "ExpandedItem", "ArrayItems", "TreeItems", "LinkedListItems")),
    "Item": (("Name", "Condition", "Optional"), ()),
    "ExpandedItem": (("Condition",), ()),
    "ArrayItems": (("Condition",), ("Size", "ValuePointer")),
    "TreeItems": (("Condition",), ("HeadPointer", "LeftPointer", "RightPointer", "ValueNode")),
    "LinkedListItems": (("Condition", "Optional"), ("HeadPointer", "NextPointer", "ValueNode")),
    **{name: ((), ()) for name in ("Size", "ValuePointer", "HeadPointer", "LeftPointer", "RightPointer", "NextPointer",
                                   "ValueNode")},
}

FORMATS = ("d", "x", "s", "su", "en")
BUILT_IN_TYPES = ("void", "int", "long", "char", "wchar_t")

# Functions that the debugger itself has, with the number of their arguments.
INTRINSICS = {"wcsnlen": 2}

TOKEN = re.compile(r"\s*(?:(\d+)|((?:[\w.]+!)?[A-Za-z_]\w*(?:::\w+)*)|(->|&&|\|\||[=!<>]=|[-+*/&!<>?:.,()\[\]]))")

# Binary operators from the loosest to the tightest.
LEVELS = (("||",), ("&&",), ("==", "!="), ("<", ">", "<=", ">="), ("+", "-"), ("*", "/"))


class Problem(Exception):
    pass


class Types:
    """The classes and variables that debug information describes; see describe_types.py for types."""

    def __init__(self, described):
        self.classes = described["classes"]
        self.variables = described["variables"]

    def matching(self, name):
        """The classes that the name of a view covers."""
        if name.endswith("<*>"):
            return [c for c in self.classes if c.startswith(name[:-2])]
        return [name] if name in self.classes else []

    def member(self, class_name, name):
        if class_name not in self.classes:
            raise Problem(f"{class_name or 'a number'} has no members, so no {name}")
        members = self.classes[class_name]["members"]
        if name not in members:
            raise Problem(f"{class_name} has no member {name}; it has {', '.join(sorted(members))}")
        return members[name]


class Expression:
    """Works out the type of an expression in the context of a class; a problem where a name means nothing there."""

    def __init__(self, types, context, text):
        self._types = types
        self._context = context
        self._text = text
        module = re.match(r"\{,,(.*?)\}", text)
        if module and module.group(1) != DLL:
            raise Problem(f"the module is {DLL}, not {module.group(1)}")
        self._tokens = self._split(text[module.end():] if module else text)
        self._at = 0

    def type(self):
        result = self._ternary()
        if self._peek() is not None:
            raise Problem(f"{self._peek()} is not expected there")
        return result

    @staticmethod
    def _split(text):
        tokens = []
        at = 0
        while text[at:].strip():
            match = TOKEN.match(text, at)
            if match is None:
                raise Problem(f"{text[at:].strip()} cannot be read")
            tokens.append(match.group().strip())
            at = match.end()
        return tokens

    def _peek(self, ahead=0):
        return self._tokens[self._at + ahead] if self._at + ahead < len(self._tokens) else None

    def _next(self):
        token = self._peek()
        if token is None:
            raise Problem("the end is missing")
        self._at += 1
        return token

    def _expect(self, token):
        found = self._next()
        if found != token:
            raise Problem(f"{token} is expected instead of {found}")

    def _ternary(self):
        condition = self._binary(0)
        if self._peek() != "?":
            return condition
        self._next()
        result = self._ternary()
        self._expect(":")
        self._ternary()
        return result

    def _binary(self, level):
        if level == len(LEVELS):
            return self._unary()
        left = self._binary(level + 1)
        while self._peek() in LEVELS[level]:
            operator = self._next()
            right = self._binary(level + 1)
            for side in (left, right):
                if side in self._types.classes:
                    raise Problem(f"{operator} does not take a {side}")
            left = left if left.endswith("*") and operator in ("+", "-") else "number"
        return left

    def _unary(self):
        token = self._peek()
        if token == "!":
            self._next()
            self._unary()
            return "number"
        if token == "*":
            self._next()
            pointer = self._unary()
            if not pointer.endswith("*"):
                raise Problem(f"* does not take a {pointer}")
            return pointer[:-1]
        if token == "&":
            self._next()
            return self._unary() + "*"
        if token == "(" and self._is_cast():
            return self._cast()
        return self._postfix()

    def _is_cast(self):
        at = 2
        while self._peek(at) == "*":
            at += 1
        name = (self._peek(1) or "").split("!")[-1]
        # A cast has something behind it; what else stands in parentheses is no type.
        return self._peek(at) == ")" and (name in BUILT_IN_TYPES or "::" in name or at > 2)

    def _cast(self):
        self._expect("(")
        module, _, name = self._next().rpartition("!")
        if module and module != DLL:
            raise Problem(f"the module is {DLL}, not {module}")
        if name not in BUILT_IN_TYPES and name not in self._types.classes:
            raise Problem(f"there is no type {name}")
        stars = ""
        while self._peek() == "*":
            stars += self._next()
        self._expect(")")
        self._unary()
        return ("number" if name in BUILT_IN_TYPES else name) + stars

    def _postfix(self):
        result = self._primary()
        while self._peek() in ("->", ".", "["):
            operator = self._next()
            if operator == ".":
                result = self._types.member(result, self._next())
            elif not result.endswith("*"):
                raise Problem(f"{operator} does not take a {result}")
            elif operator == "->":
                result = self._types.member(result[:-1], self._next())
            else:
                self._ternary()
                self._expect("]")
                result = result[:-1]
        return result

    def _primary(self):
        token = self._next()
        if token == "(":
            result = self._ternary()
            self._expect(")")
            return result
        if token.isdigit():
            return "number"
        if token == "this":
            return self._context + "*"
        if self._peek() == "(":
            return self._call(token)
        if "::" in token:
            if token not in self._types.variables:
                raise Problem(f"there is no variable {token}")
            return self._types.variables[token]
        if not re.match(r"[A-Za-z_]\w*$", token):
            raise Problem(f"{token} is not expected there")
        return self._types.member(self._context, token)

    def _call(self, name):
        if name not in INTRINSICS:
            raise Problem(f"{name} is no function that the debugger has of its own")
        self._expect("(")
        self._ternary()
        for _ in range(INTRINSICS[name] - 1):
            self._expect(",")
            self._ternary()
        self._expect(")")
        return "number"


def without_format(text):
    """The expression without the format behind its last comma, where it has one."""
    match = re.search(r",\s*(\w+)\s*$", text)
    if match is None or text.count("(", 0, match.start()) != text.count(")", 0, match.start()):
        return text
    if match.group(1) not in FORMATS:
        raise Problem(f"{match.group(1)} is no format")
    return text[:match.start()]


def embedded_expressions(text):
    """The expressions in the braces of a DisplayString; two braces stand for one in the text."""
    plain = re.sub(r"\{\{|\}\}", "", text)
    rest = re.sub(r"\{([^{}]*)\}", "", plain)
    if "{" in rest or "}" in rest:
        raise Problem("a brace has no counterpart")
    return re.findall(r"\{([^{}]*)\}", plain)


class Checker:
    def __init__(self, types):
        self._types = types
        self.problems = []
        self.expressions = 0

    def check_type(self, element):
        name = element.get("Name")
        covered = self._types.matching(name)
        if not covered:
            self.problems.append(f"{name}: there is no such class in the debug information")
        for class_name in covered:
            self._class = class_name
            for child in element:
                self._check_element(child)
        if any(self._types.classes[c]["polymorphic"] for c in covered) and element.get("Inheritable") != "false":
            self.problems.append(f'{name}: has a virtual table; with Inheritable="false" its view does not hide the '
                                 "members of derived classes")

    def _check_element(self, element):
        tag = element.tag.replace(NAMESPACE, "")
        if element.get("Condition") is not None:
            self._type_of(element, element.get("Condition"), self._class, ("number", "pointer", "enum"))
        if tag == "DisplayString":
            try:
                for text in embedded_expressions(element.text or ""):
                    self._type_of(element, text, self._class)
            except Problem as problem:
                self._report(element, element.text, problem)
        elif tag == "Expand":
            for child in element:
                self._check_element(child)
        elif tag in ("Item", "StringView", "ExpandedItem"):
            self._type_of(element, element.text, self._class)
        elif tag == "ArrayItems":
            self._child(element, "Size", self._class, ("number",))
            self._child(element, "ValuePointer", self._class, ("pointer",))
        else:
            # In all but the first of these a node is the context.
            node = self._child(element, "HeadPointer", self._class, ("pointer",))
            for child in element[1:] if node is not None else ():
                self._child(element, child.tag.replace(NAMESPACE, ""), node[:-1],
                            ("any",) if child.tag.endswith("ValueNode") else (node,))

    def _child(self, element, tag, context, kinds):
        child = element.find(NAMESPACE + tag)
        if child is None:
            self._report(element, "", f"{tag} is missing")
            return None
        return self._type_of(child, child.text, context, kinds)

    def _type_of(self, element, text, context, kinds=("any",)):
        self.expressions += 1
        try:
            type_ = Expression(self._types, context, without_format((text or "").strip())).type()
            kind = ("pointer" if type_.endswith("*") else "enum" if type_.startswith("enum ") else
                    "class" if type_ in self._types.classes else "number")
            if not {"any", kind, type_} & set(kinds):
                raise Problem(f"is a {type_}, which is none of {', '.join(kinds)}")
            return type_
        except Problem as problem:
            self._report(element, text, problem)
            return None

    def _report(self, element, text, problem):
        tag = element.tag.replace(NAMESPACE, "")
        line = f"{self._class}, {tag} {element.get('Name') or ''}: \"{text}\": {problem}"
        if line not in self.problems:
            self.problems.append(line)


def grammar_problems(element):
    tag = element.tag.replace(NAMESPACE, "")
    if element.tag == tag or tag not in GRAMMAR:
        return [f"{element.tag} is no element that can stand there"]
    attributes, children = GRAMMAR[tag]
    found = [f"{tag} takes no attribute {name}" for name in element.keys() if name not in attributes]
    for child in element:
        if child.tag.replace(NAMESPACE, "") not in children:
            found.append(f"{tag} takes no {child.tag.replace(NAMESPACE, '')}")
        else:
            found += grammar_problems(child)
    order = [children.index(c.tag.replace(NAMESPACE, "")) for c in element if c.tag.replace(NAMESPACE, "") in children]
    if tag == "Type" and order != sorted(order):
        found.append(f"{element.get('Name')}: the order is {', '.join(children)}")
    return found


def printed_parts(path):
    """For each type of qel_printers.py the names of its parts, null where they are not written out."""
    with open(path, encoding="utf-8") as file:
        tree = ast.parse(file.read())
    parts = {}
    printers = {}
    for node in tree.body:
        if isinstance(node, ast.ClassDef):
            yields = [n.value for n in ast.walk(node) if isinstance(n, ast.Yield)]
            names = [y.elts[0].value if isinstance(y.elts[0], ast.Constant) else None for y in yields]
            parts[node.name] = names if None not in names else None
        elif isinstance(node, ast.Assign) and node.targets[0].id == "_PRINTERS":
            printers = {k.value: v.id for k, v in zip(node.value.keys, node.value.values)}
    return {name.replace("<.*>", "<*>"): parts[printer] for name, printer in printers.items()}


def exported_classes(folder):
    """The classes and records that the headers export."""
    for name in sorted(os.listdir(folder)):
        with open(os.path.join(folder, name), encoding="utf-8") as file:
            yield from re.findall(r"^(?:class|struct) QEL_API (\w+)", file.read(), re.MULTILINE)


def described(arguments):
    if arguments.pdb:
        return pdb_types.read(arguments.pdbutil, arguments.pdb)
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "describe_types.py")
    command = [arguments.gdb, "-nx", "-batch", "-iex", "set auto-load no", "-x", script, arguments.dll]
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    if result.returncode != 0 or not result.stdout:
        sys.exit(f"{arguments.dll} cannot be described by {arguments.gdb}:\n{result.stderr}")
    return json.loads(result.stdout)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--natvis", required=True, help="the file with the views")
    parser.add_argument("--printers", required=True, help="qel_printers.py")
    parser.add_argument("--headers", required=True, help="folder with the public headers")
    parser.add_argument("--dll", help="DLL whose DWARF is read with GDB, beside it or inside")
    parser.add_argument("--gdb", default="gdb", help="the GDB to read it with")
    parser.add_argument("--pdb", help="PDB to read instead, with llvm-pdbutil")
    parser.add_argument("--embedded-in", nargs="+", default=[], help="PDBs that must have the file inside")
    parser.add_argument("--pdbutil", default="llvm-pdbutil", help="the llvm-pdbutil to read it with")
    arguments = parser.parse_args()
    if bool(arguments.dll) == bool(arguments.pdb):
        parser.error("either --dll or --pdb is needed")

    try:
        root = ElementTree.parse(arguments.natvis).getroot()
    except ElementTree.ParseError as error:
        sys.exit(f"{arguments.natvis} is not well-formed: {error}")
    problems = grammar_problems(root)
    types = Types(described(arguments))
    checker = Checker(types)
    views = {}
    for element in root.iter(NAMESPACE + "Type"):
        if element.get("Name") in views:
            problems.append(f"{element.get('Name')} has two views")
        views[element.get("Name")] = [i.get("Name") for i in element.iter(NAMESPACE + "Item")]
        checker.check_type(element)
    problems += checker.problems

    for name in exported_classes(arguments.headers):
        members = types.classes.get(name, {"members": {}})["members"]
        own = [m for m in members if f"{name}::{m}" not in types.variables and not m.startswith("_vptr")]
        if own and name not in views:
            problems.append(f"{name} is exported and has no view")
    printed = printed_parts(arguments.printers)
    for name in sorted(views.keys() | printed.keys()):
        if name not in views or name not in printed:
            problems.append(f"{name} has a view in one of the two files only")
        elif printed[name] is not None and printed[name] != views[name]:
            problems.append(f"{name}: the parts are {', '.join(views[name])} here, "
                            f"{', '.join(printed[name])} in {os.path.basename(arguments.printers)}")

    with open(arguments.natvis, "rb") as file:
        natvis = file.read()
    for path in arguments.embedded_in:
        if natvis not in pdb_types.embedded_views(arguments.pdbutil, path):
            problems.append(f"{path} does not have the file inside: see the link options in debugger/CMakeLists.txt")

    if problems:
        print(f"{arguments.natvis} does not fit {arguments.pdb or arguments.dll}:")
        for problem in problems:
            print(f"  {problem}")
        print("Views follow the private members of the classes: change those in both files of debugger/ with them.")
        return 1
    print(f"{len(views)} views, {checker.expressions} expressions fit {arguments.pdb or arguments.dll}")
    return 0


if __name__ == "__main__":
    sys.exit(main())

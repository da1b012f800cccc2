"""Reads types from the debug information of GCC (DWARF 5, 32-bit format).

Entries are read where they are needed: whole subtrees, such as function bodies and the C++ library, are passed over.
"""

import struct
from collections import namedtuple

from model import Class, Enumeration, Member, plain

Entry = namedtuple("Entry", "offset tag attributes next has_children unit")

TAG_ARRAY, TAG_CLASS, TAG_ENUMERATION, TAG_PARAMETER = 0x01, 0x02, 0x04, 0x05
TAG_MEMBER, TAG_POINTER, TAG_REFERENCE, TAG_UNIT, TAG_STRUCT, TAG_SUBROUTINE = 0x0D, 0x0F, 0x10, 0x11, 0x13, 0x15
TAG_TYPEDEF, TAG_UNION, TAG_UNSPECIFIED_PARAMETERS, TAG_INHERITANCE = 0x16, 0x17, 0x18, 0x1C
TAG_SUBRANGE, TAG_BASE, TAG_CONST, TAG_ENUMERATOR, TAG_SUBPROGRAM = 0x21, 0x24, 0x26, 0x28, 0x2E
TAG_VARIABLE, TAG_VOLATILE, TAG_NAMESPACE, TAG_RVALUE_REFERENCE = 0x34, 0x35, 0x39, 0x42

AT_SIBLING, AT_LOCATION, AT_NAME, AT_SIZE, AT_STATEMENTS = 0x01, 0x02, 0x03, 0x0B, 0x10
AT_CONST_VALUE, AT_COUNT, AT_UPPER_BOUND, AT_FILE = 0x1C, 0x37, 0x2F, 0x3A
AT_MEMBER_LOCATION, AT_DECLARATION, AT_EXTERNAL, AT_TYPE = 0x38, 0x3C, 0x3F, 0x49
AT_VTABLE_SLOT, AT_OBJECT_POINTER, AT_ARTIFICIAL, AT_ALIGNMENT = 0x4D, 0x64, 0x34, 0x88

CLASSES = (TAG_CLASS, TAG_STRUCT, TAG_UNION)
POINTERS = {TAG_POINTER: "*", TAG_REFERENCE: "&", TAG_RVALUE_REFERENCE: "&&"}
FOREIGN_NAMESPACES = ("std", "boost", "__gnu_cxx", "__cxxabiv1", "__detail", "mpl_")

# Forms of a fixed size, and how to read them; the others are read one by one in _value().
FIXED_FORMS = {0x01: "Q", 0x05: "H", 0x06: "I", 0x07: "Q", 0x0B: "B", 0x0C: "B", 0x0E: "I", 0x11: "B", 0x12: "H",
               0x13: "I", 0x14: "Q", 0x17: "I", 0x1F: "I", 0x20: "Q"}
FORM_BLOCKS = {0x03: "H", 0x04: "I", 0x0A: "B"}
UNIT_REFERENCES = (0x11, 0x12, 0x13, 0x14)


class Dwarf:
    def __init__(self, image):
        self._info = image.section_data(".debug_info")
        self._abbreviations = image.section_data(".debug_abbrev")
        self._strings = {0x0E: image.section_data(".debug_str"), 0x1F: image.section_data(".debug_line_str")}
        self._lines = image.section_data(".debug_line")
        self._tables = {}
        self._definitions = {}
        self._descriptions = {}
        self._full_names = {}
        self._type_names = {}

    def types_of(self, headers):
        """By name, the classes and enumerations that headers of these names declare, templates as they were used."""
        for unit in self._units():
            public_files = self._files_in(unit, headers)
            if public_files:
                self._collect(unit, "", public_files)
        return {name: self._class(entry, name) if entry.tag in CLASSES else self._enumeration(entry, name)
                for name, entry in self._definitions.items()}

    # Units and their files

    def _units(self):
        at = 0
        while at < len(self._info):
            length, version, _, address_size, abbreviations = struct.unpack_from("<IHBBI", self._info, at)
            if version == 5 and address_size == 8:
                yield self._entry(at + 12, (at, self._abbreviation_table(abbreviations)))
            at += 4 + length

    def _files_in(self, unit, headers):
        """The numbers of the unit's files that have one of the names."""
        if AT_STATEMENTS not in unit.attributes:
            return set()
        at = unit.attributes[AT_STATEMENTS] + 4 + 2 + 1 + 1 + 4
        opcode_base = self._lines[at + 5]
        _, at = self._line_table_names(at + 6 + opcode_base - 1)
        files, _ = self._line_table_names(at)
        return {number for number, name in enumerate(files) if name.rpartition("/")[2] in headers}

    def _line_table_names(self, at):
        """The names in one of the two tables, of folders and of files, at the head of a line program."""
        formats, at = self._pairs(at)
        count, at = self._unsigned(self._lines, at)
        names = []
        for _ in range(count):
            for content, form in formats:
                value, at = self._value(self._lines, at, form, 0)
                if content == 1:
                    names.append(value)
        return names, at

    def _pairs(self, at):
        count, at = self._lines[at], at + 1
        pairs = []
        for _ in range(count):
            content, at = self._unsigned(self._lines, at)
            form, at = self._unsigned(self._lines, at)
            pairs.append((content, form))
        return pairs, at

    # Entries

    def _abbreviation_table(self, at):
        if at in self._tables:
            return self._tables[at]
        table = self._tables[at] = {}
        code, at = self._unsigned(self._abbreviations, at)
        while code:
            tag, at = self._unsigned(self._abbreviations, at)
            has_children, at = self._abbreviations[at], at + 1
            attributes = []
            while True:
                attribute, at = self._unsigned(self._abbreviations, at)
                form, at = self._unsigned(self._abbreviations, at)
                constant = None
                if form == 0x21:
                    constant, at = self._signed(self._abbreviations, at)
                if attribute == 0:
                    break
                attributes.append((attribute, form, constant))
            table[code] = (tag, bool(has_children), attributes)
            code, at = self._unsigned(self._abbreviations, at)
        return table

    def _entry(self, offset, unit):
        """The entry at an offset; None for the mark that ends a list of children."""
        code, at = self._unsigned(self._info, offset)
        if code == 0:
            return None
        start, table = unit
        tag, has_children, formats = table[code]
        attributes = {}
        for attribute, form, constant in formats:
            if form == 0x21:
                attributes[attribute] = constant
            else:
                attributes[attribute], at = self._value(self._info, at, form, start)
        return Entry(offset, tag, attributes, at, has_children, unit)

    def _value(self, data, at, form, unit_start):
        if form in FIXED_FORMS:
            kind = "<" + FIXED_FORMS[form]
            value = struct.unpack_from(kind, data, at)[0]
            if form in UNIT_REFERENCES:
                value += unit_start
            elif form in self._strings:
                value = self._text(self._strings[form], value)
            return value, at + struct.calcsize(kind)
        if form == 0x08:
            text = self._text(data, at)
            return text, at + len(text.encode()) + 1
        if form == 0x0D:
            return self._signed(data, at)
        if form == 0x0F:
            return self._unsigned(data, at)
        if form == 0x19:
            return 1, at
        if form == 0x1E:
            return data[at:at + 16], at + 16
        return self._block(data, at, form)

    def _block(self, data, at, form):
        if form in (0x09, 0x18):
            size, at = self._unsigned(data, at)
        elif form in FORM_BLOCKS:
            kind = "<" + FORM_BLOCKS[form]
            size = struct.unpack_from(kind, data, at)[0]
            at += struct.calcsize(kind)
        else:
            raise ValueError(f"debug information of an unknown form ({form:#x})")
        return data[at:at + size], at + size

    @staticmethod
    def _text(data, at):
        return data[at:data.index(b"\0", at)].decode()

    @staticmethod
    def _unsigned(data, at):
        value = shift = 0
        while True:
            byte = data[at]
            at += 1
            value |= (byte & 0x7F) << shift
            shift += 7
            if byte < 0x80:
                return value, at

    @staticmethod
    def _signed(data, at):
        value, end = Dwarf._unsigned(data, at)
        bits = 7 * (end - at)
        return (value - (1 << bits) if data[end - 1] & 0x40 else value), end

    def _children(self, entry):
        at = entry.next
        while entry.has_children:
            child = self._entry(at, entry.unit)
            if child is None:
                return
            yield child
            at = self._after(child)

    def _after(self, entry):
        """Where the next entry on the same level begins."""
        if not entry.has_children:
            return entry.next
        if AT_SIBLING in entry.attributes:
            return entry.attributes[AT_SIBLING]
        at = entry.next
        while True:
            child = self._entry(at, entry.unit)
            if child is None:
                return at + 1
            at = self._after(child)

    # Types

    def _collect(self, parent, scope, public_files):
        for entry in self._children(parent):
            name = entry.attributes.get(AT_NAME) or self._name_of_unnamed(entry)
            if not name:
                continue
            if entry.tag == TAG_NAMESPACE:
                if name not in FOREIGN_NAMESPACES:
                    self._collect(entry, scope + name + "::", public_files)
            elif entry.tag in CLASSES or entry.tag == TAG_ENUMERATION:
                self._collect_type(entry, scope + plain(name), public_files)

    def _collect_type(self, entry, name, public_files):
        self._full_names[entry.offset] = name
        if entry.attributes.get(AT_FILE) in public_files and AT_DECLARATION not in entry.attributes:
            self._definitions.setdefault(name, entry)
            self._descriptions.setdefault(name, []).append(entry)
        if entry.tag in CLASSES:
            self._collect(entry, name + "::", public_files)

    def _name_of_unnamed(self, entry):
        """Visual C++ calls an enumeration without a name after its first value; the only ones without that matter."""
        if entry.tag == TAG_ENUMERATION:
            return f"<unnamed-enum-{next(self._children(entry)).attributes[AT_NAME]}>"
        return None

    def _enumeration(self, entry, name):
        underlying = self._type_name(entry, "")
        values = [(child.attributes[AT_NAME], child.attributes[AT_CONST_VALUE])
                  for child in self._children(entry) if child.tag == TAG_ENUMERATOR]
        return Enumeration(name, underlying, entry.attributes[AT_SIZE], values)

    def _class(self, entry, name):
        result = Class(name, entry.attributes[AT_SIZE], self._alignment(entry))
        result.statics = self._statics(self._descriptions[name])
        for child in self._children(entry):
            if child.tag == TAG_INHERITANCE:
                result.members.append(self._member(child, ""))
            elif child.tag == TAG_MEMBER and AT_MEMBER_LOCATION in child.attributes:
                result.members.append(self._member(child, child.attributes[AT_NAME]))
            elif child.tag == TAG_SUBPROGRAM and AT_VTABLE_SLOT in child.attributes:
                self._add_virtual(result, child)
        return result

    def _statics(self, descriptions):
        """Names and types of the static members of a class; each unit describes those that it uses."""
        return list({child.attributes[AT_NAME]: self._type_name(child, "void")
                     for entry in descriptions for child in self._children(entry)
                     if child.tag in (TAG_MEMBER, TAG_VARIABLE) and AT_EXTERNAL in child.attributes}.items())

    def _member(self, entry, name):
        if name.startswith("_vptr"):
            return Member(entry.attributes[AT_MEMBER_LOCATION], 8, "(virtual table)", "")
        return Member(entry.attributes[AT_MEMBER_LOCATION], self._size(self._type(entry)), name,
                      self._type_name(entry, "void"))

    def _add_virtual(self, result, function):
        slot, _ = self._unsigned(function.attributes[AT_VTABLE_SLOT], 1)
        signature = self._signature(function)
        if signature.startswith("~"):
            # The table has a destructor for complete objects and one that frees them as well.
            result.virtuals[slot] = signature
            result.virtuals[slot + 1] = signature + ", deleting"
        else:
            result.virtuals[slot] = signature

    def _signature(self, function):
        this = self._referred(function, AT_OBJECT_POINTER)
        parameters = self._parameters(function)
        is_const = False
        if this:
            pointed = self._type(self._type(this))
            is_const = pointed is not None and pointed.tag == TAG_CONST
        return f"{function.attributes[AT_NAME]}({parameters})" + (" const" if is_const else "")

    def _parameters(self, function):
        names = []
        for child in self._children(function):
            if child.tag == TAG_PARAMETER and AT_ARTIFICIAL not in child.attributes:
                names.append(self._type_name(child, "void"))
            elif child.tag == TAG_UNSPECIFIED_PARAMETERS:
                names.append("...")
        return ", ".join(names)

    def _referred(self, entry, attribute):
        if attribute not in entry.attributes:
            return None
        return self._entry(entry.attributes[attribute], entry.unit)

    def _type(self, entry):
        """The entry of the type that an entry refers to, with alias names resolved; None for void."""
        found = self._referred(entry, AT_TYPE)
        while found is not None and found.tag == TAG_TYPEDEF:
            found = self._referred(found, AT_TYPE)
        if found is not None and AT_DECLARATION in found.attributes:
            # A class with a virtual table is described in full only where that table is made.
            return self._definitions.get(self._full_names.get(found.offset), found)
        return found

    def _size(self, entry):
        if entry.tag == TAG_ARRAY:
            return self._count(entry) * self._size(self._type(entry))
        if entry.tag in (TAG_CONST, TAG_VOLATILE):
            return self._size(self._type(entry))
        return 8 if entry.tag in POINTERS else entry.attributes[AT_SIZE]

    def _count(self, array):
        count = 1
        for child in self._children(array):
            if child.tag == TAG_SUBRANGE:
                upper = child.attributes.get(AT_UPPER_BOUND)
                count *= child.attributes.get(AT_COUNT, 0 if upper is None else upper + 1)
        return count

    def _alignment(self, entry):
        """As declared, or else the largest of the members': the debug information has no other."""
        if entry.tag in (TAG_CONST, TAG_VOLATILE, TAG_ARRAY):
            return self._alignment(self._type(entry))
        if entry.tag not in CLASSES:
            return self._size(entry)
        if AT_ALIGNMENT in entry.attributes:
            return entry.attributes[AT_ALIGNMENT]
        return max((self._alignment(self._type(child)) for child in self._children(entry)
                    if AT_MEMBER_LOCATION in child.attributes), default=1)

    def _type_name(self, entry, void):
        found = self._type(entry)
        if found is None:
            return void
        if found.offset not in self._type_names:
            self._type_names[found.offset] = self._new_type_name(found)
        return self._type_names[found.offset]

    def _new_type_name(self, entry):
        if entry.tag in POINTERS:
            target = self._type(entry)
            if target is not None and target.tag == TAG_SUBROUTINE:
                return f"{self._type_name(target, 'void')} ({POINTERS[entry.tag]})({self._parameters(target)})"
            return self._type_name(entry, "void") + POINTERS[entry.tag]
        if entry.tag == TAG_CONST:
            target = self._type(entry)
            is_array = target is not None and target.tag == TAG_ARRAY  # of const elements, then
            return self._type_name(entry, "void") + ("" if is_array else " const")
        if entry.tag == TAG_VOLATILE:
            return self._type_name(entry, "void") + " volatile"
        if entry.tag == TAG_ARRAY:
            return f"{self._type_name(entry, 'void')} [{self._count(entry)}]"
        return self._full_names.get(entry.offset) or plain(entry.attributes.get(AT_NAME, "(unnamed)"))

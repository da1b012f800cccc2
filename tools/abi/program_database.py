"""Reads types and symbols from the debug information of Visual C++ (a PDB file)."""

import struct

from model import Class, Enumeration, Member, plain

MAGIC = b"Microsoft C/C++ MSF 7.00\r\n\x1aDS\0\0\0"
TYPES, MODULES, IDENTIFIERS = 2, 3, 4

MODIFIER, POINTER, PROCEDURE, MEMBER_FUNCTION = 0x1001, 0x1002, 0x1008, 0x1009
ARGUMENTS, FIELDS, METHODS = 0x1201, 0x1203, 0x1206
VTABLE_POINTER, CONTINUED, BASE, ENUMERATOR = 0x1409, 0x1404, 0x1400, 0x1502
ARRAY, CLASS, STRUCTURE, UNION, ENUM = 0x1503, 0x1504, 0x1505, 0x1506, 0x1507
MEMBER, STATIC_MEMBER, METHOD, NESTED, ONE_METHOD = 0x150D, 0x150E, 0x150F, 0x1510, 0x1511
STRING, SOURCE_LINE, PUBLIC_SYMBOL = 0x1605, 0x1606, 0x110E

NUMBERS = {0x8000: "b", 0x8001: "h", 0x8002: "H", 0x8003: "i", 0x8004: "I", 0x8009: "q", 0x800A: "Q"}
SIMPLE_TYPES = {
    0x03: ("void", 0), 0x10: ("signed char", 1), 0x20: ("unsigned char", 1), 0x70: ("char", 1), 0x71: ("wchar_t", 2),
    0x30: ("bool", 1), 0x11: ("short", 2), 0x21: ("unsigned short", 2), 0x72: ("short", 2), 0x73: ("unsigned short", 2),
    0x12: ("long", 4), 0x22: ("unsigned long", 4), 0x74: ("int", 4), 0x75: ("unsigned int", 4),
    0x13: ("long long", 8), 0x23: ("unsigned long long", 8), 0x76: ("long long", 8), 0x77: ("unsigned long long", 8),
    0x40: ("float", 4), 0x41: ("double", 8)}
POINTER_MARKS = {0: "*", 1: "&", 4: "&&"}
FORWARD_REFERENCE = 0x80
INTRODUCING_VIRTUAL = (4, 6)


class Pdb:
    def __init__(self, path):
        self._data = path.read_bytes()
        if not self._data.startswith(MAGIC):
            raise ValueError(f"{path} is no PDB file")
        self._open_streams()
        self._first, self._records = self._type_records(TYPES)
        self._identifiers = self._type_records(IDENTIFIERS)
        self._complete = {}
        for kind, data in self._records:
            if kind in (CLASS, STRUCTURE, UNION, ENUM) and not self._is_forward(data):
                self._complete[self._tag_name(kind, data)] = (kind, data)

    # Streams

    def _open_streams(self):
        self._block_size, _, _, size, _, block_map = struct.unpack_from("<6I", self._data, 32)
        blocks = struct.unpack_from(f"<{self._block_count(size)}I", self._data, block_map * self._block_size)
        directory = self._joined(blocks, size)
        count = struct.unpack_from("<I", directory)[0]
        sizes = struct.unpack_from(f"<{count}I", directory, 4)
        at = 4 + 4 * count
        self._streams = []
        for size in sizes:
            number = self._block_count(0 if size == 0xFFFFFFFF else size)
            self._streams.append((struct.unpack_from(f"<{number}I", directory, at), size))
            at += 4 * number

    def _block_count(self, size):
        return -(-size // self._block_size)

    def _joined(self, blocks, size):
        return b"".join(self._data[block * self._block_size:(block + 1) * self._block_size] for block in blocks)[:size]

    def _stream(self, number):
        return self._joined(*self._streams[number])

    def _type_records(self, stream):
        """The number of the first record, and kind and bytes of all."""
        data = self._stream(stream)
        _, header_size, first, _, size = struct.unpack_from("<5I", data)
        return first, self._split(data, header_size, header_size + size)

    @staticmethod
    def _split(data, at, end):
        records = []
        while at + 4 <= end:
            length, kind = struct.unpack_from("<HH", data, at)
            records.append((kind, data[at + 4:at + 2 + length]))
            at += 2 + length
        return records

    # Symbols

    def symbols(self, image):
        """Name and address of every public symbol."""
        records = self._stream(struct.unpack_from("<H", self._stream(MODULES), 20)[0])
        found = []
        for kind, data in self._split(records, 0, len(records)):
            if kind == PUBLIC_SYMBOL:
                _, offset, section = struct.unpack_from("<IIH", data)
                if 0 < section <= len(image.sections):
                    found.append((self._text(data, 10)[0], image.sections[section - 1].address + offset))
        return found

    # Types

    def types_of(self, headers):
        """By name, the classes and enumerations that headers of these names declare, templates as they were used."""
        found = {}
        for index, path in self._declared():
            kind, data = self._record(index)
            if path.replace("\\", "/").rpartition("/")[2] in headers:
                name = self._tag_name(kind, data)
                kind, data = self._complete.get(name, (kind, data))
                if not self._is_forward(data):
                    read = self._enumeration(data, name) if kind == ENUM else self._class(kind, data, name)
                    found[read.name] = read
        return found

    def _declared(self):
        """Every class and enumeration with the path of the file that declares it."""
        first, records = self._identifiers
        for kind, data in records:
            if kind == SOURCE_LINE:
                index, string = struct.unpack_from("<II", data)
                yield index, self._text(records[string - first][1], 4)[0]

    def _record(self, index):
        return self._records[index - self._first]

    @staticmethod
    def _text(data, at):
        end = data.index(b"\0", at)
        return data[at:end].decode(), end + 1

    @staticmethod
    def _number(data, at):
        value = struct.unpack_from("<H", data, at)[0]
        if value < 0x8000:
            return value, at + 2
        kind = "<" + NUMBERS[value]
        return struct.unpack_from(kind, data, at + 2)[0], at + 2 + struct.calcsize(kind)

    @staticmethod
    def _is_forward(data):
        return bool(struct.unpack_from("<H", data, 2)[0] & FORWARD_REFERENCE)

    def _tag_name(self, kind, data):
        if kind == ENUM:
            return plain(self._text(data, 12)[0])
        _, at = self._number(data, 8 if kind == UNION else 16)
        return plain(self._text(data, at)[0])

    def _enumeration(self, data, name):
        underlying, fields = struct.unpack_from("<II", data, 4)
        values = [field for kind, field in self._fields(fields) if kind == ENUMERATOR]
        name = name.replace("<unnamed-tag>", f"<unnamed-enum-{values[0][0]}>") if values else name
        return Enumeration(name, self._name(underlying), self._size(underlying), values)

    def _class(self, kind, data, name):
        size, _ = self._number(data, 8 if kind == UNION else 16)
        result = Class(name, size, 1)
        for field_kind, field in self._fields(struct.unpack_from("<I", data, 4)[0]):
            self._add_field(result, field_kind, field)
        return result

    def _add_field(self, result, kind, field):
        if kind in (MEMBER, BASE, VTABLE_POINTER):
            index, offset, name = field
            result.alignment = max(result.alignment, self._alignment(index))
            result.members.append(Member(offset, self._size(index), name,
                                         "" if kind == VTABLE_POINTER else self._name(index)))
        elif kind == STATIC_MEMBER:
            index, name = field
            result.statics.append((name, self._name(index)))
        elif kind == METHOD:
            index, offset, name = field
            result.virtuals[offset // 8] = self._signature(index, name)

    def _fields(self, index):
        """Kind and contents of each entry of a list of fields: those that matter here."""
        if index == 0:
            return
        _, data = self._record(index)
        at = 0
        while at + 2 <= len(data):
            kind = struct.unpack_from("<H", data, at)[0]
            at += 2
            entries, at = self._field(kind, data, at)
            yield from entries
            while at < len(data) and data[at] >= 0xF0:
                at += data[at] & 0x0F

    def _field(self, kind, data, at):
        """The entries that one field makes (a name of several functions makes several), and where the next begins."""
        attributes, index = struct.unpack_from("<HI", data, at)
        if kind == ENUMERATOR:
            value, at = self._number(data, at + 2)
            name, at = self._text(data, at)
            # The writers disagree about the sign of what does not fit into 31 bits; hosts see an int.
            return [(kind, (name, value - (1 << 32) if value > 0x7FFFFFFF else value))], at
        if kind == CONTINUED:
            return list(self._fields(index)), at + 6
        if kind == VTABLE_POINTER:
            return [(kind, (index, 0, "(virtual table)"))], at + 6
        if kind == BASE:
            offset, at = self._number(data, at + 6)
            return [(kind, (index, offset, ""))], at
        if kind == MEMBER:
            offset, at = self._number(data, at + 6)
            name, at = self._text(data, at)
            return [(kind, (index, offset, name))], at
        if kind == STATIC_MEMBER:
            name, at = self._text(data, at + 6)
            return [(kind, (index, name))], at
        if kind == NESTED:
            return [], self._text(data, at + 6)[1]
        if kind == METHOD:
            name, end = self._text(data, at + 6)
            return self._overloads(index, name), end
        if kind == ONE_METHOD:
            is_new = (attributes >> 2 & 7) in INTRODUCING_VIRTUAL
            name, end = self._text(data, at + (10 if is_new else 6))
            offset = struct.unpack_from("<I", data, at + 6)[0] if is_new else 0
            return ([(METHOD, (index, offset, name))] if is_new else []), end
        raise ValueError(f"debug information with an unknown kind of member ({kind:#x})")

    def _overloads(self, index, name):
        _, data = self._record(index)
        found = []
        at = 0
        while at + 8 <= len(data):
            attributes, _, function = struct.unpack_from("<HHI", data, at)
            at += 8
            if (attributes >> 2 & 7) in INTRODUCING_VIRTUAL:
                found.append((METHOD, (function, struct.unpack_from("<I", data, at)[0], name)))
                at += 4
        return found

    def _signature(self, index, name):
        _, data = self._record(index)
        this, arguments = struct.unpack_from("<I", data, 8)[0], struct.unpack_from("<I", data, 16)[0]
        is_const = self._record(struct.unpack_from("<I", self._record(this)[1])[0])[0] == MODIFIER
        return f"{name}({self._arguments(arguments)})" + (" const" if is_const else "")

    def _arguments(self, index):
        _, data = self._record(index)
        count = struct.unpack_from("<I", data)[0]
        return ", ".join(self._name(argument) for argument in struct.unpack_from(f"<{count}I", data, 4))

    def _name(self, index):
        if index < self._first:
            if index == 0:
                return "..."
            name, _ = SIMPLE_TYPES[index & 0xFF]
            return name + ("*" if index & 0xF00 else "")
        kind, data = self._record(index)
        target = struct.unpack_from("<I", data)[0]
        if kind == MODIFIER:
            modifiers = struct.unpack_from("<H", data, 4)[0]
            return self._name(target) + (" const" if modifiers & 1 else "") + (" volatile" if modifiers & 2 else "")
        if kind == POINTER:
            return self._pointer_name(target, struct.unpack_from("<I", data, 4)[0])
        if kind == ARRAY:
            element = self._size(target)
            return f"{self._name(target)} [{self._size(index) // element if element else 0}]"
        if kind in (CLASS, STRUCTURE, UNION, ENUM):
            return self._tag_name(kind, data)
        raise ValueError(f"debug information with an unknown kind of type ({kind:#x})")

    def _pointer_name(self, target, attributes):
        mark = POINTER_MARKS[attributes >> 5 & 7]
        if target >= self._first and self._record(target)[0] == PROCEDURE:
            result, arguments = struct.unpack_from("<I4xI", self._record(target)[1])
            return f"{self._name(result)} ({mark})({self._arguments(arguments)})"
        return self._name(target) + mark + (" const" if attributes & 0x400 else "")

    def _size(self, index):
        if index < self._first:
            return 8 if index & 0xF00 else SIMPLE_TYPES[index & 0xFF][1]
        kind, data = self._definition(index)
        if kind == MODIFIER:
            return self._size(struct.unpack_from("<I", data)[0])
        if kind == ENUM:
            return self._size(struct.unpack_from("<I", data, 4)[0])
        if kind in (CLASS, STRUCTURE, UNION, ARRAY):
            return self._number(data, {UNION: 8, ARRAY: 8}.get(kind, 16))[0]
        return 8

    def _alignment(self, index):
        """The largest of the members': the debug information has no other."""
        if index < self._first:
            return self._size(index)
        kind, data = self._definition(index)
        if kind in (MODIFIER, ARRAY):
            return self._alignment(struct.unpack_from("<I", data)[0])
        if kind in (CLASS, STRUCTURE, UNION):
            return max((self._alignment(field[0])
                        for field_kind, field in self._fields(struct.unpack_from("<I", data, 4)[0])
                        if field_kind in (MEMBER, BASE, VTABLE_POINTER)), default=1)
        return self._size(index)

    def _definition(self, index):
        kind, data = self._record(index)
        if kind in (CLASS, STRUCTURE, UNION, ENUM) and self._is_forward(data):
            return self._complete.get(self._tag_name(kind, data), (kind, data))
        return kind, data

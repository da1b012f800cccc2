"""Reads a 64-bit Windows image: sections, exported and imported names, relocated pointers, the guard of calls through
pointers, and the symbol table of GNU tools."""

import struct
from collections import namedtuple

Section = namedtuple("Section", "name address virtual_size file_offset file_size is_code")
Export = namedtuple("Export", "name address is_code")
Guard = namedtuple("Guard", "check_pointer dispatch_pointer functions flags")

EXPORT_DIRECTORY = 0
IMPORT_DIRECTORY = 1
RELOCATION_DIRECTORY = 5
LOAD_CONFIGURATION_DIRECTORY = 10
RELOCATION_OF_64_BITS = 10
SYMBOL_SIZE = 18


class Image:
    """Addresses are relative to the image base throughout."""

    def __init__(self, path):
        self.data = path.read_bytes()
        header = struct.unpack_from("<I", self.data, 0x3C)[0]
        if self.data[:2] != b"MZ" or self.data[header:header + 4] != b"PE\0\0":
            raise ValueError(f"{path} is no Windows image")
        (self._section_count, self._symbols_at, self._symbol_count,
         optional_size) = struct.unpack_from("<2xH4xIIH", self.data, header + 4)
        optional = header + 24
        self.base = struct.unpack_from("<Q", self.data, optional + 24)[0]
        self.characteristics = struct.unpack_from("<H", self.data, optional + 70)[0]
        self._directories = optional + 112
        self.sections = [self._section(optional + optional_size + 40 * i) for i in range(self._section_count)]

    def _section(self, at):
        virtual_size, address, file_size, file_offset = struct.unpack_from("<4I", self.data, at + 8)
        flags = struct.unpack_from("<I", self.data, at + 36)[0]
        name = self._section_name(self.data[at:at + 8].rstrip(b"\0"))
        return Section(name, address, virtual_size, file_offset, file_size, bool(flags & 0x20))

    def _section_name(self, short):
        if not short.startswith(b"/"):
            return short.decode()
        return self._string(self._symbols_at + SYMBOL_SIZE * self._symbol_count + int(short[1:]))

    def _string(self, file_offset):
        return self.data[file_offset:self.data.index(b"\0", file_offset)].decode()

    def _directory(self, number):
        return struct.unpack_from("<II", self.data, self._directories + 8 * number)

    def section_data(self, name):
        """The bytes of a section; none when there is no such section."""
        for section in self.sections:
            if section.name == name:
                size = min(section.virtual_size or section.file_size, section.file_size)
                return self.data[section.file_offset:section.file_offset + size]
        return b""

    def section_of(self, address):
        for section in self.sections:
            if section.address <= address < section.address + max(section.virtual_size, section.file_size):
                return section
        return None

    def _file_offset(self, address):
        section = self.section_of(address)
        return section.file_offset + address - section.address

    def exports(self):
        """Every exported name, in the order of the table."""
        address, _ = self._directory(EXPORT_DIRECTORY)
        if address == 0:
            return []
        table = self._file_offset(address)
        count, functions, names, ordinals = struct.unpack_from("<4x4I", self.data, table + 20)
        functions, names, ordinals = map(self._file_offset, (functions, names, ordinals))
        return [self._export(functions, names + 4 * i, ordinals + 2 * i) for i in range(count)]

    def _export(self, functions, name, ordinal):
        name_address = struct.unpack_from("<I", self.data, name)[0]
        index = struct.unpack_from("<H", self.data, ordinal)[0]
        address = struct.unpack_from("<I", self.data, functions + 4 * index)[0]
        section = self.section_of(address)
        return Export(self._string(self._file_offset(name_address)), address, bool(section and section.is_code))

    def imports(self):
        """The name of every function that the image imports by name."""
        address, _ = self._directory(IMPORT_DIRECTORY)
        at = self._file_offset(address)
        found = []
        while True:
            names, dll = struct.unpack_from("<I8xI", self.data, at)
            if dll == 0:
                return found
            found += self._imports_of(self._file_offset(names))
            at += 20

    def _imports_of(self, at):
        while True:
            entry = struct.unpack_from("<Q", self.data, at)[0]
            if entry == 0:
                return
            if entry >> 63 == 0:
                yield self._string(self._file_offset(entry) + 2)
            at += 8

    def guard(self):
        """What the loader is told about control-flow guard; None when it is told nothing."""
        address, size = self._directory(LOAD_CONFIGURATION_DIRECTORY)
        if address == 0 or size < 148:
            return None
        at = self._file_offset(address)
        check, dispatch, table, count, flags = struct.unpack_from("<4QI", self.data, at + 112)
        stride = 4 + (flags >> 28)
        functions = []
        if count != 0:
            table = self._file_offset(table - self.base)
            functions = [struct.unpack_from("<I", self.data, table + stride * i)[0] for i in range(count)]
        return Guard(check - self.base, dispatch - self.base, functions, flags)

    def relocated(self):
        """The addresses of all pointers that the loader adjusts."""
        address, size = self._directory(RELOCATION_DIRECTORY)
        addresses = set()
        at = self._file_offset(address) if size else 0
        end = at + size
        while at < end:
            page, block_size = struct.unpack_from("<II", self.data, at)
            for entry in struct.unpack_from(f"<{(block_size - 8) // 2}H", self.data, at + 8):
                if entry >> 12 == RELOCATION_OF_64_BITS:
                    addresses.add(page + (entry & 0xFFF))
            at += block_size
        return addresses

    def pointer_at(self, address):
        return struct.unpack_from("<Q", self.data, self._file_offset(address))[0] - self.base

    def symbols(self):
        """Name and address of every symbol that GNU tools left in the file."""
        strings = self._symbols_at + SYMBOL_SIZE * self._symbol_count
        found = []
        index = 0
        while index < self._symbol_count:
            at = self._symbols_at + SYMBOL_SIZE * index
            value, section, _, storage, auxiliary = struct.unpack_from("<IhHBB", self.data, at + 8)
            if section > 0 and storage in (2, 3):
                zeros, offset = struct.unpack_from("<II", self.data, at)
                name = self.data[at:at + 8].rstrip(b"\0").decode() if zeros else self._string(strings + offset)
                found.append((name, self.sections[section - 1].address + value))
            index += 1 + auxiliary
        return found

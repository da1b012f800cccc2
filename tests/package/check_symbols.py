"""Checks that a DLL has no debug information of its own and names the file that has it.

usage: check_symbols.py DLL SYMBOLS

SYMBOLS must be the file that the DLL's debug link names, with the checksum that it states, be made from the same image
(same sections at the same addresses, same entry point), and hold debug information.
"""

import os
import struct
import sys
import zlib


class Image:
    """What the headers of a Windows image say."""

    def __init__(self, path):
        with open(path, "rb") as file:
            self.data = file.read()
        (at,) = struct.unpack_from("<I", self.data, 0x3C)
        if self.data[at:at + 4] != b"PE\0\0":
            raise ValueError(f"{path} is no image")
        _, count, self.time, symbols, symbol_count, optional_size, _ = struct.unpack_from("<HHIIIHH", self.data, at + 4)
        optional = at + 24
        (self.entry,) = struct.unpack_from("<I", self.data, optional + 16)
        (self.base,) = struct.unpack_from("<Q", self.data, optional + 24)
        self.symbol_count = symbol_count
        names = symbols + 18 * symbol_count  # the table of names follows that of symbols
        self.sections = {}
        for i in range(count):
            header = optional + optional_size + 40 * i
            name = self.data[header:header + 8].rstrip(b"\0").decode("ascii")
            if name.startswith("/"):
                start = names + int(name[1:])
                name = self.data[start:self.data.index(b"\0", start)].decode("ascii")
            size, address, raw_size, raw = struct.unpack_from("<IIII", self.data, header + 8)
            self.sections[name] = (address, size, self.data[raw:raw + min(size, raw_size)] if raw else b"")

    def addresses(self):
        return {name: where[:2] for name, where in self.sections.items()
                if not name.startswith((".debug_", ".gnu_debuglink"))}


def problems(dll_path, symbols_path):
    dll, symbols = Image(dll_path), Image(symbols_path)
    for name in dll.sections:
        if name.startswith(".debug_"):
            yield f"the DLL has a section {name}: cmake/Symbols.cmake should have split it off"
    if dll.symbol_count:
        yield f"the DLL has {dll.symbol_count} symbols beside its exports"
    for name in (".debug_info", ".debug_line"):
        if not symbols.sections.get(name, (0, 0, b""))[2]:
            yield f"{symbols_path} has no section {name}"
    if not symbols.symbol_count:
        yield f"{symbols_path} has no symbols"
    if symbols.sections.get(".text", (0, 0, b""))[2]:
        yield f"{symbols_path} has code"
    if (dll.base, dll.entry, dll.addresses()) != (symbols.base, symbols.entry, symbols.addresses()):
        yield f"the DLL and {symbols_path} do not lie at the same addresses"
    if dll.time or symbols.time:
        yield "there is a time of day in the DLL or its symbols"

    link = dll.sections.get(".gnu_debuglink", (0, 0, b""))[2]
    if not link:
        yield "the DLL names no file of symbols"
        return
    name, rest = link.split(b"\0", 1)
    if name.decode("ascii") != os.path.basename(symbols_path):
        yield f"the DLL names {name.decode('ascii')}, not {os.path.basename(symbols_path)}"
    (stated,) = struct.unpack_from("<I", link, (len(name) + 4) // 4 * 4)
    found = zlib.crc32(symbols.data)
    if stated != found:
        yield f"the DLL states the checksum {stated:08x}, that of {symbols_path} is {found:08x}: relink the DLL"


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    found = list(problems(sys.argv[1], sys.argv[2]))
    for problem in found:
        print(problem)
    sys.exit(1 if found else 0)


main()

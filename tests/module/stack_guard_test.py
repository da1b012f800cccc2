#!/usr/bin/env python3
"""Checks that functions of a DLL by GCC notice an overrun of their buffers, and that the DLL brings what they need for
it itself.

usage: stack_guard_test.py DLL

The symbols are looked for in DLL.debug.
"""

import struct
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
SOURCE = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(SOURCE / "tools" / "abi"))

from image import Image  # noqa: E402

CALL = 0xE8


class StackGuard(unittest.TestCase):
    path = None

    def setUp(self):
        self.image = Image(self.path)
        self.symbols = dict(Image(Path(f"{self.path}.debug")).symbols())

    def callers(self, function):
        """How many calls in the code lead to the function."""
        text = next(section for section in self.image.sections if section.name == ".text")
        code = self.image.section_data(".text")
        return sum(at + 5 + struct.unpack_from("<i", code, at + 1)[0] + text.address == function
                   for at in range(len(code) - 5) if code[at] == CALL)

    def test_functions_with_buffers_check_them(self):
        self.assertGreater(self.callers(self.symbols["__stack_chk_fail"]), 20)

    def test_no_cryptography_provider_is_loaded(self):
        self.assertEqual([name for name in self.image.imports() if name.startswith("Crypt")], [])


if __name__ == "__main__":
    StackGuard.path = Path(sys.argv.pop())
    unittest.main()

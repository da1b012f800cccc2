#!/usr/bin/env python3
"""Checks that a DLL of Visual C++'s ABI has control-flow guard: its calls through pointers are checked, and the loader
is told which functions they may reach.

usage: guard_test.py DLL
"""

import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
SOURCE = Path(__file__).resolve().parent.parent.parent.parent
sys.path.insert(0, str(SOURCE / "tools" / "abi"))

from image import Image  # noqa: E402

GUARD_OF_IMAGE = 0x4000
CALLS_ARE_CHECKED = 0x100
TABLE_IS_THERE = 0x400


class ControlFlowGuard(unittest.TestCase):
    image = None

    def test_the_header_names_it(self):
        self.assertTrue(self.image.characteristics & GUARD_OF_IMAGE)

    def test_calls_are_checked(self):
        guard = self.image.guard()
        self.assertIsNotNone(guard)
        self.assertTrue(guard.flags & CALLS_ARE_CHECKED)
        # Both lead to code until the loader puts its own there.
        for pointer in (guard.check_pointer, guard.dispatch_pointer):
            self.assertTrue(self.image.section_of(self.image.pointer_at(pointer)).is_code)
            self.assertIn(pointer, self.image.relocated())

    def test_the_table_holds_functions_in_order(self):
        guard = self.image.guard()
        self.assertTrue(guard.flags & TABLE_IS_THERE)
        self.assertEqual(guard.functions, sorted(set(guard.functions)))
        for function in guard.functions:
            self.assertTrue(self.image.section_of(function).is_code, hex(function))

    def test_hosts_may_call_every_exported_function_through_a_pointer(self):
        exported = {export.address for export in self.image.exports() if export.is_code}
        self.assertNotEqual(exported, set())
        self.assertEqual(exported - set(self.image.guard().functions), set())


if __name__ == "__main__":
    ControlFlowGuard.image = Image(Path(sys.argv.pop()))
    unittest.main()

#!/usr/bin/env python3
"""Tests of tools/abi.py: each kind of change to the interface is noticed, and judged as hosts would."""

import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
SOURCE = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(SOURCE / "tools" / "abi"))

from agreement import disagreements  # noqa: E402
from changes import changes  # noqa: E402
from exported import Declared  # noqa: E402
from lists import read, read_lines  # noqa: E402
from model import plain  # noqa: E402
from names import common, readable  # noqa: E402

MINGW = SOURCE / "abi" / "mingw"
VISUAL_CPP = SOURCE / "abi" / "visualcpp"


class Lists(unittest.TestCase):
    """Starts from the checked-in lists and changes them."""

    def setUp(self):
        self.old = read(MINGW)
        self.new = read(MINGW)

    def replace(self, name, line, *others):
        self.assertEqual(self.new[name].count(line), 1, line)
        at = self.new[name].index(line)
        self.new[name][at:at + 1] = others

    def replace_below(self, name, head, line, *others):
        at = self.new[name].index(line, self.new[name].index(head))
        self.new[name][at:at + 1] = others

    def assert_changes(self, *expected):
        self.assertEqual([(change.breaks, change.text) for change in changes(self.old, self.new)], list(expected))


class Exports(Lists):
    FIND = "function qelString::isEmpty() const = _ZNK9qelString7isEmptyEv"

    def test_without_a_change_nothing_is_reported(self):
        self.assert_changes()

    def test_a_renamed_function_breaks_hosts(self):
        self.replace("exports", self.FIND, "function qelString::isVoid() const = _ZNK9qelString6isVoidEv")
        self.assert_changes((True, "no longer exported: function qelString::isEmpty() const"),
                            (False, "newly exported: function qelString::isVoid() const"))

    def test_a_decorated_name_alone_breaks_hosts(self):
        self.replace("exports", self.FIND, "function qelString::isEmpty() const = _ZNK9qelString7isEmptyEvX")
        self.assert_changes((True, "other result or access: function qelString::isEmpty() const, "
                                   "now _ZNK9qelString7isEmptyEvX"))

    def test_a_new_function_does_not(self):
        self.replace("exports", self.FIND, self.FIND, "function qelNew() = _Z6qelNewv")
        self.assert_changes((False, "newly exported: function qelNew()"))


class Types(Lists):
    STRING = "class qelString: size 16, alignment 8"
    CACHE = "    8 +8 m_charCache: char*"

    def test_another_size_breaks_hosts(self):
        self.replace("types", self.STRING, "class qelString: size 24, alignment 8")
        self.assert_changes((True, f"was {self.STRING}, is size 24, alignment 8"))

    def test_a_moved_member_breaks_hosts(self):
        self.replace_below("types", self.STRING, self.CACHE, "    12 +8 m_charCache: char*")
        self.assert_changes((True, "class qelString: m_charCache was 8 +8 char*, is 12 +8 char*"))

    def test_another_type_of_a_member_breaks_hosts(self):
        self.replace_below("types", self.STRING, self.CACHE, "    8 +8 m_charCache: wchar_t*")
        self.assert_changes((True, "class qelString: m_charCache was 8 +8 char*, is 8 +8 wchar_t*"))

    def test_a_removed_member_breaks_hosts(self):
        self.replace_below("types", self.STRING, self.CACHE)
        self.assert_changes((True, "class qelString: m_charCache is gone"))

    def test_an_added_member_breaks_hosts_even_where_it_fits_in(self):
        self.replace_below("types", self.STRING, self.CACHE, self.CACHE, "    16 +4 m_more: int")
        self.assert_changes((True, "class qelString: new member m_more at 16 +4 int"))

    def test_another_type_of_a_static_member_breaks_hosts(self):
        self.replace("types", "    static MinRoundOffset: double const", "    static MinRoundOffset: float const")
        self.assert_changes((True, "class qelDouble: static MinRoundOffset was double const, is float const"))

    def test_a_new_static_member_does_not(self):
        line = "    static MinRoundOffset: double const"
        self.replace("types", line, line, "    static more: int")
        self.assert_changes((False, "class qelDouble: new static more of type int"))

    def test_a_new_name_in_the_same_place_breaks_only_sources(self):
        self.replace_below("types", self.STRING, self.CACHE, "    8 +8 m_narrow: char*")
        self.assert_changes((False, "class qelString: m_charCache is now called m_narrow"))

    def test_an_added_base_class_breaks_hosts(self):
        self.replace_below("types", self.STRING, self.CACHE, self.CACHE, "    16 +1 (base class): qelBase")
        self.assert_changes((True, "class qelString: new member base class qelBase at 16 +1 qelBase"))

    def test_another_value_breaks_hosts(self):
        self.replace_below("types", "enum eWeight: size 4, int", "    1 eBalanced", "    3 eBalanced")
        self.assert_changes((True, "enum eWeight: eBalanced was 1, is 3"))

    def test_a_removed_value_breaks_hosts(self):
        self.replace_below("types", "enum eWeight: size 4, int", "    1 eBalanced")
        self.assert_changes((True, "enum eWeight: eBalanced was 1, is gone"))

    def test_a_new_value_does_not(self):
        self.replace_below("types", "enum eWeight: size 4, int", "    1 eBalanced", "    1 eBalanced", "    9 eEmpty")
        self.assert_changes((False, "enum eWeight: new value eEmpty = 9"))

    def test_a_removed_type_breaks_hosts(self):
        for lines in (self.old["types"], self.new["types"]):
            del lines[lines.index("class qelZClipping: size 24, alignment 8") + 1:]
        self.new["types"].pop()
        self.assert_changes((True, "no longer there: class qelZClipping"))


class VirtualTables(Lists):
    HEAD = "class qelProgressCtrlWindow"
    RESET = "    3 reset() = _ZN21qelProgressCtrlWindow5resetEv"
    TITLE = "    5 setTitle(qelString const&) = _ZN21qelProgressCtrlWindow8setTitleERK9qelString"

    def test_exchanged_slots_break_hosts(self):
        self.replace_below("virtual-slots", self.HEAD, self.RESET, self.RESET.replace("3", "5"))
        self.replace_below("virtual-slots", self.HEAD, self.TITLE, self.TITLE.replace("5 set", "3 set"))
        self.assertEqual([change.breaks for change in changes(self.old, self.new)], [True, True])

    def test_a_slot_at_the_end_breaks_hosts_that_derive(self):
        self.replace_below("virtual-slots", self.HEAD, self.TITLE, self.TITLE, "    6 more() = _Z4more")
        self.assert_changes((True, "class qelProgressCtrlWindow: new slot 6 more() = _Z4more"))

    def test_a_missing_slot_breaks_hosts(self):
        self.replace_below("virtual-slots", self.HEAD, self.TITLE)
        self.assert_changes((True, "class qelProgressCtrlWindow: slot 5 was setTitle(qelString const&) = "
                                   "_ZN21qelProgressCtrlWindow8setTitleERK9qelString, is gone"))

    def test_the_order_of_an_interface_that_hosts_implement_is_kept_as_well(self):
        self.assertEqual(self.old["virtual-slots"][:4],
                         ["class ProgressDisplayProtocol",
                          "    0 setProgress(int, int) = left to derived classes",
                          "    1 addProcess(int, qelString, bool) = left to derived classes",
                          "    2 removeProcess(int) = left to derived classes"])


class Agreement(unittest.TestCase):
    def setUp(self):
        self.mingw, self.visual_cpp = read(MINGW), read(VISUAL_CPP)
        self.known = read_lines(SOURCE / "abi" / "visualcpp-only.txt")

    def found(self):
        return disagreements(self.mingw, self.visual_cpp, self.known)

    def test_an_export_of_one_abi_only_is_reported(self):
        self.mingw["exports"].append("function qelNew() = _Z6qelNewv")
        self.visual_cpp["exports"].append("function qelOther() = ?qelOther@@YAXXZ")
        self.assertEqual(self.found(), ["exported with MinGW only: function qelNew()",
                                        "exported with Visual C++ only: function qelOther()"])

    def test_an_exception_that_is_none_is_reported(self):
        self.known.append("function qelNew()")
        self.assertEqual(self.found(), ["listed as exported with Visual C++ only, but it is not: function qelNew()"])

    def test_members_that_a_compiler_writes_may_be_exported_by_one_only(self):
        self.visual_cpp["exports"].append("function qelNew::operator=(qelNew const&) = ?x")
        self.assertEqual(self.found(), [])

    def test_another_offset_is_reported(self):
        lines = self.visual_cpp["types"]
        lines[lines.index("    8 +8 m_charCache: char*")] = "    16 +8 m_charCache: char*"
        self.assertEqual(self.found(), ["class qelString: with MinGW only: 8 +8 m_charCache: char*",
                                        "class qelString: with Visual C++ only: 16 +8 m_charCache: char*"])

    def test_another_order_of_virtual_functions_is_reported(self):
        lines = self.visual_cpp["virtual-slots"]
        at = next(at for at, line in enumerate(lines) if " reset() = " in line)
        lines[at], lines[at + 1] = lines[at + 1], lines[at]
        self.assertEqual(len(self.found()), 1)


class Names(unittest.TestCase):
    def test_both_compilers_names_read_the_same(self):
        gnu = "_ZNK15qelBalancedTree4walkEPFiRK20qelBalancedTreeEntryPvES3_"
        visual_cpp = "?walk@qelBalancedTree@@QEBAHP6AHAEBVqelBalancedTreeEntry@@PEAX@Z1@Z"
        spelled = readable([gnu, visual_cpp])
        self.assertEqual(spelled[gnu],
                         "qelBalancedTree::walk(int (*)(qelBalancedTreeEntry const&, void*), void*) const")
        self.assertEqual(spelled[visual_cpp], spelled[gnu])

    def test_variants_of_constructors_and_destructors_are_told_apart(self):
        spelled = readable(["_ZN9qelStringC1ERKS_", "_ZN9qelStringC2ERKS_", "_ZN13qelStringReprD0Ev"])
        self.assertEqual(list(spelled.values()),
                         ["qelString::qelString(qelString const&) [complete object]",
                          "qelString::qelString(qelString const&) [base object]",
                          "qelStringRepr::~qelStringRepr() [deleting]"])

    def test_what_one_compiler_makes_has_no_common_name(self):
        self.assertIsNone(common("vtable for qelString"))
        self.assertIsNone(common("qelLogfile::`default ctor closure'()"))
        self.assertEqual(common("qelString::~qelString() [base object]"), "qelString::~qelString()")

    def test_types_are_spelled_in_one_way(self):
        self.assertEqual(plain("class qelArray<struct ProcessInfo,class qelBase<unsigned __int64> > &"),
                         "qelArray<ProcessInfo, qelBase<unsigned long long>>&")
        self.assertEqual(plain("long long unsigned int"), "unsigned long long")
        self.assertEqual(plain("short unsigned int"), "unsigned short")
        self.assertEqual(plain("wchar_t const *const"), "wchar_t const* const")


class MeantExports(unittest.TestCase):
    def unmeant(self, *names):
        return sorted(Declared(SOURCE / "include").unmeant({name: name for name in names}))

    def test_marked_classes_functions_and_data_are_meant(self):
        self.assertEqual(self.unmeant("qelString::find(qelString const&, int) const", "qelMathUtilities::PI",
                                      "qelstrcpy(char*, unsigned long long, char const*)", "vtable for qelDataSource",
                                      "typeinfo for qelDataSource", "qelDataSource::`vftable'",
                                      "qelString::~qelString() [base object]"), [])

    def test_everything_else_is_not(self):
        foreign = ["__cxa_throw", "boost::bad_get::what() const", "operator new(unsigned long long)",
                   "qelText::scrub(wchar_t*)", "std::exception::what() const", "typeinfo for std::exception",
                   "vtable for ProgressDialog"]
        self.assertEqual(self.unmeant(*foreign), foreign)


if __name__ == "__main__":
    unittest.main()

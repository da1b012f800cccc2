#!/usr/bin/env python3
"""Whether tools/mutants.py makes the mutants that it should, and tells those that tests find from those that change
nothing.

usage: runner_test.py SOURCE_FOLDER BUILD_FOLDER FOLDER
"""
import pathlib
import re
import subprocess
import sys
import unittest

sys.dont_write_bytecode = True
SOURCE, BUILD, FOLDER = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
sys.path.insert(0, str(SOURCE / "tools"))

from mutants import percentage  # noqa: E402
from mutation import places, programs  # noqa: E402

# Mutants of qelDouble: the tests find all of them but the last.
SAMPLE = (
    r"qelDouble\.cpp.*(step > smallestStep.*step <= smallestStep|step / 2.*step \* 2|\+ 0\.5\) / factor.*- 0\.5\)"
    r"|offset = MinRoundOffset; +-> +;|value < 0 \?.*value >= 0 \?|value < 0 \?.*value <= 0 \?)")
SIZE = 6


def changes(text):
    """The mutants of a function body, as what its lines become."""
    body = "".join(f"    {line}\n" for line in text.splitlines())
    return {mutant.after for mutant in places.mutants_of("file.cpp", f"int f(int a)\n{{\n{body}}}\n")}


class Places(unittest.TestCase):
    def test_comparisons_become_their_neighbours_and_their_opposites(self):
        self.assertEqual(changes("const bool less = a < b;"),
                         {"const bool less = a <= b;", "const bool less = a >= b;"})
        self.assertEqual(changes("const bool same = a == b;"), {"const bool same = a != b;"})

    def test_arithmetic_and_logic_are_swapped(self):
        self.assertEqual(changes("const int sum = a + b;"), {"const int sum = a - b;"})
        self.assertEqual(changes("const bool both = a && b;"), {"const bool both = a || b;"})
        self.assertEqual(changes("const bool none = !a;"), {"const bool none = a;"})

    def test_constants_are_off_by_one(self):
        self.assertEqual(changes("const int next = a[7];"), {"const int next = a[8];", "const int next = a[6];"})

    def test_the_size_of_an_array_stays(self):
        self.assertEqual(changes("char text[7];"), set())

    def test_conditions_are_negated(self):
        self.assertEqual(changes("if (a(b))"), {"if (!(a(b)))"})

    def test_calls_and_assignments_go(self):
        self.assertEqual(changes("run(a,\n    b);"), {";"})
        self.assertEqual(changes("m_a = b;"), {";"})

    def test_declarations_stay(self):
        self.assertEqual(changes("const Lock guard(a);\nqelString text;\nint* at = begin(text);"), set())

    def test_results_change(self):
        self.assertEqual(changes("return true;"), {"return false;"})
        self.assertEqual(changes("return a;"), {"return {};"})

    def test_what_is_no_code_stays(self):
        text = ("// a < b\n#if A > 1\nstatic_assert(sizeof(int) == 4, \"a < b\");\nint f(int a = 1);\n"
                "struct S\n{\n    int m_a = 1;\n    int f(int a) const;\n};\ntemplate <class A> int g(A* a);\n")
        self.assertEqual(places.mutants_of("file.h", text), [])

    def test_constants_outside_functions_change(self):
        text = "namespace\n{\nconst size_t kSize = 7;\nconst int kTable[] = {1};\n}\n"
        self.assertEqual([mutant.after for mutant in places.mutants_of("file.cpp", text)],
                         ["const size_t kSize = 6;", "const size_t kSize = 8;", "const int kTable[] = {0};",
                          "const int kTable[] = {2};"])

    def test_a_mutant_keeps_its_identity_when_lines_come_before_it(self):
        text = "int f(int a)\n{\n    return a + 1;\n}\n"
        first = {mutant.identity() for mutant in places.mutants_of("file.cpp", text)}
        moved = {mutant.identity() for mutant in places.mutants_of("file.cpp", "int g();\n\n" + text)}
        self.assertEqual(first, moved)


class Programs(unittest.TestCase):
    def test_those_for_other_code_pages_are_run_with_them(self):
        pages = {program.code_page: program.path for program in programs.read_programs(BUILD) if program.code_page}
        self.assertEqual(pages, {"932": "bin/qelCodePageTest.exe", "65001": "bin/qelCodePageTest.exe"})


class Figures(unittest.TestCase):
    def test_percentages_are_rounded_down(self):
        self.assertEqual(percentage(2449, 2500), 97.9)
        self.assertEqual(percentage(2450, 2500), 98.0)
        self.assertEqual(percentage(2499, 2500), 99.9)


class Runs(unittest.TestCase):
    def run_mutants(self, *options):
        command = [SOURCE / "tools/mutants.py", "--build", BUILD, "--folder", FOLDER, "--jobs", "1", "--match", SAMPLE,
                   "--count", str(SIZE), *options]
        return subprocess.run(command, capture_output=True, text=True, check=False)

    def test_mutants_are_judged_and_judgements_kept(self):
        done = self.run_mutants("--equivalent", "--fresh")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertEqual(len(re.findall(r"^ +\d+ killed ", done.stdout, re.M)), SIZE - 1, done.stdout)
        self.assertEqual(len(re.findall(r"^ +\d+ survived .*value <= 0 \?", done.stdout, re.M)), 1, done.stdout)
        self.assertIn(f"figures: {SIZE} mutants: {SIZE - 1} killed (0 by hanging), 0 survived, 1 equivalent",
                      done.stdout)
        # Nothing is run again.
        again = self.run_mutants("--equivalent")
        self.assertNotRegex(again.stdout, r"(?m)^ +\d+ (killed|survived) ")
        self.assertIn(f"{SIZE - 1} killed", again.stdout)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])

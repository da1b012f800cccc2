#!/usr/bin/env python3
"""Tests of qelDiagnose: what it prints and how it ends, for data sources of a configuration file of its own.

usage: diagnose_test.py [EMULATOR] PROGRAM
"""

import json
import re
import subprocess
import sys
import unittest
from pathlib import Path

COMMAND = sys.argv[1:]

# A connection string that holds the name of a built-in data source is used as it is, without the data folder in front
# of its path.
SOURCES = {
    "Stahlgüten": "DRIVER={SQLite3};Database=steel.db;NoTXN=PelionProfiles2020",
    "Password": "DRIVER={Nobody's};UID=me;Pwd=secret;Note=PelionProfiles2020",
    "Braces": "DRIVER={Nobody's};PWD={a;b};Note=PelionProfiles2020",
    "NoFile": "DRIVER={Nobody's};UID=;PWD=;Note=PelionProfiles2020;DBQ=missing.mdb",
    "NoPath": "DRIVER={Nobody's};SERVER=prices",
}


def run(*arguments):
    done = subprocess.run([*COMMAND, *arguments], capture_output=True, check=False)
    return done.returncode, done.stdout.decode("utf-8").replace("\r", ""), done.stderr.decode("utf-8")


class Usage(unittest.TestCase):
    def test_help_tells_the_options_and_succeeds(self):
        status, output, _ = run("--help")
        self.assertEqual(status, 0)
        for option in ("--config FILE", "--platform PLATFORM", "--json", "--version", "Exit status"):
            self.assertIn(option, output)

    def test_version_is_that_of_the_header(self):
        status, output, _ = run("--version")
        self.assertEqual(status, 0)
        self.assertRegex(output, r"^qelDiagnose \d+\.\d+\.\d+\n$")

    def test_an_unknown_option_is_refused(self):
        status, output, errors = run("--nonsense")
        self.assertEqual((status, output), (2, ""))
        self.assertIn("qelDiagnose: there is no option --nonsense", errors)

    def test_an_option_without_its_value_is_refused(self):
        status, _, errors = run("--config")
        self.assertEqual(status, 2)
        self.assertIn("qelDiagnose: a value is missing behind --config", errors)


class Report(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        lines = "".join(f'<DataSource Name="{name}" Platform="x64" Value="{value}"/>\n'
                        for name, value in SOURCES.items())
        Path("sources.xml").write_text(f"<Configuration><Orvalis>\n{lines}</Orvalis></Configuration>\n",
                                       encoding="utf-8-sig")

    def report(self, *names, platform=()):
        status, output, _ = run("--json", "--config", "sources.xml", *platform, *names)
        return status, json.loads(output)

    def source(self, name):
        status, report = self.report(name)
        self.assertEqual(len(report["dataSources"]), 1)
        return status, report["dataSources"][0]

    def test_a_data_source_that_opens_is_a_success(self):
        status, source = self.source("Stahlgüten")
        self.assertEqual(source, {"name": "Stahlgüten", "platform": "x64", "usable": True, "connection": "connected",
                                  "connectionString": SOURCES["Stahlgüten"]})
        self.assertEqual(status, 0)

    def test_a_missing_file_is_named_as_such(self):
        status, source = self.source("NoFile")
        self.assertEqual((status, source["usable"], source["connection"]), (1, True, "fileMissing"))
        self.assertEqual(source["connectionString"], SOURCES["NoFile"])

    def test_a_password_is_not_shown(self):
        _, source = self.source("Password")
        self.assertEqual(source["connectionString"], "DRIVER={Nobody's};UID=me;Pwd=***;Note=PelionProfiles2020")
        _, source = self.source("Braces")
        self.assertEqual(source["connectionString"], "DRIVER={Nobody's};PWD=***;Note=PelionProfiles2020")

    def test_a_string_without_a_database_is_not_usable(self):
        status, source = self.source("NoPath")
        self.assertEqual((status, source["usable"], source["connection"]), (1, False, "failed"))

    def test_an_unknown_name_is_not_tested(self):
        status, source = self.source("Unknown")
        self.assertEqual((status, source["usable"], source["connection"], source["connectionString"]),
                         (1, False, "untested", None))

    def test_another_platform_has_other_data_sources(self):
        status, report = self.report("Stahlgüten", platform=("--platform", "x86"))
        self.assertEqual((status, report["dataSources"][0]["connection"]), (1, "untested"))
        self.assertEqual(report["dataSources"][0]["platform"], "x86")

    def test_one_failure_among_many_is_a_failure(self):
        status, report = self.report("Stahlgüten", "NoFile")
        self.assertEqual(status, 1)
        self.assertEqual([source["name"] for source in report["dataSources"]], ["Stahlgüten", "NoFile"])

    def test_the_built_in_data_sources_are_looked_at_without_names(self):
        _, report = self.report()
        self.assertEqual([source["name"] for source in report["dataSources"]],
                         ["PelionProfiles2020", "QELMapping2020", "PelionCurrentProject"])

    def test_the_modules_are_listed_with_the_library(self):
        _, report = self.report("Unknown")
        library = [module for module in report["modules"] if module["path"].endswith("\\VarnelQELRoots.dll")]
        self.assertEqual(len(library), 1)
        self.assertRegex(library[0]["base"], r"^0x[0-9a-f]{8,16}$")
        self.assertGreater(library[0]["size"], 100000)
        self.assertRegex(library[0]["version"], r"^\d+\.\d{2}\.\d{4}\.\d{4}$")

    def test_quotation_marks_and_control_characters_are_escaped(self):
        _, report = self.report('quote " backslash \\ tab \t end')
        self.assertEqual(report["dataSources"][0]["name"], 'quote " backslash \\ tab \t end')

    def test_the_text_says_the_same(self):
        status, output, _ = run("--config", "sources.xml", "Stahlgüten", "NoFile", "Unknown")
        self.assertEqual(status, 1)
        for expression in (r"^Installation\n  Binaries        .+\n  Data            .+\n  Language        \w+ \(",
                           r"^ODBC drivers\n  Installed       \d+\n  Default driver  .+\n  In use          .+\n",
                           r"^Data sources, configuration file sources\.xml\n",
                           r"^  Stahlgüten  x64       1       connected              DRIVER=\{SQLite3\};",
                           r"^  NoFile      x64       1       database file missing  DRIVER=",
                           r"^  Unknown     x64       0       not tested             \(none\)$",
                           r"^0x[0-9a-f]{8,16}  0x[0-9a-f]{8}  \d+\.\d\d\.\d{4}\.\d{4}  .*\\VarnelQELRoots\.dll$"):
            self.assertRegex(output, re.compile(expression, re.MULTILINE))


unittest.main(argv=[sys.argv[0]])

#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The findings of `vyntable check` for programs: --json and --sarif.

VYNTABLE names the program.
"""
import json
import os
import pathlib
import subprocess
import tempfile
import unittest

import jsonschema

HERE = pathlib.Path(__file__).parent
SOURCE = HERE.parents[2]
BOARD = """[iadt]
oem_id = "ACME"
oem_table_id = "BOARD"
[[feature]]
function = "BTState"
commands = [
  { msr = 0x1B, get = "read" },
]
[[feature]]
function = "OTPState"
name_bytes = "1B 0A"
"""


class Reports(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "my board.toml").write_text(BOARD)

    def run_on(self, *arguments):
        return subprocess.run([os.environ["VYNTABLE"], *arguments], cwd=self.folder, capture_output=True, text=True,
                              check=False)

    def sarif(self, *arguments):
        done = self.run_on("check", "--sarif", *arguments)
        log = json.loads(done.stdout)
        jsonschema.validate(log, json.loads((HERE / "sarif.schema.json").read_text()))
        return done.returncode, log["runs"][0]

    def test_json_gives_each_finding_with_reason_and_cure(self):
        done = self.run_on("check", "--json", "my board.toml")
        report = json.loads(done.stdout)
        self.assertEqual(1, done.returncode)
        self.assertEqual((1, 1, 0), (report["errors"], report["warnings"], report["notes"]))
        self.assertEqual([("msr-in-entry", "error", "my board.toml:7:3"), ("entry-empty", "warning", "my board.toml:9:1")],
                         [(f["rule"], f["severity"], f["place"]) for f in report["findings"]])
        self.assertIn('"\\x1B\\x0A"', report["findings"][1]["text"])
        self.assertEqual("Read such registers in sensors alone.", report["findings"][0]["cure"])

    def test_sarif_names_rule_line_and_column(self):
        status, run = self.sarif("my board.toml")
        self.assertEqual(1, status)
        first = run["results"][0]
        self.assertEqual("msr-in-entry", first["ruleId"])
        self.assertEqual("msr-in-entry", run["tool"]["driver"]["rules"][first["ruleIndex"]]["id"])
        place = first["locations"][0]["physicalLocation"]
        self.assertEqual("my%20board.toml", place["artifactLocation"]["uri"])
        self.assertEqual({"startLine": 7, "startColumn": 3}, place["region"])

    def test_sarif_names_the_byte_of_a_table(self):
        self.assertEqual(0, self.run_on("compile", "my board.toml", "-o", ".", "--force").returncode)
        _, run = self.sarif("iadt.bin")
        place = run["results"][0]["locations"][0]["physicalLocation"]
        # Header 36 bytes, head of the first record 27.
        self.assertEqual({"byteOffset": 63, "byteLength": 1}, place["region"])
        self.assertEqual("iadt.bin", place["artifactLocation"]["uri"])

    def test_sarif_of_a_clean_board_has_no_results(self):
        status, run = self.sarif(str(SOURCE / "boards/reference.toml"))
        self.assertEqual((0, []), (status, run["results"]))


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The page of codes, the header and the Python module say the same, and scripts/error-text finds out when they do not."""
import pathlib
import re
import subprocess
import tempfile
import unittest

from checks_test import script

ROOT = pathlib.Path(__file__).parents[2]
error_text = script("error-text")

PAGE = """
| code | words | left by |
|---|---|---|
| 0 | success | all |
| 12 (0x0C) | wrong selector | |

| family | words | codes |
|---|---|---|
| 0x02 | COM port type | 0x200, 0x204 |
| 0x03 | voltage | 0x300, 0x305 |
| 0x04 | temperature | 0x404 to 0x406 |

| sub-code | words | left |
|---|---|---|
| 0x00 | not offered | |
| 0x04 | no entry | |

| code | words | left |
|---|---|---|
| 0x305 | no sensor | |

| code | words |
|---|---|
| 0x405, 0x406 | other words |
"""


class Tree(unittest.TestCase):
    def test_is_what_the_page_says(self):
        self.assertEqual("", subprocess.run([ROOT / "scripts/error-text", "--check"], capture_output=True, text=True,
                                            check=False).stdout)

    def test_has_words_for_every_family_of_the_public_header(self):
        header = (ROOT / "include/vynlib/vynlib.h").read_text()
        families = {int(number, 16) for number in re.findall(r"#define VYNLIB_FAMILY_\w+ (0x\w+)", header)}
        self.assertEqual(families, set(error_text.Codes((ROOT / error_text.PAGE).read_text()).families))

    def test_has_words_for_every_code_of_the_feature_functions(self):
        reasons = error_text.Codes((ROOT / error_text.PAGE).read_text()).reasons
        header = (ROOT / "include/vynlib/vynlib.h").read_text()
        numbers = dict(re.findall(r"#define (VYNLIB_FAMILY_\w+) (0x\w+)", header))
        rows = re.findall(r'\{"VynLib\w+", +\w+, +\d+, (VYNLIB_FAMILY_\w+), +k\w+, +(0x\w+), (0x\w+)',
                          (ROOT / "src/api/FeatureTable.h").read_text())
        self.assertEqual(43, len(rows))
        for family, *subs in rows:
            for sub in ("0x00", *subs):
                self.assertIn(int(numbers[family], 16) << 8 | int(sub, 16), reasons)


class Script(unittest.TestCase):
    def test_takes_the_words_of_the_sub_code_or_of_the_whole_code(self):
        codes = error_text.Codes(PAGE)
        self.assertEqual({0: "success", 12: "wrong selector", 0x200: "COM port type: not offered",
                          0x204: "COM port type: no entry", 0x300: "voltage: not offered", 0x305: "voltage: no sensor",
                          0x404: "temperature: no entry", 0x405: "temperature: other words",
                          0x406: "temperature: other words"},
                         {code: codes.text(code) for code in codes.reasons})

    def test_refuses_a_code_in_the_row_of_another_family(self):
        with self.assertRaisesRegex(SystemExit, "0x204 is in the row of another family"):
            error_text.Codes(PAGE.replace("0x300, 0x305", "0x300, 0x305, 0x204"))

    def test_refuses_words_for_a_code_that_no_family_has(self):
        with self.assertRaisesRegex(SystemExit, "lacks 0x306"):
            error_text.Codes(PAGE.replace("| 0x305 |", "| 0x305, 0x306 |"))

    def test_finds_a_file_that_says_something_else(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for path in ("scripts/error-text", error_text.PAGE, error_text.HEADER, error_text.MODULE):
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                (root / path).write_bytes((ROOT / path).read_bytes())
            page = root / error_text.PAGE
            page.write_text(page.read_text().replace("| Wi-Fi |", "| WLAN |"))
            check = subprocess.run(["python3", root / "scripts/error-text", "--check"], capture_output=True, text=True,
                                   check=False)
        self.assertEqual(1, check.returncode)
        self.assertEqual(2, check.stdout.count("is not what docs/error-codes.md says"))


if __name__ == "__main__":
    unittest.main()

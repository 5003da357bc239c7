#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""--json of every subcommand, is valid after docs/vynctl.schema.json."""
import unittest

import jsonschema
import tool

COMMANDS = (["info"], ["report"], ["sensors"], ["monitor", "--count", "1"], ["check"], ["metrics"], ["features"],
            ["features", "--all"], ["get", "wifi"], ["get", "com-type"], ["values", "wifi"], ["values", "com-type"], ["set", "wifi", "1"], ["watchdog", "status"],
            ["watchdog", "start", "60"], ["watchdog", "feed", "60"], ["watchdog", "stop"], ["fans"],
            ["fan", "CPU Fan"], ["chip", "3"], ["chip", "watchdog", "WDT"])

# Between them these print every kind of value.
BROAD_COMMANDS = (["info"], ["report"], ["features", "--all"], ["check"])


class Json(tool.Case):
    def test_of_every_command_is_valid(self):
        self.check(sorted(tool.HERE.glob("*.toml")), COMMANDS)

    def test_of_the_boards_that_are_shipped_is_valid(self):
        self.check(sorted((tool.SOURCE / "boards").glob("*.toml")), BROAD_COMMANDS)

    def check(self, boards, commands):
        for board in boards:
            for command in commands:
                with self.subTest(board=board.name, command=command):
                    done = self.run_on(board, *command, "--json")
                    document = self.validated(done.stdout)
                    self.assertEqual("", done.stderr)
                    self.assertEqual(command[0], document["command"])
                    if command[0] != "check":
                        self.assertEqual(document["ok"], done.returncode == 0)

    def test_says_that_the_library_does_not_start(self):
        done = self.stub("sensors", "--json", STUB_FAILS="1")
        document = self.validated(done.stdout)
        self.assertEqual((1, False, 1, None), (done.returncode, document["ok"], document["error"]["code"],
                                               document["model"]))
        self.assertIn("Please run as root!", document["error"]["words"])


class Schema(tool.Case):
    """The schema itself must refuse what it is there for."""

    def broken(self, change):
        document = self.document("sensors")
        change(document)
        return [error.message for error in tool.VALIDATOR.iter_errors(document)]

    def test_is_a_schema(self):
        jsonschema.Draft202012Validator.check_schema(tool.VALIDATOR.schema)

    def test_refuses_a_good_value_that_is_null(self):
        self.assertTrue(self.broken(lambda d: d["values"][0].update(value=None)))

    def test_refuses_a_failure_without_a_code(self):
        self.assertTrue(self.broken(lambda d: d["values"][2].pop("code")))

    def test_refuses_a_failure_with_a_value(self):
        self.assertTrue(self.broken(lambda d: d["values"][2].update(value=1.0)))

    def test_refuses_an_error_that_is_ok(self):
        self.assertTrue(self.broken(lambda d: d.update(error={"code": 1, "hex": "0x1", "words": "x"})))

    def test_refuses_another_version(self):
        self.assertTrue(self.broken(lambda d: d.update(version=2)))

    def test_refuses_unknown_members(self):
        self.assertTrue(self.broken(lambda d: d.update(extra=1)))


if __name__ == "__main__":
    unittest.main()

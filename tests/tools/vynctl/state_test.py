#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""A simulated board that remembers what calls changed."""
import fcntl
import pathlib
import re
import tempfile
import unittest

import tool

REFERENCE = tool.SOURCE / "boards/reference.toml"


class State(tool.Case):
    board = REFERENCE

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="vyn-state-")
        self.addCleanup(folder.cleanup)
        self.file = pathlib.Path(folder.name) / "board.state"

    def call(self, *arguments, board=REFERENCE):
        return self.run_on(board, "--state", str(self.file), *arguments)

    def told(self, *arguments):
        """What a call that succeeds prints."""
        done = self.call(*arguments)
        self.assertEqual((0, ""), (done.returncode, done.stderr))
        return done.stdout

    def refused(self, *arguments, **options):
        """The message of a call for which the library does not start."""
        done = self.call(*arguments, **options)
        self.assertEqual((1, ""), (done.returncode, done.stdout))
        return done.stderr

    def seconds_pass(self, seconds):
        text = self.file.read_text()
        saved = int(re.search(r"^saved = (\d+)$", text, re.MULTILINE).group(1))
        self.file.write_text(text.replace(f"saved = {saved}", f"saved = {saved - round(seconds * 1_000_000)}"))

    def interval(self):
        return int(re.match(r"Interval +(\d+)", self.told("watchdog", "status")).group(1))

    def test_the_next_call_sees_what_one_set(self):
        self.told("set", "wifi", "0")
        self.assertEqual("0\n", self.told("get", "wifi"))
        self.assertEqual("1\n", self.says("get", "wifi"), "without the file nothing changes")

    def test_everything_behind_the_features_is_kept(self):
        # SMBus device, super I/O, ports, memory, NVRAM, PCI function with memory, ports again, monitor.
        settings = [("bluetooth", "0"), ("com-type 3", "2"), ("lvds-type", "3"), ("tpm", "0"), ("otp", "0"),
                    ("me-descriptor", "1"), ("digital-io 4", "1"), ("user-led", "2")]
        for name, value in settings:
            self.told("set", *name.split(), value, "--yes")
        self.told("fan", "CPU Fan", "set", "1", "100")
        for name, value in settings:
            self.assertEqual(f"{value}\n", self.told("get", *name.split()), name)
        self.assertRegex(self.told("fan", "CPU Fan"), r"(?m)^CPU Fan +0 1 2 +1 +100$")
        for place in ("ports", "memory", "pci", "registers"):
            self.assertRegex(self.file.read_text(), rf"\[{place}\]\n0x")

    def test_a_fresh_board_leaves_no_bytes(self):
        self.told("info")
        self.assertNotRegex(self.file.read_text(), r"(?m)^0x")

    def test_the_watchdog_counts_between_calls(self):
        self.told("watchdog", "start", "60")
        self.seconds_pass(10)
        self.assertIn(self.interval(), (49, 50))
        self.told("watchdog", "feed", "60")
        self.assertIn(self.interval(), (59, 60))

    def test_the_watchdog_expires_between_calls(self):
        self.told("watchdog", "start", "60")
        self.seconds_pass(61)
        done = self.call("watchdog", "status")
        self.assertEqual((0, "simulated board: the watchdog expired\n"), (done.returncode, done.stderr))
        self.assertIn("Interval    0\n", done.stdout)
        self.assertEqual(0, self.interval(), "once")

    def test_calls_do_not_prolong_a_second(self):
        self.told("watchdog", "start", "200")
        for _ in range(20):
            self.seconds_pass(0.9)
            self.interval()
        self.assertLessEqual(self.interval(), 182)

    def test_minutes_are_counted_too(self):
        self.told("watchdog", "start", "9", "--mode", "1")
        self.seconds_pass(185)
        self.assertEqual(6, self.interval())

    def test_a_clock_that_was_set_back_stops_nothing(self):
        self.told("watchdog", "start", "60")
        self.seconds_pass(-3600)
        self.assertIn(self.interval(), (59, 60))

    def test_one_program_at_a_time_has_the_file(self):
        self.told("info")
        with self.file.open() as other:
            fcntl.flock(other, fcntl.LOCK_EX)
            self.assertIn(f"{self.file}: another program uses it\n", self.refused("info"))
        self.told("info")

    def test_the_state_of_another_board_is_refused(self):
        self.told("info")
        other = tool.HERE / "board.toml"
        self.assertIn(f"{self.file}: the state of another board than {other}\n", self.refused("info", board=other))

    def test_a_broken_state_is_refused_with_its_line(self):
        self.told("set", "wifi", "0")
        whole = self.file.read_text()
        for wrong in (whole.replace("saved = ", "saved = x"), whole.replace("[ports]", "[harbours]"),
                      whole.replace("[ports]\n", "[ports]\nfirst = 1\n"), whole.replace("[ports]\n", "[ports]\n0x1 = 256\n"),
                      "nonsense"):
            self.file.write_text(wrong)
            self.assertRegex(self.refused("info"), rf"(?m)^{re.escape(str(self.file))}:\d+: ", wrong)
            self.assertEqual(wrong, self.file.read_text(), "what cannot be read is left alone")

    def test_a_file_that_cannot_be_made_is_an_error(self):
        self.file = self.file.parent / "nowhere/state"
        self.assertIn(f"{self.file}: No such file or directory\n", self.refused("info"))

    def test_it_is_for_simulated_boards_alone(self):
        self.assertEqual(2, self.run_on(None, "--state", str(self.file), "info").returncode)


if __name__ == "__main__":
    unittest.main()

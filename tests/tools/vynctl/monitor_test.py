#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""monitor on a terminal: views, keys, window size, and a clean end."""
import fcntl
import os
import re
import select
import signal
import struct
import subprocess
import termios
import time
import unittest

import tool

ENTER, LEAVE = "\x1b[?1049h\x1b[?25l", "\x1b[?25h\x1b[?1049l"


class Terminal:
    """vynctl as the foreground process of a pseudo terminal."""

    def __init__(self, *arguments, rows=24, columns=80):
        self.leader, follower = os.openpty()
        self.resize(rows, columns)
        self.before = termios.tcgetattr(follower)
        self.follower = follower
        self.output = ""
        self.process = subprocess.Popen([tool.VYNCTL, "-s", str(tool.HERE / "board.toml"), *arguments], stdin=follower,
                                        stdout=follower, stderr=follower, env=tool.environment(),
                                        preexec_fn=self.take_terminal)

    def take_terminal(self):
        os.setsid()
        fcntl.ioctl(0, termios.TIOCSCTTY, 0)

    def resize(self, rows, columns):
        fcntl.ioctl(self.leader, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

    def type(self, keys):
        os.write(self.leader, keys.encode())

    def read_until(self, found, limit=60):
        """Reads until `found(output)` holds."""
        end = time.monotonic() + limit
        while not found(self.output):
            ready, _, _ = select.select([self.leader], [], [], max(0, end - time.monotonic()))
            if not ready:
                raise AssertionError(f"did not appear: {self.output!r}")
            self.output += os.read(self.leader, 65536).decode()

    def read_frame(self, text):
        self.read_until(lambda output: text in output)

    def close(self):
        """Everything that is still to be read, and the exit status."""
        status = self.process.wait(timeout=60)
        while select.select([self.leader], [], [], 0)[0]:
            self.output += os.read(self.leader, 65536).decode()
        self.after = termios.tcgetattr(self.follower)
        os.close(self.follower)
        os.close(self.leader)
        return status


class Monitor(tool.Case):
    def open(self, *arguments, **size):
        terminal = Terminal("monitor", *arguments, **size)
        terminal.read_frame("Rear Fan")
        return terminal

    def assert_clean(self, terminal, status=0):
        self.assertEqual(status, terminal.close())
        self.assertTrue(terminal.output.startswith(ENTER))
        self.assertTrue(terminal.output.endswith(LEAVE), terminal.output[-80:])
        self.assertEqual((1, 1), (terminal.output.count(ENTER), terminal.output.count(LEAVE)))
        self.assertEqual(terminal.before, terminal.after)

    def frames(self, terminal):
        return terminal.output.count("\x1b[H")

    def test_ends_cleanly_on_control_c(self):
        terminal = self.open()
        terminal.type("\x03")
        self.assert_clean(terminal)

    def test_ends_cleanly_on_q(self):
        terminal = self.open()
        terminal.type("q")
        self.assert_clean(terminal)

    def test_ends_cleanly_on_termination(self):
        terminal = self.open()
        terminal.process.send_signal(signal.SIGTERM)
        self.assert_clean(terminal)

    def test_shows_a_heading_per_quantity(self):
        terminal = self.open("--count", "1")
        self.assert_clean(terminal)
        found = [text for text in re.findall("Voltages|Temperatures|Fan speeds|VCORE|CPU Core|Rear Fan", terminal.output)]
        self.assertEqual(["Voltages", "VCORE", "Temperatures", "CPU Core", "Fan speeds", "Rear Fan"], found)

    def test_shows_the_sensors_that_are_asked_for(self):
        terminal = self.open("--count", "1", "fan-speed", "VCORE")
        self.assert_clean(terminal)
        for name, there in (("VCORE", True), ("CPU Fan", True), ("+12V", False), ("Temperatures", False)):
            self.assertEqual(there, name in terminal.output, name)

    def test_refuses_a_sensor_that_does_not_exist(self):
        for form in ([], ["--json"]):
            done = self.run_tool("monitor", "VCOR", "--count", "1", *form)
            self.assertEqual(2, done.returncode)
            self.assertNotIn(ENTER, done.stdout)
        self.assertEqual(["voltage/VCORE"], [value["id"] for value in
                                             self.validated(self.says("monitor", "VCORE", "-n", "1", "-j"))["values"]])

    def test_breaks_lines_between_words_on_a_narrow_screen(self):
        terminal = self.open("--count", "1", columns=30, rows=60)
        self.assert_clean(terminal)
        self.assertIn("counts", terminal.output)
        lines = re.sub("\x1b\\[[0-9;?]*[a-zA-Z]", "", terminal.output).replace("\r", "").splitlines()
        self.assertLessEqual(max(map(len, lines)), 30)

    def test_ends_after_the_wanted_number_of_views(self):
        terminal = self.open("--count", "3", "--interval", "0.02")
        self.assert_clean(terminal)
        self.assertEqual(3, len(re.findall("SENSOR.*NOW", terminal.output)))

    def test_shows_readings_with_extremes_and_failures(self):
        terminal = self.open("--count", "1")
        terminal.close()
        plain = re.sub(r"\x1b\[[0-9;?]*[A-Za-z]", "", terminal.output)
        self.assertRegex(plain, r"VYN-TEST  \d\d:\d\d:\d\d, every 1 s   q quits, r resets")
        self.assertRegex(plain, r"SENSOR +NOW +LOWEST +HIGHEST")
        self.assertRegex(plain, r"CPU Core +45.0  °C +45.0 +45.0")
        self.assertRegex(plain, r"VDEAD +fault +- +- +0x302: the sensor read 0")

    def test_does_not_echo_keys(self):
        terminal = self.open("--interval", "0.02")
        terminal.type("xyz")
        frames = self.frames(terminal)
        terminal.read_until(lambda output: output.count("\x1b[H") > frames + 3)
        terminal.type("q")
        terminal.close()
        self.assertNotIn("xyz", terminal.output)

    def test_draws_anew_when_the_window_changes(self):
        terminal = self.open("--interval", "3600")
        terminal.resize(5, 20)
        terminal.process.send_signal(signal.SIGWINCH)
        terminal.read_frame("more lines")
        terminal.type("q")
        self.assert_clean(terminal)
        last = terminal.output.split("\x1b[H")[-1]
        plain = re.sub(r"\x1b\[[0-9;?]*[A-Za-z]", "", last)
        rows = re.split("\r+\n", plain)
        self.assertEqual(5, len(rows))
        self.assertLessEqual(max(len(row) for row in rows), 20)
        self.assertRegex(rows[4], r"\A\.\.\. \d+ more lines\Z")

    def test_counts_the_lines_that_do_not_fit(self):
        # Two of a head, one of titles, three of quantities and seven of sensors; four are shown.
        terminal = Terminal("monitor", "--count", "1", rows=5, columns=100)
        self.assert_clean(terminal)
        self.assertIn("... 9 more lines", terminal.output)

    def test_gives_the_terminal_back_while_it_is_stopped(self):
        terminal = self.open("--interval", "3600")
        terminal.type("\x1a")
        terminal.read_frame(LEAVE)
        os.waitid(os.P_PID, terminal.process.pid, os.WSTOPPED)
        self.assertEqual(terminal.before, termios.tcgetattr(terminal.follower))
        terminal.process.send_signal(signal.SIGCONT)
        terminal.read_until(lambda output: output.count(ENTER) == 2)
        terminal.type("q")
        self.assertEqual(0, terminal.close())
        self.assertTrue(terminal.output.endswith(LEAVE))

    def test_needs_a_terminal(self):
        self.refuses(2, "vynctl: monitor needs a terminal; use 'vynctl sensors', or monitor --json for a stream",
                     "monitor")


class Stream(tool.Case):
    def test_is_one_document_per_line(self):
        lines = self.says("monitor", "--json", "--count", "3", "--interval", "0.02").splitlines()
        self.assertEqual(3, len(lines))
        for line in lines:
            self.assertEqual(7, len(self.validated(line)["values"]))

    def test_ends_on_a_signal(self):
        stream = subprocess.Popen([tool.VYNCTL, "-s", str(tool.HERE / "board.toml"), "monitor", "--json"],
                                  stdout=subprocess.PIPE, text=True, env=tool.environment())
        self.validated(stream.stdout.readline())
        stream.send_signal(signal.SIGINT)
        stream.communicate(timeout=60)
        self.assertEqual(0, stream.returncode)


if __name__ == "__main__":
    unittest.main()

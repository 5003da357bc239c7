#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The programs of docs/application-guide.md: compiled as the guide says, and run on boards that offer everything, half of it,
and nothing."""
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import unittest

SOURCE, BUILD = (pathlib.Path(os.environ[name]) for name in ("VYNLIB_SOURCE", "VYNLIB_BUILD"))
REFERENCE = SOURCE / "boards/reference.toml"
BARE = SOURCE / "tests/tools/vynctl/bare.toml"
WARNINGS = ("-Wall", "-Wextra", "-Wconversion", "-Wshadow", "-Werror")
COMPILERS = {"c": (os.environ["CC"], "-std=gnu99"), "cpp": (os.environ["CXX"], "-std=c++17")}

# 227 counts of 8 mV times 6.6, 208 times 3, 139, 206 times 2; then counts of 16 mV, 193 and 157 times 2.
SENSORS = """\
+12V: 12.0 V
+5V: 5.0 V
Vcore: 1.1 V
+3.3V: 3.3 V
VBAT: 3.1 V
+5VSB: 5.0 V
System: 37.5 C
Super I/O: 41.0 C
CPU: 48.0 C
Memory: 37.0 C
System Fan: 1204.0 rpm
CPU Fan: 1440.0 rpm
Chassis Fan: 1500.0 rpm
"""
FULL_SPEED = SENSORS.replace("CPU Fan: 1440.0", "CPU Fan: 3605.0")  # 416 counts of 1500000 at most


class Examples(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="vyn-examples-")
        cls.addClassCleanup(folder.cleanup)
        cls.scratch = pathlib.Path(folder.name)
        cls.programs = {"py": [sys.executable, SOURCE / "examples/application.py"]}
        for kind, compiler in COMPILERS.items():
            binary = cls.scratch / kind
            subprocess.run([*compiler, *WARNINGS, SOURCE / f"examples/application.{kind}", "-I", SOURCE / "include",
                            BUILD / "sim/libvynlib-sim.so.1", "-o", binary], check=True)
            cls.programs[kind] = [binary]

    def start(self, kind, board, *arguments):
        environment = os.environ | {"VYNLIB_BOARD": str(board), "PYTHONPATH": str(SOURCE / "python"),
                                    "LD_LIBRARY_PATH": f"{BUILD}/src:{BUILD}/sim", "PYTHONDONTWRITEBYTECODE": "1"}
        return subprocess.Popen([*self.programs[kind], *map(str, arguments)], env=environment, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, text=True)

    def run_all(self, board, *arguments):
        """(status, output) by program, without what the library itself prints in C and C++."""
        done = {}
        for kind in self.programs:
            process = self.start(kind, board, *arguments)
            output = process.communicate(timeout=60)[0]
            done[kind] = process.returncode, re.sub(r"^(ModelName::.*|Is Core8 \.\.\. \?\?\?)\n", "", output, flags=re.MULTILINE)
        return done

    def board(self, *changes):
        """The reference board with some of its text replaced."""
        text = REFERENCE.read_text()
        for one, other in changes:
            self.assertIn(one, text)
            text = text.replace(one, other)
        file = self.scratch / "board.toml"
        file.write_text(text)
        return file

    def test_a_hot_board_makes_the_fan_run(self):
        expected = f"{SENSORS}too hot at 48.0 C\n{FULL_SPEED}too hot at 48.0 C\n"
        for kind, done in self.run_all(REFERENCE, 2, self.scratch / "lock").items():
            self.assertEqual((0, expected), done, kind)

    def test_a_sensor_that_cannot_be_read_is_told_and_left_out(self):
        # The processor is 80 degrees below its limit of 100, and the battery is missing.
        board = self.board(("value = 0x88340000", "value = 0x88500000"), ("0x10 = [193, 157]", "0x10 = [0, 157]"))
        expected = SENSORS.replace("VBAT: 3.1 V", "VBAT: voltage: the sensor read 0, which counts as no reading")
        expected = expected.replace("CPU: 48.0 C", "CPU: 20.0 C") + "good at 41.0 C\n"
        for kind, done in self.run_all(board, 1, self.scratch / "lock").items():
            self.assertEqual((0, expected), done, kind)

    def test_on_a_bare_board_they_say_what_is_missing(self):
        starting = "starting: watchdog: the board does not offer it\n"
        fan = "CPU Fan: fan configuration: the board does not offer it\n"
        led = "LED: user LED state: the board does not offer it\n"
        done = self.run_all(BARE, 1, self.scratch / "lock")
        for kind in COMPILERS:
            self.assertEqual((0, f"{starting}{fan}good at 0.0 C\n{led}"), done[kind], kind)
        self.assertEqual((0, f"{starting}CPU Fan: the board has no fan 'CPU Fan'\ngood at 0.0 C\n"
                             "LED: the board has no feature 'user-led'\n"), done["py"])

    def test_without_a_board_they_do_not_start(self):
        for kind, (status, output) in self.run_all(self.scratch / "nowhere.toml", 1, self.scratch / "lock").items():
            self.assertEqual(1, status, kind)
            self.assertRegex(output, r"(?m)^starting: ", kind)

    def test_without_a_lock_they_do_not_start(self):
        for kind, (status, output) in self.run_all(REFERENCE, 1, "/nonexistent/lock").items():
            self.assertEqual(1, status, kind)
            self.assertIn("cannot lock /nonexistent/lock", output, kind)

    def test_a_signal_ends_them_in_order(self):
        for kind in self.programs:
            process = self.start(kind, REFERENCE, 0, self.scratch / "lock")
            while "too hot" not in process.stdout.readline():
                self.assertIsNone(process.poll(), kind)
            process.send_signal(signal.SIGTERM)
            process.communicate(timeout=60)
            self.assertEqual(0, process.returncode, kind)


class Guide(unittest.TestCase):
    def test_it_shows_the_whole_of_each_program(self):
        blocks = re.findall(r"^```(\w+)\n(.*?)^```", (SOURCE / "docs/application-guide.md").read_text(),
                            re.MULTILINE | re.DOTALL)
        # Blank lines between two parts are the program's own matter.
        for language, kind in (("c", "c"), ("cpp", "cpp"), ("python", "py")):
            shown = "".join(text for name, text in blocks if name == language)
            program = (SOURCE / f"examples/application.{kind}").read_text()
            self.assertEqual([line for line in program.splitlines() if line],
                             [line for line in shown.splitlines() if line], kind)
            self.assertEqual(5, sum(name == language for name, _ in blocks), "a block for each part")


if __name__ == "__main__":
    unittest.main()

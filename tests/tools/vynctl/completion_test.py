#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Completion in the real shells: keys go to an interactive shell, and what it then runs is told by a stand-in for vynctl."""
import json
import os
import pathlib
import pty
import select
import signal
import time
import unittest

import tool

HERE = pathlib.Path(__file__).parent
SCRIPTS = tool.SOURCE / "packaging/completion"
REFERENCE = tool.SOURCE / "boards/reference.toml"
# How each shell is started bare, and told to complete as it does when it is installed.
SHELLS = {
    "bash": (["bash", "--norc", "--noprofile", "-i"], f"bind 'set bell-style none'; source {SCRIPTS}/vynctl.bash"),
    "zsh": (["zsh", "-f", "-i"], f"fpath=({SCRIPTS} $fpath); autoload -U compinit; compinit -u -D; unsetopt beep"),
    "fish": (["fish", "--no-config", "-i"], f"source {SCRIPTS}/vynctl.fish"),
}
READY = "ready-to-complete"
STAND_IN = """#!/bin/sh
# Answers the completion, and notes down every other call.
[ "$1" != __complete ] || exec {vynctl} "$@"
printf '%s\\n' "$@" >{calls}.new
mv {calls}.new {calls}
"""


class Shell:
    """An interactive shell on a terminal of its own."""

    def __init__(self, name, folder):
        self.calls = folder / "calls"
        stand_in = folder / "bin/vynctl"
        stand_in.parent.mkdir()
        stand_in.write_text(STAND_IN.format(vynctl=tool.VYNCTL, calls=self.calls))
        stand_in.chmod(0o755)
        command, setup = SHELLS[name]
        # A terminal that can do little gets plain answers.
        environment = tool.environment(TERM="dumb" if name == "bash" else "vt100", HOME=str(folder), COLUMNS="200",
                                       PATH=f"{stand_in.parent}:{os.environ['PATH']}")
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execvpe(command[0], command, environment)
        self.screen = ""
        self.keys(f"{setup}; echo {READY[:5]}''{READY[5:]}\n")
        self.await_that(lambda: READY in self.screen)

    def keys(self, text):
        os.write(self.terminal, text.encode())

    def await_that(self, condition, seconds=60):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            if select.select([self.terminal], [], [], 0.05)[0]:
                self.screen += os.read(self.terminal, 65536).decode(errors="replace")
            if condition():
                return
        raise AssertionError(f"waited in vain; the screen:\n{self.screen}")

    def runs(self, line):
        """What vynctl is called with after these keys and a return."""
        self.calls.unlink(missing_ok=True)
        self.keys(line)
        time.sleep(0.3)  # the keys before the return are a line of their own
        self.keys("\n")
        self.await_that(self.calls.exists)
        return self.calls.read_text().splitlines()

    def shows(self, line, *words):
        """Waits until these keys have brought the words to the screen; then takes the line back."""
        self.screen = ""
        self.keys(line)
        self.await_that(lambda: all(word in self.screen for word in words))
        self.keys("\x15")

    def end(self):
        os.kill(self.process, signal.SIGKILL)
        os.waitpid(self.process, 0)
        os.close(self.terminal)


class Answers(tool.Case):
    """What vynctl says to the shells."""

    def answers(self, *typed, board=REFERENCE):
        done = self.run_on(None, "__complete", *(["-s", str(board)] if board else []), *typed)
        self.assertEqual((0, ""), (done.returncode, done.stderr))
        return [line.partition("\t")[0] for line in done.stdout.splitlines()]

    def test_subcommands_and_options(self):
        self.assertLessEqual({"sensors", "watchdog", "doctor"}, set(self.answers("")))
        self.assertEqual(["status", "start", "feed", "stop"], self.answers("watchdog", ""))
        self.assertLessEqual({"--every", "--then-stop", "--json"}, set(self.answers("watchdog", "feed", "--")))
        self.assertEqual(["--color=auto", "--color=always", "--color=never"], self.answers("--color="))

    def test_features_are_those_that_the_command_takes(self):
        self.assertEqual((True, False), ("wifi" in self.answers("get", ""), "backlight" in self.answers("get", "")))
        self.assertEqual((True, False), ("backlight" in self.answers("set", ""), "at-mode" in self.answers("set", "")))

    def test_features_are_those_of_the_board(self):
        for board in (REFERENCE, HERE / "board.toml"):
            listed = json.loads(self.run_on(board, "features", "--json").stdout)["values"]
            self.assertEqual({value["id"].split("/")[1] for value in listed if value["state"] != "unavailable"},
                             set(self.answers("get", "", board=board)))
        self.assertNotIn("wifi", self.answers("get", "", board=HERE / "hostile.toml"))

    def test_instances_and_values_of_the_board(self):
        self.assertEqual(["1", "2", "3", "4"], self.answers("get", "com-type", ""))
        for feature, *index in (["wifi"], ["com-type", "2"]):
            wanted = self.run_on(REFERENCE, "values", feature, *index).stdout.split()
            self.assertTrue(wanted)
            self.assertEqual(wanted, self.answers("set", feature, *index, ""))

    def test_sensors_can_be_asked_for_as_they_are_offered(self):
        offered = self.answers("sensors", "")
        self.assertLessEqual({"voltage", "CPU Fan", "Super I/O", "temperature/CPU", "current/CPU"}, set(offered))
        self.assertNotIn("CPU", offered)
        for word in offered:
            self.assertEqual("", self.run_on(REFERENCE, "sensors", word).stderr, word)

    def test_fans_and_their_modes(self):
        self.assertEqual(["CPU Fan", "System Fan"], self.answers("fan", ""))
        self.assertEqual(["set"], self.answers("fan", "CPU Fan", ""))
        self.assertEqual(["0", "1", "2"], self.answers("fan", "CPU Fan", "set", ""))
        self.assertEqual([], self.answers("fan", "CPU Fan", "set", "2", ""))

    def test_chips(self):
        self.assertEqual(["watchdog", "fan"], self.answers("chip", ""))
        for entry in self.answers("chip", "fan", ""):
            self.assertEqual(0, self.run_on(REFERENCE, "chip", "fan", entry).returncode, entry)

    def test_files(self):
        for typed in (["-s", ""], ["check", "--limits", ""], ["doctor", "--bundle", ""], ["metrics", "--output", ""]):
            self.assertEqual([":files"], self.answers(*typed, board=None))

    def test_nothing_goes_wrong_without_a_board(self):
        for board in ("/nonexistent", tool.SOURCE / "README.md"):
            self.assertIn("wifi", self.answers("get", "", board=board))
            self.assertEqual(["voltage", "temperature", "fan-speed", "current"], self.answers("sensors", "", board=board))

    def test_names_of_the_firmware_stay_printable_words(self):
        for word in self.answers("sensors", "", board=HERE / "hostile.toml"):
            self.assertRegex(word, "^[ -~]+$")


class InShells(tool.Case):
    """Keys and what comes of them, the same in every shell."""

    def in_each(self, check):
        for name in SHELLS:
            with self.subTest(shell=name):
                shell = Shell(name, self.scratch())
                try:
                    check(shell)
                finally:
                    shell.end()

    def test_words_are_completed(self):
        def check(shell):
            for keys, wanted in (
                    ("get wif\t", ["get", "wifi"]),
                    (f"-s {REFERENCE} set user-led-c\t", ["-s", str(REFERENCE), "set", "user-led-color"]),
                    (f"-s {REFERENCE} sensors fan-\t --js\t", ["-s", str(REFERENCE), "sensors", "fan-speed", "--json"]),
                    (f"--color=al\t info", ["--color=always", "info"])):
                self.assertEqual(wanted, shell.runs(f"vynctl {keys}"), shell.screen)
        self.in_each(check)

    def test_names_with_spaces_are_one_word(self):
        def check(shell):
            for keys in ("Sys\t", "'Sys\t", '"Sys\t'):
                self.assertEqual(["-s", str(REFERENCE), "fan", "System Fan"],
                                 shell.runs(f"vynctl -s {REFERENCE} fan {keys}"), keys + shell.screen)
            self.assertEqual(["-s", str(REFERENCE), "fan", "System Fan", "set"],
                             shell.runs(f"vynctl -s {REFERENCE} fan 'System Fan' se\t"), shell.screen)
        self.in_each(check)

    def test_files_are_completed_where_they_fit(self):
        def check(shell):
            (shell.calls.parent / "some-board.toml").touch()
            self.assertEqual(["-s", "some-board.toml", "info"], shell.runs("vynctl -s some-b\t info"), shell.screen)
        self.in_each(check)

    def test_choices_are_shown(self):
        def check(shell):
            shell.shows(f"vynctl -s {REFERENCE} get us\t\t", "usb-power", "user-led", "user-led-color")
            shell.shows("vynctl --color \t\t", "auto", "always", "never")
        self.in_each(check)


if __name__ == "__main__":
    unittest.main()

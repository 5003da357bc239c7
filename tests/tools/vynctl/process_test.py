#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Start, usage, colours and what the library prints."""
import fcntl
import os
import pathlib
import re
import struct
import subprocess
import termios
import unittest

import tool


class Usage(tool.Case):
    def test_help_has_examples(self):
        for arguments in ([], ["sensors"], ["check"], ["watchdog"], ["fan"], ["set"], ["doctor"]):
            done = self.run_on(None, *arguments, "--help")
            self.assertEqual((0, ""), (done.returncode, done.stderr))
            self.assertRegex(done.stdout, r"Examples:\n  vynctl ")

    def test_version_is_one_line(self):
        self.assertRegex(self.run_on(None, "--version").stdout, r"\Avynctl \d+\.\d+\.\d+\n\Z")

    def test_mistyped_subcommand_gets_a_suggestion(self):
        self.refuses(2, "vynctl: there is no subcommand 'sensor' (did you mean 'sensors'?)", "sensor")

    def test_mistakes_end_in_status_2(self):
        for arguments in ([], ["--bogus"], ["sensors", "--bogus"], ["get"], ["values"], ["set", "wifi"], ["watchdog"],
                          ["watchdog", "start"], ["--color", "pink", "sensors"]):
            done = self.run_tool(*arguments)
            self.assertEqual((2, ""), (done.returncode, done.stdout), arguments)
            self.assertRegex(done.stderr, r"\Avynctl: .+\nTry 'vynctl .*--help'.\n\Z")

    def test_board_file_must_exist(self):
        self.assertEqual(2, self.run_on("/nowhere.toml", "sensors").returncode)

    def test_live_needs_a_board(self):
        self.assertEqual(2, self.run_on(None, "--live", "sensors").returncode)

    def test_options_may_stand_before_or_after_the_subcommand(self):
        board = str(tool.HERE / "board.toml")
        runs = [subprocess.run([tool.VYNCTL, *arguments], capture_output=True, env=tool.environment(), check=True).stdout
                for arguments in (["-j", "-s", board, "get", "wifi"], ["get", "wifi", "-j", "-s", board],
                                  ["get", "-s", board, "wifi", "-j"])]
        self.assertEqual(1, len(set(runs)))


    def test_help_has_the_words_of_the_command_in_their_order(self):
        for command, usage in (("set", "FEATURE [INDEX] VALUE"), ("get", "FEATURE [INDEX]"), ("values", "FEATURE [INDEX]"),
                               ("fan", "NAME [set MODE [PARAM...]]"), ("sensors", "[SENSOR...]"),
                               ("monitor", "[SENSOR...]"), ("chip", "[KIND [NAME]]")):
            self.assertIn(f"\nUsage: vynctl {command} [OPTIONS] {usage}\n", self.run_on(None, command, "--help").stdout)

    def test_mistyped_verb_gets_a_suggestion(self):
        self.refuses(2, "vynctl: there is no subcommand 'stp' (did you mean 'stop'?)", "watchdog", "stp")

    def test_ranges_are_named(self):
        for arguments, message in ((["monitor", "--count", "-1"], "--count: needs a whole number from 0 to 4294967295, not '-1'"),
                                   (["monitor", "--interval", "abc"], "--interval: needs a number from 0.01 to 86400, not 'abc'"),
                                   (["monitor", "--interval", "nan"], "--interval: needs a number from 0.01 to 86400, not 'nan'"),
                                   (["watchdog", "feed", "60", "--every", "nan"],
                                    "--every: needs a number from 0.01 to 86400, not 'nan'")):
            self.refuses(2, "vynctl: " + message, *arguments)

    def test_empty_file_names_are_refused(self):
        self.refuses(2, "vynctl: --output: must not be empty", "metrics", "--output", "")
        self.assertEqual(3, self.run_tool("check", "--limits", "").returncode)

    def test_mistakes_show_no_control_characters(self):
        for arguments in (["\x1b[2J"], ["sensors", "--\x1b[2J"], ["get", "\x1b[2J"], ["watchdog", "\x1b[2J"],
                          ["--color", "\x1b[2J", "info"], ["monitor", "--count", "\x1b[2J"], ["check", "-l", "\x1b[2J"],
                          ["metrics", "--output", "/\x1b[2J/x"], ["-s", "\x1b[2J", "info"]):
            done = self.run_tool(*arguments)
            self.assertNotEqual(0, done.returncode)
            self.assertIn("\\x1B[2J", done.stdout + done.stderr, arguments)
            self.assertNotIn("\x1b", done.stdout + done.stderr, arguments)

    def test_mistakes_are_json_where_that_was_asked_for(self):
        for arguments, command, status, words in (
                (["--json", "get", "wify"], "get", 2, "there is no feature 'wify'"),
                (["sensors", "--bogus", "--json"], "sensors", 2, "--bogus"),
                (["--json"], None, 2, "subcommand is required"),
                (["senors", "-j"], None, 2, "there is no subcommand 'senors' (did you mean 'sensors'?)"),
                (["watchdog", "start", "999", "-j"], "watchdog", 2, "SECONDS must be a number from 0 to 255"),
                (["check", "--bogus", "--json"], "check", 3, "--bogus")):
            done = self.run_tool(*arguments)
            self.assertEqual((status, ""), (done.returncode, done.stderr), arguments)
            document = self.validated(done.stdout)
            self.assertEqual((command, False, 0), (document["command"], document["ok"], document["error"]["code"]))
            self.assertIn(words, document["error"]["words"])


class Start(tool.Case):
    def test_failure_gives_code_words_and_what_the_library_said(self):
        done = self.stub("sensors", STUB_FAILS="1")
        self.assertEqual((1, ""), (done.returncode, done.stdout))
        self.assertRegex(done.stderr, r"\Avynctl: the library does not start: .+; it says: .*, Please run as root! "
                         r"\(code 0x1\); run 'vynctl doctor'\n\Z")

    def test_failure_names_its_cause_beside_what_the_library_says(self):
        board = self.scratch() / "unprivileged.toml"
        board.write_text("[board]\nprivileged = false\n")
        done = self.run_on(board, "sensors")
        self.assertEqual((1, "vynctl: the library does not start: not initialised, or the I/O privilege level could not "
                          "be raised; it says: Please run as root! (code 0x1)\n"), (done.returncode, done.stderr))

    def test_failure_to_load_is_explained(self):
        done = self.run_on(None, "sensors", LD_LIBRARY_PATH=str(self.broken_library()))
        self.assertEqual((1, ""), (done.returncode, done.stdout))
        self.assertRegex(done.stderr, r"\Avynctl: cannot load the library: .*libvynlib\.so\.1.*; run 'vynctl doctor'\n\Z")

    def broken_library(self):
        directory = self.scratch()
        (directory / "libvynlib.so.1").write_text("no library")
        return directory

    def test_of_a_broken_board_file_gives_its_line(self):
        board = self.scratch() / "broken.toml"
        board.write_text("[bios]\nmodel = 3\n")
        done = self.run_on(board, "sensors")
        self.assertEqual((1, ""), (done.returncode, done.stdout))
        self.assertRegex(done.stderr, r"\A\S+broken\.toml:2: .+\nvynctl: the library does not start: \S+broken\.toml:2: .+; "
                         r"it says: Please run as root! \(code 0x1\)\n\Z")
        words = self.validated(self.run_on(board, "sensors", "--json").stdout)["error"]["words"]
        self.assertRegex(words, r"\Athe library does not start: \S+broken\.toml:2: ")

    def test_missing_function_is_named(self):
        done = self.stub("features")
        self.assertEqual((1, "vynctl: libvynlib.so.1 has no function VynLibGetComType; run 'vynctl doctor'\n"),
                         (done.returncode, done.stderr))


class Environment(tool.Case):
    evil = {"PATH": "/tmp/evil", "BASH_ENV": "/tmp/evil", "VYNLIB_BOARD": "/tmp/evil", "VYNLIB_LIVE": "/tmp/evil"}

    def test_is_made_safe_before_the_library_is_loaded(self):
        done = self.stub("sensors", STUB_FAILS="1", **self.evil)
        self.assertIn("PATH is /usr/sbin:/usr/bin:/sbin:/bin, VYNLIB_BOARD is (unset), VYNLIB_LIVE is (unset), ",
                      done.stderr)

    def test_reaches_the_library_as_far_as_it_says_how_to_speak(self):
        kept = {"TERM": "vt220", "COLUMNS": "70", "LINES": "20", "NO_COLOR": "1", "LANG": "C", "LC_ALL": "C",
                "LC_TIME": "C", "TZ": "UTC", "NOTIFY_SOCKET": "/run/x", "WATCHDOG_USEC": "5000000", "WATCHDOG_PID": "7"}
        done = self.stub("sensors", STUB_FAILS="1", **self.evil, **kept, MODPROBE_OPTIONS="-C /tmp/evil", HOME="/tmp/evil",
                         LD_PRELOAD="", **{"BASH_FUNC_modprobe%%": "() { touch /tmp/evil; }"})
        found = dict(text.split("=", 1) for text in re.findall("<([^>]*)>", done.stderr))
        self.assertEqual(kept | {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin"}, found)

    def test_names_the_board_and_its_liveliness(self):
        directory = self.scratch()
        (directory / "libvynlib-sim.so.1").symlink_to(pathlib.Path(tool.STUB) / "libvynlib.so.1")
        done = self.run_on("/dev/null", "sensors", "--live", LD_LIBRARY_PATH=str(directory), STUB_FAILS="1", **self.evil)
        self.assertIn("VYNLIB_BOARD is /dev/null, VYNLIB_LIVE is 1", done.stderr)


class Output(tool.Case):
    def test_keeps_the_lines_of_the_library_out(self):
        for arguments in (["sensors"], ["metrics"], ["watchdog", "status"]):
            done = self.stub(*arguments)
            for noise in ("ModelName", "noise", "Goodbye", "from a command", "PATH is"):
                self.assertNotIn(noise, done.stdout + done.stderr)

    def test_takes_the_model_from_them(self):
        self.assertIn('vynlib_board_info{model="STUB"} 1\n', self.stub("metrics").stdout)

    def test_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "w") as full:
            done = subprocess.run([tool.VYNCTL, "-s", str(tool.HERE / "board.toml"), "sensors"], stdout=full,
                                  stderr=subprocess.PIPE, text=True, env=tool.environment(), check=False)
        self.assertEqual((1, "vynctl: cannot write to standard output: No space left on device\n"),
                         (done.returncode, done.stderr))

    def test_to_nowhere_is_a_failure(self):
        done = subprocess.run(["/bin/sh", "-c", '"$0" -s "$1" sensors >&-', tool.VYNCTL, str(tool.HERE / "board.toml")],
                              capture_output=True, text=True, env=tool.environment(), check=False)
        self.assertEqual((1, "vynctl: cannot write to standard output: Bad file descriptor\n"),
                         (done.returncode, done.stderr))


    def shell(self, redirection, *arguments):
        return subprocess.run(["/bin/sh", "-c", f'"$0" "$@" {redirection}', tool.VYNCTL, *arguments], env=tool.environment(),
                              capture_output=True, text=True, timeout=60, check=False)

    def test_of_answers_and_mistakes_never_aborts(self):
        board = str(tool.HERE / "board.toml")
        runs = ((["--help"], 1), (["--version"], 1), (["sensors", "--help"], 1), (["-s", board, "sensors"], 1),
                (["-s", board, "sensors", "--json"], 1), (["-s", board, "get", "tpm"], 1), (["-s", board, "get", "wify"], 2),
                (["nonsense"], 2), (["nonsense", "--json"], 2), (["check", "--bogus"], 3), (["-s", board, "check"], 3))
        for redirection in (">/dev/full 2>/dev/full", ">&- 2>&-", "</dev/null >&- 2>&- <&-", "2>&- >/dev/full"):
            for arguments, status in runs:
                done = self.shell(redirection, *arguments)
                self.assertEqual((status, ""), (done.returncode, done.stdout + done.stderr), (redirection, arguments))

    def test_of_messages_that_cannot_be_written_keeps_the_status(self):
        board = str(tool.HERE / "board.toml")
        for redirection in ("2>/dev/full", "2>&-"):
            done = self.shell(redirection, "-s", board, "get", "tpm")
            self.assertEqual((1, ""), (done.returncode, done.stdout))
            done = self.shell(redirection, "-s", board, "get", "wifi")
            self.assertEqual((0, "1\n"), (done.returncode, done.stdout))

    def test_is_json_whatever_the_arguments_are(self):
        board = os.path.join(os.fsencode(self.scratch()), b"b\xff.toml")
        pathlib.Path(os.fsdecode(board)).write_bytes((tool.HERE / "board.toml").read_bytes())
        for arguments, status in (([b"info"], 0), ([b"get", b"\xff"], 2), ([b"fan", b"\xff"], 1), ([b"\xff"], 2),
                                  ([b"sensors", b"\xff"], None), ([b"check", b"-l", b"\xff=1"], 3),
                                  ([b"chip", b"fan", b"\xff"], 1), ([b"--\xff"], 2)):
            done = subprocess.run([tool.VYNCTL, "-s", board, "--json", *arguments], capture_output=True, timeout=60,
                                  env=tool.environment(), check=False)
            self.validated(done.stdout.decode("utf-8", "strict"))
            self.assertIn(done.returncode, (1, 2) if status is None else (status,), arguments)


class Terminal(tool.Case):
    def on_terminal(self, *arguments, columns=200, **changes):
        """What the tool prints on a terminal of its own."""
        leader, follower = os.openpty()
        fcntl.ioctl(leader, termios.TIOCSWINSZ, struct.pack("HHHH", 50, columns, 0, 0))
        process = subprocess.Popen([tool.VYNCTL, "-s", str(tool.HERE / "board.toml"), *arguments], stdout=follower,
                                   env=tool.environment(**changes))
        os.close(follower)
        text = tool.read_terminal(leader)
        os.close(leader)
        self.assertEqual(0, process.wait(timeout=60))
        return text


class Width(Terminal):
    def test_breaks_lines_between_words(self):
        for command in (["report"], ["info"], ["features"], ["sensors"], ["fans"], ["set", "--help"]):
            wide = self.on_terminal(*command, NO_COLOR="1", columns=1000)
            for columns in (20, 40, 60):
                narrow = self.on_terminal(*command, NO_COLOR="1", columns=columns)
                words = [word for word in narrow.split() if len(word) < columns]
                self.assertLessEqual(set(words), set(wide.split()), (command, columns))
                for line in narrow.splitlines():
                    self.assertTrue(len(line) <= columns or " " not in line.strip(), line)

    def test_breaks_nothing_in_a_pipe(self):
        self.assertEqual(self.says("features"), self.run_tool("features", COLUMNS="20").stdout)


class Colours(Terminal):
    def test_are_for_terminals_only(self):
        self.assertNotIn("\x1b", self.says("sensors"))
        self.assertIn("\x1b[31mfault\x1b[0m", self.on_terminal("sensors"))

    def test_respect_no_color_and_dumb_terminals(self):
        self.assertNotIn("\x1b", self.on_terminal("sensors", NO_COLOR="1"))
        self.assertNotIn("\x1b", self.on_terminal("sensors", TERM="dumb"))
        self.assertIn("\x1b", self.on_terminal("sensors", NO_COLOR=""))

    def test_can_be_forced(self):
        self.assertIn("\x1b[31m", self.says("--color", "always", "sensors"))
        self.assertNotIn("\x1b", self.on_terminal("sensors", "--color", "never"))

    def test_never_enter_json(self):
        self.validated(self.says("sensors", "--json", "--color", "always"))


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
"""Start, usage, colours and what the library prints."""
import os
import pathlib
import subprocess
import unittest

import tool


class Usage(tool.Case):
    def test_help_has_examples(self):
        for arguments in ([], ["sensors"], ["check"], ["watchdog"], ["fan"], ["set"]):
            done = self.run_on(None, *arguments, "--help")
            self.assertEqual((0, ""), (done.returncode, done.stderr))
            self.assertRegex(done.stdout, r"Examples:\n  vynctl ")

    def test_version_is_one_line(self):
        self.assertRegex(self.run_on(None, "--version").stdout, r"\Avynctl \d+\.\d+\.\d+\n\Z")

    def test_mistyped_subcommand_gets_a_suggestion(self):
        self.refuses(2, "vynctl: there is no subcommand 'sensor' (did you mean 'sensors'?)", "sensor")

    def test_mistakes_end_in_status_2(self):
        for arguments in ([], ["--bogus"], ["sensors", "--bogus"], ["get"], ["set", "wifi"], ["watchdog"],
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


class Start(tool.Case):
    def test_failure_gives_code_words_and_what_the_library_said(self):
        done = self.stub("sensors", STUB_FAILS="1")
        self.assertEqual((1, ""), (done.returncode, done.stdout))
        self.assertRegex(done.stderr, r"\Avynctl: the library does not start: not initialised, or the I/O privilege level "
                         r"could not be raised; it says: .*, Please run as root! \(code 0x1\)\n\Z")

    def test_failure_to_load_is_explained(self):
        done = self.run_on(None, "sensors", LD_LIBRARY_PATH=str(self.broken_library()))
        self.assertEqual((1, ""), (done.returncode, done.stdout))
        self.assertRegex(done.stderr, r"\Avynctl: cannot load the library: .*libvynlib\.so\.1")

    def broken_library(self):
        directory = self.scratch()
        (directory / "libvynlib.so.1").write_text("no library")
        return directory

    def test_of_a_broken_board_file_gives_its_line(self):
        board = self.scratch() / "broken.toml"
        board.write_text("[bios]\nmodel = 3\n")
        done = self.run_on(board, "sensors")
        self.assertEqual((1, ""), (done.returncode, done.stdout))
        self.assertRegex(done.stderr, r"broken\.toml:2: .+\nvynctl: the library does not start")

    def test_missing_function_is_named(self):
        done = self.stub("features")
        self.assertEqual((1, "vynctl: libvynlib.so.1 has no function VynLibGetComType\n"),
                         (done.returncode, done.stderr))


class Environment(tool.Case):
    evil = {"PATH": "/tmp/evil", "BASH_ENV": "/tmp/evil", "VYNLIB_BOARD": "/tmp/evil", "VYNLIB_LIVE": "/tmp/evil"}

    def test_is_made_safe_before_the_library_is_loaded(self):
        done = self.stub("sensors", STUB_FAILS="1", **self.evil)
        self.assertIn("PATH is /usr/sbin:/usr/bin:/sbin:/bin, BASH_ENV is (unset), VYNLIB_BOARD is (unset), "
                      "VYNLIB_LIVE is (unset), from a command, Please", done.stderr)

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


class Colours(tool.Case):
    def on_terminal(self, *arguments, **changes):
        """What the tool prints on a terminal of its own."""
        leader, follower = os.openpty()
        done = subprocess.run([tool.VYNCTL, "-s", str(tool.HERE / "board.toml"), *arguments], stdout=follower,
                              env=tool.environment(**changes), check=True)
        os.close(follower)
        text = os.read(leader, 65536).decode()
        os.close(leader)
        self.assertEqual(0, done.returncode)
        return text

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

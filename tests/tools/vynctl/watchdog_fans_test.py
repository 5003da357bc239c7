#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""watchdog, fans, fan and chip."""
import subprocess
import unittest

import tool


class Watchdog(tool.Case):
    def test_status_shows_interval_and_mode(self):
        self.assertEqual("Interval    0\nCount mode  0\n", self.says("watchdog", "status"))

    def test_start_sets_interval_and_mode(self):
        self.assertEqual("Watchdog started.\n"
                         "Interval    90  (1 minute 30 seconds, where the firmware counts seconds)\n"
                         "Count mode  1\n", self.says("watchdog", "start", "90", "--mode", "1"))
        values = self.values("watchdog", "start", "90", "--mode", "1")
        self.assertEqual((90, 1), (values["watchdog/interval"]["value"], values["watchdog/mode"]["value"]))

    def test_start_refuses_what_does_not_fit(self):
        self.refuses(2, "vynctl: SECONDS must be a number from 0 to 255, not '256'", "watchdog", "start", "256")
        self.refuses(2, "vynctl: SECONDS must be 1 to 255; 'vynctl watchdog stop' stops the watchdog", "watchdog",
                     "start", "0")
        self.refuses(2, "vynctl: --mode must be 0 or 1", "watchdog", "start", "9", "--mode", "2")

    def test_start_that_does_not_count_is_a_failure(self):
        done = self.stub("watchdog", "start", "9")
        self.assertEqual((1, "vynctl: watchdog: the commands that start or stop counting failed (code 0x1704)\n"),
                         (done.returncode, done.stderr))
        self.assertIn("Watchdog activated, but it does not count.\n", done.stdout)

    def test_feed_writes_the_interval(self):
        self.assertIn("Watchdog fed.\nInterval    30  (30 seconds", self.says("watchdog", "feed", "30"))

    def test_feed_without_an_interval_needs_one_that_the_board_reports(self):
        self.refuses(2, "vynctl: the board reports no interval to feed with; give SECONDS", "watchdog", "feed")

    def test_feed_goes_on_until_a_signal_ends_it(self):
        feeding = subprocess.Popen([tool.VYNCTL, "-s", str(tool.HERE / "board.toml"), "watchdog", "feed", "30",
                                    "--every", "0.01"], stdout=subprocess.PIPE, text=True, env=tool.environment())
        tool.await_signal_handling(feeding)
        feeding.terminate()
        self.assertIn("Watchdog fed.\n", feeding.communicate(timeout=60)[0])
        self.assertEqual(0, feeding.returncode)

    def test_feed_can_stop_the_watchdog_at_its_end(self):
        feeding = subprocess.Popen([tool.VYNCTL, "-s", str(tool.HERE / "board.toml"), "watchdog", "feed", "30",
                                    "--every", "10", "--then-stop", "--json"], stdout=subprocess.PIPE, text=True,
                                   env=tool.environment())
        tool.await_signal_handling(feeding)
        feeding.terminate()
        values = self.validated(feeding.communicate(timeout=60)[0])["values"]
        self.assertEqual((0, 0), (feeding.returncode, values[0]["value"]))

    def test_stop_clears_the_interval(self):
        self.assertEqual("Watchdog stopped.\nInterval    0\nCount mode  0\n", self.says("watchdog", "stop"))

    def test_stop_that_fails_says_why(self):
        done = self.stub("watchdog", "stop")
        self.assertEqual((1, "", "vynctl: watchdog: the commands that set the interval failed (code 0x1703)\n"),
                         (done.returncode, done.stdout, done.stderr))

    def test_is_refused_where_there_is_none(self):
        for verb in (["start", "9"], ["feed", "9"], ["stop"]):
            done = self.run_on(tool.HERE / "bare.toml", "watchdog", *verb)
            self.assertEqual((1, "", "vynctl: watchdog: the board does not offer it (code 0x1700)\n"),
                             (done.returncode, done.stdout, done.stderr), verb)


class Fans(tool.Case):
    def test_are_listed_with_modes_and_parameters(self):
        self.assertEqual("FAN      MODES  MODE  PARAMETERS\nCPU Fan  0 2    2     40 80\n", self.says("fans"))
        values = self.values("fans")
        self.assertEqual({"fan/CPU_Fan/modes": [0, 2], "fan/CPU_Fan/mode": 2, "fan/CPU_Fan/parameters": [40, 80]},
                         {key: value["value"] for key, value in values.items()})

    def test_that_only_identify_a_chip_are_none(self):
        reference = tool.SOURCE / "boards/reference.toml"
        self.assertNotIn("Id", self.run_on(reference, "fans").stdout)
        self.assertNotIn("Id", self.run_on(reference, "report", "--json").stdout.replace("Identi", ""))
        done = self.run_on(reference, "fan", "CPU Fan Id")
        self.assertEqual((1, "vynctl: there is no fan 'CPU Fan Id' (did you mean 'CPU Fan'?) (code 0x1806)\n"),
                         (done.returncode, done.stderr))
        self.assertEqual(0, self.run_on(reference, "chip", "fan", "CPU Fan Id").returncode)

    def test_that_are_missing_are_refused(self):
        board = self.scratch() / "empty.toml"
        board.write_text("[iadt]\n[iamt]\n")
        done = self.run_on(board, "fans")
        self.assertEqual((1, "vynctl: fan configuration: the board does not offer it (code 0x1800)\n"),
                         (done.returncode, done.stderr))


class Fan(tool.Case):
    def test_is_shown_by_name(self):
        self.assertEqual("FAN      MODES  MODE  PARAMETERS\nCPU Fan  0 2    2     40 80\n", self.says("fan", "CPU Fan"))

    def test_takes_mode_and_parameters(self):
        self.assertEqual("CPU Fan set to mode 0.\nFAN      MODES  MODE  PARAMETERS\nCPU Fan  0 2    0     0x20\n"
                         .replace("0x20", "32"), self.says("fan", "CPU Fan", "set", "0", "0x20"))
        self.assertEqual([10, 20], self.values("fan", "CPU Fan", "set", "2", "10", "20")
                         ["fan/CPU_Fan/parameters"]["value"])

    def test_explains_a_wrong_number_of_parameters(self):
        self.refuses(1, "vynctl: mode 2 of CPU Fan takes 2 parameters, not 1 (code 0x1805)", "fan", "CPU Fan", "set",
                     "2", "10")
        self.refuses(1, "vynctl: mode 0 of CPU Fan takes 1 parameter, not 0 (code 0x1805)", "fan", "CPU Fan", "set", "0")

    def test_explains_a_mode_that_is_missing(self):
        self.refuses(1, "vynctl: CPU Fan has no mode 1 (code 0x1805)", "fan", "CPU Fan", "set", "1", "10")

    def test_that_is_unknown_is_refused_with_the_nearest_name(self):
        self.refuses(1, "vynctl: there is no fan 'CPU Fna' (did you mean 'CPU Fan'?) (code 0x1806)", "fan", "CPU Fna")

    def test_refuses_wrong_usage(self):
        self.refuses(2, "vynctl: 'spin' is not something a fan does; write 'vynctl fan NAME set MODE PARAM...'", "fan",
                     "CPU Fan", "spin")
        self.refuses(2, "vynctl: 'set' needs MODE and the mode's parameters", "fan", "CPU Fan", "set")


class Chip(tool.Case):
    def test_of_the_watchdog_is_identified(self):
        self.assertEqual("I/O chip 5 (Nuvoton 5525D-S)\n", self.says("chip", "watchdog", "WDT"))
        self.assertEqual(5, self.values("chip", "25", "WDT")["chip/25/WDT"]["value"])

    def test_failures_have_the_library_code(self):
        self.refuses(1, "vynctl: the board has no identifying entry of that name (code 0x10)", "chip", "watchdog", "X")
        self.refuses(1, "vynctl: the chip was found but has no I/O number; kinds 1 to 24 ask for the board's chip of "
                     "identifier 0, which has no number; 'vynctl chip' lists the entries that name a chip (code 0x12)",
                     "chip", "3")

    def test_alone_lists_the_kinds_and_the_identifying_entries(self):
        self.assertEqual("The board's chips: Nuvoton 5525D-S, MCU 121\n\n"
                         "KIND           NAME  WHAT\n"
                         "1 to 24        -     the board as a whole: its chip of identifier 0, which has no number\n"
                         "watchdog (25)  WDT   I/O chip 5 (Nuvoton 5525D-S)\n", self.says("chip"))
        self.assertEqual({"chip/25/WDT": 5}, {key: value["value"] for key, value in self.values("chip").items()})

    def test_of_the_reference_board_answers(self):
        done = self.run_on(tool.SOURCE / "boards/reference.toml", "chip")
        self.assertEqual((0, ["watchdog (25)  WDT         I/O chip 5 (Nuvoton 5525D-S)",
                              "fan (26)       CPU Fan Id  I/O chip 1 (Fintek 81966)"]),
                         (done.returncode, done.stdout.splitlines()[-2:]))

    def test_is_not_told_without_a_board_information_record(self):
        for text, where in (("", "the table IAMT was not found: not in the board description"),
                            ("[[iamt.record]]\ntype = 7\n[iamt]\n", "it is not in the table IAMT")):
            board = self.scratch() / "chipless.toml"
            board.write_text(text)
            for arguments in (["chip"], ["chip", "3"], ["chip", "watchdog", "WDT"]):
                done = self.run_on(board, *arguments)
                self.assertEqual((1, "", "vynctl: the firmware has no board information record, which names the board's "
                                  f"chips; {where}\n"), (done.returncode, done.stdout, done.stderr))

    def test_without_words_is_admitted(self):
        done = self.stub("chip", "3")
        self.assertEqual((1, "vynctl: unknown code 0x7F42; kinds 1 to 24"), (done.returncode, done.stderr[:42]))

    def test_refuses_wrong_usage(self):
        self.refuses(2, "vynctl: KIND must be 1 to 26, 'watchdog' (25) or 'fan' (26), not '27'", "chip", "27")
        self.refuses(2, "vynctl: kind 25 needs NAME, the name of the board's identifying entry; 'vynctl chip' lists "
                     "them", "chip", "watchdog")


if __name__ == "__main__":
    unittest.main()

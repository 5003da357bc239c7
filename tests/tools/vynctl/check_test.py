#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""check: the exit status, the line and the performance data of a monitoring plugin."""
import re
import shlex
import unittest

import tool


class Check(tool.Case):
    def verdict(self, status, line, *arguments):
        done = self.run_tool("check", *arguments)
        self.assertEqual((status, line + "\n", ""), (done.returncode, done.stdout, done.stderr))

    def test_is_ok_when_all_is_readable(self):
        self.verdict(0, "VYNLIB OK - 2 sensors | 'CPU Core'=45C 'System'=-10C", "temperature")

    def test_is_ok_within_the_limits(self):
        self.verdict(0, "VYNLIB OK - 1 sensor | 'CPU Core'=45C;~:45;~:95", "CPU Core", "--limit", "CPU Core=~:45,~:95")

    def test_takes_sensors_behind_a_limit(self):
        self.verdict(0, "VYNLIB OK - 1 sensor | 'CPU Core'=45C;~:45;~:95", "--limit", "CPU Core=~:45,~:95", "CPU Core")

    def test_is_a_warning_outside_the_first_range(self):
        self.verdict(1, "VYNLIB WARNING - CPU Core 45.0 C (good: ~:44) | 'CPU Core'=45C;~:44;~:95", "CPU Core",
                     "-l", "CPU Core=~:44,~:95")

    def test_is_critical_outside_the_second_range(self):
        self.verdict(2, "VYNLIB CRITICAL - +12V 12.000 V (good: 12.1:13) | '+12V'=12V;;12.1:13", "+12V",
                     "-l", "+12V=-,12.1:13")

    def test_is_unknown_when_a_sensor_cannot_be_read(self):
        self.verdict(3, "VYNLIB UNKNOWN - VDEAD: 0x302: the sensor read 0, which counts as no reading | 'VDEAD'=U;1:2",
                     "VDEAD", "-l", "VDEAD=1:2")

    def test_puts_the_gravest_first(self):
        self.verdict(2, "VYNLIB CRITICAL - CPU Core 45.0 C (good: ~:40), System -10.0 C (good: 0:), "
                     "VDEAD: 0x302: the sensor read 0, which counts as no reading "
                     "| 'VDEAD'=U 'CPU Core'=45C;;~:40 'System'=-10C;0:", "VDEAD", "temperature",
                     "-l", "System=0:", "-l", "CPU Core=-,~:40")

    def test_judges_a_negative_reading_against_a_plain_maximum(self):
        self.verdict(1, "VYNLIB WARNING - System -10.0 C (good: 80) | 'System'=-10C;80", "System", "-l", "System=80")

    def test_takes_limits_from_a_file(self):
        limits = self.scratch() / "limits"
        limits.write_text("# for this board\nCPU Core = ~:44, ~:95\nfan-speed/CPU_Fan = 500:\n")
        self.verdict(1, "VYNLIB WARNING - CPU Core 45.0 C (good: ~:44) | 'CPU Core'=45C;~:44;~:95 'CPU Fan'=1000rpm;500:",
                     "CPU Core", "CPU Fan", "--limits", str(limits))

    def test_prefers_the_command_line_to_the_file(self):
        limits = self.scratch() / "limits"
        limits.write_text("CPU Core = ~:44\n")
        self.verdict(0, "VYNLIB OK - 1 sensor | 'CPU Core'=45C;~:60", "CPU Core", "-f", str(limits), "-l", "CPU Core=~:60")

    def test_is_unknown_where_a_limit_fits_no_sensor(self):
        self.verdict(3, "VYNLIB UNKNOWN - there is no sensor 'CPU Cor' (did you mean 'CPU Core'?)", "-l", "CPU Cor=~:60")

    def test_is_unknown_on_wrong_usage(self):
        self.verdict(3, "VYNLIB UNKNOWN - '5V' is not a range such as 10:20, 500:, ~:80 or @0:5", "-l", "+12V=5V")
        self.verdict(3, "VYNLIB UNKNOWN - The following argument was not expected: --bogus", "--bogus")

    def test_is_unknown_where_the_limits_cannot_be_read(self):
        folder = self.scratch()
        self.verdict(3, f"VYNLIB UNKNOWN - cannot read the limits file {folder}", "-f", str(folder))
        self.verdict(3, "VYNLIB UNKNOWN - cannot read the limits file /nowhere", "-f", "/nowhere")
        # Its first page is never mapped, so that reading fails.
        self.verdict(3, "VYNLIB UNKNOWN - cannot read the limits file /proc/self/mem", "-f", "/proc/self/mem")

    def test_is_unknown_where_the_file_holds_no_limit(self):
        limits = self.scratch() / "limits"
        for text in ("", "\n\n", "# CPU Core=~:60\n"):
            limits.write_text(text)
            self.verdict(3, f"VYNLIB UNKNOWN - the limits file {limits} holds no limit", "-f", str(limits), "-l",
                         "CPU Core=~:60")

    def test_is_unknown_when_the_library_does_not_start(self):
        done = self.stub("check", STUB_FAILS="1")
        self.assertEqual(3, done.returncode)
        self.assertRegex(done.stdout, r"\AVYNLIB UNKNOWN - the library does not start: .*Please run as root! \(code 0x1\); "
                         r"run 'vynctl doctor'\n\Z")

    def test_is_unknown_on_a_board_without_sensors(self):
        board = self.scratch() / "empty.toml"
        board.write_text("[iadt]\n[iamt]\n")
        done = self.run_on(board, "check")
        self.assertEqual((3, "VYNLIB UNKNOWN - this board has no sensors\n"), (done.returncode, done.stdout))


class ReferenceBoard(tool.Case):
    """A healthy board on which '+12V' and 'CPU' name sensors of two quantities each."""

    def check(self, *arguments):
        return self.run_on(tool.SOURCE / "boards/reference.toml", "check", *arguments)

    def test_is_ok_by_the_shipped_limits(self):
        done = self.check("--limits", str(tool.SOURCE / "packaging/monitoring/limits"))
        self.assertEqual((0, "VYNLIB OK - 15 sensors "), (done.returncode, done.stdout.partition("|")[0]))

    def test_is_ok_by_the_documented_examples(self):
        examples = re.findall(r"^(?:    |  )vynctl check(.*)$", (tool.SOURCE / "docs/vynctl.md").read_text() +
                              self.run_on(None, "check", "--help").stdout, re.MULTILINE)
        self.assertEqual(5, len(examples))
        for example in examples:
            words = [str(tool.SOURCE / "packaging/monitoring/limits") if word == "/etc/vynctl/limits" else word
                     for word in shlex.split(example)]
            self.assertEqual(0, self.check(*words).returncode, example)

    def test_shipped_limits_refuse_zero(self):
        for line in (tool.SOURCE / "packaging/monitoring/limits").read_text().splitlines():
            if line and not line.startswith("#"):
                for limit in line.rpartition("=")[2].split(","):
                    self.assertRegex(limit.strip(), r"\A[1-9][0-9.]*:", line)

    def test_refuses_a_name_of_several_quantities(self):
        why = "'+12V' fits several quantities: choose from voltage/+12V, current/+12V"
        for arguments in (["+12V"], ["--limit", "+12V=11:13"]):
            self.assertEqual((3, f"VYNLIB UNKNOWN - {why}\n"),
                             (self.check(*arguments).returncode, self.check(*arguments).stdout))
        done = self.run_on(tool.SOURCE / "boards/reference.toml", "sensors", "+12V")
        self.assertEqual((2, "", f"vynctl: {why}; 'vynctl sensors' lists them"),
                         (done.returncode, done.stdout, done.stderr.splitlines()[0]))
        self.assertIn("'voltage/+12V'=11.986V;11:13", self.check("voltage/+12V", "--limit", "voltage/+12V=11:13").stdout)

    def test_has_unique_labels_and_short_numbers(self):
        data = dict(re.findall(r"'([^']+)'=([-0-9.e]+)", self.check().stdout))
        self.assertEqual({"voltage/+12V": "11.986", "+5V": "4.992", "Vcore": "1.112", "+3.3V": "3.296", "VBAT": "3.088",
                          "+5VSB": "5.024", "System": "37.5", "Super I/O": "41", "temperature/CPU": "48", "Memory": "37",
                          "System Fan": "1204", "CPU Fan": "1440", "Chassis Fan": "1500", "current/+12V": "2.3",
                          "current/CPU": "8.7"}, data)


class CheckJson(tool.Case):
    def test_carries_the_verdict(self):
        document = self.document("check", "CPU Core", "System", "-l", "CPU Core=~:44,~:95", status=1)
        self.assertEqual({"status": "WARNING", "exit": 1, "sensors": [
            {"id": "temperature/CPU_Core", "status": "WARNING", "warning": "~:44", "critical": "~:95"},
            {"id": "temperature/System", "status": "OK", "warning": "", "critical": ""},
        ]}, document["check"])

    def test_is_valid_when_unknown(self):
        document = self.document("check", "Nothing", status=3)
        self.assertEqual((False, "UNKNOWN", 3), (document["ok"], document["check"]["status"], document["check"]["exit"]))


if __name__ == "__main__":
    unittest.main()

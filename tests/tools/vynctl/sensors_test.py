#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""sensors, metrics and the sensors of hostile and large boards."""
import os
import pathlib
import subprocess
import unittest

import tool


class Sensors(tool.Case):
    def test_are_aligned_under_a_heading_per_quantity(self):
        self.assertEqual(
            "Voltages\n"
            "  +12V      12.000  V\n"
            "  VCORE      1.200  V\n"
            "  VDEAD      fault       0x302: the sensor read 0, which counts as no reading\n"
            "\n"
            "Temperatures\n"
            "  CPU Core    45.0  °C\n"
            "  System     -10.0  °C\n"
            "\n"
            "Fan speeds\n"
            "  CPU Fan     1000  rpm\n"
            "  Rear Fan       0  rpm\n", self.says("sensors"))

    def test_have_an_ascii_unit_where_the_locale_is_not_utf8(self):
        self.assertIn("  System     -10.0  C\n", self.run_tool("sensors", LC_ALL="C").stdout)

    def test_can_be_chosen_by_name_identifier_or_quantity(self):
        self.assertEqual("Voltages\n  VCORE   1.200  V\n\nTemperatures\n  System  -10.0  °C\n",
                         self.says("sensors", "VCORE", "temperature/System"))
        self.assertEqual("Fan speeds\n  CPU Fan   1000  rpm\n  Rear Fan     0  rpm\n", self.says("sensors", "fan-speed"))

    def test_that_do_not_exist_are_refused_with_the_nearest_name(self):
        self.refuses(2, "vynctl: there is no sensor 'CPU cor' (did you mean 'CPU Core'?); 'vynctl sensors' lists them",
                     "sensors", "CPU cor")

    def test_are_the_same_in_json_and_one_failure_hides_nothing(self):
        values = self.values("sensors")
        self.assertEqual(["voltage/+12V", "voltage/VCORE", "voltage/VDEAD", "temperature/CPU_Core",
                          "temperature/System", "fan-speed/CPU_Fan", "fan-speed/Rear_Fan"], list(values))
        self.assertEqual({"id": "voltage/VCORE", "name": "VCORE", "quantity": "voltage", "unit": "V", "value": 1.2,
                          "state": "ok"}, values["voltage/VCORE"])
        self.assertEqual({"id": "voltage/VDEAD", "name": "VDEAD", "quantity": "voltage", "unit": "V", "value": None,
                          "state": "fault", "code": 0x302, "hex": "0x302",
                          "words": "voltage: the sensor read 0, which counts as no reading"}, values["voltage/VDEAD"])
        self.assertEqual(1000, values["fan-speed/CPU_Fan"]["value"])


class HostileSensors(tool.Case):
    board = "hostile.toml"

    def test_have_names_that_are_printable_ascii(self):
        for command in ("sensors", "report", "metrics", "check", "info"):
            output = self.run_tool(command, LC_ALL="C").stdout
            self.assertRegex(output, r"\A[ -~\n]*\Z", command)
        self.assertIn(r"voltage/Vin_xFC_xDF", self.values("sensors"))
        self.assertEqual(r"Vin\xFC\xDF", self.values("sensors")["voltage/Vin_xFC_xDF"]["name"])

    def test_that_are_not_finite_are_faults(self):
        for name in ("NaN", "Inf"):
            value = self.values("sensors")[f"temperature/{name}"]
            self.assertEqual((None, "fault", 0, "the library's reading is not a finite number"),
                             (value["value"], value["state"], value["code"], value["words"]))

    def test_that_wrap_pass_through(self):
        wrapped = [value for key, value in self.values("sensors").items() if key.startswith("temperature/Wrap")]
        self.assertAlmostEqual(2.0**64, wrapped[0]["value"], delta=2.0**45)

    def test_of_one_name_have_identifiers_of_their_own(self):
        values = self.values("sensors")
        self.assertEqual((1.0, 1.0), (values["voltage/Twin"]["value"], values["voltage/Twin#2"]["value"]))

    def test_without_a_name_are_listed(self):
        self.assertEqual(("unavailable", 0x305),
                         tuple(self.values("sensors")["voltage/unnamed"][key] for key in ("state", "code")))

    def test_cannot_spoil_the_line_of_a_plugin(self):
        line = self.run_tool("check", "temperature").stdout
        self.assertEqual(1, line.count("\n"))
        self.assertEqual(1, line.count("|"))
        self.assertEqual(0, line.partition("|")[2].count("'") % 2)


class DoubtfulSensors(tool.Case):
    """Readings that a missing device or a failed transfer gives as well."""

    def board_with(self, *sensors, machine=""):
        """A board of temperature sensors of kind 3, which a processor register serves, and SMBus fans."""
        path = self.scratch() / "doubtful.toml"
        path.write_text("[iamt]\n" + machine + "".join(sensors))
        return path

    msr = ('[[sensor]]\nquantity = "temperature"\nkind = 3\nname = "CPU"\nshift = 16\nwidth = 8\nsubtrahend_shift = 16\n'
           'subtrahend_width = 7\ncommands = [{ msr = 0x1A2, width = 8, get = "read" }, '
           '{ msr = 0x19C, width = 8, get = "read" }]\n')
    registers = "[[msr]]\nnumber = 0x1A2\nvalue = 0x640000\n[[msr]]\nnumber = 0x19C\nvalue = 0x340000\n"
    no_device = "[board]\nmsr_device = false\n"
    fan = ('[[sensor]]\nquantity = "fan"\nkind = 3\nname = "Chassis"\ncommands = [{ smbus = 0x5a, command = 0x30, '
           'get = "read" }, { smbus = 0x5a, command = 0x31, get = "read" }]\n')
    smbus = '[[smbus]]\nmodel = "ich9"\nbase = 0xEFA0\n'
    missing = "read from a processor register, but /dev/cpu/0/msr does not open"
    zero = "exactly 0, read from the SMBus, is also what a failed read gives"

    def doubt(self, board):
        """The state of the board's one sensor, and why."""
        value = self.validated(self.run_on(board, "sensors", "--json").stdout)["values"][0]
        return value["value"], value["state"], value.get("words")

    def test_have_a_state_of_their_own(self):
        # 0x64 - 0x34 = 48 degrees.
        self.assertEqual((48, "ok", None), self.doubt(self.board_with(self.registers, self.msr)))
        self.assertEqual((0, "doubtful", self.missing), self.doubt(self.board_with(self.msr, machine=self.no_device)))
        # Without the registers, reading the device fails.
        self.assertEqual((0, "doubtful", "exactly 0, read from a processor register, is also what a failed read gives"),
                         self.doubt(self.board_with(self.msr)))
        self.assertEqual((0, "doubtful", self.zero), self.doubt(self.board_with(self.smbus, self.fan)))

    def test_are_no_zeros_of_plain_registers(self):
        self.assertEqual("ok", self.values("sensors")["fan-speed/Rear_Fan"]["state"])

    def test_are_marked_wherever_they_are_shown(self):
        board = self.board_with(self.msr, machine=self.no_device)
        self.assertIn(f"  CPU  0.0  °C  {self.missing}\n", self.run_on(board, "sensors").stdout)
        self.assertIn(f"Doubtful      CPU 0.0 C: {self.missing}\n", self.run_on(board, "info").stdout)
        self.assertIn(f"  CPU  {self.missing}\n", self.run_on(board, "report").stdout)
        metrics = self.run_on(board, "metrics").stdout
        self.assertIn('vynlib_sensor_ok{quantity="temperature",sensor="CPU"} 0\n', metrics)
        self.assertIn('vynlib_sensor_doubtful{quantity="temperature",sensor="CPU"} 1\n', metrics)
        self.assertIn('vynlib_temperature_celsius{sensor="CPU"} 0\n', metrics)
        info = self.validated(self.run_on(board, "info", "--json").stdout)["values"]
        self.assertEqual(["temperature/CPU"], [value["id"] for value in info if value["state"] == "doubtful"])

    def test_are_unknown_to_a_check_unless_a_limit_is_broken(self):
        board = self.board_with(self.msr, machine=self.no_device)
        for status, verdict, limits in ((3, f"UNKNOWN - CPU 0.0 C (doubtful: {self.missing}) | 'CPU'=0C", []),
                                        (3, f"UNKNOWN - CPU 0.0 C (doubtful: {self.missing}) | 'CPU'=0C;~:85",
                                         ["-l", "CPU=~:85"]),
                                        (1, f"WARNING - CPU 0.0 C (good: 5:85) (doubtful: {self.missing}) | 'CPU'=0C;5:85",
                                         ["-l", "CPU=5:85"])):
            done = self.run_on(board, "check", *limits)
            self.assertEqual((status, f"VYNLIB {verdict}\n"), (done.returncode, done.stdout))


class ManySensors(tool.Case):
    def board_with(self, count):
        text = "[[index_data]]\nindex_port = 0x70\ndata_port = 0x71\nregisters = { 0x20 = 125 }\n"
        for i in range(count):
            text += ('[[sensor]]\nquantity = "voltage"\nkind = 2\n' + f'name = "V{i:03}"\n'
                     "commands = [{ index_port = 0x70, data_port = 0x71, register = 0x20, get = \"read\" }]\n")
        path = self.scratch() / "many.toml"
        path.write_text(text)
        return path

    def test_up_to_255_are_all_listed(self):
        document = self.validated(self.run_on(self.board_with(255), "sensors", "--json").stdout)
        self.assertEqual([f"voltage/V{i:03}" for i in range(255)], [value["id"] for value in document["values"]])
        self.assertEqual({1.0}, {value["value"] for value in document["values"]})


class Metrics(tool.Case):
    def test_are_in_the_text_exposition_format(self):
        lines = self.says("metrics").splitlines()
        self.assertEqual(["vynlib_up 1", "vynlib_tables_found 1"], [line for line in lines if line.startswith(
            ("vynlib_up", "vynlib_tables_found"))])
        self.assertIn('vynlib_board_info{model="VYN-TEST"} 1', lines)
        self.assertIn('vynlib_voltage_volts{sensor="+12V"} 12', lines)
        self.assertIn('vynlib_temperature_celsius{sensor="System"} -10', lines)
        self.assertIn('vynlib_fan_speed_rpm{sensor="CPU Fan"} 1000', lines)
        self.assertIn('vynlib_sensor_ok{quantity="voltage",sensor="VDEAD"} 0', lines)
        for line in lines:
            self.assertRegex(line, r'^(# (HELP|TYPE) vynlib_\w+ .+|vynlib_(up|tables_found) 1|vynlib_\w+\{\w+="[^"]*"(,\w+="[^"]*")?\} -?[0-9.e+]+)$')

    def test_pass_the_monitoring_systems_own_check(self):
        for text in (self.says("metrics"), self.run_on(tool.HERE / "bare.toml", "metrics").stdout,
                     self.run_on(tool.SOURCE / "boards/reference.toml", "metrics").stdout):
            done = subprocess.run(["promtool", "check", "metrics"], input=text, capture_output=True, text=True, check=False)
            self.assertEqual((0, "", ""), (done.returncode, done.stdout, done.stderr))

    def test_replace_a_file_in_one_step(self):
        path = self.scratch() / "vynlib.prom"
        path.write_text("old")
        self.assertEqual("", self.says("metrics", "--output", str(path)))
        self.assertEqual(self.says("metrics"), path.read_text())
        self.assertEqual([path], list(path.parent.iterdir()))

    def test_go_to_regular_files_of_the_folder_alone(self):
        folder = self.scratch()
        (folder / "victim").write_text("precious")
        (folder / "link.prom").symlink_to("victim")
        os.mkfifo(folder / "fifo.prom")
        for name in ("link.prom", "fifo.prom"):
            self.refuses(1, f"vynctl: cannot write {folder / name}: it is there already and no regular file", "metrics",
                         "--output", str(folder / name))
        self.assertEqual("precious", (folder / "victim").read_text())

    def test_that_a_killed_run_left_behind_are_removed(self):
        folder = self.scratch()
        (folder / ".x.prom.vynctl-0123456789abcdef").write_text("half")
        self.says("metrics", "--output", str(folder / "x.prom"))
        self.assertEqual(["x.prom"], [path.name for path in folder.iterdir()])
        self.assertEqual(0o644, (folder / "x.prom").stat().st_mode & 0o7777)

    def test_that_cannot_be_written_fail(self):
        done = self.run_tool("metrics", "--output", "/nowhere/vynlib.prom")
        self.assertEqual((1, "vynctl: cannot write /nowhere/vynlib.prom: No such file or directory\n"),
                         (done.returncode, done.stderr))

    def test_of_a_machine_without_tables_say_so(self):
        for arguments in ([], ["--output", str(self.scratch() / "down.prom")]):
            done = self.run_on(tool.HERE / "bare.toml", "metrics", *arguments)
            text = pathlib.Path(arguments[1]).read_text() if arguments else done.stdout
            self.assertEqual(["vynlib_up 0", "vynlib_tables_found 0"],
                             [line for line in text.splitlines() if not line.startswith("#")])
            self.assertEqual((1, "vynctl: the firmware table IADT was not found: not in the board description\n"),
                             (done.returncode, done.stderr))

    def test_of_a_library_that_does_not_start_say_so(self):
        path = self.scratch() / "down.prom"
        for done in (self.stub("metrics", STUB_FAILS="1"), self.stub("metrics", "--output", str(path), STUB_FAILS="1")):
            self.assertEqual(1, done.returncode)
            text = done.stdout or path.read_text()
            self.assertEqual(["vynlib_up 0", "vynlib_tables_found 0"],
                             [line for line in text.splitlines() if not line.startswith("#")])
        self.validated(self.stub("metrics", "--json", STUB_FAILS="1").stdout)

    def test_have_a_json_form(self):
        self.assertEqual(self.document("sensors")["values"], self.document("metrics")["values"])


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""info, report, features, get and set."""
import os
import subprocess
import unittest

import tool


class Info(tool.Case):
    def test_tells_model_tables_and_support(self):
        self.assertEqual(
            "Model         VYN-TEST\n"
            f"Library       libvynlib-sim.so.1, simulating {tool.HERE / 'board.toml'}\n"
            "Tables from   the simulated memory\n"
            "Table IADT    found\n"
            "Table IAMT    found\n"
            "Voltages      3\n"
            "Temperatures  2\n"
            "Fan speeds    2\n"
            "Currents      none\n"
            "Watchdog      yes\n"
            "Fan control   CPU Fan\n"
            "Features      com-type, lvds-state, backlight, bluetooth, wifi, otp, at-mode,\n"
            "              board-version\n", self.says("info"))

    def test_has_the_same_in_json(self):
        values = self.values("info")
        self.assertEqual("VYN-TEST", values["board/model"]["value"])
        self.assertIs(True, values["board/tables"]["value"])
        self.assertEqual(3, values["count/voltage"]["value"])
        supported = {key for key, value in values.items() if key.startswith("support/") and value["value"]}
        self.assertEqual({"support/" + name for name in (
            "watchdog", "fan-control", "com-type", "lvds-state", "backlight", "bluetooth", "wifi", "otp", "at-mode",
            "board-version")}, supported)

    def test_shows_what_the_library_said_on_a_bare_board(self):
        done = self.run_on(tool.HERE / "bare.toml", "info")
        self.assertIn("Model         unknown (no BIOS information record)\n", done.stdout)
        self.assertIn("Library says  Is Core8 ... ???  (it found no BIOS information record)\n", done.stdout)

    def test_names_the_tables_one_by_one(self):
        """IADT, IAMT as the description has them and as info tells them; the last machine hides its memory."""
        missing = "not in the board description"
        hidden = "in the board description, but the library sees nothing of it"
        for text, iadt, iamt in (("", (False, missing), (False, missing)), ("[iadt]\n[iamt]\n", (True, None), (True, None)),
                                 ("[iamt]\nchips = [0x0215]\n", (False, missing), (True, None)),
                                 ('[[feature]]\nfunction = "WifiState"\n', (True, None), (False, missing)),
                                 ("[iadt]\n[iamt]\n[board]\nmem_device = false\n", (False, hidden), (False, hidden))):
            with self.subTest(text):
                board = self.scratch() / "tables.toml"
                board.write_text(text)
                shown = self.run_on(board, "info").stdout
                values = {value["id"]: value["value"] for value in
                          self.validated(self.run_on(board, "info", "--json").stdout)["values"]}
                for name, (found, why) in (("IADT", iadt), ("IAMT", iamt)):
                    self.assertIn(f"Table {name}    {'found' if found else 'not found: ' + why}\n", shown)
                    self.assertIs(found, values[f"board/{name.lower()}"])
                    if why:
                        self.assertEqual(why, values[f"board/{name.lower()}-sought"])


class WithoutTables(tool.Case):
    """A machine that describes no board, where every subcommand that needs one says what is missing."""
    board = "bare.toml"
    why = "the firmware table IADT was not found: not in the board description"

    def test_nothing_is_listed(self):
        for arguments in (["report"], ["sensors"], ["features"], ["watchdog", "status"], ["fans"], ["monitor"]):
            done = self.run_tool(*arguments)
            self.assertEqual((1, "", f"vynctl: {self.why}\n"), (done.returncode, done.stdout, done.stderr), arguments)
            self.assertEqual({"code": 0, "hex": "0x0", "words": self.why}, self.document(*arguments, status=1)["error"])

    def test_a_check_is_unknown(self):
        self.assertEqual((3, f"VYNLIB UNKNOWN - {self.why}\n"),
                         (self.run_tool("check").returncode, self.run_tool("check").stdout))


class Features(tool.Case):
    def test_are_listed_with_values_access_and_failures(self):
        self.assertEqual(
            "FEATURE        INDEX        VALUE  ALLOWED  ACCESS    WHAT\n"
            "com-type           1            0  0 1      get, set  COM port type 1\n"
            "                   4            1  1                  COM port type 4\n"
            "lvds-state                  fault  1        get, set  0x601: the hardware is in none of the listed states\n"
            "backlight             unavailable  3        set       backlight can only be set, not read\n"
            "bluetooth                   fault  0 1      get, set  0xD01: the hardware is in none of the listed states\n"
            "wifi                            1  0 1      get, set  Wi-Fi\n"
            "otp                         fault  1        get, set  0x15: the firmware lists a command of a kind that "
            "cannot be stepped over\n"
            "at-mode                         2  2        get       AT mode\n"
            "board-version              0x0305  -        get       board version: bits 00000101, 3 matching\n",
            self.says("features"))

    def test_are_all_25_on_request(self):
        names = {key.split("/")[1] for key in self.values("features", "--all")}
        self.assertEqual(25, len(names))
        self.assertEqual(("unavailable", 0x900), tuple(self.values("features", "--all")["feature/tpm"][key]
                                                       for key in ("state", "code")))

    def test_are_values_in_json(self):
        values = self.values("features")
        self.assertEqual({"feature/com-type/1": 0, "feature/com-type/4": 1, "feature/wifi": 1, "feature/at-mode": 2,
                          "feature/board-version": 0x0305},
                         {key: value["value"] for key, value in values.items() if value["state"] == "ok"})


    def test_have_their_allowed_values_in_json(self):
        values = self.values("features")
        self.assertEqual({"feature/com-type/1": [0, 1], "feature/com-type/4": [1], "feature/lvds-state": [1],
                          "feature/backlight": [3], "feature/bluetooth": [0, 1], "feature/wifi": [0, 1],
                          "feature/otp": [1], "feature/at-mode": [2]},
                         {key: value["allowed"] for key, value in values.items() if "allowed" in value})


class Values(tool.Case):
    def test_are_listed_bare_or_by_instance(self):
        self.assertEqual("0 1\n", self.says("values", "wifi"))
        self.assertEqual("INDEX  VALUES\n    1  0 1\n    4  1\n", self.says("values", "com-type"))
        self.assertEqual("0 1\n", self.says("values", "com-type", "1"))

    def test_are_lists_in_json(self):
        self.assertEqual({"feature/com-type/1/values": [0, 1], "feature/com-type/4/values": [1]},
                         {key: value["value"] for key, value in self.values("values", "com-type").items()})

    def test_that_the_board_does_not_have_are_refused(self):
        self.refuses(1, "vynctl: on-board TPM: the board does not offer it (code 0x900)", "values", "tpm")
        self.refuses(1, "vynctl: com-type has the instances 1 and 4, not 2", "values", "com-type", "2")
        self.refuses(1, "vynctl: the firmware's table tells no values of board-version", "values", "board-version")

    def test_refuse_wrong_usage(self):
        self.refuses(2, "vynctl: there is no feature 'wify' (did you mean 'wifi'?); 'vynctl features --all' lists them",
                     "values", "wify")
        self.refuses(2, "vynctl: wifi has no instances; leave INDEX out", "values", "wifi", "1")


class Get(tool.Case):
    def test_prints_the_bare_value(self):
        self.assertEqual("1\n", self.says("get", "wifi"))
        self.assertEqual("1\n", self.says("get", "com-type", "4"))
        self.assertEqual("1\n", self.says("get", "com-type", "0x4"))
        self.assertEqual("0x0305\n", self.says("get", "board-version"))

    def test_lists_all_instances_without_an_index(self):
        self.assertEqual("INDEX  VALUE\n    1      0\n    4      1\n", self.says("get", "com-type"))

    def test_fails_with_the_code_in_hex_and_words(self):
        self.refuses(1, "vynctl: com-type has the instances 1 and 4, not 7 (code 0x204)", "get", "com-type", "7")
        self.refuses(1, "vynctl: on-board TPM: the board does not offer it (code 0x900)", "get", "tpm")
        self.refuses(1, "vynctl: the firmware lists a command of a kind that cannot be stepped over (code 0x15)",
                     "get", "otp")
        self.refuses(1, "vynctl: backlight can only be set, not read", "get", "backlight")

    def test_refuses_wrong_usage(self):
        self.refuses(2, "vynctl: there is no feature 'wify' (did you mean 'wifi'?); 'vynctl features --all' lists them",
                     "get", "wify")
        self.refuses(2, "vynctl: wifi has no instances; leave INDEX out", "get", "wifi", "1")
        self.refuses(2, "vynctl: INDEX must be a number from 0 to 255, not '256'", "get", "com-type", "256")

    def test_has_the_error_in_json(self):
        document = self.document("get", "tpm", status=1)
        self.assertEqual({"code": 0x900, "hex": "0x900", "words": "on-board TPM: the board does not offer it"},
                         document["error"])


class Set(tool.Case):
    def test_changes_the_state_and_reads_it_back(self):
        self.assertEqual("wifi set to 0\n", self.says("set", "wifi", "0"))
        self.assertEqual("com-type 1 set to 1\n", self.says("set", "com-type", "1", "0x01"))
        self.assertEqual("backlight set to 3\n", self.says("set", "backlight", "3"))
        self.assertEqual(0, self.values("set", "wifi", "0")["feature/wifi"]["value"])

    def test_says_when_the_hardware_reads_back_something_else(self):
        self.assertEqual("bluetooth set to 1, but reads back 0\n", self.says("set", "bluetooth", "1"))

    def test_fails_with_the_code_in_hex_and_words(self):
        self.refuses(1, "vynctl: wifi takes 0 or 1, not 9 (code 0xE04)", "set", "wifi", "9")
        self.refuses(1, "vynctl: backlight takes 3, not 9 (code 0x1903)", "set", "backlight", "9")
        self.refuses(1, "vynctl: com-type 1 takes 0 or 1, not 2 (code 0x204)", "set", "com-type", "1", "2")
        self.refuses(1, "vynctl: com-type has the instances 1 and 4, not 2 (code 0x204)", "set", "com-type", "2", "1")
        self.refuses(1, "vynctl: the firmware lists a command of a kind that cannot be stepped over (code 0x15)", "set",
                     "otp", "1", "--yes")

    def test_of_a_missing_led_colour_names_the_right_family(self):
        self.refuses(1, "vynctl: user LED colour: the board does not offer it (code 0x1F00)", "set", "user-led-color",
                     "0", "1")

    def test_refuses_wrong_usage(self):
        self.refuses(2, "vynctl: at-mode can only be read", "set", "at-mode", "1")
        self.refuses(2, "vynctl: com-type needs INDEX and VALUE", "set", "com-type", "1")
        self.refuses(2, "vynctl: wifi takes one VALUE and no INDEX", "set", "wifi", "0", "1")
        self.refuses(2, "vynctl: wifi takes one VALUE and no INDEX", "set", "wifi")
        self.refuses(2, "vynctl: VALUE must be a number from 0 to 255, not 'on'", "set", "wifi", "on")


class Consent(tool.Case):
    """What cannot be undone from the same prompt is done with --yes, or when a person says so."""
    board = tool.SOURCE / "boards/reference.toml"

    def at_terminal(self, answer, *arguments):
        """Exit status and everything on the terminal, where `answer` is typed."""
        leader, follower = os.openpty()
        os.write(leader, answer.encode())
        process = subprocess.Popen([tool.VYNCTL, "-s", str(self.board), *arguments], stdin=follower, stdout=follower,
                                   stderr=follower, env=tool.environment())
        os.close(follower)
        text = tool.read_terminal(leader)
        os.close(leader)
        return process.wait(timeout=60), text

    def test_is_needed_where_nobody_can_be_asked(self):
        for feature in ("tpm", "me-descriptor", "otp"):
            self.refuses(2, f"vynctl: setting {feature} to 1 cannot be undone from here on every board; --yes does it all "
                         "the same", "set", feature, "1")
            self.assertEqual(f"{feature} set to 1\n", self.says("set", feature, "1", "--yes"))
        self.assertEqual("usb-power set to 1\n", self.says("set", "usb-power", "1"))

    def test_is_needed_for_a_fan_at_0(self):
        self.refuses(2, "vynctl: a parameter of 0 may stop CPU Fan, and a board that overheats cannot be told to start it "
                     "again; --yes does it all the same", "fan", "CPU Fan", "set", "1", "0")
        self.assertIn("CPU Fan set to mode 1.\n", self.says("fan", "CPU Fan", "set", "1", "0", "-y"))
        self.assertIn("CPU Fan set to mode 1.\n", self.says("fan", "CPU Fan", "set", "1", "9"))
        self.assertIn("CPU Fan set to mode 0.\n", self.says("fan", "CPU Fan", "set", "0"))

    def test_can_be_given_at_a_terminal(self):
        question = "vynctl: setting tpm to 0 cannot be undone from here on every board. Go on? [y/N] "
        for answer, status, end in (("y\n", 0, "tpm set to 0\n"), ("n\n", 1, "vynctl: nothing was changed\n"),
                                    ("\n", 1, "vynctl: nothing was changed\n")):
            code, text = self.at_terminal(answer, "set", "tpm", "0")
            self.assertEqual(status, code)
            self.assertIn(question, text)
            self.assertTrue(text.endswith(end), text)

    def test_is_not_asked_for_what_is_wrong_anyway(self):
        self.refuses(2, "vynctl: VALUE must be a number from 0 to 255, not 'on'", "set", "tpm", "on")
        self.refuses(2, "vynctl: tpm takes one VALUE and no INDEX", "set", "tpm")

    def test_is_never_asked_for_in_json(self):
        code, text = self.at_terminal("y\n", "--json", "set", "tpm", "0")
        self.assertEqual(2, code)
        # The terminal echoes what was typed whenever it comes to it: before the answer, or behind it.
        self.assertIn("--yes does it", self.validated(text[text.index("{"):text.rindex("}") + 1])["error"]["words"])


class Report(tool.Case):
    def test_shows_everything_on_one_screen(self):
        self.assertEqual(
            "VYN-TEST  (simulated)\n"
            "\n"
            "Voltages\n"
            "  +12V   12.000  V    VCORE   1.200  V    VDEAD   fault\n"
            "\n"
            "Temperatures\n"
            "  CPU Core   45.0  °C    System    -10.0  °C\n"
            "\n"
            "Fan speeds\n"
            "  CPU Fan   1000  rpm    Rear Fan     0  rpm\n"
            "\n"
            "Features\n"
            "  lvds-state       fault         otp              fault\n"
            "  backlight        can be set    at-mode          2\n"
            "  bluetooth        fault         board-version    0x0305\n"
            "  wifi             1\n"
            "\n"
            "Features by index\n"
            "  com-type         1:0  4:1\n"
            "\n"
            "Watchdog\n"
            "  interval 0    mode 0\n"
            "\n"
            "Fan control\n"
            "  FAN      MODES  MODE  PARAMETERS\n"
            "  CPU Fan  0 2    2     40 80\n"
            "\n"
            "Not readable or in doubt\n"
            "  VDEAD             0x302: the sensor read 0, which counts as no reading\n"
            "  LVDS panel state  0x601: the hardware is in none of the listed states\n"
            "  Bluetooth         0xD01: the hardware is in none of the listed states\n"
            "  OTP               0x15: the firmware lists a command of a kind that cannot be stepped over\n",
            self.says("report"))

    def test_has_every_value_in_json(self):
        values = self.values("report")
        for key in ("voltage/+12V", "feature/com-type/4", "watchdog/interval", "fan/CPU_Fan/parameters"):
            self.assertIn(key, values)

    def test_says_that_an_empty_table_offers_nothing(self):
        board = self.scratch() / "empty.toml"
        board.write_text("[iadt]\n[iamt]\n")
        done = self.run_on(board, "report")
        self.assertEqual((0, "Unknown model  (simulated)\n\nThis board offers nothing.\n"),
                         (done.returncode, done.stdout))


if __name__ == "__main__":
    unittest.main()

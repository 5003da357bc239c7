#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""doctor: on the machine that runs the tests, whatever it is. What it says of machines is tested over folders."""
import pathlib
import re
import stat
import tarfile
import unittest

import tool

ROW = re.compile(r"^(\S.*?): (.*)  \[(ok|warning|problem)\]$")


class Doctor(tool.Case):
    def run_doctor(self, *arguments, **changes):
        done = self.run_on(None, "doctor", *arguments, **changes)
        self.assertIn(done.returncode, (0, 1, 2))
        self.assertEqual("", done.stderr)
        return done

    def findings(self):
        return self.validated(self.run_doctor("--json").stdout)["doctor"]

    def test_gives_the_same_in_text_and_json(self):
        done = self.run_doctor()
        rows = [match.groups() for match in map(ROW.match, done.stdout.splitlines()) if match]
        doctor = self.findings()
        self.assertEqual(rows, [(row["what"], row["found"], row["verdict"]) for row in doctor["findings"]])
        steps = [line.strip() for line in done.stdout.splitlines() if line.startswith("    ")]
        self.assertEqual(steps, [row["next"] for row in doctor["findings"] if row["next"]])
        self.assertEqual(doctor["summary"], done.stdout.splitlines()[-1])

    def test_ends_with_the_gravest_verdict(self):
        doctor = self.findings()
        worst = max(("ok", "warning", "problem").index(row["verdict"]) for row in doctor["findings"])
        self.assertEqual((worst, worst), (doctor["exit"], self.run_doctor().returncode))
        self.assertEqual(("ok", "warning", "problem")[worst], doctor["verdict"])

    def test_finds_the_library_that_the_tool_would_load(self):
        rows = {row["id"]: row for row in self.findings()["findings"]}
        self.assertEqual(str((pathlib.Path(tool.os.environ["VYNLIB_BUILD"]) / "src/libvynlib.so.1").resolve()),
                         rows["library"]["found"])
        version = self.run_on(None, "--version").stdout.split()[1]
        self.assertEqual(version, rows["vynctl"]["found"])

    def test_does_not_start_the_library(self):
        """The stand-in prints when it is started, and fails."""
        done = self.stub("doctor", STUB_FAILS="1")
        self.assertNotIn("Please run as root!", done.stdout + done.stderr)
        self.assertIn(f"Library: {pathlib.Path(tool.STUB).resolve()}/", done.stdout)

    def test_tells_of_a_library_that_cannot_be_loaded(self):
        folder = self.scratch()
        (folder / "libvynlib.so.1").write_text("no library")
        done = self.run_doctor(LD_LIBRARY_PATH=str(folder))
        self.assertEqual(2, done.returncode)
        self.assertRegex(done.stdout, r"\nLibrary: cannot be loaded: .*libvynlib\.so\.1.*  \[problem\]\n")

    def test_has_nothing_to_look_at_on_a_simulated_board(self):
        self.refuses(2, "vynctl: doctor looks at this machine; a simulated board has nothing to look at", "doctor")

    def test_paints_its_verdicts_on_request(self):
        self.assertIn("\x1b[", self.run_doctor("--color", "always").stdout)
        self.assertNotIn("\x1b[", self.run_doctor().stdout)


class Bundle(tool.Case):
    def make(self, path, *arguments):
        return self.run_on(None, "doctor", "--bundle", str(path), *arguments)

    def test_is_an_archive_of_what_is_listed(self):
        path = self.scratch() / "report.tar"
        done = self.make(path)
        self.assertEqual("", done.stderr)
        listed = dict(re.findall(r"^  (\S+)  (\d+) bytes, ", done.stdout, re.MULTILINE))
        with tarfile.open(path) as archive:
            self.assertEqual(listed, {member.name: str(member.size) for member in archive})
            self.assertTrue(all(member.isfile() and member.mode == 0o644 for member in archive))
            inside = self.validated(archive.extractfile("vynctl-doctor/doctor.json").read().decode())
            kernel = archive.extractfile("vynctl-doctor/kernel-version.txt").read().decode()
        self.assertEqual(pathlib.Path("/proc/version").read_text(), kernel)
        self.assertEqual("doctor", inside["command"])
        self.assertEqual(done.returncode, inside["doctor"]["exit"])

    def test_lists_its_files_in_json(self):
        path = self.scratch() / "report.tar"
        bundle = self.validated(self.make(path, "--json").stdout)["doctor"]["bundle"]
        self.assertEqual(str(path), bundle["file"])
        packed = {file["name"]: file["bytes"] for file in bundle["files"] if file["missing"] is None}
        with tarfile.open(path) as archive:
            self.assertEqual(packed, {member.name: member.size for member in archive})

    def test_is_for_its_owner_alone(self):
        path = self.scratch() / "report.tar"
        self.make(path)
        self.assertEqual(0o600, stat.S_IMODE(path.stat().st_mode))

    def test_replaces_no_file_and_follows_no_link(self):
        folder = self.scratch()
        (folder / "old").write_text("old")
        (folder / "link").symlink_to("new")
        for name in ("old", "link"):
            done = self.make(folder / name)
            self.assertEqual((1, "", f"vynctl: cannot write {folder / name}: File exists (EEXIST)\n"),
                             (done.returncode, done.stdout, done.stderr))
        self.assertEqual("old", (folder / "old").read_text())
        self.assertFalse((folder / "new").exists())


class Hint(tool.Case):
    def test_ends_messages_of_a_library_that_does_not_start(self):
        self.assertTrue(self.stub("sensors", STUB_FAILS="1").stderr.endswith("(code 0x1); run 'vynctl doctor'\n"))
        self.assertTrue(self.stub("check", STUB_FAILS="1").stdout.endswith("(code 0x1); run 'vynctl doctor'\n"))
        document = self.validated(self.stub("sensors", "--json", STUB_FAILS="1").stdout)
        self.assertTrue(document["error"]["words"].endswith("; run 'vynctl doctor'"))

    def test_is_not_given_on_a_simulated_board(self):
        board = self.scratch() / "broken.toml"
        board.write_text("[bios]\nmodel = 3\n")
        self.assertNotIn("doctor", self.run_on(board, "sensors").stderr)


if __name__ == "__main__":
    unittest.main()

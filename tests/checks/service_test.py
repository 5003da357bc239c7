#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The installed units, and what gives their user access, as systemd's own tools read them."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

COLLECTOR = "/var/lib/prometheus/node-exporter"
SERVICES = ("vynlib-metrics.service", "vynlib-watchdog.service")
MOST_EXPOSED = 1.1
# Access control lists hold 8 bytes per entry: tag, permissions, id. A named user has tag 2.
ACL_HEADER_BYTES = 4
NAMED_USER = 2


def run(*command, **options):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)


class Case(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="vyn-service-")
        cls.addClassCleanup(folder.cleanup)
        cls.prefix = pathlib.Path(folder.name, "usr")
        run("cmake", "--install", os.environ["VYNLIB_BUILD"], "--prefix", cls.prefix, "--component", "tools"
            ).check_returncode()

    def unit(self, name):
        return self.prefix / "lib/systemd/system" / name

    def settings(self, name):
        """[(name, value)] in the order of the file."""
        return re.findall(r"^(\w+)=(.*)$", self.unit(name).read_text(), re.MULTILINE)


class Units(Case):
    def test_systemd_finds_nothing_wrong(self):
        units = sorted(self.unit("x").parent.iterdir())
        self.assertEqual([*SERVICES[:1], "vynlib-metrics.timer", *SERVICES[1:]], [unit.name for unit in units])
        done = run("systemd-analyze", "verify", "--man=no", *units)
        self.assertEqual((0, "", ""), (done.returncode, done.stdout, done.stderr))

    def test_they_call_the_tool_that_was_installed(self):
        for name in SERVICES:
            lines = [value for setting, value in self.settings(name) if setting.startswith("Exec")]
            self.assertTrue(lines)
            for line in lines:
                self.assertEqual(str(self.prefix / "bin/vynctl"), line.split()[0])

    def test_little_is_exposed(self):
        for name in SERVICES:
            done = run("systemd-analyze", "security", "--offline=yes", "--no-pager", self.unit(name))
            level = re.search(r"Overall exposure level for \S+: ([\d.]+)", done.stdout)
            self.assertIsNotNone(level, done.stderr)
            self.assertLessEqual(float(level.group(1)), MOST_EXPOSED, done.stdout)

    def test_they_run_as_an_ordinary_user_with_one_capability(self):
        for name in SERVICES:
            settings = dict(self.settings(name))
            self.assertEqual(("vynlib", "CAP_SYS_RAWIO", "CAP_SYS_RAWIO", "yes"), tuple(map(settings.get, (
                "User", "AmbientCapabilities", "CapabilityBoundingSet", "NoNewPrivileges"))))

    def test_they_may_write_to_the_lock(self):
        for name in SERVICES:
            self.assertIn(("ReadWritePaths", "-/run/lock/vynlib.lock"), self.settings(name))

    def test_the_feeder_has_its_time_before_the_board_resets(self):
        settings = self.settings("vynlib-watchdog.service")
        values = dict(settings)
        given = dict(value.split("=") for name, value in settings if name == "Environment")
        interval, every = int(given["INTERVAL"]), int(given["FEED_EVERY"])
        self.assertEqual(("notify", "3"), (values["Type"], values["RestartPreventExitStatus"]))
        self.assertLess(int(values["TimeoutStopSec"]), interval - every)
        self.assertLess(2 * every, int(values["WatchdogSec"]))
        self.assertLess(int(values["WatchdogSec"]) + int(values["TimeoutAbortSec"]) + int(values["RestartSec"]), interval)

    def test_the_feeder_reaches_the_service_manager(self):
        families = [value for name, value in self.settings("vynlib-watchdog.service") if name == "RestrictAddressFamilies"]
        self.assertEqual("AF_UNIX", families[-1])

    def test_metrics_wait_for_the_collectors_folder(self):
        settings = self.settings("vynlib-metrics.service")
        self.assertIn(("ConditionPathIsDirectory", COLLECTOR), settings)
        self.assertIn(("ReadWritePaths", COLLECTOR), settings)
        self.assertIn(f" --output {COLLECTOR}/", dict(settings)["ExecStart"])


class Access(Case):
    """What the files for users, temporary files and devices do to a system, tried on an empty one."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="vyn-root-")
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        for path in ("etc", "run/lock", "sys/firmware/acpi/tables/data", COLLECTOR.lstrip("/")):
            (self.root / path).mkdir(parents=True)
        for name in ("IADT", "SSDT2"):
            self.table(name).touch(mode=0o400)
        self.as_root("systemd-sysusers", f"--root={self.root}", self.prefix / "lib/sysusers.d/vynlib.conf")

    def table(self, name):
        return self.root / "sys/firmware/acpi/tables" / name

    def as_root(self, *command):
        done = run(*([] if os.geteuid() == 0 else ["sudo", "-n"]), *command)
        self.assertEqual(0, done.returncode, done.stderr)
        return done

    def entry(self, kind):
        """The numbers of the user or group vynlib."""
        line = re.search(r"^vynlib:.*$", (self.root / "etc" / kind).read_text(), re.MULTILINE)
        return [int(field) for field in line.group().split(":") if field.isdigit()]

    def make_files(self, user="vynlib"):
        """Runs the file for temporary files. Access control lists name users of this system, so one of those."""
        text = (self.prefix / "lib/tmpfiles.d/vynlib.conf").read_text().replace("u:vynlib:", f"u:{user}:")
        file = self.root / "files.conf"
        file.write_text(text)
        return self.as_root("systemd-tmpfiles", f"--root={self.root}", "--create", file)

    def owner(self, path):
        status = path.stat()
        return status.st_uid, status.st_gid, oct(status.st_mode & 0o7777)

    def test_a_user_and_a_group_that_cannot_log_in(self):
        user, group = self.entry("passwd")
        self.assertEqual([group], self.entry("group"))
        self.assertNotEqual(0, user)
        self.assertRegex((self.root / "etc/passwd").read_text(), r"(?m)^vynlib:.*:/usr/sbin/nologin$")

    def test_the_lock_is_roots_and_the_groups(self):
        lock = self.root / "run/lock/vynlib.lock"
        for before in ("nobody made it", "root did, before there was the group"):
            self.make_files("nobody")
            self.assertEqual((0, *self.entry("group"), "0o660"), self.owner(lock), before)
            lock.unlink()
            lock.touch(mode=0o600)

    def test_the_group_reads_the_kernels_tables_and_folders_stay(self):
        data = self.owner(self.table("data"))
        self.make_files("nobody")
        for name in ("IADT", "SSDT2"):
            self.assertEqual((0, *self.entry("group"), "0o440"), self.owner(self.table(name)))
        self.assertEqual(data, self.owner(self.table("data")))

    def test_the_user_may_write_to_the_collectors_folder(self):
        folder = self.root / COLLECTOR.lstrip("/")
        owner = self.owner(folder)[:2]
        self.assertEqual("", self.make_files("nobody").stderr)
        entries = os.getxattr(folder, "system.posix_acl_access")[ACL_HEADER_BYTES:]
        users = [entry for entry in zip(*[iter(entries)] * 8) if entry[0] == NAMED_USER]
        nobody = 65534
        self.assertEqual([(7, nobody)], [(entry[2], int.from_bytes(bytes(entry[4:8]), "little")) for entry in users])
        self.assertEqual(owner, self.owner(folder)[:2])

    def test_without_a_collector_nothing_is_made(self):
        (self.root / COLLECTOR.lstrip("/")).rmdir()
        self.assertEqual("", self.make_files("nobody").stderr)
        self.assertFalse((self.root / COLLECTOR.lstrip("/")).exists())

    def test_the_rule_for_devices_comes_behind_the_systems_own(self):
        rules = self.prefix / "lib/udev/rules.d/60-vynlib.rules"
        wanted = {("mem", "mem", "0660"), ("msr", "msr[0-9]*", "0640")}
        self.assertEqual(wanted, set(re.findall(
            r'^SUBSYSTEM=="(\w+)", KERNEL=="(\S+)", GROUP="vynlib", MODE="(\d+)"$', rules.read_text(), re.MULTILINE)))
        for other in pathlib.Path("/usr/lib/udev/rules.d").glob("*.rules"):
            if re.search(r'KERNEL=="[^"]*\bmem\b[^"]*".*GROUP', other.read_text()):
                self.assertLess(other.name, rules.name)


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The recipe of the Debian packages against what the build installs and the libraries export."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

SOURCE, BUILD = (pathlib.Path(os.environ[name]) for name in ("VYNLIB_SOURCE", "VYNLIB_BUILD"))
DEBIAN = SOURCE / "debian"
LIBRARIES = {"libvynlib1": "src/libvynlib.so.1", "libvynlib-sim1": "sim/libvynlib-sim.so.1"}


def run(*command, **options):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)


class Case(unittest.TestCase):
    maxDiff = None

    def scratch(self):
        folder = tempfile.TemporaryDirectory(prefix="vyn-debian-")
        self.addCleanup(folder.cleanup)
        return pathlib.Path(folder.name)

    def succeeds(self, *command, **options):
        done = run(*command, **options)
        self.assertEqual(0, done.returncode, done.stdout + done.stderr)
        return done.stdout


class Recipe(Case):
    def stanzas(self):
        """The fields of each package."""
        return [dict(re.findall(r"^([A-Z][\w-]*): *(.*)$", stanza, re.MULTILINE))
                for stanza in (DEBIAN / "control").read_text().split("\n\n")]

    def test_its_version_is_that_of_the_project(self):
        version = re.search(r"^project\(vynlib VERSION ([\d.]+)", (SOURCE / "CMakeLists.txt").read_text(), re.MULTILINE)
        fields = self.succeeds("dpkg-parsechangelog", "--file", DEBIAN / "changelog", "--show-field", "Version")
        self.assertEqual(version.group(1), fields.strip())

    def test_the_python_package_is_of_that_version_too(self):
        version = re.search(r'^__version__ = "(.*)"$', (SOURCE / "python/vynlib/__init__.py").read_text(), re.MULTILINE)
        fields = self.succeeds("dpkg-parsechangelog", "--file", DEBIAN / "changelog", "--show-field", "Version")
        self.assertEqual(version.group(1), fields.strip())
        source, target = (DEBIAN / "python3-vynlib.install").read_text().split()
        self.assertTrue((SOURCE / source / "__init__.py").exists())
        self.assertEqual("usr/lib/python3/dist-packages", target)

    def test_the_developers_maintain_it(self):
        self.assertEqual("VynLib developers <vynlib@example.org>", self.stanzas()[0]["Maintainer"])

    def test_everything_installed_is_in_one_of_its_packages(self):
        scratch = self.scratch()
        parts, whole = scratch / "parts", scratch / "whole"
        self.succeeds(DEBIAN / "install-parts", BUILD, parts)
        self.succeeds("cmake", "--install", BUILD, "--prefix", "/usr", env=os.environ | {"DESTDIR": str(whole)})
        named = {stanza["Package"] for stanza in self.stanzas() if "Package" in stanza}
        self.assertEqual(named, {package.name for package in parts.iterdir()} | {"python3-vynlib"})
        packed = sorted(path.name for path in parts.rglob("*") if not path.is_dir())
        self.assertEqual(sorted(path.name for path in whole.rglob("*") if not path.is_dir()), packed)
        self.assertIn("vynlib.h", packed)

    def test_units_and_rules_are_where_debian_looks(self):
        parts = self.scratch()
        self.succeeds(DEBIAN / "install-parts", BUILD, parts)
        tools = parts / "vynlib-tools"
        self.assertEqual(3, len(list(tools.glob("lib/systemd/system/vynlib-*"))))
        self.assertTrue((tools / "lib/udev/rules.d/60-vynlib.rules").exists())
        for kind in ("sysusers", "tmpfiles"):
            self.assertTrue((tools / f"usr/lib/{kind}.d/vynlib.conf").exists())
        unit = (tools / "lib/systemd/system/vynlib-metrics.service").read_text()
        self.assertRegex(unit, r"(?m)^ExecStart=/usr/bin/vynctl ")


class Symbols(Case):
    def compared(self, package, library, listed):
        """dpkg's comparison of a list of symbols with a library; status 0 when they are the same, no more and no less."""
        scratch = self.scratch()
        (scratch / "debian").mkdir()
        (scratch / "debian/control").write_text((DEBIAN / "control").read_text())
        (scratch / "symbols").write_text(listed)
        # A symbol of the version at hand could be missing: nobody has it yet.
        return run("dpkg-gensymbols", "-c4", f"-p{package}", "-v9", f"-I{scratch}/symbols", f"-e{BUILD / library}",
                   f"-P{scratch}", "-O/dev/null", cwd=scratch)

    def test_lists_hold_what_the_libraries_export(self):
        for package, library in LIBRARIES.items():
            done = self.compared(package, library, (DEBIAN / f"{package}.symbols").read_text())
            self.assertEqual((0, ""), (done.returncode, done.stderr), done.stdout)

    def test_what_is_not_exported_or_not_listed_is_found(self):
        for package, library in LIBRARIES.items():
            listed = (DEBIAN / f"{package}.symbols").read_text()
            for other in (listed + " VynLibUnknown@Base 1.0.0\n", listed.replace(" VynLibDllInit@Base 1.0.0\n", "")):
                self.assertNotEqual(0, self.compared(package, library, other).returncode)


class FirstProgram(Case):
    def test_builds_in_any_folder(self):
        prefix = self.scratch() / "prefix"
        self.succeeds("cmake", "--install", BUILD, "--prefix", prefix)
        self.succeeds(DEBIAN / "tests/first-program", cwd=SOURCE, env=os.environ | {
            "PKG_CONFIG_PATH": str(prefix / "lib/pkgconfig"), "CMAKE_PREFIX_PATH": str(prefix),
            "LD_LIBRARY_PATH": str(prefix / "lib")})


if __name__ == "__main__":
    unittest.main()

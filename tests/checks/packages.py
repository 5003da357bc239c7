#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The Debian packages: built twice with the same bytes, clean by lintian, and installed, tried and purged in a fresh Debian."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["VYNLIB_SOURCE"])
HERE = pathlib.Path(__file__).parent


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def sources():
    """Where this system has its own packages from, one line each; none leaves the choice to the tool."""
    return output("apt-get", "indextargets", "--format", "deb $(REPO_URI) $(RELEASE) $(COMPONENT)", "Created-By: Packages",
                  "Origin: Debian").splitlines()


def environment(**changes):
    """Without what says how this project is built here."""
    return {name: value for name, value in os.environ.items() if not name.startswith(("CMAKE_", "CCACHE_"))} | changes


def settings():
    """How this system reaches them."""
    lines = output("apt-config", "dump", "Acquire").splitlines()
    return [f"--aptopt={line}" for line in lines if re.match(r"Acquire::(Check-|https?::Proxy)", line)]


class Packages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="vyn-packages-")
        cls.addClassCleanup(folder.cleanup)
        cls.scratch = pathlib.Path(folder.name)
        cls.one, cls.other = cls.build("one", "a"), cls.build("other", "another/and/longer")

    @classmethod
    def build(cls, name, place):
        """The packages, built below this folder."""
        (cls.scratch / place).mkdir(parents=True)
        with (cls.scratch / f"{name}.log").open("w") as log:
            done = subprocess.run([SOURCE / "scripts/package", cls.scratch / name], stdout=log, stderr=subprocess.STDOUT,
                                  env=environment(TMPDIR=str(cls.scratch / place)), check=False)
        if done.returncode != 0:
            raise AssertionError((cls.scratch / f"{name}.log").read_text()[-5000:])
        return cls.scratch / name

    def test_two_folders_give_the_same_bytes(self):
        names = sorted(path.name for path in self.one.glob("*.deb"))
        self.assertEqual(names, sorted(path.name for path in self.other.glob("*.deb")))
        self.assertEqual(set(re.findall(r"^Package: (\S+)", (SOURCE / "debian/control").read_text(), re.MULTILINE)),
                         {name.partition("_")[0] for name in names if "-dbgsym_" not in name})
        for name in names:
            self.assertEqual((self.one / name).read_bytes(), (self.other / name).read_bytes(), name)

    def test_lintian_finds_nothing(self):
        changes = next(self.one.glob("*.changes"))
        done = subprocess.run(["lintian", "--allow-root", "--fail-on", "error,warning", changes], capture_output=True,
                              text=True, check=False)
        self.assertEqual((0, ""), (done.returncode, done.stdout))

    def test_nothing_is_left_of_them_in_a_fresh_system(self):
        box = self.scratch / "vynlib"
        shutil.copytree(SOURCE / "debian/tests", box / "debian/tests")
        shutil.copytree(self.one, box / "dist", ignore=shutil.ignore_patterns("*-dbgsym_*"))
        for file in (SOURCE / "README.md", HERE / "fresh-root"):
            shutil.copy(file, box)
        release = re.search(r"^VERSION_CODENAME=(.*)$", pathlib.Path("/etc/os-release").read_text(), re.MULTILINE).group(1)
        done = subprocess.run(["mmdebstrap", "--variant=apt", *settings(), f"--customize-hook=copy-in {box} /",
                               '--customize-hook=chroot "$1" /vynlib/fresh-root', release, "/dev/null", *sources()],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, env=environment())
        self.assertEqual(0, done.returncode, done.stdout[-5000:])
        self.assertIn("nothing is left", done.stdout)


if __name__ == "__main__":
    unittest.main()

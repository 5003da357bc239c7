#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What cmake --install puts in place works from there, and each Debian-like component holds its part."""
import os
import pathlib
import subprocess
import unittest

import tool


class Install(tool.Case):
    def install(self, *components):
        prefix = self.scratch() / "usr"
        for component in components:
            subprocess.run(["cmake", "--install", os.environ["VYNLIB_BUILD"], "--prefix", str(prefix), "--component",
                            component], check=True, capture_output=True)
        return prefix

    def files(self, prefix):
        return {path.name for path in prefix.rglob("*") if not path.is_dir()}

    def test_components_hold_their_parts(self):
        self.assertEqual({"libvynlib.so.1", "libvynlib.so.1.0.0"}, self.files(self.install("runtime")))
        self.assertLessEqual({"vynlib.h", "lock.h", "libvynlib.so", "libvynlib-sim.so", "vynlib.pc", "vynlib-sim.pc",
                              "vynlib-config.cmake"}, self.files(self.install("dev")))
        self.assertLessEqual({"libvynlib-sim.so.1", "libvynlib-sim.so.1.0.0", "reference.toml"},
                             self.files(self.install("sim")))
        self.assertLessEqual({"vynctl", "vyntable", "vynctl.schema.json", "vynlib-metrics.service",
                              "vynlib-watchdog.service", "limits"}, self.files(self.install("tools")))

    def test_installed_tool_finds_the_library_where_the_system_looks(self):
        prefix = self.install("sim", "tools")
        board = next(prefix.rglob("reference.toml"))
        library = next(prefix.rglob("libvynlib-sim.so.1")).parent
        done = subprocess.run([prefix / "bin/vynctl", "-s", board, "get", "wifi"], capture_output=True, text=True,
                              env=tool.environment(LD_LIBRARY_PATH=str(library)), check=False)
        self.assertEqual(("", "1\n"), (done.stderr, done.stdout))

    def test_installed_tools_look_nowhere_else(self):
        prefix = self.install("tools")
        for name in ("vynctl", "vyntable"):
            headers = subprocess.run(["readelf", "--dynamic", prefix / "bin" / name], check=True, capture_output=True,
                                     text=True).stdout
            self.assertIn("(NEEDED)", headers)
            self.assertNotRegex(headers, r"\((RPATH|RUNPATH)\)")

    def test_units_call_the_tool_as_it_is(self):
        units = self.install("tools") / "lib/systemd/system"
        lines = [line for unit in units.glob("*.service") for line in unit.read_text().splitlines()
                 if line.startswith("Exec")]
        self.assertTrue(lines)
        for line in lines:
            words = line.partition("=")[2].replace("${INTERVAL}", "60").replace("${FEED_EVERY}", "15").split()
            # With --help at its end the command line is read and nothing is done.
            done = self.run_on(None, *words[1:], "--help")
            self.assertEqual((0, ""), (done.returncode, done.stderr), line)

    def test_program_builds_with_pkg_config(self):
        prefix = self.install("sim", "dev")
        config = next(prefix.rglob("vynlib-sim.pc"))
        flags = subprocess.run(["pkg-config", "--cflags", "--libs", "vynlib-sim"], check=True, capture_output=True,
                               text=True, env=os.environ | {"PKG_CONFIG_PATH": str(config.parent)}).stdout.split()
        program = self.scratch() / "program"
        subprocess.run([os.environ["CC"], "-x", "c", "-", "-o", str(program), *flags], check=True, text=True,
                       input="#include <vynlib/vynlib.h>\nint main(void) { return !VynLibDllInit(); }\n")
        library = next(prefix.rglob("libvynlib-sim.so")).parent
        done = subprocess.run([program], env=tool.environment(
            LD_LIBRARY_PATH=str(library), VYNLIB_BOARD=str(next(prefix.rglob("reference.toml")))), capture_output=True,
            text=True, check=False)
        self.assertEqual((0, "ModelName::VYN-R900 Reference\n"), (done.returncode, done.stdout))


class Examples(tool.Case):
    def test_limits_file_fits_the_reference_board(self):
        limits = tool.SOURCE / "packaging/monitoring/limits"
        done = self.run_on(tool.SOURCE / "boards/reference.toml", "check", "--limits", str(limits))
        self.assertIn(done.returncode, (0, 1, 2), done.stdout)


if __name__ == "__main__":
    unittest.main()

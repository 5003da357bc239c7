#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds the binary interface of the public header to the one that was released, as abidiff compares them.

    abi_test.py --write     stores the header's interface as that of a release

A library of empty functions is compiled from the declarations. That the real libraries export the same functions, and that
their sources define what the header declares, is held by checks.exports and by the compiler.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).parent
HEADER = HERE.parents[1] / "include/vynlib/vynlib.h"
RELEASED = HERE / "libvynlib.so.1.abi"
FUNCTION = re.compile(r"^VYNLIB_API (\w+) (\w+)\(([^)]*)\);", re.MULTILINE)


def compiled(header, folder):
    """The path of a library with a function for each declaration in this text."""
    functions = [f"{kind} {name}({arguments}) {{ for (;;) {{}} }}\n" for kind, name, arguments in FUNCTION.findall(header)]
    (folder / "vynlib.h").write_text(header)
    (folder / "empty.c").write_text('#include "vynlib.h"\n' + "".join(functions))
    subprocess.run([os.environ.get("CC", "cc"), "-g", "-w", "-fPIC", "-shared", "-Wl,-soname,libvynlib.so.1", "empty.c", "-o",
                    "libvynlib.so.1"], cwd=folder, check=True)
    return folder / "libvynlib.so.1"


class Abi(unittest.TestCase):
    def differences(self, old=None, new=None):
        """What abidiff has against the header, in which `new` stands for `old`. Further functions are allowed."""
        header = HEADER.read_text()
        if old:
            self.assertEqual(1, header.count(old))
            header = header.replace(old, new)
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run(["abidiff", "--no-added-syms", RELEASED, compiled(header, pathlib.Path(folder))],
                                  capture_output=True, text=True, check=False)
        self.assertEqual("", done.stderr)
        return done.stdout if done.returncode != 0 else ""

    def test_every_function_is_compared(self):
        names = {name for _, name, _ in FUNCTION.findall(HEADER.read_text())}
        self.assertEqual(66, len(names))
        self.assertEqual(names, set(re.findall(r"<elf-symbol name='(\w+)'", RELEASED.read_text())))

    def test_the_interface_is_the_released_one(self):
        self.assertEqual("", self.differences())

    def test_a_function_may_come(self):
        last = "VYNLIB_API int VynLibDllInit(void);"
        self.assertEqual("", self.differences(last, last + "\nVYNLIB_API int VynLibMore(void);"))

    def test_no_function_may_go(self):
        self.assertIn("VynLibDllInit", self.differences("VYNLIB_API int VynLibDllInit(void);", ""))

    def test_no_result_may_change(self):
        code = "VYNLIB_API uint64_t VynLibDllGetLastError(void);"
        self.assertIn("return type changed", self.differences(code, code.replace("uint64_t", "uint32_t")))

    def test_no_argument_may_change_or_come(self):
        volts = re.search(r"VYNLIB_API int VynLibGetVoltage\(.*\);", HEADER.read_text()).group()
        self.assertIn("parameter 2", self.differences(volts, volts.replace("float*", "double*")))
        self.assertIn("parameter 4", self.differences(volts, volts.replace(");", ", int more);")))


def write():
    with tempfile.TemporaryDirectory() as folder:
        library = compiled(HEADER.read_text(), pathlib.Path(folder))
        subprocess.run(["abidw", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs", "--out-file", RELEASED, library],
                       check=True)


if __name__ == "__main__":
    if sys.argv[1:] == ["--write"]:
        write()
    else:
        unittest.main()

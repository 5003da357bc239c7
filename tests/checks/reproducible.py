#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Builds the production library twice, from two copies of the sources in folders of their own, and compares the bytes.

usage: reproducible.py SOURCE_FOLDER BUILD_FOLDER

The compilers, the flags and the kind of build are those of BUILD_FOLDER. No compiler cache takes part: what it gives back
may name the folder of another build.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

LEFT_OUT = re.compile(r"\..*|build.*|tests|fuzz|bench")
KEPT = re.compile(r"^(CMAKE_(?:C|CXX)_COMPILER|CMAKE_CXX_FLAGS\w*|CMAKE_SHARED_LINKER_FLAGS\w*|CMAKE_BUILD_TYPE):\w+=(.*)$",
                  re.MULTILINE)


def settings(build):
    """What decides on the bytes, as options of cmake."""
    return [f"-D{name}={value}" for name, value in KEPT.findall((build / "CMakeCache.txt").read_text())]


def copied(source, target):
    shutil.copytree(source, target, ignore=lambda folder, names: [
        name for name in names if folder == str(source) and LEFT_OUT.fullmatch(name)])


def built(sources, folder, options):
    """The bytes of the library that this folder's build makes."""
    environment = {name: value for name, value in os.environ.items() if not name.startswith(("CMAKE_", "CCACHE_"))}
    for command in (["cmake", "-G", "Ninja", "-S", sources, "-B", folder, *options],
                    ["cmake", "--build", folder, "--target", "vynlib"]):
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL, env=environment)
    return (folder / "src/libvynlib.so.1").read_bytes()


def main():
    source, build = map(pathlib.Path, sys.argv[1:])
    with tempfile.TemporaryDirectory(prefix="vyn-twice-") as scratch:
        first, second = pathlib.Path(scratch, "first"), pathlib.Path(scratch, "the second one")
        for copy in (first, second):
            copied(source, copy)
        # Below the sources, as presets have it, and beside them.
        one = built(first, first / "build", settings(build))
        other = built(second, pathlib.Path(scratch, "out/of/tree"), settings(build))
    if one == other:
        print(f"{len(one)} bytes, the same from both folders")
        return 0
    at = next((i for i, pair in enumerate(zip(one, other)) if pair[0] != pair[1]), min(len(one), len(other)))
    print(f"{len(one)} and {len(other)} bytes, the first difference at 0x{at:X}")
    return 1


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks that the sources below the seam are the only ones of the library that call the system, and that nothing reads
the environment.

usage: seam.py PROJECT_ROOT
"""
import pathlib
import re
import sys

SEAM = ("PlatformLinux.cpp", "FirmwareMemory.cpp", "KernelTables.cpp")
NOWHERE = ("getenv", "fork", "execve", "popen")
CALLS = ("iopl ioperm open openat fopen opendir fdopendir mmap munmap pread system usleep nanosleep clock_nanosleep "
         "sysconf").split() + list(NOWHERE)
HEADERS = "sys/io.h sys/mman.h fcntl.h unistd.h dirent.h".split()
COMMENT_OR_TEXT = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.DOTALL)
CALL = re.compile(r"(?<![\w.>])(?:::|std::)?(" + "|".join(CALLS) + r")\s*\(")
HEADER = re.compile(r"^\s*#\s*include\s*<(" + "|".join(map(re.escape, HEADERS)) + ")>", re.MULTILINE)


def system_uses(text):
    """Names of the system headers and calls that a source uses."""
    return HEADER.findall(text) + CALL.findall(COMMENT_OR_TEXT.sub(" ", text))


def main():
    sources = pathlib.Path(sys.argv[1]) / "src"
    bad = 0
    for path in sorted(sources.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        for name in system_uses(path.read_text()):
            if path.name not in SEAM or name in NOWHERE:
                print(f"{path.relative_to(sources)}: uses {name}, which belongs below the seam or nowhere")
                bad = 1
    return bad


if __name__ == "__main__":
    sys.exit(main())

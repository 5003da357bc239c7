#!/usr/bin/env python3
"""Checks that PlatformLinux.cpp is the only source of the library that calls the system, and that nothing reads the
environment.

usage: seam.py PROJECT_ROOT
"""
import pathlib
import re
import sys

SEAM = "PlatformLinux.cpp"
CALLS = "iopl ioperm open mmap munmap pread system popen usleep nanosleep sysconf getenv fork execve".split()
HEADERS = "sys/io.h sys/mman.h fcntl.h unistd.h".split()
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
        if path.suffix in (".h", ".cpp") and path.name != SEAM:
            for name in system_uses(path.read_text()):
                print(f"{path.relative_to(sources)}: uses {name}, which belongs into {SEAM}")
                bad = 1
    return bad


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Compiles the C programs of README.md as a reader would paste them, and runs them on the reference board.

usage: readme.py PROJECT_ROOT C_COMPILER SIMULATED_LIBRARY
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile


def programs(readme):
    return re.findall(r"^```c\n(.*?)^```", readme, re.MULTILINE | re.DOTALL)


def run(program, root, compiler, library, scratch):
    """Whether the program can be built and shows a voltage. Its lock is one of the test's own."""
    text = program.replace("VYNLIB_LOCK_PATH", f'"{scratch}/lock"')
    binary = f"{scratch}/program"
    # The lock needs more than C.
    standard = "-std=gnu99" if "lock.h" in program else "-std=c99"
    subprocess.run([compiler, standard, "-Wall", "-Wextra", "-Werror", "-x", "c", "-", "-x", "none",
                    "-I", str(root / "include"), str(library), "-o", binary], input=text, text=True, check=True)
    environment = os.environ | {"LD_LIBRARY_PATH": str(library.parent),
                                "VYNLIB_BOARD": str(root / "boards/reference.toml")}
    result = subprocess.run([binary], env=environment, capture_output=True, text=True, check=False)
    print(result.stdout, end="")
    return result.returncode == 0 and re.search(r"^.+: \d+\.\d+ V$", result.stdout, re.MULTILINE)


def main():
    root, compiler, library = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
    found = programs((root / "README.md").read_text())
    with tempfile.TemporaryDirectory() as scratch:
        works = [run(program, root, compiler, library, scratch) for program in found]
    return 0 if len(works) == 2 and all(works) else 1


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Compiles the C program of README.md as a reader would paste it, and runs it on the reference board.

usage: readme.py PROJECT_ROOT C_COMPILER SIMULATED_LIBRARY
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile


def program(readme):
    return re.search(r"^```c\n(.*?)^```", readme, re.MULTILINE | re.DOTALL).group(1)


def main():
    root, compiler, library = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
    with tempfile.TemporaryDirectory() as scratch:
        binary = str(pathlib.Path(scratch) / "program")
        subprocess.run([compiler, "-std=c99", "-Wall", "-Wextra", "-Werror", "-x", "c", "-", "-x", "none",
                        "-I", str(root / "include"), str(library), "-o", binary],
                       input=program((root / "README.md").read_text()), text=True, check=True)
        environment = os.environ | {"LD_LIBRARY_PATH": str(library.parent),
                                    "VYNLIB_BOARD": str(root / "boards/reference.toml")}
        result = subprocess.run([binary], env=environment, capture_output=True, text=True, check=False)
    print(result.stdout, end="")
    return 0 if result.returncode == 0 and re.search(r"^.+: \d+\.\d+ V$", result.stdout, re.MULTILINE) else 1


if __name__ == "__main__":
    sys.exit(main())

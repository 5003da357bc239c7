#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks that each shared library exports exactly the functions that the public header declares.

usage: exports.py HEADER LIBRARY...
"""
import pathlib
import re
import subprocess
import sys


def declared(header):
    return set(re.findall(r"^VYNLIB_API \w+ (\w+)\(", header, re.MULTILINE))


def exported(library):
    listing = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    return {line.split()[-1] for line in listing.splitlines()}


def main():
    wanted = declared(pathlib.Path(sys.argv[1]).read_text())
    bad = 0
    for library in sys.argv[2:]:
        there = exported(library)
        for name in sorted(wanted ^ there):
            print(f"{library}: {name} is {'exported but not declared' if name in there else 'declared but not exported'}")
            bad = 1
    print(f"{len(wanted)} functions declared")
    return 1 if bad or not wanted else 0


if __name__ == "__main__":
    sys.exit(main())

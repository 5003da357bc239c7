#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks that every source names its licence in its first line, and that one in C or C++ then says what it holds.

usage: licence.py PROJECT_ROOT
"""
import pathlib
import sys

LICENCE = "SPDX-License-Identifier: MIT"
# How a line of each kind of source says it; a line for the interpreter may come before it.
LINES = {
    ".h": ("// " + LICENCE, f"/* {LICENCE} */"),
    ".hpp": ("// " + LICENCE,),
    ".cpp": ("// " + LICENCE,),
    ".c": (f"/* {LICENCE} */",),
    ".py": ("# " + LICENCE,),
    ".sh": ("# " + LICENCE,),
    ".cmake": ("# " + LICENCE,),
}
COMMENTED = (".h", ".hpp", ".cpp", ".c")


def kind_of(path, text):
    """The suffix whose rule holds for a file; none when it is no source."""
    if path.name == "CMakeLists.txt" or path.name.endswith(".cmake.in"):
        return ".cmake"
    if path.suffix in LINES:
        return path.suffix
    return ".sh" if text.startswith("#!") else None


def offence(path, text):
    """What is wrong with the beginning of a file; none when nothing is."""
    kind = kind_of(path, text)
    if kind is None:
        return None
    lines = [*text.split("\n", 3), "", ""][1 if text.startswith("#!") else 0:]
    if lines[0] not in LINES[kind]:
        return f'must begin with "{LINES[kind][0]}"'
    if kind in COMMENTED and not lines[1].startswith(("//", "/*")):
        return "must say in its second line what it holds"
    return None


def files(root):
    """Every file outside what was built and what is hidden."""
    for top in sorted(root.iterdir()):
        if top.name.startswith((".", "build")):
            continue
        for path in [top] if top.is_file() else sorted(top.rglob("*")):
            if path.is_file():
                yield path


def main():
    root = pathlib.Path(sys.argv[1])
    bad = 0
    for path in files(root):
        wrong = offence(path, path.read_text(errors="replace"))
        if wrong:
            print(f"{path.relative_to(root)}: {wrong}")
            bad += 1
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())

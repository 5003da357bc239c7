#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks that an include never points up, and that headers which are slow to compile are seen by one source each.

usage: includes.py PROJECT_ROOT
"""
import pathlib
import re
import sys

# What the files of a folder may include from the project, by the beginning of the name.
ALLOWED = {
    "src/layout": ("layout/",),
    "src/text": ("text/", "layout/"),
    "src/hw": ("hw/", "layout/"),
    "src/script": ("script/", "text/", "hw/", "layout/"),
    "src/smbus": ("smbus/", "script/", "text/", "hw/", "layout/"),
    "src/tables": ("tables/", "smbus/", "script/", "text/", "hw/", "layout/"),
    "src/api": ("api/", "tables/", "smbus/", "script/", "text/", "hw/", "layout/", "vynlib/vynlib.h"),
    "firmware": ("firmware/", "layout/"),
    "diagnosis": ("diagnosis/", "layout/"),
    "sim": ("sim/", "hw/Platform.h"),
    "boardfile": ("boardfile/", "firmware/", "sim/", "layout/"),
    "tools/commandline": ("commandline/",),
    "tools/vynctl": ("commands/", "board/", "view/", "doctor/", "feeding/", "commandline/", "boardfile/Description.h",
                     "diagnosis/", "firmware/", "layout/", "vynlib/"),
    "tools/vynctl/board": ("board/", "view/Output.h", "view/Signals.h", "view/Text.h", "doctor/",
                           "boardfile/Description.h", "layout/", "vynlib/"),
    "tools/vynctl/view": ("view/", "board/", "commandline/"),
    "tools/vynctl/doctor": ("doctor/", "view/", "diagnosis/", "layout/", "vynlib/"),
    "tools/vynctl/feeding": ("feeding/", "commands/Context.h", "board/", "view/", "vynlib/"),
    "tools/vyntable": ("vyntable/", "commandline/", "boardfile/", "diagnosis/", "firmware/", "layout/", "sim/Board.h",
                       "vynlib/vynlib.h"),
    # A developers' program for controller records: it runs scripts and transactions below the api.
    "tools/vynprobe": ("commandline/", "boardfile/", "sim/", "smbus/", "script/", "text/", "hw/"),
    "bench": ("bench/", "firmware/", "layout/", "text/", "hw/", "script/", "smbus/", "tables/", "api/", "vynlib/"),
    "fuzz": ("fuzz/", "boardfile/", "layout/", "text/", "hw/", "script/", "smbus/", "tables/", "api/", "vynlib/"),
}
FOLDERS = ("layout/", "text/", "hw/", "script/", "smbus/", "tables/", "api/", "firmware/", "diagnosis/", "sim/",
           "boardfile/", "commandline/", "commands/", "board/", "view/", "doctor/", "feeding/", "vyntable/", "bench/",
           "fuzz/", "tests/", "vynlib/")
# The one source of each library and tool that includes the headers of a package.
ALONE = {
    "CLI/": ("tools/commandline/Parse.cpp",),
    "nlohmann/": ("tools/vynctl/view/Json.cpp", "tools/vyntable/Reports.cpp"),
    "toml++/": ("boardfile/TomlSection.cpp",),
}
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.MULTILINE)


def includes(root, folder):
    """(file, include) of every include in a folder."""
    for path in sorted((root / folder).rglob("*")):
        if path.suffix in (".h", ".cpp", ".c"):
            for name in INCLUDE.findall(path.read_text()):
                yield path.relative_to(root), name


def offences(root):
    """(file, include) of every include that a folder's row does not allow, or that is another source's alone."""
    for folder, allowed in ALLOWED.items():
        for path, name in includes(root, folder):
            if name.startswith(FOLDERS) and not name.startswith(allowed):
                yield path, name
    for folder in ("src", "firmware", "diagnosis", "sim", "boardfile", "tools"):
        for path, name in includes(root, folder):
            if any(name.startswith(package) and str(path) not in sources for package, sources in ALONE.items()):
                yield path, name


def main():
    found = list(offences(pathlib.Path(sys.argv[1])))
    for path, name in found:
        print(f"{path}: must not include {name}")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())

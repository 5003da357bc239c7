#!/usr/bin/env python3
"""Checks that an include never points up.

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
    "sim": ("sim/", "hw/Platform.h", "layout/"),
    "tools/vynctl": ("vynlib/vynlib.h",),
}
FOLDERS = ("layout/", "text/", "hw/", "script/", "smbus/", "tables/", "api/", "sim/", "vynlib/")
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.MULTILINE)


def offences(root):
    """(file, include) of every include that a folder's row does not allow."""
    for folder, allowed in ALLOWED.items():
        for path in sorted((root / folder).rglob("*")):
            if path.suffix not in (".h", ".cpp", ".c"):
                continue
            for name in INCLUDE.findall(path.read_text()):
                if name.startswith(FOLDERS) and not name.startswith(allowed):
                    yield path.relative_to(root), name


def main():
    found = list(offences(pathlib.Path(sys.argv[1])))
    for path, name in found:
        print(f"{path}: must not include {name}")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())

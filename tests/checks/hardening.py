#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks what the ELF files of the shared libraries tell of their hardening, and what their compiler knows of it alone.

usage: hardening.py SOURCE_FOLDER BUILD_FOLDER PRODUCTION_LIBRARY SIMULATED_LIBRARY
"""
import json
import pathlib
import re
import shlex
import subprocess
import sys

# Programs that stand in for the machine put functions of their own under these names, so they are called by them.
SEAM_CALLS = set("open openat mmap munmap pread usleep iopl system close sysconf".split())
FORTIFIED_SEAM_CALL = re.compile(r"__(open|openat|pread|read)(64)?(_2|_chk)")


def tool(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def branch_targets(code):
    """Whether every exported function begins with endbr64, as -fcf-protection has it."""
    starts = re.findall(r"^[0-9a-f]+ <(VynLib\w+)(?:@@\w+)?>:\n\s*[0-9a-f]+:\s+(\w+)", code, re.MULTILINE)
    return bool(starts) and all(instruction == "endbr64" for _, instruction in starts)


def branch_tracking(notes, dynamic, code):
    """Whether the file is marked for branch tracking and shadow stacks, and nothing in it belies the mark: the jumps to
    other libraries are targets too, and no start code without marks is called."""
    jumps = re.findall(r"^[0-9a-f]+ <\w+@plt>:\n\s*[0-9a-f]+:\s+(\w+)", code, re.MULTILINE)
    return (re.search(r"x86 feature:.*\bIBT\b.*\bSHSTK\b", notes) is not None
            and re.search(r"\((INIT|FINI)\)", dynamic) is None
            and bool(jumps) and all(instruction == "endbr64" for instruction in jumps))


def names(listing):
    """Symbols without their versions, of what `nm -D` lists."""
    return {line.split()[-1].partition("@")[0] for line in listing.splitlines()}


def plain_seam(imports):
    """Whether the production library calls the system by plain names only."""
    return SEAM_CALLS <= imports and not any(map(FORTIFIED_SEAM_CALL.fullmatch, imports))


def findings(library, folders):
    """{property: whether it holds} of any of the two libraries"""
    segments = tool("readelf", "-lW", library)
    dynamic = tool("readelf", "-dW", library)
    code = tool("objdump", "-d", "--no-show-raw-insn", library)
    imports = names(tool("nm", "-D", "--undefined-only", library))
    exports = names(tool("nm", "-D", "--defined-only", library))
    contents = pathlib.Path(library).read_bytes()
    return {
        "read-only relocations": "GNU_RELRO" in segments,
        "immediate binding": re.search(r"BIND_NOW|Flags:.*\bNOW\b", dynamic) is not None,
        "no text relocations": "TEXTREL" not in dynamic,
        "no executable stack": re.search(r"GNU_STACK.* RW +0x", segments) is not None,
        "no writable code": re.search(r"LOAD.* RWE ", segments) is None,
        "stack protector": "__stack_chk_fail" in imports,
        "fortified calls": any(re.fullmatch(r"__\w+_chk", name) for name in imports - {"__stack_chk_fail"}),
        "branch targets marked": branch_targets(code),
        "branch tracking and shadow stacks": branch_tracking(tool("readelf", "-nW", library), dynamic, code),
        "hidden visibility": all(name.startswith(("VynLib", "VYNLIB_")) for name in exports),
        "no library search path": re.search(r"R(UN)?PATH", dynamic) is None,
        "names no folder of the build": not any(folder.encode() in contents for folder in folders),
    }, imports


def macros(build, source):
    """{name: value} of what is defined at the end of this source, compiled as the build does it."""
    commands = json.loads((pathlib.Path(build) / "compile_commands.json").read_text())
    command = next(entry for entry in commands if entry["file"].endswith(source))
    words = shlex.split(command["command"])
    words[words.index("-o") + 1] = "-"
    listing = subprocess.run([*words, "-E", "-dM"], check=True, capture_output=True, text=True, cwd=command["directory"])
    return dict(re.findall(r"^#define (\w+) (\S+)", listing.stdout, re.MULTILINE))


def fortified(defined):
    """Whether the headers check as much as this compiler can: since GCC 12, and in Clang, sizes that vary too."""
    highest = 3 if "__clang__" in defined or int(defined["__GNUC__"]) >= 12 else 2
    return defined.get("__USE_FORTIFY_LEVEL") == str(highest)


def main():
    folders, libraries = sys.argv[1:3], sys.argv[3:]
    bad = 0
    for library in libraries:
        found, imports = findings(library, folders)
        if library == libraries[0]:
            found["plain names at the seam"] = plain_seam(imports)
            found["highest level of fortified calls"] = fortified(macros(folders[1], "src/tables/TAcpiBase.cpp"))
        for name, holds in found.items():
            print(f"{'ok  ' if holds else 'FAIL'} {name}: {library}")
            bad |= not holds
    return bad


if __name__ == "__main__":
    sys.exit(main())

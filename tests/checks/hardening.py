#!/usr/bin/env python3
"""Checks what the ELF files of the shared libraries tell of their hardening.

usage: hardening.py LIBRARY...
"""
import re
import subprocess
import sys


def tool(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def branch_targets(library):
    """Whether every exported function begins with endbr64, as -fcf-protection has it."""
    code = tool("objdump", "-d", "--no-show-raw-insn", library)
    starts = re.findall(r"^[0-9a-f]+ <(VynLib\w+)>:\n\s*[0-9a-f]+:\s+(\w+)", code, re.MULTILINE)
    return bool(starts) and all(instruction == "endbr64" for _, instruction in starts)


def findings(library):
    """{property: whether it holds}"""
    segments = tool("readelf", "-lW", library)
    dynamic = tool("readelf", "-dW", library)
    imports = tool("nm", "-D", "--undefined-only", library)
    exports = tool("nm", "-D", "--defined-only", library)
    return {
        "read-only relocations": "GNU_RELRO" in segments,
        "immediate binding": re.search(r"BIND_NOW|Flags:.*\bNOW\b", dynamic) is not None,
        "no text relocations": "TEXTREL" not in dynamic,
        "no executable stack": re.search(r"GNU_STACK.* RW +0x", segments) is not None,
        "no writable code": re.search(r"LOAD.* RWE ", segments) is None,
        "stack protector": "__stack_chk_fail" in imports,
        "fortified calls": re.search(r"__\w+_chk\b", imports.replace("__stack_chk_fail", "")) is not None,
        "branch targets marked": branch_targets(library),
        "hidden visibility": all(line.split()[-1].startswith("VynLib") for line in exports.splitlines()),
        "no library search path": re.search(r"R(UN)?PATH", dynamic) is None,
    }


def main():
    bad = 0
    for library in sys.argv[1:]:
        for name, holds in findings(library).items():
            print(f"{'ok  ' if holds else 'FAIL'} {name}: {library}")
            bad |= not holds
    return bad


if __name__ == "__main__":
    sys.exit(main())

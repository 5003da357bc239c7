#!/usr/bin/env python3
"""Boots one virtual machine, runs a GoogleTest program as its only process, and keeps the verdict of each test.

Exit status 0 means that the program ran to its end, whatever its tests said: case.py reports them one by one.
"""
import argparse
import json
import pathlib
import re
import shutil
import struct
import sys
import tempfile

import initramfs
import kernel
import machine

SMBIOS_TYPE = 0xDD  # in the range left to makers of firmware
SMBIOS_HANDLE = 0xD000
VERDICT = re.compile(r"^\[ RUN      \] (\S+)\n(.*?)^\[( {7}OK|  FAILED ) \] \1 ", re.MULTILINE | re.DOTALL)


def verdicts(console):
    """{test: {"passed", "output"}} of every test that came to an end."""
    text = console.replace("\r\n", "\n")
    return {name: {"passed": "OK" in word, "output": output} for name, output, word in VERDICT.findall(text)}


def smbios_structure(record, path):
    """Wraps the BIOS information record into an SMBIOS structure, which the firmware copies below 1 MiB."""
    path.write_bytes(struct.pack("<BBH", SMBIOS_TYPE, 4 + len(record), SMBIOS_HANDLE) + record + b"\0\0")
    return path


def machine_tables(directory, scratch):
    """The files that `vyntable compile` wrote, in the forms QEMU takes."""
    if directory is None:
        return {}
    files = {"IADT": directory / "iadt.bin", "IAMT": directory / "iamt.bin", "SMBIOS": directory / "biosinfo.bin"}
    files["SMBIOS"] = smbios_structure(files["SMBIOS"].read_bytes(), scratch / "smbios")
    return files


def arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--test", type=pathlib.Path, required=True, help="the GoogleTest program")
    parser.add_argument("--program", type=pathlib.Path, action="append", default=[], help="further program of the guest")
    parser.add_argument("--library", type=pathlib.Path, action="append", default=[], help="library under test")
    parser.add_argument("--tables", type=pathlib.Path, help="directory of the compiled firmware tables")
    parser.add_argument("--kernel", default="linux-image-cloud-amd64", help="meta package of the kernel")
    parser.add_argument("--module", action="append", default=["msr"], help="further kernel module of the guest")
    parser.add_argument("--kernel-cache", type=pathlib.Path, required=True)
    parser.add_argument("--results", type=pathlib.Path, required=True)
    parser.add_argument("--limit", type=int, default=150, help="seconds")
    return parser.parse_args()


def run(options, scratch):
    image, modules = kernel.cached(options.kernel_cache, options.kernel)
    init = pathlib.Path(__file__).parent / "guest/init"
    archive = initramfs.build(scratch / "root", modules, options.module, init,
                              [options.test, *options.program], options.library)
    tables = machine_tables(options.tables, scratch)
    return machine.Machine(scratch).run(image, archive, options.test.name, tables, options.limit)


def main():
    options = arguments()
    options.results.unlink(missing_ok=True)
    scratch = pathlib.Path(tempfile.mkdtemp(prefix="vyn-vm-"))
    try:
        console = run(options, scratch)
    finally:
        shutil.rmtree(scratch)
    print(console)
    options.results.write_text(json.dumps(verdicts(console)))
    return 0 if re.search(r"^\[ EXIT [01] \]", console, re.MULTILINE) else 1


if __name__ == "__main__":
    sys.exit(main())

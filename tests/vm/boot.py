#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Boots one virtual machine whose only process is a program, and keeps what it said.

The exit status is the program's. With --results the program is a GoogleTest one, and the verdict on each of its tests goes
into a file of the form that GoogleTest gives its own; a run without a verdict is a failure.
"""
import argparse
import json
import pathlib
import re
import shlex
import shutil
import sys
import tempfile

import firmware
import initramfs
import kernel
import machine

VERDICT = re.compile(r"^\[ RUN      \] (\S+)\.(\S+)\n(.*?)^\[( {7}OK|  FAILED |  SKIPPED ) \] \1\.\2 ",
                     re.MULTILINE | re.DOTALL)
EXIT = re.compile(r"^\[ EXIT (\d+) \]", re.MULTILINE)


def verdicts(console):
    """{suite: its tests that came to an end}"""
    suites = {}
    for suite, name, output, word in VERDICT.findall(console):
        test = {"name": name, "result": "SKIPPED" if "SKIPPED" in word else "COMPLETED"}
        if "FAILED" in word:
            test["failures"] = [{"failure": output}]
        suites.setdefault(suite, []).append(test)
    return suites


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--firmware", choices=firmware.KINDS, default="seabios", help="kind of the machine's firmware")
    parser.add_argument("--program", type=pathlib.Path, action="append", default=[],
                        help="further program or script of the guest")
    parser.add_argument("--library", type=pathlib.Path, action="append", default=[], help="library under test")
    parser.add_argument("--tables", type=pathlib.Path, help="directory of the compiled firmware tables")
    parser.add_argument("--kernel", default="linux-image-cloud-amd64", help="meta package of the kernel")
    parser.add_argument("--module", action="append", default=["msr"], help="further kernel module of the guest")
    parser.add_argument("--append", action="append", default=[], metavar="WORD", help="further word for the kernel")
    parser.add_argument("--qemu", action="append", default=[], metavar="WORD",
                        help="further word for QEMU: --qemu=-smp --qemu=2")
    parser.add_argument("--kernel-cache", type=pathlib.Path, required=True)
    parser.add_argument("--results", type=pathlib.Path, help="file for the verdicts of a GoogleTest program")
    parser.add_argument("--limit", type=int, default=150, help="seconds")
    parser.add_argument("command", nargs=argparse.REMAINDER, metavar="PROGRAM [ARGUMENT...]",
                        help="program or script that the guest runs, and its arguments")
    return parser.parse_args()


def run(options, scratch):
    """What the console said, one boot long."""
    program, *words = options.command
    program = pathlib.Path(program)
    image, modules = kernel.cached(options.kernel_cache, options.kernel)
    archive = initramfs.build(scratch / "root", modules, options.module,
                              f"VM_FIRMWARE={options.firmware} {shlex.join([program.name, *words])}",
                              [program, *options.program], options.library)
    kind = firmware.KINDS[options.firmware]
    extra = [*kind.qemu, *firmware.tables(kind, options.tables, scratch), *options.qemu]
    console = machine.Machine(scratch).run(image, archive, [*kind.kernel(machine.MEMORY), *options.append], extra,
                                           options.limit)
    return console.replace("\r\n", "\n")


def main():
    options = arguments()
    if options.results:
        options.results.unlink(missing_ok=True)
    scratch = pathlib.Path(tempfile.mkdtemp(prefix="vyn-vm-"))
    try:
        console = run(options, scratch)
    finally:
        shutil.rmtree(scratch)
    print(console)
    found = EXIT.search(console)
    status = int(found.group(1)) if found else 1
    if options.results:
        suites = [{"name": name, "testsuite": tests} for name, tests in verdicts(console).items()]
        options.results.parent.mkdir(exist_ok=True)
        options.results.write_text(json.dumps({"testsuites": suites}))
        return status if suites else 1
    return status


if __name__ == "__main__":
    sys.exit(main())

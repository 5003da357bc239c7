#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the library with the model over whole small spaces, member by member.

usage: scope.py --driver PROGRAM [SPACE...]

The spaces: commands, opcodes, lengths, headers, selectors; all of them when none is named. The exit status is 1 when a
member differs, and the first of them are told.
"""
import argparse
import sys
import time

from compare import Driver, differences
from executor import ARGUMENT_MODE, DELAY, FIELDS, MEMORY, MSR, PCI, PORT, SMBUS, Command, Executor, mask
from features import FEATURES, STEPS
from firmware import HEADER, LISTS
from machine import Machine

MOST_TOLD = 10  # members that differ
PATTERN = bytes(range(1, 256)) + b"\x80"
# What the commands below reach.
SPEC = {
    "ports": [[0x60 + i, 0x11 * (i + 1)] for i in range(8)],
    "pairs": [[0x2E, 0x2F, PATTERN.hex()]],
    # Vendor 0x1D0F and class 0xFF name no SMBus controller.
    "pci": [[[0, 31, 3], "0f1d" + "0102030405060000ff" + PATTERN[:53].hex()]],
    "memory": [[0x1FFA, PATTERN[:16].hex()]],
    "msr": [[0x19C, 0x8123456789ABCDEF]],
    "memory_device": True, "msr_device": True, "privileged": True,
}
ADDRESSES = {
    (MEMORY, 1): bytes.fromhex("FC1F0000"),  # four bytes below the end of a page
    (PORT, 1): bytes.fromhex("60000000"),
    (PORT, 2): bytes.fromhex("2E000000" "2F000000" "FD000000"),
    (MSR, 1): bytes.fromhex("9C010000"),
    (SMBUS, 1): bytes.fromhex("5D1C"),
    (PCI, 1): bytes.fromhex("001F03" "1200"),
    **{(DELAY, form): bytes([unit]) + bytes.fromhex("0700") for form, unit in enumerate((1, 2, 3, 9))},
}
LONGEST = 40  # bytes that hold any command
KNOWN_BITS = 0x1FF  # of the control word


def case(**parts):
    return {"machine": SPEC, "tables": [], "calls": [], "after": [], **parts}


def call(name, selector=2, index=0, value=7):
    return {"name": name, "selector": selector, "index": index, "value": value}


def entry(record_type, body=b"", **parts):
    return {"type": record_type, "index": 0, "value": 7, "body": body.hex(), **parts}


def kind_and_form(opcode):
    return opcode & 0x3C, opcode & 3


def scattered(number):
    """A 64-bit value with about half of its bits set, another for each number: no masking repeats the one before."""
    return (number + 1) * 0x9E3779B97F4A7C15 & 0xFFFFFFFFFFFFFFFF


def record_of(opcode, control, argument=0, number=0):
    """A command that meets something on the board; masks and expected value follow from `number`."""
    record = bytearray(LONGEST)
    record[0], record[1:3] = opcode, control.to_bytes(2, "little")
    address = ADDRESSES.get(kind_and_form(opcode), b"")
    record[3:3 + len(address)] = address
    fields = FIELDS.get(kind_and_form(opcode))
    if fields:
        for (offset, size), value in zip(fields, (scattered(number), scattered(number + 1000), scattered(number + 2000))):
            record[offset:offset + size] = (value % (1 << 8 * size)).to_bytes(size, "little")
        argument_at = fields[3][0]
        record[argument_at:argument_at + 4] = argument.to_bytes(4, "little")
    elif kind_and_form(opcode)[0] == DELAY:
        record[6:10] = argument.to_bytes(4, "little")
    return record


class Expecting:
    """Gives a reading the value that it brings. It follows the machine by running what the case runs."""

    def __init__(self):
        self.executor = Executor(Machine(SPEC))

    def matching(self, record, direction):
        command = Command(bytearray(record), 0)
        if command.layout is None:
            return record
        value = self.executor.fetch(command)
        value = mask(command.control, command.field(0), command.field(1), direction, value)
        offset, size = command.layout[2]
        bits = command.layout[4]
        record[offset:offset + size] = (value % (1 << bits)).to_bytes(size, "little")
        return record

    def ran(self, run):
        self.executor.run(bytearray.fromhex(run[0]), 0, run[1], list(run[2]))


def controls(opcode):
    """(control word, argument index): every word where the command exists, else every choice of reading and writing."""
    exists = kind_and_form(opcode) in ADDRESSES
    for control in range(KNOWN_BITS + 1):
        if not exists and control & 0x33:
            continue
        for argument in (0, 1, 2) if control & ARGUMENT_MODE else (0,):
            yield control, argument
    for bit in range(9, 16):
        yield from ((1 << bit, 0), (1 << bit | 0x0AC, 0), (1 << bit | 0x14C, 1))


def runs_of(opcode):
    """[bytes, direction, arguments] for every control word, argument index and direction."""
    expecting, number = Expecting(), 0
    for control, argument in controls(opcode):
        for direction in (0, 1) if control & 0xFF else (0, 1, 255):
            number += 1
            record = record_of(opcode, control, argument, number)
            if number % 2 and not control & ARGUMENT_MODE:
                record = expecting.matching(record, direction)
            run = [record.hex(), direction, [scattered(number + 3000), scattered(number + 4000)]]
            expecting.ran(run)
            yield run


def commands():
    """Every opcode byte with every control word, in both directions, with every choice of argument."""
    for opcode in range(256):
        runs = list(runs_of(opcode))
        yield len(runs), case(commands=runs)


def opcodes():
    """Every opcode byte at the start and behind another command of an entry, read and set: where the walk goes on."""
    delay = record_of(DELAY, 0x44)[:15]
    for opcode in range(256):
        for control in (0x00, 0x88, 0x44):
            own = record_of(opcode, control)[:STEPS.get(kind_and_form(opcode), 36)]
            for body in (own + delay, delay + own + delay, delay + own[:-1]):
                for name in ("VynLibGetLVDSState", "VynLibSetLVDSState"):
                    yield 1, case(tables=[{"records": [entry(5, body)]}], calls=[call(name)])


def owners(record_type):
    """The functions that read the list of this record type."""
    return [name for name, feature in FEATURES.items() if feature.slot == LISTS.get(record_type)]


def lengths():
    """Every record length from 0 to 80 of every record type, filled with every kind of command; one follows behind it,
    from which a record shorter than its own header takes what it lacks."""
    last = entry(15, b"", value=9)
    everything = [call(name) for name in FEATURES]
    for kind, form in STEPS:
        command = bytes(record_of(kind | form, 0x44)[:STEPS[kind, form]])
        for length in range(27, 81):
            body = (command * 6)[:length - 27]
            records = [entry(record_type, body) for record_type in range(256) if record_type != 15]
            yield len(records), case(tables=[{"records": records + [last]}], calls=everything)
    for length in range(27):
        for record_type in range(256):
            head = bytes([record_type, 0, 7]) + length.to_bytes(4, "little")
            tail = head.ljust(length, b"\0") + bytes([15, 0, 9, 27, 0, 0, 0]) + bytes(20)
            calls = [call(name) for name in owners(record_type) + ["VynLibGetBTState"]]
            yield 1, case(tables=[{"records": [], "tail": tail.hex()}], calls=calls)


def headers():
    """Every change of one byte of a table's header. Of byte 6, which is worth 64 KiB, one bit at a time: what lies
    behind the table is the same."""
    calls = [call("VynLibGetLVDSState"), call("VynLibGetLVDSType"), call("VynLibGetBTState", 0)]
    table = {"records": [entry(5), entry(6)]}
    for place in range(HEADER):
        for value in (1 << bit for bit in range(8)) if place == 6 else range(256):
            yield 1, case(tables=[{**table, "change": [place, value]}], calls=calls)


def selectors():
    """Every selector of every function before a start, with a list that is absent, empty and holds one entry, and after
    the tear-down."""
    calls = [call(name, selector) for name in FEATURES for selector in range(256)]
    one = [entry(record_type) for record_type in sorted(LISTS)]
    yield 3 * len(calls), case(before=calls, calls=calls, after=calls)
    yield 2 * len(calls), case(tables=[{"records": []}], calls=calls, after=calls)
    yield 2 * len(calls), case(tables=[{"records": one}], calls=calls, after=calls)


SPACES = {"selectors": selectors, "commands": commands, "opcodes": opcodes, "lengths": lengths, "headers": headers}


def walk(name, driver):
    """Members of the space, and cases that differ."""
    start, members, bad = time.monotonic(), 0, 0
    for count, each in SPACES[name]():
        members += count
        lines = differences(each, driver)
        bad += bool(lines)
        for line in lines[:3] if bad <= MOST_TOLD else ():
            print(f"{name}: {line}")
    print(f"{name}: {members} members, {bad} cases differ, {time.monotonic() - start:.1f} s", flush=True)
    return bad


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--driver", required=True)
    parser.add_argument("spaces", nargs="*", metavar="SPACE", help=", ".join(SPACES))
    options = parser.parse_args()
    bad = 0
    for name in options.spaces or SPACES:
        driver = Driver(options.driver)  # a process of its own: the library has never been started in it
        bad += walk(name, driver)
        status = driver.close()
        if status:
            print(f"the library's process ended with status {status}")
        bad += bool(status)
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())

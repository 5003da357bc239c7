#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests of the model itself, on bytes worked out by hand."""
import unittest

import features
import firmware
from executor import Executor
from machine import Machine

# Index/data pair 0x2E/0x2F, register 0xF0: reading keeps bit 0 and expects 1.
WORKED = bytes.fromhex("06A0002E0000002F000000F0000000010000000000000001000000000000000000000000")


def machine(**parts):
    return Machine(parts)


def pair(register, value):
    registers = bytearray(256)
    registers[register] = value
    return [[0x2E, 0x2F, registers.hex()]]


class Reading(unittest.TestCase):
    def test_worked_example_reads_one_register_and_compares_bit_0(self):
        board, slots = machine(pairs=pair(0xF0, 0x03)), [0]
        self.assertEqual(len(WORKED), 36)
        self.assertTrue(Executor(board).run(bytearray(WORKED), 0, 0, slots))
        self.assertEqual(slots, [1])
        self.assertEqual(board.log, [["out", 0x2E, 1, 0xF0, ""], ["in", 0x2F, 1, 0x03, ""]])

    def test_worked_example_fails_when_the_bit_is_clear(self):
        self.assertFalse(Executor(machine(pairs=pair(0xF0, 0x02))).run(bytearray(WORKED), 0, 0, [0]))

    def test_worked_example_does_nothing_when_setting(self):
        board = machine(pairs=pair(0xF0, 0x03))
        self.assertTrue(Executor(board).run(bytearray(WORKED), 0, 1, [0]))
        self.assertEqual(board.log, [])

    def test_pci_value_is_not_taken(self):
        # 0:1f.3 register 0x20, expects 0.
        command = bytearray.fromhex("918000" "001F03" "2000" + "00" * 21)
        board = machine(pci=[[[0, 0x1F, 3], "FF" * 64]])
        self.assertTrue(Executor(board).run(command, 0, 0, [0]))
        self.assertEqual(board.log, [["out", 0xCF8, 4, 0x8000FB20, ""], ["in", 0xCFC, 4, 0xFFFFFFFF, ""]])

    def test_delay_waits_and_fails(self):
        # 7 ms
        command = bytearray.fromhex("148000" "02" "0700" "FFFFFFFF" "0000000000")
        board = machine()
        self.assertFalse(Executor(board).run(command, 0, 0, [0]))
        self.assertEqual(board.log, [["sleep", 0, 0, 7000, ""]])

    def test_missing_msr_leaves_the_device_open(self):
        command = bytearray.fromhex("098000" "10000000" + "00" * 28)
        board = machine()
        self.assertTrue(Executor(board).run(command, 0, 0, [0]))
        self.assertEqual([entry[0] for entry in board.log], ["command", "open", "pread"])


class Setting(unittest.TestCase):
    def test_port_is_read_masked_and_written(self):
        # Port 0x80: AND 0x0F, OR 0x50.
        command = bytearray.fromhex("050700" "80000000" "0F000000" "50000000" + "00" * 13)
        board = machine(ports=[[0x80, 0xA3]])
        self.assertTrue(Executor(board).run(command, 0, 1, [0]))
        self.assertEqual(board.log, [["in", 0x80, 1, 0xA3, ""], ["out", 0x80, 1, 0x53, ""]])

    def test_argument_through_a_pair_stays_in_the_record(self):
        # Argument 0, AND 0x0F without OR.
        command = bytearray.fromhex("060601" "2E000000" "2F000000" "30000000" "0F000000" "00000000" + "00" * 13)
        board = machine(pairs=pair(0x30, 0))
        Executor(board).run(command, 0, 1, [0xA7])
        self.assertEqual(command[19:23].hex(), "a7000000")
        self.assertEqual(board.log, [["out", 0x2E, 1, 0x30, ""], ["out", 0x2F, 1, 0x07, ""]])

    def test_memory_write_keeps_the_page_around_it(self):
        command = bytearray.fromhex("410401" "04100000" "00000000" "00000000" + "00" * 13)
        board = machine(memory=[[0x1000, "0102030405060708"]])
        Executor(board).run(command, 0, 1, [0xBEEF])
        self.assertEqual(board.log, [
            ["open", 0, 0, 1, "/dev/mem"], ["map", 0x1000, 1, 6, ""], ["memwrite", 0x1004, 1, 0xEF, ""],
            ["memwrite", 0x1005, 1, 0xBE, ""], ["unmap", 0x1000, 0, 6, ""], ["close", 0, 0, 0, ""]])


def table(*records):
    return firmware.build_table({"records": list(records)})


def entry(record_type, index, value, body=""):
    return {"type": record_type, "index": index, "value": value, "body": body}


def library(*records):
    board = machine()
    return features.Library(board, Executor(board), firmware.lists_of([table(*records)]))


class Features(unittest.TestCase):
    def test_first_of_two_entries_wins(self):
        self.assertEqual(library(entry(5, 0, 7), entry(5, 0, 8)).call("VynLibGetLVDSState", 2), (1, 7))

    def test_version_counts_entries_and_gathers_bits(self):
        board = library(entry(23, 0, 1), entry(23, 1, 0), entry(23, 2, 1))
        self.assertEqual(board.call("VynLibMBVersionState", 2), (1, 0x0305))

    def test_absent_user_led_colour_is_told_in_two_ways(self):
        board = library()
        board.call("VynLibSetUserLEDColor", 0)
        self.assertEqual(board.code, 0x1F00)
        board.call("VynLibSetUserLEDColor", 2)
        self.assertEqual(board.code, 0x1E00)

    def test_msr_command_ends_the_call_after_it_has_run(self):
        board = library(entry(5, 0, 7, "098000" + "00" * 32))
        self.assertEqual(board.call("VynLibGetLVDSState", 2), (0, 0xFF))
        self.assertEqual(board.code, 21)
        self.assertEqual(board.machine.log[0][0], "command")

    def test_command_beyond_its_record_ends_the_call(self):
        board = library(entry(5, 0, 7, "0580008000"))
        self.assertEqual(board.call("VynLibGetLVDSState", 2), (0, 0xFF))
        self.assertEqual((board.code, board.machine.log), (21, []))

    def test_mismatched_form_that_succeeds_has_no_end(self):
        with self.assertRaises(features.Unbounded):
            library(entry(5, 0, 7, "070000" + "00" * 25)).call("VynLibGetLVDSState", 2)

    def test_padding_behind_a_block_ends_the_call(self):
        board = library(entry(5, 0, 7, "050000" + "00" * 25 + "00" * 5))
        self.assertEqual(board.call("VynLibGetLVDSState", 2), (0, 0xFF))
        self.assertEqual(board.code, 21)


if __name__ == "__main__":
    unittest.main()

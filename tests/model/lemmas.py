#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Arithmetic of the walks over tables and commands, proved for every input.

Each lemma is about one piece of src/layout or src/tables, modelled here in bit vectors of the widths that the code has; the
rows of commands are read out of the source. A lemma is a claim and changed models: the claim must hold of the model, and
must fail of every changed one, each of which is a mistake that could be made.
"""
import pathlib
import re
import unittest

from z3 import And, BitVec, BitVecVal, Extract, If, Implies, Not, Or, Solver, ULE, ULT, ZeroExt, sat, unsat

LAYOUT = pathlib.Path(__file__).resolve().parents[2] / "src/layout"
KINDS = {"kCommandMemory": 0x00, "kCommandPort": 0x04, "kCommandMsr": 0x08, "kCommandSmbus": 0x0C, "kCommandPci": 0x10,
         "kCommandDelay": 0x14}
FORMS = {"0": 0, "kFormDirect": 1, "kFormIndexData": 2}
PREFIX = 3  # bytes of opcode and control word
MOST = 0xFFFFFFFF  # bytes of a table


def rows():
    """(kind, form, length, steps, [(offset, bytes)]) of every row of kCommandLayouts."""
    text = (LAYOUT / "AccessCommand.h").read_text()
    text = text[text.index("kCommandLayouts[] = {"):text.index("};", text.index("kCommandLayouts[] = {"))]
    for line in re.findall(r"^  \{(k\w+.*)\},$", text, re.M):
        kind, form, length, steps, *_ = re.split(r",\s*", line)
        fields = [(int(a), int(b)) for a, b in re.findall(r"\{(\d+), (\d+)\}", line)]
        yield KINDS[kind], FORMS[form], int(length), steps == "true", fields


ROWS = list(rows())


def holds(claim, *assumptions):
    solver = Solver()
    solver.add(*assumptions, Not(claim))
    result = solver.check()
    assert result in (sat, unsat), "the solver gives up"
    return result == unsat


def fits(row, opcode):
    kind, form = row[0], row[1]
    return And(opcode & 0x3C == kind, Or(form == 0, opcode & 3 == form))


def pick(opcode, value, otherwise):
    """`value` of the row that an opcode has, as a 64-bit number."""
    result = BitVecVal(otherwise, 64)
    for row in ROWS:
        result = If(fits(row, opcode), BitVecVal(value(row), 64), result)
    return result


class Layouts(unittest.TestCase):
    """kCommandLayouts of src/layout/AccessCommand.h."""

    def overlap(self, table):
        """Whether some byte of some row lies in two fields, in the opcode and control word, or outside the record."""
        byte = BitVec("byte", 16)
        for _, _, length, _, fields in table:
            places = [(0, PREFIX)] + fields
            inside = [And(ULE(offset, byte), ULT(byte, offset + size)) for offset, size in places]
            twice = [And(a, b) for i, a in enumerate(inside) for b in inside[:i]]
            if not holds(And(Not(Or(*twice)), Implies(Or(*inside), ULT(byte, length)))):
                return True
        return False

    def test_has_all_seven_rows(self):
        self.assertEqual([row[2] for row in ROWS], [28, 28, 36, 35, 21, 29, 15])

    def test_no_two_fields_of_a_command_share_a_byte_and_none_leaves_its_record(self):
        self.assertFalse(self.overlap(ROWS))

    def test_a_field_moved_by_one_or_widened_is_seen(self):
        kind, form, length, steps, fields = ROWS[0]
        for changed in ([(3, 4), (6, 4)], [(3, 5), *fields[1:]], [*fields, (27, 2)]):
            self.assertTrue(self.overlap([(kind, form, length, steps, changed)]), changed)

    def unambiguous(self, table):
        opcode = BitVec("opcode", 8)
        pairs = [And(fits(a, opcode), fits(b, opcode)) for i, a in enumerate(table) for b in table[:i]]
        return holds(Not(Or(*pairs)))

    def test_an_opcode_has_one_row_at_most(self):
        self.assertTrue(self.unambiguous(ROWS))
        self.assertFalse(self.unambiguous(ROWS + [(0x04, 0, 20, True, [])]))


def command_step(opcode, remaining, reach_without_layout=PREFIX, is_checked=True):
    """CommandCursor: whether the command fits, its step (0: none), and `remaining` behind it."""
    length = pick(opcode, lambda row: row[2], 0)
    steps = pick(opcode, lambda row: row[2] if row[3] else 0, 0)
    shortest = BitVecVal(reach_without_layout, 64)
    for kind in KINDS.values():
        of_kind = [row[2] for row in ROWS if row[0] == kind and row[3]]
        if of_kind:
            shortest = If(opcode & 0x3C == kind, BitVecVal(min(of_kind), 64), shortest)
    reach = If(length != 0, length, shortest)
    fit = And(remaining > 0, reach <= remaining) if is_checked else remaining > 0
    return fit, reach, steps, remaining - steps


class CommandCursorSteps(unittest.TestCase):
    """CommandCursor of src/layout/Walk.h: `remaining_` is signed, 64 bits wide."""

    def setUp(self):
        self.opcode, self.remaining = BitVec("opcode", 8), BitVec("remaining", 64)
        # A record's length is 32 bits wide; one shorter than its header has less than nothing left.
        self.possible = And(self.remaining >= -27, self.remaining <= MOST - 27)

    def never_below_zero(self, **changes):
        fit, _, step, after = command_step(self.opcode, self.remaining, **changes)
        return holds(Implies(And(fit, step > 0), And(after >= 0, after < self.remaining)), self.possible)

    def test_remaining_never_falls_below_zero_and_every_move_shortens_it(self):
        self.assertTrue(self.never_below_zero())
        self.assertFalse(self.never_below_zero(is_checked=False))

    def never_reads_outside(self, **changes):
        """Opcode and control word, and every field of the row, lie before the record's end."""
        fit, _, _, _ = command_step(self.opcode, self.remaining, **changes)
        last = pick(self.opcode, lambda row: max([PREFIX] + [a + b for a, b in row[4]]), PREFIX)
        return holds(Implies(fit, last <= self.remaining), self.possible)

    def test_a_command_that_fits_has_all_its_fields_inside_the_record(self):
        self.assertTrue(self.never_reads_outside())
        self.assertFalse(self.never_reads_outside(is_checked=False))
        self.assertFalse(self.never_reads_outside(reach_without_layout=1))

    def test_the_cursor_never_leaves_its_record(self):
        # Invariant: at + remaining = end, of 64-bit addresses that the record does not wrap around.
        at, end = BitVec("at", 64), BitVec("end", 64)
        fit, _, step, after = command_step(self.opcode, self.remaining)
        before = And(at + self.remaining == end, ULE(at, end), self.remaining >= 0)
        self.assertTrue(holds(Implies(And(before, fit), And(at + step + after == end, ULE(at + step, end))), self.possible))
        # A cursor that moves without counting.
        self.assertFalse(holds(Implies(And(before, fit), at + step + self.remaining == end), self.possible))


def record_step(size, offset, length, least=7, is_bounded=True):
    """RecordCursor: whether a record begins at `offset`, and where the next one does; size_t is 64 bits wide."""
    left = size - offset
    wide = ZeroExt(32, length)
    valid = And(ULE(least, left), length != 0)
    return And(valid, ULE(wide, left)) if is_bounded else valid, offset + wide


class RecordCursorSteps(unittest.TestCase):
    """RecordCursor of src/layout/Walk.h, over tables of any 32-bit length."""

    def setUp(self):
        self.size, self.offset, self.length = BitVec("size", 64), BitVec("offset", 64), BitVec("length", 32)
        self.possible = And(ULE(self.size, MOST), ULE(self.offset, self.size))

    def stays_inside(self, **changes):
        valid, following = record_step(self.size, self.offset, self.length, **changes)
        return holds(Implies(valid, And(ULT(self.offset, following), ULE(following, self.size))), self.possible)

    def test_every_step_moves_on_and_ends_inside_the_table(self):
        self.assertTrue(self.stays_inside())
        self.assertFalse(self.stays_inside(is_bounded=False))

    def reads_its_length(self, **changes):
        valid, _ = record_step(self.size, self.offset, self.length, **changes)
        return holds(Implies(valid, ULE(self.offset + 7, self.size)), self.possible)

    def test_the_length_field_lies_inside_the_table(self):
        self.assertTrue(self.reads_its_length())
        self.assertFalse(self.reads_its_length(least=3))

    def test_a_walk_takes_no_more_steps_than_there_are_bytes(self):
        # Records of one byte overlap, so a step may be one byte; the measure falls with each.
        def falls(**changes):
            valid, following = record_step(self.size, self.offset, self.length, **changes)
            return holds(Implies(valid, ULT(self.size - following, self.size - self.offset)), self.possible)
        self.assertTrue(falls())
        self.assertFalse(falls(is_bounded=False))

    def steps_of_whole_headers(self, least_length):
        """steps + left / 7 never grows, where no record is shorter than its length field: size / 7 steps at most."""
        valid, following = record_step(self.size, self.offset, self.length)
        steps = BitVec("steps", 64)
        before = ULE(steps * 7 + (self.size - self.offset), self.size)
        after = ULE((steps + 1) * 7 + (self.size - following), self.size)
        whole = ULE(least_length, self.length)
        return holds(Implies(And(before, valid, whole), after), self.possible, ULE(steps, MOST))

    def test_a_walk_over_records_that_hold_their_length_takes_a_seventh(self):
        self.assertTrue(self.steps_of_whole_headers(7))
        self.assertFalse(self.steps_of_whole_headers(6))


class CoveredBytes(unittest.TestCase):
    """Covered() of src/layout/Walk.h: std::clamp wants its lower bound not above the upper one."""

    def test_the_bounds_are_in_order_and_the_result_lies_inside(self):
        size, length = BitVec("size", 64), BitVec("length", 32)
        wide = ZeroExt(32, length)

        def good(low):
            result = If(ULT(wide, low), low, If(ULT(size, wide), size, wide))
            return holds(And(ULE(low, size), ULE(result, size)))
        self.assertTrue(good(If(ULT(size, 36), size, BitVecVal(36, 64))))
        self.assertFalse(good(BitVecVal(36, 64)))


class BoardRecordCursorSteps(unittest.TestCase):
    """BoardRecordCursor of src/layout/Walk.h: lengths are a byte, the last record is cut to the table."""

    def test_every_step_moves_on_or_ends_and_stays_inside(self):
        size, offset, length = BitVec("size", 64), BitVec("offset", 64), BitVec("length", 8)
        wide, left = ZeroExt(56, length), size - offset

        def good(bytes_taken):
            following = offset + bytes_taken
            ended = bytes_taken == 0
            return holds(Implies(ULE(4, left), And(ULE(following, size), Or(ended, ULT(offset, following)))),
                         ULE(size, MOST), ULE(offset, size))
        self.assertTrue(good(If(ULT(left, wide), left, wide)))
        self.assertFalse(good(wide))


class SearchArea(unittest.TestCase):
    """SetupSSDTEx of src/tables/TAcpiBase.cpp: the area shrinks by what has been searched, in 32 bits."""

    def test_the_area_never_wraps_when_matches_lie_whole_inside_it(self):
        area, start, found = BitVec("area", 32), BitVec("start", 64), BitVec("found", 64)
        searched = Extract(31, 0, found + 16 - start)
        # Matches lie on paragraphs of an area of whole paragraphs, so that 16 bytes from one are inside.
        inside = And(ULE(start, found), ULE(area, 0x10000), area & 15 == 0, (found - start) & 15 == 0,
                     ULE(start, MOST))
        self.assertTrue(holds(ULE(area - searched, area), inside, ULT(found - start, ZeroExt(32, area))))
        self.assertFalse(holds(ULE(area - searched, area), inside))


if __name__ == "__main__":
    unittest.main()

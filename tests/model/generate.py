# SPDX-License-Identifier: MIT
"""Random cases: a machine, function description tables, and calls.

A case is plain data that JSON can hold:
  machine  ports [[port, value]], pairs [[index port, data port, hex]], pci [[[bus, device, function], hex]],
           memory [[address, hex]], msr [[number, value]], memory_device, msr_device, privileged
  tables   [{records: [{type, index, value, body (hex), length (optional)}], tail (optional), length (optional)}]
  calls, after  [{name, selector, index, value}]
"""
from executor import DELAY, DIRECT, FIELDS, INDEX_DATA, MEMORY, MSR, PCI, PORT, SMBUS, Command, Executor, mask
from features import FEATURES, INDEXED_READ, INDEXED_WRITE, STEPS
from firmware import LISTS
from machine import Machine

PLAIN_PORTS = (0x60, 0x61, 0x80, 0x2E8, 0x3F8, 0xA00, 0xCFC, 0xD00, 0xFFFE, 0xFFFF)
PAIRS = ((0x2E, 0x2F), (0x70, 0x71), (0x4E, 0x4F), (0x72, 0x73), (0x295, 0x296), (0xA05, 0xA04), (0x90, 0x90))
REGIONS = (0x1000, 0x1FF8, 0xFED40000, 0xFFFFFFF8, 0x7000FFC)
SLOTS = ((0, 0, 0), (0, 2, 3), (0, 31, 7), (1, 0, 0), (255, 31, 0))
MSR_NUMBERS = (0x10, 0x19C, 0xFFFFFFFF)
MASKS = (0, 1, 0x0F, 0x80, 0xFF, 0xFF00, 0xFFFF, 0xFFFFFFFF)
CONTROLS = (0x00A0, 0x00A0, 0x00A6, 0x00A7, 0x0080, 0x0087, 0x00B0, 0x00BA, 0x0180, 0x0040, 0x0140, 0x0007, 0x0004,
            0x0006, 0x0104, 0x0105, 0x0106, 0x0107, 0x00A7, 0x01A7, 0x000B, 0x0008, 0x010A, 0x0000, 0x008C)
KINDS = ((PORT, DIRECT), (PORT, INDEX_DATA), (MEMORY, DIRECT), (PCI, DIRECT), (SMBUS, DIRECT), (DELAY, 0),
         (MSR, DIRECT))
KIND_WEIGHTS = (6, 8, 4, 4, 3, 2, 0.3)
INDEXES = (0, 0, 1)
VALUES = (0, 1, 1, 2)
OWNERS = {slot: record_type for record_type, slot in LISTS.items()}


def machine(random):
    def some(pool, most):
        return random.sample(pool, random.randint(0, min(most, len(pool))))

    return {
        "ports": [[port, random.randrange(256)] for port in some(PLAIN_PORTS, 6)],
        "pairs": [[*pair, random.randbytes(256).hex()] for pair in some(PAIRS, 3)],
        # Vendor 0x1D0F and class 0xFF name no SMBus controller.
        "pci": [[list(slot), "0f1d" + random.randbytes(6).hex() + "000000ff" + random.randbytes(52).hex()]
                for slot in some(SLOTS, 2)],
        "memory": [[address, random.randbytes(random.choice((1, 4, 8, 16))).hex()] for address in some(REGIONS, 2)],
        "msr": [[number, random.getrandbits(64)] for number in some(MSR_NUMBERS, 2)],
        "memory_device": random.random() > 0.05,
        "msr_device": random.random() > 0.3,
        "privileged": random.random() > 0.01,
    }


class Commands:
    """Commands that fit a machine, so that they reach something and about half of them match."""

    def __init__(self, random, spec):
        self.random, self.spec = random, spec

    def body(self):
        if self.random.random() < 0.05:
            return self.relay()
        parts = [self.command() for _ in range(self.random.choice((0, 1, 1, 1, 2, 2, 3, 4)))]
        body = b"".join(parts)
        roll = self.random.random()
        if roll < 0.02:
            body += self.random.randbytes(self.random.randint(1, 40))
        elif roll < 0.04 and body:
            body = body[:self.random.randrange(len(body))]
        elif roll < 0.05:
            body = self.random.randbytes(self.random.randint(1, 80))
        return body

    def relay(self):
        """Reads into the argument, sends it through a record that keeps it, and writes what came back."""
        wide = self.random.choice((0, 0x40, 0xC0))
        source = self.command(self.random.choice(((PORT, DIRECT), (PORT, INDEX_DATA), (MEMORY, DIRECT))))
        keeper = self.command((PORT, INDEX_DATA))
        target = self.command(self.random.choice(((PORT, DIRECT), (PORT, INDEX_DATA), (PCI, DIRECT))))
        keeping = self.random.choice((0x0194, 0x0195, 0x0196, 0x0197, 0x01A7))
        steps = (source, 0x0188), (keeper, keeping), (target, 0x0144)
        for record, control in steps:
            record[0] = record[0] & 0x3F | wide
            record[1:3] = control.to_bytes(2, "little")
            at = FIELDS[record[0] & 0x3C, record[0] & 3][3][0]
            record[at:at + 4] = bytes(4)
        return b"".join(record for record, _ in steps)

    def command(self, wanted=None):
        if not wanted and self.random.random() < 0.02:
            return self.unknown()
        kind, form = wanted or self.random.choices(KINDS, KIND_WEIGHTS)[0]
        length = STEPS.get((kind, form), 35)
        record = bytearray(self.random.randbytes(length))
        if kind == DELAY:
            form = self.random.randrange(4)
        record[0] = kind | form | self.random.choice((0, 0, 0, 1, 2, 3)) << 6
        record[1:3] = self.control().to_bytes(2, "little")
        self.fill(record, kind, form)
        if not wanted and self.random.random() < 0.02 and kind not in (DELAY, MSR):
            self.mismatch(record)
        return record

    def unknown(self):
        record = bytearray(self.random.randbytes(self.random.randint(3, 30)))
        record[0] = record[0] & 0xC3 | self.random.choice((0x08, 0x18, 0x1C, 0x20, 0x3C))
        return record

    def mismatch(self, record):
        """A form that the kind does not have, flagged to read in both directions: it fails and the walk ends."""
        forms = [form for form in range(4) if (record[0] & 0x3C, form) not in STEPS]
        record[0] = record[0] & 0xFC | self.random.choice(forms)
        record[1] = record[1] & ~0x44 | 0x88

    def control(self):
        if self.random.random() < 0.85:
            return self.random.choice(CONTROLS)
        return self.random.getrandbits(16)

    def fill(self, record, kind, form):
        if kind == DELAY:
            record[3] = self.random.choice((0, 1, 2, 3, 4))
            record[4:6] = self.random.choice((0, 1, 10, 500, 4000)).to_bytes(2, "little")
            record[6:10] = self.argument()
            return
        self.place(record, kind, form)
        (and_at, and_size), (or_at, or_size), _, (argument_at, _), _ = FIELDS[kind, form]
        record[and_at:and_at + and_size] = self.mask(and_size)
        record[or_at:or_at + or_size] = self.mask(or_size)
        record[argument_at:argument_at + 4] = self.argument()
        self.expect(record, kind, form)

    def mask(self, size):
        value = self.random.choice(MASKS) if self.random.random() < 0.7 else self.random.getrandbits(64)
        return (value % (1 << 8 * size)).to_bytes(size, "little")

    def argument(self):
        return self.random.choice((0, 0, 0, 1, 2, 0xFFFFFFFF)).to_bytes(4, "little")

    def pick(self, known, others):
        if known and self.random.random() < 0.9:
            return self.random.choice(known)
        return self.random.choice(others)

    def place(self, record, kind, form):
        """The address fields: mostly something that the machine has."""
        upper = self.random.choice((0, 0, 0, self.random.getrandbits(16)))  # of port fields; not used
        if (kind, form) == (PORT, DIRECT):
            port = self.pick([p for p, _ in self.spec["ports"]], PLAIN_PORTS)
            record[3:7] = (port | upper << 16).to_bytes(4, "little")
        elif kind == PORT:
            index_port, data_port = self.pick([pair[:2] for pair in self.spec["pairs"]], PAIRS)
            record[3:7] = (index_port | upper << 16).to_bytes(4, "little")
            record[7:11] = (data_port | upper << 16).to_bytes(4, "little")
            record[11] = self.random.choice((0, 1, 0x30, 0xF0, 0xFC, 0xFF, self.random.randrange(256)))
        elif kind == MEMORY:
            address = self.pick([a for a, _ in self.spec["memory"]], REGIONS) + self.random.choice((0, 0, 1, 3))
            record[3:7] = min(address, 0xFFFFFFFF).to_bytes(4, "little")
        elif kind == PCI:
            record[3:6] = bytes(self.pick([slot for slot, _ in self.spec["pci"]], SLOTS + ((0, 33, 9),)))
            record[6:8] = self.random.choice((0, 4, 8, 0x10, 0x12, 0x3F, 0x104, 0xFFFF)).to_bytes(2, "little")
        elif kind == MSR:
            record[3:7] = self.pick([n for n, _ in self.spec["msr"]], MSR_NUMBERS).to_bytes(4, "little")

    def expect(self, record, kind, form):
        """Half of the time, the value that a reading of the untouched machine brings."""
        expected_at, size = FIELDS[kind, form][2]
        if self.random.random() < 0.5:
            command = Command(bytearray(record), 0)
            value = Executor(Machine(self.spec)).fetch(command)
            value = mask(command.control, command.field(0), command.field(1), 0, value)
            record[expected_at:expected_at + size] = (value % (1 << 8 * size)).to_bytes(size, "little")


def record(random, commands, types):
    roll = random.random()
    if roll < 0.06:
        body = random.randbytes(random.randint(0, 90))
        result = {"type": random.choice((0, 2, 3, 4, 31, 36, 40, 255)), "body": body.hex()}
    else:
        result = {"type": random.choice(types), "body": commands.body().hex()}
    result["index"] = random.choice(INDEXES) if random.random() < 0.9 else random.choice((7, 8, 39, 255))
    result["value"] = random.choice(VALUES) if random.random() < 0.9 else random.randrange(256)
    if random.random() < 0.004:
        result["length"] = random.choice((0, 7, 26, 28, 1000, 0x7FFFFFFF, 0xFFFFFFFF))
    return result


def table(random, commands, types):
    result = {"records": [record(random, commands, types) for _ in range(random.randint(0, 40) * len(types) // 5)]}
    if random.random() < 0.03:
        result["tail"] = random.randbytes(random.randint(1, 60)).hex()
    if random.random() < 0.02:
        result["length"] = random.choice((0, 20, 35, 36, 40, 43, 62, 63, 100, 2000))
    return result


def call(random, names):
    return {
        "name": random.choice(names),
        "selector": random.choice((2,) * 14 + (1,) * 4 + (0, 3, 255)),
        "index": random.choice(INDEXES) if random.random() < 0.9 else random.choice((7, 255)),
        "value": random.choice(VALUES) if random.random() < 0.9 else random.randrange(256),
    }


def case(random):
    spec = machine(random)
    everything = list(FEATURES)
    favourites = random.sample(everything, random.randint(1, 4))
    types = sorted({OWNERS[FEATURES[name].slot] for name in favourites})
    slots = {LISTS[record_type] for record_type in types}
    offered = [name for name in everything if FEATURES[name].slot in slots]
    indexed = [name for name in offered if FEATURES[name].shape in (INDEXED_READ, INDEXED_WRITE)]
    commands = Commands(random, spec)
    return {
        "machine": spec,
        "tables": [table(random, commands, types) for _ in range(random.choice((0,) + (1,) * 15 + (2,)))],
        "calls": [call(random, offered * 6 + indexed * 3 + random.sample(everything, 3))
                  for _ in range(random.randint(5, 30))],
        "after": [call(random, everything) for _ in range(2)],
    }

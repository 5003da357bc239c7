# SPDX-License-Identifier: MIT
"""Running one access command: decoding, the access itself, the masks, the comparison."""

U32 = 0xFFFFFFFF
U64 = 0xFFFFFFFFFFFFFFFF

MEMORY, PORT, MSR, SMBUS, PCI, DELAY = 0x00, 0x04, 0x08, 0x0C, 0x10, 0x14
DIRECT, INDEX_DATA = 1, 2

ARGUMENT_MODE = 0x0100
# Bits of the control word by direction (0 reads, anything else sets): OR, AND, writes, reads.
READING = (0x0010, 0x0020, 0x0040, 0x0080)
SETTING = (0x0001, 0x0002, 0x0004, 0x0008)

# (kind, form): offset and size of AND mask, OR mask, expected value, argument index; then bits that are compared.
FIELDS = {
    (MEMORY, DIRECT): ((7, 4), (11, 4), (15, 4), (19, 4), 32),
    (PORT, DIRECT): ((7, 4), (11, 4), (15, 4), (19, 4), 32),
    (PORT, INDEX_DATA): ((15, 4), (19, 4), (23, 4), (27, 4), 32),
    (SMBUS, DIRECT): ((6, 2), (8, 2), (10, 2), (12, 4), 16),
    (PCI, DIRECT): ((8, 4), (12, 4), (16, 4), (20, 4), 32),
    (MSR, DIRECT): ((7, 8), (15, 8), (23, 4), (31, 4), 32),
}
MICROSECONDS = {1: 1, 2: 1000, 3: 1000000}


class Command:
    """A view of a record inside a body; `store_or` changes the body itself."""

    def __init__(self, body, start):
        self.body, self.start = body, start
        opcode = body[start]
        self.kind, self.form, self.width = opcode & 0x3C, opcode & 3, 1 << (opcode >> 6)
        self.control = self.number(1, 2)
        self.layout = FIELDS.get((self.kind, self.form))

    def number(self, offset, size):
        return int.from_bytes(self.body[self.start + offset:self.start + offset + size], "little")

    def field(self, which):
        return self.number(*self.layout[which])

    def argument_slot(self, count):
        """The slot that argument mode names, or None."""
        slot = self.field(3)
        return slot if self.control & ARGUMENT_MODE and slot < count else None

    def store_or(self, value):
        offset, size = self.layout[1]
        at = self.start + offset
        self.body[at:at + size] = (value & U32).to_bytes(size, "little")


def mask(control, and_mask, or_mask, direction, value):
    or_bit, and_bit, _, _ = SETTING if direction else READING
    if control & and_bit:
        value &= and_mask
    if control & or_bit:
        value |= or_mask
    return value & U64


class Executor:
    """Acts on a machine. `printed` collects the lines written to standard output."""

    def __init__(self, machine):
        self.machine = machine
        self.printed = []

    def run(self, body, start, direction, slots):
        command = Command(body, start)
        _, _, writes, reads = SETTING if direction else READING
        if command.control & writes:
            self.write(command, direction, slots)
            return True
        if not command.control & reads:
            return True
        return self.read(command, direction, slots)

    # The read half.

    def read(self, command, direction, slots):
        if command.kind == DELAY:
            self.wait(command, len(slots))
            return False
        if command.kind not in (MEMORY, PORT, MSR, SMBUS, PCI):
            self.printed.append("IAxTRead::UNKNOWN INTERFACE !!")
            return False
        if command.layout is None:
            return False
        value = self.masked(command, direction, self.fetch(command))
        slot = command.argument_slot(len(slots))
        slots[slot or 0] = value
        if slot is not None or command.control & ARGUMENT_MODE:
            return True
        return value % (1 << command.layout[4]) == command.field(2)

    def masked(self, command, direction, value):
        return mask(command.control, command.field(0), command.field(1), direction, value)

    def fetch(self, command):
        """The value register after the read: what the access brought, 0 where it brings nothing."""
        if command.kind == MEMORY:
            return self.memory_read(command.number(3, 4), command.width)
        if command.kind == MSR:
            return self.msr_read(command.number(3, 4))
        if command.kind == PCI:
            self.pci_select(command)
            self.machine.read_port(self.pci_port(command), 4)
            return 0  # what the register holds is not taken
        if command.kind == SMBUS:
            return 0  # no controller: nothing is accessed
        if command.form == INDEX_DATA:
            return self.pair_read(command)
        return self.port_read(command.number(3, 2), command.width)

    # The write half.

    def write(self, command, direction, slots):
        if command.kind == DELAY:
            return self.wait(command, len(slots))
        if command.kind not in (MEMORY, PORT, SMBUS, PCI):
            self.printed.append("IAxTWrite::UNKNOWN INTERFACE !!")
            return None
        if command.layout is None:
            return None
        slot = command.argument_slot(len(slots))
        if slot is None:
            value = self.masked(command, direction, self.fetch(command))
        else:
            value = slots[slot]
            if (command.kind, command.form) == (PORT, INDEX_DATA):
                command.store_or(value)
                value = mask(command.control, command.field(0), value, direction, value)
        return self.store(command, value)

    def store(self, command, value):
        if command.kind == MEMORY:
            self.memory_write(command.number(3, 4), self.low_bytes(value, command.width))
        elif command.kind == PCI:
            self.pci_select(command)
            self.machine.write_port(self.pci_port(command), 4, value & U32)
        elif command.kind == PORT and command.form == INDEX_DATA:
            self.pair_write(command, self.low_bytes(value, command.width))
        elif command.kind == PORT:
            for i, byte in enumerate(self.low_bytes(value, command.width)):
                self.machine.write_port((command.number(3, 2) + i) & 0xFFFF, 1, byte)

    @staticmethod
    def low_bytes(value, width):
        return value.to_bytes(8, "little")[:width]

    # Each access.

    def port_read(self, port, width):
        return sum(self.machine.read_port((port + i) & 0xFFFF, 1) << (8 * i) for i in range(width))

    def pair_registers(self, command):
        first = command.number(11, 1)
        return range(first, (command.width + first) & 0xFFFF)

    def pair_read(self, command):
        value = 0
        for i, register in enumerate(self.pair_registers(command)):
            self.machine.write_port(command.number(3, 2), 1, register & 0xFF)
            value |= self.machine.read_port(command.number(7, 2), 1) << (8 * i)
        return value

    def pair_write(self, command, data):
        for register, byte in zip(self.pair_registers(command), data):
            self.machine.write_port(command.number(3, 2), 1, register & 0xFF)
            self.machine.write_port(command.number(7, 2), 1, byte)

    def pci_select(self, command):
        bus, device, function, register = (command.number(o, s) for o, s in ((3, 1), (4, 1), (5, 1), (6, 2)))
        address = 0x80000000 + (bus << 16) + (device << 11) + (function << 8)
        address += (register & 0xFC) + ((register << 16) & 0x0F000000)
        self.machine.write_port(0xCF8, 4, address & U32)

    @staticmethod
    def pci_port(command):
        return 0xCFC + (command.number(6, 2) & 3)

    def memory_read(self, address, width):
        page, offset = address - address % 4096, address % 4096
        if not self.machine.open("/dev/mem", False):
            return 0
        seen = self.machine.map(page, offset + width, False)
        self.machine.unmap(page, seen, seen)
        self.machine.close()
        return int.from_bytes(seen[offset:], "little")

    def memory_write(self, address, data):
        page, offset = address - address % 4096, address % 4096
        if not self.machine.open("/dev/mem", True):
            return
        before = self.machine.map(page, offset + len(data), True)
        self.machine.unmap(page, before, before[:offset] + data)
        self.machine.close()

    def msr_read(self, number):
        self.machine.command("modprobe msr")
        if not self.machine.open("/dev/cpu/0/msr", False):
            return 0
        value = self.machine.read_msr(number)
        if value is None:
            return 0  # the descriptor stays open
        self.machine.close()
        return value

    def wait(self, command, count):
        amount, slot = command.number(4, 2), command.number(6, 4)
        if command.number(2, 1) & 1 and slot < count:
            amount = slot  # the index itself, not what the slot holds
        self.machine.sleep(amount * MICROSECONDS.get(command.number(3, 1), 0))

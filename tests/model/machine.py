# SPDX-License-Identifier: MIT
"""A board of plain registers: what the simulated machine does, told a second time, with a log of every access.

A log entry is [kind, address, width, value, text], in the terms of the simulated board.
"""

PAGE = 4096
PCI_ADDRESS = 0xCF8
PCI_DATA = range(0xCFC, 0xD00)


class Machine:
    """Built from the "machine" part of a case (see generate.py)."""

    def __init__(self, spec):
        self.ports = {port: value for port, value in spec.get("ports", [])}
        self.pairs = [Pair(*pair) for pair in spec.get("pairs", [])]
        self.functions = {tuple(where): bytearray(bytes.fromhex(config).ljust(PAGE, b"\0"))
                          for where, config in spec.get("pci", [])}
        self.memory = {}
        for address, content in spec.get("memory", []):
            for i, byte in enumerate(bytes.fromhex(content)):
                self.memory[address + i] = byte
        self.msrs = {number: value for number, value in spec.get("msr", [])}
        self.has_memory = spec.get("memory_device", True)
        self.has_msr = spec.get("msr_device", True)
        self.latch = 0
        self.log = []

    def record(self, kind, address=0, width=0, value=0, text=""):
        self.log.append([kind, address, width, value, text])

    # Ports. The pair attached last answers first, its data port before its index port.

    def _pair_at(self, port):
        for pair in reversed(self.pairs):
            if port in (pair.index_port, pair.data_port):
                return pair
        return None

    def _pci_cell(self, port):
        """(configuration space, offset) behind a data port; the space is None when no function is there."""
        where = (self.latch >> 16 & 0xFF, self.latch >> 11 & 0x1F, self.latch >> 8 & 7)
        offset = (self.latch >> 24 & 0xF) << 8 | (self.latch & 0xFC) | (port & 3)
        return self.functions.get(where), offset

    def _enabled(self, port):
        return port in PCI_DATA and self.latch >> 31 == 1

    def _read_byte(self, port):
        pair = self._pair_at(port)
        if pair:
            return pair.read(port)
        if self._enabled(port):
            config, offset = self._pci_cell(port)
            return config[offset] if config else 0xFF
        return self.ports.get(port, 0xFF)

    def _write_byte(self, port, value):
        pair = self._pair_at(port)
        if pair:
            pair.write(port, value)
        elif self._enabled(port):
            config, offset = self._pci_cell(port)
            if config:
                config[offset] = value
        elif port in self.ports:
            self.ports[port] = value

    def read_port(self, port, width):
        if width == 4 and port == PCI_ADDRESS:
            value = self.latch
        else:
            value = sum(self._read_byte(port + i) << (8 * i) for i in range(width))
        self.record("in", port, width, value)
        return value

    def write_port(self, port, width, value):
        self.record("out", port, width, value)
        if width == 4 and port == PCI_ADDRESS:
            self.latch = value
            return
        for i in range(width):
            self._write_byte(port + i, value >> (8 * i) & 0xFF)

    # Device files.

    def open(self, path, writable):
        self.record("open", value=int(writable), text=path)
        return {"/dev/mem": self.has_memory, "/dev/cpu/0/msr": self.has_msr}.get(path, False)

    def close(self):
        self.record("close")

    def map(self, offset, length, writable):
        """The bytes seen through the mapping; empty when it fails."""
        self.record("map", offset, int(writable), length)
        return bytearray(self.memory.get(offset + i, 0xFF) for i in range(length))

    def unmap(self, offset, before, after):
        for i, (old, new) in enumerate(zip(before, after)):
            if old == new:
                continue
            self.record("memwrite", offset + i, 1, new)
            if offset + i in self.memory:
                self.memory[offset + i] = new
        self.record("unmap", offset, 0, len(after))

    def read_msr(self, number):
        """None when the register does not exist."""
        self.record("pread", number, 0, 8)
        return self.msrs.get(number)

    def command(self, text):
        self.record("command", text=text)

    def sleep(self, microseconds):
        self.record("sleep", value=microseconds)


class Pair:
    """256 registers behind an index port and a data port."""

    def __init__(self, index_port, data_port, registers):
        self.index_port, self.data_port = index_port, data_port
        self.registers = bytearray(bytes.fromhex(registers).ljust(256, b"\0"))
        self.index = 0

    def read(self, port):
        return self.index if port == self.index_port else self.registers[self.index]

    def write(self, port, value):
        if port == self.index_port:
            self.index = value
        else:
            self.registers[self.index] = value

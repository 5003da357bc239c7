# SPDX-License-Identifier: MIT
"""The feature state functions: selectors, lists, the walk over entries, codes."""
from executor import DELAY, FIELDS, MEMORY, MSR, PCI, PORT, SMBUS, U32, Command
from firmware import RECORD_HEADER

NOT_INITIALISED, BAD_SELECTOR, UNKNOWN_ACCESS = 1, 12, 21
# What a result holds before a call; a call that must not touch it leaves this.
UNTOUCHED8, UNTOUCHED16 = 0xA5, 0xA5A5

READ, WRITE, INDEXED_READ, INDEXED_WRITE, VERSION = "read", "write", "indexed read", "indexed write", "version"
ANY, TWO = (1, 2), (2,)


class Feature:
    def __init__(self, shape, slot, family, perform, **quirks):
        self.shape, self.slot, self.family, self.perform = shape, slot, family, perform
        reading = shape in (READ, INDEXED_READ, VERSION)
        self.failed = quirks.get("failed", 0x01 if reading else 0x02)
        self.no_entry = quirks.get("no_entry", 0x04)
        self.absent = quirks.get("absent", family)
        self.cleared = quirks.get("cleared", False)


FEATURES = {
    "VynLibGetComType": Feature(INDEXED_READ, 1, 0x02, ANY),
    "VynLibSetComType": Feature(INDEXED_WRITE, 1, 0x02, ANY),
    "VynLibGetLVDSState": Feature(READ, 13, 0x06, ANY),
    "VynLibSetLVDSState": Feature(WRITE, 13, 0x06, TWO),
    "VynLibGetLVDSType": Feature(READ, 14, 0x07, ANY),
    "VynLibSetLVDSType": Feature(WRITE, 14, 0x07, TWO),
    "VynLibBacklightCtrl": Feature(WRITE, 15, 0x19, ANY, failed=0x01, no_entry=0x03),
    "VynLibGetMFGState": Feature(READ, 16, 0x08, TWO),
    "VynLibGetOnboardTPMState": Feature(READ, 17, 0x09, ANY),
    "VynLibSetOnboardTPMState": Feature(WRITE, 17, 0x09, TWO),
    "VynLibGetMEDescriptorState": Feature(READ, 19, 0x0A, TWO),
    "VynLibSetMEDescriptorState": Feature(WRITE, 19, 0x0A, TWO),
    "VynLibGetPcieBandwidthMode": Feature(READ, 22, 0x0B, TWO),
    "VynLibGetUsbPwrState": Feature(READ, 23, 0x0C, ANY),
    "VynLibSetUsbPwrState": Feature(WRITE, 23, 0x0C, ANY),
    "VynLibGetBTState": Feature(READ, 24, 0x0D, ANY),
    "VynLibSetBTState": Feature(WRITE, 24, 0x0D, ANY),
    "VynLibGetWifiState": Feature(READ, 25, 0x0E, ANY),
    "VynLibSetWifiState": Feature(WRITE, 25, 0x0E, ANY),
    "VynLibGetOTPState": Feature(READ, 26, 0x0F, ANY),
    "VynLibSetOTPState": Feature(WRITE, 26, 0x0F, TWO),
    "VynLibGetATModeState": Feature(READ, 28, 0x11, ANY),
    "VynLibGetIntelPwrSolutionState": Feature(READ, 29, 0x12, TWO),
    "VynLibSetIntelPwrSolutionState": Feature(WRITE, 29, 0x12, TWO),
    "VynLibDetectTbCIOPlug": Feature(READ, 30, 0x13, TWO),
    "VynLibGetTbFRCPowerState": Feature(READ, 31, 0x14, TWO),
    "VynLibMBVersionState": Feature(VERSION, 32, 0x15, TWO),
    "VynLibGetDigitalIOState": Feature(INDEXED_READ, 33, 0x16, ANY, cleared=True),
    "VynLibSetDigitalIOState": Feature(INDEXED_WRITE, 33, 0x16, ANY),
    "VynLibGetDioConfig": Feature(INDEXED_READ, 34, 0x20, ANY, cleared=True),
    "VynLibSetDioConfig": Feature(INDEXED_WRITE, 34, 0x20, ANY),
    "VynLibGetDioEnPin": Feature(READ, 35, 0x21, ANY),
    "VynLibSetDioEnPin": Feature(WRITE, 35, 0x21, ANY),
    "VynLibGetUserLEDState": Feature(READ, 38, 0x1B, ANY),
    "VynLibSetUserLEDState": Feature(WRITE, 38, 0x1B, ANY, no_entry=0x03),
    "VynLibGetUserLEDColor": Feature(INDEXED_READ, 39, 0x1F, ANY),
    "VynLibSetUserLEDColor": Feature(INDEXED_WRITE, 39, 0x1F, ANY, absent=0x1E),
    "VynLibGetJGPIOPowerState": Feature(READ, 40, 0x1C, ANY),
    "VynLibSetJGPIOPowerState": Feature(WRITE, 40, 0x1C, ANY, no_entry=0x03),
    "VynLibGetCOMPowerState": Feature(INDEXED_READ, 41, 0x1D, ANY),
    "VynLibSetCOMPowerState": Feature(INDEXED_WRITE, 41, 0x1D, ANY),
    "VynLibGetDbgLedColor": Feature(INDEXED_READ, 42, 0x1E, ANY),
    "VynLibSetDbgLedColor": Feature(INDEXED_WRITE, 42, 0x1E, ANY),
}

STEPS = {(MEMORY, 1): 28, (PORT, 1): 28, (PORT, 2): 36, (SMBUS, 1): 21, (PCI, 1): 29,
         **{(DELAY, form): 15 for form in range(4)}}
REPEATED = (MEMORY, PORT, SMBUS, PCI)
MSR_BYTES = 35
PREFIX_BYTES = 3


def reach(command):
    """Bytes that must lie inside the record; of the shortest of its kind when the form is not one of the kind's."""
    if (command.kind, command.form) == (MSR, 1):
        return MSR_BYTES
    shortest = min((step for (kind, _), step in STEPS.items() if kind == command.kind), default=0)
    return STEPS.get((command.kind, command.form), shortest)


class Unbounded(Exception):
    """The call would repeat one command for ever."""


class UnknownAccess(Exception):
    """A command that the walk cannot step over, or that reaches beyond its record."""


class Library:
    """The initialised library over a machine and the lists of its tables."""

    def __init__(self, machine, executor, lists):
        self.machine, self.executor, self.lists = machine, executor, lists
        self.initialised = 1
        self.code = 0

    def call(self, name, selector, index=0, value=0):
        """(returned, result); the code is left in `self.code`."""
        feature = FEATURES[name]
        self.result = UNTOUCHED16 if feature.shape == VERSION else UNTOUCHED8
        returned = self._dispatch(feature, selector, index, value)
        return returned, self.result

    def _leave(self, code):
        self.code = code
        return self.initialised if code == 0 else 0

    def _dispatch(self, feature, selector, index, value):
        if not self.initialised:
            return self._leave(NOT_INITIALISED)
        entries = self.lists.get(feature.slot, [])
        if selector == 0:
            return self._leave(0 if entries else feature.family << 8)
        if selector not in feature.perform:
            return self._leave(BAD_SELECTOR)
        if not entries:
            return self._leave(feature.absent << 8)
        self.slots = [0]
        try:
            return self._walk(feature, entries, index, value)
        except UnknownAccess:
            return self._leave(UNKNOWN_ACCESS)

    def _walk(self, feature, entries, index, value):
        if feature.shape == VERSION:
            return self._version(feature, entries)
        setting = feature.shape in (WRITE, INDEXED_WRITE)
        if not setting:
            self.result = 0xFF
        self.code = feature.family << 8 | feature.no_entry
        for entry in entries:
            if feature.shape in (INDEXED_READ, INDEXED_WRITE) and entry.index != index:
                continue
            if setting and entry.value != value:
                continue
            if feature.cleared:
                self.result = 0
            if self._run(entry, int(setting)):
                self.result = self.result if setting else entry.value
                return self._leave(0)
            self.code = feature.family << 8 | feature.failed
        return 0

    def _version(self, feature, entries):
        self.result = 0xFFFF
        count = bits = 0
        for entry in entries:
            if self._run(entry, 0):
                count = (count + 1) & 0xFF
                bits |= (entry.value & 1) << (entry.index & 31) & 0xFF
        if not count:
            return self._leave(feature.family << 8 | feature.failed)
        self.result = count * 256 + bits
        return self._leave(0)

    def _run(self, entry, direction):
        remaining = (entry.length - RECORD_HEADER) & U32
        at = 0
        while remaining:
            self._require(entry.body, at)
            if not self.executor.run(entry.body, at, direction, self.slots):
                return False
            step = self._step(Command(entry.body, at))
            at, remaining = at + step, (remaining - step) & U32
        return True

    @staticmethod
    def _require(body, at):
        """The command at `at` lies inside the body."""
        left = len(body) - at
        if left < PREFIX_BYTES:
            raise UnknownAccess
        command = Command(body, at)
        if left < reach(command):
            raise UnknownAccess

    @staticmethod
    def _step(command):
        step = STEPS.get((command.kind, command.form))
        if step is None:
            raise Unbounded if command.kind in REPEATED else UnknownAccess
        return step


assert len(FEATURES) == 43 and all(form in FIELDS for form in STEPS if form[0] != DELAY)

# SPDX-License-Identifier: MIT
"""The board's feature states: one row each."""

from __future__ import annotations

import contextlib
import importlib
import pathlib
import struct
from typing import Any, Dict, Iterable, Iterator, NamedTuple, Optional, Set, Tuple

from vynlib._native import INDEXED_GET, INDEXED_SET, PLAIN_GET, PLAIN_SET, WORD_GET

Entries = Dict[int, Dict[int, Set[int]]]  # by record type, by instance: the values

TABLE = pathlib.Path("/sys/firmware/acpi/tables/IADT")

_TABLE_LENGTH = struct.Struct("<4xI")
_RECORDS = 36
_RECORD_HEAD = struct.Struct("<BBBI")


class Row(NamedTuple):
    """A feature: how it is called here, its family of codes, and where it stands in tables and in the library."""

    name: str
    family: int
    record_type: int
    record_name: str  # in board files
    getter: Optional[str]
    setter: Optional[str]
    indexed: bool = False
    word: bool = False

    def prototypes(self) -> Dict[str, Tuple[Any, ...]]:
        getter = WORD_GET if self.word else INDEXED_GET if self.indexed else PLAIN_GET
        functions = {self.getter: getter, self.setter: INDEXED_SET if self.indexed else PLAIN_SET}
        return {name: arguments for name, arguments in functions.items() if name is not None}


ROWS = (
    Row("com-type", 0x02, 1, "ComType", "VynLibGetComType", "VynLibSetComType", indexed=True),
    Row("com-power", 0x1D, 30, "COMPowerState", "VynLibGetCOMPowerState", "VynLibSetCOMPowerState", indexed=True),
    Row("lvds-state", 0x06, 5, "LVDSState", "VynLibGetLVDSState", "VynLibSetLVDSState"),
    Row("lvds-type", 0x07, 6, "LVDSType", "VynLibGetLVDSType", "VynLibSetLVDSType"),
    Row("backlight", 0x19, 27, "Backlight", None, "VynLibBacklightCtrl"),
    Row("usb-power", 0x0C, 14, "UsbPwrState", "VynLibGetUsbPwrState", "VynLibSetUsbPwrState"),
    Row("bluetooth", 0x0D, 15, "BTState", "VynLibGetBTState", "VynLibSetBTState"),
    Row("wifi", 0x0E, 16, "WifiState", "VynLibGetWifiState", "VynLibSetWifiState"),
    Row("digital-io", 0x16, 24, "DigitalIOState", "VynLibGetDigitalIOState", "VynLibSetDigitalIOState", indexed=True),
    Row("dio-config", 0x20, 34, "DioConfig", "VynLibGetDioConfig", "VynLibSetDioConfig", indexed=True),
    Row("dio-enable", 0x21, 35, "DioEnPin", "VynLibGetDioEnPin", "VynLibSetDioEnPin"),
    Row("user-led", 0x1B, 28, "UserLEDState", "VynLibGetUserLEDState", "VynLibSetUserLEDState"),
    Row("user-led-color", 0x1F, 33, "UserLEDColor", "VynLibGetUserLEDColor", "VynLibSetUserLEDColor", indexed=True),
    Row("debug-led-color", 0x1E, 32, "DbgLedColor", "VynLibGetDbgLedColor", "VynLibSetDbgLedColor", indexed=True),
    Row("jgpio-power", 0x1C, 29, "JGPIOPowerState", "VynLibGetJGPIOPowerState", "VynLibSetJGPIOPowerState"),
    Row("tpm", 0x09, 8, "OnboardTPMState", "VynLibGetOnboardTPMState", "VynLibSetOnboardTPMState"),
    Row("otp", 0x0F, 17, "OTPState", "VynLibGetOTPState", "VynLibSetOTPState"),
    Row("me-descriptor", 0x0A, 10, "MEDescriptorState", "VynLibGetMEDescriptorState", "VynLibSetMEDescriptorState"),
    Row("intel-power", 0x12, 20, "IntelPwrSolutionState", "VynLibGetIntelPwrSolutionState",
        "VynLibSetIntelPwrSolutionState"),
    Row("at-mode", 0x11, 19, "ATModeState", "VynLibGetATModeState", None),
    Row("mfg-state", 0x08, 7, "MFGState", "VynLibGetMFGState", None),
    Row("pcie-bandwidth", 0x0B, 13, "PcieBandwidthMode", "VynLibGetPcieBandwidthMode", None),
    Row("tb-cio-plug", 0x13, 21, "TbCIOPlug", "VynLibDetectTbCIOPlug", None),
    Row("tb-frc-power", 0x14, 22, "TbFRCPowerState", "VynLibGetTbFRCPowerState", None),
    Row("board-version", 0x15, 23, "MBVersionState", "VynLibMBVersionState", None, word=True),
)


def prototypes() -> Dict[str, Tuple[Any, ...]]:
    return {name: arguments for row in ROWS for name, arguments in row.prototypes().items()}


# ---- which values the firmware lists ----


def _records(table: bytes) -> Iterator[Tuple[int, int, int]]:
    """(type, instance, value) of each record, as far as the library walks."""
    if len(table) < _RECORDS:
        return
    end = min(max(_TABLE_LENGTH.unpack_from(table)[0], _RECORDS), len(table))
    at = _RECORDS
    while at + _RECORD_HEAD.size <= end:
        kind, instance, value, length = _RECORD_HEAD.unpack_from(table, at)
        if length == 0 or length > end - at:
            return
        yield kind, instance, value
        at += length


def entries_of_table(table: bytes) -> Entries:
    """What a function description table (IADT) lists."""
    found: Entries = {}
    for kind, instance, value in _records(table):
        found.setdefault(kind, {}).setdefault(instance, set()).add(value)
    return found


def _toml_reader() -> Any:
    for name in ("tomllib", "tomli"):
        with contextlib.suppress(ImportError):
            return importlib.import_module(name)
    return None


def _numbers(value: Any) -> Iterable[int]:
    """A number, a list of them, a range "0..7", or numbers by names."""
    if isinstance(value, dict):
        return (int(number) for number in value.values())
    if isinstance(value, str):
        first, _, last = value.partition("..")
        return range(int(first, 0), int(last or first, 0) + 1)
    return value if isinstance(value, (list, tuple)) else (value,)


def entries_of_board(path: str) -> Entries:
    """What a board description lists; nothing where Python has no reader of TOML (before 3.11, without tomli)."""
    reader = _toml_reader()
    if reader is None:
        return {}
    with open(path, "rb") as file:
        board = reader.load(file)
    fields = [*board.get("field", ()), *(field for group in board.get("fields", ()) for field in group.get("each", ()))]
    types = {row.record_name: row.record_type for row in ROWS}
    found: Entries = {}
    for entry in (*board.get("feature", ()), *fields):
        instances = found.setdefault(types.get(entry.get("function"), entry.get("type", 0)), {})
        for instance in _numbers(entry.get("index", 0)):
            values_of = entry.get("values", (0, 1)) if entry in fields else entry.get("value", 0)
            instances.setdefault(instance, set()).update(_numbers(values_of))
    return found


def entries(simulate: Optional[str]) -> Entries:
    """What the firmware of the board lists; nothing where its table cannot be read."""
    if simulate is not None:
        return entries_of_board(simulate)
    with contextlib.suppress(OSError):
        return entries_of_table(TABLE.read_bytes())
    return {}


def values(found: Entries, row: Row, instance: int) -> Tuple[int, ...]:
    """The values of one instance, ascending. Of a version, whose entries are bits, none."""
    if row.word:
        return ()
    by_instance = found.get(row.record_type, {})
    if row.indexed:
        return tuple(sorted(by_instance.get(instance, ())))
    return tuple(sorted(set().union(*by_instance.values())))

# SPDX-License-Identifier: MIT
"""Sensors, features and fans of a board."""

from __future__ import annotations

import ctypes
from typing import Any, Dict, Generic, Iterator, List, Mapping, NamedTuple, Tuple, TypeVar

from vynlib import _features
from vynlib._features import Row
from vynlib._native import PERFORM, Session, encoded
from vynlib.errors import Error, NotFound, error_for, title_of

_INSTANCES = 256
_NO_SUCH_INSTANCE = 0x04
_FAN_MODES = 3
_ASK_FOR_MODE = 255
_BLOCK_BYTES = 256
_OTHER_COUNT = 0x1805

Part = TypeVar("Part")


def byte(value: int, what: str) -> int:
    """The value, when it fits where the library has eight bits."""
    if not 0 <= value <= 0xFF:
        raise ValueError(f"{what} must be 0 to 255, not {value}")
    return value


class Readings(Mapping[str, float]):
    """The sensors of one quantity by name, in firmware order. Each look-up reads the hardware.

    A name that the board does not have raises NotFound, which is a KeyError; a sensor that cannot be read raises Error.
    """

    def __init__(self, session: Session, unit: str, names: str, reader: str, number: Any) -> None:
        self.unit = unit
        self._session = session
        self._names = session.names(names)
        self._reader = reader
        self._number = number

    def __getitem__(self, name: str) -> float:
        return float(self._session.read(self._reader, self._number, encoded(name)))

    def __iter__(self) -> Iterator[str]:
        return iter(self._names)

    def __len__(self) -> int:
        return len(self._names)

    def __contains__(self, name: object) -> bool:
        return name in self._names

    def __repr__(self) -> str:
        return f"<vynlib.Readings {self._names} in {self.unit}>"


class Parts(Mapping[str, Part], Generic[Part]):
    """Things of a board by name. A name that it does not have raises NotFound, which is a KeyError."""

    def __init__(self, what: str, parts: Dict[str, Part]) -> None:
        self._what = what
        self._parts = parts

    def __getitem__(self, name: str) -> Part:
        try:
            return self._parts[name]
        except KeyError:
            raise NotFound(0, f"the board has no {self._what} '{name}'") from None

    def __iter__(self) -> Iterator[str]:
        return iter(self._parts)

    def __len__(self) -> int:
        return len(self._parts)

    def __repr__(self) -> str:
        return f"<vynlib.Parts {list(self._parts)}>"


class Feature:
    """A state that the firmware describes; what its values mean is the firmware's business.

    A feature without instances has the one of number 0.
    """

    def __init__(self, session: Session, row: Row, entries: _features.Entries) -> None:
        self._session = session
        self._row = row
        self._entries = entries

    @property
    def name(self) -> str:
        return self._row.name

    @property
    def title(self) -> str:
        """For people: "COM port type"."""
        return title_of(self._row.family)

    @property
    def readable(self) -> bool:
        return self._row.getter is not None

    @property
    def settable(self) -> bool:
        return self._row.setter is not None

    @property
    def indexed(self) -> bool:
        return self._row.indexed

    def get(self, instance: int = 0) -> int:
        """The present state: one byte, of the board version two."""
        if self._row.getter is None:
            raise Error(0, f"{self.name} cannot be read")
        number = ctypes.c_uint16 if self._row.word else ctypes.c_uint8
        return int(self._session.read(self._row.getter, number, *self._instance(instance)))

    def set(self, value: int, instance: int = 0) -> None:
        if self._row.setter is None:
            raise Error(0, f"{self.name} cannot be set")
        self._session.call(self._row.setter, *self._instance(instance), byte(value, "the value"), PERFORM)

    @property
    def instances(self) -> Tuple[int, ...]:
        """The numbers of the instances that the board has; found by asking for all 256."""
        if not self.indexed:
            return (0,)
        missing = self._row.family << 8 | _NO_SUCH_INSTANCE
        return tuple(number for number in range(_INSTANCES) if self._code_of(number) != missing)

    def values(self, instance: int = 0) -> Tuple[int, ...]:
        """The values that the firmware lists for an instance, ascending; empty where they are not known.

        On hardware they come from the kernel's copy of the firmware's table, which only root may read. Those of a
        simulated board take Python 3.11, or the package tomli.
        """
        return _features.values(self._entries, self._row, instance)

    def offered(self) -> bool:
        """Whether the board has it. Touches no hardware."""
        if self._row.getter is not None:
            return self._session.offers(self._row.getter, *self._instance(0), None)
        assert self._row.setter is not None
        return self._session.offers(self._row.setter, *self._instance(0), 0)

    def _instance(self, instance: int) -> Tuple[int, ...]:
        return (byte(instance, "the instance"),) if self.indexed else ()

    def _code_of(self, instance: int) -> int:
        state = ctypes.c_uint8()
        return self._session.codes((self._row.getter, instance, ctypes.byref(state), PERFORM))

    def __repr__(self) -> str:
        return f"<vynlib.Feature {self.name}>"


class FanSetting(NamedTuple):
    """What a fan is set to; the meaning of modes and parameters is the firmware's."""

    mode: int
    parameters: Tuple[int, ...]


class Fan:
    """A fan that can be controlled."""

    def __init__(self, session: Session, key: str) -> None:
        self._session = session
        self._key = encoded(key)
        self.name = key.strip()

    @property
    def modes(self) -> Tuple[int, ...]:
        """The modes that it has. Touches no hardware."""
        mask = ctypes.c_uint8()
        self._session.call("VynLibGetFANModeSupport", self._key, ctypes.byref(mask))
        return tuple(mode for mode in range(_FAN_MODES) if mask.value >> mode & 1)

    def get(self) -> FanSetting:
        block = (ctypes.c_uint8 * _BLOCK_BYTES)()
        count = ctypes.c_uint8(_ASK_FOR_MODE)
        ask = ("VynLibGetFANConfig", self._key, block, ctypes.byref(count), PERFORM)
        # The first call tells the mode and its count, the second the parameters.
        code = self._session.codes(ask, ask)
        if code:
            raise error_for(code)
        return FanSetting(block[0], tuple(block[1:max(count.value, 1)]))

    def set(self, mode: int, *parameters: int) -> None:
        if len(parameters) >= _ASK_FOR_MODE:
            raise error_for(_OTHER_COUNT)
        numbers = [byte(mode, "the mode"), *(byte(parameter, "a parameter") for parameter in parameters)]
        block = (ctypes.c_uint8 * len(numbers))(*numbers)
        self._session.call("VynLibSetFANConfig", self._key, block, len(numbers), PERFORM)

    def __repr__(self) -> str:
        return f"<vynlib.Fan {self.name}>"


def fans(session: Session) -> Dict[str, Fan]:
    """Those that can be controlled: entries that only identify the controller's chip contain "Id" and have no modes."""
    found: Dict[str, Fan] = {}
    for key in session.names("VynLibGetFanConfigNames"):
        fan = Fan(session, key)
        if "Id" not in key or session.codes(("VynLibGetFANModeSupport", encoded(key), ctypes.byref(ctypes.c_uint8()))) == 0:
            found[fan.name] = fan
    return found


def features(session: Session, entries: _features.Entries) -> Dict[str, Feature]:
    """Those that the board offers."""
    everything: List[Feature] = [Feature(session, row, entries) for row in _features.ROWS]
    return {feature.name: feature for feature in everything if feature.offered()}



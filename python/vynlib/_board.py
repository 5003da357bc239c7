# SPDX-License-Identifier: MIT
"""The board: the library, started and ended."""

from __future__ import annotations

import ctypes
import os
from types import TracebackType
from typing import List, Mapping, Optional, Type, Union

from vynlib import _features, _parts
from vynlib._native import MODEL_PREFIX, Session, lock_file_for
from vynlib._parts import Fan, Feature, Parts, Readings
from vynlib._watchdog import Watchdog


class Board:
    """The board of this machine, or a simulated one. One at a time, for all threads of the program.

    `simulate` names a board description (docs/board-files.md) that is worked on instead, without root and without
    hardware; with `live` its readings move, and the file `state` keeps what is changed on it. On hardware the board takes turns with other programs
    (docs/sharing.md), and waits `wait` seconds at most for each; `lock_file` names another lock than theirs, `lock`
    false goes without.

    >>> import vynlib
    >>> with vynlib.Board(simulate="boards/reference.toml") as board:
    ...     print(board.model)
    ...     print(round(board.voltages["+12V"], 2), board.voltages.unit)
    ...     board.features["wifi"].set(0)
    ...     print(board.features["wifi"].get())
    VYN-R900 Reference
    11.99 V
    0
    """

    def __init__(self, simulate: Union[str, "os.PathLike[str]", None] = None, *, live: bool = False,
                 state: Union[str, "os.PathLike[str]"] = "", lock: bool = True, lock_file: Optional[str] = None,
                 wait: float = 10.0) -> None:
        path = os.fspath(simulate) if simulate is not None else None
        simulation = {} if path is None else {
            "VYNLIB_BOARD": path, "VYNLIB_LIVE": "1" if live else "0", "VYNLIB_STATE": os.fspath(state)}
        self._session = session = Session(path, simulation, lock_file_for(path, lock, lock_file), wait,
                                          _features.prototypes())
        try:
            self._voltages = Readings(session, "V", "VynLibGetVoltageNames", "VynLibGetVoltage", ctypes.c_float)
            self._temperatures = Readings(session, "C", "VynLibGetTemperatureNames", "VynLibGetTemperature",
                                          ctypes.c_float)
            self._fan_speeds = Readings(session, "rpm", "VynLibGetFanSpeedNames", "VynLibGetFanSpeed", ctypes.c_uint16)
            self._currents = Readings(session, "A", "VynLibGetCurrentNames", "VynLibGetCurrent", ctypes.c_float)
            self._features = Parts("feature", _parts.features(session, _features.entries(path)))
            self._fans = Parts("fan", _parts.fans(session))
        except BaseException:
            session.close()
            raise

    def close(self) -> None:
        """Ends the library. What came from this board raises Closed from now on."""
        self._session.close()

    def __enter__(self) -> "Board":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], exception: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        self.close()

    @property
    def model(self) -> str:
        """As the firmware has it; empty when it has none."""
        for line in self._session.messages:
            if line.startswith(MODEL_PREFIX):
                return line[len(MODEL_PREFIX):].strip()
        return ""

    @property
    def messages(self) -> List[str]:
        """What else the library printed when it started."""
        return [line for line in self._session.messages if not line.startswith(MODEL_PREFIX)]

    @property
    def voltages(self) -> Readings:
        """Volts by the sensor's name."""
        return self._voltages

    @property
    def temperatures(self) -> Readings:
        """Degrees Celsius."""
        return self._temperatures

    @property
    def fan_speeds(self) -> Readings:
        """Revolutions per minute."""
        return self._fan_speeds

    @property
    def currents(self) -> Readings:
        """Amperes on most boards."""
        return self._currents

    @property
    def features(self) -> Mapping[str, Feature]:
        """The features that the board offers, by the names that vynctl has for them.

        >>> import vynlib
        >>> with vynlib.Board(simulate="boards/reference.toml") as board:
        ...     port = board.features["com-type"]
        ...     print(port.title, port.instances, port.get(2))
        COM port type (1, 2, 3, 4) 2
        """
        return self._features

    @property
    def fans(self) -> Mapping[str, Fan]:
        """The fans that can be controlled.

        >>> import vynlib
        >>> with vynlib.Board(simulate="boards/reference.toml") as board:
        ...     fan = board.fans["CPU Fan"]
        ...     print(fan.modes, fan.get())
        ...     fan.set(1, 128)
        ...     print(fan.get())
        (0, 1, 2) FanSetting(mode=2, parameters=(40, 80))
        FanSetting(mode=1, parameters=(128,))
        """
        return self._fans

    @property
    def watchdog(self) -> Watchdog:
        return Watchdog(self._session)

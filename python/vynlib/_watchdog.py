# SPDX-License-Identifier: MIT
"""The board's watchdog, and the thread that feeds it."""

from __future__ import annotations

import ctypes
import threading
import time
from types import TracebackType
from typing import Callable, Optional, Type

from vynlib._native import PERFORM, Session
from vynlib._parts import byte
from vynlib.errors import Error

_MINUTES_MODE = 1
_SECONDS_PER_MINUTE = 60
_SHARE = 3  # feedings per interval, and the share of a period that is spent on waiting for the hardware
_RETRIES = 4  # per period


class Watchdog:
    """The unit of the interval (seconds on most boards, minutes in mode 1) and the modes are the firmware's."""

    def __init__(self, session: Session) -> None:
        self._session = session

    @property
    def offered(self) -> bool:
        """Whether the board has one. Touches no hardware."""
        return self._session.offers("VynLibWDTEnable", 0, 0)

    def start(self, interval: int, mode: int = 0) -> None:
        """Raises Error too when the watchdog is active but does not count."""
        self._session.call("VynLibWDTEnable", byte(interval, "the interval"), byte(mode, "the mode"), PERFORM)

    def feed(self, interval: int) -> None:
        """Writes the interval again."""
        self._session.call("VynLibWDTSetInterval", byte(interval, "the interval"), PERFORM)

    def stop(self) -> None:
        self._session.call("VynLibWDTDisable", PERFORM)

    @property
    def interval(self) -> int:
        """What is left of it, on boards that count down in the register."""
        return int(self._session.read("VynLibWDTGetInterval", ctypes.c_uint32))

    @property
    def mode(self) -> int:
        return int(self._session.read("VynLibWDTGetCountMode", ctypes.c_uint8))

    def feeding(self, interval: int, *, every: Optional[float] = None, mode: int = 0, stop: bool = True,
                healthy: Callable[[], bool] = lambda: True, unit: Optional[float] = None) -> "Feeding":
        """A block in which the watchdog counts and a thread feeds it.

        `every` is the period in seconds, a third of the interval unless it is given. The watchdog is stopped at the end
        of the block, whether that comes with an exception or without; with `stop` false it goes on counting and resets
        the board. When the whole process ends or hangs, nobody feeds, and the board is reset. So it is as soon as
        `healthy`, which is called before each feeding, returns false or raises. `unit` is that of the interval in
        seconds, where a board has another than those above.

        >>> import vynlib
        >>> with vynlib.Board(simulate="boards/reference.toml") as board:
        ...     with board.watchdog.feeding(60, every=20) as feeding:
        ...         print(board.watchdog.interval, feeding.error)
        ...     print(board.watchdog.interval)
        60 None
        0
        """
        seconds = byte(interval, "the interval") * (unit or (_SECONDS_PER_MINUTE if mode == _MINUTES_MODE else 1))
        period = seconds / _SHARE if every is None else every
        if not 0 < period < seconds:
            raise ValueError(f"the period of {period:g} s must be shorter than the interval of {seconds:g} s")
        return Feeding(self, self._session, interval, mode, seconds, period, stop, healthy)


class Feeding:
    """Runs while its block does. `error` tells why feeding ended before the block did."""

    def __init__(self, watchdog: Watchdog, session: Session, interval: int, mode: int, seconds: float, period: float,
                 stop: bool, healthy: Callable[[], bool]) -> None:
        self.error: Optional[Exception] = None
        self._watchdog = watchdog
        self._session = session
        self._interval = interval
        self._mode = mode
        self._seconds = seconds
        self._period = period
        self._stop = stop
        self._healthy = healthy
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._run, name="vynlib-watchdog", daemon=True)

    def __enter__(self) -> "Feeding":
        self._watchdog.start(self._interval, self._mode)
        self._thread.start()
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], exception: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        self._ended.set()
        self._thread.join()
        if self._stop:
            self._watchdog.stop()
        if self.error is not None and exception is None:
            raise self.error

    def _run(self) -> None:
        try:
            while not self._ended.wait(self._period):
                if not self._healthy():
                    raise Error(0, "the system is not healthy")
                self._feed()
        except Exception as error:  # whatever it is, the block is to know
            self.error = error

    def _feed(self) -> None:
        """Feeds, and tries again within the interval when that fails. Nobody else's turn makes it late."""
        end = time.monotonic() + self._seconds - self._period
        while True:
            try:
                self._session.call("VynLibWDTSetInterval", self._interval, PERFORM, wait=self._period / _SHARE,
                                   insist=True)
                return
            except Error:
                if time.monotonic() >= end or self._ended.wait(self._period / _RETRIES):
                    raise

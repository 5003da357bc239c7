# SPDX-License-Identifier: MIT
"""Sensors, features, fans and the watchdog of an industrial board, through the VynLib library.

>>> import vynlib
>>> with vynlib.Board(simulate="boards/reference.toml") as board:
...     for name in board.temperatures:
...         print(f"{name}: {board.temperatures[name]:.1f}")
System: 37.5
Super I/O: 41.0
CPU: 48.0
Memory: 37.0

What goes wrong raises vynlib.Error, which has the library's code and its words:

>>> with vynlib.Board(simulate="boards/reference.toml") as board:
...     board.features["wifi"].set(7)
Traceback (most recent call last):
...
vynlib.errors.Error: Wi-Fi: no entry of the board has this value or index (code 0xE04)

A board may be used by any thread; its calls take turns. What the library prints stays out of the program's output.
"""

from vynlib._board import Board
from vynlib._parts import Fan, FanSetting, Feature, Parts, Readings
from vynlib._watchdog import Feeding, Watchdog
from vynlib.errors import Closed, Error, HardwareBusy, NotFound, NotOffered, NotStarted

__version__ = "1.0.0"

__all__ = ["Board", "Closed", "Error", "Fan", "FanSetting", "Feature", "Feeding", "HardwareBusy", "NotFound",
           "NotOffered", "NotStarted", "Parts", "Readings", "Watchdog"]

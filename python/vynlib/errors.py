# SPDX-License-Identifier: MIT
"""What goes wrong, with the library's code and words."""

from __future__ import annotations

from vynlib._error_text import FAMILIES, TEXTS

NOT_INITIALISED = 1
_FIRST_FAMILY_CODE = 0x100
# No sensor, fan, identifying entry or count mode of that name or number.
_NOT_FOUND = frozenset((16, 0x305, 0x405, 0x506, 0x1A05, 0x170A, 0x1806))


class Error(Exception):
    """Something was not done.

    `code` is the library's (docs/error-codes.md); 0 when the library was not even asked. `words` say why.
    """

    def __init__(self, code: int, words: str) -> None:
        super().__init__(code, words)
        self.code = code
        self.words = words

    def __str__(self) -> str:
        return f"{self.words} (code 0x{self.code:X})" if self.code else self.words


class NotStarted(Error):
    """The library does not start, or cannot be loaded."""


class Closed(Error):
    """The board was closed before."""

    def __init__(self) -> None:
        super().__init__(NOT_INITIALISED, "the board is closed")

    def __reduce__(self) -> "tuple[type[Closed], tuple[()]]":
        return Closed, ()


class NotOffered(Error):
    """The board does not have this."""


class NotFound(Error, KeyError):
    """The board has nothing of this name."""


class HardwareBusy(Error, TimeoutError):
    """Another program has had the hardware for longer than `wait`."""


def words_for(code: int) -> str:
    """
    >>> words_for(0xE04)
    'Wi-Fi: no entry of the board has this value or index'
    """
    return TEXTS.get(code, f"unknown code 0x{code:X}")


def title_of(family: int) -> str:
    """What a family of codes is about, such as "Wi-Fi"."""
    return FAMILIES[family]


def error_for(code: int) -> Error:
    """The exception that belongs to a code of the library."""
    kind = Error
    if code in _NOT_FOUND:
        kind = NotFound
    elif code >= _FIRST_FAMILY_CODE and code & 0xFF == 0:
        kind = NotOffered
    return kind(code, words_for(code))

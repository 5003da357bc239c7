# SPDX-License-Identifier: MIT
"""The library itself: loaded, started once, and called by one thread at a time."""

from __future__ import annotations

import contextlib
import ctypes
import os
import signal
import threading
import weakref
from typing import Any, Callable, Dict, Iterator, List, Optional, Tuple

from vynlib._lock import PATH, MachineLock
from vynlib.errors import Closed, Error, HardwareBusy, NotStarted, error_for, words_for

QUERY = 0
PERFORM = 2
NAME_BYTES = 20

_REAL = "libvynlib.so.1"
_SIMULATED = "libvynlib-sim.so.1"
MODEL_PREFIX = "ModelName::"
_NUL_SAFE = "latin-1"  # names are the firmware's bytes

_byte = ctypes.c_uint8
_byte_at = ctypes.POINTER(ctypes.c_uint8)
_float_at = ctypes.POINTER(ctypes.c_float)

# The arguments by shape; functions of features are added by their rows.
PLAIN_GET = (_byte_at, _byte)
PLAIN_SET = (_byte, _byte)
INDEXED_GET = (_byte, _byte_at, _byte)
INDEXED_SET = (_byte, _byte, _byte)
WORD_GET = (ctypes.POINTER(ctypes.c_uint16), _byte)
_NAMES = (ctypes.c_void_p, _byte_at, _byte)
_PROTOTYPES: Dict[str, Tuple[Any, ...]] = {
    "VynLibGetVoltage": (ctypes.c_char_p, _float_at, _byte),
    "VynLibGetTemperature": (ctypes.c_char_p, _float_at, _byte),
    "VynLibGetFanSpeed": (ctypes.c_char_p, ctypes.POINTER(ctypes.c_uint16), _byte),
    "VynLibGetCurrent": (ctypes.c_char_p, _float_at, _byte),
    "VynLibGetVoltageNames": _NAMES,
    "VynLibGetTemperatureNames": _NAMES,
    "VynLibGetFanSpeedNames": _NAMES,
    "VynLibGetCurrentNames": _NAMES,
    "VynLibGetFanConfigNames": _NAMES,
    "VynLibGetFANModeSupport": (ctypes.c_char_p, _byte_at),
    "VynLibGetFANConfig": (ctypes.c_char_p, _byte_at, _byte_at, _byte),
    "VynLibSetFANConfig": (ctypes.c_char_p, _byte_at, _byte, _byte),
    "VynLibWDTEnable": (_byte, _byte, _byte),
    "VynLibWDTDisable": (_byte,),
    "VynLibWDTSetInterval": (_byte, _byte),
    "VynLibWDTGetInterval": (ctypes.POINTER(ctypes.c_uint32), _byte),
    "VynLibWDTGetCountMode": (_byte_at, _byte),
}
# Their outcome is the last error alone: one returns nothing, the other succeeds when the watchdog does not count.
_BY_LAST_ERROR = frozenset(("VynLibGetFANModeSupport", "VynLibWDTEnable"))

# Signals that end the program in a call would leave the hardware in the middle of it. Faults do so in any case.
_DEFERRED = signal.valid_signals() - {
    signal.SIGSEGV, signal.SIGBUS, signal.SIGFPE, signal.SIGILL, signal.SIGTRAP, signal.SIGSYS, signal.SIGABRT}

# The library is one for the whole process: who calls it, or looks at its error code, holds this.
_calls = threading.RLock()
_session_is_open = False


@contextlib.contextmanager
def _signals_deferred() -> Iterator[None]:
    former = signal.pthread_sigmask(signal.SIG_BLOCK, _DEFERRED)
    try:
        yield
    finally:
        signal.pthread_sigmask(signal.SIG_SETMASK, former)


class _Output:
    """What the library prints, through the C library's streams. Descriptors and Python's own streams are left alone."""

    def __init__(self) -> None:
        self._libc = ctypes.CDLL(None)
        self._libc.open_memstream.restype = ctypes.c_void_p
        self._libc.open_memstream.argtypes = [ctypes.c_void_p, ctypes.c_void_p]
        self._libc.fclose.argtypes = [ctypes.c_void_p]
        self._libc.free.argtypes = [ctypes.c_void_p]

    @contextlib.contextmanager
    def diverted(self, stream: str) -> Iterator[List[str]]:
        """The lines that were printed in the block are in the list at its end."""
        text, size = ctypes.c_void_p(), ctypes.c_size_t()
        file = self._libc.open_memstream(ctypes.byref(text), ctypes.byref(size))
        if not file:
            raise MemoryError
        place = ctypes.c_void_p.in_dll(self._libc, stream)
        former = place.value
        lines: List[str] = []
        try:
            place.value = file
            yield lines
        finally:
            place.value = former
            self._libc.fclose(file)
            lines += ctypes.string_at(text, size.value).decode(_NUL_SAFE).splitlines()
            self._libc.free(text)


@contextlib.contextmanager
def _environment(variables: Dict[str, str]) -> Iterator[None]:
    former = {name: os.environ.get(name) for name in variables}
    os.environ.update(variables)
    try:
        yield
    finally:
        for name, value in former.items():
            if value is None:
                del os.environ[name]
            else:
                os.environ[name] = value


def _load(name: str, prototypes: Dict[str, Tuple[Any, ...]]) -> ctypes.CDLL:
    try:
        library = ctypes.CDLL(name)
    except OSError as error:
        raise NotStarted(0, f"cannot load the library: {error}; after installing it, run ldconfig") from error
    for function, arguments in {**_PROTOTYPES, **prototypes}.items():
        getattr(library, function).argtypes = arguments
    library.VynLibDllGetLastError.restype = ctypes.c_uint64
    return library


def _unload(library: ctypes.CDLL) -> None:
    ctypes.CDLL(None).dlclose(ctypes.c_void_p(library._handle))


def _end(library: ctypes.CDLL, unload: bool) -> None:
    global _session_is_open
    with _calls, _signals_deferred():
        library.VynLibDllUnInit()
        _session_is_open = False
        if unload:
            _unload(library)


class Session:
    """The started library. A board and all that comes from it share it; it ends with the last of them, or by close()."""

    def __init__(self, simulate: Optional[str], simulation: Dict[str, str], lock_file: Optional[str], wait: float,
                 prototypes: Dict[str, Tuple[Any, ...]]) -> None:
        self._wait = wait
        self._output = _Output()
        self._lock = MachineLock(lock_file) if lock_file else None
        self._library = _load(_SIMULATED if simulate is not None else _REAL, prototypes)
        self.messages: List[str] = []
        # A simulated board lives in its library, which is unloaded so that the next board is fresh.
        unload = simulate is not None
        try:
            with self._turn(wait), _environment(simulation):
                self._start()
        except BaseException:
            if unload:
                _unload(self._library)
            raise
        self._finish = weakref.finalize(self, _end, self._library, unload)

    def _start(self) -> None:
        global _session_is_open
        if _session_is_open:
            raise Error(0, "this program has a board open already")
        with self._output.diverted("stdout") as self.messages, self._output.diverted("stderr") as mistakes:
            started = self._library.VynLibDllInit()
        if not started:
            code = self._library.VynLibDllGetLastError()
            why = "; ".join(mistakes) or f"{words_for(code)}; 'vynctl doctor' tells which"
            raise NotStarted(code, f"the library does not start: {why}")
        _session_is_open = True

    @contextlib.contextmanager
    def _turn(self, wait: float, insist: bool = False) -> Iterator[None]:
        with contextlib.ExitStack() as stack:
            if self._lock:
                try:
                    stack.enter_context(self._lock.held(wait))
                except HardwareBusy:
                    if not insist:
                        raise
            stack.enter_context(_calls)
            stack.enter_context(_signals_deferred())
            yield

    def close(self) -> None:
        self._finish()

    @property
    def closed(self) -> bool:
        return not self._finish.alive

    def codes(self, *calls: Tuple[Any, ...], wait: Optional[float] = None, insist: bool = False) -> int:
        """Calls functions, (name, arguments...), one after another until one fails: the code that they came to.

        With `insist` they are called even when nobody gives the hardware back within `wait`.
        """
        with self._turn(self._wait if wait is None else wait, insist):
            if self.closed:
                raise Closed
            with self._output.diverted("stdout"):
                for name, *arguments in calls:
                    done = getattr(self._library, name)(*arguments)
                    code: int = self._library.VynLibDllGetLastError()
                    if code and (not done or name in _BY_LAST_ERROR):
                        return code
        return 0

    def call(self, name: str, *arguments: Any, wait: Optional[float] = None, insist: bool = False) -> None:
        """Calls a function; raises what belongs to its code."""
        code = self.codes((name, *arguments), wait=wait, insist=insist)
        if code:
            raise error_for(code)

    def read(self, name: str, result: Callable[[], Any], *arguments: Any) -> Any:
        """Calls a function whose last arguments are a place of the type `result` and the selector: the value stored."""
        place = result()
        self.call(name, *arguments, ctypes.byref(place), PERFORM)
        return place.value

    def offers(self, name: str, *arguments: Any) -> bool:
        """Whether a function answers a query with yes. Touches no hardware."""
        return self.codes((name, *arguments, QUERY)) == 0

    def names(self, name: str) -> List[str]:
        """What a names function lists; empty where the board has none."""
        count = ctypes.c_uint8()
        code = self.codes((name, None, ctypes.byref(count), PERFORM))
        if code:
            if code & 0xFF == 0:
                return []
            raise error_for(code)
        buffers = [ctypes.create_string_buffer(NAME_BYTES) for _ in range(count.value)]
        pointers = (ctypes.c_void_p * len(buffers))(*(ctypes.addressof(buffer) for buffer in buffers))
        if buffers:
            self.call(name, pointers, ctypes.byref(count), PERFORM)
        return [buffer.value.decode(_NUL_SAFE) for buffer in buffers]


def lock_file_for(simulate: Optional[str], lock: bool, lock_file: Optional[str]) -> Optional[str]:
    """The lock that a board uses: that of all programs for the real hardware, none for a simulated board."""
    if not lock:
        return None
    return lock_file or (PATH if simulate is None else None)


def encoded(name: str) -> bytes:
    """A name as the library has it."""
    return name.encode(_NUL_SAFE, "replace")

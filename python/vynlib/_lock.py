# SPDX-License-Identifier: MIT
"""Turns at the hardware among all programs, as include/vynlib/lock.h has them."""

from __future__ import annotations

import contextlib
import fcntl
import os
import stat
import struct
import threading
import time
import weakref
from typing import Callable, Iterator, Optional

from vynlib.errors import Error, HardwareBusy

PATH = "/run/lock/vynlib.lock"

_TRY_SECONDS = 0.001
_NAME_BYTES = 15
_LINE_BYTES = 47
_FLAGS = os.O_RDWR | os.O_CLOEXEC | os.O_NOFOLLOW | os.O_NOCTTY | os.O_NONBLOCK
# struct flock of the kernel: type, whence, start, length, pid.
_FLOCK = "hhqqi4x"


def _open_file(path: str) -> int:
    """An open that may create meets the kernel's guard of folders that all can write, so the first one does not."""
    for _ in range(3):
        try:
            return os.open(path, _FLAGS)
        except FileNotFoundError:
            pass
        try:
            descriptor = os.open(path, _FLAGS | os.O_CREAT | os.O_EXCL, 0o660)
        except FileExistsError:
            continue
        with contextlib.suppress(OSError):
            os.fchmod(descriptor, 0o660)
        return descriptor
    raise FileNotFoundError(path)


def _is_safe(descriptor: int) -> bool:
    status = os.fstat(descriptor)
    return stat.S_ISREG(status.st_mode) and status.st_nlink == 1 and status.st_uid in (0, os.geteuid())


def _own_name() -> bytes:
    with contextlib.suppress(OSError), open("/proc/self/comm", "rb") as file:
        return file.read().strip()[:_NAME_BYTES]
    return b""


class MachineLock:
    """The lock file, open. One for all threads of a process."""

    def __init__(self, path: str) -> None:
        self._turn = threading.Lock()
        try:
            self._descriptor = _open_file(path)
        except OSError as error:
            raise Error(0, f"cannot lock {path}: {error.strerror}") from error
        weakref.finalize(self, os.close, self._descriptor)
        if not _is_safe(self._descriptor):
            raise Error(0, f"cannot lock {path}: it must be a regular file of root or of this user")

    @contextlib.contextmanager
    def held(self, seconds: float) -> Iterator[None]:
        """The hardware is this thread's in the block, for which it waits `seconds` at most. Raises HardwareBusy."""
        end = time.monotonic() + seconds
        if not self._turn.acquire(timeout=max(seconds, 0)):
            raise self._busy(seconds)
        try:
            self._take_file(end, seconds)
            try:
                self._enter(b"%d %s\n" % (os.getpid(), _own_name()))
                yield
            finally:
                self._enter(b"")
                fcntl.flock(self._descriptor, fcntl.LOCK_UN)
        finally:
            self._turn.release()

    def _take_file(self, end: float, seconds: float) -> None:
        # Whoever has the first byte is next, so that nobody who takes the lock again and again keeps others out.
        self._until(lambda: self._queue(fcntl.F_WRLCK), end, seconds)
        try:
            self._until(lambda: fcntl.flock(self._descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB), end, seconds)
        finally:
            self._queue(fcntl.F_UNLCK)

    def _until(self, attempt: Callable[[], object], end: float, seconds: float) -> None:
        while True:
            try:
                attempt()
                return
            except (BlockingIOError, PermissionError):
                if time.monotonic() >= end:
                    raise self._busy(seconds) from None
            time.sleep(_TRY_SECONDS)

    def _queue(self, kind: int) -> None:
        fcntl.fcntl(self._descriptor, fcntl.F_OFD_SETLK, struct.pack(_FLOCK, kind, os.SEEK_SET, 0, 1, 0))

    def _enter(self, line: bytes) -> None:
        """Who has the lock is for people only: that it cannot be written does no harm."""
        with contextlib.suppress(OSError):
            os.pwrite(self._descriptor, line, 0)
            os.ftruncate(self._descriptor, len(line))

    def _busy(self, seconds: float) -> HardwareBusy:
        return HardwareBusy(0, f"{self._holder() or 'another program'} has had the hardware for {seconds:g} s")

    def _holder(self) -> Optional[str]:
        pid, _, name = os.pread(self._descriptor, _LINE_BYTES, 0).decode("latin-1").strip().partition(" ")
        return f"{name} (pid {pid})" if pid.isdigit() else None

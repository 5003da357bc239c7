# SPDX-License-Identifier: MIT
"""Turns with other programs, by the lock of include/vynlib/lock.h."""
import os
import signal
import stat
import subprocess
import time

import pytest
from conftest import REFERENCE

import vynlib


@pytest.fixture
def path(tmp_path):
    return str(tmp_path / "lock")


def open_board(path, wait):
    return vynlib.Board(simulate=REFERENCE, lock_file=path, wait=wait)


def is_free(path):
    return subprocess.run(["flock", "--nonblock", path, "true"], check=False).returncode == 0


class Holder:
    """Another program, which has the lock for as long as the block lasts."""

    def __init__(self, path):
        self.path = path

    def __enter__(self):
        self.process = subprocess.Popen(["flock", self.path, "sh", "-c", "echo; cat"], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE)
        self.process.stdout.readline()

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.stdout.read()
        self.process.stdout.close()
        self.process.wait()


def test_a_call_waits_no_longer_than_it_should(path):
    with open_board(path, 0.05) as board:
        with Holder(path), pytest.raises(vynlib.HardwareBusy, match="another program has had the hardware for 0.05 s"):
            board.voltages["+12V"]
        assert board.voltages["+12V"] > 0


def test_the_start_takes_its_turn_too(path):
    with Holder(path), pytest.raises(TimeoutError):
        open_board(path, 0)


def test_the_holder_is_named(path):
    with open_board(path, 0) as board, Holder(path):
        with open(path, "w") as file:
            file.write("1234 somebody\n")
        with pytest.raises(vynlib.HardwareBusy, match=r"somebody \(pid 1234\) has had the hardware for 0 s"):
            board.voltages["+12V"]


def test_the_hardware_is_given_back_after_each_call(path):
    with open_board(path, 1) as board:
        board.voltages["+12V"]
        assert is_free(path)
        with pytest.raises(vynlib.NotFound):
            board.voltages["x"]
        assert is_free(path)
    assert os.path.getsize(path) == 0


def test_during_a_call_others_wait_and_see_who_has_it(path, monkeypatch):
    seen = []
    with open_board(path, 1) as board:
        session = board.watchdog._session
        with session._turn(1):
            seen.append(is_free(path))
            with open(path) as file:
                seen.append(file.read().split(maxsplit=1)[0])
            seen.append(signal.SIGTERM in signal.pthread_sigmask(signal.SIG_BLOCK, ()))
            seen.append(signal.SIGSEGV in signal.pthread_sigmask(signal.SIG_BLOCK, ()))
    assert seen == [False, str(os.getpid()), True, False]
    assert signal.SIGTERM not in signal.pthread_sigmask(signal.SIG_BLOCK, ())


def test_who_waits_is_next(path):
    """The first byte is the queue of lock.h: who has it is asked before the lock is tried."""
    with open_board(path, 0.05) as board:
        blocker = subprocess.Popen(["python3", "-c", """
import fcntl, os, struct, sys
file = open(sys.argv[1], "r+")
fcntl.fcntl(file, fcntl.F_OFD_SETLK, struct.pack("hhqqi4x", fcntl.F_WRLCK, os.SEEK_SET, 0, 1, 0))
print(flush=True)
sys.stdin.read()
""", path], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        blocker.stdout.readline()
        with pytest.raises(vynlib.HardwareBusy):
            board.voltages["+12V"]
        blocker.communicate()
        assert board.voltages["+12V"] > 0


def test_the_feeder_feeds_although_somebody_keeps_the_hardware(path):
    with open_board(path, 10) as board:
        with board.watchdog.feeding(200, every=0.05) as feeding:
            board.watchdog.feed(100)
            with Holder(path):
                time.sleep(0.5)
            interval = board.watchdog.interval
        assert feeding.error is None
    assert interval >= 199


def test_the_file_is_made_for_its_group(path):
    former = os.umask(0o077)
    try:
        open_board(path, 1).close()
    finally:
        os.umask(former)
    assert stat.S_IMODE(os.stat(path).st_mode) == 0o660


def test_a_file_that_is_not_safe_is_refused(path, tmp_path):
    os.mkfifo(path)
    with pytest.raises(vynlib.Error, match="it must be a regular file of root or of this user"):
        open_board(path, 0)
    link = tmp_path / "link"
    link.symlink_to(tmp_path / "elsewhere")
    with pytest.raises(vynlib.Error, match="cannot lock"):
        open_board(str(link), 0)
    with pytest.raises(vynlib.Error, match="No such file or directory"):
        open_board(str(tmp_path / "nowhere/lock"), 0)
    with pytest.raises(vynlib.Error):
        open_board(os.fspath(tmp_path), 0)


def test_a_simulated_board_needs_no_lock():
    from vynlib._native import lock_file_for
    assert lock_file_for(None, True, None) == "/run/lock/vynlib.lock"
    assert lock_file_for("board.toml", True, None) is None
    assert lock_file_for("board.toml", True, "mine") == "mine"
    assert lock_file_for(None, False, "mine") is None

#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Taking turns at the hardware, and signals around library calls."""
import contextlib
import fcntl
import os
import pathlib
import signal
import subprocess
import time
import unittest

import stub
import tool


class Case(tool.Case):
    def setUp(self):
        self.lock = self.scratch() / "lock"

    def command(self, *arguments, board="board.toml"):
        return [tool.VYNCTL, "-s", str(tool.HERE / board), "--lock-file", str(self.lock), *arguments]

    def start(self, *arguments, stdout=subprocess.PIPE, **changes):
        process = subprocess.Popen(self.command(*arguments), stdout=stdout, stderr=subprocess.PIPE, text=True,
                                   env=tool.environment(**changes))
        self.addCleanup(process.stderr.close)
        if stdout == subprocess.PIPE:
            self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def run_sharing(self, *arguments):
        return subprocess.run(self.command(*arguments), capture_output=True, text=True, timeout=60,
                              env=tool.environment(), check=False)

    @contextlib.contextmanager
    def held(self):
        """The lock in the hands of another program."""
        with open(self.lock, "a+", encoding="ascii") as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            file.truncate(0)
            file.write("4711 monitor\n")
            file.flush()
            yield file
            file.truncate(0)

    def is_free_within(self, seconds):
        """Whether another program gets the lock in that time."""
        end = time.monotonic() + seconds
        with open(self.lock, "a", encoding="ascii") as file:
            while time.monotonic() < end:
                try:
                    fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
                    return True
                except BlockingIOError:
                    time.sleep(0.001)
        return False

    def await_file(self, seconds=60):
        end = time.monotonic() + seconds
        while not self.lock.exists():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.01)


class Waiting(Case):
    def test_has_a_limit(self):
        with self.held():
            done = self.run_sharing("sensors", "--wait", "0.1")
        self.assertEqual((1, "", "vynctl: monitor (pid 4711) has had the hardware for 0.1 s\n"),
                         (done.returncode, done.stdout, done.stderr))

    def test_is_an_unknown_state_for_a_plugin(self):
        with self.held():
            done = self.run_sharing("check", "--wait", "0.1")
        self.assertEqual((3, "VYNLIB UNKNOWN - monitor (pid 4711) has had the hardware for 0.1 s\n"),
                         (done.returncode, done.stdout))

    def test_is_a_document_with_json(self):
        with self.held():
            done = self.run_sharing("sensors", "--json", "--wait", "0.1")
        document = self.validated(done.stdout)
        self.assertEqual((1, False, "monitor (pid 4711) has had the hardware for 0.1 s"),
                         (done.returncode, document["ok"], document["error"]["words"]))

    def test_says_after_a_second_for_whom(self):
        with self.held():
            waiting = self.start("get", "wifi")
            begun = time.monotonic()
            self.assertEqual("vynctl: waiting for monitor (pid 4711)\n", waiting.stderr.readline())
            self.assertGreater(time.monotonic() - begun, 0.9)
        output, errors = waiting.communicate(timeout=60)
        self.assertEqual((0, ""), (waiting.returncode, errors))
        self.assertRegex(output, r"\A\d+\n\Z")

    def test_is_ended_by_a_signal_at_once(self):
        with self.held():
            waiting = self.start("sensors", "--wait", "600")
            self.assertIn("waiting", waiting.stderr.readline())
            waiting.terminate()
            self.assertEqual(-signal.SIGTERM, waiting.wait(timeout=10))

    def test_of_a_monitor_is_ended_cleanly(self):
        with self.held():
            waiting = self.start("monitor", "--json", "--wait", "600")
            self.assertIn("waiting", waiting.stderr.readline())
            waiting.terminate()
            self.assertIn(waiting.wait(timeout=10), (0, -signal.SIGTERM))

    def test_is_left_out_when_told_so(self):
        with self.held():
            self.assertEqual(0, self.run_sharing("sensors", "--no-lock").returncode)


class LockFile(Case):
    def test_that_cannot_be_had_is_said_and_only_then_left_out(self):
        self.lock = pathlib.Path("/nowhere/lock")
        done = self.run_sharing("sensors")
        self.assertEqual((1, "", "vynctl: cannot lock /nowhere/lock: No such file or directory; --no-lock goes on "
                          "without, where no other program uses the hardware\n"),
                         (done.returncode, done.stdout, done.stderr))
        self.assertEqual(0, self.run_sharing("sensors", "--no-lock").returncode)

    def test_that_is_a_link_is_refused(self):
        self.lock.symlink_to("/dev/null")
        done = self.run_sharing("sensors")
        self.assertEqual(1, done.returncode)
        self.assertRegex(done.stderr, r"\Avynctl: .*/lock is not safe to lock: it must be a regular file of root")

    def test_of_a_simulated_board_is_none(self):
        with self.held():
            self.assertEqual(0, self.run_tool("sensors").returncode)

    def test_tells_of_a_run_that_was_killed_within_a_call(self):
        self.lock.write_text("4711 vynctl\n")
        done = self.run_sharing("get", "wifi")
        self.assertEqual((0, "vynctl: vynctl (pid 4711) ended in the middle of a library call; if that used the SMBus, "
                          "its controller may have stayed enabled\n"), (done.returncode, done.stderr))
        self.assertEqual("", self.run_sharing("get", "wifi").stderr)


class Output(Case):
    """Nobody reads: the hardware must not be held meanwhile."""

    def full(self, process):
        """Waits until the process sleeps in a write to its full pipe."""
        end = time.monotonic() + 60
        while "pipe_write" not in pathlib.Path(f"/proc/{process.pid}/wchan").read_text():
            if pathlib.Path(f"/proc/{process.pid}/wchan").read_text() == "0" and self.pending(process) >= 60000:
                break
            self.assertLess(time.monotonic(), end)
            time.sleep(0.02)

    @staticmethod
    def pending(process):
        count = bytearray(4)
        fcntl.ioctl(process.stdout, 0x541B, count)  # FIONREAD
        return int.from_bytes(count, "little")

    def test_to_a_full_pipe_does_not_hold_the_lock(self):
        monitor = self.start("monitor", "--json", "--interval", "0.01")
        self.full(monitor)
        for _ in range(3):
            self.assertTrue(self.is_free_within(5))
        self.assertIsNone(monitor.poll())

    def test_of_a_stopped_process_does_not_hold_the_lock(self):
        monitor = self.start("monitor", "--json", "--interval", "0.01", stdout=subprocess.DEVNULL)
        self.await_file()
        for _ in range(20):
            time.sleep(0.01)
            monitor.send_signal(signal.SIGTSTP)
            self.assertTrue(self.is_free_within(5))
            monitor.send_signal(signal.SIGCONT)


class Signals(stub.Case):
    """One feeding takes half a second within the library."""

    def signalled(self, number):
        """vynctl, signalled in the middle of a library call, once that call has come to its end."""
        self.fates("s")
        process = self.feed("30")
        self.await_log("begin")
        process.send_signal(number)
        self.await_log("fed", seconds=10)
        return process

    def test_that_end_the_tool_wait_for_the_end_of_a_library_call(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGPIPE, signal.SIGQUIT, signal.SIGALRM):
            with self.subTest(number.name):
                self.assertEqual(-number, self.signalled(number).wait(timeout=10))
                self.assertEqual("", self.lock.read_text())

    def test_that_stop_the_tool_find_the_hardware_given_back(self):
        process = self.signalled(signal.SIGTSTP)
        _, status = os.waitpid(process.pid, os.WUNTRACED)
        self.assertTrue(os.WIFSTOPPED(status))
        self.assertEqual("", self.lock.read_text())
        process.send_signal(signal.SIGCONT)
        self.assertEqual(0, process.wait(timeout=10))


if __name__ == "__main__":
    unittest.main()

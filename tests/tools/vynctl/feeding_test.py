#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""watchdog feed --every: what keeps it feeding, what ends it, and what it says to the service manager."""
import array
import fcntl
import os
import signal
import socket
import subprocess
import time
import unittest

import stub
import tool

COUNTS_ON = "vynctl: the watchdog counts on and resets the board in about {} s; 'vynctl watchdog stop' stops it\n"


class Manager:
    """Stands in for the service manager: reads, or does not read, the notification socket."""

    def __init__(self, folder):
        self.path = str(folder / "notify")
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.socket.bind(self.path)

    def read(self, seconds=10):
        """The next message, after whose reading the descriptors that came with it are closed; None when none comes."""
        self.socket.settimeout(seconds)
        try:
            message, ancillary, _, _ = self.socket.recvmsg(4096, socket.CMSG_SPACE(4))
        except socket.timeout:
            return None
        for _, _, data in ancillary:
            for descriptor in array.array("i", data[:len(data) - len(data) % 4]):
                os.close(descriptor)
        return message.decode()

    def read_all(self, seconds):
        end, messages = time.monotonic() + seconds, []
        while time.monotonic() < end:
            message = self.read(max(0.001, end - time.monotonic()))
            messages += [] if message is None else [message]
        return messages


class Case(stub.Case):
    def setUp(self):
        super().setUp()
        self.fates("1")

    def manager(self):
        manager = Manager(self.folder)
        self.addCleanup(manager.socket.close)
        return manager

    def ended(self, process, number=signal.SIGTERM):
        """(status, standard error) after a signal; without a number of its own accord."""
        if number:
            process.send_signal(number)
        _, errors = process.communicate(timeout=30)
        return process.returncode, errors

    def gaps(self):
        times = [time for _, time in self.log("fed")]
        return [later - earlier for earlier, later in zip(times, times[1:])]


class Plan(Case):
    def refused(self, message, *arguments):
        process = self.feed(*arguments)
        self.assertEqual((2, message), (process.wait(timeout=30), process.stderr.readline().rstrip()))
        self.assertEqual([], self.log("fed"))

    def test_that_is_slower_than_the_interval_is_refused(self):
        self.refused("vynctl: feeding every 61 s is too slow for an interval of 60 s", "60", "--every", "61")
        self.refused("vynctl: feeding every 60 s is too slow for an interval of 60 s", "60", "--every", "60")
        self.refused("vynctl: feeding every 120 s is too slow for an interval of 120 s", "2", "--every", "120", "--unit",
                     "minutes")

    def test_that_is_slower_with_its_command_is_refused(self):
        self.refused("vynctl: feeding every 30 s after a command of up to 20 s is too slow for an interval of 60 s",
                     "60", "--every", "30", "--check", "true", "--check-time", "20")

    def test_that_is_slower_than_half_the_interval_is_warned_of(self):
        process = self.feed("60", "--every", "31")
        self.await_log("fed")
        self.assertIn("vynctl: feeding every 31 s leaves no room for a failure in an interval of 60 s; a third of it "
                      "does\n", self.ended(process)[1])

    def test_counts_in_minutes_where_the_board_does(self):
        process = self.feed("2", "--every", "31", "--unit", "minutes")
        self.await_log("fed")
        self.assertEqual((0, COUNTS_ON.format(120)), self.ended(process))


class MinutesOfTheBoard(tool.Case):
    """Register 0x32 of this board is the count mode: 1, so that it counts minutes."""

    def test_are_what_the_interval_counts(self):
        board = self.scratch() / "minutes.toml"
        board.write_text((tool.HERE / "board.toml").read_text().replace("0x32 = 0,", "0x32 = 1,"))
        feeding = subprocess.Popen([tool.VYNCTL, "-s", str(board), "watchdog", "feed", "2", "--every", "31"],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=tool.environment())
        tool.await_signal_handling(feeding)
        time.sleep(0.3)
        feeding.terminate()
        output, errors = feeding.communicate(timeout=60)
        self.assertEqual((0, COUNTS_ON.format(120)), (feeding.returncode, errors))
        self.assertIn("Watchdog fed.\n", output)


class End(Case):
    def test_without_a_stop_says_that_the_board_resets(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            process = self.feed("60", "--every", "10")
            self.await_log("fed")
            self.assertEqual((0, COUNTS_ON.format(60)), self.ended(process, number))
            self.fates("1")

    def test_with_a_stop_stops_the_watchdog(self):
        process = self.feed("60", "--every", "10", "--then-stop")
        self.await_log("fed")
        self.assertEqual((0, ""), self.ended(process))
        self.assertEqual(1, len(self.log("stop")))

    def test_does_not_come_from_a_reader_that_went_away(self):
        self.fates("10001")
        process = self.feed("60", "--every", "0.05")
        process.stderr.close()
        process.stdout.close()
        self.await_log("fed", 5)
        self.assertIsNone(process.poll())


class Failure(Case):
    def test_of_one_feeding_is_tried_again_within_the_interval(self):
        self.fates("10001")
        process = self.feed("60", "--every", "0.8")
        self.await_log("fed", 3)
        self.assertEqual(3, len(self.log("failed")))
        times = dict((kind, [when for name, when in self.log() if name == kind]) for kind in ("fed", "failed"))
        self.assertLess(times["failed"][2] - times["failed"][0], 0.8)
        errors = self.ended(process)[1]
        self.assertIn("vynctl: feeding failed, trying again: watchdog: the commands that set the interval failed "
                      "(code 0x1703)\nvynctl: fed again\n", errors)

    def test_for_a_whole_interval_ends_it(self):
        self.fates("10")
        process = self.feed("1", "--every", "0.2")
        status, errors = self.ended(process, None)
        self.assertEqual(1, status)
        self.assertIn(COUNTS_ON.format(1), errors)
        self.assertTrue(errors.endswith("vynctl: watchdog: the commands that set the interval failed (code 0x1703)\n"))
        fed, failed = self.log("fed"), self.log("failed")
        self.assertEqual(1, len(fed))
        self.assertGreater(failed[-1][1] - fed[0][1], 0.8)


class Lock(Case):
    def hold(self):
        file = open(self.lock, "a+", encoding="ascii")
        self.addCleanup(file.close)
        fcntl.flock(file, fcntl.LOCK_EX)
        file.truncate(0)
        file.write("4711 monitor\n")
        file.flush()

    def test_is_waited_for_a_third_of_the_period_and_then_left_out(self):
        process = self.feed("60", "--every", "0.9")
        self.await_log("fed")
        self.hold()
        self.await_log("fed", 4)
        errors = self.ended(process)[1]
        self.assertIn("vynctl: monitor (pid 4711) keeps the hardware; going on without waiting any longer\n", errors)
        for gap in self.gaps()[1:]:
            self.assertTrue(0.5 < gap < 1.5, self.gaps())

    def test_that_is_waited_for_does_not_hold_up_a_signal(self):
        process = self.feed("255", "--every", "120")
        self.await_log("fed")
        process.send_signal(signal.SIGTERM)
        process.wait(timeout=10)
        self.fates("1")
        waiting = self.feed("255", "--every", "120", options=("--wait", "100"))
        self.await_log("fed")
        self.hold()
        begun = time.monotonic()
        waiting.terminate()
        waiting.wait(timeout=60)
        self.assertLess(time.monotonic() - begun, 10)

    def test_does_not_keep_it_from_stopping_the_watchdog(self):
        process = self.feed("60", "--every", "10", "--then-stop")
        self.await_log("fed")
        self.hold()
        begun = time.monotonic()
        self.ended(process)
        self.assertEqual(1, len(self.log("stop")))
        self.assertLess(self.log("stop")[0][1] - begun, 5)


class Terminal(Case):
    def test_shows_a_line_for_each_feeding(self):
        leader, follower = os.openpty()
        process = self.feed("60", "--every", "0.1", stdout=follower)
        self.await_log("fed", 4)
        self.ended(process)
        os.close(follower)
        text = os.read(leader, 65536).decode()
        os.close(leader)
        self.assertRegex(text, r"\A(\d\d:\d\d:\d\d  fed; again in 0\.1 s\r\n){3,}Watchdog fed\.\r\n")

    def test_that_is_paused_does_not_hold_up_the_feeding(self):
        leader, follower = os.openpty()
        self.feed("60", "--every", "0.02", stdout=follower)
        self.await_log("fed")
        os.write(leader, b"\x13")  # Ctrl-S
        count = len(self.log("fed"))
        self.await_log("fed", count + 20)
        os.close(follower)
        os.close(leader)

    def test_is_the_only_place_for_those_lines(self):
        process = self.feed("60", "--every", "0.05")
        self.await_log("fed", 3)
        process.terminate()
        self.assertEqual("Watchdog fed.\n", process.communicate(timeout=30)[0].partition("Interval")[0])


class Check(Case):
    def test_lets_the_feeding_go_on_while_it_succeeds(self):
        process = self.feed("60", "--every", "0.1", "--check", "echo well; echo >> asked")
        self.await_log("fed", 3)
        self.assertGreaterEqual(len((self.folder / "asked").read_text()), 3)
        process.terminate()
        output, errors = process.communicate(timeout=30)
        self.assertNotIn("well", output)
        self.assertIn("well\n", errors)

    def ends(self, words, *arguments):
        process = self.feed("60", "--every", "0.4", "--then-stop", *arguments)
        status, errors = self.ended(process, None)
        self.assertEqual((3, COUNTS_ON.format(60) + f"vynctl: {words}\n"), (status, errors))
        self.assertEqual([], self.log("stop"))

    def test_ends_it_by_failing(self):
        self.ends("the health command ended with status 7", "--check", "test -e asked && exit 7; : > asked")
        self.assertEqual(1, len(self.log("fed")))

    def test_ends_it_by_being_killed(self):
        self.ends("the health command was ended by signal 9", "--check", "kill -9 $$")

    def test_ends_it_by_outliving_its_time(self):
        begun = time.monotonic()
        self.ends("the health command took longer than 0.2 s", "--check", "sleep 600 & echo $! > child; wait")
        self.assertLess(time.monotonic() - begun, 20)
        child = int((self.folder / "child").read_text())
        end = time.monotonic() + 10
        while self.lives(child):
            self.assertLess(time.monotonic(), end, "what the command started still runs")
            time.sleep(0.01)

    def test_ends_it_by_freezing(self):
        self.ends("the health command took longer than 0.3 s", "--check", "kill -STOP $$", "--check-time", "0.3")

    def test_does_not_hold_up_a_signal(self):
        process = self.feed("255", "--every", "30", "--check", ": > asked; sleep 600", "--check-time", "200")
        while not (self.folder / "asked").exists():
            time.sleep(0.01)
        self.assertEqual((0, COUNTS_ON.format(255)), self.ended(process))
        self.assertEqual([], self.log("fed"))

    def test_does_not_speak_for_the_service(self):
        manager = self.manager()
        process = self.feed("60", "--every", "0.1", "--check", 'test -z "$NOTIFY_SOCKET$WATCHDOG_USEC"',
                            NOTIFY_SOCKET=manager.path, WATCHDOG_USEC="60000000")
        self.await_log("fed", 2)
        process.terminate()

    @staticmethod
    def lives(process):
        try:
            with open(f"/proc/{process}/stat", encoding="ascii") as file:
                return file.read().rpartition(") ")[2][0] != "Z"
        except FileNotFoundError:
            return False


class Service(Case):
    def test_is_ready_after_the_first_feeding_and_alive_with_each(self):
        manager = self.manager()
        process = self.feed("60", "--every", "0.1", NOTIFY_SOCKET=manager.path)
        self.assertEqual("READY=1\nWATCHDOG=1", manager.read())
        self.assertGreaterEqual(len(self.log("fed")), 1)
        self.assertEqual("READY=1\nWATCHDOG=1", manager.read())
        process.terminate()
        messages = []
        while "STOPPING=1" not in messages:
            messages.append(manager.read())
        self.assertEqual({"READY=1\nWATCHDOG=1", "STOPPING=1"}, set(messages) | {"READY=1\nWATCHDOG=1"})

    def test_is_not_ready_before(self):
        manager = self.manager()
        self.fates("0")
        self.feed("60", "--every", "0.1", NOTIFY_SOCKET=manager.path)
        self.await_log("failed", 3)
        self.assertEqual([], manager.read_all(0.1))

    def test_is_fed_as_often_as_the_manager_wants_to_hear_of_it(self):
        manager = self.manager()
        process = self.feed("60", "--every", "20", NOTIFY_SOCKET=manager.path, WATCHDOG_USEC="400000")
        self.await_log("fed", 3)
        self.assertLess(max(self.gaps()), 5)
        self.assertIn("vynctl: feeding every 0.2 s: the service manager wants to hear of it\n", self.ended(process)[1])

    def test_ignores_a_watchdog_of_another_process(self):
        manager = self.manager()
        process = self.feed("60", "--every", "20", NOTIFY_SOCKET=manager.path, WATCHDOG_USEC="400000", WATCHDOG_PID="1")
        self.await_log("fed")
        self.assertNotIn("wants to hear", self.ended(process)[1])

    def test_does_not_hang_on_a_manager_that_does_not_read(self):
        manager = self.manager()
        self.feed("60", "--every", "0.01", NOTIFY_SOCKET=manager.path)
        self.await_log("fed", 700)


class Barrier(Case):
    def test_needs_a_manager(self):
        process = self.feed("60", "--every", "10", "--barrier")
        self.assertEqual((2, "vynctl: --barrier needs a service manager (NOTIFY_SOCKET)"),
                         (process.wait(timeout=30), process.stderr.readline().rstrip()))

    def test_lets_feed_once_the_manager_has_read(self):
        manager = self.manager()
        self.feed("60", "--every", "0.2", "--barrier", NOTIFY_SOCKET=manager.path)
        for _ in range(3):
            fed = len(self.log("fed"))
            time.sleep(0.3)
            self.assertEqual(fed, len(self.log("fed")))
            self.assertEqual("BARRIER=1", manager.read())
            self.assertEqual("READY=1\nWATCHDOG=1", manager.read())
            self.assertEqual(fed + 1, len(self.log("fed")))

    def test_says_that_the_manager_does_not_read(self):
        manager = self.manager()
        process = self.feed("60", "--every", "0.2", "--barrier", NOTIFY_SOCKET=manager.path)
        self.assertEqual("vynctl: the service manager does not read its messages; not feeding before it does\n",
                         process.stderr.readline())
        self.assertEqual([], self.log("fed"))
        while not self.log("fed"):
            manager.read(0.5)

    def test_ends_it_when_the_interval_is_over(self):
        manager = self.manager()
        process = self.feed("1", "--every", "0.2", "--barrier", "--then-stop", NOTIFY_SOCKET=manager.path)
        status, errors = self.ended(process, None)
        self.assertEqual(3, status)
        self.assertTrue(errors.endswith("vynctl: the service manager has not read its messages for a whole interval\n"))
        self.assertEqual([], self.log("fed", "stop"))

    def test_does_not_hold_up_a_signal(self):
        manager = self.manager()
        process = self.feed("255", "--every", "100", "--barrier", NOTIFY_SOCKET=manager.path)
        self.assertEqual("BARRIER=1", manager.read())
        self.await_log("fed")
        self.assertEqual(COUNTS_ON.format(255), self.ended(process)[1])


if __name__ == "__main__":
    unittest.main()

# SPDX-License-Identifier: MIT
"""The watchdog, and the thread that feeds it."""
import threading

import pytest

import vynlib


class Feedings:
    """Counts what the thread of a board writes, and can make it fail."""

    def __init__(self, board, monkeypatch):
        self.codes = []  # of the next feedings
        self.seen = threading.Semaphore(0)
        self.count = 0
        session = board.watchdog._session
        call = session.call

        def counted(name, *arguments, **options):
            if threading.current_thread().name == "vynlib-watchdog":
                self.count += 1
                self.seen.release()
                code = self.codes.pop(0) if self.codes else 0
                if code:
                    raise vynlib.errors.error_for(code)
            call(name, *arguments, **options)
        monkeypatch.setattr(session, "call", counted)

    def wait_for(self, number):
        for _ in range(number):
            assert self.seen.acquire(timeout=30)


def test_it_starts_feeds_and_stops(board):
    assert board.watchdog.offered
    board.watchdog.start(30, mode=1)
    assert (board.watchdog.interval, board.watchdog.mode) == (30, 1)
    board.watchdog.feed(60)
    assert board.watchdog.interval == 60
    board.watchdog.stop()
    assert board.watchdog.interval == 0


def test_a_block_feeds_and_then_stops(board, monkeypatch):
    feedings = Feedings(board, monkeypatch)
    with board.watchdog.feeding(200, every=0.01) as feeding:
        feedings.wait_for(3)
        assert 199 <= board.watchdog.interval <= 200
    assert feeding.error is None
    assert board.watchdog.interval == 0
    count = feedings.count
    assert count >= 3
    assert not [thread for thread in threading.enumerate() if thread.name == "vynlib-watchdog"]


def test_an_exception_stops_it_too(board):
    with pytest.raises(RuntimeError), board.watchdog.feeding(60):
        raise RuntimeError
    assert board.watchdog.interval == 0


def test_it_goes_on_counting_where_that_is_asked_for(board):
    with board.watchdog.feeding(60, stop=False):
        pass
    assert board.watchdog.interval in (59, 60)


def test_a_feeding_that_fails_is_tried_again(board, monkeypatch):
    feedings = Feedings(board, monkeypatch)
    feedings.codes = [0x1703, 0x1703]
    with board.watchdog.feeding(60, every=0.02) as feeding:
        feedings.wait_for(4)
    assert feeding.error is None


def test_feeding_ends_when_it_fails_for_a_whole_interval(board, monkeypatch):
    feedings = Feedings(board, monkeypatch)
    feedings.codes = [0x1703] * 1000
    with pytest.raises(vynlib.Error, match="the commands that set the interval failed"), \
            board.watchdog.feeding(60, every=0.02, unit=0.001):
        feedings.wait_for(2)
        board.watchdog._session  # the thread has noticed by itself
        threading.Event().wait(0.2)
    assert board.watchdog.interval == 0


def test_feeding_ends_when_the_system_is_not_healthy(board, monkeypatch):
    feedings = Feedings(board, monkeypatch)
    answers = [True, True, False]
    asked = threading.Semaphore(0)

    def healthy():
        asked.release()
        return answers.pop(0)

    with pytest.raises(vynlib.Error, match="the system is not healthy"), \
            board.watchdog.feeding(60, every=0.01, healthy=healthy):
        for _ in range(3):
            assert asked.acquire(timeout=30)
    assert feedings.count == 2


@pytest.mark.parametrize("options", [{"every": 60}, {"every": 0}, {"every": 70, "mode": 0}, {"every": 3600, "mode": 1},
                                     {"every": 5, "unit": 0.05}])
def test_a_period_that_does_not_fit_is_refused(board, options):
    with pytest.raises(ValueError, match="must be shorter than the interval"):
        board.watchdog.feeding(60, **options)
    assert board.watchdog.interval == 0


def test_minutes_of_mode_one_give_longer_periods(board):
    with board.watchdog.feeding(2, every=100, mode=1):
        assert board.watchdog.mode == 1

# SPDX-License-Identifier: MIT
"""A controller: shows the sensors, lights a LED and drives a fan by the hottest temperature, feeds the watchdog."""

import contextlib
import os
import signal
import sys
import threading

import vynlib

# What values mean is the firmware's business. These are those of the reference board.
LED_STEADY, LED_BLINKING, FULL_SPEED, WATCHDOG_SECONDS = 1, 2, 0, 60
TOO_HOT = 45
FAN_NAME = "CPU Fan"


@contextlib.contextmanager
def reported(what):
    """Says so when a call in the block failed."""
    try:
        yield
    except vynlib.Error as error:
        print(f"{what}: {error.words}")


# ---- sensors ----


def show_sensors(board):
    """Shows all sensors. Returns the hottest temperature."""
    hottest = 0.0
    for sensors in board.voltages, board.temperatures, board.fan_speeds:
        for name in sensors:
            with reported(name):
                value = sensors[name]
                print(f"{name}: {value:.1f} {sensors.unit}")
                if sensors is board.temperatures:
                    hottest = max(hottest, value)
    return hottest


# ---- LED and fan ----


@contextlib.contextmanager
def cooling(board):
    """A function that lights the LED and drives the fan, which gets its former setting back at the end."""
    fan = before = None
    with reported(FAN_NAME):
        fan = board.fans[FAN_NAME]
        before = fan.get()

    def restore():
        if before is not None:
            with reported(FAN_NAME):
                fan.set(before.mode, *before.parameters)

    def act_on(hottest):
        hot = hottest >= TOO_HOT
        print(f"{'too hot' if hot else 'good'} at {hottest:.1f} C")
        with reported("LED"):
            board.features["user-led"].set(LED_BLINKING if hot else LED_STEADY)
        if not hot:
            restore()
        elif fan is not None:
            with reported(FAN_NAME):
                fan.set(FULL_SPEED)

    try:
        yield act_on
    finally:
        restore()


# ---- watchdog ----


def start_watchdog(board, stack):
    """Counts for as long as the stack lasts, fed by a thread. Returns None on a board without a watchdog."""
    with reported("starting"):
        return stack.enter_context(board.watchdog.feeding(WATCHDOG_SECONDS))


# ---- the program ----

ended = threading.Event()


def run(board, rounds):
    # What ended the feeding is told where the stack ends.
    with reported("feeding"), contextlib.ExitStack() as stack:
        feeding = start_watchdog(board, stack)
        act_on = stack.enter_context(cooling(board))
        while not (ended.is_set() or feeding and feeding.error):
            act_on(show_sensors(board))
            sys.stdout.flush()
            rounds -= 1
            if rounds == 0:
                break
            ended.wait(1)


def main(rounds="0", lock_file=None):
    """application.py [ROUNDS [LOCK-FILE]]: without ROUNDS until a signal comes."""
    for number in signal.SIGINT, signal.SIGTERM:
        signal.signal(number, lambda *_: ended.set())
    try:
        # A simulated board where VYNLIB_BOARD names one, as with the simulated library in C.
        board = vynlib.Board(simulate=os.environ.get("VYNLIB_BOARD"), lock_file=lock_file)
    except vynlib.Error as error:
        print(f"starting: {error.words}")
        return 1
    with board:
        run(board, int(rounds))
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

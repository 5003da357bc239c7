#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the library with the model.

usage: compare.py --driver PROGRAM [--seed N] [--cases N | --seconds N] [--keep FOLDER]
       compare.py --driver PROGRAM --replay FOLDER

A case on which they differ is made as small as it gets and kept as FOLDER/case-HASH.json (the current folder when no
folder is named); the exit status is then 1.
"""
import argparse
import hashlib
import json
import pathlib
import random
import select
import subprocess
import sys
import time

import firmware
import generate
import shrink
from executor import Executor
from features import Library, Unbounded
from machine import Machine

PATIENCE = 20  # seconds that one case may take
SHRINKING = 60  # seconds that making a case smaller may take
PARTS = ("before", "calls", "commands", "after")  # of a case: what is done, in this order, each with an outcome


class Driver:
    """The library, in a process of its own that is started again when a case ends it."""

    def __init__(self, program):
        self.program, self.process = program, None

    def run(self, request):
        """The outcome, or a text that says how the process ended."""
        if self.process is None:
            self.process = subprocess.Popen([self.program], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        try:
            self.process.stdin.write(json.dumps(request).encode() + b"\n")
            self.process.stdin.flush()
        except BrokenPipeError:
            return self.ended()
        if not select.select([self.process.stdout], [], [], PATIENCE)[0]:
            self.process.kill()
            self.ended()
            return "hangs"
        line = self.process.stdout.readline()
        return json.loads(line) if line else self.ended()

    def ended(self):
        status = self.process.wait()
        self.process = None
        return f"ends with status {status}"

    def close(self):
        """The exit status: a leak that a sanitizer finds shows here."""
        if self.process is None:
            return 0
        self.process.stdin.close()
        return self.process.wait()


def request_of(case):
    """What the driver gets: the machine with the firmware in its memory."""
    tables = [firmware.build_table(table) for table in case["tables"]]
    machine = dict(case["machine"])
    machine["memory"] = machine["memory"] + firmware.memory_image(tables)
    return {"machine": machine, **{part: case.get(part, []) for part in PARTS}}


def tables_of(case):
    return [firmware.build_table(table) for table in case["tables"]]


def outcome(library, call):
    library.machine.log.clear()
    library.executor.printed.clear()
    returned, result = library.call(call["name"], call["selector"], call["index"], call["value"])
    printed = "".join(line + "\n" for line in library.executor.printed)
    return {"returned": [returned, result], "code": library.code, "printed": printed, "log": list(library.machine.log)}


def command_outcome(executor, command):
    body, direction, slots = bytearray.fromhex(command[0]), command[1], list(command[2])
    executor.machine.log.clear()
    executor.printed.clear()
    returned = int(executor.run(body, 0, direction, slots))
    printed = "".join(line + "\n" for line in executor.printed)
    return {"returned": returned, "slots": slots, "bytes": body.hex(), "printed": printed,
            "log": list(executor.machine.log)}


def predict(case):
    """What the driver must answer. The case ends before a call that would not. Calls before the start belong into the
    first case of a process: a tear-down leaves the library initialised."""
    spec = request_of(case)["machine"]
    machine = Machine(spec)
    library = Library(machine, Executor(machine), {})
    library.initialised = 0
    before = [outcome(library, call) for call in case.get("before", [])]
    if spec["privileged"] and spec["memory_device"]:
        library.lists = firmware.lists_of(tables_of(case))
    library.initialised = int(spec["privileged"])
    library.code = 0 if library.initialised else 1
    answer = {"before": before, "init": [library.initialised, library.code], "calls": []}
    for number, call in enumerate(case["calls"]):
        try:
            answer["calls"].append(outcome(library, call))
        except Unbounded:
            del case["calls"][number:]
            break
    answer["commands"] = [command_outcome(library.executor, command) for command in case.get("commands", [])]
    answer["open"] = opened(answer["calls"] + answer["commands"], spec)
    library.lists = {}
    answer["uninit"] = [library.initialised, 0 if library.initialised else library.code]
    library.code = answer["uninit"][1]
    answer["after"] = [outcome(library, call) for call in case["after"]]
    answer["mapped"] = 0
    return answer


def opened(outcomes, spec):
    """Descriptors that stay open: reads of registers that do not exist leave one each."""
    kinds = [entry[0] for each in outcomes for entry in each["log"]]
    failed = sum(1 for each in outcomes for entry in each["log"] if entry[0] == "open" and not available(entry, spec))
    return kinds.count("open") - failed - kinds.count("close")


def available(entry, spec):
    return spec["memory_device"] if entry[4] == "/dev/mem" else spec["msr_device"]


def tidy(answer):
    """Sleeps that follow one another as one, none of length 0: how a wait is cut up is not of interest."""
    for each in sum((answer[part] for part in PARTS), []):
        log = []
        for entry in each["log"]:
            if entry[0] == "sleep" and log and log[-1][0] == "sleep":
                entry = ["sleep", 0, 0, log.pop()[3] + entry[3], ""]
            if entry[0] != "sleep" or entry[3]:
                log.append(entry)
        each["log"] = log
    return answer


def differences(case, driver):
    """A line per difference between the model and the library; none when they agree."""
    expected = tidy(predict(case))
    actual = driver.run(request_of(case))
    if isinstance(actual, str):
        return [f"the library {actual}"]
    actual = tidy(actual)
    lines = []
    for part in expected:
        if part in PARTS:
            continue
        if expected[part] != actual[part]:
            lines.append(f"{part}: model {expected[part]}, library {actual[part]}")
    for part in PARTS:
        for call, model, library in zip(case.get(part, []), expected[part], actual[part], strict=True):
            lines += [f"{part} {call}: {key}: model {model[key]}, library {library[key]}"
                      for key in model if model[key] != library[key]]
    return lines


def keep(case, folder):
    text = json.dumps(case, indent=1)
    path = pathlib.Path(folder) / f"case-{hashlib.sha256(text.encode()).hexdigest()[:10]}.json"
    path.write_text(text + "\n")
    return path


def report(case, driver, folder):
    end = time.monotonic() + SHRINKING
    small = shrink.shrink(case, lambda smaller: time.monotonic() < end and bool(differences(smaller, driver)))
    for line in differences(small, driver):
        print(line)
    print(f"kept as {keep(small, folder)}")


def replay(folder, driver):
    paths = sorted(pathlib.Path(folder).glob("*.json"))
    bad = 0
    for path in paths:
        lines = differences(json.loads(path.read_text()), driver)
        bad += bool(lines)
        for line in lines:
            print(f"{path.name}: {line}")
    print(f"{len(paths)} kept cases, {bad} differ")
    return bad or not paths


def explore(options, driver):
    source, count, bad, calls = random.Random(options.seed), 0, 0, 0
    end = time.monotonic() + options.seconds if options.seconds else None
    while bad < options.failures and (time.monotonic() < end if end else count < options.cases):
        case = generate.case(source)
        if differences(case, driver):
            report(case, driver, options.keep)
            bad += 1
        count += 1
        calls += len(case["calls"])
    print(f"seed {options.seed}: {count} cases, {calls} calls, {bad} differ")
    return bad


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--driver", required=True)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--cases", type=int, default=1000)
    parser.add_argument("--seconds", type=int)
    parser.add_argument("--keep", default=".")
    parser.add_argument("--failures", type=int, default=5, help="stop after this many")
    parser.add_argument("--replay")
    options = parser.parse_args()
    driver = Driver(options.driver)
    bad = replay(options.replay, driver) if options.replay else explore(options, driver)
    status = driver.close()
    if status:
        print(f"the library's process ended with status {status}")
    return 1 if bad or status else 0


if __name__ == "__main__":
    sys.exit(main())

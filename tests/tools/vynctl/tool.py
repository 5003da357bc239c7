# SPDX-License-Identifier: MIT
"""Runs the built vynctl over board files and validates what it prints."""
import json
import os
import pathlib
import subprocess
import tempfile
import time
import unittest

import jsonschema

HERE = pathlib.Path(__file__).parent
SOURCE = pathlib.Path(os.environ["VYNLIB_SOURCE"])
VYNCTL = os.environ["VYNCTL"]
STUB = os.environ["VYNCTL_STUB"]
VALIDATOR = jsonschema.Draft202012Validator(json.loads((SOURCE / "docs/vynctl.schema.json").read_text()))


def environment(**changes):
    """A plain environment; a change to None removes the variable."""
    env = {"LC_ALL": "C.UTF-8", "TERM": "xterm", "PATH": os.environ["PATH"]}
    env.update((name, value) for name, value in os.environ.items() if name.endswith("SAN_OPTIONS"))
    env.update(changes)
    return {name: value for name, value in env.items() if value is not None}


def await_signal_handling(process, seconds=60):
    """Returns when the process reads its signals from a descriptor."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        for descriptor in pathlib.Path(f"/proc/{process.pid}/fd").iterdir():
            try:
                if os.readlink(descriptor) == "anon_inode:[signalfd]":
                    return
            except FileNotFoundError:  # closed meanwhile
                pass
        time.sleep(0.01)
    raise AssertionError("the process does not handle signals")


def read_terminal(leader):
    """All that arrives at a pseudo terminal until nobody has its other end open any more."""
    parts = []
    while True:
        try:
            parts.append(os.read(leader, 65536))
        except OSError:
            return b"".join(parts).decode().replace("\r\n", "\n")


class Case(unittest.TestCase):
    """A test on one board: `board` names a file beside the tests."""
    board = "board.toml"
    maxDiff = None

    def run_on(self, board, *arguments, **changes):
        simulate = ["--simulate", str(board)] if board else []
        return subprocess.run([VYNCTL, *simulate, *arguments], capture_output=True, text=True, timeout=60,
                              env=environment(**changes), check=False)

    def run_tool(self, *arguments, **changes):
        return self.run_on(HERE / self.board, *arguments, **changes)

    def stub(self, *arguments, **changes):
        """Without --simulate, over the library that stands in for the production one."""
        return self.run_on(None, "--no-lock", *arguments, LD_LIBRARY_PATH=STUB, **changes)

    def says(self, *arguments):
        """Standard output of a run that succeeds silently."""
        done = self.run_tool(*arguments)
        self.assertEqual((0, ""), (done.returncode, done.stderr), arguments)
        return done.stdout

    def refuses(self, status, message, *arguments):
        """The run prints nothing but `message` on standard error."""
        done = self.run_tool(*arguments)
        self.assertEqual((status, "", message), (done.returncode, done.stdout, done.stderr.splitlines()[0]), arguments)

    def document(self, *arguments, status=0):
        """The JSON of a run, valid after the schema."""
        done = self.run_tool(*arguments, "--json")
        self.assertEqual((status, ""), (done.returncode, done.stderr), arguments)
        return self.validated(done.stdout)

    def validated(self, text):
        document = json.loads(text, parse_constant=lambda name: self.fail(f"{name} is not JSON"))
        self.assertEqual([], [error.message for error in VALIDATOR.iter_errors(document)])
        ids = [value["id"] for value in document["values"]]
        self.assertEqual(len(ids), len(set(ids)), "identifiers repeat")
        return document

    def values(self, *arguments, status=0):
        """The values of a document by identifier."""
        return {value["id"]: value for value in self.document(*arguments, status=status)["values"]}

    def scratch(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        return pathlib.Path(directory.name)

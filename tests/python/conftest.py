# SPDX-License-Identifier: MIT
"""What the tests of the Python package share. They run in the project's folder, as programs do that name its boards."""
import os
import pathlib
import subprocess
import sys

import pytest

import vynlib

ROOT = pathlib.Path(__file__).parents[2]
BUILD = pathlib.Path(os.environ["VYNLIB_BUILD"])
REFERENCE = ROOT / "boards/reference.toml"
BARE = ROOT / "tests/tools/vynctl/bare.toml"


@pytest.fixture
def board():
    with vynlib.Board(simulate=REFERENCE) as opened:
        yield opened


@pytest.fixture
def script():
    """Runs a Python program in a process of its own: what it printed, as (status, output, errors)."""
    def run(text, **options):
        done = subprocess.run([sys.executable, "-c", text], cwd=ROOT, capture_output=True, text=True, timeout=60,
                              check=False, **options)
        return done.returncode, done.stdout, done.stderr
    return run

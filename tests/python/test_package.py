# SPDX-License-Identifier: MIT
"""The package agrees with the rest of the project."""
import json
import re
import subprocess

from conftest import BUILD, REFERENCE, ROOT

import vynlib
from vynlib import _features
from vynlib.errors import FAMILIES, words_for


def vynctl(*arguments):
    done = subprocess.run([BUILD / "tools/vynctl/vynctl", "--simulate", REFERENCE, "--json", *arguments],
                          capture_output=True, text=True, check=True)
    return json.loads(done.stdout)


def test_it_has_the_version_of_the_project():
    version = re.search(r"project\(vynlib VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text()).group(1)
    assert vynlib.__version__ == version
    assert f'version = "{version}"' in (ROOT / "python/pyproject.toml").read_text()


def test_features_have_the_names_and_titles_of_vynctl():
    values = vynctl("features", "--all")["values"]
    theirs = {value["id"].split("/")[1]: re.sub(r" \d+$", "", value["name"]) for value in values}
    assert theirs == {row.name: FAMILIES[row.family] for row in _features.ROWS}


def test_features_have_the_rows_of_the_cpp_header():
    rows = re.findall(r'\{"([a-z-]+)", (VYNLIB_FAMILY_\w+), ([^}]+)\}', (ROOT / "include/vynlib/vynlib.hpp").read_text())
    numbers = dict(re.findall(r"#define (VYNLIB_FAMILY_\w+) (0x\w+)", (ROOT / "include/vynlib/vynlib.h").read_text()))
    theirs = {(name, int(numbers[family], 16), tuple(word for word in functions.split(", ") if word != "nullptr"))
              for name, family, functions in rows}
    assert theirs == {(row.name, row.family, tuple(name for name in (row.getter, row.setter) if name))
                      for row in _features.ROWS}


def test_features_have_the_record_types_of_the_firmware():
    rows = dict(re.findall(r'\{"(\w+)", +(\d+), detail::kAny', (ROOT / "src/layout/RecordLayout.h").read_text()))
    assert {row.record_name: str(row.record_type) for row in _features.ROWS}.items() <= rows.items()


def test_values_are_those_of_vynctl(board):
    for value in vynctl("features", "--all")["values"]:
        _, name, *instance = value["id"].split("/")
        assert board.features[name].values(int(instance[0]) if instance else 0) == tuple(value.get("allowed", ()))


def test_readings_are_those_of_vynctl(board):
    readings = {"voltage": board.voltages, "temperature": board.temperatures, "fan-speed": board.fan_speeds,
                "current": board.currents}
    theirs = {(value["quantity"], value["name"]): value["value"] for value in vynctl("sensors")["values"]}
    assert {key: round(readings[key[0]][key[1]], 3) for key in theirs} == \
           {key: round(value, 3) for key, value in theirs.items()}


def test_unknown_codes_have_words():
    assert words_for(0x7F42) == "unknown code 0x7F42"
    assert words_for(0x305) == "voltage: the board has no sensor of that name"

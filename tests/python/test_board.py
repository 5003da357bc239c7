# SPDX-License-Identifier: MIT
"""Boards, sensors, features and fans over the simulated library."""
import gc
import os
import pathlib
import subprocess
import threading

import pytest
from conftest import BARE, BUILD, REFERENCE

import vynlib
from vynlib import _features, _native

# ---- life ----


def test_a_second_board_is_refused(board):
    with pytest.raises(vynlib.Error, match="this program has a board open already"):
        vynlib.Board(simulate=REFERENCE)
    assert board.voltages["+12V"] > 0


def test_calls_after_the_end_raise(board):
    wifi, fan = board.features["wifi"], board.fans["CPU Fan"]
    board.close()
    for call in (lambda: board.voltages["+12V"], wifi.get, lambda: wifi.set(1), fan.get, lambda: fan.modes,
                 lambda: board.watchdog.feed(10), lambda: board.watchdog.offered):
        with pytest.raises(vynlib.Closed) as caught:
            call()
        assert (caught.value.code, str(caught.value)) == (1, "the board is closed (code 0x1)")
    board.close()


def test_each_simulated_board_is_a_fresh_one():
    with vynlib.Board(simulate=REFERENCE) as board:
        board.features["wifi"].set(0)
        assert board.features["wifi"].get() == 0
    with vynlib.Board(simulate=BARE) as board:
        assert not board.features
    with vynlib.Board(simulate=REFERENCE) as board:
        assert board.features["wifi"].get() == 1


def test_a_board_that_nobody_has_any_longer_is_closed():
    sensors = vynlib.Board(simulate=REFERENCE).voltages
    assert sensors["+12V"] > 0, "what came from it keeps it open"
    del sensors
    gc.collect()
    vynlib.Board(simulate=REFERENCE).close()


def test_a_state_outlives_its_board(tmp_path):
    for value in (1, 0):
        with vynlib.Board(simulate=REFERENCE, state=tmp_path / "state") as board:
            assert board.features["wifi"].get() == value
            board.features["wifi"].set(0)
    with pytest.raises(vynlib.NotStarted, match="state: the state of another board"):
        vynlib.Board(simulate=BARE, state=tmp_path / "state")


def test_the_environment_is_put_back(monkeypatch):
    monkeypatch.setenv("VYNLIB_BOARD", "mine")
    monkeypatch.delenv("VYNLIB_LIVE", raising=False)
    vynlib.Board(simulate=REFERENCE, live=True).close()
    assert os.environ["VYNLIB_BOARD"] == "mine"
    assert "VYNLIB_LIVE" not in os.environ


def test_a_board_file_that_cannot_be_read_is_named():
    with pytest.raises(vynlib.NotStarted, match="nonexistent.toml") as caught:
        vynlib.Board(simulate="nonexistent.toml")
    assert caught.value.code == 1


def test_a_library_that_is_not_there_is_an_error(monkeypatch):
    monkeypatch.setattr(_native, "_REAL", "libnowhere.so.1")
    with pytest.raises(vynlib.NotStarted, match="cannot load the library: libnowhere.so.1: .* run ldconfig"):
        vynlib.Board(lock=False)


# The library says so when it is to write a model-specific register.
TALKATIVE = """
[board]
name = "talkative"
[[feature]]
function = "WifiState"
value = 1
commands = [{ msr = 0x1A2, width = 8, set = "write", or = 1 }]
"""


def test_nothing_that_the_library_prints_gets_out(script, tmp_path):
    talkative = tmp_path / "talkative.toml"
    talkative.write_text(TALKATIVE)
    status, output, errors = script(f"""
import vynlib
with vynlib.Board(simulate={str(REFERENCE)!r}) as board:
    print(board.model)
with vynlib.Board(simulate={str(BARE)!r}) as board:
    print(board.messages)
with vynlib.Board(simulate={str(talkative)!r}) as board:
    try:
        board.features["wifi"].set(1)
    except vynlib.Error as error:
        print(hex(error.code))
try:
    vynlib.Board(simulate="nonexistent.toml")
except vynlib.NotStarted:
    print("not started")
""")
    assert (status, errors) == (0, "")
    assert output == "VYN-R900 Reference\n['Is Core8 ... ???']\n0x15\nnot started\n"


# ---- sensors ----


def test_sensors_have_names_in_firmware_order(board):
    assert list(board.voltages) == ["+12V", "+5V", "Vcore", "+3.3V", "VBAT", "+5VSB"]
    assert list(board.temperatures) == ["System", "Super I/O", "CPU", "Memory"]
    assert list(board.fan_speeds) == ["System Fan", "CPU Fan", "Chassis Fan"]
    assert list(board.currents) == ["+12V", "CPU"]


def test_sensors_are_read_by_name(board):
    assert board.voltages["+12V"] == pytest.approx(11.9856)  # 227 counts of 8 mV, times (56 + 10) / 10
    assert board.temperatures["Memory"] == pytest.approx(37.0)
    assert board.fan_speeds["Chassis Fan"] == 1500
    assert board.currents["CPU"] == pytest.approx(8.7)


def test_sensors_are_a_mapping(board):
    assert dict(board.voltages).keys() == set(board.voltages)
    assert "Vcore" in board.voltages and "+13V" not in board.voltages
    assert len(board.currents) == 2
    assert board.voltages.get("+13V") is None
    assert board.voltages.unit == "V"


def test_an_unknown_sensor_is_a_key_error_with_words(board):
    with pytest.raises(KeyError) as caught:
        board.voltages["+13V"]
    assert isinstance(caught.value, vynlib.NotFound)
    assert caught.value.code == 0x305
    assert str(caught.value) == "voltage: the board has no sensor of that name (code 0x305)"


def test_names_that_are_not_ascii_reach_the_library(board):
    with pytest.raises(vynlib.NotFound):
        board.voltages["\u20ac"]


def test_live_readings_are_asked_for():
    with vynlib.Board(simulate=REFERENCE, live=True) as board:
        assert 225 * 0.0528 - 1e-3 <= board.voltages["+12V"] <= 229 * 0.0528 + 1e-3


# ---- features ----


def test_every_feature_is_offered_and_can_be_read(board):
    assert len(board.features) == 25
    for feature in board.features.values():
        if feature.readable:
            for instance in feature.instances:
                feature.get(instance)


def test_a_feature_is_set_by_name(board):
    wifi = board.features["wifi"]
    assert (wifi.title, wifi.get(), wifi.values()) == ("Wi-Fi", 1, (0, 1))
    wifi.set(0)
    assert wifi.get() == 0


def test_a_feature_has_instances(board):
    port = board.features["com-type"]
    assert (port.instances, port.get(1), port.get(2)) == ((1, 2, 3, 4), 0, 2)
    port.set(1, 3)
    assert (port.get(3), port.get(4)) == (1, 0)
    assert board.features["wifi"].instances == (0,)


def test_a_version_has_two_bytes(board):
    # Straps of 0b101; three entries match.
    assert board.features["board-version"].get() == 0x0305
    assert board.features["board-version"].values() == ()


def test_a_feature_refuses_what_it_does_not_have(board):
    with pytest.raises(vynlib.Error) as caught:
        board.features["wifi"].set(7)
    assert caught.value.code == 0xE04
    with pytest.raises(ValueError, match="the value must be 0 to 255, not 257"):
        board.features["wifi"].set(257)
    with pytest.raises(ValueError, match="the instance must be 0 to 255, not -1"):
        board.features["com-type"].get(-1)
    with pytest.raises(vynlib.Error, match="backlight cannot be read"):
        board.features["backlight"].get()
    with pytest.raises(vynlib.Error, match="at-mode cannot be set"):
        board.features["at-mode"].set(1)


def test_an_unknown_feature_is_a_key_error(board):
    with pytest.raises(vynlib.NotFound, match="the board has no feature 'wi-fi'"):
        board.features["wi-fi"]
    assert "wi-fi" not in board.features


# ---- values ----


def test_values_come_from_the_firmware_table(board, tmp_path):
    """The table that vyntable compiles from the board lists what the board lists."""
    subprocess.run([BUILD / "tools/vyntable/vyntable", "compile", REFERENCE, "-o", tmp_path], check=True,
                   capture_output=True)
    table = next(file for file in tmp_path.iterdir() if file.read_bytes()[:4] == b"IADT").read_bytes()
    entries = _features.entries_of_table(table)
    assert {row.name: _features.values(entries, row, 2) for row in _features.ROWS} == \
           {name: feature.values(2) for name, feature in board.features.items()}
    backlight = next(row for row in _features.ROWS if row.name == "backlight")
    assert _features.values(entries, backlight, 0) == (0, 1, 2, 3, 4)


RECORD = bytes((16, 0, 1, 27, 0, 0, 0)) + bytes(20)  # Wi-Fi, instance 0, value 1, 27 bytes


@pytest.mark.parametrize("tail, found", [
    (RECORD, {16: {0: {1}}}),
    (RECORD[:20], {}),  # reaches beyond the table
    (RECORD[:3] + bytes(24) + RECORD, {}),  # length 0
    (RECORD + b"\x10", {16: {0: {1}}}),  # too short for a head
])
def test_a_walk_over_a_table_ends_where_that_of_the_library_does(tail, found):
    table = b"IADT" + (36 + len(tail)).to_bytes(4, "little") + bytes(28) + tail
    assert _features.entries_of_table(table) == found
    assert _features.entries_of_table(table + RECORD) == found, "what the length does not cover is no part of it"
    assert _features.entries_of_table(table[:10]) == {}


def test_values_are_unknown_without_a_reader(monkeypatch):
    monkeypatch.setattr(_features, "TABLE", pathlib.Path("/nonexistent"))
    monkeypatch.setattr(_features, "_toml_reader", lambda: None)
    assert _features.entries(None) == _features.entries(str(REFERENCE)) == {}
    assert _features.values({}, _features.ROWS[0], 1) == ()


# ---- fans ----


def test_fans_are_listed_without_identifying_entries(board):
    assert list(board.fans) == ["CPU Fan", "System Fan"]
    assert board.fans["CPU Fan"].modes == (0, 1, 2)


def test_a_fan_is_set(board):
    fan = board.fans["System Fan"]
    assert fan.get() == vynlib.FanSetting(mode=1, parameters=(0x80,))
    fan.set(2, 40, 70)
    assert fan.get() == (2, (40, 70))
    fan.set(0)
    assert fan.get() == (0, ())


def test_a_fan_refuses_what_it_does_not_have(board):
    with pytest.raises(vynlib.Error) as caught:
        board.fans["CPU Fan"].set(1, 1, 2)
    assert caught.value.code == 0x1805
    with pytest.raises(vynlib.Error) as caught:
        board.fans["CPU Fan"].set(1, *[0] * 300)
    assert caught.value.code == 0x1805
    with pytest.raises(vynlib.NotFound, match="the board has no fan 'No Fan'"):
        board.fans["No Fan"]


# ---- a board without tables ----


def test_a_bare_board_offers_nothing():
    with vynlib.Board(simulate=BARE) as board:
        assert (board.model, len(board.voltages), len(board.features), len(board.fans)) == ("", 0, 0, 0)
        assert not board.watchdog.offered
        with pytest.raises(vynlib.NotOffered, match="voltage: the board does not offer it"):
            board.voltages["+12V"]
        with pytest.raises(vynlib.NotOffered):
            board.watchdog.start(30)


# ---- threads ----


def test_each_thread_has_its_own_answer_and_its_own_error(board):
    wrong = []

    def work(readings, code):
        for _ in range(300):
            if board.fan_speeds["Chassis Fan"] != 1500:
                wrong.append("reading")
            try:
                readings["x"]
            except vynlib.NotFound as error:
                if error.code != code:
                    wrong.append(error)

    threads = [threading.Thread(target=work, args=arguments)
               for arguments in [(board.voltages, 0x305), (board.currents, 0x1A05)] * 2]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not wrong

#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests of the checks: each must find what it is there for."""
import importlib.machinery
import importlib.util
import json
import pathlib
import tempfile
import unittest

import exports
import hardening
import includes
import licence
import seam


def script(name):
    """A Python script of scripts/, as a module."""
    path = str(pathlib.Path(__file__).parents[2] / "scripts" / name)
    loader = importlib.machinery.SourceFileLoader(name.replace("-", "_"), path)
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


class Includes(unittest.TestCase):
    def offences(self, path, text):
        with tempfile.TemporaryDirectory() as scratch:
            root = pathlib.Path(scratch)
            (root / path).parent.mkdir(parents=True)
            (root / path).write_text(text)
            return list(includes.offences(root))

    def test_finds_an_include_that_points_up(self):
        self.assertEqual([(pathlib.Path("src/hw/Msr.cpp"), "tables/TIADTable.h")],
                         self.offences("src/hw/Msr.cpp", '#include "tables/TIADTable.h"\n'))

    def test_finds_an_include_sideways(self):
        self.assertEqual(1, len(self.offences("src/hw/Msr.cpp", '#include "text/VynString.h"\n')))

    def test_finds_the_public_header_below_the_api(self):
        self.assertEqual(1, len(self.offences("src/tables/TAcpiBase.cpp", "#include <vynlib/vynlib.h>\n")))

    def test_finds_a_tool_that_reaches_behind_the_header(self):
        self.assertEqual(1, len(self.offences("tools/vynctl/main.cpp", '#include "api/Library.h"\n')))

    def test_finds_a_second_source_of_a_slow_header(self):
        self.assertEqual(1, len(self.offences("tools/vynctl/commands/Context.h", "#include <nlohmann/json.hpp>\n")))
        self.assertEqual(1, len(self.offences("boardfile/BoardFile.cpp", "#include <toml++/toml.h>\n")))
        self.assertEqual([], self.offences("tools/commandline/Parse.cpp", "#include <CLI/CLI.hpp>\n"))

    def test_finds_a_tool_that_uses_another_or_more_of_board_files_than_their_description(self):
        for name in ("vyntable/Files.h", "boardfile/BoardFile.h"):
            self.assertEqual(1, len(self.offences("tools/vynctl/main.cpp", f'#include "{name}"\n')))
        self.assertEqual([], self.offences("tools/vynctl/doctor/TableCheck.cpp", '#include "diagnosis/Check.h"\n'))

    def test_finds_a_machine_that_knows_firmware(self):
        for name in ("firmware/Record.h", "layout/AcpiLayout.h", "hw/TReadWrite.h"):
            self.assertEqual(1, len(self.offences("sim/Board.cpp", f'#include "{name}"\n')))

    def test_finds_firmware_that_knows_the_library_or_a_machine(self):
        for name in ("tables/TIADTable.h", "sim/Board.h", "boardfile/BoardFile.h"):
            self.assertEqual(1, len(self.offences("firmware/Record.cpp", f'#include "{name}"\n')))
            self.assertEqual(1, len(self.offences("diagnosis/Check.cpp", f'#include "{name}"\n')))

    def test_finds_tools_benchmarks_and_fuzzers_outside_their_rows(self):
        for path, name in (("tools/vyntable/Explain.cpp", "sim/PortDevice.h"), ("tools/vynprobe/main.cpp", "api/Library.h"),
                           ("tools/vynctl/main.cpp", "sim/Board.h"), ("bench/Main.cpp", "sim/Board.h"),
                           ("fuzz/AcpiFuzz.cpp", "firmware/Record.h"), ("src/layout/Walk.h", "hw/Platform.h")):
            self.assertEqual([(pathlib.Path(path), name)], self.offences(path, f'#include "{name}"\n'))

    def test_finds_a_room_of_vynctl_that_knows_more_than_its_row(self):
        for path, name in (("tools/vynctl/board/Value.h", "commands/Context.h"),
                           ("tools/vynctl/board/Value.h", "view/Table.h"),
                           ("tools/vynctl/view/Table.h", "commands/Context.h"),
                           ("tools/vynctl/view/Table.h", "layout/Walk.h"),
                           ("tools/vynctl/feeding/Feeder.h", "commands/Arguments.h"),
                           ("tools/vynctl/doctor/Tables.h", "board/Library.h"),
                           ("src/api/Sensors.cpp", "board/Sensors.h")):
            self.assertEqual([(pathlib.Path(path), name)], self.offences(path, f'#include "{name}"\n'))

    def test_allows_what_lies_below(self):
        self.assertEqual([], self.offences("src/smbus/TSMBus.cpp", '#include "text/VynString.h"\n#include <vector>\n'))


class Seam(unittest.TestCase):
    def test_finds_headers_and_calls(self):
        self.assertEqual(["sys/io.h", "mmap"], seam.system_uses("#include <sys/io.h>\nvoid* p = mmap(0, 1);\n"))

    def test_finds_qualified_calls(self):
        self.assertEqual(["getenv", "usleep"], seam.system_uses('std::getenv("A"); ::usleep(1);'))

    def test_passes_over_comments_texts_and_other_names(self):
        self.assertEqual([], seam.system_uses('// mmap(1)\n/* system(1) */ f("open(1)"); file.open(x); Reopen(y);'))


class Exports(unittest.TestCase):
    def test_reads_every_kind_of_declaration(self):
        header = "VYNLIB_API int VynLibA(void);\nVYNLIB_API uint64_t VynLibB(void);\nVYNLIB_API void VynLibC(int x,\n int y);\n"
        self.assertEqual({"VynLibA", "VynLibB", "VynLibC"}, exports.declared(header))

    def test_reads_no_comment(self):
        self.assertEqual(set(), exports.declared("/* Call VynLibDllInit() first. */\n"))


class Hardening(unittest.TestCase):
    def test_wants_the_seam_by_plain_names(self):
        plain = hardening.SEAM_CALLS | {"memcpy", "__memcpy_chk", "__stack_chk_fail"}
        self.assertTrue(hardening.plain_seam(plain))
        self.assertFalse(hardening.plain_seam(plain - {"pread"}))
        for fortified in ("__pread_chk", "__pread64_chk", "__open_2", "__openat_2", "__open64_2", "__read_chk"):
            self.assertFalse(hardening.plain_seam(plain | {fortified}), fortified)

    def test_believes_no_mark_that_the_code_belies(self):
        notes = "      Properties: x86 feature: IBT, SHSTK"
        jumps = "00000000 <read@plt>:\n   0:\tendbr64\n"
        self.assertTrue(hardening.branch_tracking(notes, "(INIT_ARRAY)", jumps))
        self.assertFalse(hardening.branch_tracking(notes, "(INIT)", jumps))
        self.assertFalse(hardening.branch_tracking(notes, "", jumps.replace("endbr64", "jmp")))
        self.assertFalse(hardening.branch_tracking("      Properties: x86 feature: SHSTK", "", jumps))

    def test_knows_the_highest_level_of_each_compiler(self):
        for compiler, highest in (({"__GNUC__": "12"}, "3"), ({"__GNUC__": "11"}, "2"),
                                  ({"__GNUC__": "4", "__clang__": "1"}, "3")):
            for level in "23":
                self.assertEqual(level == highest, hardening.fortified(compiler | {"__USE_FORTIFY_LEVEL": level}))


class Licence(unittest.TestCase):
    line = "SPDX-License-Identifier: MIT"

    def offence(self, name, text):
        return licence.offence(pathlib.Path(name), text)

    def test_finds_a_source_without_its_line(self):
        for name, text in (("a.cpp", "// What it holds.\n"), ("a.h", "\n// " + self.line + "\n"), ("a.py", "import sys\n"),
                           ("CMakeLists.txt", "add_library(a)\n"), ("a", "#!/bin/sh\ntrue\n"), ("a.c", "")):
            self.assertRegex(self.offence(name, text), "must begin with", name)

    def test_finds_a_source_that_does_not_say_what_it_holds(self):
        self.assertRegex(self.offence("a.cpp", f"// {self.line}\n#include <a>\n"), "what it holds")

    def test_takes_the_line_of_each_language(self):
        for name, text in (("a.cpp", f"// {self.line}\n// What it holds.\n"), ("a.py", f"# {self.line}\n"),
                           ("a.h", f"/* {self.line} */\n/*\n * What it holds.\n */\n"), ("a", f"#!/bin/sh\n# {self.line}\n"),
                           ("a.toml", "a = 1\n"), ("a.md", "# A\n")):
            self.assertIsNone(self.offence(name, text), name)


class RunTests(unittest.TestCase):
    def count(self, started, results):
        """`started`: {test of ctest: whether it passed}; `results`: {test of ctest: {test: its result}}"""
        with tempfile.TemporaryDirectory() as scratch:
            report = pathlib.Path(scratch) / "results.xml"
            report.write_text("<testsuite>" + "".join(
                f'<testcase name="{name}" status="{"run" if good else "fail"}"/>' for name, good in started.items())
                + "</testsuite>")
            for name, tests in results.items():
                suite = {"name": "Suite", "testsuite": [{"name": test} | result for test, result in tests.items()]}
                (pathlib.Path(scratch) / f"{name}.json").write_text(json.dumps({"testsuites": [suite]}))
            return script("run-tests").count(report, pathlib.Path(scratch))

    good = {"result": "COMPLETED"}
    bad = {"result": "COMPLETED", "failures": [{"failure": "1 is not 2"}]}

    def test_counts_each_test_of_a_program(self):
        self.assertEqual((4, []), self.count({"a": True, "b": True, "c": True}, {"b": {"X": self.good, "Y": self.good}}))

    def test_names_the_failed(self):
        self.assertEqual((1, ["a: Suite.Y", "b"]),
                         self.count({"a": False, "b": False}, {"a": {"X": self.good, "Y": self.bad}}))

    def test_finds_a_program_that_fails_after_its_tests(self):
        self.assertEqual((1, ["a"]), self.count({"a": False}, {"a": {"X": self.good}}))

    def test_counts_what_was_skipped_as_failed(self):
        self.assertEqual((0, ["a: Suite.X"]), self.count({"a": True}, {"a": {"X": {"result": "SKIPPED"}}}))


if __name__ == "__main__":
    unittest.main()

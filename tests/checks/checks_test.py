#!/usr/bin/env python3
"""Tests of the checks: each must find what it is there for."""
import pathlib
import tempfile
import unittest

import exports
import includes
import seam


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
        self.assertEqual(1, len(self.offences("tools/vynctl/Context.h", "#include <nlohmann/json.hpp>\n")))
        self.assertEqual(1, len(self.offences("sim/BoardFile.cpp", "#include <toml++/toml.h>\n")))
        self.assertEqual([], self.offences("tools/commandline/Parse.cpp", "#include <CLI/CLI.hpp>\n"))

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


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The man pages as man and mandoc read them: found by name, without a warning, and with what the tools and docs/ say."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

SOURCE, BUILD = (pathlib.Path(os.environ[name]) for name in ("VYNLIB_SOURCE", "VYNLIB_BUILD"))
OTHERS = {"vynctl.1", "vyntable.1", "vynlib.3", "vynlib-board.5"}


def run(*command, **options):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)


def subcommands():
    said = run(BUILD / "tools/vynctl/vynctl", "--help").stdout
    return re.findall(r"^  (\w+) ", said[said.index("Subcommands:"):said.index("Without")], re.MULTILINE)


class ManPages(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="vyn-man-")
        cls.addClassCleanup(folder.cleanup)
        prefix = pathlib.Path(folder.name)
        for component in ("tools", "dev"):
            subprocess.run(["cmake", "--install", BUILD, "--prefix", prefix, "--component", component], check=True,
                           stdout=subprocess.DEVNULL)
        cls.folder = prefix / "share/man"
        cls.pages = {page.name: page for page in cls.folder.rglob("*.[0-9]")}

    def read(self, name):
        """The page's words as a reader sees them, on wide paper."""
        page = self.pages[name]
        done = run("man", "--local-file", page, env={"LC_ALL": "C.UTF-8", "MANWIDTH": "2000", "PATH": os.environ["PATH"],
                                                     "MAN_KEEP_FORMATTING": ""})
        self.assertEqual((0, ""), (done.returncode, done.stderr))
        return re.sub(r".\x08", "", done.stdout)

    def test_each_subcommand_has_its_page(self):
        names = subcommands()
        self.assertIn("watchdog", names)
        self.assertEqual(OTHERS | {f"vynctl-{name}.1" for name in names}, set(self.pages))

    def test_man_finds_them_by_name(self):
        for name, page in self.pages.items():
            done = run("man", "--where", page.stem, env={"MANPATH": str(self.folder), "PATH": os.environ["PATH"]})
            self.assertEqual(str(page), done.stdout.strip(), name + done.stderr)

    def test_whatis_reads_their_names(self):
        for page in self.pages.values():
            done = run("lexgrog", page)
            self.assertRegex(done.stdout, rf'^{re.escape(str(page))}: "{page.stem} - .+"\n$')

    def test_groff_and_mandoc_find_nothing_wrong(self):
        # In pages: on the one endless page of a terminal, groff warns of cells that would have to be moved to the next.
        environment = {"LC_ALL": "C.UTF-8", "MANWIDTH": "80", "MANROFFOPT": "-rcR=0", "PATH": os.environ["PATH"]}
        for name, page in self.pages.items():
            done = run("man", "--warnings=w", "--local-file", page, env=environment)
            self.assertEqual((0, ""), (done.returncode, done.stderr), name)
            done = run("mandoc", "-T", "lint", "-W", "warning", page)
            self.assertEqual((0, ""), (done.returncode, done.stdout), name)

    def test_no_marks_are_left_of_the_texts_they_came_from(self):
        for name in self.pages:
            marks = re.findall(r"\]\(.*|\*\*\w.*|^\s*#+ .*|\\[<>_\[].*|`.*|&lt;.*|<br.*", self.read(name), re.MULTILINE)
            self.assertEqual([], marks, name)

    def test_every_option_is_told(self):
        for name in subcommands():
            said = run(BUILD / "tools/vynctl/vynctl", name, "--help").stdout
            read = self.read(f"vynctl-{name}.1")
            for option in re.findall(r"^  (-\S+)", said, re.MULTILINE):
                self.assertTrue(option in read, f"{name}: {option}")

    def test_words_of_the_tools_and_documents(self):
        for page, *wanted in (
                ("vynctl.1", "vynctl [OPTIONS] SUBCOMMAND", "EXIT STATUS", "vynctl-watchdog(1)", "--lock-file"),
                ("vynctl-watchdog.1", "vynctl watchdog feed [OPTIONS] [SECONDS]", "--then-stop",
                 "vynctl watchdog feed 60 --every 20 --then-stop", "A paused terminal, a full pipe"),
                ("vynctl-set.1", "change one feature state", "jgpio-power"),
                ("vyntable.1", "vyntable compile", "-MF", "Tables come to the folder all together or not at all",
                 "Names in tables are shown", "vynlib-board(5)"),
                ("vynlib.3", "int VynLibWDTSetInterval(uint8_t interval, uint8_t selector);", "#include <vynlib/vynlib.h>",
                 "Every call leaves a code in the last error", "ME descriptor", "VYNLIB_PERFORM"),
                ("vynlib-board.5", "[[feature]]",
                 '{ port = 0x500, set = "write and or", and = 0xFE, or = 0x01 }', "VYNLIB_LIVE=1")):
            read = " ".join(self.read(page).split())
            for words in wanted:
                self.assertTrue(words in read, f"{page}: {words}")


if __name__ == "__main__":
    unittest.main()

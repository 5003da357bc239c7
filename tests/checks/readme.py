#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compiles the C programs of README.md as a reader would paste them, and runs them on the reference board: from the build
folder, and after the lines of the section on installing.

usage: readme.py PROJECT_ROOT BUILD_FOLDER C_COMPILER SIMULATED_LIBRARY
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile


def programs(readme):
    return re.findall(r"^```c\n(.*?)^```", readme, re.MULTILINE | re.DOTALL)


def install_lines(readme):
    section = re.search(r"^## Install\n(.*?)^## ", readme, re.MULTILINE | re.DOTALL).group(1)
    from_source = section.partition("\n### ")[0]
    return [line.strip() for line in from_source.splitlines() if line.startswith("    ")]


def runs(binary, library_folder, root):
    """Whether the program shows a voltage."""
    environment = os.environ | {"LD_LIBRARY_PATH": str(library_folder),
                                "VYNLIB_BOARD": str(root / "boards/reference.toml")}
    result = subprocess.run([binary], env=environment, capture_output=True, text=True, check=False)
    print(result.stdout, result.stderr, sep="", end="")
    return result.returncode == 0 and re.search(r"^.+: \d+\.\d+ V$", result.stdout, re.MULTILINE) is not None


def from_the_build(program, root, compiler, library, scratch):
    """Whether the program can be built and works. Its lock is one of the test's own."""
    text = program.replace("VYNLIB_LOCK_PATH", f'"{scratch}/lock"')
    binary = scratch / "program"
    # The lock needs more than C.
    standard = "-std=gnu99" if "lock.h" in program else "-std=c99"
    subprocess.run([compiler, standard, "-Wall", "-Wextra", "-Werror", "-x", "c", "-", "-x", "none", "-I", root / "include",
                    library, "-o", binary], input=text, text=True, check=True)
    return runs(binary, library.parent, root)


def pasted(line, build, compiler, prefix):
    """A line as it is run here: without root, the build at hand into a folder of its own, over the simulated library."""
    for one, other in (("sudo ", ""), ("ldconfig", f"/usr/sbin/ldconfig -n '{prefix}/lib'"), ("cc ", f"{compiler} "),
                       ("--install build-release", f"--install '{build}' --prefix '{prefix}'"), ("vynlib)", "vynlib-sim)")):
        line = line.replace(one, other)
    return line


def from_the_prefix(program, lines, root, build, compiler, scratch):
    """The first two lines, which prepare and build, are only looked at: this build has done the same."""
    presets = subprocess.run(["cmake", "--list-presets=all"], cwd=root, check=True, capture_output=True, text=True).stdout
    if len(re.findall(r'^ +"release"', presets, re.MULTILINE)) != 2 or not os.access(root / lines[0].split()[0], os.X_OK):
        print("no such preset or script:", *lines[:2], sep="\n")
        return False
    (scratch / "first.c").write_text(program)
    prefix = scratch / "prefix"
    environment = os.environ | {"PKG_CONFIG_PATH": str(prefix / "lib/pkgconfig")}
    for line in lines[2:]:
        subprocess.run(pasted(line, build, compiler, prefix), shell=True, cwd=scratch, env=environment, check=True,
                       stdout=subprocess.DEVNULL)
    return runs(scratch / "first", prefix / "lib", root)


def main():
    root, build, compiler, library = pathlib.Path(sys.argv[1]), *sys.argv[2:4], pathlib.Path(sys.argv[4])
    readme = (root / "README.md").read_text()
    found = programs(readme)
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        works = [from_the_build(program, root, compiler, library, scratch) for program in found]
        works.append(from_the_prefix(found[0], install_lines(readme), root, build, compiler, scratch))
    return 0 if len(works) == 3 and all(works) else 1


if __name__ == "__main__":
    sys.exit(main())

# SPDX-License-Identifier: MIT
"""The guest's initial file system: BusyBox, kernel modules, the programs under test and what they link with."""
import pathlib
import re
import shutil
import subprocess

INIT = pathlib.Path(__file__).parent / "guest/init"
PROGRAM_DIR = "usr/bin"
LIBRARY_DIR = "usr/lib/vynlib"
ELF = b"\x7fELF"


def linked_libraries(binary):
    listing = subprocess.run(["ldd", str(binary)], check=True, capture_output=True, text=True).stdout
    return [pathlib.Path(path) for path in re.findall(r"(/\S+) \(0x", listing)]


def copy(source, target):
    target.parent.mkdir(parents=True, exist_ok=True)
    shutil.copy(source.resolve(), target)


def add_busybox(root):
    busybox = root / "bin/busybox"
    copy(pathlib.Path(shutil.which("busybox")), busybox)
    applets = subprocess.run([busybox, "--list"], check=True, capture_output=True, text=True).stdout.split()
    for applet in set(applets) - {"busybox"}:
        (root / "bin" / applet).symlink_to("busybox")


def add_modules(root, modules, names):
    """The named modules, and those they depend on, where modprobe finds them."""
    target = root / "lib/modules" / modules.name
    copy(modules / "modules.dep", target / "modules.dep")
    missing = set(names)
    for line in (target / "modules.dep").read_text().splitlines():
        module, _, others = line.partition(":")
        if pathlib.Path(module).stem in names:
            missing.discard(pathlib.Path(module).stem)
            for path in (module, *others.split()):
                copy(modules / path, target / path)
    if missing:
        raise SystemExit(f"the kernel has no module {', '.join(sorted(missing))}")


def add_binary(root, binary, directory):
    """A program or library without its debug sections, and every library it links with but those under test. A script is
    copied as it is."""
    target = root / directory / binary.name
    copy(binary, target)
    if binary.read_bytes()[:4] != ELF:
        return
    subprocess.run(["strip", "--strip-debug", str(target)], check=True)
    for library in linked_libraries(binary):
        if not library.name.startswith("libvynlib"):
            copy(library, root / str(library).lstrip("/"))


def build(root, modules, names, command, programs, libraries):
    """Fills the empty directory `root` with the modules of these names, the command that the guest runs, and the rest.
    Returns the archive of it."""
    for directory in ("dev", "proc", "sys", "tmp", "run/lock", "bin"):
        (root / directory).mkdir(parents=True)
    add_busybox(root)
    add_modules(root, modules, names)
    copy(INIT, root / "init")
    (root / "command").write_text(command + "\n")
    for program in programs:
        add_binary(root, program, PROGRAM_DIR)
    for library in libraries:
        add_binary(root, library, LIBRARY_DIR)
    archive = root.with_suffix(".cpio")
    paths = "\n".join(str(path.relative_to(root)) for path in sorted(root.rglob("*")))
    with archive.open("wb") as output:
        subprocess.run(["cpio", "--quiet", "-o", "-H", "newc"], cwd=root, input=paths.encode(), stdout=output, check=True)
    return archive

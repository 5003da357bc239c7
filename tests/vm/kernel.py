#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Unpacks what a boot needs of one of Debian's stock kernels into a cache directory, without installing it.

usage: kernel.py CACHE_DIR META_PACKAGE        prints the path of the kernel image
"""
import fcntl
import pathlib
import re
import subprocess
import sys
import tarfile
import tempfile
import zlib

WANTED = re.compile(r"\./(boot/vmlinuz-|lib/modules/[^/]+/kernel/(arch/x86/kernel|drivers/(i2c|mfd|watchdog))/).+")


def run(*command, cwd=None):
    return subprocess.run(command, cwd=cwd, check=True, stdout=subprocess.PIPE, text=True).stdout


def kernel_package(meta_package):
    """The package that the meta package stands for today."""
    found = re.search(r"Depends: (linux-image-\S+)", run("apt-cache", "depends", meta_package))
    if found is None:
        raise LookupError(f"{meta_package} stands for no kernel")
    return found.group(1)


def unpack(package, root):
    """Extracts the image and the wanted modules; whole, the modules of a kernel take some 300 MB."""
    command = ["dpkg-deb", "--fsys-tarfile", str(package)]
    with subprocess.Popen(command, stdout=subprocess.PIPE) as unpacker:
        with tarfile.open(fileobj=unpacker.stdout, mode="r|") as archive:
            for member in archive:
                if WANTED.match(member.name):
                    archive.extract(member, root)
        unpacker.stdout.read()  # what pads the archive
    if unpacker.returncode != 0:
        raise subprocess.CalledProcessError(unpacker.returncode, command)


def files(root):
    """The kernel image under `root`, and the root of the modules that belong to it."""
    image, = root.glob("boot/vmlinuz-*")
    return image, root / "lib/modules" / image.name.removeprefix("vmlinuz-")


def update_lists():
    sudo = [] if run("id", "-u").strip() == "0" else ["sudo"]
    run(*sudo, "apt-get", "update")


def download(meta_package, directory):
    """Fetches the kernel's package into an empty directory."""
    try:
        run("apt-get", "download", kernel_package(meta_package), cwd=directory)
    except (subprocess.CalledProcessError, LookupError):
        update_lists()  # Package lists that are missing or out of date name no file that can be had.
        run("apt-get", "download", kernel_package(meta_package), cwd=directory)
    package, = directory.glob("*.deb")
    return package


def fill(meta_package, target):
    """Fills `target`, which comes into being only when it is complete."""
    with tempfile.TemporaryDirectory(dir=target.parent) as scratch:
        scratch = pathlib.Path(scratch)
        root = scratch / "root"
        unpack(download(meta_package, scratch), root)
        run("busybox", "depmod", "-b", str(root), files(root)[1].name)
        root.rename(target)


def cached(cache, meta_package):
    """Paths of the kernel image and of its modules' root, downloaded when the cache holds none. Several boots may start at
    once: the first downloads, the others wait."""
    cache.mkdir(parents=True, exist_ok=True)
    root = cache / f"{meta_package}-{zlib.crc32(WANTED.pattern.encode()):08x}"  # another choice of files, another place
    with (cache / "lock").open("w") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        if not root.exists():
            fill(meta_package, root)
    return files(root)


if __name__ == "__main__":
    print(cached(pathlib.Path(sys.argv[1]), sys.argv[2])[0])

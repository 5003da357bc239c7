#!/usr/bin/env python3
"""Unpacks Debian's stock cloud kernel into a cache directory, without installing it.

usage: kernel.py CACHE_DIR        prints the path of the kernel image
"""
import pathlib
import re
import subprocess
import sys

META_PACKAGE = "linux-image-cloud-amd64"


def run(*command, cwd=None):
    return subprocess.run(command, cwd=cwd, check=True, capture_output=True, text=True).stdout


def kernel_package():
    """The package that the meta package stands for today."""
    depends = run("apt-cache", "depends", META_PACKAGE)
    return re.search(r"Depends: (linux-image-\S+)", depends).group(1)


def download(cache):
    run("apt-get", "download", kernel_package(), cwd=cache)
    for package in sorted(cache.glob("*.deb")):
        run("dpkg-deb", "-x", str(package), str(cache / "root"))
        package.unlink()


def update_lists():
    sudo = [] if run("id", "-u").strip() == "0" else ["sudo"]
    run(*sudo, "apt-get", "update")


def image(cache):
    """Path of the kernel image, downloaded when the cache holds none."""
    cache.mkdir(parents=True, exist_ok=True)
    pattern = "root/boot/vmlinuz-*"
    if not list(cache.glob(pattern)):
        try:
            download(cache)
        except (subprocess.CalledProcessError, AttributeError):
            update_lists()  # Package lists that are missing or out of date name no file that can be had.
            download(cache)
    return sorted(cache.glob(pattern))[-1]


def modules(cache):
    """Root of the modules that belong to the kernel image."""
    release = image(cache).name.removeprefix("vmlinuz-")
    return cache / "root/lib/modules" / release


if __name__ == "__main__":
    print(image(pathlib.Path(sys.argv[1])))

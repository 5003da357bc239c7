# SPDX-License-Identifier: MIT
"""The kinds of firmware that a virtual machine can have: one row each, and how each gets the board's tables."""
import dataclasses
import pathlib
import struct

TABLES_BYTES = 128 << 10  # at the end of memory, where SeaBIOS puts its tables
SMBIOS_TYPE = 0xDD        # in the range left to makers of firmware
SMBIOS_HANDLE = 0xD000
BIOS_AREA = 0xF0000
OVMF = pathlib.Path("/usr/share/OVMF")


def smbios_record(record, scratch):
    """The BIOS information record in an SMBIOS structure, which SeaBIOS copies below 1 MiB."""
    path = scratch / "smbios"
    path.write_bytes(struct.pack("<BBH", SMBIOS_TYPE, 4 + record.stat().st_size, SMBIOS_HANDLE)
                     + record.read_bytes() + b"\0\0")
    return ["-smbios", f"file={path}"]


def rom_record(record, _):
    """The BIOS information record in the ROM below 1 MiB, where OVMF keeps nothing of its own."""
    return ["-device", f"loader,file={record},addr={BIOS_AREA:#x},force-raw=on"]


@dataclasses.dataclass(frozen=True)
class Firmware:
    """`qemu`: arguments that choose it; `kernel`: words for the kernel, given the machine's memory in bytes; `record`: the
    arguments that put the BIOS information record below 1 MiB."""
    qemu: tuple = ()
    kernel: object = lambda memory: []
    record: object = smbios_record


KINDS = {
    # Calls the tables' memory reserved, which /dev/mem serves.
    "seabios": Firmware(),
    # As the firmware of real boards calls it. A stock kernel hides that from /dev/mem.
    "seabios-acpi-data": Firmware(kernel=lambda memory: [f"memmap={TABLES_BYTES:#x}#{memory - TABLES_BYTES:#x}"]),
    # UEFI: ACPI data too, and no root pointer below 1 MiB.
    "ovmf": Firmware(qemu=("-drive", f"if=pflash,format=raw,readonly=on,file={OVMF / 'OVMF_CODE_4M.fd'}",
                           "-drive", f"if=pflash,format=raw,snapshot=on,file={OVMF / 'OVMF_VARS_4M.fd'}"),
                     record=rom_record),
}


def tables(kind, directory, scratch):
    """QEMU's arguments for the files that `vyntable compile` wrote into `directory`; none without one."""
    if directory is None:
        return []
    files = [word for name in ("iadt.bin", "iamt.bin") for word in ("-acpitable", f"file={directory / name}")]
    return files + kind.record(directory / "biosinfo.bin", scratch)

# SPDX-License-Identifier: MIT
"""Firmware bytes: laying tables out in memory, and filing function description records into lists."""

HEADER = 36
RECORD_HEADER = 27
ROOT_POINTER = 0xE0000
BIOS_RECORD = 0xE0040
TABLES = 0x7F000000
SPACING = 0x10000
LARGEST_TABLE = 16 << 20  # bytes; a larger one is passed over

# Record type: list, of the types that carry access commands.
LISTS = {
    1: 1, 5: 13, 6: 14, 7: 16, 8: 17, 9: 18, 10: 19, 11: 20, 12: 21, 13: 22, 14: 23, 15: 24, 16: 25, 17: 26, 18: 27,
    19: 28, 20: 29, 21: 30, 22: 31, 23: 32, 24: 33, 25: 36, 26: 37, 27: 15, 28: 38, 29: 40, 30: 41, 32: 42, 33: 39,
    34: 34, 35: 35,
}


class Entry:
    """What lies at a record's place: one shorter than its header takes what it lacks from the bytes that follow."""

    def __init__(self, rest, length):
        self.index, self.value, self.length = rest[1], rest[2], length
        self.body = bytearray(rest[RECORD_HEADER:length])


def file_records(table, lists):
    """Appends the records of one table to `lists` (list number: entries)."""
    length = int.from_bytes(table[4:8], "little")
    at, remaining = HEADER, length - HEADER
    while remaining >= 7:
        size = int.from_bytes(table[at + 3:at + 7], "little")
        if size == 0 or size > remaining:
            return
        if table[at] in LISTS:
            lists.setdefault(LISTS[table[at]], []).append(Entry(table[at:], size))
        at, remaining = at + size, remaining - size


def seen_table(table):
    """The table as the library copies it: as long as its header says, all ones behind its last byte."""
    length = int.from_bytes(table[4:8], "little")
    return table[:length].ljust(length, b"\xFF")


def lists_of(tables):
    lists = {}
    for table in tables:
        length = int.from_bytes(table[4:8], "little")
        if table[:4] == b"IADT" and HEADER <= length <= LARGEST_TABLE:
            file_records(seen_table(table), lists)
    return lists


def build_record(record):
    """{type, index, value, body (hex), length (optional)} as bytes."""
    body = bytes.fromhex(record["body"])
    length = record.get("length", RECORD_HEADER + len(body))
    head = bytes([record["type"], record["index"], record["value"]]) + length.to_bytes(4, "little")
    return head + bytes(20) + body


def build_table(table):
    """{records, tail (hex, optional), length (optional), change (place and value of a byte, optional)} as the bytes of
    a function description table."""
    content = b"".join(build_record(record) for record in table["records"]) + bytes.fromhex(table.get("tail", ""))
    result = bytearray(acpi_table(b"IADT", content, table.get("length")))
    if "change" in table:
        result[table["change"][0]] = table["change"][1]
    return bytes(result)


def acpi_table(signature, content, length=None):
    length = HEADER + len(content) if length is None else length
    table = bytearray(signature + length.to_bytes(4, "little") + bytes(28) + content)
    table[9] = checksum(table)
    return bytes(table)


def checksum(content):
    return -sum(content) & 0xFF


def memory_image(tables):
    """[address, hex] of a root pointer, a root table and the given tables, and of a BIOS record."""
    places = [TABLES + SPACING * (i + 1) for i in range(len(tables))]
    root = bytearray(b"RSD PTR \0VYNMAR\0" + TABLES.to_bytes(4, "little") + bytes(16))
    root[8] = checksum(root[:20])
    bios = bytearray(b"$CN1368$\0\0MODEL".ljust(64, b"\0"))
    bios[9] = checksum(bios)
    listing = acpi_table(b"RSDT", b"".join(place.to_bytes(4, "little") for place in places))
    pieces = [(ROOT_POINTER, root), (BIOS_RECORD, bios), (TABLES, listing), *zip(places, tables)]
    return [[address, bytes(content).hex()] for address, content in pieces]

// SPDX-License-Identifier: MIT
/// Tables inside other files: the text of a dump, and firmware images.
#pragma once

#include <vector>

#include "diagnosis/Image.h"
#include "layout/LittleEndian.h"

namespace vyntable {

using diagnosis::Image;

/// Whether the bytes are a dump of ACPI tables in text: a line "IADT @ 0x00000000BFFE1000" for each table, then lines
/// of up to 16 bytes, "    0010: 56 59 …  VY…".
bool IsDump(layout::View bytes);
/// The tables of a dump that belong to the library. `name` is the dump's file. Throws BadInput where lines are missing.
std::vector<Image> TablesOfDump(layout::View bytes, const std::string& name);

/// The tables that lie in a firmware image as they are: signature, a length that fits, and a right checksum or records
/// that end where the table does.
std::vector<Image> TablesInside(layout::View bytes, const std::string& name);

}  // namespace vyntable

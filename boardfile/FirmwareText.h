// SPDX-License-Identifier: MIT
/// Tables as the text of board files.
#pragma once

#include <string>

#include "layout/LittleEndian.h"

namespace boardfile {

/// Each returns TOML that compiles to exactly the bytes given. The tables have at least the 36 bytes of their header.
std::string IadtText(layout::View iadt);
std::string IamtText(layout::View iamt);
std::string BiosInfoText(layout::View biosInfo);

/// "06 A0 00", for a line of text.
std::string Hex(layout::View bytes);

}  // namespace boardfile

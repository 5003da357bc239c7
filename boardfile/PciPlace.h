// SPDX-License-Identifier: MIT
/// Places of PCI functions in board files.
#pragma once

#include <cstdint>
#include <string_view>

#include "boardfile/TomlSection.h"

namespace boardfile {

struct PciPlace {
  uint8_t bus, device, function;
};

/// Bus, device and function of "00:1f.3"; throws BoardFileError.
PciPlace ReadPciPlace(TomlSection* section, std::string_view key);

}  // namespace boardfile

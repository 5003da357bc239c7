// SPDX-License-Identifier: MIT
/// Where a PCI function sits, and how a caller packs that into 16 bits.
#pragma once

#include <cstdint>

namespace hw {

struct Location {
  uint8_t bus, device, function;
};

/// The bus in the high byte, then five bits of the device and three of the function.
constexpr Location Decode(uint16_t bdf) {
  return {static_cast<uint8_t>(bdf >> 8), static_cast<uint8_t>(bdf >> 3 & 31), static_cast<uint8_t>(bdf & 7)};
}

}  // namespace hw

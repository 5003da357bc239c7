// SPDX-License-Identifier: MIT
/// The byte sum that firmware structures bring to 0.
#pragma once

#include <cstddef>
#include <cstdint>

namespace layout {

/// The sum of `count` bytes modulo 256; 0 for none.
constexpr uint8_t ByteSum(const uint8_t* bytes, size_t count) {
  uint8_t sum = 0;
  for (size_t i = 0; i < count; ++i) sum = static_cast<uint8_t>(sum + bytes[i]);
  return sum;
}

}  // namespace layout

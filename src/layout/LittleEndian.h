// SPDX-License-Identifier: MIT
/// The one place that knows the byte order of firmware data and of multi-byte registers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace layout {

inline uint16_t Load16(const void* bytes) {
  uint16_t value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

inline uint32_t Load32(const void* bytes) {
  uint32_t value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

inline uint64_t Load64(const void* bytes) {
  uint64_t value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

/// Firmware bytes that somebody else owns.
using View = std::span<const uint8_t>;

/// A number of `size` bytes, at most 8; bytes beyond the end count as 0.
constexpr uint64_t Load(View bytes, size_t offset, size_t size) {
  uint64_t value = 0;
  for (size_t i = 0; i < size && offset + i < bytes.size(); ++i) value |= uint64_t{bytes[offset + i]} << (8 * i);
  return value;
}

inline void Store32(void* bytes, uint32_t value) { std::memcpy(bytes, &value, sizeof value); }

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "x86-64 only");

}  // namespace layout

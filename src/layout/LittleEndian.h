/// The one place that knows the byte order of firmware data and of multi-byte registers.
#pragma once

#include <cstdint>
#include <cstring>

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

inline void Store32(void* bytes, uint32_t value) { std::memcpy(bytes, &value, sizeof value); }

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "x86-64 only");

}  // namespace layout

// SPDX-License-Identifier: MIT
/// A vendor table in a buffer of exactly its length.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <span>

#include "layout/LittleEndian.h"

namespace fuzz {

constexpr size_t kHeaderBytes = 36;

inline std::unique_ptr<unsigned char[]> Table(const char* signature, std::span<const uint8_t> records) {
  const size_t length = kHeaderBytes + records.size();
  auto table = std::make_unique<unsigned char[]>(length);
  std::memcpy(table.get(), signature, 4);
  layout::Store32(table.get() + 4, static_cast<uint32_t>(length));
  std::copy(records.begin(), records.end(), table.get() + kHeaderBytes);
  return table;
}

}  // namespace fuzz

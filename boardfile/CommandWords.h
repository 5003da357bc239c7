// SPDX-License-Identifier: MIT
/// The words that board files have for control bits and units, and the bytes that no word stands for.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "layout/AccessCommand.h"
#include "layout/RecordLayout.h"

namespace boardfile {

/// Words of the `get` and `set` keys of a command with their control bits, for one direction.
struct ControlWord {
  std::string_view word;
  uint16_t get, set;
};
inline constexpr ControlWord kControlWords[] = {
    {"read", layout::kGetReads, layout::kSetReads},
    {"write", layout::kGetWrites, layout::kSetWrites},
    {"and", layout::kGetAnd, layout::kSetAnd},
    {"or", layout::kGetOr, layout::kSetOr},
};

struct DelayWord {
  std::string_view word;
  uint8_t unit;
};
inline constexpr DelayWord kDelayWords[] = {
    {"us", layout::kMicroseconds}, {"ms", layout::kMilliseconds}, {"s", layout::kSeconds}};

/// The bits of a control word that words and the argument mode stand for.
inline constexpr uint16_t kNamedControl = [] {
  uint16_t bits = layout::kArgumentMode;
  for (const ControlWord& row : kControlWords) bits = static_cast<uint16_t>(bits | row.get | row.set);
  return bits;
}();

/// Offsets of the bytes of a command that belong to none of its fields, in their order.
inline std::vector<uint8_t> UnusedBytes(const layout::CommandLayout& row) {
  std::vector<uint8_t> offsets;
  for (uint8_t offset = layout::kCommandPrefixBytes; offset < row.length; ++offset) {
    bool used = false;
    for (const layout::CommandField& field : {row.address, row.second, row.third, row.reg, row.andMask, row.orMask,
                                              row.expected, row.argument, row.unit, row.count})
      used = used || (offset >= field.offset && offset < field.offset + field.bytes);
    if (!used) offsets.push_back(offset);
  }
  return offsets;
}

/// The names that `function` may have.
inline std::vector<std::string> FeatureNames() {
  std::vector<std::string> names;
  for (const layout::RecordType& row : layout::kRecordTypes)
    if (!row.IsSensor()) names.emplace_back(row.name);
  return names;
}

}  // namespace boardfile

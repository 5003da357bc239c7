/// The words that board files have for control bits and units.
#pragma once

#include <cstdint>
#include <string_view>

#include "layout/AccessCommand.h"

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

}  // namespace boardfile

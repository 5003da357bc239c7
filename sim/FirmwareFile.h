/// The firmware part of a board file: function description and board information tables, the BIOS information record,
/// and where they lie in memory.
#pragma once

#include <map>
#include <string>

#include "sim/TableImage.h"
#include "sim/TomlSection.h"

namespace sim {

/// What vyntable writes; a table that the file does not mention is empty.
struct Firmware {
  Bytes iadt, iamt, biosInfo;
  uint32_t biosInfoAddress = 0;
};

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

/// Units of delays as board files write them.
struct DelayWord {
  std::string_view word;
  uint8_t unit;
};
inline constexpr DelayWord kDelayWords[] = {
    {"us", layout::kMicroseconds}, {"ms", layout::kMilliseconds}, {"s", layout::kSeconds}};

/// Reads [bios], [iadt], [iamt], [[feature]], [[sensor]], [[record]] and [sequences] of the file's root; throws
/// BoardFileError.
Firmware ReadFirmware(TomlSection* root);

/// Reads [acpi] and puts root pointer and tables into the board's memory, the BIOS information record as well.
void PlaceFirmware(TomlSection* root, const Firmware& firmware, Board* board);

/// Bus, device and function of "00:1f.3"; throws BoardFileError.
struct PciPlace {
  uint8_t bus, device, function;
};
PciPlace ReadPciPlace(TomlSection* section, std::string_view key);

}  // namespace sim

// SPDX-License-Identifier: MIT
// "bus:device.function" as three numbers.
#include "boardfile/PciPlace.h"

#include <charconv>
#include <string>

namespace boardfile {

PciPlace ReadPciPlace(TomlSection* section, std::string_view key) {
  const std::string text = section->NeedText(key, 16);
  unsigned parts[3] = {};
  const char* cursor = text.data();
  const char* end = cursor + text.size();
  const char separators[3] = {':', '.', '\0'};
  for (size_t i = 0; i < 3; ++i) {
    const auto [next, error] = std::from_chars(cursor, end, parts[i], 16);
    const bool separated = i == 2 ? next == end : next != end && *next == separators[i];
    if (error != std::errc() || !separated || parts[i] > 0xFF) section->Fail(key, "bus:device.function, \"00:1f.3\"");
    cursor = next + 1;
  }
  return {static_cast<uint8_t>(parts[0]), static_cast<uint8_t>(parts[1]), static_cast<uint8_t>(parts[2])};
}

}  // namespace boardfile

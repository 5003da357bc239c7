// SPDX-License-Identifier: MIT
// Fans by their configuration blocks, and the watchdog as the hardware has it.
#include "board/Controls.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

#include "board/Features.h"
#include "view/Text.h"

namespace vynctl {
namespace {

constexpr uint8_t kAskForMode = 255;
constexpr uint8_t kLargestCount = 254;
constexpr size_t kBlockBytes = 256;
constexpr unsigned kKnownModes = 3;

Value Blank(const std::string& rawName, const char* part, const char* title) {
  const std::string name = Printable(Trim(rawName));
  return {
      .id = fmt::format("fan/{}/{}", IdPart(name), part), .name = fmt::format("{} {}", name, title), .quantity = part};
}

Value ReadModes(const Library& library, const std::string& rawName) {
  Value value = Blank(rawName, "modes", "modes");
  uint8_t mask = 0;
  library.Functions().GetFANModeSupport(rawName.c_str(), &mask);
  if (library.LastError() != VYNLIB_OK) return Failed(value, library.LastError());
  std::vector<uint8_t> modes;
  for (uint8_t mode = 0; mode < kKnownModes; ++mode) {
    if ((mask >> mode) & 1) modes.push_back(mode);
  }
  value.data = modes;
  return value;
}

/// Asks for the current mode first, then for its parameters.
void ReadCurrent(const Library& library, Fan& fan) {
  std::array<uint8_t, kBlockBytes> block{};
  uint8_t count = kAskForMode;
  const auto read = library.Functions().GetFANConfig;
  if (read(fan.rawName.c_str(), block.data(), &count, VYNLIB_PERFORM) == 0) {
    fan.mode = Failed(fan.mode, library.LastError());
    fan.parameters = Failed(fan.parameters, library.LastError());
    return;
  }
  fan.mode.data = int64_t{block[0]};
  if (count > 1 && read(fan.rawName.c_str(), block.data(), &count, VYNLIB_PERFORM) == 0) {
    fan.parameters = Failed(fan.parameters, library.LastError());
    return;
  }
  fan.parameters.data = std::vector<uint8_t>(block.begin() + 1, block.begin() + std::max<uint8_t>(count, 1));
}

/// The name of an entry that only identifies the fan's I/O chip ('vynctl chip fan NAME'): it contains "Id" and has no
/// modes. Touches no hardware.
bool IsIdentifying(const Library& library, const std::string& rawName) {
  return rawName.find("Id") != std::string::npos && ReadModes(library, rawName).state == State::kUnavailable;
}

}  // namespace

std::vector<std::string> FanNames(const Library& library) {
  std::vector<std::string> names = ListNames(library.Functions().GetFanConfigNames);
  if (names.empty()) return names;
  std::erase_if(names, [&](const std::string& name) { return IsIdentifying(library, name); });
  return names;
}

Fan ReadFan(const Library& library, const std::string& rawName) {
  Fan fan{.rawName = rawName,
          .name = Printable(Trim(rawName)),
          .modes = ReadModes(library, rawName),
          .mode = Blank(rawName, "mode", "mode"),
          .parameters = Blank(rawName, "parameters", "parameters")};
  ReadCurrent(library, fan);
  return fan;
}

std::vector<Fan> ReadFans(const Library& library) {
  std::vector<Fan> fans;
  for (const std::string& name : FanNames(library)) fans.push_back(ReadFan(library, name));
  return fans;
}

std::vector<Value> FanValues(const std::vector<Fan>& fans) {
  std::vector<Value> values;
  for (const Fan& fan : fans) values.insert(values.end(), {fan.modes, fan.mode, fan.parameters});
  MakeIdsUnique(values);
  return values;
}

uint64_t SetFan(const Library& library, const std::string& rawName, const std::vector<uint8_t>& block) {
  const auto count = static_cast<uint8_t>(block.size());
  if (library.Functions().SetFANConfig(rawName.c_str(), block.data(), count, VYNLIB_PERFORM) != 0) return VYNLIB_OK;
  return library.LastError();
}

std::optional<unsigned> ParameterCount(const Library& library, const std::string& rawName, uint8_t mode) {
  constexpr uint64_t kOtherCount = (VYNLIB_FAMILY_FAN_CONFIG << 8) | 0x05;
  for (uint8_t count = 1; count <= kLargestCount; ++count) {
    std::array<uint8_t, kBlockBytes> block{mode};
    uint8_t asked = count;
    const int done = library.Functions().GetFANConfig(rawName.c_str(), block.data(), &asked, VYNLIB_PERFORM);
    if (done != 0 || library.LastError() != kOtherCount) return count - 1u;
  }
  return std::nullopt;
}

namespace {

Value ReadInterval(const Library& library) {
  Value value{.id = "watchdog/interval", .name = "watchdog interval", .quantity = "interval"};
  uint32_t interval = 0;
  if (library.Functions().WDTGetInterval(&interval, VYNLIB_PERFORM) == 0) return Failed(value, library.LastError());
  value.data = int64_t{interval};
  return value;
}

Value ReadMode(const Library& library) {
  Value value{.id = "watchdog/mode", .name = "watchdog count mode", .quantity = "mode"};
  uint8_t mode = 0;
  if (library.Functions().WDTGetCountMode(&mode, VYNLIB_PERFORM) == 0) return Failed(value, library.LastError());
  value.data = int64_t{mode};
  return value;
}

}  // namespace

bool OffersWatchdog(const Library& library) { return library.Functions().WDTEnable(0, 0, VYNLIB_QUERY) != 0; }

std::vector<Value> ReadWatchdog(const Library& library) { return {ReadInterval(library), ReadMode(library)}; }

}  // namespace vynctl

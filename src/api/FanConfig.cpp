// SPDX-License-Identifier: MIT
// The fan configuration functions.
#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <safe_mem_lib.h>
#include <safe_str_lib.h>

#include "api/Guard.h"
#include "api/Library.h"
#include "api/Text.h"
#include "api/Walk.h"
#include "layout/LittleEndian.h"
#include "layout/RecordLayout.h"
#include "vynlib/vynlib.h"

using namespace layout;

using namespace api;
using namespace tables;

namespace {

constexpr unsigned kFanList = Feature("FanConfig").list;
constexpr std::string_view kIdWord = "Id";
/// The caller's count that asks for the mode and its count alone.
constexpr uint8_t kAskForCount = 255;

enum SubCode : uint8_t {
  kReadFailed = 0x01,
  kSetFailed = 0x02,
  kNameCountDiffers = 0x03,
  kNoBlock = 0x04,
  kCountDiffers = 0x05,
  kNoMatch = 0x06,
};

constexpr uint64_t FanCode(uint8_t subCode) { return Code(VYNLIB_FAMILY_FAN_CONFIG, subCode); }

std::string_view NameOf(IadtEntry entry) { return {entry.Name(), strnlen(entry.Name(), iadt::kNameBytes)}; }

bool IsEntryOf(IadtEntry entry, std::string_view fan) {
  const std::string_view name = NameOf(entry);
  return FanNameMatches(name, fan) && !FanNameMatches(name, kIdWord);
}

/// Elements of an entry's parameter block: the mode and one per distinct argument index, told apart by its low byte.
/// Empty when a command cannot be stepped over.
std::optional<uint8_t> CountArguments(IadtEntry entry) {
  std::bitset<256> named;
  for (IadtCommands cursor = entry.Commands(); !cursor.AtEnd();) {
    if (!cursor.Fits() || cursor.Layout() == nullptr) return {};
    const CommandLayout& layout = *cursor.Layout();
    const uint32_t argument = Load32(cursor.Command() + layout.argument.offset);
    if (cursor.Advance() != IadtCommands::Step::kMoved) return {};
    if (layout.kind != kCommandDelay && argument != kNoArgument) named.set(argument & 0xFF);
  }
  return static_cast<uint8_t>(1 + named.count());
}

/// Elements of the parameter block by mode, of one fan. The first entry of a mode fixes its count.
using ArgumentCounts = std::map<uint8_t, uint8_t>;

std::optional<ArgumentCounts> GetCountOfFunArguments(std::string_view fan) {
  ArgumentCounts counts;
  for (const IadtEntry entry : Entries(kFanList)) {
    if (!IsEntryOf(entry, fan)) continue;
    const auto count = CountArguments(entry);
    if (!count) return {};
    counts.emplace(entry.Value(), *count);
  }
  return counts;
}

/// The count of a mode; 0 when the fan has no entry for it.
uint8_t CountOf(const ArgumentCounts& counts, uint8_t mode) {
  const auto found = counts.find(mode);
  return found != counts.end() ? found->second : uint8_t{0};
}

/// What every selector-taking function does first. Empty when the call is to be performed, else its result.
std::optional<int> Begin(uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector != kQuery && !IsPerform(selector)) return Fail(VYNLIB_ERROR_SELECTOR);
  if (selector == kQuery || !Has(kFanList)) return Answer(Has(kFanList), VYNLIB_FAMILY_FAN_CONFIG);
  return {};
}

/// The walk over a fan's entries that `wants` picks.
template <typename Wants, typename Done>
int WalkFan(std::string_view fan, Direction direction, Slots slots, SubCode failed, Wants wants, Done done) {
  return Walk(
      {Entries(kFanList), FanCode(failed), FanCode(kNoMatch)}, direction, slots,
      [&](IadtEntry entry) { return IsEntryOf(entry, fan) && wants(entry); }, done);
}

using FanName = std::array<char, VYNLIB_NAME_BYTES>;

/// The entry's name without the mode word, NUL-padded.
FanName FanOf(IadtEntry entry) {
  FanName fan{};
  memcpy_s(fan.data(), fan.size(), entry.Name(), iadt::kNameBytes);
  RemoveSubStr(fan.size(), fan.data(), kFanModeWord);
  return fan;
}

/// The fans in firmware order. A name is a duplicate when an earlier one begins with it.
std::vector<FanName> CollectFans() {
  std::vector<FanName> fans;
  std::set<std::string, std::less<>> earlier;
  for (const IadtEntry entry : Entries(kFanList)) {
    const FanName fan = FanOf(entry);
    const std::string_view name = {fan.data(), strnlen(fan.data(), fan.size())};
    // Whatever begins with the name sorts right behind it.
    const auto next = earlier.lower_bound(name);
    if (next != earlier.end() && next->starts_with(name)) continue;
    earlier.emplace_hint(next, name);
    fans.push_back(fan);
  }
  return fans;
}

}  // namespace

int VynLibGetFanConfigNames(char** names, uint8_t* count, uint8_t selector) {
  if (const auto answer = Begin(selector)) return *answer;
  return Guarded([&]() -> int {
    const std::vector<FanName> fans = CollectFans();
    if (names == nullptr) {
      StoreResult(count, static_cast<uint8_t>(fans.size()));
      return Succeed();
    }
    if (count == nullptr || *count != fans.size()) return Fail(FanCode(kNameCountDiffers));
    for (size_t i = 0; i < fans.size(); ++i)
      if (names[i] != nullptr) strncpy_s(names[i], VYNLIB_NAME_BYTES, fans[i].data(), VYNLIB_NAME_BYTES);
    return Succeed();
  });
}

void VynLibGetFANModeSupport(const char* name, uint8_t* modes) {
  if (!VynLibCheckAvailabled()) return;
  if (!Has(kFanList)) {
    LastErrorCode = FanCode(kAbsent);
    return;
  }
  LastErrorCode = FanCode(kNoMatch);
  uint8_t mask = 0;
  for (const IadtEntry entry : Entries(kFanList)) {
    if (!IsEntryOf(entry, Text(name)) || entry.Value() >= kFanModes) continue;
    mask = static_cast<uint8_t>(mask | 1u << entry.Value());
    LastErrorCode = VYNLIB_OK;
  }
  StoreResult(modes, mask);
}

int VynLibGetFANConfig(const char* name, uint8_t* block, uint8_t* count, uint8_t selector) {
  if (const auto answer = Begin(selector)) return *answer;
  return Guarded([&]() -> int {
    const auto counts = GetCountOfFunArguments(Text(name));
    if (!counts) return Fail(VYNLIB_ERROR_UNKNOWN_ACCESS);
    const uint8_t room = count != nullptr ? *count : uint8_t{0};
    if (block == nullptr) return Fail(FanCode(kNoBlock));
    if (room < kAskForCount && (room == 0 || CountOf(*counts, block[0]) != room)) return Fail(FanCode(kCountDiffers));
    std::array<unsigned long long, kAskForCount> slots{};
    const auto any = [](IadtEntry) { return true; };
    return WalkFan(Text(name), kGet, {slots.data(), room}, kReadFailed, any, [&](IadtEntry current) {
      // The mode reported is the one whose commands succeed; the caller's serves the size check alone.
      const uint8_t mode = current.Value();
      const uint8_t modeCount = CountOf(*counts, mode);
      block[0] = mode;
      if (room < kAskForCount)
        for (size_t i = 1; i < std::min(modeCount, room); ++i) block[i] = static_cast<uint8_t>(slots[i]);
      *count = modeCount;
    });
  });
}

int VynLibSetFANConfig(const char* name, const uint8_t* block, uint8_t count, uint8_t selector) {
  if (const auto answer = Begin(selector)) return *answer;
  return Guarded([&]() -> int {
    const auto counts = GetCountOfFunArguments(Text(name));
    if (!counts) return Fail(VYNLIB_ERROR_UNKNOWN_ACCESS);
    if (block == nullptr) return Fail(FanCode(kNoBlock));
    if (count == 0 || CountOf(*counts, block[0]) != count) return Fail(FanCode(kCountDiffers));
    std::array<unsigned long long, kAskForCount> slots{};
    std::copy_n(block, count, slots.begin());
    const auto wants = [&](IadtEntry entry) { return entry.Value() == block[0]; };
    return WalkFan(Text(name), kSet, {slots.data(), count}, kSetFailed, wants, [](IadtEntry) {});
  });
}

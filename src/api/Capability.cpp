#include "api/Capability.h"

#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "api/EntryWalk.h"
#include "api/Library.h"
#include "api/Text.h"
#include "layout/AcpiLayout.h"
#include "layout/LittleEndian.h"
#include "tables/TIAMTable.h"
#include "vynlib/vynlib.h"

using namespace layout;

namespace api {

namespace {

struct IoChip {
  uint16_t identifier;
  uint8_t number;
  const char* name;
};

// Number and name disagree in some rows; this is meant.
constexpr IoChip kIoChips[] = {
    {0x00D8, 6, "Nuvoton 6796D-S"}, {0x0215, 1, "Fintek 81966"},  {0x80D2, 2, "None"},
    {0x83D2, 2, "Nuvoton 6126D"},   {0x84D2, 0, "Nuvoton 6126D"}, {0x94D2, 5, "Nuvoton 5525D-S"},
    {0xAEC2, 4, "MCU 121"},         {0xB0D2, 3, "None"},          {0xB3D2, 3, "Nuvoton 5525D"},
    {0xB4D2, 0, "Nuvoton 5525D"},   {0xE4D2, 7, "None"},
};
constexpr IoChip kOtherChip = {0, 0, "None"};

const IoChip& FindChip(uint16_t identifier) {
  for (const IoChip& chip : kIoChips)
    if (chip.identifier == identifier) return chip;
  return kOtherChip;
}

bool BoardHas(uint16_t identifier) {
  for (const size_t offset : iamt::kChipIds)
    if (Load16(IAMTable->BoardInfo + offset) == identifier) return true;
  return false;
}

}  // namespace

const char* GetIOName(uint16_t identifier) { return FindChip(identifier).name; }

int GetWhichIOUse(uint16_t identifier, uint8_t* io) {
  if (IAMTable == nullptr || IAMTable->BoardInfo == nullptr) return Fail(kNoBoardRecord);
  if (!BoardHas(identifier)) return Fail(kChipNotListed);
  *io = FindChip(identifier).number;
  LastErrorCode = kOk;
  return 1;
}

}  // namespace api

using namespace api;

namespace {

constexpr uint8_t kIdValue = 240;
constexpr unsigned kWatchdogList = 36;
constexpr unsigned kFanList = 37;
constexpr uint8_t kLastBoardKind = 24;
constexpr uint8_t kWatchdogKind = 25;
constexpr uint8_t kFanKind = 26;

void SetNumberCode(uint8_t io) { LastErrorCode = io == 0 ? kNoIoNumber : kOk; }

void LookUp(uint16_t identifier, uint8_t* io) {
  if (GetWhichIOUse(identifier, io) != 0) SetNumberCode(*io);
}

bool IsWatchdogOf(IadtEntry entry, const char* name) { return std::strncmp(entry.Name(), name, iadt::kNameBytes) == 0; }

bool IsFanOf(IadtEntry entry, const char* name) {
  return IsSubStrInStr({entry.Name(), strnlen(entry.Name(), iadt::kNameBytes)}, name) != 0;
}

std::optional<IadtEntry> FindIdEntry(unsigned list, const char* name,
                                     bool (*matches)(IadtEntry entry, const char* name)) {
  if (Has(list))
    for (const IadtEntry entry : Entries(list))
      if (matches(entry, name) && entry.Value() == kIdValue) return entry;
  return {};
}

/// Reads the chip identifier, low byte in argument slot 0 and high byte in slot 1, and looks it up.
void Identify(IadtEntry entry, uint8_t* io) {
  LastErrorCode = kOk;
  if (entry.Length() == iadt::kBody) {
    GetWhichIOUse(0, io);
    if (*io == 0) LastErrorCode = kNoIoNumber;
    return;
  }
  unsigned long long values[2] = {0, 0};
  const Ran ran = RunEntry(entry, kGet, {values, 2});
  if (ran == Ran::kFailed) LastErrorCode = kIdCommandFailed;
  if (ran == Ran::kUnknownKind) LastErrorCode = kUnknownAccess;
  if (ran == Ran::kDone) LookUp(static_cast<uint16_t>(values[1] * 256 + values[0]), io);
}

bool HasSignature(const unsigned char* header, const char* signature) {
  return std::memcmp(header, signature, acpi::kSignatureBytes) == 0;
}

}  // namespace

int VynLibTableSupported(uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector != api::kPerform) return 0;
  if (IAMTable == nullptr || IAMTable->Header == nullptr || IADTable == nullptr || IADTable->Slots[0] == nullptr)
    throw std::logic_error("basic_string::_M_construct null not valid");  // the one exception that leaves the library
  return HasSignature(IAMTable->Header, "IAMT") && HasSignature(IADTable->Slots[0], "IADT") ? 1 : 0;
}

void VynLibGetWhichIOToBeUse(uint8_t kind, const char* name, uint8_t* io) {
  if (!VynLibCheckAvailabled()) return;
  uint8_t number = 0;
  std::optional<IadtEntry> entry;
  if (kind >= 1 && kind <= kLastBoardKind) {
    // Nothing is looked up right after a call that ended with this code; this is meant.
    if (LastErrorCode != kNoIdEntry) LookUp(0, &number);
  } else if (kind == kWatchdogKind || kind == kFanKind) {
    LastErrorCode = kNoIdEntry;
    entry = kind == kWatchdogKind ? FindIdEntry(kWatchdogList, Text(name), IsWatchdogOf)
                                  : FindIdEntry(kFanList, Text(name), IsFanOf);
    if (entry) Identify(*entry, &number);
  } else {
    LastErrorCode = kBadKind;
  }
  Result<uint8_t>{io} = number;
}

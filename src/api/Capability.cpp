// SPDX-License-Identifier: MIT
// Which tables were found, and which I/O chip serves a function.
#include "api/Capability.h"

#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "api/Guard.h"
#include "api/Library.h"
#include "api/Text.h"
#include "layout/AcpiLayout.h"
#include "layout/BoardRecord.h"
#include "layout/IoChips.h"
#include "layout/LittleEndian.h"
#include "layout/RecordLayout.h"
#include "tables/EntryRun.h"
#include "tables/TIAMTable.h"
#include "vynlib/vynlib.h"

using namespace layout;

namespace api {

namespace {

const IoChip& ChipOf(uint16_t identifier) {
  const IoChip* chip = FindIoChip(identifier);
  return chip != nullptr ? *chip : kOtherChip;
}

bool BoardHas(uint16_t identifier) {
  for (const size_t offset : iamt::kChipIds)
    if (Load16(IAMTable->BoardInfo + offset) == identifier) return true;
  return false;
}

}  // namespace

const char* GetIOName(uint16_t identifier) { return ChipOf(identifier).name; }

int GetWhichIOUse(uint16_t identifier, uint8_t* io) {
  if (IAMTable == nullptr || IAMTable->BoardInfo == nullptr) return Fail(VYNLIB_ERROR_NO_BOARD_RECORD);
  if (!BoardHas(identifier)) return Fail(VYNLIB_ERROR_CHIP_NOT_LISTED);
  *io = ChipOf(identifier).number;
  LastErrorCode = VYNLIB_OK;
  return 1;
}

}  // namespace api

using namespace api;
using namespace tables;

namespace {

constexpr const RecordType& kWatchdogType = Feature("Watchdog");
constexpr const RecordType& kFanType = Feature("FanConfig");
/// Kinds are the numbers of record types; below these two, the board as a whole is asked about.
constexpr uint8_t kWatchdogKind = kWatchdogType.type, kFanKind = kFanType.type;
constexpr uint8_t kLastBoardKind = kWatchdogKind - 1;

void SetNumberCode(uint8_t io) { LastErrorCode = io == 0 ? VYNLIB_ERROR_NO_IO_NUMBER : VYNLIB_OK; }

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
      if (matches(entry, name) && entry.Value() == iadt::kIdValue) return entry;
  return {};
}

/// Reads the chip identifier, low byte in argument slot 0 and high byte in slot 1, and looks it up.
void Identify(IadtEntry entry, uint8_t* io) {
  LastErrorCode = VYNLIB_OK;
  if (entry.Length() == iadt::kBody) {
    GetWhichIOUse(0, io);
    if (*io == 0) LastErrorCode = VYNLIB_ERROR_NO_IO_NUMBER;
    return;
  }
  unsigned long long values[2] = {0, 0};
  const Ran ran = RunEntry(*IAxTCommon, entry, kGet, {values, 2});
  if (ran == Ran::kFailed) LastErrorCode = VYNLIB_ERROR_ID_COMMAND;
  if (ran == Ran::kUnknownKind) LastErrorCode = VYNLIB_ERROR_UNKNOWN_ACCESS;
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
  return HasSignature(IAMTable->Header, iamt::kSignature) && HasSignature(IADTable->Slots[0], iadt::kSignature) ? 1 : 0;
}

void VynLibGetWhichIOToBeUse(uint8_t kind, const char* name, uint8_t* io) {
  if (!VynLibCheckAvailabled()) return;
  uint8_t number = 0;
  std::optional<IadtEntry> entry;
  if (kind >= 1 && kind <= kLastBoardKind) {
    // Contract: nothing is looked up right after a call that ended with this code.
    if (LastErrorCode != VYNLIB_ERROR_NO_ID_ENTRY) LookUp(0, &number);
  } else if (kind == kWatchdogKind || kind == kFanKind) {
    LastErrorCode = VYNLIB_ERROR_NO_ID_ENTRY;
    entry = kind == kWatchdogKind ? FindIdEntry(kWatchdogType.list, Text(name), IsWatchdogOf)
                                  : FindIdEntry(kFanType.list, Text(name), IsFanOf);
    if (entry) Guarded([&] { Identify(*entry, &number); });
  } else {
    LastErrorCode = VYNLIB_ERROR_KIND;
  }
  StoreResult(io, number);
}

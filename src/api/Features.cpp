#include <cstdint>

#include "api/EntryWalk.h"
#include "api/FeatureTable.h"
#include "api/Library.h"
#include "vynlib/vynlib.h"

using namespace api;

namespace {

constexpr uint8_t kNoReading = 0xFF;
constexpr uint16_t kNoVersion = 0xFFFF;

bool Performs(Perform perform, uint8_t selector) {
  return perform == kTwo ? selector == api::kPerform : IsPerform(selector);
}

/// Whether the call is to be performed; Decline tells what it comes to otherwise.
bool Begins(const FeatureRow& row, uint8_t selector) {
  return InitOk != 0 && Performs(row.perform, selector) && Has(row.list);
}

int Decline(const FeatureRow& row, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return Answer(Has(row.list), row.family);
  if (!Performs(row.perform, selector)) return Fail(kBadSelector);
  return Fail(Code(row.differs.absentFamily.value_or(row.family), kAbsent));
}

/// One walk serves readings and settings: `wants(entry)` picks the candidates, `done(entry)` takes the first one whose
/// commands succeed. The accumulator is shared by all entries of a call.
template <typename Wants, typename Done>
int Walk(const FeatureRow& row, Direction direction, Wants wants, Done done) {
  const uint64_t failed = Code(row.family, row.failed);
  unsigned long long accumulator = 0;
  LastErrorCode = Code(row.family, row.noEntry);
  for (const IadtEntry entry : Entries(row.list)) {
    if (!wants(entry)) continue;
    const Ran ran = RunEntry(entry, direction, {&accumulator, 1});
    if (ran == Ran::kUnknownKind) return Fail(kUnknownAccess);
    if (ran == Ran::kDone) {
      done(entry);
      return Succeed();
    }
    LastErrorCode = failed;  // a later candidate is a fallback
  }
  return 0;
}

template <typename Wants>
int ReadWhere(const FeatureRow& row, uint8_t* target, uint8_t selector, Wants wanted) {
  if (!Begins(row, selector)) return Decline(row, selector);
  const Result<uint8_t> result(target);
  result = kNoReading;
  const auto wants = [&](IadtEntry entry) {
    if (!wanted(entry)) return false;
    if (row.differs.clearsResult) result = 0;
    return true;
  };
  return Walk(row, kGet, wants, [&](IadtEntry entry) { result = entry.Value(); });
}

template <typename Wants>
int WriteWhere(const FeatureRow& row, uint8_t selector, Wants wants) {
  if (!Begins(row, selector)) return Decline(row, selector);
  return Walk(row, kSet, wants, [](IadtEntry) {});
}

int Read(const FeatureRow& row, uint8_t* result, uint8_t selector) {
  return ReadWhere(row, result, selector, [](IadtEntry) { return true; });
}

int Read(const FeatureRow& row, uint8_t index, uint8_t* result, uint8_t selector) {
  return ReadWhere(row, result, selector, [=](IadtEntry entry) { return entry.Index() == index; });
}

int Write(const FeatureRow& row, uint8_t value, uint8_t selector) {
  return WriteWhere(row, selector, [=](IadtEntry entry) { return entry.Value() == value; });
}

int Write(const FeatureRow& row, uint8_t index, uint8_t value, uint8_t selector) {
  return WriteWhere(row, selector, [=](IadtEntry entry) { return entry.Index() == index && entry.Value() == value; });
}

/// All entries are visited: those that succeed are counted, and each sets the bit of its index when its value is odd.
int ReadVersion(const FeatureRow& row, uint16_t* target, uint8_t selector) {
  if (!Begins(row, selector)) return Decline(row, selector);
  const Result<uint16_t> result(target);
  result = kNoVersion;
  uint8_t count = 0;
  uint8_t bits = 0;
  unsigned long long accumulator = 0;
  for (const IadtEntry entry : Entries(row.list)) {
    const Ran ran = RunEntry(entry, kGet, {&accumulator, 1});
    if (ran == Ran::kUnknownKind) return Fail(kUnknownAccess);
    if (ran == Ran::kFailed) continue;
    ++count;
    bits = static_cast<uint8_t>(bits | (entry.Value() & 1u) << (entry.Index() & 31));
  }
  if (count == 0) return Fail(Code(row.family, row.failed));
  result = static_cast<uint16_t>(count * 256 + bits);
  return Succeed();
}

}  // namespace

int VynLibGetComType(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(Row<kIndexedRead>(__func__), index, result, selector);
}
int VynLibSetComType(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(Row<kIndexedWrite>(__func__), index, value, selector);
}
int VynLibGetLVDSState(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibSetLVDSState(uint8_t value, uint8_t selector) { return Write(Row<kWrite>(__func__), value, selector); }
int VynLibGetLVDSType(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibSetLVDSType(uint8_t value, uint8_t selector) { return Write(Row<kWrite>(__func__), value, selector); }
int VynLibBacklightCtrl(uint8_t value, uint8_t selector) { return Write(Row<kWrite>(__func__), value, selector); }
int VynLibGetMFGState(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibGetOnboardTPMState(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibSetOnboardTPMState(uint8_t value, uint8_t selector) { return Write(Row<kWrite>(__func__), value, selector); }
int VynLibGetMEDescriptorState(uint8_t* result, uint8_t selector) {
  return Read(Row<kRead>(__func__), result, selector);
}
int VynLibSetMEDescriptorState(uint8_t value, uint8_t selector) {
  return Write(Row<kWrite>(__func__), value, selector);
}
int VynLibGetPcieBandwidthMode(uint8_t* result, uint8_t selector) {
  return Read(Row<kRead>(__func__), result, selector);
}
int VynLibGetUsbPwrState(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibSetUsbPwrState(uint8_t value, uint8_t selector) { return Write(Row<kWrite>(__func__), value, selector); }
int VynLibGetBTState(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibSetBTState(uint8_t value, uint8_t selector) { return Write(Row<kWrite>(__func__), value, selector); }
int VynLibGetWifiState(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibSetWifiState(uint8_t value, uint8_t selector) { return Write(Row<kWrite>(__func__), value, selector); }
int VynLibGetOTPState(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibSetOTPState(uint8_t value, uint8_t selector) { return Write(Row<kWrite>(__func__), value, selector); }
int VynLibGetATModeState(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibGetIntelPwrSolutionState(uint8_t* result, uint8_t selector) {
  return Read(Row<kRead>(__func__), result, selector);
}
int VynLibSetIntelPwrSolutionState(uint8_t value, uint8_t selector) {
  return Write(Row<kWrite>(__func__), value, selector);
}
int VynLibDetectTbCIOPlug(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibGetTbFRCPowerState(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibMBVersionState(uint16_t* result, uint8_t selector) {
  return ReadVersion(Row<kVersion>(__func__), result, selector);
}
int VynLibGetDigitalIOState(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(Row<kIndexedRead>(__func__), index, result, selector);
}
int VynLibSetDigitalIOState(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(Row<kIndexedWrite>(__func__), index, value, selector);
}
int VynLibGetDioConfig(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(Row<kIndexedRead>(__func__), index, result, selector);
}
int VynLibSetDioConfig(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(Row<kIndexedWrite>(__func__), index, value, selector);
}
int VynLibGetDioEnPin(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibSetDioEnPin(uint8_t value, uint8_t selector) { return Write(Row<kWrite>(__func__), value, selector); }
int VynLibGetUserLEDState(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibSetUserLEDState(uint8_t value, uint8_t selector) { return Write(Row<kWrite>(__func__), value, selector); }
int VynLibGetUserLEDColor(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(Row<kIndexedRead>(__func__), index, result, selector);
}
int VynLibSetUserLEDColor(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(Row<kIndexedWrite>(__func__), index, value, selector);
}
int VynLibGetJGPIOPowerState(uint8_t* result, uint8_t selector) { return Read(Row<kRead>(__func__), result, selector); }
int VynLibSetJGPIOPowerState(uint8_t value, uint8_t selector) { return Write(Row<kWrite>(__func__), value, selector); }
int VynLibGetCOMPowerState(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(Row<kIndexedRead>(__func__), index, result, selector);
}
int VynLibSetCOMPowerState(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(Row<kIndexedWrite>(__func__), index, value, selector);
}
int VynLibGetDbgLedColor(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(Row<kIndexedRead>(__func__), index, result, selector);
}
int VynLibSetDbgLedColor(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(Row<kIndexedWrite>(__func__), index, value, selector);
}

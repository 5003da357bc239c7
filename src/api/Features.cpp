// SPDX-License-Identifier: MIT
// The 43 feature state functions.
#include <cstdint>

#include "api/FeatureTable.h"
#include "api/Library.h"
#include "api/Walk.h"
#include "vynlib/vynlib.h"

using namespace api;
using namespace tables;

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
  if (!Performs(row.perform, selector)) return Fail(VYNLIB_ERROR_SELECTOR);
  return Fail(Code(row.differs.absentFamily.value_or(row.family), kAbsent));
}

Candidates CandidatesOf(const FeatureRow& row) { return {Entries(row.list), row.failedCode, row.noEntryCode}; }

template <typename Wants>
int ReadWhere(uint8_t* target, uint8_t selector, const FeatureRow& row, Wants wanted) {
  if (!Begins(row, selector)) return Decline(row, selector);
  const Candidates candidates = CandidatesOf(row);
  uint8_t* const cleared = row.differs.clearsResult ? target : nullptr;
  unsigned long long accumulator = 0;
  StoreResult(target, kNoReading);
  const auto wants = [=](IadtEntry entry) {
    if (!wanted(entry)) return false;
    StoreResult(cleared, 0);
    return true;
  };
  return Walk(candidates, kGet, {&accumulator, 1}, wants, [=](IadtEntry entry) { StoreResult(target, entry.Value()); });
}

template <typename Wants>
int WriteWhere(uint8_t selector, const FeatureRow& row, Wants wants) {
  if (!Begins(row, selector)) return Decline(row, selector);
  unsigned long long accumulator = 0;
  return Walk(CandidatesOf(row), kSet, {&accumulator, 1}, wants, [](IadtEntry) {});
}

// The row comes last, so that an exported function passes its arguments on in the registers they came in.

int Read(uint8_t* result, uint8_t selector, const FeatureRow& row) {
  return ReadWhere(result, selector, row, [](IadtEntry) { return true; });
}

int Read(uint8_t index, uint8_t* result, uint8_t selector, const FeatureRow& row) {
  return ReadWhere(result, selector, row, [=](IadtEntry entry) { return entry.Index() == index; });
}

int Write(uint8_t value, uint8_t selector, const FeatureRow& row) {
  return WriteWhere(selector, row, [=](IadtEntry entry) { return entry.Value() == value; });
}

int Write(uint8_t index, uint8_t value, uint8_t selector, const FeatureRow& row) {
  return WriteWhere(selector, row, [=](IadtEntry entry) { return entry.Index() == index && entry.Value() == value; });
}

/// All entries are visited: those that succeed are counted, and each sets the bit of its index when its value is odd.
int ReadVersion(uint16_t* target, uint8_t selector, const FeatureRow& row) {
  if (!Begins(row, selector)) return Decline(row, selector);
  StoreResult(target, kNoVersion);
  return Guarded([&] {
    uint8_t count = 0;
    uint8_t bits = 0;
    unsigned long long accumulator = 0;
    for (const IadtEntry entry : Entries(row.list)) {
      const Ran ran = RunEntry(*IAxTCommon, entry, kGet, {&accumulator, 1});
      if (ran == Ran::kUnknownKind) return Fail(VYNLIB_ERROR_UNKNOWN_ACCESS);
      if (ran == Ran::kFailed) continue;
      ++count;
      bits = static_cast<uint8_t>(bits | (entry.Value() & 1u) << (entry.Index() & 31));
    }
    if (count == 0) return Fail(row.failedCode);
    StoreResult(target, static_cast<uint16_t>(count * 256 + bits));
    return Succeed();
  });
}

}  // namespace

int VynLibGetComType(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(index, result, selector, Row<kIndexedRead>(__func__));
}
int VynLibSetComType(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(index, value, selector, Row<kIndexedWrite>(__func__));
}
int VynLibGetLVDSState(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibSetLVDSState(uint8_t value, uint8_t selector) { return Write(value, selector, Row<kWrite>(__func__)); }
int VynLibGetLVDSType(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibSetLVDSType(uint8_t value, uint8_t selector) { return Write(value, selector, Row<kWrite>(__func__)); }
int VynLibBacklightCtrl(uint8_t value, uint8_t selector) { return Write(value, selector, Row<kWrite>(__func__)); }
int VynLibGetMFGState(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibGetOnboardTPMState(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibSetOnboardTPMState(uint8_t value, uint8_t selector) { return Write(value, selector, Row<kWrite>(__func__)); }
int VynLibGetMEDescriptorState(uint8_t* result, uint8_t selector) {
  return Read(result, selector, Row<kRead>(__func__));
}
int VynLibSetMEDescriptorState(uint8_t value, uint8_t selector) {
  return Write(value, selector, Row<kWrite>(__func__));
}
int VynLibGetPcieBandwidthMode(uint8_t* result, uint8_t selector) {
  return Read(result, selector, Row<kRead>(__func__));
}
int VynLibGetUsbPwrState(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibSetUsbPwrState(uint8_t value, uint8_t selector) { return Write(value, selector, Row<kWrite>(__func__)); }
int VynLibGetBTState(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibSetBTState(uint8_t value, uint8_t selector) { return Write(value, selector, Row<kWrite>(__func__)); }
int VynLibGetWifiState(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibSetWifiState(uint8_t value, uint8_t selector) { return Write(value, selector, Row<kWrite>(__func__)); }
int VynLibGetOTPState(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibSetOTPState(uint8_t value, uint8_t selector) { return Write(value, selector, Row<kWrite>(__func__)); }
int VynLibGetATModeState(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibGetIntelPwrSolutionState(uint8_t* result, uint8_t selector) {
  return Read(result, selector, Row<kRead>(__func__));
}
int VynLibSetIntelPwrSolutionState(uint8_t value, uint8_t selector) {
  return Write(value, selector, Row<kWrite>(__func__));
}
int VynLibDetectTbCIOPlug(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibGetTbFRCPowerState(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibMBVersionState(uint16_t* result, uint8_t selector) {
  return ReadVersion(result, selector, Row<kVersion>(__func__));
}
int VynLibGetDigitalIOState(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(index, result, selector, Row<kIndexedRead>(__func__));
}
int VynLibSetDigitalIOState(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(index, value, selector, Row<kIndexedWrite>(__func__));
}
int VynLibGetDioConfig(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(index, result, selector, Row<kIndexedRead>(__func__));
}
int VynLibSetDioConfig(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(index, value, selector, Row<kIndexedWrite>(__func__));
}
int VynLibGetDioEnPin(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibSetDioEnPin(uint8_t value, uint8_t selector) { return Write(value, selector, Row<kWrite>(__func__)); }
int VynLibGetUserLEDState(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibSetUserLEDState(uint8_t value, uint8_t selector) { return Write(value, selector, Row<kWrite>(__func__)); }
int VynLibGetUserLEDColor(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(index, result, selector, Row<kIndexedRead>(__func__));
}
int VynLibSetUserLEDColor(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(index, value, selector, Row<kIndexedWrite>(__func__));
}
int VynLibGetJGPIOPowerState(uint8_t* result, uint8_t selector) { return Read(result, selector, Row<kRead>(__func__)); }
int VynLibSetJGPIOPowerState(uint8_t value, uint8_t selector) { return Write(value, selector, Row<kWrite>(__func__)); }
int VynLibGetCOMPowerState(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(index, result, selector, Row<kIndexedRead>(__func__));
}
int VynLibSetCOMPowerState(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(index, value, selector, Row<kIndexedWrite>(__func__));
}
int VynLibGetDbgLedColor(uint8_t index, uint8_t* result, uint8_t selector) {
  return Read(index, result, selector, Row<kIndexedRead>(__func__));
}
int VynLibSetDbgLedColor(uint8_t index, uint8_t value, uint8_t selector) {
  return Write(index, value, selector, Row<kIndexedWrite>(__func__));
}

#include <cstdint>

#include "api/EntryWalk.h"
#include "api/Library.h"
#include "hw/Platform.h"
#include "layout/RecordLayout.h"
#include "vynlib/vynlib.h"

using namespace api;
using namespace layout;

namespace {

constexpr unsigned kWatchdogList = Feature("Watchdog").list;
constexpr uint32_t kStopMicroseconds = 50000;

/// What any other argument asks for. Firmware does not use it: the call ends with the no-entry code.
constexpr WatchdogOperation kNoOperation{255};

/// Sub-codes of a group of operations.
struct Codes {
  uint8_t noEntry, failed;
};

// Activation and interval share a no-entry code; this is meant.
constexpr Codes kActivation{0x08, 0x01};
constexpr Codes kSettingInterval{0x08, 0x03};
constexpr Codes kGettingInterval{0x08, 0x02};
constexpr Codes kCounting{0x09, 0x04};
constexpr Codes kSettingMode{0x0A, 0x06};
constexpr Codes kGettingMode{0x0A, 0x05};
constexpr uint8_t kNoModeEntry = 0x07;

constexpr uint64_t WatchdogCode(uint8_t subCode) { return Code(kWatchdog, subCode); }

int QueryWatchdog() { return Answer(Has(kWatchdogList), kWatchdog); }

bool IsCountMode(IadtEntry entry) {
  return entry.Value() == kWatchdogCountMode0 || entry.Value() == kWatchdogCountMode1;
}

/// Runs the candidates in order until the commands of one succeed, which `done(entry, accumulator)` then takes.
template <typename Wants, typename Done>
int Walk(Codes codes, Direction direction, unsigned long long accumulator, Wants wants, Done done) {
  if (!Has(kWatchdogList)) return Fail(WatchdogCode(kAbsent));
  LastErrorCode = WatchdogCode(codes.noEntry);
  for (const IadtEntry entry : Entries(kWatchdogList)) {
    if (!wants(entry)) continue;
    const Ran ran = RunEntry(entry, direction, {&accumulator, 1});
    if (ran == Ran::kUnknownKind) return Fail(kUnknownAccess);
    if (ran == Ran::kDone) {
      done(entry, accumulator);
      return Succeed();
    }
    LastErrorCode = WatchdogCode(codes.failed);
  }
  return 0;
}

int Perform(uint8_t operation, Codes codes, uint8_t data = 0) {
  return Walk(
      codes, kSet, data, [=](IadtEntry entry) { return entry.Value() == operation; },
      [](IadtEntry, unsigned long long) {});
}

/// The operation for an argument of 0 or 1.
constexpr uint8_t Choose(uint8_t argument, WatchdogOperation zero, WatchdogOperation one) {
  return argument == 0 ? zero : argument == 1 ? one : kNoOperation;
}

int WDTActivation(uint8_t on) { return Perform(Choose(on, kWatchdogDeactivate, kWatchdogActivate), kActivation); }
int WDTSetInterval(uint8_t interval) { return Perform(kWatchdogInterval, kSettingInterval, interval); }
int WDTCounting(uint8_t on) { return Perform(Choose(on, kWatchdogStop, kWatchdogStart), kCounting); }

int QueryCountMode() {
  if (!Has(kWatchdogList)) return Fail(WatchdogCode(kAbsent));
  for (const IadtEntry entry : Entries(kWatchdogList))
    if (IsCountMode(entry)) return Succeed();
  return Fail(WatchdogCode(kNoModeEntry));
}

}  // namespace

int VynLibWDTEnable(uint8_t interval, uint8_t mode, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return QueryWatchdog();
  if (!IsPerform(selector)) return Fail(kBadSelector);
  if (WDTActivation(1) == 0) return 0;
  VynLibWDTSetCountMode(mode, selector);
  if (WDTSetInterval(interval) == 0) return 0;
  WDTCounting(1);
  return InitOk;  // a failed mode or start is tolerated, its code left for the caller; this is meant
}

int VynLibWDTDisable(uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (IsPerform(selector)) WDTCounting(0);
  platform::SleepMicroseconds(kStopMicroseconds);  // on the query and bad-selector paths too; this is meant
  if (selector == kQuery) return QueryWatchdog();
  if (!IsPerform(selector)) return Fail(kBadSelector);
  if (WDTSetInterval(0) == 0) return 0;
  return WDTActivation(0);
}

int VynLibWDTSetInterval(uint8_t interval, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return QueryWatchdog();
  if (!IsPerform(selector)) return Fail(kBadSelector);
  return WDTSetInterval(interval);
}

int VynLibWDTGetInterval(uint32_t* interval, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return QueryWatchdog();
  if (!IsPerform(selector)) return Fail(kBadSelector);
  return Walk(
      kGettingInterval, kGet, 0, [](IadtEntry entry) { return entry.Value() == kWatchdogInterval; },
      [=](IadtEntry, unsigned long long value) { Result<uint32_t>{interval} = static_cast<uint32_t>(value); });
}

int VynLibWDTSetCountMode(uint8_t mode, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return QueryCountMode();
  if (!IsPerform(selector)) return Fail(kBadSelector);
  return Perform(Choose(mode, kWatchdogCountMode0, kWatchdogCountMode1), kSettingMode);
}

int VynLibWDTGetCountMode(uint8_t* mode, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return QueryCountMode();
  if (!IsPerform(selector)) return Fail(kBadSelector);
  const Result<uint8_t> result(mode);
  if (Has(kWatchdogList)) result = 0;
  return Walk(kGettingMode, kGet, 0, IsCountMode, [&](IadtEntry entry, unsigned long long) {
    result = static_cast<uint8_t>(entry.Value() - kWatchdogCountMode0);
  });
}

// SPDX-License-Identifier: MIT
// The watchdog functions.
#include <cstdint>

#include "api/Library.h"
#include "api/Walk.h"
#include "hw/Platform.h"
#include "layout/RecordLayout.h"
#include "vynlib/vynlib.h"

using namespace api;
using namespace layout;
using namespace tables;

namespace {

constexpr unsigned kWatchdogList = Feature("Watchdog").list;
constexpr uint32_t kStopMicroseconds = 50000;

/// What any other argument asks for. Firmware does not use it: the call ends with the no-entry code.
constexpr WatchdogOperation kNoOperation{255};

/// Sub-codes of a group of operations.
struct Codes {
  uint8_t noEntry, failed;
};

// Contract: activation and interval share a no-entry code.
constexpr Codes kActivation{0x08, 0x01};
constexpr Codes kSettingInterval{0x08, 0x03};
constexpr Codes kGettingInterval{0x08, 0x02};
constexpr Codes kCounting{0x09, 0x04};
constexpr Codes kSettingMode{0x0A, 0x06};
constexpr Codes kGettingMode{0x0A, 0x05};
constexpr uint8_t kNoModeEntry = 0x07;

constexpr uint64_t WatchdogCode(uint8_t subCode) { return Code(VYNLIB_FAMILY_WATCHDOG, subCode); }

int QueryWatchdog() { return Answer(Has(kWatchdogList), VYNLIB_FAMILY_WATCHDOG); }

bool IsCountMode(IadtEntry entry) {
  return entry.Value() == kWatchdogCountMode0 || entry.Value() == kWatchdogCountMode1;
}

/// The walk over the watchdog's entries, with `*data` as the one argument slot.
template <typename Wants, typename Done>
int WalkWatchdog(Codes codes, Direction direction, unsigned long long* data, Wants wants, Done done) {
  if (!Has(kWatchdogList)) return Fail(WatchdogCode(kAbsent));
  const Candidates candidates{Entries(kWatchdogList), WatchdogCode(codes.failed), WatchdogCode(codes.noEntry)};
  return Walk(candidates, direction, {data, 1}, wants, done);
}

int Perform(uint8_t operation, Codes codes, unsigned long long data = 0) {
  const auto wants = [=](IadtEntry entry) { return entry.Value() == operation; };
  return WalkWatchdog(codes, kSet, &data, wants, [](IadtEntry) {});
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
  if (!IsPerform(selector)) return Fail(VYNLIB_ERROR_SELECTOR);
  if (WDTActivation(1) == 0) return 0;
  VynLibWDTSetCountMode(mode, selector);
  if (WDTSetInterval(interval) == 0) return 0;
  WDTCounting(1);
  return InitOk;  // Contract: a failed mode or start is tolerated, its code left for the caller
}

int VynLibWDTDisable(uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (IsPerform(selector)) WDTCounting(0);
  platform::SleepMicroseconds(kStopMicroseconds);  // Contract: on the query and bad-selector paths too
  if (selector == kQuery) return QueryWatchdog();
  if (!IsPerform(selector)) return Fail(VYNLIB_ERROR_SELECTOR);
  if (WDTSetInterval(0) == 0) return 0;
  return WDTActivation(0);
}

int VynLibWDTSetInterval(uint8_t interval, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return QueryWatchdog();
  if (!IsPerform(selector)) return Fail(VYNLIB_ERROR_SELECTOR);
  return WDTSetInterval(interval);
}

int VynLibWDTGetInterval(uint32_t* interval, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return QueryWatchdog();
  if (!IsPerform(selector)) return Fail(VYNLIB_ERROR_SELECTOR);
  unsigned long long data = 0;
  const auto wants = [](IadtEntry entry) { return entry.Value() == kWatchdogInterval; };
  return WalkWatchdog(kGettingInterval, kGet, &data, wants,
                      [&](IadtEntry) { StoreResult(interval, static_cast<uint32_t>(data)); });
}

int VynLibWDTSetCountMode(uint8_t mode, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return QueryCountMode();
  if (!IsPerform(selector)) return Fail(VYNLIB_ERROR_SELECTOR);
  return Perform(Choose(mode, kWatchdogCountMode0, kWatchdogCountMode1), kSettingMode);
}

int VynLibWDTGetCountMode(uint8_t* mode, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return QueryCountMode();
  if (!IsPerform(selector)) return Fail(VYNLIB_ERROR_SELECTOR);
  if (Has(kWatchdogList)) StoreResult(mode, 0);
  unsigned long long data = 0;
  return WalkWatchdog(kGettingMode, kGet, &data, IsCountMode, [=](IadtEntry entry) {
    StoreResult(mode, static_cast<uint8_t>(entry.Value() - kWatchdogCountMode0));
  });
}

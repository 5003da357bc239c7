// SPDX-License-Identifier: MIT
/// The 43 feature state functions, written out: how to call each, and what it must answer.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "vynlib/vynlib.h"

namespace apitest {

/// One call. The byte above an 8-bit result shows whether more than that was written.
struct Call {
  static constexpr uint16_t kUntouched = 0xC3C3;
  uint8_t selector = 2;
  uint8_t index = 1;
  uint8_t value = 0;
  uint16_t result = kUntouched;

  uint8_t* Byte() { return reinterpret_cast<uint8_t*>(&result); }
};

/// A function of any of the five shapes behind one call.
struct Function {
  bool reads, indexed, wide;
  std::function<int(Call&)> call;

  Function(int (*f)(uint8_t*, uint8_t))
      : reads(true), indexed(false), wide(false), call([f](Call& c) { return f(c.Byte(), c.selector); }) {}
  Function(int (*f)(uint8_t, uint8_t))
      : reads(false), indexed(false), wide(false), call([f](Call& c) { return f(c.value, c.selector); }) {}
  Function(int (*f)(uint8_t, uint8_t*, uint8_t))
      : reads(true), indexed(true), wide(false), call([f](Call& c) { return f(c.index, c.Byte(), c.selector); }) {}
  Function(int (*f)(uint8_t, uint8_t, uint8_t))
      : reads(false), indexed(true), wide(false), call([f](Call& c) { return f(c.index, c.value, c.selector); }) {}
  Function(int (*f)(uint16_t*, uint8_t))
      : reads(true), indexed(false), wide(true), call([f](Call& c) { return f(&c.result, c.selector); }) {}
};

struct FeatureCase {
  const char* name;
  Function function;
  uint8_t recordType;
  bool performsOne;         ///< selector 1 performs as 2 does
  uint64_t absent;          ///< on the support query
  uint64_t failed;          ///< the commands of every candidate failed
  uint64_t noEntry;         ///< no candidate; 0 for plain readings, which always have one
  uint64_t absentPerforms;  ///< on a perform call
  uint8_t failedResult;     ///< of readings
};

constexpr bool kOneToo = true;
constexpr bool kTwoOnly = false;

// clang-format off
inline const FeatureCase kFeatureCases[] = {
  {"GetComType",               VynLibGetComType,                1, kOneToo,  0x0200, 0x0201, 0x0204, 0x0200, 0xFF},
  {"SetComType",               VynLibSetComType,                1, kOneToo,  0x0200, 0x0202, 0x0204, 0x0200, 0},
  {"GetLVDSState",             VynLibGetLVDSState,              5, kOneToo,  0x0600, 0x0601, 0,      0x0600, 0xFF},
  {"SetLVDSState",             VynLibSetLVDSState,              5, kTwoOnly, 0x0600, 0x0602, 0x0604, 0x0600, 0},
  {"GetLVDSType",              VynLibGetLVDSType,               6, kOneToo,  0x0700, 0x0701, 0,      0x0700, 0xFF},
  {"SetLVDSType",              VynLibSetLVDSType,               6, kTwoOnly, 0x0700, 0x0702, 0x0704, 0x0700, 0},
  {"BacklightCtrl",            VynLibBacklightCtrl,            27, kOneToo,  0x1900, 0x1901, 0x1903, 0x1900, 0},
  {"GetMFGState",              VynLibGetMFGState,               7, kTwoOnly, 0x0800, 0x0801, 0,      0x0800, 0xFF},
  {"GetOnboardTPMState",       VynLibGetOnboardTPMState,        8, kOneToo,  0x0900, 0x0901, 0,      0x0900, 0xFF},
  {"SetOnboardTPMState",       VynLibSetOnboardTPMState,        8, kTwoOnly, 0x0900, 0x0902, 0x0904, 0x0900, 0},
  {"GetMEDescriptorState",     VynLibGetMEDescriptorState,     10, kTwoOnly, 0x0A00, 0x0A01, 0,      0x0A00, 0xFF},
  {"SetMEDescriptorState",     VynLibSetMEDescriptorState,     10, kTwoOnly, 0x0A00, 0x0A02, 0x0A04, 0x0A00, 0},
  {"GetPcieBandwidthMode",     VynLibGetPcieBandwidthMode,     13, kTwoOnly, 0x0B00, 0x0B01, 0,      0x0B00, 0xFF},
  {"GetUsbPwrState",           VynLibGetUsbPwrState,           14, kOneToo,  0x0C00, 0x0C01, 0,      0x0C00, 0xFF},
  {"SetUsbPwrState",           VynLibSetUsbPwrState,           14, kOneToo,  0x0C00, 0x0C02, 0x0C04, 0x0C00, 0},
  {"GetBTState",               VynLibGetBTState,               15, kOneToo,  0x0D00, 0x0D01, 0,      0x0D00, 0xFF},
  {"SetBTState",               VynLibSetBTState,               15, kOneToo,  0x0D00, 0x0D02, 0x0D04, 0x0D00, 0},
  {"GetWifiState",             VynLibGetWifiState,             16, kOneToo,  0x0E00, 0x0E01, 0,      0x0E00, 0xFF},
  {"SetWifiState",             VynLibSetWifiState,             16, kOneToo,  0x0E00, 0x0E02, 0x0E04, 0x0E00, 0},
  {"GetOTPState",              VynLibGetOTPState,              17, kOneToo,  0x0F00, 0x0F01, 0,      0x0F00, 0xFF},
  {"SetOTPState",              VynLibSetOTPState,              17, kTwoOnly, 0x0F00, 0x0F02, 0x0F04, 0x0F00, 0},
  {"GetATModeState",           VynLibGetATModeState,           19, kOneToo,  0x1100, 0x1101, 0,      0x1100, 0xFF},
  {"GetIntelPwrSolutionState", VynLibGetIntelPwrSolutionState, 20, kTwoOnly, 0x1200, 0x1201, 0,      0x1200, 0xFF},
  {"SetIntelPwrSolutionState", VynLibSetIntelPwrSolutionState, 20, kTwoOnly, 0x1200, 0x1202, 0x1204, 0x1200, 0},
  {"DetectTbCIOPlug",          VynLibDetectTbCIOPlug,          21, kTwoOnly, 0x1300, 0x1301, 0,      0x1300, 0xFF},
  {"GetTbFRCPowerState",       VynLibGetTbFRCPowerState,       22, kTwoOnly, 0x1400, 0x1401, 0,      0x1400, 0xFF},
  {"MBVersionState",           VynLibMBVersionState,           23, kTwoOnly, 0x1500, 0x1501, 0,      0x1500, 0xFF},
  {"GetDigitalIOState",        VynLibGetDigitalIOState,        24, kOneToo,  0x1600, 0x1601, 0x1604, 0x1600, 0x00},
  {"SetDigitalIOState",        VynLibSetDigitalIOState,        24, kOneToo,  0x1600, 0x1602, 0x1604, 0x1600, 0},
  {"GetDioConfig",             VynLibGetDioConfig,             34, kOneToo,  0x2000, 0x2001, 0x2004, 0x2000, 0x00},
  {"SetDioConfig",             VynLibSetDioConfig,             34, kOneToo,  0x2000, 0x2002, 0x2004, 0x2000, 0},
  {"GetDioEnPin",              VynLibGetDioEnPin,              35, kOneToo,  0x2100, 0x2101, 0,      0x2100, 0xFF},
  {"SetDioEnPin",              VynLibSetDioEnPin,              35, kOneToo,  0x2100, 0x2102, 0x2104, 0x2100, 0},
  {"GetUserLEDState",          VynLibGetUserLEDState,          28, kOneToo,  0x1B00, 0x1B01, 0,      0x1B00, 0xFF},
  {"SetUserLEDState",          VynLibSetUserLEDState,          28, kOneToo,  0x1B00, 0x1B02, 0x1B03, 0x1B00, 0},
  {"GetUserLEDColor",          VynLibGetUserLEDColor,          33, kOneToo,  0x1F00, 0x1F01, 0x1F04, 0x1F00, 0xFF},
  {"SetUserLEDColor",          VynLibSetUserLEDColor,          33, kOneToo,  0x1F00, 0x1F02, 0x1F04, 0x1E00, 0},
  {"GetJGPIOPowerState",       VynLibGetJGPIOPowerState,       29, kOneToo,  0x1C00, 0x1C01, 0,      0x1C00, 0xFF},
  {"SetJGPIOPowerState",       VynLibSetJGPIOPowerState,       29, kOneToo,  0x1C00, 0x1C02, 0x1C03, 0x1C00, 0},
  {"GetCOMPowerState",         VynLibGetCOMPowerState,         30, kOneToo,  0x1D00, 0x1D01, 0x1D04, 0x1D00, 0xFF},
  {"SetCOMPowerState",         VynLibSetCOMPowerState,         30, kOneToo,  0x1D00, 0x1D02, 0x1D04, 0x1D00, 0},
  {"GetDbgLedColor",           VynLibGetDbgLedColor,           32, kOneToo,  0x1E00, 0x1E01, 0x1E04, 0x1E00, 0xFF},
  {"SetDbgLedColor",           VynLibSetDbgLedColor,           32, kOneToo,  0x1E00, 0x1E02, 0x1E04, 0x1E00, 0},
};
// clang-format on

}  // namespace apitest

// SPDX-License-Identifier: MIT
/// The 43 feature state functions: one row each.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "api/ErrorCodes.h"
#include "vynlib/vynlib.h"

namespace api {

enum class Shape : uint8_t { kRead, kWrite, kIndexedRead, kIndexedWrite, kVersion };

/// The selector values that perform; 0 asks in all of them. Contract: functions differ in them.
enum class Perform : uint8_t { kOneOrTwo, kTwo };

/// What a few functions do differently.
struct Exception {
  std::optional<uint8_t> absentFamily = {};  ///< family reported on a perform call without a list, if not the row's own
  bool clearsResult = false;                 ///< the result becomes 0 before each candidate is tried
};

struct FeatureRow {
  std::string_view name;
  Shape shape;
  uint8_t list;
  uint8_t family;
  Perform perform;
  uint8_t failed;   ///< sub-code when a candidate's commands failed
  uint8_t noEntry;  ///< sub-code when there was no candidate
  Exception differs = {};
  // Both as complete codes, worked out by the compiler.
  uint16_t failedCode = static_cast<uint16_t>(Code(family, failed));
  uint16_t noEntryCode = static_cast<uint16_t>(Code(family, noEntry));
};

using enum Shape;
using enum Perform;

// clang-format off
inline constexpr FeatureRow kFeatures[] = {
  // export                          shape          list family                         perform    failed noEntry
  {"VynLibGetComType",               kIndexedRead,   1, VYNLIB_FAMILY_COM_TYPE,        kOneOrTwo, 0x01, 0x04},
  {"VynLibSetComType",               kIndexedWrite,  1, VYNLIB_FAMILY_COM_TYPE,        kOneOrTwo, 0x02, 0x04},
  {"VynLibGetLVDSState",             kRead,         13, VYNLIB_FAMILY_LVDS_STATE,      kOneOrTwo, 0x01, 0x01},
  {"VynLibSetLVDSState",             kWrite,        13, VYNLIB_FAMILY_LVDS_STATE,      kTwo,      0x02, 0x04},
  {"VynLibGetLVDSType",              kRead,         14, VYNLIB_FAMILY_LVDS_TYPE,       kOneOrTwo, 0x01, 0x01},
  {"VynLibSetLVDSType",              kWrite,        14, VYNLIB_FAMILY_LVDS_TYPE,       kTwo,      0x02, 0x04},
  {"VynLibBacklightCtrl",            kWrite,        15, VYNLIB_FAMILY_BACKLIGHT,       kOneOrTwo, 0x01, 0x03},
  {"VynLibGetMFGState",              kRead,         16, VYNLIB_FAMILY_MFG_STATE,       kTwo,      0x01, 0x01},
  {"VynLibGetOnboardTPMState",       kRead,         17, VYNLIB_FAMILY_ONBOARD_TPM,     kOneOrTwo, 0x01, 0x01},
  {"VynLibSetOnboardTPMState",       kWrite,        17, VYNLIB_FAMILY_ONBOARD_TPM,     kTwo,      0x02, 0x04},
  {"VynLibGetMEDescriptorState",     kRead,         19, VYNLIB_FAMILY_ME_DESCRIPTOR,   kTwo,      0x01, 0x01},
  {"VynLibSetMEDescriptorState",     kWrite,        19, VYNLIB_FAMILY_ME_DESCRIPTOR,   kTwo,      0x02, 0x04},
  {"VynLibGetPcieBandwidthMode",     kRead,         22, VYNLIB_FAMILY_PCIE_BANDWIDTH,  kTwo,      0x01, 0x01},
  {"VynLibGetUsbPwrState",           kRead,         23, VYNLIB_FAMILY_USB_POWER,       kOneOrTwo, 0x01, 0x01},
  {"VynLibSetUsbPwrState",           kWrite,        23, VYNLIB_FAMILY_USB_POWER,       kOneOrTwo, 0x02, 0x04},
  {"VynLibGetBTState",               kRead,         24, VYNLIB_FAMILY_BLUETOOTH,       kOneOrTwo, 0x01, 0x01},
  {"VynLibSetBTState",               kWrite,        24, VYNLIB_FAMILY_BLUETOOTH,       kOneOrTwo, 0x02, 0x04},
  {"VynLibGetWifiState",             kRead,         25, VYNLIB_FAMILY_WIFI,            kOneOrTwo, 0x01, 0x01},
  {"VynLibSetWifiState",             kWrite,        25, VYNLIB_FAMILY_WIFI,            kOneOrTwo, 0x02, 0x04},
  {"VynLibGetOTPState",              kRead,         26, VYNLIB_FAMILY_OTP,             kOneOrTwo, 0x01, 0x01},
  {"VynLibSetOTPState",              kWrite,        26, VYNLIB_FAMILY_OTP,             kTwo,      0x02, 0x04},
  {"VynLibGetATModeState",           kRead,         28, VYNLIB_FAMILY_AT_MODE,         kOneOrTwo, 0x01, 0x01},
  {"VynLibGetIntelPwrSolutionState", kRead,         29, VYNLIB_FAMILY_INTEL_POWER,     kTwo,      0x01, 0x01},
  {"VynLibSetIntelPwrSolutionState", kWrite,        29, VYNLIB_FAMILY_INTEL_POWER,     kTwo,      0x02, 0x04},
  {"VynLibDetectTbCIOPlug",          kRead,         30, VYNLIB_FAMILY_TB_CIO_PLUG,     kTwo,      0x01, 0x01},
  {"VynLibGetTbFRCPowerState",       kRead,         31, VYNLIB_FAMILY_TB_FRC_POWER,    kTwo,      0x01, 0x01},
  {"VynLibMBVersionState",           kVersion,      32, VYNLIB_FAMILY_BOARD_VERSION,   kTwo,      0x01, 0x01},
  {"VynLibGetDigitalIOState",        kIndexedRead,  33, VYNLIB_FAMILY_DIGITAL_IO,      kOneOrTwo, 0x01, 0x04, {.clearsResult = true}},
  {"VynLibSetDigitalIOState",        kIndexedWrite, 33, VYNLIB_FAMILY_DIGITAL_IO,      kOneOrTwo, 0x02, 0x04},
  {"VynLibGetDioConfig",             kIndexedRead,  34, VYNLIB_FAMILY_DIO_CONFIG,      kOneOrTwo, 0x01, 0x04, {.clearsResult = true}},
  {"VynLibSetDioConfig",             kIndexedWrite, 34, VYNLIB_FAMILY_DIO_CONFIG,      kOneOrTwo, 0x02, 0x04},
  {"VynLibGetDioEnPin",              kRead,         35, VYNLIB_FAMILY_DIO_ENABLE,      kOneOrTwo, 0x01, 0x01},
  {"VynLibSetDioEnPin",              kWrite,        35, VYNLIB_FAMILY_DIO_ENABLE,      kOneOrTwo, 0x02, 0x04},
  {"VynLibGetUserLEDState",          kRead,         38, VYNLIB_FAMILY_USER_LED_STATE,  kOneOrTwo, 0x01, 0x01},
  {"VynLibSetUserLEDState",          kWrite,        38, VYNLIB_FAMILY_USER_LED_STATE,  kOneOrTwo, 0x02, 0x03},
  {"VynLibGetUserLEDColor",          kIndexedRead,  39, VYNLIB_FAMILY_USER_LED_COLOR,  kOneOrTwo, 0x01, 0x04},
  // Contract: an absent list is reported under the debug LED family on a perform call.
  {"VynLibSetUserLEDColor",          kIndexedWrite, 39, VYNLIB_FAMILY_USER_LED_COLOR,  kOneOrTwo, 0x02, 0x04, {.absentFamily = VYNLIB_FAMILY_DEBUG_LED_COLOR}},
  {"VynLibGetJGPIOPowerState",       kRead,         40, VYNLIB_FAMILY_JGPIO_POWER,     kOneOrTwo, 0x01, 0x01},
  {"VynLibSetJGPIOPowerState",       kWrite,        40, VYNLIB_FAMILY_JGPIO_POWER,     kOneOrTwo, 0x02, 0x03},
  {"VynLibGetCOMPowerState",         kIndexedRead,  41, VYNLIB_FAMILY_COM_POWER,       kOneOrTwo, 0x01, 0x04},
  {"VynLibSetCOMPowerState",         kIndexedWrite, 41, VYNLIB_FAMILY_COM_POWER,       kOneOrTwo, 0x02, 0x04},
  {"VynLibGetDbgLedColor",           kIndexedRead,  42, VYNLIB_FAMILY_DEBUG_LED_COLOR, kOneOrTwo, 0x01, 0x04},
  {"VynLibSetDbgLedColor",           kIndexedWrite, 42, VYNLIB_FAMILY_DEBUG_LED_COLOR, kOneOrTwo, 0x02, 0x04},
};
// clang-format on

/// The row of an export; a name that is not there, or not of this shape, does not compile.
template <Shape shape>
consteval const FeatureRow& Row(std::string_view name) {
  for (const FeatureRow& row : kFeatures)
    if (row.name == name && row.shape == shape) return row;
  throw "no row of this name and shape";
}

}  // namespace api

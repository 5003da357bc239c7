// SPDX-License-Identifier: MIT
/// What the library's functions do with the entries of each record type.
#pragma once

#include "layout/RecordLayout.h"

namespace diagnosis {

struct FeatureShape {
  uint8_t type;
  bool indexed;  ///< a call is for one instance; elsewhere an entry's index does not count
  bool gets, sets;
};

// clang-format off
inline constexpr FeatureShape kFeatureShapes[] = {
  //                                            indexed  gets   sets
  {layout::Feature("ComType").type,               true,  true,  true},
  {layout::Feature("LVDSState").type,             false, true,  true},
  {layout::Feature("LVDSType").type,              false, true,  true},
  {layout::Feature("MFGState").type,              false, true,  false},
  {layout::Feature("OnboardTPMState").type,       false, true,  true},
  {layout::Feature("MEDescriptorState").type,     false, true,  true},
  {layout::Feature("PcieBandwidthMode").type,     false, true,  false},
  {layout::Feature("UsbPwrState").type,           false, true,  true},
  {layout::Feature("BTState").type,               false, true,  true},
  {layout::Feature("WifiState").type,             false, true,  true},
  {layout::Feature("OTPState").type,              false, true,  true},
  {layout::Feature("ATModeState").type,           false, true,  false},
  {layout::Feature("IntelPwrSolutionState").type, false, true,  true},
  {layout::Feature("TbCIOPlug").type,             false, true,  false},
  {layout::Feature("TbFRCPowerState").type,       false, true,  false},
  {layout::Feature("DigitalIOState").type,        true,  true,  true},
  {layout::Feature("Backlight").type,             false, false, true},
  {layout::Feature("UserLEDState").type,          false, true,  true},
  {layout::Feature("JGPIOPowerState").type,       false, true,  true},
  {layout::Feature("COMPowerState").type,         true,  true,  true},
  {layout::Feature("DbgLedColor").type,           true,  true,  true},
  {layout::Feature("UserLEDColor").type,          true,  true,  true},
  {layout::Feature("DioConfig").type,             true,  true,  true},
  {layout::Feature("DioEnPin").type,              false, true,  true},
};
// clang-format on

/// Null for types that have functions of another kind (board version, watchdog, fans, sensors) or none.
constexpr const FeatureShape* FindShape(uint8_t type) {
  for (const FeatureShape& shape : kFeatureShapes)
    if (shape.type == type) return &shape;
  return nullptr;
}

}  // namespace diagnosis

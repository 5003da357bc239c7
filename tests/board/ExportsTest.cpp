// SPDX-License-Identifier: MIT
// What the shared libraries export: the 66 functions of the interface, and nothing else.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>

namespace {

using Names = std::set<std::string>;

/// By family, in the order of the header.
const Names kInterface = {
    "VynLibDllInit",
    "VynLibDllUnInit",
    "VynLibDllGetLastError",

    "VynLibGetComType",
    "VynLibSetComType",
    "VynLibGetLVDSState",
    "VynLibSetLVDSState",
    "VynLibGetLVDSType",
    "VynLibSetLVDSType",
    "VynLibBacklightCtrl",
    "VynLibGetMFGState",
    "VynLibGetOnboardTPMState",
    "VynLibSetOnboardTPMState",
    "VynLibGetMEDescriptorState",
    "VynLibSetMEDescriptorState",
    "VynLibGetPcieBandwidthMode",
    "VynLibGetUsbPwrState",
    "VynLibSetUsbPwrState",
    "VynLibGetBTState",
    "VynLibSetBTState",
    "VynLibGetWifiState",
    "VynLibSetWifiState",
    "VynLibGetOTPState",
    "VynLibSetOTPState",
    "VynLibGetATModeState",
    "VynLibGetIntelPwrSolutionState",
    "VynLibSetIntelPwrSolutionState",
    "VynLibDetectTbCIOPlug",
    "VynLibGetTbFRCPowerState",
    "VynLibMBVersionState",
    "VynLibGetDigitalIOState",
    "VynLibSetDigitalIOState",
    "VynLibGetDioConfig",
    "VynLibSetDioConfig",
    "VynLibGetDioEnPin",
    "VynLibSetDioEnPin",
    "VynLibGetUserLEDState",
    "VynLibSetUserLEDState",
    "VynLibGetUserLEDColor",
    "VynLibSetUserLEDColor",
    "VynLibGetJGPIOPowerState",
    "VynLibSetJGPIOPowerState",
    "VynLibGetCOMPowerState",
    "VynLibSetCOMPowerState",
    "VynLibGetDbgLedColor",
    "VynLibSetDbgLedColor",

    "VynLibGetVoltage",
    "VynLibGetTemperature",
    "VynLibGetFanSpeed",
    "VynLibGetCurrent",
    "VynLibGetVoltageNames",
    "VynLibGetTemperatureNames",
    "VynLibGetFanSpeedNames",
    "VynLibGetCurrentNames",

    "VynLibWDTEnable",
    "VynLibWDTDisable",
    "VynLibWDTSetInterval",
    "VynLibWDTGetInterval",
    "VynLibWDTSetCountMode",
    "VynLibWDTGetCountMode",

    "VynLibGetFanConfigNames",
    "VynLibGetFANModeSupport",
    "VynLibGetFANConfig",
    "VynLibSetFANConfig",

    "VynLibTableSupported",
    "VynLibGetWhichIOToBeUse",
};

/// The defined dynamic symbols of a library, whatever their kind.
Names Exported(const std::string& library) {
  Names names;
  const auto close = [](FILE* pipe) { pclose(pipe); };
  const std::unique_ptr<FILE, decltype(close)> pipe(popen(("nm -D --defined-only " + library).c_str(), "r"), close);
  char line[512];
  while (pipe && std::fgets(line, sizeof line, pipe.get()) != nullptr) {
    std::istringstream words(line);
    std::string word, name;
    while (words >> word) name = word;
    names.insert(name);
  }
  return names;
}

/// The functions that the public header declares.
Names Declared() {
  Names names;
  std::ifstream header(PUBLIC_HEADER);
  for (std::string line; std::getline(header, line);) {
    if (line.rfind("VYNLIB_API ", 0) != 0) continue;
    const size_t open = line.find('(');
    const size_t start = line.rfind(' ', open) + 1;
    names.insert(line.substr(start, open - start));
  }
  return names;
}

}  // namespace

TEST(Exports, HaveAnInterfaceOf66Functions) { EXPECT_EQ(kInterface.size(), 66u); }

TEST(Exports, AreDeclaredInTheHeader) { EXPECT_EQ(Declared(), kInterface); }

TEST(Exports, OfTheProductionLibraryAreTheInterfaceAndNothingElse) {
  EXPECT_EQ(Exported(PRODUCTION_LIBRARY), kInterface);
}

TEST(Exports, OfTheSimulatedLibraryAreTheInterfaceAndNothingElse) {
  EXPECT_EQ(Exported(SIMULATED_LIBRARY), kInterface);
}

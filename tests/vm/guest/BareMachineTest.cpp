// SPDX-License-Identifier: MIT
// The library on a machine whose firmware carries none of the tables.
#include <gtest/gtest.h>
#include <vynlib/vynlib.h>

#include <functional>

#include "Child.h"

namespace {

struct QueryCase {
  const char* name;
  std::function<int()> query;
  uint64_t code;
};

uint8_t byte = 0xA5;
uint16_t word = 0xA5A5;
uint32_t dword = 0xA5A5A5A5;
float number = 1.5f;

const QueryCase kQueries[] = {
    {"GetComType", [] { return VynLibGetComType(0, &byte, 0); }, 0x200},
    {"SetComType", [] { return VynLibSetComType(0, 0, 0); }, 0x200},
    {"GetLVDSState", [] { return VynLibGetLVDSState(&byte, 0); }, 0x600},
    {"SetLVDSState", [] { return VynLibSetLVDSState(0, 0); }, 0x600},
    {"GetLVDSType", [] { return VynLibGetLVDSType(&byte, 0); }, 0x700},
    {"SetLVDSType", [] { return VynLibSetLVDSType(0, 0); }, 0x700},
    {"BacklightCtrl", [] { return VynLibBacklightCtrl(0, 0); }, 0x1900},
    {"GetMFGState", [] { return VynLibGetMFGState(&byte, 0); }, 0x800},
    {"GetOnboardTPMState", [] { return VynLibGetOnboardTPMState(&byte, 0); }, 0x900},
    {"SetOnboardTPMState", [] { return VynLibSetOnboardTPMState(0, 0); }, 0x900},
    {"GetMEDescriptorState", [] { return VynLibGetMEDescriptorState(&byte, 0); }, 0xA00},
    {"SetMEDescriptorState", [] { return VynLibSetMEDescriptorState(0, 0); }, 0xA00},
    {"GetPcieBandwidthMode", [] { return VynLibGetPcieBandwidthMode(&byte, 0); }, 0xB00},
    {"GetUsbPwrState", [] { return VynLibGetUsbPwrState(&byte, 0); }, 0xC00},
    {"SetUsbPwrState", [] { return VynLibSetUsbPwrState(0, 0); }, 0xC00},
    {"GetBTState", [] { return VynLibGetBTState(&byte, 0); }, 0xD00},
    {"SetBTState", [] { return VynLibSetBTState(0, 0); }, 0xD00},
    {"GetWifiState", [] { return VynLibGetWifiState(&byte, 0); }, 0xE00},
    {"SetWifiState", [] { return VynLibSetWifiState(0, 0); }, 0xE00},
    {"GetOTPState", [] { return VynLibGetOTPState(&byte, 0); }, 0xF00},
    {"SetOTPState", [] { return VynLibSetOTPState(0, 0); }, 0xF00},
    {"GetATModeState", [] { return VynLibGetATModeState(&byte, 0); }, 0x1100},
    {"GetIntelPwrSolutionState", [] { return VynLibGetIntelPwrSolutionState(&byte, 0); }, 0x1200},
    {"SetIntelPwrSolutionState", [] { return VynLibSetIntelPwrSolutionState(0, 0); }, 0x1200},
    {"DetectTbCIOPlug", [] { return VynLibDetectTbCIOPlug(&byte, 0); }, 0x1300},
    {"GetTbFRCPowerState", [] { return VynLibGetTbFRCPowerState(&byte, 0); }, 0x1400},
    {"MBVersionState", [] { return VynLibMBVersionState(&word, 0); }, 0x1500},
    {"GetDigitalIOState", [] { return VynLibGetDigitalIOState(0, &byte, 0); }, 0x1600},
    {"SetDigitalIOState", [] { return VynLibSetDigitalIOState(0, 0, 0); }, 0x1600},
    {"GetDioConfig", [] { return VynLibGetDioConfig(0, &byte, 0); }, 0x2000},
    {"SetDioConfig", [] { return VynLibSetDioConfig(0, 0, 0); }, 0x2000},
    {"GetDioEnPin", [] { return VynLibGetDioEnPin(&byte, 0); }, 0x2100},
    {"SetDioEnPin", [] { return VynLibSetDioEnPin(0, 0); }, 0x2100},
    {"GetUserLEDState", [] { return VynLibGetUserLEDState(&byte, 0); }, 0x1B00},
    {"SetUserLEDState", [] { return VynLibSetUserLEDState(0, 0); }, 0x1B00},
    {"GetUserLEDColor", [] { return VynLibGetUserLEDColor(0, &byte, 0); }, 0x1F00},
    {"SetUserLEDColor", [] { return VynLibSetUserLEDColor(0, 0, 0); }, 0x1F00},
    {"GetJGPIOPowerState", [] { return VynLibGetJGPIOPowerState(&byte, 0); }, 0x1C00},
    {"SetJGPIOPowerState", [] { return VynLibSetJGPIOPowerState(0, 0); }, 0x1C00},
    {"GetCOMPowerState", [] { return VynLibGetCOMPowerState(0, &byte, 0); }, 0x1D00},
    {"SetCOMPowerState", [] { return VynLibSetCOMPowerState(0, 0, 0); }, 0x1D00},
    {"GetDbgLedColor", [] { return VynLibGetDbgLedColor(0, &byte, 0); }, 0x1E00},
    {"SetDbgLedColor", [] { return VynLibSetDbgLedColor(0, 0, 0); }, 0x1E00},
    {"GetVoltageNames", [] { return VynLibGetVoltageNames(nullptr, &byte, 0); }, 0x300},
    {"GetTemperature", [] { return VynLibGetTemperature("CPU", &number, 0); }, 0x400},
    {"GetTemperatureNames", [] { return VynLibGetTemperatureNames(nullptr, &byte, 0); }, 0x400},
    {"GetFanSpeed", [] { return VynLibGetFanSpeed("CPU", &word, 0); }, 0x500},
    {"GetFanSpeedNames", [] { return VynLibGetFanSpeedNames(nullptr, &byte, 0); }, 0x500},
    {"GetCurrent", [] { return VynLibGetCurrent("CPU", &number, 0); }, 0x1A00},
    {"GetCurrentNames", [] { return VynLibGetCurrentNames(nullptr, &byte, 0); }, 0x1A00},
    {"WDTEnable", [] { return VynLibWDTEnable(0, 0, 0); }, 0x1700},
    {"WDTDisable", [] { return VynLibWDTDisable(0); }, 0x1700},
    {"WDTSetInterval", [] { return VynLibWDTSetInterval(0, 0); }, 0x1700},
    {"WDTGetInterval", [] { return VynLibWDTGetInterval(&dword, 0); }, 0x1700},
    {"WDTSetCountMode", [] { return VynLibWDTSetCountMode(0, 0); }, 0x1700},
    {"WDTGetCountMode", [] { return VynLibWDTGetCountMode(&byte, 0); }, 0x1700},
    {"GetFanConfigNames", [] { return VynLibGetFanConfigNames(nullptr, &byte, 0); }, 0x1800},
    {"GetFANConfig", [] { return VynLibGetFANConfig("CPU", &byte, &byte, 0); }, 0x1800},
    {"SetFANConfig", [] { return VynLibSetFANConfig("CPU", &byte, 1, 0); }, 0x1800},
};

class BareMachine : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(1, VynLibDllInit()); }
  void TearDown() override { EXPECT_EQ(1, VynLibDllUnInit()); }
};

}  // namespace

TEST(Init, FailsWithCode1ForAnUnprivilegedUser) {
  EXPECT_EQ("status 1",
            guest::EndAsNobody([] { return VynLibDllInit() == 0 && VynLibDllGetLastError() == 1 ? 1 : 0; }));
}

TEST(Init, LeavesEveryFunctionRefusedAfterFailing) {
  EXPECT_EQ("status 1", guest::EndAsNobody([] {
              VynLibDllInit();
              uint8_t state = 0x5A;
              return VynLibGetLVDSState(&state, 2) == 0 && VynLibDllGetLastError() == 1 && state == 0x5A ? 1 : 0;
            }));
}

TEST(Init, SucceedsWithoutTables) {
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(1, VynLibDllInit());
  EXPECT_EQ(0u, VynLibDllGetLastError());
  // UEFI firmware leaves no root pointer below 1 MiB, and without a table of the board none is provided.
  const std::string search = access("/sys/firmware/efi", F_OK) == 0 ? "TAcpiBase::BuildRSDP Failed !!\n" : "";
  EXPECT_EQ("Is Core8 ... ???\n" + search + "ModelName::\n", ::testing::internal::GetCapturedStdout());
  EXPECT_EQ(1, VynLibDllUnInit());
}

TEST_F(BareMachine, EveryQueryAnswersThatTheFunctionIsNotOffered) {
  for (const QueryCase& row : kQueries) {
    EXPECT_EQ(0, row.query()) << row.name;
    EXPECT_EQ(row.code, VynLibDllGetLastError()) << row.name;
  }
}

TEST_F(BareMachine, TheVoltageQueryAloneAnswersYes) {
  EXPECT_EQ(1, VynLibGetVoltage("CPU", &number, 0));
  EXPECT_EQ(0u, VynLibDllGetLastError());
}

TEST_F(BareMachine, FanModeSupportIsNotOffered) {
  byte = 0xA5;
  VynLibGetFANModeSupport("CPU", &byte);
  EXPECT_EQ(0x1800u, VynLibDllGetLastError());
  EXPECT_EQ(0xA5, byte);
}

TEST_F(BareMachine, NoTableIsSupported) { EXPECT_EQ(0, VynLibTableSupported(2)); }

TEST_F(BareMachine, NoChipServesAFunction) {
  // Identifier 0 is listed three times in an empty board record, and has no I/O number.
  byte = 0xA5;
  VynLibGetWhichIOToBeUse(1, "", &byte);
  EXPECT_EQ(18u, VynLibDllGetLastError());
  EXPECT_EQ(0, byte);
}

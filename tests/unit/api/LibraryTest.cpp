// SPDX-License-Identifier: MIT
// Start, tear-down and the last error.
#include "api/Library.h"

#include <algorithm>
#include <memory>

#include "api/TVyn.h"
#include "firmware/BiosInfo.h"
#include "hw/TReadWrite.h"
#include "smbus/TSMBus.h"
#include "tables/TAcpiBase.h"
#include "tables/TIAMTable.h"
#include "tables/TIAxTCommon.h"
#include "tests/unit/api/ApiBoard.h"

using namespace apitest;

namespace {

class Init : public Api {};
class UnInit : public Api {};
class GetLastError : public Api {};

std::string PrintedByInit(int expected) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(VynLibDllInit(), expected);
  return testing::internal::GetCapturedStdout();
}

/// The levels that the library asked for, in order.
std::vector<uint64_t> Levels(sim::Board& board) {
  std::vector<uint64_t> levels;
  for (const sim::Access& access : board.Log())
    if (access.kind == sim::Access::kIopl) levels.push_back(access.value);
  return levels;
}

}  // namespace

TEST_F(GetLastError, Is0BeforeAnyOtherCall) { EXPECT_EQ(VynLibDllGetLastError(), 0u); }

TEST_F(GetLastError, IsUnchangedByItself) {
  uint8_t state = 0;
  VynLibGetLVDSState(&state, 2);
  EXPECT_EQ(VynLibDllGetLastError(), 1u);
  EXPECT_EQ(VynLibDllGetLastError(), 1u);
}

TEST_F(Init, CreatesEverySingletonAndSetsInitOkAndNoCode) {
  api::LastErrorCode = 99;
  Start();
  EXPECT_EQ(api::InitOk, 1);
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
  EXPECT_EQ(api::rw, TReadWrite::g_Instance);
  EXPECT_EQ(api::Acpi, TAcpiBase::g_Instance);
  EXPECT_EQ(api::IAMTable, TIAMTable::g_Instance);
  EXPECT_EQ(api::IADTable, TIADTable::g_Instance);
  EXPECT_EQ(api::IAxTCommon, TIAxTCommon::g_Instance);
  EXPECT_NE(api::rw, nullptr);
  EXPECT_NE(api::vyn, nullptr);
  EXPECT_NE(api::Acpi, nullptr);
  EXPECT_NE(api::IAxTCommon, nullptr);
}

TEST_F(Init, PrintsTheModelName) {
  board.Memory(0xE4560, firmware::BiosInfo{.model = "VX-2000 rev B"}.Build());
  Start();
  EXPECT_EQ(printed, "ModelName::VX-2000 rev B\n");
}

TEST_F(Init, SucceedsWithoutAnyTable) {
  StartWithoutTables();
  EXPECT_EQ(printed, "Is Core8 ... ???\nTAcpiBase::BuildRSDP Failed !!\nModelName::\n");
  EXPECT_EQ(api::InitOk, 1);
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
}

TEST_F(Init, PrintsTheNameOfTheLastCandidateWhenNoneIsValid) {
  board.Memory(0xE0000, firmware::BiosInfo{.model = "first", .checksum = 1}.Build());
  board.Memory(0xF8000, firmware::BiosInfo{.model = "second", .checksum = 1}.Build());
  Start();
  EXPECT_EQ(printed, "Is Core8 ... ???\nModelName::second\n");
}

TEST_F(Init, FailsWithCode1WithoutPrivilege) {
  board.privileged = false;
  api::LastErrorCode = 99;
  EXPECT_EQ(PrintedByInit(0), "Please run as root!\n");
  EXPECT_EQ(VynLibDllGetLastError(), 1u);
  EXPECT_EQ(api::InitOk, 0);
  EXPECT_EQ(api::vyn, nullptr);
  EXPECT_EQ(TAcpiBase::g_Instance, nullptr);
  EXPECT_EQ(TIAMTable::g_Instance, nullptr);
  EXPECT_EQ(TIADTable::g_Instance, nullptr);
  EXPECT_EQ(TIAxTCommon::g_Instance, nullptr);
}

TEST_F(Init, WithoutPrivilegeIsNoStart) {
  board.privileged = false;
  PrintedByInit(0);
  EXPECT_EQ(VynLibDllUnInit(), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 1u);
}

TEST_F(Init, RaisesThePrivilegeOnce) {
  firmware::AcpiImage().PutInto(&board);
  PrintedByInit(1);
  EXPECT_EQ(Levels(board), (std::vector<uint64_t>{3}));
}

TEST_F(Init, LooksForAnSmbusControllerAfterTheTables) {
  firmware::AcpiImage().Table(iadt.Build()).Table(iamt.Build()).PutInto(&board);
  PrintedByInit(1);
  size_t lastMapping = 0, firstPort = board.Log().size();
  for (size_t i = board.Log().size(); i-- > 0;) {
    const auto kind = board.Log()[i].kind;
    if (kind == sim::Access::kMap) lastMapping = std::max(lastMapping, i);
    if (kind == sim::Access::kIn || kind == sim::Access::kOut) firstPort = i;
  }
  ASSERT_GT(lastMapping, 0u);
  EXPECT_LT(lastMapping, firstPort);
  EXPECT_LT(firstPort, board.Log().size());
}

TEST_F(Init, AgainKeepsTheSingletonsAndTakesANewBoardObject) {
  iadt.Feature("LVDSState", 5, {});
  Start();
  const std::unique_ptr<TVyn> dropped(api::vyn);  // the library lets go of it
  const TIADTable* table = api::IADTable;
  api::LastErrorCode = 99;
  EXPECT_EQ(PrintedByInit(1), "Is Core8 ... ???\nModelName::\n");
  EXPECT_NE(api::vyn, dropped.get());
  EXPECT_EQ(api::IADTable, table);
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
  int nodes = 0;
  for ([[maybe_unused]] const IadtEntry entry : api::Entries(13)) ++nodes;
  EXPECT_EQ(nodes, 1);
}

TEST_F(Init, LeavesNoDescriptorAndNoMapping) {
  Start();
  EXPECT_EQ(board.OpenDescriptors(), 0);
  EXPECT_EQ(board.LiveMappings(), 0);
}

TEST_F(UnInit, Returns0AndLeavesTheCodeWithoutAStart) {
  api::LastErrorCode = 99;
  EXPECT_EQ(VynLibDllUnInit(), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 99u);
}

TEST_F(UnInit, FreesEverythingAndLeavesInitOkSet) {
  Start();
  api::LastErrorCode = 99;
  EXPECT_EQ(VynLibDllUnInit(), 1);
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
  EXPECT_EQ(api::InitOk, 1);
  EXPECT_EQ(TReadWrite::g_Instance, nullptr);
  EXPECT_EQ(TAcpiBase::g_Instance, nullptr);
  EXPECT_EQ(TIAMTable::g_Instance, nullptr);
  EXPECT_EQ(TIADTable::g_Instance, nullptr);
  EXPECT_EQ(TIAxTCommon::g_Instance, nullptr);
  EXPECT_EQ(TSMBus::g_Instance, nullptr);
}

TEST_F(UnInit, DropsThePrivilege) {
  Start();
  VynLibDllUnInit();
  EXPECT_EQ(Levels(board).back(), 0u);
  EXPECT_EQ(board.OpenDescriptors(), 0);
  EXPECT_EQ(board.LiveMappings(), 0);
}

TEST_F(UnInit, AgainStillReturns1) {
  Start();
  VynLibDllUnInit();
  api::LastErrorCode = 99;
  EXPECT_EQ(VynLibDllUnInit(), 1);
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
}

TEST_F(UnInit, IsFollowedByAStartThatWorksFully) {
  board.Ports(0x300, {1});
  iadt.Feature("LVDSState", 5, {PortIs(0x300, 1)});
  Start();
  VynLibDllUnInit();
  PrintedByInit(1);
  uint8_t state = 0;
  EXPECT_EQ(VynLibGetLVDSState(&state, 2), 1);
  EXPECT_EQ(state, 5);
}

TEST_F(UnInit, IsFollowedByAFailedStartThatClearsInitOk) {
  Start();
  VynLibDllUnInit();
  board.privileged = false;
  PrintedByInit(0);
  EXPECT_EQ(api::InitOk, 0);
  EXPECT_EQ(VynLibDllUnInit(), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 1u);
}

TEST_F(UnInit, LeavesEveryLaterCallSafe) {
  iadt.Feature("LVDSState", 5, {});
  Start();
  VynLibDllUnInit();
  float number = 1;
  uint16_t rpm = 1;
  uint8_t byte = 1;
  uint32_t interval = 7;
  EXPECT_EQ(VynLibGetVoltage("a", &number, 1), 0);
  EXPECT_EQ(TakeCode(), 0x300u);
  EXPECT_EQ(VynLibGetVoltage("a", &number, 0), 1);  // as on a board without any voltage list
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_EQ(VynLibGetTemperature("a", &number, 1), 0);
  EXPECT_EQ(TakeCode(), 0x400u);
  EXPECT_EQ(VynLibGetFanSpeed("a", &rpm, 1), 0);
  EXPECT_EQ(TakeCode(), 0x500u);
  EXPECT_EQ(VynLibGetCurrent("a", &number, 1), 0);
  EXPECT_EQ(TakeCode(), 0x1A00u);
  EXPECT_EQ(VynLibGetVoltageNames(nullptr, &byte, 1), 0);
  EXPECT_EQ(TakeCode(), 0x300u);
  EXPECT_EQ(VynLibWDTEnable(1, 0, 1), 0);
  EXPECT_EQ(TakeCode(), 0x1700u);
  EXPECT_EQ(VynLibWDTDisable(1), 0);
  EXPECT_EQ(TakeCode(), 0x1700u);
  EXPECT_EQ(VynLibWDTSetInterval(1, 1), 0);
  EXPECT_EQ(TakeCode(), 0x1700u);
  EXPECT_EQ(VynLibWDTGetInterval(&interval, 1), 0);
  EXPECT_EQ(TakeCode(), 0x1700u);
  EXPECT_EQ(interval, 7u);
  EXPECT_EQ(VynLibWDTGetCountMode(&byte, 1), 0);
  EXPECT_EQ(TakeCode(), 0x1700u);
  EXPECT_EQ(VynLibWDTSetCountMode(0, 0), 0);
  EXPECT_EQ(TakeCode(), 0x1700u);
  EXPECT_EQ(VynLibGetFanConfigNames(nullptr, &byte, 1), 0);
  EXPECT_EQ(TakeCode(), 0x1800u);
  VynLibGetFANModeSupport("a", &byte);
  EXPECT_EQ(TakeCode(), 0x1800u);
  EXPECT_EQ(VynLibGetFANConfig("a", &byte, &byte, 1), 0);
  EXPECT_EQ(TakeCode(), 0x1800u);
  EXPECT_EQ(VynLibSetFANConfig("a", &byte, 1, 1), 0);
  EXPECT_EQ(TakeCode(), 0x1800u);
  VynLibGetWhichIOToBeUse(1, "a", &byte);
  EXPECT_EQ(TakeCode(), 17u);
  VynLibGetWhichIOToBeUse(25, "a", &byte);
  EXPECT_EQ(TakeCode(), 16u);
}

TEST(VynLibCheckAvailabled, SetsCode1OnlyWithoutAStart) {
  api::LastErrorCode = 99;
  EXPECT_FALSE(api::VynLibCheckAvailabled());
  EXPECT_EQ(api::LastErrorCode, 1u);
  api::InitOk = 1;
  api::LastErrorCode = 99;
  EXPECT_TRUE(api::VynLibCheckAvailabled());
  EXPECT_EQ(api::LastErrorCode, 99u);
  api::InitOk = 0;
  api::LastErrorCode = 0;
}

TEST(Code, IsTheFamilyTimes256PlusTheSubCode) {
  EXPECT_EQ(api::Code(0x06, 0x04), 0x604u);
  EXPECT_EQ(api::Code(0x21, 0x00), 0x2100u);
}

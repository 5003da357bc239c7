// SPDX-License-Identifier: MIT
// Detection and byte and word transfers, script by script.
#include "smbus/TSMBus.h"

#include "SMBusBoard.h"

using sim::In8;
using sim::Out8;
using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

constexpr unsigned char kSlave = 0xA0;

class TSMBusDetection : public SMBusBoard {
 protected:
  static void AddRecord(const char* name, const char* detect) {
    TSMBusCfg config;
    config.Name = name;
    config.DetectScript = detect;
    config.BlockMode = 7;
    config.ClockGenAddress = 0xD4;
    TSMBusConfig::GetInstance()->AddConfig(&config);
  }
};

TEST_F(TSMBusDetection, FindsNothingOnAMachineWithoutAController) {
  EXPECT_EQ(TSMBus::GetInstance()->GetSMBusConfig(), nullptr);
  EXPECT_TRUE(TSMBus::GetInstance()->Name.IsEmpty());
  EXPECT_EQ(TSMBus::GetInstance()->GetClockGenAddress(), 0);
  EXPECT_EQ(TSMBus::GetInstance()->Value, -1);
}

TEST_F(TSMBusDetection, TakesTheFirstRecordInNameOrderWhoseResultIsZero) {
  AddRecord("bb", "Local0=0");
  AddRecord("z", "Local0=0");
  AddRecord("y", "Local0=1");
  EXPECT_STREQ(TSMBus::GetInstance()->GetSMBusConfig()->Name.c_str(), "z");
}

TEST_F(TSMBusDetection, PointsIntoTheRegistryAndCopiesTheFields) {
  AddRecord("z", "Local0=0");
  TSMBus& bus = *TSMBus::GetInstance();
  EXPECT_EQ(bus.GetSMBusConfig(), &TSMBusConfig::GetInstance()->GetConfigs().at("z"));
  EXPECT_STREQ(bus.Name.c_str(), "z");
  EXPECT_STREQ(bus.DetectScript.c_str(), "Local0=0");
  EXPECT_EQ(bus.BlockMode, 7);
  EXPECT_EQ(bus.GetClockGenAddress(), 0xD4);
}

TEST_F(TSMBusDetection, KeepsTheVariablesFromRecordToRecord) {
  AddRecord("y", "Local3=5");
  AddRecord("z", "Sub(Local3,5)");
  ASSERT_NE(TSMBus::GetInstance()->GetSMBusConfig(), nullptr);
  EXPECT_STREQ(TSMBus::GetInstance()->Name.c_str(), "z");
}

TEST_F(TSMBusDetection, StopsAtTheFirstMatch) {
  AddRecord("y", "Local0=0");
  AddRecord("z", "o(0x80,1)");
  TSMBus::GetInstance();
  EXPECT_THAT(board.PortLog(), testing::Not(testing::Contains(Out8(0x80, 1))));
}

// The given text of "Intel ICHx" yields 0x03000000 on an ICH9.
TEST_F(TSMBusDetection, ComparesAllThirtyTwoBitsOfTheResult) {
  AddRecord("z", "Local0=0x03000000");
  EXPECT_EQ(TSMBus::GetInstance()->GetSMBusConfig(), nullptr);
}

TEST_F(TSMBusDetection, DoesNotTakeAScriptThatYieldsNothing) {
  AddRecord("x", "");
  AddRecord("y", "nonsense 1");
  AddRecord("z", "KQEXIT");
  EXPECT_EQ(TSMBus::GetInstance()->GetSMBusConfig(), nullptr);
}

TEST_F(TSMBusDetection, FindsNothingWithoutPrivilege) {
  board.privileged = false;
  AddRecord("z", "Local0=0");
  testing::internal::CaptureStdout();
  TSMBus& bus = *TSMBus::GetInstance();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(bus.GetSMBusConfig(), nullptr);
  EXPECT_TRUE(board.PortLog().empty());
}

TEST_F(TSMBusDetection, IsRepeatable) {
  AddRecord("z", "i(0x70)");
  board.Ports(0x70, {0});
  TSMBus& bus = *TSMBus::GetInstance();
  ASSERT_NE(bus.GetSMBusConfig(), nullptr);
  board.SetPort(0x70, 1);
  bus.DetectSMBus();
  EXPECT_EQ(bus.GetSMBusConfig(), nullptr);
  EXPECT_TRUE(bus.Name.IsEmpty());
}

TEST_F(TSMBusDetection, FreeInstanceForgetsAndMayBeRepeated) {
  TSMBus::GetInstance();
  TSMBus::FreeInstance();
  EXPECT_EQ(TSMBus::g_Instance, nullptr);
  TSMBus::FreeInstance();
  EXPECT_NE(TSMBus::GetInstance(), nullptr);
}

class TSMBusWithoutController : public SMBusBoard {};

TEST_F(TSMBusWithoutController, EveryTransactionFailsAndTouchesNoPort) {
  TSMBus& bus = *TSMBus::GetInstance();
  board.Log().clear();
  unsigned char buffer[64] = {};
  int count = 5;
  EXPECT_EQ(bus.ReadSmbusByte(kSlave, buffer, 0, 1), 0);
  EXPECT_EQ(bus.ReadSmbusByte(kSlave, buffer, 1), 0);
  EXPECT_EQ(bus.ReadSmbusByte(kSlave, buffer, 0, 1, ""), 0);
  EXPECT_EQ(bus.WriteSmbusByte(kSlave, buffer, 0, 1), 0);
  EXPECT_EQ(bus.WriteSmbusByte(kSlave, buffer, 0, 1, ""), 0);
  EXPECT_EQ(bus.WriteSmbusByte(kSlave, 1, 'x'), 0);
  EXPECT_EQ(bus.ReadSmbusWord(kSlave, buffer, 0, 1), 0);
  EXPECT_EQ(bus.WriteSmbusWord(kSlave, 1, static_cast<unsigned short>(7)), 0);
  EXPECT_EQ(bus.ReadSmbusBlock(kSlave, buffer, 0, &count), 0);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(bus.WriteSmbusBlock(kSlave, buffer), 0);
  EXPECT_EQ(bus.ReadSmbusByteCmd(kSlave, 1, buffer, 1), 0);
  EXPECT_EQ(bus.WriteSmbusCmd(kSlave, 1, 2, buffer, 1), 0);
  EXPECT_TRUE(board.PortLog().empty());
}

TEST_F(TSMBusWithoutController, SoDoesEveryTransactionWithoutPrivilege) {
  board.privileged = false;
  testing::internal::CaptureStdout();
  unsigned char byte = 0;
  EXPECT_EQ(TSMBus::GetInstance()->ReadSmbusByte(kSlave, &byte, 0, 1), 0);
  EXPECT_EQ(TSMBus::GetInstance()->ReadSmbusByte(kSlave, &byte, 0, 1, "Local0=0x400"), 0);
  testing::internal::GetCapturedStdout();
  EXPECT_TRUE(board.PortLog().empty());
}

// --- bytes ---

using TSMBusByteRead = MarkedBoard;

TEST_F(TSMBusByteRead, RunsTheScriptsInThisOrder) {
  board.SetPort(kDataPort, 0x5A);
  unsigned char byte = 0;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0x10, 1), 1);
  EXPECT_EQ(byte, 0x5A);
  const std::vector<sim::Access> element = {Step(8),  In8(0x90, 0), Out8(0x81, 0xA1), Out8(0x82, 0x10), Step(14),
                                            Step(16), In8(0x91, 0), Step(17),         In8(0x92, 0x5A)};
  EXPECT_THAT(board.PortLog(), ElementsAreArray(Opening() + element + Closing()));
}

TEST_F(TSMBusByteRead, ReadsRegistersInAscendingOrder) {
  Answer(kDataPort, {0x11, 0x22, 0x33});
  unsigned char bytes[4] = {0, 0, 0, 0xEE};
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, bytes, 0x10, 3), 1);
  EXPECT_THAT(bytes, ElementsAre(0x11, 0x22, 0x33, 0xEE));
  std::vector<uint64_t> commands;
  for (const sim::Access& access : board.PortLog())
    if (access.address == 0x82) commands.push_back(access.value);
  EXPECT_THAT(commands, ElementsAre(0x10, 0x11, 0x12));
}

TEST_F(TSMBusByteRead, BeginsAtCommandZeroWithoutACommand) {
  unsigned char bytes[2];
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, bytes, 2), 1);
  EXPECT_THAT(board.PortLog(), testing::IsSupersetOf({Out8(0x82, 0), Out8(0x82, 1)}));
}

TEST_F(TSMBusByteRead, SetsTheReadBitWhateverTheCallerPasses) {
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(0xA1, &byte, 0, 1), 1);
  EXPECT_THAT(board.PortLog(), testing::Contains(Out8(0x81, 0xA1)));
}

TEST_F(TSMBusByteRead, OfNothingSucceedsAfterTheIdleCheck) {
  for (const int count : {0, -1, -1000}) {
    Bus();
    board.Log().clear();
    EXPECT_EQ(Bus().ReadSmbusByte(kSlave, nullptr, 0x10, count), 1);
    EXPECT_THAT(board.PortLog(), ElementsAreArray(Opening() + Closing()));
  }
}

TEST_F(TSMBusByteRead, FailsWithARestoreWhenTheHostIsNotIdle) {
  board.SetPort(kIdlePort, 1);
  unsigned char byte = 0x77;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0x10, 1), 0);
  EXPECT_EQ(byte, 0x77);
  EXPECT_THAT(board.PortLog(), ElementsAre(Step(2), Step(3), Step(4), Step(8), In8(0x90, 1), Step(27)));
}

TEST_F(TSMBusByteRead, FailsWithAnIdleWaitAndARestoreWhenTheHostIsNotIdleBetweenRegisters) {
  Answer(kIdlePort, {0, 0, 1});
  unsigned char bytes[2] = {};
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, bytes, 0x10, 2), 0);
  const auto log = board.PortLog();
  const std::vector<sim::Access> tail(log.end() - 5, log.end());
  EXPECT_THAT(tail, ElementsAre(Step(8), In8(0x90, 1), Step(8), In8(0x90, 1), Step(27)));
}

TEST_F(TSMBusByteRead, ComparesTheIdleValue) {
  config.IdleValue = 0x20;
  board.SetPort(kIdlePort, 0x20);
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 1);
}

TEST_F(TSMBusByteRead, ComparesTheLowEightBitsOfResults) {
  config.WaitIdleScript = "Local0=0x1200";
  config.ByteWaitScript = "Local0=0x400";
  config.ByteReadScript = "Local0=0x1234";
  unsigned char byte = 0;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 1);
  EXPECT_EQ(byte, 0x34);
}

TEST_F(TSMBusByteRead, AnErrorStatusRunsTheIdleWaitTwiceAndRestores) {
  board.SetPort(kWaitPort, 0x06);
  unsigned char byte = 0x77;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0x10, 1), 0);
  EXPECT_EQ(byte, 0x77);
  const std::vector<sim::Access> element = {Step(8),  In8(0x90, 0),    Out8(0x81, 0xA1), Out8(0x82, 0x10), Step(14),
                                            Step(16), In8(0x91, 0x06), Step(8),          In8(0x90, 0)};
  EXPECT_THAT(board.PortLog(), ElementsAreArray(Opening() + element + Closing()));
}

TEST_F(TSMBusByteRead, BytesReadBeforeAnErrorStayInTheBuffer) {
  Answer(kWaitPort, {0, 4});
  Answer(kDataPort, {0x11, 0x22});
  unsigned char bytes[] = {0xEE, 0xEE};
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, bytes, 0x10, 2), 0);
  EXPECT_THAT(bytes, ElementsAre(0x11, 0xEE));
}

TEST_F(TSMBusByteRead, StatusBitsOutsideTheErrorMaskAreNoError) {
  board.SetPort(kWaitPort, 0xFB);
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 1);
}

TEST_F(TSMBusByteRead, AScriptThatFailsEarlyLooksNeitherIdleNorFreeOfErrors) {
  config.WaitIdleScript = "nonsense 1";
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 0);
  TSMBus::FreeInstance();
  config = MarkedRecord();
  config.ByteWaitScript = "nonsense 1";
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 0);
}

TEST_F(TSMBusByteRead, AReadScriptThatYieldsNothingReadsAllOnes) {
  config.ByteReadScript = "";
  unsigned char byte = 0;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 1);
  EXPECT_EQ(byte, 0xFF);
}

TEST_F(TSMBusByteRead, EachTransactionBeginsWithAllVariablesZero) {
  config.EnableScript = "o(0x80,Local3); Local3=9";
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 1);
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 1);
  EXPECT_THAT(board.PortLog(), testing::Not(testing::Contains(Step(9))));
}

TEST_F(TSMBusByteRead, RunsPastRegister255) {
  unsigned char bytes[2];
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, bytes, 0xFF, 2), 1);
  EXPECT_THAT(board.PortLog(), testing::IsSupersetOf({Out8(0x82, 0xFF), Out8(0x82, 0x00)}));
}

// --- retry ---

using TSMBusRetry = MarkedBoard;

TEST_F(TSMBusRetry, RunsTheRetryScriptAndReadsTheSameRegisterAgain) {
  config.RetryValue = 0x40;
  Answer(kWaitPort, {0x40, 0x40, 0});
  Answer(kDataPort, {0x5A, 0x6B});
  unsigned char bytes[2] = {};
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, bytes, 0x10, 2), 1);
  EXPECT_THAT(bytes, ElementsAre(0x5A, 0x6B));
  std::vector<sim::Access> steps;
  for (const sim::Access& access : board.PortLog())
    if (access == Step(31) || access.address == 0x82) steps.push_back(access);
  EXPECT_THAT(steps,
              ElementsAre(Out8(0x82, 0x10), Step(31), Out8(0x82, 0x10), Step(31), Out8(0x82, 0x10), Out8(0x82, 0x11)));
}

TEST_F(TSMBusRetry, ComesBeforeTheErrorTestAndFromTheIdleWaitOn) {
  config.RetryValue = 4;
  Answer(kWaitPort, {4, 0});
  unsigned char byte = 0;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0x10, 1), 1);
  const std::vector<sim::Access> attempt = {Step(8),          In8(0x90, 0), Out8(0x81, 0xA1),
                                            Out8(0x82, 0x10), Step(14),     Step(16)};
  EXPECT_THAT(board.PortLog(), ElementsAreArray(Opening() + attempt + std::vector{In8(0x91, 4), Step(31)} + attempt +
                                                std::vector{In8(0x91, 0), Step(17), In8(0x92, 0)} + Closing()));
}

TEST_F(TSMBusRetry, HasNoLimit) {
  config.RetryValue = 4;
  int waits = 0;
  class Stubborn : public sim::PortDevice {
   public:
    explicit Stubborn(int& count) : count_(count) {}
    uint32_t Read(sim::Board&, uint16_t, unsigned) override { return ++count_ < 1000 ? 4 : 0; }
    void Write(sim::Board&, uint16_t, unsigned, uint32_t) override {}

   private:
    int& count_;
  };
  board.Attach(kWaitPort, 1, std::make_shared<Stubborn>(waits));
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 1);
  EXPECT_EQ(waits, 1000);
}

TEST_F(TSMBusRetry, IsOffWithARetryValueOfZero) {
  board.SetPort(kWaitPort, 0);
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 1);
  EXPECT_THAT(board.PortLog(), testing::Not(testing::Contains(Step(31))));
}

TEST_F(TSMBusRetry, WritesTheSameByteAgain) {
  config.RetryValue = 0x40;
  Answer(kWaitPort, {0x40, 0});
  EXPECT_EQ(Bus().WriteSmbusByte(kSlave, 0x10, 'x'), 1);
  int data = 0;
  for (const sim::Access& access : board.PortLog()) data += access == Out8(0x83, 'x');
  EXPECT_EQ(data, 2);
}

// --- byte writes ---

using TSMBusByteWrite = MarkedBoard;

TEST_F(TSMBusByteWrite, RunsTheScriptsInThisOrder) {
  unsigned char bytes[] = {0xC3, 0x3C};
  EXPECT_EQ(Bus().WriteSmbusByte(0xA1, bytes, 0x10, 2), 1);
  const auto element = [](uint8_t command, uint8_t value) -> std::vector<sim::Access> {
    return {Step(8),           In8(0x90, 0), Out8(0x81, 0xA0), Out8(0x82, command),
            Out8(0x83, value), Step(15),     Step(16),         In8(0x91, 0)};
  };
  EXPECT_THAT(board.PortLog(), ElementsAreArray(Opening() + element(0x10, 0xC3) + element(0x11, 0x3C) + Closing()));
}

TEST_F(TSMBusByteWrite, OfOneValueTakesItAsAByte) {
  EXPECT_EQ(Bus().WriteSmbusByte(kSlave, 0x21, static_cast<char>(0x80)), 1);
  EXPECT_THAT(board.PortLog(), testing::IsSupersetOf({Out8(0x82, 0x21), Out8(0x83, 0x80)}));
}

TEST_F(TSMBusByteWrite, BeginsAtCommandZeroWithoutACommand) {
  unsigned char bytes[] = {1, 2};
  EXPECT_EQ(Bus().WriteSmbusByte(kSlave, bytes, 2), 1);
  EXPECT_THAT(board.PortLog(), testing::IsSupersetOf({Out8(0x82, 0), Out8(0x82, 1)}));
}

TEST_F(TSMBusByteWrite, StopsAtAnError) {
  Answer(kWaitPort, {0, 4});
  unsigned char bytes[] = {1, 2, 3};
  EXPECT_EQ(Bus().WriteSmbusByte(kSlave, bytes, 0, 3), 0);
  EXPECT_THAT(board.PortLog(), testing::Not(testing::Contains(Out8(0x83, 3))));
  EXPECT_EQ(board.PortLog().back(), Step(27));
}

// --- alternatives ---

using TSMBusBases = MarkedBoard;

TEST_F(TSMBusBases, OneBaseScriptMeansOneAttempt) {
  board.SetPort(kWaitPort, 4);
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 0);
  EXPECT_EQ(testing::Value(board.PortLog(), testing::Contains(Step(4)).Times(1)), true);
  EXPECT_EQ(testing::Value(board.PortLog(), testing::Contains(Step(27)).Times(1)), true);
}

TEST_F(TSMBusBases, AreTriedInOrderUntilOneSucceeds) {
  config.BaseScript2 = "o(0x80,5)";
  config.BaseScript3 = "o(0x80,6)";
  Answer(kWaitPort, {4, 0});
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 1);
  EXPECT_THAT(board.PortLog(), testing::IsSupersetOf({Step(4), Step(5)}));
  EXPECT_THAT(board.PortLog(), testing::Not(testing::Contains(Step(6))));
}

TEST_F(TSMBusBases, ABusyHostIsTriedThroughTheNext) {
  config.BaseScript2 = "o(0x80,5)";
  Answer(kIdlePort, {1, 0});
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 1);
}

TEST_F(TSMBusBases, EmptyOnesAreSkipped) {
  config.BaseScript1 = "";
  config.BaseScript4 = "o(0x80,7)";
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 1);
  EXPECT_EQ(board.PortLog()[2], Step(7));
}

TEST_F(TSMBusBases, TheLastOneDecides) {
  config.BaseScript4 = "o(0x80,7)";
  board.SetPort(kWaitPort, 4);
  unsigned char byte;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1), 0);
  EXPECT_THAT(board.PortLog(), testing::IsSupersetOf({Step(4), Step(7)}));
}

TEST_F(TSMBusBases, AGivenBaseScriptIsTheOnlyOne) {
  config.BaseScript2 = "o(0x80,5)";
  board.SetPort(kWaitPort, 4);
  unsigned char byte = 0;
  EXPECT_EQ(Bus().ReadSmbusByte(kSlave, &byte, 0, 1, "o(0x80,99)"), 0);
  EXPECT_EQ(board.PortLog()[2], Step(99));
  EXPECT_THAT(board.PortLog(), testing::Not(testing::Contains(testing::AnyOf(Step(4), Step(5)))));
  EXPECT_EQ(Bus().WriteSmbusByte(kSlave, &byte, 0, 1, "o(0x80,98)"), 0);
  EXPECT_THAT(board.PortLog(), testing::Contains(Step(98)));
}

// --- words ---

using TSMBusWords = MarkedBoard;

TEST_F(TSMBusWords, AreReadLowByteFirst) {
  Answer(kDataPort, {0x34, 0x12});
  unsigned char bytes[2] = {};
  EXPECT_EQ(Bus().ReadSmbusWord(kSlave, bytes, 0x10, 1), 1);
  EXPECT_THAT(bytes, ElementsAre(0x34, 0x12));
  const std::vector<sim::Access> element = {Step(8),         In8(0x90, 0), Out8(0x81, 0xA1), Out8(0x82, 0x10),
                                            Step(33),        Step(35),     In8(0x91, 0),     Step(36),
                                            In8(0x92, 0x34), Step(37),     In8(0x92, 0x12)};
  EXPECT_THAT(board.PortLog(), ElementsAreArray(Opening() + element + Closing()));
}

TEST_F(TSMBusWords, AreWrittenLowByteFirst) {
  EXPECT_EQ(Bus().WriteSmbusWord(kSlave, 0x10, static_cast<unsigned short>(0x1234)), 1);
  const std::vector<sim::Access> element = {Step(8),          In8(0x90, 0),     Out8(0x81, 0xA0),
                                            Out8(0x82, 0x10), Out8(0x86, 0x34), Out8(0x87, 0x12),
                                            Step(34),         Step(35),         In8(0x91, 0)};
  EXPECT_THAT(board.PortLog(), ElementsAreArray(Opening() + element + Closing()));
}

TEST_F(TSMBusWords, GoUpByOneCommandFromWordToWord) {
  unsigned char bytes[] = {1, 2, 3, 4};
  EXPECT_EQ(Bus().WriteSmbusWord(kSlave, bytes, 0x10, 2), 1);
  std::vector<sim::Access> moved;
  for (const sim::Access& access : board.PortLog())
    if (access.address == 0x82 || access.address == 0x86 || access.address == 0x87) moved.push_back(access);
  EXPECT_THAT(moved, ElementsAre(Out8(0x82, 0x10), Out8(0x86, 1), Out8(0x87, 2), Out8(0x82, 0x11), Out8(0x86, 3),
                                 Out8(0x87, 4)));
  unsigned char read[4];
  Answer(kDataPort, {5, 6, 7, 8});
  EXPECT_EQ(Bus().ReadSmbusWord(kSlave, read, 2), 1);
  EXPECT_THAT(read, ElementsAre(5, 6, 7, 8));
}

TEST_F(TSMBusWords, FailAndRetryAsBytesDo) {
  config.RetryValue = 0x40;
  Answer(kWaitPort, {0x40, 0, 4});
  unsigned char bytes[4] = {};
  EXPECT_EQ(Bus().ReadSmbusWord(kSlave, bytes, 0, 2), 0);
  EXPECT_THAT(board.PortLog(), testing::Contains(Step(31)).Times(1));
  EXPECT_EQ(board.PortLog().back(), Step(27));
}

TEST_F(TSMBusWords, TakeAGivenBaseScriptAndCommandZero) {
  unsigned char bytes[2] = {1, 2};
  EXPECT_EQ(Bus().WriteSmbusWord(kSlave, bytes, 0x10, 1, "o(0x80,99)"), 1);
  EXPECT_EQ(board.PortLog()[2], Step(99));
  EXPECT_EQ(Bus().ReadSmbusWord(kSlave, bytes, 0x10, 1, "o(0x80,98)"), 1);
  EXPECT_EQ(Bus().WriteSmbusWord(kSlave, bytes, 1), 1);
  EXPECT_THAT(board.PortLog(), testing::IsSupersetOf({Step(98), Out8(0x82, 0)}));
}

// 256 buses of 32 devices, one function each where there is none: two port accesses a look. What the rows look at
// besides are a few places of bus 0.
TEST_F(SMBusBoard, DetectionSearchesAllBusesOnceAtTheMost) {
  constexpr size_t kOneSearch = size_t{256} * 32 * 2;
  constexpr size_t kFixedPlaces = 400;
  TSMBus::GetInstance();
  EXPECT_EQ(TSMBus::GetInstance()->GetSMBusConfig(), nullptr);
  EXPECT_LE(board.PortLog().size(), kOneSearch + kFixedPlaces);
}

}  // namespace

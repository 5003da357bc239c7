// SPDX-License-Identifier: MIT
// IAxTRead by kind, and what it does with the value.
#include "tables/TIAxTCommon.h"
#include "tests/unit/tables/Machine.h"

using namespace tabletest;
using sim::In8;
using sim::Out8;
using sim::Sleep;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr auto kUntouched = Execution::kUntouched;
constexpr uint16_t kReads = 0x0080;
constexpr uint16_t kArgument = 0x0100;

class IAxTRead : public Executor {};

}  // namespace

TEST_F(IAxTRead, FillsTheLowBytesOfTheValueFromConsecutivePorts) {
  board.Ports(0x300, {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88});
  EXPECT_EQ(Run(Direct(0x05, 0x300, {.control = kReads}), kGetting).args[0], 0x11u);
  EXPECT_EQ(Run(Direct(0x45, 0x300, {.control = kReads}), kGetting).args[0], 0x2211u);
  EXPECT_EQ(Run(Direct(0x85, 0x300, {.control = kReads}), kGetting).args[0], 0x44332211u);
  EXPECT_EQ(Run(Direct(0xC5, 0x300, {.control = kReads}), kGetting).args[0], 0x8877665544332211u);
}

TEST_F(IAxTRead, UsesTheLow16BitsOfAPortNumber) {
  board.Ports(0x300, {0x11});
  Run(Direct(0x05, 0xABCD0300, {.control = kReads}), kGetting);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 0x11)));
}

TEST_F(IAxTRead, UsesTheLowBitsOfThePortsAndRegisterOfAPair) {
  (*board.IndexData(0x2E, 0x2F))[0x30] = 0x77;
  EXPECT_EQ(Run(Pair(0x06, 0x9999002E, 0x8888002F, 0x77777730, {.control = kReads}), kGetting).args[0], 0x77u);
}

TEST_F(IAxTRead, ReadsTheRegistersOfAPairUpwards) {
  const auto registers = board.IndexData(0x2E, 0x2F);
  (*registers)[0x10] = 0x34;
  (*registers)[0x11] = 0x12;
  EXPECT_EQ(Run(Pair(0x46, 0x2E, 0x2F, 0x10, {.control = kReads}), kGetting).args[0], 0x1234u);
  EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x2E, 0x10), In8(0x2F, 0x34), Out8(0x2E, 0x11), In8(0x2F, 0x12)));
}

TEST_F(IAxTRead, GoesOnWithRegister0AfterRegister255OfAPair) {
  const auto registers = board.IndexData(0x2E, 0x2F);
  (*registers)[0xFF] = 0x34;
  (*registers)[0x00] = 0x12;
  EXPECT_EQ(Run(Pair(0x46, 0x2E, 0x2F, 0xFF, {.control = kReads}), kGetting).args[0], 0x1234u);
}

TEST_F(IAxTRead, ReadsMemoryAtAnyAddress) {
  board.Memory(0xFED00FFD, {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88});
  EXPECT_EQ(Run(Direct(0x01, 0xFED00FFD, {.control = kReads}), kGetting).args[0], 0x11u);
  EXPECT_EQ(Run(Direct(0x41, 0xFED00FFD, {.control = kReads}), kGetting).args[0], 0x2211u);
  EXPECT_EQ(Run(Direct(0x81, 0xFED00FFD, {.control = kReads}), kGetting).args[0], 0x44332211u);
  EXPECT_EQ(Run(Direct(0xC1, 0xFED00FFD, {.control = kReads}), kGetting).args[0], 0x8877665544332211u);
  EXPECT_EQ(board.LiveMappings(), 0);
  EXPECT_EQ(board.OpenDescriptors(), 0);
}

TEST_F(IAxTRead, LeavesTheValueAt0WhenMemoryCannotBeRead) {
  board.memDevice = false;
  const Execution done = Run(Direct(0x01, 0x20000000, {.control = kReads, .expected = 0}), kGetting);
  EXPECT_TRUE(done.result);
  EXPECT_EQ(done.args[0], 0u);
}

TEST_F(IAxTRead, ReadsPciButDoesNotTakeTheResult) {
  board.Pci(0, 31, 0).Set(0xA0, 4, 0x12345678);
  const Execution done =
      Run(Pci(0x91, 0, 31, 0, 0xA0, {.control = 0x00A0, .andMask = 0xFFFFFFFF, .expected = 0x12345678}), kGetting);
  EXPECT_FALSE(done.result);
  EXPECT_EQ(done.args[0], 0u);
  EXPECT_THAT(board.PortLog(), ElementsAre(sim::Out32(0xCF8, 0x8000F8A0), sim::In32(0xCFC, 0x12345678)));
}

TEST_F(IAxTRead, ComparesThePciKindWithTheMasksResultOn0) {
  board.Pci(0, 31, 0).Set(0xA0, 4, 0x12345678);
  EXPECT_TRUE(Run(Pci(0x11, 0, 31, 0, 0xA0, {.control = kReads, .expected = 0}), kGetting).result);
  EXPECT_TRUE(Run(Pci(0x11, 0, 31, 0, 0xA0, {.control = 0x0090, .orMask = 7, .expected = 7}), kGetting).result);
}

TEST_F(IAxTRead, TakesAWholeMsrWhateverTheWidth) {
  board.Msr(0x19C, 0x8877665544332211);
  for (const int opcode : {0x09, 0x49, 0x89, 0xC9}) {
    const Execution done =
        Run(Msr(static_cast<uint8_t>(opcode), 0x19C, {.control = kReads, .expected = 0x44332211}), kGetting);
    EXPECT_TRUE(done.result) << opcode;
    EXPECT_EQ(done.args[0], 0x8877665544332211u) << opcode;
  }
}

TEST_F(IAxTRead, MasksAnMsrWith64BitMasks) {
  board.Msr(0x19C, 0x8877665544332211);
  const Execution done =
      Run(Msr(0x09, 0x19C,
              {.control = 0x00B0, .andMask = 0xFF000000000000FF, .orMask = 0x0000000100000000, .expected = 0x00000011}),
          kGetting);
  EXPECT_TRUE(done.result);
  EXPECT_EQ(done.args[0], 0x8800000100000011u);
}

TEST_F(IAxTRead, ComparesTheLow32BitsAlone) {
  board.Ports(0x300, {1, 0, 0, 0, 9, 9, 9, 9});
  EXPECT_TRUE(Run(Direct(0xC5, 0x300, {.control = kReads, .expected = 1}), kGetting).result);
}

TEST_F(IAxTRead, LeavesAnMsrThatCannotBeReadAt0) {
  board.msrDevice = false;
  const Execution done = Run(Msr(0x09, 0x19C, {.control = kReads}), kGetting);
  EXPECT_TRUE(done.result);
  EXPECT_EQ(done.args[0], 0u);
}

TEST_F(IAxTRead, FailsWithoutAnAccessOnAFormThatTheKindDoesNotHave) {
  // Memory 0, 2, 3; port 0, 3; MSR 0, 2, 3; SMBus 0, 2, 3; PCI 0, 2, 3.
  for (const int opcode : {0x00, 0x02, 0x03, 0x04, 0x07, 0x08, 0x0A, 0x0B, 0x0C, 0x0E, 0x0F, 0x10, 0x12, 0x13}) {
    Bytes command(40, 0);
    command[0] = static_cast<uint8_t>(opcode);
    command[1] = 0x80;
    Execution done;
    EXPECT_EQ(Printed([&] { done = Run(command, kGetting); }), "") << opcode;
    EXPECT_FALSE(done.result) << opcode;
    EXPECT_EQ(done.args[0], kUntouched) << opcode;
  }
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(IAxTRead, PrintsAndFailsOnEveryUnknownKind) {
  for (int opcode = 0x18; opcode <= 0x3F; ++opcode) {
    Execution done;
    EXPECT_EQ(Printed([&] {
                done = Run(Bytes{static_cast<uint8_t>(opcode), 0x80, 0x00}, kGetting);
              }),
              "IAxTRead::UNKNOWN INTERFACE !!\n");
    EXPECT_FALSE(done.result) << opcode;
    EXPECT_EQ(done.args[0], kUntouched) << opcode;
  }
  EXPECT_THAT(board.Log(), IsEmpty());
}

// ---- argument slots ----

TEST_F(IAxTRead, StoresTheMaskedValueInTheSlotThatItNames) {
  board.Ports(0x300, {0xA5});
  const Fields fields{.control = kArgument | 0x00B0, .andMask = 0x0F, .orMask = 0x30, .expected = 0x99, .argument = 2};
  const Execution done = Run(Direct(0x05, 0x300, fields), kGetting, 3);
  EXPECT_TRUE(done.result);
  EXPECT_THAT(done.args, ElementsAre(kUntouched, kUntouched, 0x35, kUntouched));
}

TEST_F(IAxTRead, StoresInTheNamedSlotForEveryKindThatReads) {
  board.Ports(0x300, {0x21});
  (*board.IndexData(0x2E, 0x2F))[0x10] = 0x22;
  board.Memory(0x20000000, {0x23});
  board.Msr(0x10, 0x24);
  const Fields fields{.control = kArgument | kReads, .expected = 0x99, .argument = 1};
  EXPECT_THAT(Run(Direct(0x05, 0x300, fields), kGetting, 2).args,
              ElementsAre(kUntouched, 0x21, kUntouched, kUntouched));
  EXPECT_THAT(Run(Pair(0x06, 0x2E, 0x2F, 0x10, fields), kGetting, 2).args,
              ElementsAre(kUntouched, 0x22, kUntouched, kUntouched));
  EXPECT_THAT(Run(Direct(0x01, 0x20000000, fields), kGetting, 2).args,
              ElementsAre(kUntouched, 0x23, kUntouched, kUntouched));
  EXPECT_THAT(Run(Msr(0x09, 0x10, fields), kGetting, 2).args, ElementsAre(kUntouched, 0x24, kUntouched, kUntouched));
  EXPECT_THAT(Run(Pci(0x11, 0, 0, 0, 0, fields), kGetting, 2).args, ElementsAre(kUntouched, 0, kUntouched, kUntouched));
}

TEST_F(IAxTRead, FallsBackToSlot0WhenTheIndexEqualsTheCountAndStillSucceeds) {
  board.Ports(0x300, {0x42});
  const Fields fields{.control = kArgument | kReads, .expected = 0x99, .argument = 2};
  const Execution done = Run(Direct(0x05, 0x300, fields), kGetting, 2);
  EXPECT_TRUE(done.result);
  EXPECT_THAT(done.args, ElementsAre(0x42, kUntouched, kUntouched, kUntouched));
}

TEST_F(IAxTRead, ComparesAndUsesSlot0WithoutArgumentModeWhateverTheIndex) {
  board.Ports(0x300, {0x42});
  const Execution done = Run(Direct(0x05, 0x300, {.control = kReads, .expected = 0x99, .argument = 1}), kGetting, 2);
  EXPECT_FALSE(done.result);
  EXPECT_THAT(done.args, ElementsAre(0x42, kUntouched, kUntouched, kUntouched));
}

TEST_F(IAxTRead, TakesAllOf32BitsOfTheArgumentIndex) {
  board.Ports(0x300, {0x42});
  const Fields fields{.control = kArgument | kReads, .argument = 0x100};
  EXPECT_THAT(Run(Direct(0x05, 0x300, fields), kGetting, 2).args,
              ElementsAre(0x42, kUntouched, kUntouched, kUntouched));
}

// ---- delays ----

TEST_F(IAxTRead, WaitsAndThenFailsOnADelay) {
  const Execution done = Run(Delay(kReads, 1, 250), kGetting);
  EXPECT_FALSE(done.result);
  EXPECT_EQ(done.args[0], kUntouched);
  EXPECT_THAT(board.Log(), ElementsAre(Sleep(250)));
}

TEST_F(IAxTRead, DoesNotWaitOnADelayThatIsNotFlagged) {
  EXPECT_TRUE(Run(Delay(0, 1, 250), kGetting).result);
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(IAxTRead, WaitsInEveryUnit) {
  Run(Delay(kReads, 1, 7), kGetting);
  Run(Delay(kReads, 2, 7), kGetting);
  Run(Delay(kReads, 3, 7), kGetting);
  EXPECT_THAT(board.Log(), ElementsAre(Sleep(7), Sleep(7000), Sleep(7000000)));
}

TEST_F(IAxTRead, WaitsNothingInAnyOtherUnit) {
  for (const int unit : {0, 4, 255}) Run(Delay(kReads, static_cast<uint8_t>(unit), 7), kGetting);
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(IAxTRead, WaitsTheIndexItselfNotTheSlotInArgumentMode) {
  Execution slots;
  slots.args[3] = 1000;
  Run(Delay(kArgument | kReads, 2, 7, 3), kGetting, 4, slots);
  EXPECT_THAT(board.Log(), ElementsAre(Sleep(3000)));
}

TEST_F(IAxTRead, WaitsTheCountWhenTheArgumentIndexIsNotValid) {
  Run(Delay(kArgument | kReads, 2, 7, 4), kGetting, 4);
  EXPECT_THAT(board.Log(), ElementsAre(Sleep(7000)));
}

TEST_F(IAxTRead, WaitsTheWholeOfTheLongestDelay) {
  Run(Delay(kReads, 3, 0xFFFF), kGetting);
  EXPECT_EQ(board.Microseconds(), 65535000000u);
}

// ---- without the dispatch ----

TEST_F(IAxTRead, DoesNotAskForTheReadBitWhenCalledDirectly) {
  board.Ports(0x300, {0x42});
  Bytes command = Direct(0x05, 0x300, {.expected = 0x42});
  unsigned char* cursor = command.data();
  unsigned long long args[1] = {};
  EXPECT_EQ(executor->IAxTRead(&cursor, kGetting, args, 1), 1);
  EXPECT_EQ(args[0], 0x42u);
}

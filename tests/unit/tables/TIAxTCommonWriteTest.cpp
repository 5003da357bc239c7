// SPDX-License-Identifier: MIT
// IAxTWrite by kind, with and without an argument.
#include "tables/TIAxTCommon.h"
#include "tests/unit/tables/Machine.h"

using namespace tabletest;
using sim::In8;
using sim::MemWrite;
using sim::Out8;
using sim::Sleep;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr uint16_t kWrites = 0x0004;
constexpr uint16_t kOr = 0x0001;
constexpr uint16_t kAnd = 0x0002;
constexpr uint16_t kArgument = 0x0100;

Execution Slots(unsigned long long first, unsigned long long second) {
  Execution slots;
  slots.args[0] = first;
  slots.args[1] = second;
  return slots;
}

class IAxTWrite : public Executor {
 protected:
  std::vector<sim::Access> MemoryWrites() {
    std::vector<sim::Access> writes;
    for (const sim::Access& access : board.Log())
      if (access.kind == sim::Access::kMemWrite) writes.push_back(access);
    return writes;
  }
};

}  // namespace

TEST_F(IAxTWrite, ReadsMasksAndWritesBackAPort) {
  board.Ports(0x300, {0xA5});
  Run(Direct(0x05, 0x300, {.control = kWrites | kAnd | kOr, .andMask = 0xF0, .orMask = 0x03}), kSetting);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 0xA5), Out8(0x300, 0xA3)));
}

TEST_F(IAxTWrite, WritesInTheGetDirectionByItsOwnBits) {
  board.Ports(0x300, {0xA5});
  EXPECT_TRUE(Run(Direct(0x05, 0x300, {.control = 0x0070, .andMask = 0xF0, .orMask = 0x03}), kGetting).result);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 0xA5), Out8(0x300, 0xA3)));
}

TEST_F(IAxTWrite, LeavesTheArgumentSlotsAlone) {
  board.Ports(0x300, {0xA5});
  const Execution done = Run(Direct(0x05, 0x300, {.control = kWrites, .argument = 0}), kSetting, 1);
  EXPECT_EQ(done.args[0], Execution::kUntouched);
}

// ---- memory and ports with an argument ----

TEST_F(IAxTWrite, WritesTheLowBytesOfAnArgumentToPortsWithoutReadingOrMasks) {
  board.Ports(0x300, Bytes(8, 0xA5));
  const Fields fields{.control = kArgument | kWrites | kAnd | kOr, .andMask = 0, .orMask = 0xFFFFFFFF, .argument = 1};
  const Execution slots = Slots(0, 0x8877665544332211);
  Run(Direct(0x05, 0x300, fields), kSetting, 2, slots);
  EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x300, 0x11)));
  board.Log().clear();
  Run(Direct(0x85, 0x300, fields), kSetting, 2, slots);
  EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x300, 0x11), Out8(0x301, 0x22), Out8(0x302, 0x33), Out8(0x303, 0x44)));
  board.Log().clear();
  Run(Direct(0xC5, 0x300, fields), kSetting, 2, slots);
  EXPECT_EQ(board.PortLog().size(), 8u);
  EXPECT_EQ(board.PortLog().back(), Out8(0x307, 0x88));
}

TEST_F(IAxTWrite, WritesTheLowBytesOfAnArgumentToMemoryWithoutMasks) {
  board.Memory(0x20000000, Bytes(8, 0xA5));
  const Fields fields{.control = kArgument | kWrites | kAnd | kOr, .andMask = 0, .orMask = 0xFFFFFFFF, .argument = 0};
  Run(Direct(0x41, 0x20000000, fields), kSetting, 1, Slots(0x4321, 0));
  EXPECT_THAT(MemoryWrites(), ElementsAre(MemWrite(0x20000000, 0x21), MemWrite(0x20000001, 0x43)));
}

TEST_F(IAxTWrite, ReadsModifiesAndWritesWhenTheIndexEqualsTheCount) {
  board.Ports(0x300, {0xA5});
  Run(Direct(0x05, 0x300, {.control = kArgument | kWrites | kOr, .orMask = 0x02, .argument = 1}), kSetting, 1,
      Slots(0x11, 0x22));
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 0xA5), Out8(0x300, 0xA7)));
}

TEST_F(IAxTWrite, ReadsModifiesAndWritesWithoutArgumentModeWhateverTheIndex) {
  board.Ports(0x300, {0xA5});
  Run(Direct(0x05, 0x300, {.control = kWrites | kOr, .orMask = 0x02, .argument = 0}), kSetting, 1, Slots(0x11, 0x22));
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 0xA5), Out8(0x300, 0xA7)));
}

// ---- index/data pairs with an argument ----

TEST_F(IAxTWrite, KeepsTheArgumentInTheOrMaskOfAPair) {
  board.IndexData(0x2E, 0x2F);
  Bytes command = Pair(0x06, 0x2E, 0x2F, 0x30,
                       {.control = kArgument | kWrites, .andMask = 0x11, .orMask = 0x99, .expected = 7, .argument = 0});
  const Bytes before = command;
  Run(command, kSetting, 1, Slots(0x8877665544332211, 0));
  Bytes after = before;
  after[19] = 0x11;
  after[20] = 0x22;
  after[21] = 0x33;
  after[22] = 0x44;
  EXPECT_EQ(command, after);
  EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x2E, 0x30), Out8(0x2F, 0x11)));
}

TEST_F(IAxTWrite, UsesTheKeptOrMaskInLaterExecutions) {
  const auto registers = board.IndexData(0x2E, 0x2F);
  (*registers)[0x30] = 0x80;
  Bytes command = Pair(0x06, 0x2E, 0x2F, 0x30, {.control = kArgument | kWrites | kOr, .orMask = 0x99, .argument = 0});
  Run(command, kSetting, 1, Slots(0x21, 0));
  (*registers)[0x30] = 0x80;
  board.Log().clear();
  Run(command, kSetting, 0);  // no slot is valid
  EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x2E, 0x30), In8(0x2F, 0x80), Out8(0x2E, 0x30), Out8(0x2F, 0xA1)));
}

TEST_F(IAxTWrite, MasksTheArgumentOfAPairOnlyByAnAndWithoutAnOr) {
  struct Case {
    uint16_t bits;
    uint8_t written;
  };
  // 0x5A AND 0x0F is 0x0A; with the OR bit the argument comes back whole.
  for (const Case& each : {Case{0, 0x5A}, Case{kAnd, 0x0A}, Case{kOr, 0x5A}, Case{kAnd | kOr, 0x5A}}) {
    board.IndexData(0x2E, 0x2F);
    board.Log().clear();
    const auto control = static_cast<uint16_t>(kArgument | kWrites | each.bits);
    Run(Pair(0x06, 0x2E, 0x2F, 0x30, {.control = control, .andMask = 0x0F, .orMask = 0xF0, .argument = 0}), kSetting, 1,
        Slots(0x5A, 0));
    EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x2E, 0x30), Out8(0x2F, each.written))) << each.bits;
  }
}

TEST_F(IAxTWrite, MasksTheArgumentOfAPairByTheBitsOfTheGetDirection) {
  constexpr uint16_t kGetOrBit = 0x0010, kGetAndBit = 0x0020, kGetWritesBit = 0x0040;
  struct Case {
    uint16_t bits;
    uint8_t written;
  };
  // As above; the bits of the Set direction do not count.
  for (const Case& each : {Case{0, 0x5A}, Case{kAnd, 0x5A}, Case{kGetAndBit, 0x0A}, Case{kGetAndBit | kOr, 0x0A},
                           Case{kGetAndBit | kGetOrBit, 0x5A}, Case{kGetAndBit | kGetOrBit | kAnd, 0x5A}}) {
    board.IndexData(0x2E, 0x2F);
    board.Log().clear();
    Bytes command = Pair(0x06, 0x2E, 0x2F, 0x30,
                         {.control = static_cast<uint16_t>(kArgument | kGetWritesBit | each.bits),
                          .andMask = 0x0F,
                          .orMask = 0xF0,
                          .argument = 0});
    EXPECT_TRUE(Run(command, kGetting, 1, Slots(0x5A, 0)).result);
    EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x2E, 0x30), Out8(0x2F, each.written))) << each.bits;
    EXPECT_EQ(command[19], 0x5A) << each.bits;
  }
}

TEST_F(IAxTWrite, WritesARangeOfRegistersOfAPairUpwards) {
  board.IndexData(0x2E, 0x2F);
  Run(Pair(0x46, 0x2E, 0x2F, 0xFF, {.control = kArgument | kWrites, .argument = 0}), kSetting, 1, Slots(0x1234, 0));
  EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x2E, 0xFF), Out8(0x2F, 0x34), Out8(0x2E, 0x00), Out8(0x2F, 0x12)));
}

TEST_F(IAxTWrite, LeavesTheOrMaskOfAPairAloneWithoutAnArgument) {
  board.IndexData(0x2E, 0x2F);
  Bytes command = Pair(0x06, 0x2E, 0x2F, 0x30, {.control = kWrites | kOr, .orMask = 0x99, .argument = 0});
  const Bytes before = command;
  Run(command, kSetting, 1, Slots(0x21, 0));
  EXPECT_EQ(command, before);
}

// ---- PCI ----

TEST_F(IAxTWrite, WritesAnArgumentToPciAtOnce) {
  board.Pci(1, 2, 3);
  const Fields fields{.control = kArgument | kWrites | kAnd | kOr, .andMask = 0, .orMask = 0xFF, .argument = 1};
  Run(Pci(0x11, 1, 2, 3, 0x40, fields), kSetting, 2, Slots(0, 0x8877665544332211));
  EXPECT_THAT(board.PortLog(), ElementsAre(sim::Out32(0xCF8, 0x80011340), sim::Out32(0xCFC, 0x44332211)));
}

TEST_F(IAxTWrite, WritesTheOrMaskToPciWithoutAnArgument) {
  board.Pci(1, 2, 3).Set(0x40, 4, 0xFFFFFFFF);
  Run(Pci(0x11, 1, 2, 3, 0x40, {.control = kWrites | kAnd | kOr, .andMask = 0xFFFFFFFF, .orMask = 0x12}), kSetting);
  EXPECT_THAT(board.PortLog(), ElementsAre(sim::Out32(0xCF8, 0x80011340), sim::In32(0xCFC, 0xFFFFFFFF),
                                           sim::Out32(0xCF8, 0x80011340), sim::Out32(0xCFC, 0x12)));
}

TEST_F(IAxTWrite, SendsARegisterOffsetOf16Bits) {
  Run(Pci(0x11, 0, 0, 0, 0x140, {.control = kArgument | kWrites, .argument = 0}), kSetting, 1, Slots(1, 0));
  EXPECT_THAT(board.PortLog(), ElementsAre(sim::Out32(0xCF8, 0x81000040), sim::Out32(0xCFC, 1)));
}

// ---- delays, MSRs and what it does not know ----

TEST_F(IAxTWrite, WaitsInEveryUnitAndSucceeds) {
  EXPECT_TRUE(Run(Delay(kWrites, 1, 9), kSetting).result);
  EXPECT_TRUE(Run(Delay(kWrites, 2, 9), kSetting).result);
  EXPECT_TRUE(Run(Delay(kWrites, 3, 9), kSetting).result);
  EXPECT_TRUE(Run(Delay(kWrites, 0, 9), kSetting).result);
  EXPECT_TRUE(Run(Delay(kWrites, 4, 9), kSetting).result);
  EXPECT_THAT(board.Log(), ElementsAre(Sleep(9), Sleep(9000), Sleep(9000000)));
}

TEST_F(IAxTWrite, WaitsWhateverTheFormOfADelay) {
  for (const int opcode : {0x14, 0x15, 0x16, 0x17, 0xD7}) {
    board.Log().clear();
    Bytes command = Delay(kWrites, 1, 9);
    command[0] = static_cast<uint8_t>(opcode);
    Run(command, kSetting);
    EXPECT_THAT(board.Log(), ElementsAre(Sleep(9))) << opcode;
  }
}

TEST_F(IAxTWrite, WaitsTheIndexItselfNotTheSlotInArgumentMode) {
  Run(Delay(kArgument | kWrites, 1, 9, 1), kSetting, 2, Slots(0, 500));
  EXPECT_THAT(board.Log(), ElementsAre(Sleep(1)));
}

TEST_F(IAxTWrite, PrintsAndDoesNothingOnAnMsrOrAnUnknownKind) {
  std::vector<int> opcodes = {0x08, 0x09, 0x0A, 0x0B};
  for (int opcode = 0x18; opcode <= 0x3F; ++opcode) opcodes.push_back(opcode);
  for (const int opcode : opcodes) {
    Bytes command(40, 0);
    command[0] = static_cast<uint8_t>(opcode);
    command[1] = kWrites;
    EXPECT_EQ(Printed([&] { EXPECT_TRUE(Run(command, kSetting).result); }), "IAxTWrite::UNKNOWN INTERFACE !!\n")
        << opcode;
  }
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(IAxTWrite, DoesNothingOnAFormThatTheKindDoesNotHave) {
  for (const int opcode : {0x00, 0x02, 0x03, 0x04, 0x07, 0x0C, 0x0E, 0x0F, 0x10, 0x12, 0x13}) {
    Bytes command(40, 0);
    command[0] = static_cast<uint8_t>(opcode);
    command[1] = kWrites;
    EXPECT_EQ(Printed([&] { EXPECT_TRUE(Run(command, kSetting).result); }), "") << opcode;
  }
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(IAxTWrite, DoesNotAskForTheWriteBitWhenCalledDirectly) {
  board.Ports(0x300, {0x42});
  Bytes command = Direct(0x05, 0x300, {.control = kOr, .orMask = 0x01});
  unsigned char* cursor = command.data();
  unsigned long long args[1] = {};
  executor->IAxTWrite(&cursor, kSetting, args, 1);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 0x42), Out8(0x300, 0x43)));
}

// SPDX-License-Identifier: MIT
// The SMBus kind, over a controller of five ports: status, slave address, command, data (low and high) and start.
#include "smbus/TSMBus.h"
#include "tables/TIAxTCommon.h"
#include "tests/unit/tables/Machine.h"

using namespace tabletest;
using sim::In8;
using sim::Out8;
using testing::ElementsAre;

namespace {

constexpr uint16_t kStatus = 0x500, kAddress = 0x501, kCommand = 0x502, kLow = 0x503, kHigh = 0x504, kStart = 0x505;
constexpr uint8_t kByteRead = 1, kByteWrite = 2, kWordRead = 3, kWordWrite = 4;

TSMBusCfg Controller() {
  TSMBusCfg record;
  record.BaseScript1 = "Local0=0x500";
  record.WaitIdleScript = "i(0x500)";
  record.AddressPrefix = "o(0x501,";
  record.CommandPrefix = "o(0x502,";
  record.DataWritePrefix = "o(0x503,";
  record.ByteReadStartScript = "o(0x505,1)";
  record.ByteWriteStartScript = "o(0x505,2)";
  record.ByteWaitScript = "i(0x500)";
  record.ByteReadScript = "i(0x503)";
  record.WordReadStartScript = "o(0x505,3)";
  record.WordWriteStartScript = "o(0x505,4)";
  record.WordWaitScript = "i(0x500)";
  record.WordReadLowScript = "i(0x503)";
  record.WordReadHighScript = "i(0x504)";
  record.WordWriteLowPrefix = "o(0x503,";
  record.WordWriteHighPrefix = "o(0x504,";
  record.IdleValue = 0;
  record.ErrorMask = 4;
  return record;
}

class SmbusKind : public Executor {
 protected:
  SmbusKind() {
    static_cast<TSMBusCfg&>(*executor->SMBus) = Controller();
    board.Ports(kStatus, {0, 0, 0, 0x34, 0x12, 0});
  }

  /// What the transfers did, without looking at the status.
  std::vector<sim::Access> Transfers() {
    std::vector<sim::Access> transfers;
    for (const sim::Access& access : board.PortLog())
      if (access.address != kStatus) transfers.push_back(access);
    return transfers;
  }
};

}  // namespace

TEST_F(SmbusKind, ReadsAByteForWidthExponent0) {
  const Execution done = Run(Smbus(0x0D, 0x5A, 0x20, {.control = 0x0080, .expected = 0x34}), kGetting);
  EXPECT_TRUE(done.result);
  EXPECT_EQ(done.args[0], 0x34u);
  EXPECT_THAT(Transfers(),
              ElementsAre(Out8(kAddress, 0x5B), Out8(kCommand, 0x20), Out8(kStart, kByteRead), In8(kLow, 0x34)));
}

TEST_F(SmbusKind, ReadsAWordForWidthExponent1) {
  const Execution done = Run(Smbus(0x4D, 0x5A, 0x20, {.control = 0x0080, .expected = 0x1234}), kGetting);
  EXPECT_TRUE(done.result);
  EXPECT_EQ(done.args[0], 0x1234u);
  EXPECT_THAT(Transfers(), ElementsAre(Out8(kAddress, 0x5B), Out8(kCommand, 0x20), Out8(kStart, kWordRead),
                                       In8(kLow, 0x34), In8(kHigh, 0x12)));
}

TEST_F(SmbusKind, ReadsNothingForOtherWidths) {
  for (const int opcode : {0x8D, 0xCD}) {
    board.Log().clear();
    const Execution done =
        Run(Smbus(static_cast<uint8_t>(opcode), 0x5A, 0x20, {.control = 0x0080, .expected = 0}), kGetting);
    EXPECT_TRUE(done.result);
    EXPECT_EQ(done.args[0], 0u);
    EXPECT_THAT(board.Log(), testing::IsEmpty());
  }
}

TEST_F(SmbusKind, MasksWhatItReads) {
  // 0x1234 AND 0x0FF0 is 0x0230; OR 0x8001 makes it 0x8231.
  const Fields fields{.control = 0x00B0, .andMask = 0x0FF0, .orMask = 0x8001, .expected = 0x8231};
  const Execution done = Run(Smbus(0x4D, 0x5A, 0x20, fields), kGetting);
  EXPECT_TRUE(done.result);
  EXPECT_EQ(done.args[0], 0x8231u);
}

TEST_F(SmbusKind, FailsOnAnotherValue) {
  EXPECT_FALSE(Run(Smbus(0x0D, 0x5A, 0x20, {.control = 0x0080, .expected = 0x35}), kGetting).result);
}

TEST_F(SmbusKind, LeavesTheValueAt0WhenTheTransferFails) {
  board.SetPort(kStatus, 4);
  const Execution done = Run(Smbus(0x0D, 0x5A, 0x20, {.control = 0x0080, .expected = 0}), kGetting);
  EXPECT_TRUE(done.result);
  EXPECT_EQ(done.args[0], 0u);
}

TEST_F(SmbusKind, StoresAReadingInTheSlotThatItNames) {
  const Execution done =
      Run(Smbus(0x0D, 0x5A, 0x20, {.control = 0x0180, .expected = 0x99, .argument = 1}), kGetting, 2);
  EXPECT_TRUE(done.result);
  EXPECT_EQ(done.args[1], 0x34u);
}

TEST_F(SmbusKind, ReadsMasksAndWritesBackAByte) {
  Run(Smbus(0x0D, 0x5A, 0x20, {.control = 0x0007, .andMask = 0x0F, .orMask = 0x50}), kSetting);
  EXPECT_THAT(Transfers(),
              ElementsAre(Out8(kAddress, 0x5B), Out8(kCommand, 0x20), Out8(kStart, kByteRead), In8(kLow, 0x34),
                          Out8(kAddress, 0x5A), Out8(kCommand, 0x20), Out8(kLow, 0x54), Out8(kStart, kByteWrite)));
}

TEST_F(SmbusKind, ReadsMasksAndWritesBackAWord) {
  Run(Smbus(0x4D, 0x5A, 0x20, {.control = 0x0007, .andMask = 0x0F0F, .orMask = 0x5000}), kSetting);
  EXPECT_THAT(Transfers(), ElementsAre(Out8(kAddress, 0x5B), Out8(kCommand, 0x20), Out8(kStart, kWordRead),
                                       In8(kLow, 0x34), In8(kHigh, 0x12), Out8(kAddress, 0x5A), Out8(kCommand, 0x20),
                                       Out8(kLow, 0x04), Out8(kHigh, 0x52), Out8(kStart, kWordWrite)));
}

TEST_F(SmbusKind, WritesAnArgumentAsItIs) {
  Execution slots;
  slots.args[0] = 0xABCD;
  const Fields fields{.control = 0x0107, .andMask = 0, .orMask = 0xFFFF, .argument = 0};
  Run(Smbus(0x0D, 0x5A, 0x20, fields), kSetting, 1, slots);
  EXPECT_THAT(Transfers(),
              ElementsAre(Out8(kAddress, 0x5A), Out8(kCommand, 0x20), Out8(kLow, 0xCD), Out8(kStart, kByteWrite)));
  board.Log().clear();
  Run(Smbus(0x4D, 0x5A, 0x20, fields), kSetting, 1, slots);
  EXPECT_THAT(Transfers(), ElementsAre(Out8(kAddress, 0x5A), Out8(kCommand, 0x20), Out8(kLow, 0xCD), Out8(kHigh, 0xAB),
                                       Out8(kStart, kWordWrite)));
}

TEST_F(SmbusKind, WritesNothingForOtherWidths) {
  Execution slots;
  slots.args[0] = 0xABCD;
  for (const int opcode : {0x8D, 0xCD})
    for (const uint16_t control : {uint16_t{0x0007}, uint16_t{0x0107}}) {
      const Fields fields{.control = control, .andMask = 0x0F0F, .orMask = 0x5000, .argument = 0};
      EXPECT_TRUE(Run(Smbus(static_cast<uint8_t>(opcode), 0x5A, 0x20, fields), kSetting, 1, slots).result);
    }
  EXPECT_THAT(board.Log(), testing::IsEmpty());
}

TEST_F(SmbusKind, ReadsModifiesAndWritesWhenTheIndexEqualsTheCount) {
  Execution slots;
  Run(Smbus(0x0D, 0x5A, 0x20, {.control = 0x0105, .orMask = 0x01, .argument = 1}), kSetting, 1, slots);
  EXPECT_THAT(Transfers(),
              ElementsAre(Out8(kAddress, 0x5B), Out8(kCommand, 0x20), Out8(kStart, kByteRead), In8(kLow, 0x34),
                          Out8(kAddress, 0x5A), Out8(kCommand, 0x20), Out8(kLow, 0x35), Out8(kStart, kByteWrite)));
}

TEST_F(SmbusKind, ComparesTheLow16Bits) {
  const Fields fields{.control = 0x0090, .orMask = 0xFF00, .expected = 0xFF34};
  EXPECT_TRUE(Run(Smbus(0x0D, 0x5A, 0x20, fields), kGetting).result);
}

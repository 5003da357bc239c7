// SPDX-License-Identifier: MIT
// Blocks and command-style transfers of TSMBus.
#include "SMBusBoard.h"

using sim::In8;
using sim::Out8;
using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

constexpr unsigned char kSlave = 0xA0;

/// The start of a block read: nothing between it and the first data byte but the setup.
std::vector<sim::Access> ReadStart(uint8_t wait, uint8_t count) {
  return {Step(8),  In8(0x90, 0),    Out8(0x81, 0xA1), Out8(0x82, 0x10), Step(18),
          Step(20), In8(0x91, wait), In8(0x93, count), Step(21)};
}
std::vector<sim::Access> ReadByte(uint8_t value) { return {Step(23), In8(0x92, value), Step(26)}; }
std::vector<sim::Access> WriteByte(uint8_t value) { return {Out8(0x85, value), Step(26)}; }
std::vector<sim::Access> Next(uint8_t result) { return {Step(25), In8(0x94, result)}; }
std::vector<sim::Access> WriteHead(uint8_t count) {
  return {Step(8), In8(0x90, 0), Out8(0x81, 0xA0), Out8(0x82, 0x10), Out8(0x84, count), Step(21)};
}
std::vector<sim::Access> WriteStart(uint8_t wait) { return {Step(19), Step(20), In8(0x91, wait)}; }

using TSMBusBlockRead = MarkedBoard;

TEST_F(TSMBusBlockRead, TakesTheWholeBlockAtOnceInMode0) {
  board.SetPort(kCountPort, 3);
  Answer(kDataPort, {7, 8, 9});
  unsigned char bytes[32] = {};
  int count = 0;
  EXPECT_EQ(Bus().ReadSmbusBlock(kSlave, bytes, 0x10, &count), 1);
  EXPECT_EQ(count, 3);
  EXPECT_THAT(board.PortLog(),
              ElementsAreArray(Opening() + ReadStart(0, 3) + ReadByte(7) + ReadByte(8) + ReadByte(9) + Closing()));
  EXPECT_THAT(std::vector(bytes, bytes + 4), ElementsAre(7, 8, 9, 0));
}

TEST_F(TSMBusBlockRead, ShakesHandsAfterEachByteButTheLastInMode1) {
  config.BlockMode = 1;
  board.SetPort(kCountPort, 3);
  board.SetPort(kWaitPort, 0x80);
  Answer(kNextPort, {0x80});
  Answer(kDataPort, {7, 8, 9});
  unsigned char bytes[32];
  EXPECT_EQ(Bus().ReadSmbusBlock(kSlave, bytes, 0x10, nullptr), 1);
  EXPECT_THAT(board.PortLog(), ElementsAreArray(Opening() + ReadStart(0x80, 3) + ReadByte(7) + Next(0x80) +
                                                ReadByte(8) + Next(0x80) + ReadByte(9) + Closing()));
}

TEST_F(TSMBusBlockRead, ShakesHandsAfterEachWindowInMode8) {
  config.BlockMode = 8;
  Answer(kNextPort, {0x10});
  board.SetPort(kWaitPort, 0x10);
  unsigned char bytes[32];
  int count = 0;
  const std::pair<uint8_t, size_t> cases[] = {{1, 0}, {8, 0}, {9, 1}, {16, 1}, {17, 2}, {32, 3}};
  for (const auto& [length, handshakes] : cases) {
    board.SetPort(kCountPort, length);
    Bus();
    board.Log().clear();
    EXPECT_EQ(Bus().ReadSmbusBlock(kSlave, bytes, 0x10, &count), 1);
    EXPECT_EQ(count, length);
    EXPECT_THAT(board.PortLog(), testing::Contains(Step(25)).Times(handshakes)) << int{length};
  }
}

TEST_F(TSMBusBlockRead, RefusesACountOf0AndAbove32) {
  unsigned char bytes[32];
  for (const uint8_t bad : std::initializer_list<uint8_t>{0, 33, 255}) {
    board.SetPort(kCountPort, bad);
    int count = 5;
    EXPECT_EQ(Bus().ReadSmbusBlock(kSlave, bytes, 0x10, &count), 0);
    EXPECT_EQ(count, 0);
    EXPECT_THAT(board.PortLog(), testing::Not(testing::Contains(Step(23))));
    EXPECT_EQ(board.PortLog().back(), Step(27));
  }
}

TEST_F(TSMBusBlockRead, FailsOnAnErrorOfTheWait) {
  board.SetPort(kWaitPort, 4);
  board.SetPort(kCountPort, 3);
  unsigned char bytes[32];
  EXPECT_EQ(Bus().ReadSmbusBlock(kSlave, bytes, 0x10, nullptr), 0);
  const std::vector<sim::Access> element = {Step(8),  In8(0x90, 0), Out8(0x81, 0xA1), Out8(0x82, 0x10), Step(18),
                                            Step(20), In8(0x91, 4), Step(8),          In8(0x90, 0)};
  EXPECT_THAT(board.PortLog(), ElementsAreArray(Opening() + element + Closing()));
}

TEST_F(TSMBusBlockRead, FailsWithoutTheFirstHandshakeUnlessInMode0) {
  config.BlockMode = 1;
  board.SetPort(kWaitPort, 0);
  board.SetPort(kCountPort, 3);
  unsigned char bytes[32];
  EXPECT_EQ(Bus().ReadSmbusBlock(kSlave, bytes, 0x10, nullptr), 0);
}

TEST_F(TSMBusBlockRead, FailsWhenTheHostStopsEarlyOrReportsAnErrorBetweenBytes) {
  config.BlockMode = 1;
  board.SetPort(kWaitPort, 0x80);
  board.SetPort(kCountPort, 3);
  unsigned char bytes[32];
  for (const uint32_t last : {0u, 4u}) {
    Answer(kNextPort, {0x80, last});
    int count = 9;
    EXPECT_EQ(Bus().ReadSmbusBlock(kSlave, bytes, 0x10, &count), 0);
    EXPECT_EQ(count, 0);
  }
}

TEST_F(TSMBusBlockRead, ShorterFormsReadCommandZeroAndMayDropTheCount) {
  board.SetPort(kCountPort, 2);
  unsigned char bytes[32];
  int count = 0;
  EXPECT_EQ(Bus().ReadSmbusBlock(kSlave, bytes), 1);
  EXPECT_EQ(Bus().ReadSmbusBlock(kSlave, bytes, &count), 1);
  EXPECT_EQ(count, 2);
  EXPECT_THAT(board.PortLog(), testing::Contains(Out8(0x82, 0)).Times(2));
  const unsigned char command = 0x33;
  EXPECT_EQ(Bus().ReadSmbusBlock(kSlave, bytes, command), 1);
  EXPECT_THAT(board.PortLog(), testing::Contains(Out8(0x82, 0x33)));
  EXPECT_EQ(Bus().ReadSmbusBlock(kSlave, bytes, command, &count, "o(0x80,99)"), 1);
  EXPECT_THAT(board.PortLog(), testing::Contains(Step(99)));
}

using TSMBusBlockWrite = MarkedBoard;

TEST_F(TSMBusBlockWrite, LoadsTheWholeBlockBeforeTheStartInMode0) {
  unsigned char bytes[] = {7, 8, 9};
  EXPECT_EQ(Bus().WriteSmbusBlock(kSlave, bytes, 0x10, 3), 1);
  EXPECT_THAT(board.PortLog(), ElementsAreArray(Opening() + WriteHead(3) + WriteByte(7) + WriteByte(8) + WriteByte(9) +
                                                WriteStart(0) + Closing()));
}

TEST_F(TSMBusBlockWrite, StartsAfterTheFirstByteInMode1) {
  config.BlockMode = 1;
  board.SetPort(kWaitPort, 0x80);
  Answer(kNextPort, {0x80, 0x80, 0});
  unsigned char bytes[] = {7, 8, 9};
  EXPECT_EQ(Bus().WriteSmbusBlock(kSlave, bytes, 0x10, 3), 1);
  EXPECT_THAT(board.PortLog(),
              ElementsAreArray(Opening() + WriteHead(3) + WriteByte(7) + WriteStart(0x80) + WriteByte(8) + Next(0x80) +
                               WriteByte(9) + Next(0x80) + Next(0) + Closing()));
}

TEST_F(TSMBusBlockWrite, StartsAfterTheFirstWindowInMode8) {
  config.BlockMode = 8;
  board.SetPort(kWaitPort, 0x10);
  Answer(kNextPort, {0x08});
  unsigned char bytes[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  EXPECT_EQ(Bus().WriteSmbusBlock(kSlave, bytes, 0x10, 10), 1);
  std::vector<sim::Access> expected = Opening() + WriteHead(10);
  for (uint8_t value = 0; value < 8; ++value) expected = expected + WriteByte(value);
  expected = expected + WriteStart(0x10) + WriteByte(8) + WriteByte(9) + Next(8) + Next(8) + Closing();
  EXPECT_THAT(board.PortLog(), ElementsAreArray(expected));
}

TEST_F(TSMBusBlockWrite, FailsOnAnErrorOfTheLastHandshake) {
  config.BlockMode = 1;
  board.SetPort(kWaitPort, 0x80);
  Answer(kNextPort, {4});
  unsigned char byte = 7;
  EXPECT_EQ(Bus().WriteSmbusBlock(kSlave, &byte, 0x10, 1), 0);
  EXPECT_EQ(board.PortLog().back(), Step(27));
}

TEST_F(TSMBusBlockWrite, FailsWhenTheHostStopsBeforeTheLastByte) {
  config.BlockMode = 1;
  board.SetPort(kWaitPort, 0x80);
  Answer(kNextPort, {0});
  unsigned char bytes[] = {7, 8, 9};
  EXPECT_EQ(Bus().WriteSmbusBlock(kSlave, bytes, 0x10, 3), 0);
  EXPECT_THAT(board.PortLog(), testing::Not(testing::Contains(Out8(0x85, 9))));
}

TEST_F(TSMBusBlockWrite, RefusesACountOutside1To32WithoutAnAccess) {
  unsigned char bytes[33] = {};
  Bus();
  for (const int bad : {-1, 0, 33}) {
    EXPECT_EQ(Bus().WriteSmbusBlock(kSlave, bytes, 0x10, bad), 0);
    EXPECT_EQ(Bus().WriteSmbusBlock(kSlave, bytes, 0x10, bad, "o(0x80,99)"), 0);
  }
  EXPECT_TRUE(board.PortLog().empty());
}

TEST_F(TSMBusBlockWrite, ShorterFormsWriteAtCommandZeroAndWithoutACountAll32Bytes) {
  unsigned char bytes[32] = {};
  EXPECT_EQ(Bus().WriteSmbusBlock(kSlave, bytes, 5), 1);
  EXPECT_THAT(board.PortLog(), testing::IsSupersetOf({Out8(0x82, 0), Out8(0x84, 5)}));
  EXPECT_EQ(Bus().WriteSmbusBlock(kSlave, bytes), 1);
  EXPECT_THAT(board.PortLog(), testing::Contains(Out8(0x84, 32)));
}

using TSMBusCommands = MarkedBoard;

TEST_F(TSMBusCommands, MoveAllBytesAtOneCommand) {
  Answer(kDataPort, {1, 2, 3});
  unsigned char bytes[3] = {};
  EXPECT_EQ(Bus().ReadSmbusByteCmd(kSlave, 0x44, bytes, 3), 1);
  EXPECT_THAT(bytes, ElementsAre(1, 2, 3));
  EXPECT_THAT(board.PortLog(), testing::Contains(Out8(0x82, 0x44)).Times(3));
  EXPECT_EQ(Bus().WriteSmbusByteCmd(kSlave, 0x45, bytes, 3), 1);
  EXPECT_THAT(board.PortLog(), testing::Contains(Out8(0x82, 0x45)).Times(3));
  EXPECT_THAT(board.PortLog(), testing::IsSupersetOf({Out8(0x83, 1), Out8(0x83, 2), Out8(0x83, 3)}));
}

TEST_F(TSMBusCommands, MoveAllWordsAtOneCommand) {
  Answer(kDataPort, {1, 2, 3, 4});
  unsigned char bytes[4] = {};
  EXPECT_EQ(Bus().ReadSmbusWordCmd(kSlave, 0x44, bytes, 2), 1);
  EXPECT_THAT(bytes, ElementsAre(1, 2, 3, 4));
  EXPECT_EQ(Bus().WriteSmbusWordCmd(kSlave, 0x44, bytes, 2), 1);
  EXPECT_THAT(board.PortLog(), testing::Contains(Out8(0x82, 0x44)).Times(4));
  EXPECT_THAT(board.PortLog(), testing::IsSupersetOf({Out8(0x86, 1), Out8(0x87, 2), Out8(0x86, 3), Out8(0x87, 4)}));
}

TEST_F(TSMBusCommands, WithAValueWriteItFirstInTheSameTransaction) {
  board.SetPort(kDataPort, 0x5A);
  unsigned char byte = 0;
  EXPECT_EQ(Bus().ReadSmbusCmd(kSlave, 0x44, 0x99, &byte, 1), 1);
  EXPECT_EQ(byte, 0x5A);
  const std::vector<sim::Access> selection = {Step(8),          In8(0x90, 0), Out8(0x81, 0xA0), Out8(0x82, 0x44),
                                              Out8(0x83, 0x99), Step(15),     Step(16),         In8(0x91, 0)};
  const std::vector<sim::Access> element = {Step(8),  In8(0x90, 0), Out8(0x81, 0xA1), Out8(0x82, 0x44), Step(14),
                                            Step(16), In8(0x91, 0), Step(17),         In8(0x92, 0x5A)};
  EXPECT_THAT(board.PortLog(), ElementsAreArray(Opening() + selection + element + Closing()));
}

TEST_F(TSMBusCommands, WithAValueStopWhenItIsNotTaken) {
  board.SetPort(kWaitPort, 4);
  unsigned char byte = 7;
  EXPECT_EQ(Bus().WriteSmbusCmd(kSlave, 0x44, 0x99, &byte, 1), 0);
  EXPECT_THAT(board.PortLog(), testing::Not(testing::Contains(Out8(0x83, 7))));
}

TEST_F(TSMBusCommands, WithAValueWriteTheData) {
  unsigned char bytes[] = {7, 8};
  EXPECT_EQ(Bus().WriteSmbusCmd(kSlave, 0x44, 0x99, bytes, 2), 1);
  std::vector<uint64_t> data;
  for (const sim::Access& access : board.PortLog())
    if (access.address == 0x83) data.push_back(access.value);
  EXPECT_THAT(data, ElementsAre(0x99, 7, 8));
}

}  // namespace

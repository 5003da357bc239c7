// SPDX-License-Identifier: MIT
// Ports, devices behind them and PCI functions of the simulated machine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hw/Platform.h"
#include "tests/support/CurrentBoard.h"

namespace {

using sim::Board;
using testing::ElementsAre;

class OnBoard : public testing::Test, protected support::CurrentBoard {};

using PlainPorts = OnBoard;
using Devices = OnBoard;
using IndexDataPair = OnBoard;
using PciMechanism = OnBoard;

TEST_F(PlainPorts, ReadAllOnesWhereNothingAnswers) {
  EXPECT_EQ(platform::In8(0x300), 0xFF);
  EXPECT_EQ(platform::In16(0x300), 0xFFFF);
  EXPECT_EQ(platform::In32(0x300), 0xFFFFFFFFu);
}

TEST_F(PlainPorts, SwallowWritesWhereNothingAnswers) {
  platform::Out8(0x300, 0x12);
  EXPECT_EQ(platform::In8(0x300), 0xFF);
}

TEST_F(PlainPorts, AreLittleEndianNeighbours) {
  board.Ports(0x300, {0x11, 0x22, 0x33, 0x44});
  EXPECT_EQ(platform::In32(0x300), 0x44332211u);
  platform::Out16(0x301, 0xBBAA);
  EXPECT_EQ(platform::In32(0x300), 0x44BBAA11u);
  EXPECT_THAT(board.Log(),
              ElementsAre(sim::In32(0x300, 0x44332211), sim::Out16(0x301, 0xBBAA), sim::In32(0x300, 0x44BBAA11)));
}

TEST_F(PlainPorts, EndAtTheLastPort) {
  board.Ports(0xFFFF, {0x11}).Ports(0, {0x22});
  EXPECT_EQ(platform::In16(0xFFFF), 0xFF11);
  platform::Out16(0xFFFF, 0x9988);
  EXPECT_EQ(board.PortValue(0xFFFF), 0x88);
  EXPECT_EQ(board.PortValue(0), 0x22);
}

struct Recorder : sim::PortDevice {
  std::vector<std::string> calls;
  uint32_t answer = 0x12345678;
  uint32_t Read(Board&, uint16_t port, unsigned width) override {
    calls.push_back("r" + std::to_string(port) + "/" + std::to_string(width));
    return answer;
  }
  void Write(Board& board, uint16_t port, unsigned width, uint32_t value) override {
    calls.push_back("w" + std::to_string(port) + "/" + std::to_string(width) + "=" + std::to_string(value));
    if (value == 0xEE) board.Detach(this);
  }
};

TEST_F(Devices, AnswerWholeAccessesThatStartInThem) {
  const auto device = std::make_shared<Recorder>();
  board.Attach(100, 4, device);
  EXPECT_EQ(platform::In16(102), 0x5678);
  platform::Out32(100, 7);
  EXPECT_THAT(device->calls, ElementsAre("r102/2", "w100/4=7"));
}

TEST_F(Devices, GetTheBytesOfAccessesThatReachIntoThem) {
  const auto device = std::make_shared<Recorder>();
  board.Attach(100, 1, device).Ports(99, {0x01});
  EXPECT_EQ(platform::In16(99), 0x7801);
  EXPECT_THAT(device->calls, ElementsAre("r100/1"));
}

TEST_F(Devices, TakePrecedenceTheLatestFirst) {
  const auto first = std::make_shared<Recorder>(), second = std::make_shared<Recorder>();
  board.Ports(100, {9}).Attach(100, 1, first).Attach(100, 1, second);
  second->answer = 0x42;
  EXPECT_EQ(platform::In8(100), 0x42);
  board.Detach(second.get());
  EXPECT_EQ(platform::In8(100), 0x78);
}

TEST_F(Devices, MayDetachThemselvesWhileAnswering) {
  board.Ports(100, {9}).Attach(100, 1, std::make_shared<Recorder>());
  platform::Out8(100, 0xEE);
  EXPECT_EQ(platform::In8(100), 9);
}

TEST_F(IndexDataPair, ReachesTheIndexedRegister) {
  const auto registers = board.IndexData(0x2E, 0x2F);
  (*registers)[0xF0] = 0x5A;
  platform::Out8(0x2E, 0xF0);
  EXPECT_EQ(platform::In8(0x2F), 0x5A);
  platform::Out8(0x2F, 0xA5);
  EXPECT_EQ((*registers)[0xF0], 0xA5);
  EXPECT_EQ(platform::In8(0x2E), 0xF0);
}

TEST_F(PciMechanism, ReadsTheSelectedRegister) {
  board.Pci(0, 0x1F, 3).Set(0, 4, 0x29308086).Set(0x20, 4, 0x00000401);
  platform::Out32(0xCF8, 0x8000FB20);
  EXPECT_EQ(platform::In32(0xCFC), 0x00000401u);
  platform::Out32(0xCF8, 0x8000FB00);
  EXPECT_EQ(platform::In16(0xCFE), 0x2930);
  EXPECT_EQ(platform::In8(0xCFD), 0x80);
}

TEST_F(PciMechanism, IgnoresTheLowTwoBitsOfTheAddress) {
  board.Pci(0, 0, 0).Set(0x40, 4, 0xDDCCBBAA);
  platform::Out32(0xCF8, 0x80000043);
  EXPECT_EQ(platform::In32(0xCFC), 0xDDCCBBAAu);
}

TEST_F(PciMechanism, TakesAddressBits24To27AsRegisterBits8To11) {
  board.Pci(1, 2, 3).Set(0x140, 4, 0xCAFEF00D);
  platform::Out32(0xCF8, 0x81011340);
  EXPECT_EQ(platform::In32(0xCFC), 0xCAFEF00Du);
}

TEST_F(PciMechanism, ReadsAllOnesFromAnAbsentFunction) {
  platform::Out32(0xCF8, 0x80001000);
  EXPECT_EQ(platform::In32(0xCFC), 0xFFFFFFFFu);
  EXPECT_EQ(board.FindPci(0, 2, 0), nullptr);
}

TEST_F(PciMechanism, LatchesOnly32BitWrites) {
  board.Pci(0, 0, 0).Set(0, 4, 0x12345678);
  platform::Out32(0xCF8, 0x80000000);
  platform::Out8(0xCF8, 0xFF);
  platform::Out16(0xCF8, 0xFFFF);
  EXPECT_EQ(platform::In32(0xCF8), 0x80000000u);
  EXPECT_EQ(platform::In32(0xCFC), 0x12345678u);
}

TEST_F(PciMechanism, IsDeafWhileTheEnableBitIsClear) {
  board.Pci(0, 0, 0).Set(0, 4, 0x12345678);
  platform::Out32(0xCF8, 0x00000000);
  EXPECT_EQ(platform::In32(0xCFC), 0xFFFFFFFFu);
}

TEST_F(PciMechanism, WritesOnlyWhereTheMaskAllows) {
  sim::PciFunction& function = board.Pci(0, 0, 0).Set(0x10, 4, 0x00000001);
  function.writeMask[0x10] = 0xF0;
  platform::Out32(0xCF8, 0x80000010);
  platform::Out32(0xCFC, 0xFFFFFFFF);
  EXPECT_EQ(function.Get(0x10, 4), 0xFFFFFFF1u);
}

TEST_F(PciMechanism, TellsTheFunctionWhatWasWritten) {
  std::vector<std::pair<unsigned, unsigned>> writes;
  board.Pci(0, 0, 0).onWrite = [&](Board&, unsigned offset, unsigned width) { writes.emplace_back(offset, width); };
  platform::Out32(0xCF8, 0x80000040);
  platform::Out16(0xCFE, 1);
  platform::Out32(0xCFE, 1);
  EXPECT_THAT(writes, ElementsAre(std::pair(0x42, 2), std::pair(0x42, 2)));
}

TEST_F(PciMechanism, DataBeyondTheWindowComesFromThePortsBehindIt) {
  board.Pci(0, 0, 0).Set(0x40, 4, 0x44332211);
  board.Ports(0xD00, {0x77});
  platform::Out32(0xCF8, 0x80000040);
  EXPECT_EQ(platform::In32(0xCFD), 0x77443322u);
}

}  // namespace

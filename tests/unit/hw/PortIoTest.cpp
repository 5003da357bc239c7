// SPDX-License-Identifier: MIT
// Ports and index/data pairs, access by access.
#include "hw/TReadWrite.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "tests/unit/hw/Hardware.h"

using hwtest::Hardware;
using hwtest::RefusalsPrinted;
using hwtest::RefusedCall;
using sim::In16;
using sim::In32;
using sim::In8;
using sim::Out16;
using sim::Out32;
using sim::Out8;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
constexpr unsigned short kIndexPort = 0x2E;
constexpr unsigned short kDataPort = 0x2F;
}  // namespace

TEST(IoBaseReadByte, ReadsEightBitsOnce) {
  Hardware hw;
  hw.board.Ports(0x80, {0x5A});
  EXPECT_EQ(hw.rw.IoBaseReadByte(0x80), 0x5A);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(In8(0x80, 0x5A)));
}

TEST(IoBaseReadWord, ReadsSixteenBitsOnce) {
  Hardware hw;
  hw.board.Ports(0x300, {0x34, 0x12});
  EXPECT_EQ(hw.rw.IoBaseReadWord(0x300), 0x1234);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(In16(0x300, 0x1234)));
}

TEST(IoBaseReadDword, ReadsThirtyTwoBitsOnce) {
  Hardware hw;
  hw.board.Ports(0x300, {0x78, 0x56, 0x34, 0x12});
  EXPECT_EQ(hw.rw.IoBaseReadDword(0x300), 0x12345678u);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(In32(0x300, 0x12345678)));
}

TEST(IoBaseReadDword, ReturnsTheAnswerOfAnUnclaimedPortAsRead) {
  Hardware hw;
  EXPECT_EQ(hw.rw.IoBaseReadDword(0xFFFC), 0xFFFFFFFFu);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(In32(0xFFFC, 0xFFFFFFFF)));
}

TEST(IoBaseWriteByte, WritesEightBitsOnce) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.IoBaseWriteByte(0x80, 0xA5));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out8(0x80, 0xA5)));
}

TEST(IoBaseWriteWord, WritesSixteenBitsOnce) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.IoBaseWriteWord(0x300, 0xBEEF));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out16(0x300, 0xBEEF)));
}

TEST(IoBaseWriteDword, WritesThirtyTwoBitsOnce) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.IoBaseWriteDword(0x300, 0xCAFEBABE));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0x300, 0xCAFEBABE)));
}

TEST(IoBaseReadBlock, ReadsOneByteFromEachConsecutivePort) {
  Hardware hw;
  hw.board.Ports(0x300, {0x11, 0x22, 0x33, 0x44, 0x55});
  std::array<uint8_t, 6> buffer{0, 0, 0, 0, 0, 0xEE};
  EXPECT_TRUE(hw.rw.IoBaseReadBlock(0x300, buffer.data(), 5));
  EXPECT_THAT(buffer, ElementsAre(0x11, 0x22, 0x33, 0x44, 0x55, 0xEE));
  EXPECT_THAT(hw.board.PortLog(),
              ElementsAre(In8(0x300, 0x11), In8(0x301, 0x22), In8(0x302, 0x33), In8(0x303, 0x44), In8(0x304, 0x55)));
}

TEST(IoBaseReadBlock, WrapsThePortNumberAtSixteenBits) {
  Hardware hw;
  hw.board.Ports(0xFFFF, {0x01}).Ports(0x0000, {0x02});
  std::array<uint8_t, 2> buffer{};
  EXPECT_TRUE(hw.rw.IoBaseReadBlock(0xFFFF, buffer.data(), 2));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(In8(0xFFFF, 0x01), In8(0x0000, 0x02)));
}

TEST(IoBaseReadBlock, OfCountZeroTouchesNoPort) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.IoBaseReadBlock(0x300, nullptr, 0));
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

TEST(IoBaseWriteBlock, WritesOneByteToEachConsecutivePort) {
  Hardware hw;
  std::array<uint8_t, 3> buffer{0x11, 0x22, 0x33};
  EXPECT_TRUE(hw.rw.IoBaseWriteBlock(0xFFFE, buffer.data(), 3));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out8(0xFFFE, 0x11), Out8(0xFFFF, 0x22), Out8(0x0000, 0x33)));
}

TEST(IoBaseWriteBlock, OfCountZeroTouchesNoPort) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.IoBaseWriteBlock(0x300, nullptr, 0));
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

TEST(IoIndexReadByte, SelectsTheRegisterAndReadsIt) {
  Hardware hw;
  (*hw.board.IndexData(kIndexPort, kDataPort))[0x20] = 0x86;
  EXPECT_EQ(hw.rw.IoIndexReadByte(kIndexPort, kDataPort, 0x20), 0x86);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out8(kIndexPort, 0x20), In8(kDataPort, 0x86)));
}

TEST(IoIndexReadWord, ReadsTheHighRegisterFirst) {
  Hardware hw;
  const auto registers = hw.board.IndexData(kIndexPort, kDataPort);
  (*registers)[0x20] = 0x34;
  (*registers)[0x21] = 0x12;
  EXPECT_EQ(hw.rw.IoIndexReadWord(kIndexPort, kDataPort, 0x20), 0x1234);
  EXPECT_THAT(hw.board.PortLog(),
              ElementsAre(Out8(kIndexPort, 0x21), In8(kDataPort, 0x12), Out8(kIndexPort, 0x20), In8(kDataPort, 0x34)));
}

TEST(IoIndexReadWord, AtTheLastIndexReadsRegisterZeroAsTheHighByte) {
  Hardware hw;
  const auto registers = hw.board.IndexData(kIndexPort, kDataPort);
  (*registers)[0xFF] = 0x34;
  (*registers)[0x00] = 0x12;
  EXPECT_EQ(hw.rw.IoIndexReadWord(kIndexPort, kDataPort, 0xFF), 0x1234);
  EXPECT_THAT(hw.board.PortLog(),
              ElementsAre(Out8(kIndexPort, 0x00), In8(kDataPort, 0x12), Out8(kIndexPort, 0xFF), In8(kDataPort, 0x34)));
}

TEST(IoIndexReadDword, ReadsFromTheHighestRegisterDown) {
  Hardware hw;
  const auto registers = hw.board.IndexData(kIndexPort, kDataPort);
  (*registers)[0xFE] = 0x78;
  (*registers)[0xFF] = 0x56;
  (*registers)[0x00] = 0x34;
  (*registers)[0x01] = 0x12;
  EXPECT_EQ(hw.rw.IoIndexReadDword(kIndexPort, kDataPort, 0xFE), 0x12345678u);
  EXPECT_THAT(hw.board.PortLog(),
              ElementsAre(Out8(kIndexPort, 0x01), In8(kDataPort, 0x12), Out8(kIndexPort, 0x00), In8(kDataPort, 0x34),
                          Out8(kIndexPort, 0xFF), In8(kDataPort, 0x56), Out8(kIndexPort, 0xFE), In8(kDataPort, 0x78)));
}

TEST(IoIndexWriteByte, SelectsTheRegisterAndWritesIt) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.IoIndexWriteByte(kIndexPort, kDataPort, 0x07, 0x0B));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out8(kIndexPort, 0x07), Out8(kDataPort, 0x0B)));
}

TEST(IoIndexWriteWord, WritesTheLowRegisterFirst) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.IoIndexWriteWord(kIndexPort, kDataPort, 0xFF, 0x1234));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out8(kIndexPort, 0xFF), Out8(kDataPort, 0x34), Out8(kIndexPort, 0x00),
                                              Out8(kDataPort, 0x12)));
}

TEST(IoIndexWriteDword, WritesFromTheLowestRegisterUp) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.IoIndexWriteDword(kIndexPort, kDataPort, 0xFD, 0x12345678));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out8(kIndexPort, 0xFD), Out8(kDataPort, 0x78), Out8(kIndexPort, 0xFE),
                                              Out8(kDataPort, 0x56), Out8(kIndexPort, 0xFF), Out8(kDataPort, 0x34),
                                              Out8(kIndexPort, 0x00), Out8(kDataPort, 0x12)));
}

TEST(IoIndexReadBlock, TakesAnExclusiveEndIndexAndNotACount) {
  Hardware hw;
  const auto registers = hw.board.IndexData(kIndexPort, kDataPort);
  (*registers)[0x10] = 0xAA;
  (*registers)[0x11] = 0xBB;
  std::array<uint8_t, 3> buffer{0, 0, 0xEE};
  EXPECT_TRUE(hw.rw.IoIndexReadBlock(kIndexPort, kDataPort, 0x10, buffer.data(), 0x12));
  EXPECT_THAT(buffer, ElementsAre(0xAA, 0xBB, 0xEE));
  EXPECT_THAT(hw.board.PortLog(),
              ElementsAre(Out8(kIndexPort, 0x10), In8(kDataPort, 0xAA), Out8(kIndexPort, 0x11), In8(kDataPort, 0xBB)));
}

TEST(IoIndexReadBlock, MovesNothingFromAStartAtOrBeyondTheEnd) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.IoIndexReadBlock(kIndexPort, kDataPort, 0x10, nullptr, 0x10));
  EXPECT_TRUE(hw.rw.IoIndexReadBlock(kIndexPort, kDataPort, 0x11, nullptr, 0x10));
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

TEST(IoIndexReadBlock, WrapsTheIndexPastTheLastRegister) {
  Hardware hw;
  const auto registers = hw.board.IndexData(kIndexPort, kDataPort);
  (*registers)[0x00] = 0x01;
  (*registers)[0x0F] = 0x0F;
  (*registers)[0xFF] = 0xF0;
  std::vector<uint8_t> buffer(273, 0xEE);
  EXPECT_TRUE(hw.rw.IoIndexReadBlock(kIndexPort, kDataPort, 0, buffer.data(), 0x110));
  const auto log = hw.board.PortLog();
  ASSERT_EQ(log.size(), 544u);
  EXPECT_EQ(log[510], Out8(kIndexPort, 0xFF));
  EXPECT_EQ(log[512], Out8(kIndexPort, 0x00));
  EXPECT_EQ(log[542], Out8(kIndexPort, 0x0F));
  EXPECT_EQ(buffer[255], 0xF0);
  EXPECT_EQ(buffer[256], 0x01);
  EXPECT_EQ(buffer[271], 0x0F);
  EXPECT_EQ(buffer[272], 0xEE);
}

namespace {
/// Withdraws the privilege when its data port is read for the second time.
class PrivilegeThief : public sim::PortDevice {
 public:
  explicit PrivilegeThief(TReadWrite* rw) : rw_(rw) {}
  uint32_t Read(sim::Board&, uint16_t, unsigned) override {
    if (++reads_ == 2) rw_->IoplFailed = 1;
    return 0x40u + reads_;
  }
  void Write(sim::Board&, uint16_t, unsigned, uint32_t) override {}

 private:
  TReadWrite* rw_;
  unsigned reads_ = 0;
};
}  // namespace

TEST(IoIndexReadBlock, TestsThePrivilegeAgainBeforeEachByte) {
  Hardware hw;
  hw.board.Attach(kDataPort, 1, std::make_shared<PrivilegeThief>(&hw.rw));
  std::array<uint8_t, 4> buffer{0xEE, 0xEE, 0xEE, 0xEE};
  bool result = true;
  EXPECT_EQ(RefusalsPrinted([&] { result = hw.rw.IoIndexReadBlock(kIndexPort, kDataPort, 0x10, buffer.data(), 0x14); }),
            1);
  EXPECT_FALSE(result);
  EXPECT_THAT(buffer, ElementsAre(0x41, 0x42, 0xEE, 0xEE));
}

TEST(IoIndexWriteBlock, WritesAscendingRegistersUpToTheEnd) {
  Hardware hw;
  std::array<uint8_t, 2> buffer{0xAA, 0xBB};
  EXPECT_TRUE(hw.rw.IoIndexWriteBlock(kIndexPort, kDataPort, 0xFF, buffer.data(), 0x101));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out8(kIndexPort, 0xFF), Out8(kDataPort, 0xAA), Out8(kIndexPort, 0x00),
                                              Out8(kDataPort, 0xBB)));
}

TEST(IoIndexWriteBlock, MovesNothingFromAStartAtOrBeyondTheEnd) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.IoIndexWriteBlock(kIndexPort, kDataPort, 0x10, nullptr, 0x10));
  EXPECT_TRUE(hw.rw.IoIndexWriteBlock(kIndexPort, kDataPort, 0xFF, nullptr, 0x00));
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

namespace {

unsigned char portBuffer[4] = {0xEE, 0xEE, 0xEE, 0xEE};

const RefusedCall kRefusedPortCalls[] = {
    {"IoBaseReadByte", [](TReadWrite& rw) { return rw.IoBaseReadByte(0x80) == 0xFF; }},
    {"IoBaseReadWord", [](TReadWrite& rw) { return rw.IoBaseReadWord(0x80) == 0xFFFF; }},
    {"IoBaseReadDword", [](TReadWrite& rw) { return rw.IoBaseReadDword(0x80) == 0xFFFFFFFF; }},
    {"IoBaseReadBlock", [](TReadWrite& rw) { return !rw.IoBaseReadBlock(0x80, portBuffer, 4); }},
    {"IoBaseWriteByte", [](TReadWrite& rw) { return !rw.IoBaseWriteByte(0x80, 1); }},
    {"IoBaseWriteWord", [](TReadWrite& rw) { return !rw.IoBaseWriteWord(0x80, 1); }},
    {"IoBaseWriteDword", [](TReadWrite& rw) { return !rw.IoBaseWriteDword(0x80, 1); }},
    {"IoBaseWriteBlock", [](TReadWrite& rw) { return !rw.IoBaseWriteBlock(0x80, portBuffer, 4); }},
    {"IoIndexReadByte", [](TReadWrite& rw) { return rw.IoIndexReadByte(0x80, 0x81, 0) == 0xFF; }},
    {"IoIndexReadWord", [](TReadWrite& rw) { return rw.IoIndexReadWord(0x80, 0x81, 0) == 0xFFFF; }},
    {"IoIndexReadDword", [](TReadWrite& rw) { return rw.IoIndexReadDword(0x80, 0x81, 0) == 0xFFFFFFFF; }},
    {"IoIndexReadBlock", [](TReadWrite& rw) { return !rw.IoIndexReadBlock(0x80, 0x81, 0, portBuffer, 4); }},
    {"IoIndexWriteByte", [](TReadWrite& rw) { return !rw.IoIndexWriteByte(0x80, 0x81, 0, 1); }},
    {"IoIndexWriteWord", [](TReadWrite& rw) { return !rw.IoIndexWriteWord(0x80, 0x81, 0, 1); }},
    {"IoIndexWriteDword", [](TReadWrite& rw) { return !rw.IoIndexWriteDword(0x80, 0x81, 0, 1); }},
    {"IoIndexWriteBlock", [](TReadWrite& rw) { return !rw.IoIndexWriteBlock(0x80, 0x81, 0, portBuffer, 4); }},
};

class PortsWithoutPrivilege : public testing::TestWithParam<RefusedCall> {};

}  // namespace

TEST_P(PortsWithoutPrivilege, PrintOnceAndFailWithoutTouchingAPort) {
  Hardware hw;
  hw.board.Ports(0x80, {0, 0, 0, 0});
  ExpectRefusedOnce(&hw, GetParam());
  EXPECT_THAT(portBuffer, Each(0xEE));
}

INSTANTIATE_TEST_SUITE_P(Every, PortsWithoutPrivilege, testing::ValuesIn(kRefusedPortCalls),
                         [](const auto& test) { return std::string(test.param.name); });

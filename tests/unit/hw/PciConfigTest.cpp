// SPDX-License-Identifier: MIT
// Configuration space through the ports, access by access.
#include "hw/TReadWrite.h"

#include <array>
#include <string>
#include <vector>

#include "tests/unit/hw/AddressingForms.h"
#include "tests/unit/hw/Hardware.h"

using hwtest::Buffer;
using hwtest::Forms;
using hwtest::Hardware;
using hwtest::Outcome;
using hwtest::OutcomeOf;
using hwtest::RefusalsPrinted;
using hwtest::RefusedCall;
using sim::In16;
using sim::In32;
using sim::In8;
using sim::Out16;
using sim::Out32;
using sim::Out8;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

using ByteSet = Set<unsigned char, 0, 255>;

/// Bus 0, device 0x1F, function 3: 0x80000000 + (0x1F << 11) + (3 << 8).
constexpr uint32_t kHost = 0x8000FB00;

/// A machine on which register 4*i of the function reads 0xDDCCBB00 + the low byte 0x40 + i.
struct Header : Hardware {
  Header() {
    for (unsigned i = 0; i < 64; ++i) board.Pci(0, 0x1F, 3).Set(4 * i, 4, 0xDDCCBB40 + i);
  }
};

}  // namespace

TEST(TranslatePciAddress, ComposesAddressAndPortAndStoresBoth) {
  Hardware hw;
  EXPECT_EQ(hw.rw.TranslatePciAddress(0, 0x1F, 3, 0x20), 0x8000FB20u);
  EXPECT_EQ(hw.rw.PciAddress, 0x8000FB20u);
  EXPECT_EQ(hw.rw.PciDataPort, 0xCFC);
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

TEST(TranslatePciAddress, WritesTheTwoOutputs) {
  Hardware hw;
  unsigned int address = 0;
  unsigned short port = 0;
  EXPECT_EQ(hw.rw.TranslatePciAddress(0x12, 2, 5, 0x3D, &address, &port), 0x8012153Cu);
  EXPECT_EQ(address, 0x8012153Cu);
  EXPECT_EQ(port, 0xCFD);
  EXPECT_EQ(hw.rw.PciAddress, 0x8012153Cu);
  EXPECT_EQ(hw.rw.PciDataPort, 0xCFD);
}

TEST(TranslatePciAddress, PutsRegisterBits8To11IntoAddressBits24To27) {
  Hardware hw;
  EXPECT_EQ(hw.rw.TranslatePciAddress(0, 0, 0, 0x104), 0x81000004u);
  EXPECT_EQ(hw.rw.TranslatePciAddress(0, 0, 0, 0xFFF), 0x8F0000FCu);
  EXPECT_EQ(hw.rw.TranslatePciAddress(0, 0, 0, 0xF008), 0x80000008u);
}

TEST(TranslatePciAddress, AddsDevicesBeyond31IntoTheBus) {
  Hardware hw;
  EXPECT_EQ(hw.rw.TranslatePciAddress(0, 32, 0, 0), 0x80010000u);
  EXPECT_EQ(hw.rw.TranslatePciAddress(1, 32, 0, 0), 0x80020000u);
}

TEST(TranslatePciAddress, AddsFunctionsBeyond7IntoTheDevice) {
  Hardware hw;
  EXPECT_EQ(hw.rw.TranslatePciAddress(0, 0, 8, 0), 0x80000800u);
  EXPECT_EQ(hw.rw.TranslatePciAddress(0, 1, 8, 0), 0x80001000u);
}

TEST(PciReadByte, ReadsThePortOfTheRegistersLowBits) {
  Hardware hw;
  hw.board.Pci(0, 0x1F, 3).Set(0x20, 4, 0x44332211);
  EXPECT_EQ(hw.rw.PciReadByte(0, 0x1F, 3, 0x22), 0x33);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, kHost + 0x20), In8(0xCFE, 0x33)));
}

TEST(PciReadWord, WritesTheAddressAndReadsSixteenBits) {
  Hardware hw;
  hw.board.Pci(0, 0x1F, 3).Set(0x20, 4, 0x44332211);
  EXPECT_EQ(hw.rw.PciReadWord(0, 0x1F, 3, 0x22), 0x4433);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, kHost + 0x20), In16(0xCFE, 0x4433)));
}

TEST(PciReadWord, AtAnOddRegisterReadsThatOddPort) {
  Hardware hw;
  hw.board.Pci(0, 0x1F, 3).Set(0x00, 4, 0x44332211);
  hw.board.Ports(0xD00, {0x99});
  EXPECT_EQ(hw.rw.PciReadWord(0, 0x1F, 3, 0x03), 0x9944);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, kHost), In16(0xCFF, 0x9944)));
}

TEST(PciReadDword, WritesTheAddressAndReadsThirtyTwoBits) {
  Hardware hw;
  hw.board.Pci(0, 0x1F, 3).Set(0x20, 4, 0x44332211);
  EXPECT_EQ(hw.rw.PciReadDword(0, 0x1F, 3, 0x20), 0x44332211u);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, kHost + 0x20), In32(0xCFC, 0x44332211)));
}

TEST(PciReadDword, AtAnUnalignedRegisterReadsThatPort) {
  Hardware hw;
  hw.board.Pci(0, 0x1F, 3).Set(0x00, 4, 0x44332211);
  hw.board.Ports(0xD00, {0x66, 0x77});
  EXPECT_EQ(hw.rw.PciReadDword(0, 0x1F, 3, 0x02), 0x77664433u);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, kHost), In32(0xCFE, 0x77664433)));
}

TEST(PciReadDword, OfAnAbsentDeviceIsAllOnesAsRead) {
  Hardware hw;
  EXPECT_EQ(hw.rw.PciReadDword(0, 0x1F, 3, 0), 0xFFFFFFFFu);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, kHost), In32(0xCFC, 0xFFFFFFFF)));
}

TEST(PciReadDword, LeavesAddressAndPortInTheFields) {
  Hardware hw;
  hw.rw.PciReadDword(0, 0x1F, 3, 0x42);
  EXPECT_EQ(hw.rw.PciAddress, kHost + 0x40);
  EXPECT_EQ(hw.rw.PciDataPort, 0xCFE);
}

TEST(PciWriteByte, WritesThePortOfTheRegistersLowBits) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.PciWriteByte(0, 0x1F, 3, 0x43, 0x5A));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, kHost + 0x40), Out8(0xCFF, 0x5A)));
}

TEST(PciWriteWord, WritesSixteenBitsEvenAtAnOddRegister) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.PciWriteWord(0, 0x1F, 3, 0x43, 0xBEEF));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, kHost + 0x40), Out16(0xCFF, 0xBEEF)));
}

TEST(PciWriteDword, WritesThirtyTwoBitsEvenAtAnUnalignedRegister) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.PciWriteDword(0, 0x1F, 3, 0x142, 0xCAFEBABE));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, kHost + 0x01000040), Out32(0xCFE, 0xCAFEBABE)));
  EXPECT_EQ(hw.rw.PciAddress, kHost + 0x01000040);
  EXPECT_EQ(hw.rw.PciDataPort, 0xCFE);
}

TEST(PciReadConfig, StoresTheLowByteOfEachOf64Dwords) {
  Header hw;
  hw.board.Pci(0, 0x1F, 3).Set(0, 4, 0x12345678);
  std::vector<uint8_t> buffer(65, 0xEE);
  EXPECT_TRUE(hw.rw.PciReadConfig(0, 0x1F, 3, buffer.data()));
  EXPECT_EQ(buffer[0], 0x78);
  for (unsigned i = 1; i < 64; ++i) EXPECT_EQ(buffer[i], 0x40 + i);
  EXPECT_EQ(buffer[64], 0xEE);
}

TEST(PciReadConfig, ReadsWholeDwordsInAscendingOrder) {
  Header hw;
  std::array<uint8_t, 64> buffer;
  hw.rw.PciReadConfig(0, 0x1F, 3, buffer.data());
  const auto log = hw.board.PortLog();
  ASSERT_EQ(log.size(), 128u);
  for (unsigned i = 0; i < 64; ++i) {
    EXPECT_EQ(log[2 * i], Out32(0xCF8, kHost + 4 * i));
    EXPECT_EQ(log[2 * i + 1], In32(0xCFC, 0xDDCCBB40 + i));
  }
}

TEST(PciReadConfigEx, GivesZeroForAMemberWithoutTouchingIt) {
  Header hw;
  ByteSet skip;
  skip.Add(8);
  std::array<uint8_t, 64> buffer;
  buffer.fill(0xEE);
  EXPECT_TRUE(hw.rw.PciReadConfigEx(0, 0x1F, 3, buffer.data(), skip));
  EXPECT_EQ(buffer[1], 0x41);
  EXPECT_EQ(buffer[2], 0x00);
  EXPECT_EQ(buffer[3], 0x43);
  EXPECT_EQ(hw.board.PortLog().size(), 126u);
  EXPECT_THAT(hw.board.PortLog(), Not(Contains(Out32(0xCF8, kHost + 8))));
}

TEST(PciReadConfigEx, IgnoresMembersThatAreNoMultipleOfFour) {
  Header hw;
  ByteSet skip;
  for (const int member : {9, 10, 11, 253, 255}) skip.Add(static_cast<unsigned char>(member));
  std::array<uint8_t, 64> buffer;
  EXPECT_TRUE(hw.rw.PciReadConfigEx(0, 0x1F, 3, buffer.data(), skip));
  EXPECT_EQ(hw.board.PortLog().size(), 128u);
  EXPECT_EQ(buffer[2], 0x42);
  EXPECT_EQ(buffer[63], 0x7F);
}

TEST(PciWriteConfig, WritesEachByteAsAWholeDword) {
  Hardware hw;
  std::array<uint8_t, 64> buffer;
  for (unsigned i = 0; i < 64; ++i) buffer[i] = static_cast<uint8_t>(0xC0 + i);
  EXPECT_TRUE(hw.rw.PciWriteConfig(0, 0x1F, 3, buffer.data()));
  const auto log = hw.board.PortLog();
  ASSERT_EQ(log.size(), 128u);
  for (unsigned i = 0; i < 64; ++i) {
    EXPECT_EQ(log[2 * i], Out32(0xCF8, kHost + 4 * i));
    EXPECT_EQ(log[2 * i + 1], Out32(0xCFC, 0xC0 + i));
  }
}

TEST(PciWriteConfigEx, SkipsMembers) {
  Hardware hw;
  ByteSet skip;
  for (unsigned member = 12; member < 256; ++member) skip.Add(static_cast<unsigned char>(member));
  skip.Add(4);
  std::array<uint8_t, 64> buffer{0x11, 0x22, 0x33};
  EXPECT_TRUE(hw.rw.PciWriteConfigEx(0, 0x1F, 3, buffer.data(), skip));
  EXPECT_THAT(hw.board.PortLog(),
              ElementsAre(Out32(0xCF8, kHost), Out32(0xCFC, 0x11), Out32(0xCF8, kHost + 8), Out32(0xCFC, 0x33)));
}

TEST(PciReadBlock, ReadsByteByByteThroughThePortOfEachRegister) {
  Hardware hw;
  hw.board.Pci(0, 0x1F, 3).Set(0x3C, 4, 0x44332211).Set(0x40, 4, 0x88776655);
  std::array<uint8_t, 5> buffer{0, 0, 0, 0, 0xEE};
  EXPECT_TRUE(hw.rw.PciReadBlock(0, 0x1F, 3, 0x3E, buffer.data(), 4));
  EXPECT_THAT(buffer, ElementsAre(0x33, 0x44, 0x55, 0x66, 0xEE));
  EXPECT_THAT(hw.board.PortLog(),
              ElementsAre(Out32(0xCF8, kHost + 0x3C), In8(0xCFE, 0x33), Out32(0xCF8, kHost + 0x3C), In8(0xCFF, 0x44),
                          Out32(0xCF8, kHost + 0x40), In8(0xCFC, 0x55), Out32(0xCF8, kHost + 0x40), In8(0xCFD, 0x66)));
}

TEST(PciReadBlock, GoesOnIntoTheExtendedRegisters) {
  Hardware hw;
  std::array<uint8_t, 2> buffer{};
  hw.rw.PciReadBlock(0, 0x1F, 3, 0xFF, buffer.data(), 2);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, kHost + 0xFC), In8(0xCFF, 0xFF),
                                              Out32(0xCF8, kHost + 0x01000000), In8(0xCFC, 0xFF)));
}

TEST(PciReadBlock, GoesOnAtRegisterZeroBehindTheLastNumber) {
  Hardware hw;
  std::array<uint8_t, 2> buffer{};
  EXPECT_TRUE(hw.rw.PciReadBlock(0, 0x1F, 3, 0xFFFF, buffer.data(), 2));
  EXPECT_THAT(hw.board.PortLog(),
              ElementsAre(Out32(0xCF8, kHost + 0x0F0000FC), In8(0xCFF, 0xFF), Out32(0xCF8, kHost), In8(0xCFC, 0xFF)));
}

TEST(PciReadBlock, OfCountZeroTouchesNoPort) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.PciReadBlock(0, 0x1F, 3, 0, nullptr, 0));
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

TEST(PciWriteBlock, WritesByteByByteThroughThePortOfEachRegister) {
  Hardware hw;
  std::array<uint8_t, 2> buffer{0x5A, 0xA5};
  EXPECT_TRUE(hw.rw.PciWriteBlock(0, 0x1F, 3, 0x3F, buffer.data(), 2));
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, kHost + 0x3C), Out8(0xCFF, 0x5A), Out32(0xCF8, kHost + 0x40),
                                              Out8(0xCFC, 0xA5)));
}

TEST(PciWriteBlock, GoesOnAtRegisterZeroBehindTheLastNumber) {
  Hardware hw;
  std::array<uint8_t, 2> buffer{0x5A, 0xA5};
  EXPECT_TRUE(hw.rw.PciWriteBlock(0, 0x1F, 3, 0xFFFF, buffer.data(), 2));
  EXPECT_THAT(hw.board.PortLog(),
              ElementsAre(Out32(0xCF8, kHost + 0x0F0000FC), Out8(0xCFF, 0x5A), Out32(0xCF8, kHost), Out8(0xCFC, 0xA5)));
}

TEST(PciWriteBlock, OfCountZeroTouchesNoPort) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.PciWriteBlock(0, 0x1F, 3, 0, nullptr, 0));
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

TEST(ePciReadByte, DecodesEveryFieldOfTheWord) {
  Hardware hw;
  hw.rw.ePciReadByte(0xFFFF, 0);
  EXPECT_THAT(hw.board.PortLog(), ElementsAre(Out32(0xCF8, 0x80FFFF00), In8(0xCFC, 0xFF)));
}

namespace {

ByteSet Eight() {
  ByteSet set;
  set.Add(8);
  return set;
}

const Forms kForms[] = {
    {"ReadByte", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciReadByte(0, 0x1F, 3, 0x20); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciReadByte(0x00FB, 0x20); }},
    {"ReadWord", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciReadWord(0, 0x1F, 3, 0x22); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciReadWord(0x00FB, 0x22); }},
    {"ReadDword", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciReadDword(0, 0x1F, 3, 0x104); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciReadDword(0x00FB, 0x104); }},
    {"WriteByte", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciWriteByte(0, 0x1F, 3, 0x41, 0x5A); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciWriteByte(0x00FB, 0x41, 0x5A); }},
    {"WriteWord", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciWriteWord(0, 0x1F, 3, 0x42, 0xBEEF); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciWriteWord(0x00FB, 0x42, 0xBEEF); }},
    {"WriteDword", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciWriteDword(0, 0x1F, 3, 0x44, 0xCAFEBABE); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciWriteDword(0x00FB, 0x44, 0xCAFEBABE); }},
    {"ReadConfig", [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciReadConfig(0, 0x1F, 3, b.data()); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciReadConfig(0x00FB, b.data()); }},
    {"WriteConfig", [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciWriteConfig(0, 0x1F, 3, b.data()); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciWriteConfig(0x00FB, b.data()); }},
    {"ReadConfigEx",
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciReadConfigEx(0, 0x1F, 3, b.data(), Eight()); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciReadConfigEx(0x00FB, b.data(), Eight()); }},
    {"WriteConfigEx",
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciWriteConfigEx(0, 0x1F, 3, b.data(), Eight()); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciWriteConfigEx(0x00FB, b.data(), Eight()); }},
    {"ReadBlock", [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciReadBlock(0, 0x1F, 3, 0x3E, b.data(), 5); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciReadBlock(0x00FB, 0x3E, b.data(), 5); }},
    {"WriteBlock",
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciWriteBlock(0, 0x1F, 3, 0x3E, b.data(), 5); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciWriteBlock(0x00FB, 0x3E, b.data(), 5); }},
};

class PciAddressingForms : public testing::TestWithParam<Forms> {};

}  // namespace

TEST_P(PciAddressingForms, MakeTheSameAccesses) {
  const Outcome separate = OutcomeOf<Header>(GetParam().separate);
  EXPECT_THAT(separate.log, Not(IsEmpty()));
  EXPECT_TRUE(OutcomeOf<Header>(GetParam().word) == separate);
}

INSTANTIATE_TEST_SUITE_P(Every, PciAddressingForms, testing::ValuesIn(kForms),
                         [](const auto& test) { return std::string(test.param.name); });

namespace {

Buffer pciBuffer(64);

const RefusedCall kRefusedPciCalls[] = {
    {"PciReadByte", [](TReadWrite& rw) { return rw.PciReadByte(0, 0, 0, 0) == 0xFF; }},
    {"PciReadWord", [](TReadWrite& rw) { return rw.PciReadWord(0, 0, 0, 0) == 0xFFFF; }},
    {"PciReadDword", [](TReadWrite& rw) { return rw.PciReadDword(0, 0, 0, 0) == 0xFFFFFFFF; }},
    {"PciWriteByte", [](TReadWrite& rw) { return !rw.PciWriteByte(0, 0, 0, 0, 1); }},
    {"PciWriteWord", [](TReadWrite& rw) { return !rw.PciWriteWord(0, 0, 0, 0, 1); }},
    {"PciWriteDword", [](TReadWrite& rw) { return !rw.PciWriteDword(0, 0, 0, 0, 1); }},
    {"PciReadBlock", [](TReadWrite& rw) { return !rw.PciReadBlock(0, 0, 0, 0, pciBuffer.data(), 9); }},
    {"PciWriteBlock", [](TReadWrite& rw) { return !rw.PciWriteBlock(0, 0, 0, 0, pciBuffer.data(), 9); }},
    {"PciReadBlockOfCountZero", [](TReadWrite& rw) { return !rw.PciReadBlock(0, 0, 0, 0, pciBuffer.data(), 0); }},
    {"PciWriteBlockOfCountZero", [](TReadWrite& rw) { return !rw.PciWriteBlock(0, 0, 0, 0, pciBuffer.data(), 0); }},
    {"PciWriteConfig", [](TReadWrite& rw) { return !rw.PciWriteConfig(0, 0, 0, pciBuffer.data()); }},
    {"PciWriteConfigEx", [](TReadWrite& rw) { return !rw.PciWriteConfigEx(0, 0, 0, pciBuffer.data(), {}); }},
    {"ePciReadByte", [](TReadWrite& rw) { return rw.ePciReadByte(0, 0) == 0xFF; }},
    {"ePciReadWord", [](TReadWrite& rw) { return rw.ePciReadWord(0, 0) == 0xFFFF; }},
    {"ePciReadDword", [](TReadWrite& rw) { return rw.ePciReadDword(0, 0) == 0xFFFFFFFF; }},
    {"ePciWriteByte", [](TReadWrite& rw) { return !rw.ePciWriteByte(0, 0, 1); }},
    {"ePciWriteWord", [](TReadWrite& rw) { return !rw.ePciWriteWord(0, 0, 1); }},
    {"ePciWriteDword", [](TReadWrite& rw) { return !rw.ePciWriteDword(0, 0, 1); }},
    {"ePciReadBlock", [](TReadWrite& rw) { return !rw.ePciReadBlock(0, 0, pciBuffer.data(), 9); }},
    {"ePciWriteBlock", [](TReadWrite& rw) { return !rw.ePciWriteBlock(0, 0, pciBuffer.data(), 9); }},
    {"ePciReadBlockOfCountZero", [](TReadWrite& rw) { return !rw.ePciReadBlock(0, 0, pciBuffer.data(), 0); }},
    {"ePciWriteBlockOfCountZero", [](TReadWrite& rw) { return !rw.ePciWriteBlock(0, 0, pciBuffer.data(), 0); }},
    {"ePciWriteConfig", [](TReadWrite& rw) { return !rw.ePciWriteConfig(0, pciBuffer.data()); }},
    {"ePciWriteConfigEx", [](TReadWrite& rw) { return !rw.ePciWriteConfigEx(0, pciBuffer.data(), {}); }},
};

class PciWithoutPrivilege : public testing::TestWithParam<RefusedCall> {};

}  // namespace

TEST_P(PciWithoutPrivilege, PrintsOnceAndFailsWithoutTouchingAPort) {
  Header hw;
  pciBuffer.assign(64, 0xEE);
  ExpectRefusedOnce(&hw, GetParam());
  EXPECT_THAT(pciBuffer, Each(0xEE));
}

INSTANTIATE_TEST_SUITE_P(Every, PciWithoutPrivilege, testing::ValuesIn(kRefusedPciCalls),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(PciReadConfig, WithoutPrivilegePrintsPerEntryStoresOnesAndSucceeds) {
  Hardware hw;
  hw.rw.IoplFailed = 1;
  Buffer buffer(64);
  bool result = false;
  EXPECT_EQ(RefusalsPrinted([&] { result = hw.rw.PciReadConfig(0, 0, 0, buffer.data()); }), 64);
  EXPECT_TRUE(result);
  EXPECT_THAT(buffer, Each(0xFF));
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

TEST(PciReadConfigEx, WithoutPrivilegeStillStoresZeroForMembersSilently) {
  Hardware hw;
  hw.rw.IoplFailed = 1;
  Buffer buffer(64, 0xEE);
  bool result = false;
  EXPECT_EQ(RefusalsPrinted([&] { result = hw.rw.PciReadConfigEx(0, 0, 0, buffer.data(), Eight()); }), 63);
  EXPECT_TRUE(result);
  EXPECT_EQ(buffer[1], 0xFF);
  EXPECT_EQ(buffer[2], 0x00);
  EXPECT_EQ(buffer[63], 0xFF);
}

TEST(PciWriteConfigEx, WithoutPrivilegeFailsAtTheFirstRegisterItWouldWrite) {
  Hardware hw;
  hw.rw.IoplFailed = 1;
  ByteSet all;
  for (unsigned member = 0; member < 256; ++member) all.Add(static_cast<unsigned char>(member));
  Buffer buffer(64);
  bool result = false;
  EXPECT_EQ(RefusalsPrinted([&] { result = hw.rw.PciWriteConfigEx(0, 0, 0, buffer.data(), all); }), 0);
  EXPECT_TRUE(result);
}

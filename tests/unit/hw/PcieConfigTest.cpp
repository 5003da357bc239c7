// SPDX-License-Identifier: MIT
// Extended configuration space through memory, access by access.
#include "hw/TReadWrite.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "tests/unit/hw/AddressingForms.h"
#include "tests/unit/hw/Hardware.h"

using hwtest::Buffer;
using hwtest::Close;
using hwtest::Forms;
using hwtest::Hardware;
using hwtest::Map;
using hwtest::Only;
using hwtest::OpenMemory;
using hwtest::Outcome;
using hwtest::OutcomeOf;
using hwtest::RefusalsPrinted;
using hwtest::Unmap;
using sim::Access;
using sim::In16;
using sim::In32;
using sim::In8;
using sim::MemWrite;
using sim::Out16;
using sim::Out32;
using sim::Out8;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

using WordSet = Set<unsigned short, 0, 255>;

constexpr unsigned kBase = 0xE0000000;
/// Bus 1, device 0x1F, function 3: 0xE0000000 + (1 << 20) + (0x1F << 15) + (3 << 12).
constexpr unsigned kFunction = 0xE01FB000;
/// The same function for port 0xCF8: 0x80000000 + (1 << 16) + (0x1F << 11) + (3 << 8).
constexpr uint32_t kPortFunction = 0x8001FB00;
constexpr unsigned short kWord = 0x01FB;

/// A machine whose enhanced configuration area is known and holds one function: the dword of register r is
/// 0x44332200 + the low byte of r / 4.
struct Mapped : Hardware {
  Mapped() {
    rw.PcieBase = kBase;
    std::vector<uint8_t> space(4096);
    for (unsigned i = 0; i < 1024; ++i) {
      space[4 * i] = static_cast<uint8_t>(i);
      space[4 * i + 1] = 0x22;
      space[4 * i + 2] = 0x33;
      space[4 * i + 3] = 0x44;
    }
    board.Memory(kFunction, space);
  }
};

/// A machine without a known base whose function answers through the ports, likewise; no register from 0x100 up.
struct Unmapped : Hardware {
  Unmapped() {
    for (unsigned i = 0; i < 64; ++i) board.Pci(1, 0x1F, 3).Set(4 * i, 4, 0x44332280 + i);
  }
};

}  // namespace

TEST(TranslatePciEAddress, AddsTheFieldsToTheBase) {
  Mapped m;
  EXPECT_TRUE(m.rw.TranslatePciEAddress(1, 0, 0, 0x10));
  EXPECT_EQ(m.rw.PcieAddress, 0xE0100010u);
  EXPECT_EQ(m.rw.PcieByteOffset, 0u);
  EXPECT_TRUE(m.rw.TranslatePciEAddress(1, 0x1F, 3, 0xFFE));
  EXPECT_EQ(m.rw.PcieAddress, 0xE01FBFFCu);
  EXPECT_EQ(m.rw.PcieByteOffset, 2u);
  EXPECT_THAT(m.board.Log(), IsEmpty());
}

TEST(TranslatePciEAddress, KeepsTwelveBitsOfTheRegister) {
  Mapped m;
  EXPECT_TRUE(m.rw.TranslatePciEAddress(0, 0, 0, 0xF007));
  EXPECT_EQ(m.rw.PcieAddress, 0xE0000004u);
  EXPECT_EQ(m.rw.PcieByteOffset, 3u);
}

TEST(TranslatePciEAddress, AddsDevicesBeyond31IntoTheBus) {
  Mapped m;
  m.rw.TranslatePciEAddress(1, 32, 0, 0);
  EXPECT_EQ(m.rw.PcieAddress, 0xE0200000u);
}

TEST(TranslatePciEAddress, AddsFunctionsBeyond7IntoTheDevice) {
  Mapped m;
  m.rw.TranslatePciEAddress(0, 1, 8, 0);
  EXPECT_EQ(m.rw.PcieAddress, 0xE0010000u);
}

TEST(TranslatePciEAddress, WrapsAt32Bits) {
  Mapped m;
  m.rw.PcieBase = 0xFFF00000;
  EXPECT_TRUE(m.rw.TranslatePciEAddress(1, 0, 1, 0x20));
  EXPECT_EQ(m.rw.PcieAddress, 0x00001020u);
}

TEST(TranslatePciEAddress, ChangesNothingWhileTheBaseIsUnknown) {
  Mapped m;
  m.rw.TranslatePciEAddress(1, 0, 0, 0x13);
  m.rw.PcieBase = 0xFFFFFFFF;
  EXPECT_FALSE(m.rw.TranslatePciEAddress(2, 0, 0, 0x20));
  EXPECT_EQ(m.rw.PcieAddress, 0xE0100010u);
  EXPECT_EQ(m.rw.PcieByteOffset, 3u);
}

TEST(PciEReadByte, PicksTheByteOfTheContainingDword) {
  Mapped m;
  EXPECT_EQ(m.rw.PciEReadByte(1, 0x1F, 3, 0x150), 0x54);
  EXPECT_EQ(m.rw.PciEReadByte(1, 0x1F, 3, 0x151), 0x22);
  EXPECT_EQ(m.rw.PciEReadByte(1, 0x1F, 3, 0x152), 0x33);
  EXPECT_EQ(m.rw.PciEReadByte(1, 0x1F, 3, 0x153), 0x44);
}

TEST(PciEReadByte, ReadsTheWholeAlignedDword) {
  Mapped m;
  m.rw.PciEReadByte(1, 0x1F, 3, 0x153);
  EXPECT_THAT(m.board.Log(),
              ElementsAre(OpenMemory(false), Map(kFunction, 0x154, false), Unmap(kFunction, 0x154), Close()));
}

TEST(PciEReadByte, ReadsMemoryBelow0x100TooOnceTheBaseIsKnown) {
  Mapped m;
  EXPECT_EQ(m.rw.PciEReadByte(1, 0x1F, 3, 0x10), 0x04);
  EXPECT_THAT(m.board.PortLog(), IsEmpty());
}

TEST(PciEReadWord, TakesTheUpperHalfAtEveryNonzeroOffset) {
  Mapped m;
  EXPECT_EQ(m.rw.PciEReadWord(1, 0x1F, 3, 0x10), 0x2204);
  EXPECT_EQ(m.rw.PciEReadWord(1, 0x1F, 3, 0x11), 0x4433);
  EXPECT_EQ(m.rw.PciEReadWord(1, 0x1F, 3, 0x12), 0x4433);
  EXPECT_EQ(m.rw.PciEReadWord(1, 0x1F, 3, 0x13), 0x4433);
}

TEST(PciEReadDword, ReadsTheDwordAtEveryOffset) {
  Mapped m;
  for (unsigned short reg = 0xFFC; reg < 0x1000; ++reg) EXPECT_EQ(m.rw.PciEReadDword(1, 0x1F, 3, reg), 0x443322FFu);
}

TEST(PciEReadDword, IsAllOnesWhenMemoryCannotBeOpened) {
  Mapped m;
  m.board.memDevice = false;
  EXPECT_EQ(m.rw.PciEReadByte(1, 0x1F, 3, 0x151), 0xFF);
  EXPECT_EQ(m.rw.PciEReadWord(1, 0x1F, 3, 0x150), 0xFFFF);
  EXPECT_EQ(m.rw.PciEReadDword(1, 0x1F, 3, 0x150), 0xFFFFFFFFu);
}

TEST(PciERead, GoesThroughThePortsBelow0x100WhileTheBaseIsUnknown) {
  Unmapped m;
  EXPECT_EQ(m.rw.PciEReadByte(1, 0x1F, 3, 0x13), 0x44);
  EXPECT_EQ(m.rw.PciEReadWord(1, 0x1F, 3, 0x11), 0x3322);
  EXPECT_EQ(m.rw.PciEReadDword(1, 0x1F, 3, 0xFC), 0x443322BFu);
  EXPECT_THAT(m.board.Log(),
              ElementsAre(Out32(0xCF8, kPortFunction + 0x10), In8(0xCFF, 0x44), Out32(0xCF8, kPortFunction + 0x10),
                          In16(0xCFD, 0x3322), Out32(0xCF8, kPortFunction + 0xFC), In32(0xCFC, 0x443322BF)));
}

TEST(PciERead, IsAllOnesWithoutAnAccessFrom0x100UpWhileTheBaseIsUnknown) {
  Unmapped m;
  EXPECT_EQ(m.rw.PciEReadByte(1, 0x1F, 3, 0x100), 0xFF);
  EXPECT_EQ(m.rw.PciEReadWord(1, 0x1F, 3, 0x100), 0xFFFF);
  EXPECT_EQ(m.rw.PciEReadDword(1, 0x1F, 3, 0x100), 0xFFFFFFFFu);
  EXPECT_EQ(m.rw.PciEReadDword(1, 0x1F, 3, 0x1000), 0xFFFFFFFFu);
  EXPECT_THAT(m.board.Log(), IsEmpty());
}

TEST(PciEWrite, UsesThePortsBelow0x100EvenWithAKnownBase) {
  Mapped m;
  EXPECT_TRUE(m.rw.PciEWriteByte(1, 0x1F, 3, 0x40, 0x5A));
  EXPECT_TRUE(m.rw.PciEWriteWord(1, 0x1F, 3, 0x43, 0xBEEF));
  EXPECT_TRUE(m.rw.PciEWriteDword(1, 0x1F, 3, 0xFE, 0xCAFEBABE));
  EXPECT_THAT(m.board.Log(),
              ElementsAre(Out32(0xCF8, kPortFunction + 0x40), Out8(0xCFC, 0x5A), Out32(0xCF8, kPortFunction + 0x40),
                          Out16(0xCFF, 0xBEEF), Out32(0xCF8, kPortFunction + 0xFC), Out32(0xCFE, 0xCAFEBABE)));
}

TEST(PciEWrite, TranslatesEvenWhenItGoesThroughThePorts) {
  Mapped m;
  m.rw.PciEWriteByte(1, 0x1F, 3, 0x43, 0x5A);
  EXPECT_EQ(m.rw.PcieAddress, kFunction + 0x40);
  EXPECT_EQ(m.rw.PcieByteOffset, 3u);
}

TEST(PciEWriteByte, ReplacesOneByteOfTheContainingDword) {
  for (unsigned offset = 0; offset < 4; ++offset) {
    Mapped m;
    EXPECT_TRUE(m.rw.PciEWriteByte(1, 0x1F, 3, static_cast<unsigned short>(0x104 + offset), 0xA5));
    const uint8_t before[4] = {0x41, 0x22, 0x33, 0x44};
    for (unsigned i = 0; i < 4; ++i)
      EXPECT_EQ(m.board.MemoryByte(kFunction + 0x104 + i), i == offset ? 0xA5 : before[i]) << offset;
  }
}

TEST(PciEWriteByte, ReadsThenWritesTheDword) {
  Mapped m;
  m.rw.PciEWriteByte(1, 0x1F, 3, 0x101, 0xA5);
  EXPECT_THAT(m.board.Log(), ElementsAre(OpenMemory(false), Map(kFunction, 0x104, false), Unmap(kFunction, 0x104),
                                         Close(), OpenMemory(true), Map(kFunction, 0x104, true),
                                         MemWrite(kFunction + 0x101, 0xA5), Unmap(kFunction, 0x104), Close()));
}

TEST(PciEWriteWord, ReplacesTheUpperHalfAtEveryNonzeroOffset) {
  for (unsigned offset = 0; offset < 4; ++offset) {
    Mapped m;
    EXPECT_TRUE(m.rw.PciEWriteWord(1, 0x1F, 3, static_cast<unsigned short>(0x104 + offset), 0xBEEF));
    const unsigned half = offset == 0 ? 0 : 2;
    EXPECT_THAT(Only(Access::kMemWrite, m.board.Log()),
                ElementsAre(MemWrite(kFunction + 0x104 + half, 0xEF), MemWrite(kFunction + 0x105 + half, 0xBE)));
  }
}

TEST(PciEWriteDword, WritesTheDwordWithoutReadingIt) {
  Mapped m;
  EXPECT_TRUE(m.rw.PciEWriteDword(1, 0x1F, 3, 0x106, 0xCAFEBABE));
  EXPECT_THAT(m.board.Log(),
              ElementsAre(OpenMemory(true), Map(kFunction, 0x108, true), MemWrite(kFunction + 0x104, 0xBE),
                          MemWrite(kFunction + 0x105, 0xBA), MemWrite(kFunction + 0x106, 0xFE),
                          MemWrite(kFunction + 0x107, 0xCA), Unmap(kFunction, 0x108), Close()));
}

TEST(PciEWrite, FailsWhenMemoryCannotBeOpened) {
  Mapped m;
  m.board.memDevice = false;
  EXPECT_FALSE(m.rw.PciEWriteByte(1, 0x1F, 3, 0x100, 1));
  EXPECT_FALSE(m.rw.PciEWriteWord(1, 0x1F, 3, 0x100, 1));
  EXPECT_FALSE(m.rw.PciEWriteDword(1, 0x1F, 3, 0x100, 1));
}

TEST(PciEWrite, WithoutABaseGoesToTheAddressAndOffsetOfTheLastTranslation) {
  Mapped m;
  m.rw.TranslatePciEAddress(1, 0x1F, 3, 0x203);
  m.rw.PcieBase = 0xFFFFFFFF;
  EXPECT_TRUE(m.rw.PciEWriteByte(7, 7, 7, 0x100, 0xA5));
  EXPECT_THAT(Only(Access::kMemWrite, m.board.Log()), ElementsAre(MemWrite(kFunction + 0x203, 0xA5)));
  EXPECT_TRUE(m.rw.PciEWriteWord(7, 7, 7, 0x100, 0x1234));
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0x202), 0x34);
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0x203), 0x12);
  EXPECT_TRUE(m.rw.PciEWriteDword(7, 7, 7, 0x100, 0xCAFEBABE));
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0x200), 0xBE);
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0x203), 0xCA);
}

TEST(PciEReadConfig, StoresTheLowByteOfEachOf1024Dwords) {
  Mapped m;
  std::vector<uint8_t> buffer(1025, 0xEE);
  EXPECT_TRUE(m.rw.PciEReadConfig(1, 0x1F, 3, buffer.data()));
  for (unsigned i = 0; i < 1024; ++i) ASSERT_EQ(buffer[i], static_cast<uint8_t>(i));
  EXPECT_EQ(buffer[1024], 0xEE);
  EXPECT_THAT(m.board.PortLog(), IsEmpty());
  EXPECT_THAT(Only(Access::kOpen, m.board.Log()), SizeIs(1024));
}

TEST(PciEReadConfig, WithoutABaseReadsThePortsAndThenOnes) {
  Unmapped m;
  std::vector<uint8_t> buffer(1024);
  EXPECT_TRUE(m.rw.PciEReadConfig(1, 0x1F, 3, buffer.data()));
  for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(buffer[i], 0x80 + i);
  for (unsigned i = 64; i < 1024; ++i) ASSERT_EQ(buffer[i], 0xFF);
  const auto& log = m.board.Log();
  ASSERT_EQ(log.size(), 128u);
  EXPECT_EQ(log[2], Out32(0xCF8, kPortFunction + 4));
  EXPECT_EQ(log[3], In32(0xCFC, 0x44332281));
}

TEST(PciEReadConfig, StoresOnesForAnEntryThatCannotBeMapped) {
  Mapped m;
  int maps = 0;
  m.board.fault = [&](Access::Kind kind, uint64_t) { return kind == Access::kMap && maps++ == 2; };
  std::vector<uint8_t> buffer(1024);
  EXPECT_TRUE(m.rw.PciEReadConfig(1, 0x1F, 3, buffer.data()));
  EXPECT_EQ(buffer[1], 0x01);
  EXPECT_EQ(buffer[2], 0xFF);
  EXPECT_EQ(buffer[3], 0x03);
}

TEST(PciEReadPage, StoresTheLowByteOfEachOf64Dwords) {
  Mapped m;
  std::vector<uint8_t> buffer(65, 0xEE);
  EXPECT_TRUE(m.rw.PciEReadPage(1, 0x1F, 3, buffer.data()));
  for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(buffer[i], i);
  EXPECT_EQ(buffer[64], 0xEE);
  EXPECT_THAT(m.board.PortLog(), IsEmpty());
}

TEST(PciEReadPage, WithoutABaseReadsThePorts) {
  Unmapped m;
  std::vector<uint8_t> buffer(64);
  EXPECT_TRUE(m.rw.PciEReadPage(1, 0x1F, 3, buffer.data()));
  for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(buffer[i], 0x80 + i);
  EXPECT_THAT(m.board.Log(), SizeIs(128));
}

TEST(PciEReadConfig100, FillsTheBufferFromByte256On) {
  Mapped m;
  std::vector<uint8_t> buffer(1217, 0xEE);
  EXPECT_TRUE(m.rw.PciEReadConfig100(1, 0x1F, 3, buffer.data()));
  for (unsigned i = 0; i < 256; ++i) ASSERT_EQ(buffer[i], 0xEE);
  // Register 0x100 is dword 64.
  for (unsigned i = 0; i < 960; ++i) ASSERT_EQ(buffer[256 + i], static_cast<uint8_t>(64 + i));
  EXPECT_EQ(buffer[1216], 0xEE);
}

TEST(PciEReadConfig100, WithoutABaseStoresOnesWithoutAnAccess) {
  Unmapped m;
  std::vector<uint8_t> buffer(1217, 0xEE);
  EXPECT_TRUE(m.rw.PciEReadConfig100(1, 0x1F, 3, buffer.data()));
  EXPECT_EQ(buffer[255], 0xEE);
  for (unsigned i = 256; i < 1216; ++i) ASSERT_EQ(buffer[i], 0xFF);
  EXPECT_EQ(buffer[1216], 0xEE);
  EXPECT_THAT(m.board.Log(), IsEmpty());
}

TEST(PciEReadConfigEx, GivesZeroForAMemberWithoutTouchingIt) {
  Mapped m;
  WordSet skip;
  skip.Add(8);
  skip.Add(17);
  std::vector<uint8_t> buffer(1024, 0xEE);
  EXPECT_TRUE(m.rw.PciEReadConfigEx(1, 0x1F, 3, buffer.data(), skip));
  EXPECT_EQ(buffer[1], 0x01);
  EXPECT_EQ(buffer[2], 0x00);
  EXPECT_EQ(buffer[4], 0x04);
  EXPECT_EQ(buffer[1023], 0xFF);
  EXPECT_THAT(Only(Access::kMap, m.board.Log()), SizeIs(1023));
  EXPECT_THAT(Only(Access::kMap, m.board.Log()), Not(testing::Contains(Map(kFunction, 12, false))));
}

TEST(PciEReadConfigEx, WithoutABaseReadsThePortsAndThenOnes) {
  Unmapped m;
  WordSet skip;
  skip.Add(0);
  std::vector<uint8_t> buffer(1024, 0xEE);
  EXPECT_TRUE(m.rw.PciEReadConfigEx(1, 0x1F, 3, buffer.data(), skip));
  EXPECT_EQ(buffer[0], 0x00);
  EXPECT_EQ(buffer[1], 0x81);
  EXPECT_EQ(buffer[64], 0xFF);
  EXPECT_THAT(m.board.Log(), SizeIs(126));
}

namespace {

std::vector<uint8_t> CountingBytes() {
  std::vector<uint8_t> bytes(1024);
  for (unsigned i = 0; i < 1024; ++i) bytes[i] = static_cast<uint8_t>(i + 1);
  return bytes;
}

}  // namespace

TEST(PciEWriteConfig, WritesEachByteAsAWholeDwordThroughPortsAndMemory) {
  Mapped m;
  auto buffer = CountingBytes();
  EXPECT_TRUE(m.rw.PciEWriteConfig(1, 0x1F, 3, buffer.data()));
  const auto ports = m.board.PortLog();
  ASSERT_EQ(ports.size(), 128u);
  for (unsigned i = 0; i < 64; ++i) {
    EXPECT_EQ(ports[2 * i], Out32(0xCF8, kPortFunction + 4 * i));
    EXPECT_EQ(ports[2 * i + 1], Out32(0xCFC, i + 1));
  }
  EXPECT_EQ(m.board.MemoryByte(kFunction), 0x00);
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0xFD), 0x22);
  for (unsigned i = 64; i < 1024; ++i) {
    ASSERT_EQ(m.board.MemoryByte(kFunction + 4 * i), static_cast<uint8_t>(i + 1));
    for (unsigned byte = 1; byte < 4; ++byte) ASSERT_EQ(m.board.MemoryByte(kFunction + 4 * i + byte), 0x00);
  }
}

TEST(PciEWriteConfig, StopsAtTheFirstEntryThatCannotBeMapped) {
  Mapped m;
  int maps = 0;
  m.board.fault = [&](Access::Kind kind, uint64_t) { return kind == Access::kMap && maps++ == 1; };
  auto buffer = CountingBytes();
  EXPECT_FALSE(m.rw.PciEWriteConfig(1, 0x1F, 3, buffer.data()));
  EXPECT_EQ(maps, 2);
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0x100), 65);
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0x104), 0x41);
}

TEST(PciEWriteConfig, StopsWhenMemoryCannotBeOpened) {
  Mapped m;
  m.board.memDevice = false;
  auto buffer = CountingBytes();
  EXPECT_FALSE(m.rw.PciEWriteConfig(1, 0x1F, 3, buffer.data()));
  EXPECT_THAT(m.board.PortLog(), SizeIs(128));
  EXPECT_THAT(Only(Access::kOpen, m.board.Log()), SizeIs(1));
}

TEST(PciEWriteConfig, WithoutABaseWritesEveryUpperEntryToTheLastTranslation) {
  Mapped m;
  m.rw.TranslatePciEAddress(1, 0x1F, 3, 0x200);
  m.rw.PcieBase = 0xFFFFFFFF;
  auto buffer = CountingBytes();
  EXPECT_TRUE(m.rw.PciEWriteConfig(1, 0x1F, 3, buffer.data()));
  const auto maps = Only(Access::kMap, m.board.Log());
  EXPECT_THAT(maps, SizeIs(960));
  EXPECT_THAT(maps, Each(Map(kFunction, 0x204, true)));
  buffer.assign(1024, 0);
  buffer[1023] = 0x77;
  EXPECT_TRUE(m.rw.PciEWriteConfig(1, 0x1F, 3, buffer.data()));
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0x200), 0x77);
}

TEST(PciEWriteConfigEx, SkipsMembersBelow0x100) {
  Mapped m;
  WordSet skip;
  for (unsigned short member = 4; member < 256; ++member) skip.Add(member);
  auto buffer = CountingBytes();
  EXPECT_TRUE(m.rw.PciEWriteConfigEx(1, 0x1F, 3, buffer.data(), skip));
  EXPECT_THAT(m.board.PortLog(), ElementsAre(Out32(0xCF8, kPortFunction), Out32(0xCFC, 1)));
  EXPECT_THAT(Only(Access::kMap, m.board.Log()), SizeIs(960));
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0xFFC), 0x00);
}

TEST(PciEWriteConfigEx, WithoutABaseWritesEveryUpperEntryToTheLastTranslation) {
  Mapped m;
  m.rw.TranslatePciEAddress(1, 0x1F, 3, 0x200);
  m.rw.PcieBase = 0xFFFFFFFF;
  WordSet skip;
  for (unsigned short member = 0; member < 256; ++member) skip.Add(member);
  std::vector<uint8_t> buffer(1024, 0x11);
  buffer[1023] = 0x77;
  EXPECT_TRUE(m.rw.PciEWriteConfigEx(7, 7, 7, buffer.data(), skip));
  EXPECT_THAT(m.board.PortLog(), IsEmpty());
  const auto maps = Only(Access::kMap, m.board.Log());
  EXPECT_THAT(maps, SizeIs(960));
  EXPECT_THAT(maps, Each(Map(kFunction, 0x204, true)));
  // The last entry is what stays; register 0x204 is as it was.
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0x200), 0x77);
  for (unsigned i = 1; i < 4; ++i) EXPECT_EQ(m.board.MemoryByte(kFunction + 0x200 + i), 0x00);
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0x204), 0x81);
}

TEST(PciEWriteConfigEx, StopsAtTheFirstFailedWrite) {
  Mapped m;
  int opens = 0;
  m.board.fault = [&](Access::Kind kind, uint64_t) { return kind == Access::kOpen && opens++ == 2; };
  auto buffer = CountingBytes();
  EXPECT_FALSE(m.rw.PciEWriteConfigEx(1, 0x1F, 3, buffer.data(), {}));
  EXPECT_EQ(opens, 3);
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0x104), 66);
  EXPECT_EQ(m.board.MemoryByte(kFunction + 0x108), 0x42);
}

namespace {

WordSet Eight() {
  WordSet set;
  set.Add(8);
  return set;
}

const Forms kForms[] = {
    {"ReadByte", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciEReadByte(1, 0x1F, 3, 0x121); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciEReadByte(kWord, 0x121); }},
    {"ReadWord", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciEReadWord(1, 0x1F, 3, 0x12); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciEReadWord(kWord, 0x12); }},
    {"ReadDword", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciEReadDword(1, 0x1F, 3, 0x104); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciEReadDword(kWord, 0x104); }},
    {"WriteByte", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciEWriteByte(1, 0x1F, 3, 0x141, 0x5A); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciEWriteByte(kWord, 0x141, 0x5A); }},
    {"WriteWord", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciEWriteWord(1, 0x1F, 3, 0x142, 0xBEEF); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciEWriteWord(kWord, 0x142, 0xBEEF); }},
    {"WriteDword", [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.PciEWriteDword(1, 0x1F, 3, 0x44, 0xCAFE); },
     [](TReadWrite& rw, Buffer&) -> uint64_t { return rw.ePciEWriteDword(kWord, 0x44, 0xCAFE); }},
    {"ReadConfig", [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciEReadConfig(1, 0x1F, 3, b.data()); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciEReadConfig(kWord, b.data()); }},
    {"ReadPage", [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciEReadPage(1, 0x1F, 3, b.data()); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciEReadPage(kWord, b.data()); }},
    {"ReadConfig100", [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciEReadConfig100(1, 0x1F, 3, b.data()); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciEReadConfig100(kWord, b.data()); }},
    {"ReadConfigEx",
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciEReadConfigEx(1, 0x1F, 3, b.data(), Eight()); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciEReadConfigEx(kWord, b.data(), Eight()); }},
    {"WriteConfig", [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciEWriteConfig(1, 0x1F, 3, b.data()); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciEWriteConfig(kWord, b.data()); }},
    {"WriteConfigEx",
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.PciEWriteConfigEx(1, 0x1F, 3, b.data(), Eight()); },
     [](TReadWrite& rw, Buffer& b) -> uint64_t { return rw.ePciEWriteConfigEx(kWord, b.data(), Eight()); }},
};

class PciEAddressingForms : public testing::TestWithParam<Forms> {};

}  // namespace

TEST_P(PciEAddressingForms, MakeTheSameAccesses) {
  const Outcome separate = OutcomeOf<Mapped>(GetParam().separate);
  EXPECT_THAT(separate.log, Not(IsEmpty()));
  EXPECT_TRUE(OutcomeOf<Mapped>(GetParam().word) == separate);
}

INSTANTIATE_TEST_SUITE_P(Every, PciEAddressingForms, testing::ValuesIn(kForms),
                         [](const auto& test) { return std::string(test.param.name); });

namespace {

struct RefusedPciECall {
  const char* name;
  unsigned base;
  int messages;
  std::function<bool(TReadWrite&)> refuses;  ///< makes the call; true when its result is the documented one
};

constexpr unsigned kUnknown = 0xFFFFFFFF;
Buffer pcieBuffer(1216);

bool Ones(const Buffer& bytes, size_t from, size_t to) {
  return std::all_of(bytes.begin() + static_cast<long>(from), bytes.begin() + static_cast<long>(to),
                     [](uint8_t byte) { return byte == 0xFF; });
}

const RefusedPciECall kRefusedPciECalls[] = {
    {"ReadByteThroughPorts", kUnknown, 1, [](TReadWrite& rw) { return rw.PciEReadByte(0, 0, 0, 0x10) == 0xFF; }},
    {"ReadWordThroughPorts", kUnknown, 1, [](TReadWrite& rw) { return rw.PciEReadWord(0, 0, 0, 0x10) == 0xFFFF; }},
    {"ReadDwordFromMemory", kBase, 1, [](TReadWrite& rw) { return rw.PciEReadDword(0, 0, 0, 0x10) == 0xFFFFFFFF; }},
    {"ReadWordFromMemory", kBase, 1, [](TReadWrite& rw) { return rw.PciEReadWord(0, 0, 0, 0x112) == 0xFFFF; }},
    {"WriteByteThroughPorts", kBase, 1, [](TReadWrite& rw) { return !rw.PciEWriteByte(0, 0, 0, 0x10, 1); }},
    {"WriteDwordToMemory", kBase, 1, [](TReadWrite& rw) { return !rw.PciEWriteDword(0, 0, 0, 0x100, 1); }},
    // A part of a dword is read, then written: two refusals.
    {"WriteByteToMemory", kBase, 2, [](TReadWrite& rw) { return !rw.PciEWriteByte(0, 0, 0, 0x100, 1); }},
    {"WriteWordToMemory", kBase, 2, [](TReadWrite& rw) { return !rw.PciEWriteWord(0, 0, 0, 0x100, 1); }},
    {"ReadConfigFromMemory", kBase, 1024,
     [](TReadWrite& rw) { return rw.PciEReadConfig(0, 0, 0, pcieBuffer.data()) && Ones(pcieBuffer, 0, 1024); }},
    {"ReadPageThroughPorts", kUnknown, 64,
     [](TReadWrite& rw) { return rw.PciEReadPage(0, 0, 0, pcieBuffer.data()) && Ones(pcieBuffer, 0, 64); }},
    {"ReadConfig100FromMemory", kBase, 960,
     [](TReadWrite& rw) { return rw.PciEReadConfig100(0, 0, 0, pcieBuffer.data()) && Ones(pcieBuffer, 256, 1216); }},
    {"ReadConfigExFromMemory", kBase, 1023,
     [](TReadWrite& rw) { return rw.PciEReadConfigEx(0, 0, 0, pcieBuffer.data(), Eight()) && pcieBuffer[2] == 0; }},
    {"WriteConfig", kBase, 1, [](TReadWrite& rw) { return !rw.PciEWriteConfig(0, 0, 0, pcieBuffer.data()); }},
    {"WriteConfigEx", kBase, 1, [](TReadWrite& rw) { return !rw.PciEWriteConfigEx(0, 0, 0, pcieBuffer.data(), {}); }},
};

class PciEWithoutPrivilege : public testing::TestWithParam<RefusedPciECall> {};

}  // namespace

TEST_P(PciEWithoutPrivilege, PrintsPerAccessAndTouchesNothing) {
  Hardware hw;
  hw.rw.IoplFailed = 1;
  hw.rw.PcieBase = GetParam().base;
  bool refused = false;
  EXPECT_EQ(RefusalsPrinted([&] { refused = GetParam().refuses(hw.rw); }), GetParam().messages);
  EXPECT_TRUE(refused);
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Every, PciEWithoutPrivilege, testing::ValuesIn(kRefusedPciECalls),
                         [](const auto& test) { return std::string(test.param.name); });

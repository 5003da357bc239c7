// SPDX-License-Identifier: MIT
// Values, blocks and pages of physical memory, access by access.
#include "hw/TReadWrite.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "tests/unit/hw/Hardware.h"

using hwtest::Close;
using hwtest::Hardware;
using hwtest::Map;
using hwtest::OpenMemory;
using hwtest::RefusalsPrinted;
using hwtest::Unmap;
using sim::MemWrite;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// 0x200 bytes from 0x1000 on: 0x10, 0x11, ... modulo 256.
void FillMemory(sim::Board& board) {
  std::vector<uint8_t> bytes(0x200);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(0x10 + i);
  board.Memory(0x1000, bytes);
}

/// 0x200 zero bytes from 0x1000 on, for writes to show up in the log byte by byte.
void ClearMemory(sim::Board& board) { board.Memory(0x1000, std::vector<uint8_t>(0x200)); }

}  // namespace

TEST(MemoryReadByte, MapsReadOnlyFromThePageUpToTheByte) {
  Hardware hw;
  FillMemory(hw.board);
  EXPECT_EQ(hw.rw.MemoryReadByte(0x1023), 0x33);
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(false), Map(0x1000, 0x24, false), Unmap(0x1000, 0x24), Close()));
}

TEST(MemoryReadByte, ReachesAddressesAbove4GiB) {
  Hardware hw;
  hw.board.Memory(0x123456789A, {0x5A});
  EXPECT_EQ(hw.rw.MemoryReadByte(0x123456789A), 0x5A);
}

TEST(MemoryReadByte, OpensAndMapsAfreshOnEveryCall) {
  Hardware hw;
  FillMemory(hw.board);
  hw.rw.MemoryReadByte(0x1000);
  hw.rw.MemoryReadByte(0x1000);
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(false), Map(0x1000, 1, false), Unmap(0x1000, 1), Close(),
                                          OpenMemory(false), Map(0x1000, 1, false), Unmap(0x1000, 1), Close()));
}

TEST(MemoryReadWord, ReadsLittleEndian) {
  Hardware hw;
  FillMemory(hw.board);
  EXPECT_EQ(hw.rw.MemoryReadWord(0x1002), 0x1312);
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(false), Map(0x1000, 4, false), Unmap(0x1000, 4), Close()));
}

TEST(MemoryReadWord, AtAnOddAddressReadsTheWordOneByteLower) {
  Hardware hw;
  FillMemory(hw.board);
  EXPECT_EQ(hw.rw.MemoryReadWord(0x1003), 0x1312);
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(false), Map(0x1000, 5, false), Unmap(0x1000, 5), Close()));
}

TEST(MemoryReadWord, AtTheLastByteOfAPageStaysInThePage) {
  Hardware hw;
  hw.board.Memory(0x1FFE, {0x34, 0x12, 0xEE});
  EXPECT_EQ(hw.rw.MemoryReadWord(0x1FFF), 0x1234);
}

TEST(MemoryReadDword, DropsTheTwoLowAddressBits) {
  Hardware hw;
  FillMemory(hw.board);
  for (unsigned address = 0x1004; address < 0x1008; ++address)
    EXPECT_EQ(hw.rw.MemoryReadDword(address), 0x17161514u) << address;
}

TEST(MemoryReadDword, MapsFourBytesFromTheAskedAddress) {
  Hardware hw;
  FillMemory(hw.board);
  hw.rw.MemoryReadDword(0x1006);
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(false), Map(0x1000, 10, false), Unmap(0x1000, 10), Close()));
}

TEST(MemoryWriteByte, MapsReadWriteAndWritesOneByte) {
  Hardware hw;
  ClearMemory(hw.board);
  EXPECT_TRUE(hw.rw.MemoryWriteByte(0x1003, 0x5A));
  EXPECT_THAT(hw.board.Log(),
              ElementsAre(OpenMemory(true), Map(0x1000, 4, true), MemWrite(0x1003, 0x5A), Unmap(0x1000, 4), Close()));
}

TEST(MemoryWriteWord, AtAnOddAddressWritesOneByteLower) {
  Hardware hw;
  ClearMemory(hw.board);
  EXPECT_TRUE(hw.rw.MemoryWriteWord(0x1003, 0xBEEF));
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(true), Map(0x1000, 5, true), MemWrite(0x1002, 0xEF),
                                          MemWrite(0x1003, 0xBE), Unmap(0x1000, 5), Close()));
}

TEST(MemoryWriteDword, DropsTheTwoLowAddressBits) {
  Hardware hw;
  ClearMemory(hw.board);
  EXPECT_TRUE(hw.rw.MemoryWriteDword(0x1002, 0xCAFEBABE));
  EXPECT_THAT(hw.board.Log(),
              ElementsAre(OpenMemory(true), Map(0x1000, 6, true), MemWrite(0x1000, 0xBE), MemWrite(0x1001, 0xBA),
                          MemWrite(0x1002, 0xFE), MemWrite(0x1003, 0xCA), Unmap(0x1000, 6), Close()));
}

TEST(MemoryReadBlock, CopiesBytesFromAnyAddress) {
  Hardware hw;
  FillMemory(hw.board);
  std::array<uint8_t, 4> buffer{0, 0, 0, 0xEE};
  EXPECT_TRUE(hw.rw.MemoryReadBlock(0x1001, buffer.data(), 3));
  EXPECT_THAT(buffer, ElementsAre(0x11, 0x12, 0x13, 0xEE));
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(false), Map(0x1000, 4, false), Unmap(0x1000, 4), Close()));
}

namespace {

struct BlockCase {
  const char* name;
  unsigned width;
  std::array<uint8_t, 8> copied;  ///< of count 7 from 0x1001 on, into a buffer of 0xEE
};

const BlockCase kBlockCases[] = {
    {"Bytes", 0, {0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0xEE}},
    {"ThreeWordsFromOneByteLower", 1, {0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0xEE, 0xEE}},
    {"OneDwordFromOneByteLower", 2, {0x10, 0x11, 0x12, 0x13, 0xEE, 0xEE, 0xEE, 0xEE}},
    {"NothingForWidth3", 3, {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}},
    {"NothingForTheLargestWidth", 0xFFFFFFFF, {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}},
};

class MemoryReadBlockOfWidth : public testing::TestWithParam<BlockCase> {};
class MemoryWriteBlockOfWidth : public testing::TestWithParam<BlockCase> {};

}  // namespace

TEST_P(MemoryReadBlockOfWidth, CopiesWholeElements) {
  Hardware hw;
  FillMemory(hw.board);
  std::array<uint8_t, 8> buffer;
  buffer.fill(0xEE);
  EXPECT_TRUE(hw.rw.MemoryReadBlock(0x1001, buffer.data(), 7, GetParam().width));
  EXPECT_EQ(buffer, GetParam().copied);
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(false), Map(0x1000, 8, false), Unmap(0x1000, 8), Close()));
}

TEST_P(MemoryWriteBlockOfWidth, CopiesWholeElements) {
  Hardware hw;
  hw.board.Memory(0x1000, std::vector<uint8_t>(16, 0xEE));
  std::array<uint8_t, 7> buffer{0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27};
  EXPECT_TRUE(hw.rw.MemoryWriteBlock(0x1001, buffer.data(), 7, GetParam().width));
  const unsigned moved = GetParam().width > 2 ? 0 : 7u >> GetParam().width << GetParam().width;
  const unsigned first = GetParam().width == 0 ? 0x1001 : 0x1000;
  for (unsigned i = 0; i < 16; ++i) {
    const unsigned address = 0x1000 + i;
    const bool written = address >= first && address < first + moved;
    EXPECT_EQ(hw.board.MemoryByte(address), written ? buffer[address - first] : 0xEE) << address;
  }
}

INSTANTIATE_TEST_SUITE_P(Every, MemoryReadBlockOfWidth, testing::ValuesIn(kBlockCases),
                         [](const auto& test) { return std::string(test.param.name); });
INSTANTIATE_TEST_SUITE_P(Every, MemoryWriteBlockOfWidth, testing::ValuesIn(kBlockCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(MemoryReadBlock, OfCountZeroOnAPageBoundaryFails) {
  Hardware hw;
  FillMemory(hw.board);
  EXPECT_FALSE(hw.rw.MemoryReadBlock(0x1000, nullptr, 0));
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(false), Map(0x1000, 0, false), Close()));
}

TEST(MemoryReadBlock, OfCountZeroElsewhereSucceeds) {
  Hardware hw;
  FillMemory(hw.board);
  EXPECT_TRUE(hw.rw.MemoryReadBlock(0x1001, nullptr, 0));
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(false), Map(0x1000, 1, false), Unmap(0x1000, 1), Close()));
}

TEST(MemoryWriteBlock, OfCountZeroOnAPageBoundaryFails) {
  Hardware hw;
  EXPECT_FALSE(hw.rw.MemoryWriteBlock(0x1000, nullptr, 0));
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(true), Map(0x1000, 0, true), Close()));
}

TEST(MemoryWriteBlock, WritesBytesToAnyAddress) {
  Hardware hw;
  ClearMemory(hw.board);
  std::array<uint8_t, 2> buffer{0x5A, 0xA5};
  EXPECT_TRUE(hw.rw.MemoryWriteBlock(0x1001, buffer.data(), 2));
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(true), Map(0x1000, 3, true), MemWrite(0x1001, 0x5A),
                                          MemWrite(0x1002, 0xA5), Unmap(0x1000, 3), Close()));
}

TEST(MemoryReadPage, Copies256Bytes) {
  Hardware hw;
  FillMemory(hw.board);
  std::vector<uint8_t> buffer(257, 0xEE);
  EXPECT_TRUE(hw.rw.MemoryReadPage(0x1001, buffer.data()));
  EXPECT_EQ(buffer[0], 0x11);
  EXPECT_EQ(buffer[255], 0x10);
  EXPECT_EQ(buffer[256], 0xEE);
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(false), Map(0x1000, 257, false), Unmap(0x1000, 257), Close()));
}

TEST(MemoryReadPage, InWordsAndDwordsStartsAtTheRoundedAddress) {
  Hardware hw;
  FillMemory(hw.board);
  std::vector<uint8_t> buffer(257, 0xEE);
  EXPECT_TRUE(hw.rw.MemoryReadPage(0x1003, buffer.data(), 1));
  EXPECT_EQ(buffer[0], 0x12);
  EXPECT_EQ(buffer[255], 0x11);
  EXPECT_EQ(buffer[256], 0xEE);
  EXPECT_TRUE(hw.rw.MemoryReadPage(0x1003, buffer.data(), 2));
  EXPECT_EQ(buffer[0], 0x10);
  EXPECT_EQ(buffer[255], 0x0F);
  EXPECT_EQ(buffer[256], 0xEE);
}

TEST(MemoryReadPage, OfAnUnknownWidthMovesNothingAndSucceeds) {
  Hardware hw;
  FillMemory(hw.board);
  std::vector<uint8_t> buffer(256, 0xEE);
  EXPECT_TRUE(hw.rw.MemoryReadPage(0x1000, buffer.data(), 3));
  EXPECT_TRUE(hw.rw.MemoryReadPage(0x1000, buffer.data(), -1));
  EXPECT_THAT(buffer, Each(0xEE));
}

TEST(MemoryReadPage, Takes32BitAddressesAsUnsigned) {
  Hardware hw;
  std::vector<uint8_t> buffer(256);
  EXPECT_TRUE(hw.rw.MemoryReadPage(0xFFFFF000, buffer.data()));
  EXPECT_THAT(hw.board.Log(),
              ElementsAre(OpenMemory(false), Map(0xFFFFF000, 256, false), Unmap(0xFFFFF000, 256), Close()));
}

namespace {

struct PageWidth {
  const char* name;
  int width;
  unsigned first;  ///< the address that buffer byte 0 goes to when 0x1003 is asked for
};

class MemoryWritePageOfWidth : public testing::TestWithParam<PageWidth> {};

}  // namespace

TEST_P(MemoryWritePageOfWidth, Writes256Bytes) {
  Hardware hw;
  ClearMemory(hw.board);
  std::vector<uint8_t> buffer(256, 0x77);
  buffer[0] = 0x01;
  buffer[255] = 0x02;
  EXPECT_TRUE(hw.rw.MemoryWritePage(0x1003, buffer.data(), GetParam().width));
  const unsigned first = GetParam().first;
  EXPECT_EQ(hw.board.MemoryByte(first - 1), first == 0x1000 ? 0xFF : 0x00);
  EXPECT_EQ(hw.board.MemoryByte(first), 0x01);
  EXPECT_EQ(hw.board.MemoryByte(first + 254), 0x77);
  EXPECT_EQ(hw.board.MemoryByte(first + 255), 0x02);
  EXPECT_EQ(hw.board.MemoryByte(first + 256), 0x00);
}

INSTANTIATE_TEST_SUITE_P(Every, MemoryWritePageOfWidth,
                         testing::Values(PageWidth{"Bytes", 0, 0x1003}, PageWidth{"Words", 1, 0x1002},
                                         PageWidth{"Dwords", 2, 0x1000}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(MemoryWritePage, WithoutAWidthWritesBytes) {
  Hardware hw;
  ClearMemory(hw.board);
  std::vector<uint8_t> buffer(256, 0x77);
  EXPECT_TRUE(hw.rw.MemoryWritePage(0x1001, buffer.data()));
  EXPECT_EQ(hw.board.MemoryByte(0x1000), 0x00);
  EXPECT_EQ(hw.board.MemoryByte(0x1001), 0x77);
  EXPECT_EQ(hw.board.MemoryByte(0x1100), 0x77);
  EXPECT_EQ(hw.board.MemoryByte(0x1101), 0x00);
}

TEST(MemoryWritePage, OfAnUnknownWidthMovesNothingAndSucceeds) {
  Hardware hw;
  ClearMemory(hw.board);
  std::vector<uint8_t> buffer(256, 0x77);
  EXPECT_TRUE(hw.rw.MemoryWritePage(0x1000, buffer.data(), 4));
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(true), Map(0x1000, 256, true), Unmap(0x1000, 256), Close()));
}

namespace {

struct MemoryCall {
  const char* name;
  bool writes;
  std::function<bool(TReadWrite&)> fails;  ///< makes the call at 0x1000; true when its result is the failure value
};

std::array<uint8_t, 256> memoryBuffer;

const MemoryCall kMemoryCalls[] = {
    {"ReadByte", false, [](TReadWrite& rw) { return rw.MemoryReadByte(0x1000) == 0xFF; }},
    {"ReadWord", false, [](TReadWrite& rw) { return rw.MemoryReadWord(0x1000) == 0xFFFF; }},
    {"ReadDword", false, [](TReadWrite& rw) { return rw.MemoryReadDword(0x1000) == 0xFFFFFFFF; }},
    {"ReadBlock", false, [](TReadWrite& rw) { return !rw.MemoryReadBlock(0x1000, memoryBuffer.data(), 9); }},
    {"ReadBlockOfWidth", false, [](TReadWrite& rw) { return !rw.MemoryReadBlock(0x1000, memoryBuffer.data(), 9, 1); }},
    {"ReadPage", false, [](TReadWrite& rw) { return !rw.MemoryReadPage(0x1000, memoryBuffer.data()); }},
    {"ReadPageOfWidth", false, [](TReadWrite& rw) { return !rw.MemoryReadPage(0x1000, memoryBuffer.data(), 2); }},
    {"WriteByte", true, [](TReadWrite& rw) { return !rw.MemoryWriteByte(0x1000, 1); }},
    {"WriteWord", true, [](TReadWrite& rw) { return !rw.MemoryWriteWord(0x1000, 1); }},
    {"WriteDword", true, [](TReadWrite& rw) { return !rw.MemoryWriteDword(0x1000, 1); }},
    {"WriteBlock", true, [](TReadWrite& rw) { return !rw.MemoryWriteBlock(0x1000, memoryBuffer.data(), 9); }},
    {"WriteBlockOfWidth", true, [](TReadWrite& rw) { return !rw.MemoryWriteBlock(0x1000, memoryBuffer.data(), 9, 1); }},
    {"WritePage", true, [](TReadWrite& rw) { return !rw.MemoryWritePage(0x1000, memoryBuffer.data()); }},
    {"WritePageOfWidth", true, [](TReadWrite& rw) { return !rw.MemoryWritePage(0x1000, memoryBuffer.data(), 2); }},
};

class MemoryFailure : public testing::TestWithParam<MemoryCall> {
 protected:
  MemoryFailure() {
    ClearMemory(hw.board);
    memoryBuffer.fill(0xEE);
  }
  /// Makes the call, which must fail; returns how often it printed that it is not privileged.
  int Fail() {
    bool fails = false;
    const int printed = RefusalsPrinted([&] { fails = GetParam().fails(hw.rw); });
    EXPECT_TRUE(fails);
    EXPECT_THAT(memoryBuffer, Each(0xEE));
    EXPECT_EQ(hw.board.OpenDescriptors(), 0);
    return printed;
  }

  Hardware hw;
};

}  // namespace

TEST_P(MemoryFailure, WithoutPrivilegePrintsOnceAndOpensNothing) {
  hw.rw.IoplFailed = 1;
  EXPECT_EQ(Fail(), 1);
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

TEST_P(MemoryFailure, ToOpenTheDeviceIsSilent) {
  hw.board.memDevice = false;
  EXPECT_EQ(Fail(), 0);
  EXPECT_THAT(hw.board.Log(), ElementsAre(OpenMemory(GetParam().writes)));
}

TEST_P(MemoryFailure, ToMapClosesTheFileSilently) {
  hw.board.mappingLimit = 0;
  EXPECT_EQ(Fail(), 0);
  const auto& log = hw.board.Log();
  ASSERT_EQ(log.size(), 3u);
  EXPECT_EQ(log[0], OpenMemory(GetParam().writes));
  EXPECT_EQ(log[1].kind, sim::Access::kMap);
  EXPECT_EQ(log[2], Close());
}

INSTANTIATE_TEST_SUITE_P(Every, MemoryFailure, testing::ValuesIn(kMemoryCalls),
                         [](const auto& test) { return std::string(test.param.name); });

// SPDX-License-Identifier: MIT
// The search for bytes in physical memory.
#include <string>
#include <vector>

#include "tests/unit/hw/Hardware.h"

using hwtest::Close;
using hwtest::Hardware;
using hwtest::Map;
using hwtest::Only;
using hwtest::OpenMemory;
using hwtest::RefusalsPrinted;
using hwtest::Unmap;
using sim::Access;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr uint64_t kBase = 0x10000;
constexpr uint64_t kNotFound = 0xFFFFFFFF;
constexpr bool kForward = false;
constexpr bool kBackward = true;

/// A machine with 64 KiB of zero bytes on both sides of 0x10000 and a search over them.
struct Searched : Hardware {
  Searched() { board.Memory(0, std::vector<uint8_t>(0x20000)); }

  Searched& Put(uint64_t address, const std::string& text) {
    board.Memory(address, text.data(), text.size());
    return *this;
  }

  uint64_t Find(uint64_t start, uint32_t length, uint32_t step, uint32_t occurrence, std::string pattern,
                bool backward = kForward) {
    return rw.MemoryFindData(start, length, step, occurrence, reinterpret_cast<unsigned char*>(pattern.data()),
                             static_cast<uint32_t>(pattern.size()), backward);
  }
};

}  // namespace

TEST(MemoryFindData, ReturnsThePhysicalAddressOfTheFirstMatch) {
  Searched m;
  m.Put(kBase + 5, "RSD PTR ");
  EXPECT_EQ(m.Find(kBase, 256, 1, 0, "RSD PTR "), kBase + 5);
}

TEST(MemoryFindData, ReturnsAddressesAbove4GiB) {
  Searched m;
  m.board.Memory(0x300000000, std::vector<uint8_t>(64));
  m.Put(0x300000010, "KEY");
  EXPECT_EQ(m.Find(0x300000000, 64, 16, 0, "KEY"), 0x300000010u);
}

TEST(MemoryFindData, GivesThirtyTwoBitsOfOnesWhenThereIsNone) {
  Searched m;
  EXPECT_EQ(m.Find(kBase, 256, 1, 0, "RSD PTR "), uint64_t{0xFFFFFFFF});
}

TEST(MemoryFindData, ReadsASpanWithTheByteFormOfTheBlockRead) {
  Searched m;
  m.Find(kBase + 3, 256, 1, 0, "KEY");
  EXPECT_THAT(m.board.Log(), ElementsAre(OpenMemory(false), Map(kBase, 259, false), Unmap(kBase, 259), Close()));
}

TEST(MemoryFindData, ReadsNothingWhenTheLengthIsBelowThePatterns) {
  Searched m;
  m.Put(kBase, "KEY");
  EXPECT_EQ(m.Find(kBase, 2, 1, 0, "KEY"), kNotFound);
  EXPECT_THAT(m.board.Log(), IsEmpty());
}

TEST(MemoryFindData, FindsAMatchThatFillsTheLength) {
  Searched m;
  m.Put(kBase, "KEY");
  EXPECT_EQ(m.Find(kBase, 3, 1, 0, "KEY"), kBase);
}

TEST(MemoryFindData, FindsTheLastPlaceInTheLengthButNoneBeyond) {
  Searched m;
  m.Put(kBase + 61, "KEY");
  EXPECT_EQ(m.Find(kBase, 64, 1, 0, "KEY"), kBase + 61);
  EXPECT_EQ(m.Find(kBase, 63, 1, 0, "KEY"), kNotFound);
}

TEST(MemoryFindData, ComparesOnlyAtMultiplesOfTheStep) {
  Searched m;
  m.Put(kBase + 8, "KEY").Put(kBase + 20, "KEY").Put(kBase + 32, "KEY");
  EXPECT_EQ(m.Find(kBase, 256, 16, 0, "KEY"), kBase + 32);
  EXPECT_EQ(m.Find(kBase, 256, 16, 1, "KEY"), kNotFound);
}

TEST(MemoryFindData, TakesTheStepFromTheStartAndNotFromAddressZero) {
  Searched m;
  m.Put(kBase + 19, "KEY");
  EXPECT_EQ(m.Find(kBase + 3, 256, 16, 0, "KEY"), kBase + 19);
}

TEST(MemoryFindData, TakesAStepOfZeroAsOne) {
  Searched m;
  m.Put(kBase + 7, "KEY");
  EXPECT_EQ(m.Find(kBase, 64, 0, 0, "KEY"), kBase + 7);
}

TEST(MemoryFindData, SelectsTheMatchByOccurrence) {
  Searched m;
  m.Put(kBase + 10, "KEY").Put(kBase + 50, "KEY").Put(kBase + 90, "KEY");
  EXPECT_EQ(m.Find(kBase, 128, 1, 0, "KEY"), kBase + 10);
  EXPECT_EQ(m.Find(kBase, 128, 1, 1, "KEY"), kBase + 50);
  EXPECT_EQ(m.Find(kBase, 128, 1, 2, "KEY"), kBase + 90);
  EXPECT_EQ(m.Find(kBase, 128, 1, 3, "KEY"), kNotFound);
}

TEST(MemoryFindData, CountsOverlappingMatches) {
  Searched m;
  m.Put(kBase, "AAA");
  EXPECT_EQ(m.Find(kBase, 64, 1, 1, "AA"), kBase + 1);
}

TEST(MemoryFindData, FindsAPatternAcrossASpanBorder) {
  Searched m;
  m.Put(kBase + 4094, "KEYS");
  EXPECT_EQ(m.Find(kBase, 8192, 1, 0, "KEYS"), kBase + 4094);
}

TEST(MemoryFindData, StartsTheNextSpanWhereTheScanStopped) {
  Searched m;
  m.Find(kBase, 8192, 1, 0, "KEYS");
  // Of 4096 bytes, 4093 places are compared; then again; the rest are 8192 - 2 * 4093 = 6 bytes.
  EXPECT_THAT(Only(Access::kMap, m.board.Log()),
              ElementsAre(Map(kBase, 4096, false), Map(kBase, 4093 + 4096, false), Map(kBase + 4096, 4090 + 6, false)));
}

TEST(MemoryFindData, WithAStepThatDividesTheSpanNeedsNoOverlap) {
  Searched m;
  m.Put(kBase + 4080, "RSD PTR ").Put(kBase + 4096, "RSD PTR ");
  EXPECT_EQ(m.Find(kBase, 8192, 16, 1, "RSD PTR "), kBase + 4096);
  EXPECT_THAT(Only(Access::kMap, m.board.Log()), ElementsAre(Map(kBase, 4096, false), Map(kBase + 4096, 4096, false)));
}

TEST(MemoryFindData, FindsALongPatternAcrossASpanBorderAtAStep) {
  Searched m;
  m.Put(kBase + 4080, "a pattern of 25 bytes....");
  EXPECT_EQ(m.Find(kBase, 8192, 16, 0, "a pattern of 25 bytes...."), kBase + 4080);
}

TEST(MemoryFindData, GoesOnPastASpanThatCannotBeRead) {
  Searched m;
  m.Put(kBase + 5000, "KEY");
  int maps = 0;
  m.board.fault = [&](Access::Kind kind, uint64_t) { return kind == Access::kMap && maps++ == 0; };
  EXPECT_EQ(m.Find(kBase, 8192, 1, 0, "KEY"), kBase + 5000);
}

TEST(MemoryFindData, FindsNoZeroBytesInMemoryThatCannotBeRead) {
  Searched m;
  m.board.memDevice = false;
  EXPECT_EQ(m.Find(kBase, 64, 1, 0, std::string(4, '\0')), kNotFound);
  EXPECT_EQ(m.Find(kBase, 64, 1, 0, std::string(4, '\xFF')), kNotFound);
}

TEST(MemoryFindData, MatchesAnEmptyPatternAtOnce) {
  Searched m;
  EXPECT_EQ(m.Find(kBase, 64, 1, 0, ""), kBase);
  EXPECT_EQ(m.Find(kBase, 0, 1, 0, ""), kBase);
  EXPECT_EQ(m.Find(kBase, 64, 1, 3, ""), kBase + 3);
}

TEST(MemoryFindData, FindsAPatternOfAWholeSpan) {
  Searched m;
  std::string pattern(4096, 'x');
  m.Put(kBase + 1, pattern);
  EXPECT_EQ(m.Find(kBase, 8192, 1, 0, pattern), kBase + 1);
}

TEST(MemoryFindData, FindsNothingLongerThanASpan) {
  Searched m;
  std::string pattern(4097, 'x');
  m.Put(kBase, pattern);
  EXPECT_EQ(m.Find(kBase, 8192, 1, 0, pattern), kNotFound);
}

TEST(MemoryFindData, GoesOnPastTheLengthWhenAStepOvershootsIt) {
  Searched m;
  m.Put(kBase + 128, "KEY");
  // 100 - 64 - 64 wraps in 32 bits, so the places 0 and 64 are followed by 128.
  EXPECT_EQ(m.Find(kBase, 100, 64, 0, "KEY"), kBase + 128);
  EXPECT_THAT(Only(Access::kMap, m.board.Log()), ElementsAre(Map(kBase, 100, false), Map(kBase, 128 + 4096, false)));
}

TEST(MemoryFindData, EndsAtTheLengthWhenTheStepsMeetIt) {
  Searched m;
  m.Put(kBase + 96, "KEY");
  EXPECT_EQ(m.Find(kBase, 96, 32, 0, "KEY"), kNotFound);
  EXPECT_THAT(Only(Access::kMap, m.board.Log()), ElementsAre(Map(kBase, 96, false)));
}

TEST(MemoryFindData, EndsThoughEveryStepOvershoots) {
  Searched m;
  EXPECT_EQ(m.Find(kBase, 100, 0x40000000, 0, "KEY"), kNotFound);
  EXPECT_EQ(m.Find(kBase, 100, 0xFFFFFFFF, 0, "KEY"), kNotFound);
  EXPECT_EQ(m.Find(kBase, 0xFFFFFFFF, 0xFFFFFFFF, 0, "KEY"), kNotFound);
  EXPECT_EQ(m.Find(kBase, 100, 0x80000000, 0, "KEY", kBackward), kNotFound);
}

TEST(MemoryFindData, BackwardBeginsWithTheSpanThatEndsAtTheStart) {
  Searched m;
  m.Put(kBase - 3, "KEY").Put(kBase, "KEY");
  EXPECT_EQ(m.Find(kBase, 64, 1, 0, "KEY", kBackward), kBase - 3);
  EXPECT_EQ(m.Find(kBase, 64, 1, 1, "KEY", kBackward), kNotFound);
  EXPECT_EQ(Only(Access::kMap, m.board.Log())[0], Map(kBase - 4096, 4096 - 64 + 64, false));
}

TEST(MemoryFindData, BackwardComparesUpwardsInsideASpan) {
  Searched m;
  m.Put(kBase - 60, "KEY").Put(kBase - 20, "KEY");
  EXPECT_EQ(m.Find(kBase, 64, 1, 0, "KEY", kBackward), kBase - 60);
  EXPECT_EQ(m.Find(kBase, 64, 1, 1, "KEY", kBackward), kBase - 20);
}

TEST(MemoryFindData, BackwardTakesTheHigherSpanFirst) {
  Searched m;
  m.Put(kBase - 8192, "RSD PTR ").Put(kBase - 16, "RSD PTR ");
  EXPECT_EQ(m.Find(kBase, 8192, 16, 0, "RSD PTR ", kBackward), kBase - 16);
  EXPECT_EQ(m.Find(kBase, 8192, 16, 1, "RSD PTR ", kBackward), kBase - 8192);
}

TEST(MemoryFindData, BackwardMovesDownByTheSpanFromWhereTheScanStopped) {
  Searched m;
  EXPECT_EQ(m.Find(0x12000, 8192, 1, 0, "KEYS", kBackward), kNotFound);
  // Span 0x11000 stops at 0x11FFD, a span lower is 0x10FFD: the next span is 0xFFFD..0x10FFC. It stops at 0x10FFA with
  // 6 bytes remaining: the last span is 0xFFF4..0xFFF9.
  EXPECT_THAT(Only(Access::kMap, m.board.Log()),
              ElementsAre(Map(0x11000, 4096, false), Map(0xF000, 0xFFD + 4096, false), Map(0xF000, 0xFF4 + 6, false)));
}

TEST(MemoryFindData, BackwardPassesOverAPatternAcrossSpans) {
  // The spans are 0x11000..0x11FFF and 0xFFFD..0x10FFC.
  for (uint64_t address = 0x10FFA; address < 0x11000; ++address) {
    Searched m;
    m.Put(address, "KEYS");
    EXPECT_EQ(m.Find(0x12000, 8192, 1, 0, "KEYS", kBackward), kNotFound) << address;
  }
  for (const uint64_t address : {uint64_t{0x10FF9}, uint64_t{0x11000}}) {
    Searched m;
    m.Put(address, "KEYS");
    EXPECT_EQ(m.Find(0x12000, 8192, 1, 0, "KEYS", kBackward), address);
  }
}

TEST(MemoryFindData, BackwardBelowAddressZeroFindsNothing) {
  Searched m;
  m.Put(0, "KEY");
  EXPECT_EQ(m.Find(0x10, 0x100, 1, 0, "KEY", kBackward), kNotFound);
}

TEST(MemoryFindData, WithoutPrivilegePrintsOnceBeforeAnythingElse) {
  Searched m;
  m.rw.IoplFailed = 1;
  uint64_t found = 0;
  EXPECT_EQ(RefusalsPrinted([&] { found = m.Find(kBase, 8192, 1, 0, "KEY"); }), 1);
  EXPECT_EQ(found, kNotFound);
  EXPECT_EQ(RefusalsPrinted([&] { found = m.Find(kBase, 2, 1, 0, "KEY"); }), 1);
  EXPECT_EQ(found, kNotFound);
  EXPECT_THAT(m.board.Log(), IsEmpty());
}

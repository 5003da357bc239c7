// SPDX-License-Identifier: MIT
// What the records of a table say of a feature, on bytes worked out by hand.
#include "board/Features.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>

namespace vynctl {
namespace {

constexpr uint8_t kComType = 1, kWifi = 16;

/// A table of records without commands: 27 bytes each, of which type, index and value count here.
std::vector<uint8_t> Iadt(const std::vector<std::array<uint8_t, 3>>& records) {
  std::vector<uint8_t> table(36 + 27 * records.size());
  table[4] = static_cast<uint8_t>(table.size());
  table[5] = static_cast<uint8_t>(table.size() >> 8);
  for (size_t i = 0; i < records.size(); ++i) {
    uint8_t* record = table.data() + 36 + 27 * i;
    std::copy(records[i].begin(), records[i].end(), record);
    record[3] = 27;
  }
  return table;
}

const Feature& Wifi() { return *FindFeature("wifi"); }
const Feature& ComType() { return *FindFeature("com-type"); }

const std::vector<uint8_t> kTable =
    Iadt({{kWifi, 0, 1}, {kComType, 4, 2}, {kComType, 1, 0}, {kWifi, 9, 0}, {kWifi, 0, 1}, {kComType, 1, 2}});

TEST(FindAllowed, TakesTheValuesOfAllEntriesOnce) {
  const auto allowed = FindAllowed(kTable, Wifi());
  ASSERT_EQ(1u, allowed.size());
  EXPECT_EQ(0, allowed[0].index);
  EXPECT_EQ((std::vector<uint8_t>{0, 1}), allowed[0].values);
}

TEST(FindAllowed, KeepsInstancesApart) {
  const auto allowed = FindAllowed(kTable, ComType());
  ASSERT_EQ(2u, allowed.size());
  EXPECT_EQ(1, allowed[0].index);
  EXPECT_EQ((std::vector<uint8_t>{0, 2}), allowed[0].values);
  EXPECT_EQ(4, allowed[1].index);
  EXPECT_EQ((std::vector<uint8_t>{2}), allowed[1].values);
}

TEST(FindAllowed, FindsNothingInATableThatIsMissingOrShort) {
  for (const size_t bytes : {size_t{0}, size_t{1}, size_t{35}, size_t{36}, size_t{40}, size_t{62}})
    EXPECT_TRUE(FindAllowed(std::span(kTable).first(bytes), Wifi()).empty()) << bytes;
}

TEST(FindAllowed, EndsWithTheLengthOfTheTable) {
  std::vector<uint8_t> table = kTable;
  table[4] = 36 + 27;
  EXPECT_EQ((std::vector<uint8_t>{1}), AllowedAt(FindAllowed(table, Wifi()), 0));
}

TEST(Features, HaveATypeOfTheirOwn) {
  std::set<uint8_t> types;
  for (const Feature& feature : Features()) types.insert(feature.recordType);
  EXPECT_EQ(Features().size(), types.size());
}

TEST(NumberWords, JoinsRunsOfThreeAndMore) {
  EXPECT_EQ("", NumberWords({}, "or"));
  EXPECT_EQ("3", NumberWords({3}, "or"));
  EXPECT_EQ("0 or 1", NumberWords({0, 1}, "or"));
  EXPECT_EQ("0 to 2", NumberWords({0, 1, 2}, "or"));
  EXPECT_EQ("0, 2, 4 to 7 and 255", NumberWords({0, 2, 4, 5, 6, 7, 255}, "and"));
}

TEST(WrongValue, NamesWhatTheFirmwareHas) {
  const auto wifi = FindAllowed(kTable, Wifi());
  EXPECT_EQ("", WrongValue(wifi, Wifi(), 0, 1));
  EXPECT_EQ("wifi takes 0 or 1, not 7", WrongValue(wifi, Wifi(), 0, 7));
  const auto com = FindAllowed(kTable, ComType());
  EXPECT_EQ("", WrongValue(com, ComType(), 4, 2));
  EXPECT_EQ("com-type 4 takes 2, not 0", WrongValue(com, ComType(), 4, 0));
  EXPECT_EQ("com-type has the instances 1 and 4, not 0", WrongValue(com, ComType(), 0, 0));
}

TEST(WrongValue, SaysNothingWhereTheTableIsUnknown) { EXPECT_EQ("", WrongValue({}, Wifi(), 0, 7)); }

}  // namespace
}  // namespace vynctl

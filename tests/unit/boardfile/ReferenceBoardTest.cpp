// SPDX-License-Identifier: MIT
// What the reference board holds, so that other tests may count on it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include <map>
#include <set>

#include "boardfile/BoardFile.h"
#include "layout/LittleEndian.h"
#include "layout/RecordLayout.h"

using namespace layout;

namespace {

class ReferenceBoard : public testing::Test {
 protected:
  ReferenceBoard() {
    for (size_t at = 36; at < iadt.size(); at += layout::Load(iadt, at + 3, 4)) {
      const uint8_t type = iadt[at], value = iadt[at + 2];
      values[type].insert(value);
      indices[type].insert(iadt[at + 1]);
    }
  }
  boardfile::LoadedBoard loaded = boardfile::LoadBoard(REFERENCE_BOARD);
  const firmware::Bytes& iadt = loaded.firmware.iadt;
  std::map<uint8_t, std::set<uint8_t>> values, indices;
};

TEST_F(ReferenceBoard, Loads) {
  EXPECT_EQ(loaded.error, "");
  ASSERT_TRUE(loaded.board);
  EXPECT_FALSE(loaded.board->live);
}

TEST_F(ReferenceBoard, IsTheTableThatItHasBeen) {
  // FNV-1a over the bytes of the table that stood here record by record.
  uint64_t hash = 0xcbf29ce484222325;
  for (const uint8_t byte : iadt) hash = (hash ^ byte) * 0x100000001b3;
  EXPECT_EQ(iadt.size(), 16632u);
  EXPECT_EQ(hash, 0xa7225f6d1a693373);
}

TEST_F(ReferenceBoard, IsReadInMinutes) {
  std::ifstream file(REFERENCE_BOARD);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  EXPECT_LT(std::ranges::count(text, '\n'), 500);
}

TEST_F(ReferenceBoard, HasSeveralStatesOfEveryFeatureThatAFunctionReads) {
  constexpr uint8_t kWithoutReader[] = {9, 11, 12, 18};
  for (const RecordType& type : layout::kRecordTypes) {
    if (type.IsSensor() || std::ranges::count(kWithoutReader, type.type) != 0) continue;
    EXPECT_GE(values[type.type].size(), 2u) << type.name;
  }
}

TEST_F(ReferenceBoard, HasSeveralInstancesOfEveryIndexedFeature) {
  for (const char* name :
       {"ComType", "DigitalIOState", "DioConfig", "UserLEDColor", "COMPowerState", "DbgLedColor", "MBVersionState"})
    EXPECT_GE(indices[FindFeature(name)->type].size(), 2u) << name;
}

TEST_F(ReferenceBoard, HasSensorsOfEveryRecordType) {
  EXPECT_THAT(values[2], testing::ElementsAre(1, 2, 3));
  EXPECT_THAT(values[3], testing::ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(values[4], testing::ElementsAre(1, 2, 3));
  EXPECT_THAT(values[31], testing::ElementsAre(1));
}

TEST_F(ReferenceBoard, HasEveryWatchdogOperationAndThreeFanModes) {
  EXPECT_THAT(values[25], testing::ElementsAre(1, 2, 3, 4, 5, 6, 7, 240));
  EXPECT_THAT(values[26], testing::ElementsAre(0, 1, 2, 240));
}

TEST_F(ReferenceBoard, HasTheControllerAndItsBridge) {
  ASSERT_NE(loaded.board->FindPci(0, 0x1F, 3), nullptr);
  EXPECT_EQ(loaded.board->FindPci(0, 0x1F, 3)->Get(0, 4), 0x29308086u);
  EXPECT_EQ(loaded.board->FindPci(0, 0x1F, 0)->Get(0, 4), 0x29188086u);
}

}  // namespace

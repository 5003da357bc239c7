// SPDX-License-Identifier: MIT
// The rows of the record types: what must hold of each, and that every list is somebody's.
#include "layout/RecordLayout.h"

#include <gtest/gtest.h>

#include <set>

using namespace layout;

namespace {

TEST(RecordTypes, FillEveryListOnceAndFollowTheTypeCodes) {
  std::set<int> lists;
  int type = 1;
  for (const RecordType& row : kRecordTypes) {
    EXPECT_TRUE(lists.insert(row.list).second) << row.name;
    EXPECT_GE(row.type, type) << row.name;
    EXPECT_LE(row.type, type + 1) << row.name;
    type = row.type;
  }
  EXPECT_EQ(type, 35);
  EXPECT_EQ(lists.size(), 42u);
  EXPECT_EQ(*lists.begin(), 1);
  EXPECT_EQ(*lists.rbegin(), 42);
}

TEST(RecordTypes, HaveOneNameEachButTheKindsOfASensor) {
  std::set<std::pair<std::string_view, int>> names;
  for (const RecordType& row : kRecordTypes) EXPECT_TRUE(names.insert({row.name, row.subType}).second) << row.name;
}

TEST(SensorRecords, HoldTheirPlacesAndParametersApartInWhatIsKept) {
  for (const RecordType& row : kRecordTypes) {
    SCOPED_TRACE(std::string(row.name) + "." + std::to_string(row.subType));
    EXPECT_EQ(row.IsSensor(), !row.places.empty());
    EXPECT_EQ(row.IsSensor(), row.keptBytes != 0);
    EXPECT_EQ(row.IsSensor(), row.subType != kAnySubType);
    EXPECT_LE(row.keptBytes, row.bytes);
    std::set<int> taken;
    const auto take = [&](int offset, int bytes) {
      EXPECT_GE(offset, 27);
      EXPECT_LE(offset + bytes, row.keptBytes);
      for (int i = 0; i < bytes; ++i) EXPECT_TRUE(taken.insert(offset + i).second) << offset + i;
    };
    for (const RecordParameter& parameter : row.parameters) take(parameter.offset, parameter.bytes);
    for (const CommandPlace& place : row.places) take(place.offset, place.bytes);
  }
}

TEST(SensorRecords, KeepWhatTheirListHolds) {
  struct Case {
    const char* quantity;
    uint8_t subType, list, keptBytes;
  };
  for (const Case& each : {Case{"voltage", 1, 2, 101}, Case{"voltage", 2, 3, 65}, Case{"voltage", 3, 4, 51},
                           Case{"temperature", 1, 5, 175}, Case{"temperature", 2, 6, 63},
                           Case{"temperature", 3, 7, 111}, Case{"temperature", 4, 8, 69}, Case{"fan", 1, 9, 171},
                           Case{"fan", 2, 10, 103}, Case{"fan", 3, 11, 73}, Case{"current", 1, 12, 48}}) {
    const RecordType* row = FindSensor(each.quantity, each.subType);
    ASSERT_NE(row, nullptr) << each.quantity;
    EXPECT_EQ(row->list, each.list);
    EXPECT_EQ(row->keptBytes, each.keptBytes);
  }
  EXPECT_EQ(FindSensor("current", 1)->bytes, 56);
  EXPECT_EQ(FindSensor("current", 2), nullptr);
  EXPECT_EQ(FindSensor("LVDSState", kAnySubType), nullptr);
}

TEST(FindRecordType, TellsByTypeAndOfSensorsBySubType) {
  EXPECT_EQ(FindRecordType(5, 77)->list, 13);
  EXPECT_EQ(FindRecordType(27, 0)->name, "Backlight");
  EXPECT_EQ(FindRecordType(3, 4)->list, 8);
  EXPECT_EQ(FindRecordType(3, 5), nullptr);
  EXPECT_EQ(FindRecordType(31, 2), nullptr);
  EXPECT_EQ(FindRecordType(0, 1), nullptr);
  EXPECT_EQ(FindRecordType(36, 1), nullptr);
  EXPECT_EQ(FindRecordType(255, 255), nullptr);
}

TEST(FindFeature, KnowsOrdinaryRecordsByName) {
  EXPECT_EQ(FindFeature("Watchdog")->type, 25);
  EXPECT_EQ(FindFeature("FanConfig")->list, 37);
  EXPECT_EQ(FindFeature("voltage"), nullptr);
  EXPECT_EQ(FindFeature(""), nullptr);
}

TEST(Parameters, LieWhereTheFormulasTakeThem) {
  EXPECT_EQ(FindSensor("voltage", 2)->Parameter("r2")->offset, 28);
  EXPECT_EQ(FindSensor("voltage", 3)->Parameter("r2")->offset, 29);
  EXPECT_EQ(FindSensor("temperature", 1)->Parameter("fraction_divisor")->offset, 101);
  EXPECT_EQ(FindSensor("temperature", 3)->Parameter("subtrahend_width")->offset, 70);
  EXPECT_EQ(FindSensor("voltage", 1)->Parameter("step"), nullptr);
}

}  // namespace

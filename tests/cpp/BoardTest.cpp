// SPDX-License-Identifier: MIT
// vynlib/vynlib.hpp over the simulated library: what a board offers, read and set through its objects.
#include <thread>

#include "Reference.h"

using testing::ElementsAre;
using testing::SizeIs;
using vynlib::Board;
using vynlib::FanSetting;
using vynlib::Feature;
using vynlib::Quantity;
using vynlib::Result;
using vynlib::Sensor;

// ---- life ----

TEST(Open, RefusesASecondBoard) {
  const Result<Board> first = OpenReference(), second = OpenReference();
  ASSERT_TRUE(first);
  ASSERT_FALSE(second);
  EXPECT_EQ(second.error().code, 0u);
  EXPECT_EQ(second.error().words, "this program has a board open already");
  // The refused one has not ended the library.
  EXPECT_TRUE(first->voltage("+12V").Read());
}

TEST(Open, WorksAgainAfterTheEnd) {
  { ASSERT_TRUE(OpenReference()); }
  EXPECT_TRUE(OpenReference());
}

TEST(Open, SaysWhyTheLibraryDoesNotStart) {
  // In a program of its own, because the simulated library loads its board once.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        unsetenv("VYNLIB_BOARD");
        const Result<Board> board = Board::Open(Alone());
        const bool refused = !board && board.error().code == VYNLIB_ERROR_NOT_INITIALISED;
        exit(refused && board.error().words == vynlib_error_text(VYNLIB_ERROR_NOT_INITIALISED) ? 0 : 1);
      },
      testing::ExitedWithCode(0), "names no board file");
}

TEST(Close, LeavesErrorsInstead) {
  Result<Board> board = OpenReference();
  const Sensor sensor = board->voltage("+12V");
  const Feature feature = board->feature("wifi");
  board->Close();
  EXPECT_EQ(sensor.Read().error().code, unsigned{VYNLIB_ERROR_NOT_INITIALISED});
  EXPECT_EQ(feature.Set(1).error().code, unsigned{VYNLIB_ERROR_NOT_INITIALISED});
  EXPECT_FALSE(feature.Offered());
  EXPECT_EQ(board->watchdog().Feed(10).error().code, unsigned{VYNLIB_ERROR_NOT_INITIALISED});
}

TEST(Close, IsNotUndoneByTheNextBoard) {
  Result<Board> first = OpenReference();
  const Sensor sensor = first->voltage("+12V");
  first->Close();
  const Result<Board> second = OpenReference();
  ASSERT_TRUE(second);
  EXPECT_FALSE(sensor.Read());
  first->Close();
  EXPECT_TRUE(second->voltage("+12V").Read());
}

TEST(Move, TakesTheBoardAlong) {
  Board first = OpenReference().value();
  const Sensor sensor = first.voltage("+12V");
  {
    const Board second = std::move(first);
    EXPECT_TRUE(sensor.Read());
  }
  EXPECT_FALSE(sensor.Read());
}

// ---- sensors ----

TEST_F(ReferenceBoard, ListsItsSensorsInFirmwareOrder) {
  EXPECT_THAT(NamesOf(board.voltages()), ElementsAre("+12V", "+5V", "Vcore", "+3.3V", "VBAT", "+5VSB"));
  EXPECT_THAT(NamesOf(board.temperatures()), ElementsAre("System", "Super I/O", "CPU", "Memory"));
  EXPECT_THAT(NamesOf(board.fanSpeeds()), ElementsAre("System Fan", "CPU Fan", "Chassis Fan"));
  EXPECT_THAT(NamesOf(board.currents()), ElementsAre("+12V", "CPU"));
}

TEST_F(ReferenceBoard, ReadsEachQuantity) {
  EXPECT_NEAR(*board.voltage("+12V").Read(), 11.9856, 1e-4);  // 227 counts of 8 mV, times (56 + 10) / 10
  EXPECT_NEAR(*board.temperature("Memory").Read(), 37.0, 1e-4);
  EXPECT_EQ(*board.fanSpeed("Chassis Fan").Read(), 1500);
  EXPECT_NEAR(*board.current("CPU").Read(), 8.7, 1e-4);
}

TEST_F(ReferenceBoard, KnowsTheUnits) {
  EXPECT_STREQ(board.voltages().front().unit(), "V");
  EXPECT_STREQ(board.temperatures().front().unit(), "C");
  EXPECT_STREQ(board.fanSpeeds().front().unit(), "rpm");
  EXPECT_STREQ(board.currents().front().unit(), "A");
  EXPECT_EQ(board.currents().front().quantity(), Quantity::kCurrent);
}

TEST_F(ReferenceBoard, ReadsEverySensorThatItLists) {
  for (const auto& sensors : {board.voltages(), board.temperatures(), board.fanSpeeds(), board.currents()})
    for (const Sensor& sensor : sensors) EXPECT_TRUE(sensor.Read()) << sensor.name();
}

TEST_F(ReferenceBoard, HasNoSensorOfAnotherName) {
  const Result<double> reading = board.voltage("+13V").Read();
  ASSERT_FALSE(reading);
  EXPECT_EQ(reading.error().code, 0x305u);
  EXPECT_EQ(reading.error().words, "voltage: the board has no sensor of that name");
}

// ---- features ----

TEST_F(ReferenceBoard, OffersEveryFeature) { EXPECT_THAT(board.features(), SizeIs(25)); }

TEST_F(ReferenceBoard, ReadsEveryInstanceOfEveryFeature) {
  for (const Feature& feature : board.features()) {
    if (!feature.readable()) continue;
    for (const uint8_t instance : *feature.Instances())
      EXPECT_TRUE(feature.Get(instance)) << feature.name() << ' ' << unsigned{instance};
  }
}

TEST_F(ReferenceBoard, SetsAFeature) {
  const Feature wifi = board.feature("wifi");
  EXPECT_EQ(wifi.title(), "Wi-Fi");
  ASSERT_TRUE(wifi.Set(0));
  EXPECT_EQ(*wifi.Get(), 0u);
  ASSERT_TRUE(wifi.Set(1));
  EXPECT_EQ(*wifi.Get(), 1u);
}

TEST_F(ReferenceBoard, SetsOneInstanceOfAFeature) {
  const Feature type = board.feature("com-type");
  EXPECT_THAT(*type.Instances(), ElementsAre(1, 2, 3, 4));
  ASSERT_TRUE(type.Set(1, 3));
  ASSERT_TRUE(type.Set(2, 4));
  EXPECT_EQ(*type.Get(3), 1u);
  EXPECT_EQ(*type.Get(4), 2u);
}

TEST_F(ReferenceBoard, HasInstanceZeroOfAFeatureWithoutInstances) {
  EXPECT_FALSE(board.feature("wifi").indexed());
  EXPECT_THAT(*board.feature("wifi").Instances(), ElementsAre(0));
}

TEST_F(ReferenceBoard, ReadsAVersionOfTwoBytes) {
  // Straps of 0b101: the entries of index 0 and 2 with value 1 match, that of index 1 with value 0.
  EXPECT_EQ(*board.feature("board-version").Get(), 0x0305u);
}

TEST_F(ReferenceBoard, RefusesWhatAFeatureDoesNotHave) {
  EXPECT_EQ(board.feature("wifi").Set(7).error().code, 0xE04u);
  EXPECT_EQ(board.feature("com-type").Get(9).error().code, 0x204u);
  EXPECT_EQ(board.feature("backlight").Get().error().words, "backlight cannot be read");
  EXPECT_EQ(board.feature("at-mode").Set(1).error().words, "at-mode cannot be set");
}

TEST_F(ReferenceBoard, KnowsNoFeatureOfAnotherName) {
  const Feature unknown = board.feature("wi-fi");
  EXPECT_FALSE(unknown.Offered());
  EXPECT_FALSE(unknown.readable());
  EXPECT_EQ(unknown.title(), "wi-fi");
  EXPECT_EQ(unknown.Get().error().words, "no feature is called 'wi-fi'");
  EXPECT_EQ(unknown.Set(1).error().words, "no feature is called 'wi-fi'");
}

// ---- fans and watchdog ----

TEST_F(ReferenceBoard, ListsFansButNoIdentifyingEntries) {
  EXPECT_THAT(NamesOf(board.fans()), ElementsAre("CPU Fan", "System Fan"));
  EXPECT_THAT(*board.fan("CPU Fan").Modes(), ElementsAre(0, 1, 2));
}

TEST_F(ReferenceBoard, SetsAFan) {
  const vynlib::Fan fan = board.fan("CPU Fan");
  ASSERT_TRUE(fan.Set({1, {0xC0}}));
  Result<FanSetting> setting = fan.Read();
  ASSERT_TRUE(setting);
  EXPECT_EQ(setting->mode, 1);
  EXPECT_THAT(setting->parameters, ElementsAre(0xC0));
  ASSERT_TRUE(fan.Set({0, {}}));
  EXPECT_THAT(fan.Read()->parameters, SizeIs(0));
  ASSERT_TRUE(fan.Set({2, {40, 80}}));
  setting = fan.Read();
  EXPECT_EQ(setting->mode, 2);
  EXPECT_THAT(setting->parameters, ElementsAre(40, 80));
}

TEST_F(ReferenceBoard, RefusesWhatAFanDoesNotHave) {
  EXPECT_EQ(board.fan("CPU Fan").Set({1, {1, 2}}).error().code, 0x1805u);
  EXPECT_EQ(board.fan("CPU Fan").Set({1, std::vector<uint8_t>(300)}).error().code, 0x1805u);
  EXPECT_EQ(board.fan("No Fan").Read().error().code, 0x1806u);
}

TEST_F(ReferenceBoard, StartsFeedsAndStopsTheWatchdog) {
  const vynlib::Watchdog watchdog = board.watchdog();
  EXPECT_TRUE(watchdog.Offered());
  ASSERT_TRUE(watchdog.Start(30, 1));
  EXPECT_EQ(*watchdog.Interval(), 30u);
  EXPECT_EQ(*watchdog.Mode(), 1);
  ASSERT_TRUE(watchdog.Feed(60));
  EXPECT_EQ(*watchdog.Interval(), 60u);
  ASSERT_TRUE(watchdog.Stop());
  EXPECT_EQ(*watchdog.Interval(), 0u);
}

TEST_F(ReferenceBoard, HasBothTables) { EXPECT_TRUE(board.tablesFound()); }

// ---- threads ----

TEST_F(ReferenceBoard, GivesEachThreadItsOwnAnswerAndItsOwnError) {
  std::vector<std::thread> threads;
  std::array<int, 4> wrong{};
  for (size_t i = 0; i < wrong.size(); ++i)
    threads.emplace_back([&, i] {
      const Sensor good = board.fanSpeed("Chassis Fan"), bad = i % 2 == 0 ? board.voltage("x") : board.current("x");
      const uint64_t code = i % 2 == 0 ? 0x305 : 0x1A05;
      for (int round = 0; round < 300; ++round)
        if (good.Read().value_or(0) != 1500 || bad.Read().error().code != code) ++wrong[i];
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(wrong, testing::Each(0));
}

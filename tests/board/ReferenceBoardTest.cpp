// SPDX-License-Identifier: MIT
// The reference board through the simulated library: every function that the header declares has something to do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/Printed.h"
#include "tests/unit/api/FeatureCases.h"

using apitest::Call;
using apitest::FeatureCase;
using apitest::kFeatureCases;

namespace {

class ReferenceBoard : public testing::Test {
 protected:
  ReferenceBoard() {
    setenv("VYNLIB_BOARD", REFERENCE_BOARD, 1);
    EXPECT_THAT(support::Printed([] { EXPECT_EQ(VynLibDllInit(), 1); }), testing::StartsWith("ModelName::"));
  }
  ~ReferenceBoard() override { VynLibDllUnInit(); }

  static std::vector<std::string> Names(int (*names)(char**, uint8_t*, uint8_t)) {
    uint8_t count = 0;
    EXPECT_EQ(names(nullptr, &count, 2), 1);
    std::vector<std::string> texts(count, std::string(VYNLIB_NAME_BYTES, '\0'));
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    EXPECT_EQ(names(pointers.data(), &count, 2), 1);
    for (std::string& text : texts) text.resize(text.find('\0'));
    return texts;
  }
};

}  // namespace

TEST_F(ReferenceBoard, OffersEveryFeature) {
  for (const FeatureCase& feature : kFeatureCases) {
    Call call{.selector = 0};
    EXPECT_EQ(feature.function.call(call), 1) << feature.name;
    EXPECT_EQ(VynLibDllGetLastError(), 0u) << feature.name;
  }
}

TEST_F(ReferenceBoard, TellsTheStateOfEveryFeature) {
  for (const FeatureCase& feature : kFeatureCases) {
    if (!feature.function.reads) continue;
    Call call;
    EXPECT_EQ(feature.function.call(call), 1) << feature.name;
    EXPECT_EQ(VynLibDllGetLastError(), 0u) << feature.name;
  }
}

TEST_F(ReferenceBoard, ReadsEverySensor) {
  float number = 0;
  uint16_t rpm = 0;
  for (const std::string& name : Names(VynLibGetVoltageNames))
    EXPECT_EQ(VynLibGetVoltage(name.c_str(), &number, 2), 1) << name;
  for (const std::string& name : Names(VynLibGetTemperatureNames))
    EXPECT_EQ(VynLibGetTemperature(name.c_str(), &number, 2), 1) << name;
  for (const std::string& name : Names(VynLibGetFanSpeedNames))
    EXPECT_EQ(VynLibGetFanSpeed(name.c_str(), &rpm, 2), 1) << name;
  for (const std::string& name : Names(VynLibGetCurrentNames))
    EXPECT_EQ(VynLibGetCurrent(name.c_str(), &number, 2), 1) << name;
}

TEST_F(ReferenceBoard, EnablesAndDisablesTheWatchdog) {
  uint32_t interval = 0;
  EXPECT_EQ(VynLibWDTEnable(30, 0, 2), 1);
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
  EXPECT_EQ(VynLibWDTGetInterval(&interval, 2), 1);
  EXPECT_EQ(interval, 30u);
  EXPECT_EQ(VynLibWDTDisable(2), 1);
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
}

TEST_F(ReferenceBoard, ReadsAndWritesBackTheSettingsOfEveryFan) {
  const std::vector<std::string> fans = Names(VynLibGetFanConfigNames);
  EXPECT_THAT(fans, testing::SizeIs(testing::Ge(2)));
  for (const std::string& fan : fans) {
    uint8_t modes = 0;
    VynLibGetFANModeSupport(fan.c_str(), &modes);
    if (modes == 0) continue;  // the identifying entry
    uint8_t block[255] = {}, count = 255;
    ASSERT_EQ(VynLibGetFANConfig(fan.c_str(), block, &count, 2), 1) << fan;
    ASSERT_EQ(VynLibGetFANConfig(fan.c_str(), block, &count, 2), 1) << fan;
    EXPECT_EQ(VynLibSetFANConfig(fan.c_str(), block, count, 2), 1) << fan;
  }
}

// SPDX-License-Identifier: MIT
// The list of controller records and the texts in them.
#include "smbus/TSMBusConfig.h"

#include <gmock/gmock.h>

namespace {

class TSMBusConfigTest : public ::testing::Test {
 protected:
  ~TSMBusConfigTest() override { TSMBusConfig::FreeInstance(); }
  static std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const auto& [name, config] : TSMBusConfig::GetInstance()->GetConfigs()) names.push_back(name.c_str());
    return names;
  }
};

using TSMBusConfigInstance = TSMBusConfigTest;

TEST_F(TSMBusConfigInstance, IsMadeOnceAndFreed) {
  TSMBusConfig* first = TSMBusConfig::GetInstance();
  EXPECT_EQ(TSMBusConfig::GetInstance(), first);
  EXPECT_EQ(TSMBusConfig::g_Instance, first);
  TSMBusConfig::FreeInstance();
  EXPECT_EQ(TSMBusConfig::g_Instance, nullptr);
  TSMBusConfig::FreeInstance();
}

using TSMBusConfigRegistry = TSMBusConfigTest;

TEST_F(TSMBusConfigRegistry, Holds23RecordsUnderTheirNames) {
  EXPECT_EQ(Names().size(), 23u);
  for (const auto& [name, config] : TSMBusConfig::GetInstance()->GetConfigs()) EXPECT_TRUE(name == config.Name);
}

// By bytes alone "AMD Promontory" would come first: the order by length is meant.
TEST_F(TSMBusConfigRegistry, IsOrderedByLengthOfTheNameThenByBytes) {
  EXPECT_THAT(Names(),
              testing::ElementsAre("SiS 964", "SiS 968", "Intel SCH", "ULI M1563", "ULI M1573", "ULI M1575",
                                   "VIA VX900", "Intel ICHx", "SiS 962/963", "SiS 965/966", "nVidia MCP2",
                                   "AMD Promontory", "Intel Auto PCH", "Intel Kaby lake", "Intel Avoton PCH",
                                   "Intel Skylake PCH", "Intel Braswell PCH", "nVidia nForce3/CK804",
                                   "Intel PCH/P67/Z77/Z87", "ServerWorks OSB4/CSB5", "VIA 8235/8237/8237A/8251",
                                   "Intel ICH7/ICH8/ICH9/ICH10", "ATI SB400/SB600/SB700/SB800/Hudson"));
}

// The first row of this name knows 8086:2292 alone.
TEST_F(TSMBusConfigRegistry, HoldsTheSecondBraswellRow) {
  const TSMBusCfg& config = TSMBusConfig::GetInstance()->GetConfigs().at("Intel Braswell PCH");
  EXPECT_THAT(config.DetectScript.c_str(), testing::HasSubstr("0x0f128086"));
}

TEST_F(TSMBusConfigRegistry, LeavesWhatARowDoesNotSetEmptyOr0) {
  const TSMBusCfg& config = TSMBusConfig::GetInstance()->GetConfigs().at("VIA 8235/8237/8237A/8251");
  EXPECT_EQ(config.BlockMode, 0);
  EXPECT_EQ(config.RetryValue, 0);
  EXPECT_TRUE(config.RetryScript.IsEmpty());
  EXPECT_TRUE(config.BaseScript2.IsEmpty());
  EXPECT_TRUE(config.BlockStepScript.IsEmpty());
}

using TSMBusConfigAddConfig = TSMBusConfigTest;

TEST_F(TSMBusConfigAddConfig, StoresACopyAndGoesOverARecordOfTheSameName) {
  TSMBusCfg config;
  config.Name = "SiS 964";
  config.BlockMode = 3;
  TSMBusConfig::GetInstance()->AddConfig(&config);
  config.BlockMode = 4;
  EXPECT_EQ(TSMBusConfig::GetInstance()->GetConfigs().size(), 23u);
  EXPECT_EQ(TSMBusConfig::GetInstance()->GetConfigs().at("SiS 964").BlockMode, 3);
  EXPECT_TRUE(TSMBusConfig::GetInstance()->GetConfigs().at("SiS 964").DetectScript.IsEmpty());
  config.Name = "New";
  TSMBusConfig::GetInstance()->AddConfig(&config);
  EXPECT_EQ(TSMBusConfig::GetInstance()->GetConfigs().size(), 24u);
}

using TSMBusConfigInitCfgs = TSMBusConfigTest;

TEST_F(TSMBusConfigInitCfgs, AgainChangesNothing) {
  TSMBusConfig::GetInstance()->InitCfgs();
  EXPECT_EQ(Names().size(), 23u);
}

using TSMBusConfigClearCfgStruct = TSMBusConfigTest;

TEST_F(TSMBusConfigClearCfgStruct, EmptiesEveryField) {
  TSMBusCfg config = TSMBusConfig::GetInstance()->GetConfigs().at("Intel ICHx");
  config.RetryValue = 1;
  config.IdleValue = 2;
  TSMBusConfig::GetInstance()->ClearCfgStruct(&config);
  EXPECT_TRUE(config.Name.IsEmpty());
  EXPECT_TRUE(config.DetectScript.IsEmpty());
  EXPECT_TRUE(config.RestoreScript.IsEmpty());
  EXPECT_TRUE(config.WordWriteHighPrefix.IsEmpty());
  EXPECT_EQ(config.BlockMode + config.IdleValue + config.ErrorMask + config.ClockGenAddress + config.RetryValue, 0);
}

TEST(TSMBusCfgConstructor, LeavesScriptsEmptyAndNumbersZero) {
  const TSMBusCfg config;
  EXPECT_TRUE(config.Name.IsEmpty());
  EXPECT_TRUE(config.RestoreScript.IsEmpty());
  EXPECT_EQ(config.BlockMode + config.IdleValue + config.ErrorMask + config.ClockGenAddress + config.RetryValue, 0);
}

}  // namespace

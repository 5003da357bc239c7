// SPDX-License-Identifier: MIT
// The rows of the controller records against what all of them must hold.
#include "smbus/SMBusRows.h"

#include <gmock/gmock.h>

#include <map>
#include <string>

#include "smbus/TSMBusConfig.h"

namespace {

using Field = VynString TSMBusCfg::*;

constexpr Field kPrefixes[] = {&TSMBusCfg::AddressPrefix,      &TSMBusCfg::CommandPrefix,
                               &TSMBusCfg::ByteWritePrefix,    &TSMBusCfg::DataWritePrefix,
                               &TSMBusCfg::DataReadPrefix,     &TSMBusCfg::BlockWritePrefix,
                               &TSMBusCfg::WordWriteLowPrefix, &TSMBusCfg::WordWriteHighPrefix};
constexpr Field kScripts[] = {
    &TSMBusCfg::DetectScript,          &TSMBusCfg::EnableScript,        &TSMBusCfg::BaseScript1,
    &TSMBusCfg::BaseScript2,           &TSMBusCfg::BaseScript3,         &TSMBusCfg::BaseScript4,
    &TSMBusCfg::WaitIdleScript,        &TSMBusCfg::ByteReadStartScript, &TSMBusCfg::ByteWriteStartScript,
    &TSMBusCfg::ByteWaitScript,        &TSMBusCfg::ByteReadScript,      &TSMBusCfg::BlockReadStartScript,
    &TSMBusCfg::BlockWriteStartScript, &TSMBusCfg::BlockWaitScript,     &TSMBusCfg::BlockSetupScript,
    &TSMBusCfg::BlockReadScript,       &TSMBusCfg::BlockNextScript,     &TSMBusCfg::BlockStepScript,
    &TSMBusCfg::RestoreScript,         &TSMBusCfg::RetryScript,         &TSMBusCfg::WordReadStartScript,
    &TSMBusCfg::WordWriteStartScript,  &TSMBusCfg::WordWaitScript,      &TSMBusCfg::WordReadLowScript,
    &TSMBusCfg::WordReadHighScript};

std::map<VynString, TSMBusCfg>& Records() { return TSMBusConfig::GetInstance()->GetConfigs(); }

class SMBusRowsTest : public ::testing::Test {
 protected:
  ~SMBusRowsTest() override { TSMBusConfig::FreeInstance(); }
};

TEST_F(SMBusRowsTest, StandInThisOrderWithTheseNumbers) {
  struct Row {
    const char* name;
    int blockMode, idleValue, errorMask, clockGenAddress;
    bool operator==(const Row& other) const {
      return std::string(name) == other.name && blockMode == other.blockMode && idleValue == other.idleValue &&
             errorMask == other.errorMask && clockGenAddress == other.clockGenAddress;
    }
  };
  const Row expected[] = {
      {"Intel ICHx", 1, 0, 4, 0xD2},
      {"SiS 962/963", 8, 0, 2, 0xD2},
      {"ULI M1563", 1, 0, 4, 0xD2},
      {"VIA 8235/8237/8237A/8251", 0, 0, 4, 0xD2},
      {"SiS 964", 8, 0, 2, 0xD2},
      {"SiS 965/966", 0, 0, 2, 0xD2},
      {"ATI SB400/SB600/SB700/SB800/Hudson", 0, 0, 4, 0xD2},
      {"nVidia MCP2", 0, 0, 4, 0xD2},
      {"Intel ICH7/ICH8/ICH9/ICH10", 1, 0, 4, 0xD2},
      {"nVidia nForce3/CK804", 0, 0, 4, 0xD2},
      {"ULI M1573", 1, 0, 4, 0xD2},
      {"ULI M1575", 1, 0, 4, 0xD2},
      {"ServerWorks OSB4/CSB5", 0, 0, 4, 0xD2},
      {"SiS 968", 0, 0, 2, 0xD2},
      {"Intel SCH", 0, 0, 8, 0xD2},
      {"Intel PCH/P67/Z77/Z87", 0, 0, 4, 0xD2},
      {"VIA VX900", 0, 0, 4, 0xD2},
      {"Intel Avoton PCH", 1, 0, 4, 0xD2},
      {"Intel Skylake PCH", 0, 0, 4, 0xD2},
      {"Intel Braswell PCH", 0, 0, 4, 0xD2},
      {"Intel Kaby lake", 0, 0, 4, 0xD2},
      {"AMD Promontory", 0, 0, 4, 0xD2},
      {"Intel Braswell PCH", 0, 0, 4, 0xD2},
      {"Intel Auto PCH", 0, 0, 4, 0xD2},
  };
  std::vector<Row> rows;
  for (const SMBusRow& row : SMBusRows())
    rows.push_back({row.name, row.blockMode, row.idleValue, row.errorMask, row.clockGenAddress});
  EXPECT_EQ(rows, std::vector<Row>(std::begin(expected), std::end(expected)));
}

TEST_F(SMBusRowsTest, HaveUniqueNamesButForTheOneInsertedTwice) {
  std::map<std::string, int> count;
  for (const SMBusRow& row : SMBusRows()) ++count[row.name];
  for (const auto& [name, times] : count) EXPECT_EQ(times, name == "Intel Braswell PCH" ? 2 : 1) << name;
}

TEST_F(SMBusRowsTest, EndEveryPrefixInAnOpenArgumentList) {
  for (const auto& [name, config] : Records())
    for (const Field field : kPrefixes) {
      const std::string text = (config.*field).c_str();
      EXPECT_THAT(text, testing::AnyOf(testing::EndsWith("o(Local1,"), testing::EndsWith("i(Local1,"))) << name.c_str();
    }
}

TEST_F(SMBusRowsTest, SetEveryScriptThatTransactionsNeed) {
  constexpr Field kMayBeEmpty[] = {&TSMBusCfg::EnableScript,  &TSMBusCfg::BaseScript2,     &TSMBusCfg::BaseScript3,
                                   &TSMBusCfg::BaseScript4,   &TSMBusCfg::BlockNextScript, &TSMBusCfg::BlockStepScript,
                                   &TSMBusCfg::RestoreScript, &TSMBusCfg::RetryScript};
  for (const auto& [name, config] : Records()) {
    for (const Field field : kScripts) {
      const bool may = std::find(std::begin(kMayBeEmpty), std::end(kMayBeEmpty), field) != std::end(kMayBeEmpty);
      if (!may) {
        EXPECT_FALSE((config.*field).IsEmpty()) << name.c_str();
      }
    }
    EXPECT_EQ(config.BlockNextScript.IsEmpty(), config.BlockMode == 0) << name.c_str();
    // What enables has a script that puts back; the AMD and ATI enable scripts only look, except for the oldest chips.
    if (config.RestoreScript.IsEmpty()) {
      EXPECT_THAT(config.EnableScript.c_str(), testing::Not(testing::HasSubstr("pci(0,0x14,0,0xd2"))) << name.c_str();
    }
  }
}

TEST_F(SMBusRowsTest, BalanceBracesAndWriteNoNumberWithTheLetterH) {
  for (const auto& [name, config] : Records())
    for (const Field field : kScripts) {
      const std::string text = (config.*field).c_str();
      EXPECT_EQ(std::count(text.begin(), text.end(), '{'), std::count(text.begin(), text.end(), '}')) << name.c_str();
      EXPECT_EQ(std::count(text.begin(), text.end(), '('), std::count(text.begin(), text.end(), ')')) << name.c_str();
      EXPECT_FALSE(testing::Matches(testing::ContainsRegex("[0-9a-fA-F][hH][,)]"))(text)) << name.c_str();
    }
}

/// The loop that plain statements in front of it swallow, because a "CMDS{" follows: a search for blocks takes that
/// first, wherever it stands. Empty without one.
std::string SwallowedLoop(std::string text) {
  for (size_t block = 0; block != std::string::npos;) {
    text.erase(0, text.find_first_not_of(' '));
    const size_t commands = text.find("CMDS{");
    const size_t loop = std::min(text.find("Wait{"), text.find("Loop{"));
    block = std::min(commands, loop);
    if (loop != 0 && loop < commands && commands != std::string::npos) return text.substr(loop);
    if (block != std::string::npos) text.erase(0, text.find('}', block) + 1);
  }
  return "";
}

TEST_F(SMBusRowsTest, LoseNoLoopToThePlainStatementsBeforeIt) {
  EXPECT_EQ(SwallowedLoop("Local1=1; Wait{0,1,i(1)}; CMDS{o(1,1)}"), "Wait{0,1,i(1)}; CMDS{o(1,1)}");
  EXPECT_EQ(SwallowedLoop("CMDS{Local1=1} Loop{1,i(1)} CMDS{o(1,1)} Local1=2"), "");
  for (const auto& [name, config] : Records())
    for (const Field field : kScripts) EXPECT_EQ(SwallowedLoop((config.*field).c_str()), "") << name.c_str();
}

TEST_F(SMBusRowsTest, HoldTheIchxRowToTheLetter) {
  const TSMBusCfg& ichx = Records().at("Intel ICHx");
  const std::map<std::string, std::pair<Field, const char*>> expected = {
      {"DetectScript",
       {&TSMBusCfg::DetectScript,
        "Local0=Rpci32(0,0x1f,0,0); Local0=And(Local0,0xff00ffff); bkif0(Sub(Local0,0x24008086)); "
        "Sub(Local0,0x26008086)"}},
      {"EnableScript",
       {&TSMBusCfg::EnableScript,
        "Local6=Rpci16(0,0x1f,0,0x40); Local6=And(Local6,0xFFF0); Local6=Add(Local6,0x69); Local7=i(Local6); "
        "o(Local6,8); Local6=Add(Local6,1); Local8=i(Local6); o(Local6,8); LocalA=Rpci(0,0x1f,0,0xf2); "
        "Local0=And(LocalA,0xf7); Wpci(0,0x1f,0,0xf2,Local0); LocalB=Rpci(0,0x1f,3,4); "
        "LocalC=Rpci16(0,0x1f,3,0x20); LocalD=Rpci(0,0x1f,3,0x40); Wpci(0,0x1f,3,0x40,1); Wpci(0,0x1f,3,4,1); "
        "BkIf1(And(LocalC,0xFFF0)); Wpci16(0,0x1f,3,0x20,0xc00)"}},
      {"BaseScript1",
       {&TSMBusCfg::BaseScript1,
        "Local0=Rpci16(0,0x1f,3,0x20); Local0=And(Local0,0xfff0); Local1=Add(Local0,0xD); Local5=i(Local1); "
        "o(Local1,0)"}},
      {"WaitIdleScript",
       {&TSMBusCfg::WaitIdleScript, "Wait{0,0x8000,o(Local0,0xff); Local1=i(Local0); And(Local1,0x9f)}"}},
      {"AddressPrefix", {&TSMBusCfg::AddressPrefix, "Local1=Add(Local0,4); o(Local1,"}},
      {"CommandPrefix", {&TSMBusCfg::CommandPrefix, "Local1=Add(Local0,3); o(Local1,"}},
      {"ByteWritePrefix", {&TSMBusCfg::ByteWritePrefix, "Local1=Add(Local0,5); o(Local1,"}},
      {"DataWritePrefix", {&TSMBusCfg::DataWritePrefix, "Local1=Add(Local0,5); o(Local1,"}},
      {"DataReadPrefix", {&TSMBusCfg::DataReadPrefix, "Local1=Add(Local0,5); i(Local1,"}},
      {"ByteReadStartScript", {&TSMBusCfg::ByteReadStartScript, "Local1=Add(Local0,2); o(Local1,0x48)"}},
      {"ByteWriteStartScript", {&TSMBusCfg::ByteWriteStartScript, "Local1=Add(Local0,2); o(Local1,0x48)"}},
      {"ByteWaitScript",
       {&TSMBusCfg::ByteWaitScript, "Delay 10; Wait{2,0x8000,Local1=i(Local0); BkIf1(And(Local1,4)); And(Local1,2)}"}},
      {"ByteReadScript", {&TSMBusCfg::ByteReadScript, "Local1=Add(Local0,5); i(Local1)"}},
      {"BlockReadStartScript", {&TSMBusCfg::BlockReadStartScript, "Local1=Add(Local0,2); o(Local1,0x54)"}},
      {"BlockWriteStartScript", {&TSMBusCfg::BlockWriteStartScript, "Local1=Add(Local0,2); o(Local1,0x54)"}},
      {"BlockWaitScript",
       {&TSMBusCfg::BlockWaitScript,
        "Delay 200; Wait{0x80,0x8000,Local1=i(Local0); BkIf1(And(Local1,4)); And(Local1,0x80)}"}},
      {"BlockSetupScript", {&TSMBusCfg::BlockSetupScript, "Local9=7"}},
      {"BlockWritePrefix", {&TSMBusCfg::BlockWritePrefix, "Local1=Add(Local0,Local9); o(Local1,"}},
      {"BlockReadScript", {&TSMBusCfg::BlockReadScript, "Local1=Add(Local0,Local9); i(Local1)"}},
      {"BlockNextScript",
       {&TSMBusCfg::BlockNextScript,
        "o(Local0,0xff); Wait{0x80,0x8000,Local1=i(Local0); BkIf1(And(Local1,4)); BkIf0(And(Local1,1)); "
        "And(Local1,0x80)}"}},
      {"RestoreScript",
       {&TSMBusCfg::RestoreScript,
        "Local1=Add(Local0,0xD); o(Local1,Local5); Wpci(0,0x1f,3,0x40,LocalD); Wpci16(0,0x1f,3,0x20,LocalC); "
        "Wpci(0,0x1f,3,4,LocalB); Wpci(0,0x1f,0,0xf2,LocalA); Local6=Rpci16(0,0x1f,0,0x40); "
        "Local6=And(Local6,0xFFF0); Local6=Add(Local6,0x69); o(Local6,Local7); Local6=Add(Local6,1); "
        "o(Local6,Local8)"}},
      {"WordReadStartScript", {&TSMBusCfg::WordReadStartScript, "Local1=Add(Local0,2); o(Local1,0x4C)"}},
      {"WordWriteStartScript", {&TSMBusCfg::WordWriteStartScript, "Local1=Add(Local0,2); o(Local1,0x4C)"}},
      {"WordWaitScript",
       {&TSMBusCfg::WordWaitScript, "Delay 40;Wait{2,0x8000,Local1=i(Local0); BkIf1(And(Local1,4)); And(Local1,2)}"}},
      {"WordReadLowScript", {&TSMBusCfg::WordReadLowScript, "Local1=Add(Local0,5); i(Local1)"}},
      {"WordReadHighScript", {&TSMBusCfg::WordReadHighScript, "Local1=Add(Local0,6); i(Local1)"}},
      {"WordWriteLowPrefix", {&TSMBusCfg::WordWriteLowPrefix, "Local1=Add(Local0,5); o(Local1,"}},
      {"WordWriteHighPrefix", {&TSMBusCfg::WordWriteHighPrefix, "Local1=Add(Local0,6); o(Local1,"}},
      {"BaseScript2", {&TSMBusCfg::BaseScript2, ""}},
      {"BaseScript3", {&TSMBusCfg::BaseScript3, ""}},
      {"BaseScript4", {&TSMBusCfg::BaseScript4, ""}},
      {"BlockStepScript", {&TSMBusCfg::BlockStepScript, ""}},
      {"RetryScript", {&TSMBusCfg::RetryScript, ""}},
  };
  EXPECT_EQ(expected.size(), std::size(kPrefixes) + std::size(kScripts));
  for (const auto& [name, text] : expected) EXPECT_STREQ((ichx.*text.first).c_str(), text.second) << name;
}

}  // namespace

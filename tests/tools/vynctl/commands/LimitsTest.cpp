// SPDX-License-Identifier: MIT
// Ranges and limits as the command line and a file give them.
#include "commands/Arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "commands/Context.h"

namespace vynctl {
namespace {

struct Accepted {
  const char* range;
  double value;
  bool good;
};

std::ostream& operator<<(std::ostream& stream, const Accepted& row) {
  return stream << "'" << row.range << "' " << (row.good ? "accepts " : "refuses ") << row.value;
}

class RangeAccepts : public testing::TestWithParam<Accepted> {};

TEST_P(RangeAccepts, AsMonitoringPluginsDo) {
  EXPECT_EQ(GetParam().good, ParseRange(GetParam().range).Accepts(GetParam().value))
      << GetParam().range << " " << GetParam().value;
}

INSTANTIATE_TEST_SUITE_P(Ranges, RangeAccepts,
                         testing::Values(Accepted{"10", 0, true}, Accepted{"10", 10, true}, Accepted{"10", 10.1, false},
                                         Accepted{"10", -0.1, false}, Accepted{"10:", 9.9, false},
                                         Accepted{"10:", 1e9, true}, Accepted{":10", -1, false},
                                         Accepted{":10", 5, true}, Accepted{"~:10", -1e9, true},
                                         Accepted{"~:10", 11, false}, Accepted{"10:20", 10, true},
                                         Accepted{"10:20", 20.5, false}, Accepted{"-20:-10", -15, true},
                                         Accepted{"@10:20", 15, false}, Accepted{"@10:20", 9, true},
                                         Accepted{"-", -1e9, true}, Accepted{"", 1e9, true}));

TEST(ParseRange, RefusesWhatIsNoRange) {
  for (const char* text : {"a", "1:2:3", "@", "~", "1 2", "nan", "1:b", "20:10"}) {
    EXPECT_THROW(ParseRange(text), UsageError) << text;
  }
}

TEST(ParseLimit, DividesAtTheLastEqualsSign) {
  const Limit limit = ParseLimit(" V=core = 1:2 , 0:3 ");
  EXPECT_EQ("V=core", limit.sensor);
  EXPECT_EQ("1:2", limit.warning.text);
  EXPECT_EQ("0:3", limit.critical.text);
}

TEST(ParseLimit, TakesOneRangeAsTheWarning) {
  const Limit limit = ParseLimit("CPU=~:80");
  EXPECT_EQ("~:80", limit.warning.text);
  EXPECT_EQ("", limit.critical.text);
}

TEST(ParseLimit, TakesADashForNoWarning) {
  const Limit limit = ParseLimit("CPU=-,~:95");
  EXPECT_EQ("", limit.warning.text);
  EXPECT_EQ("~:95", limit.critical.text);
}

TEST(ParseLimit, RefusesNamesOrRangesThatAreMissing) {
  for (const char* text : {"CPU", "=1:2", " =1", "CPU=", "CPU=-,-"}) EXPECT_THROW(ParseLimit(text), UsageError) << text;
}

class ReadLimitsTest : public testing::Test {
 protected:
  std::string Write(const std::string& text) const {
    const std::string path =
        testing::TempDir() + "vynctl-limits-" + testing::UnitTest::GetInstance()->current_test_info()->name();
    std::ofstream(path) << text;
    return path;
  }
};

TEST_F(ReadLimitsTest, PassesOverCommentsAndEmptyLines) {
  const std::vector<Limit> limits = ReadLimits(Write("# limits\n\nCPU Core = ~:80, ~:95\n  +12V = 11:13\n"));
  ASSERT_EQ(2u, limits.size());
  EXPECT_EQ("CPU Core", limits[0].sensor);
  EXPECT_EQ("+12V", limits[1].sensor);
}

TEST_F(ReadLimitsTest, NamesFileAndLineOfAMistake) {
  const std::string path = Write("# limits\nCPU = 80:70\n");
  try {
    ReadLimits(path);
    FAIL() << "accepted";
  } catch (const UsageError& error) {
    EXPECT_EQ(path + ":2: the range '80:70' ends before it begins", error.what());
  }
}

TEST(ReadLimits, SaysThatAFileCannotBeRead) { EXPECT_THROW(ReadLimits("/nowhere/limits"), UsageError); }

}  // namespace
}  // namespace vynctl

// SPDX-License-Identifier: MIT
// Operands and the normal form of a script.
#include <algorithm>
#include <initializer_list>

#include "tests/unit/script/Machine.h"

using scripttest::Machine;

namespace {

std::vector<std::string> Items(const VynStringList& list) {
  std::vector<std::string> items;
  for (int i = 0; i < list.Count(); ++i) items.emplace_back(list[i].c_str());
  return items;
}

/// An interpreter with an argument list.
struct WithArguments : Machine {
  VynStringList arguments;
  explicit WithArguments(const char* words) {
    arguments.SetCommaText(words, " ");
    interpreter.Arguments = &arguments;
  }
};

}  // namespace

TEST(AdjustCmdString, NormalisesAScript) {
  const struct {
    const char* script;
    const char* text;
  } cases[] = {
      {"Local1=i(Local0)", "LOCAL1=I LOCAL0 "},
      {"  o(0x80,1);  ", "O 0X80 1 "},
      {"a;b;;;", "A;B"},
      {"a; ;", "A; "},  // only the ";" at the very end go
      {";;", ""},
      {"", ""},
      {"   ", ""},
      {"\ta", "\tA"},
      {"Delay 10; Wait{2,0x8000,Local1=i(Local0); BkIf1(And(Local1,4)); And(Local1,2)}",
       "DELAY 10; WAIT{2 0X8000 LOCAL1=I LOCAL0 ; BKIF1 AND LOCAL1 4  ; AND LOCAL1 2 }"},
  };
  Machine machine;
  for (const auto& [script, text] : cases) EXPECT_STREQ(machine.interpreter.AdjustCmdString(script).c_str(), text);
}

TEST(AdjustPrefixCmdString, DropsLeadingSpacesAndSemicolons) {
  Machine machine;
  EXPECT_STREQ(machine.interpreter.AdjustPrefixCmdString(" ; ;;A 1; ").c_str(), "A 1; ");
  EXPECT_STREQ(machine.interpreter.AdjustPrefixCmdString(" ; ").c_str(), "");
  EXPECT_STREQ(machine.interpreter.AdjustPrefixCmdString("").c_str(), "");
}

TEST(GetLocalVarNum, TakesOneHexadecimalDigit) {
  Machine machine;
  const std::string digits = "0123456789ABCDEF";
  for (size_t i = 0; i < digits.size(); ++i) {
    int slot = -1;
    EXPECT_TRUE(machine.interpreter.GetLocalVarNum(("LOCAL" + digits.substr(i, 1)).c_str(), &slot));
    EXPECT_EQ(slot, static_cast<int>(i));
    EXPECT_TRUE(machine.interpreter.GetLocalVarNum(("LOCAL" + digits.substr(i, 1) + "=I 1=2").c_str(), &slot));
    EXPECT_EQ(slot, static_cast<int>(i));
  }
}

TEST(GetLocalVarNum, RefusesOtherNumbersAndLeavesTheSlot) {
  Machine machine;
  for (const char* text : {"LOCALG", "LOCAL", "LOCAL10", "LOCAL 1", "LOCAL1 =5", "LOCAL-1", "", "X1",
                           "LOCALFFFFFFFFFFFFFFFF", "LOCAL8000000000000000"}) {
    int slot = 77;
    EXPECT_FALSE(machine.interpreter.GetLocalVarNum(text, &slot)) << text;
    EXPECT_EQ(slot, 77) << text;
  }
  EXPECT_TRUE(machine.interpreter.GetLocalVarNum("LOCAL1", nullptr));
}

TEST(CmdToOp, ConvertsNumbers) {
  const struct {
    const char* word;
    unsigned value;
  } cases[] = {{"10", 10},         {"32768", 32768},  {"0x8000", 0x8000},
               {"0XFFFF", 0xFFFF}, {"0X19", 0x19},    {"0xFFFFFFFF", 0xFFFFFFFF},
               {"-1", 0xFFFFFFFF}, {"4294967297", 1}, {"0", 0},
               {"1", 1},           {"", 0},           {"2.9", 2}};
  Machine machine;
  for (const auto& [word, value] : cases) {
    unsigned number = 77;
    EXPECT_TRUE(machine.interpreter.CmdToOp(word, &number)) << word;
    EXPECT_EQ(number, value) << word;
  }
}

TEST(CmdToOp, RefusesTheHFormAndOtherWords) {
  Machine machine;
  for (const char* word : {"20H", "76h", "0H", "FH", "ABC", "0X", "1 2", "I", "0xG"}) {
    unsigned number = 77;
    EXPECT_FALSE(machine.interpreter.CmdToOp(word, &number)) << word;
    EXPECT_EQ(number, 77u) << word;
  }
}

TEST(CmdToOp, GivesVariablesTheirValue) {
  Machine machine;
  machine.interpreter.Locals[0xA] = 0x12345678;
  unsigned number = 0;
  EXPECT_TRUE(machine.interpreter.CmdToOp("LOCALA", &number));
  EXPECT_EQ(number, 0x12345678u);
  EXPECT_FALSE(machine.interpreter.CmdToOp("LOCALG", &number));
  EXPECT_FALSE(machine.interpreter.CmdToOp("LOCAL", &number));
}

TEST(CmdToOp, TakesStringsWithoutABufferAndNoPlaceForTheValue) {
  Machine machine;
  VynString none;
  none.Terminated();
  unsigned number = 77;
  EXPECT_FALSE(machine.interpreter.CmdToOp(none, &number));
  EXPECT_TRUE(machine.interpreter.CmdToOp("5", nullptr));
}

TEST(StrToData, StoresAByteForEachWord) {
  Machine machine;
  machine.interpreter.Locals[1] = 0x33;
  unsigned char data[5] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
  int count = 0;
  EXPECT_TRUE(machine.interpreter.StrToData("1  0x22 LOCAL1 255", data, &count));
  EXPECT_EQ(count, 4);
  EXPECT_THAT(data, testing::ElementsAre(1, 0x22, 0x33, 255, 0xEE));
}

TEST(StrToData, Stores256AsZero) {
  Machine machine;
  unsigned char data[1] = {0xEE};
  int count = 0;
  EXPECT_TRUE(machine.interpreter.StrToData("256", data, &count));
  EXPECT_EQ(count, 1);
  EXPECT_EQ(data[0], 0);
}

TEST(StrToData, StopsAtTheFirstBadWord) {
  Machine machine;
  for (const char* bad : {"257", "20H", "zz", "-1"}) {
    unsigned char data[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    int count = 0;
    EXPECT_FALSE(machine.interpreter.StrToData(("1 2 " + std::string(bad) + " 3").c_str(), data, &count)) << bad;
    EXPECT_EQ(count, 2) << bad;
    EXPECT_THAT(data, testing::ElementsAre(1, 2, 0xEE, 0xEE)) << bad;
  }
}

TEST(StrToData, NeedsAWord) {
  Machine machine;
  int count = 77;
  EXPECT_FALSE(machine.interpreter.StrToData("  ", nullptr, &count));
  EXPECT_EQ(count, 0);
  EXPECT_TRUE(machine.interpreter.StrToData("1", nullptr, nullptr));
}

TEST(GetOps, TakesTheFirstWordsOffTheList) {
  WithArguments machine("1 0x20 LOCAL3 REST");
  machine.interpreter.Locals[3] = 9;
  EXPECT_TRUE(machine.interpreter.GetOps(3));
  EXPECT_THAT(machine.interpreter.Operands, testing::ElementsAre(1, 0x20, 9, 0, 0));
  EXPECT_THAT(Items(machine.arguments), testing::ElementsAre("REST"));
}

TEST(GetOps, OfNoneSucceeds) {
  Machine machine;
  EXPECT_TRUE(machine.interpreter.GetOps(0));
  EXPECT_TRUE(machine.interpreter.GetStrOps(0));
}

TEST(GetOps, FailsWithTooFewWordsBadWordsAndMoreThanFiveOperands) {
  EXPECT_FALSE(WithArguments("1 2").interpreter.GetOps(3));
  EXPECT_FALSE(WithArguments("1 X").interpreter.GetOps(2));
  EXPECT_TRUE(WithArguments("1 2 3 4 5 6").interpreter.GetOps(5));
  EXPECT_FALSE(WithArguments("1 2 3 4 5 6").interpreter.GetOps(6));
  EXPECT_FALSE(WithArguments("1").interpreter.GetOps(-1));
  EXPECT_FALSE(Machine().interpreter.GetOps(1));
}

TEST(GetOp, EvaluatesOneWordAndRemovesIt) {
  WithArguments machine("7 8 9");
  EXPECT_TRUE(machine.interpreter.GetOp(1, 4));
  EXPECT_EQ(machine.interpreter.Operands[4], 8u);
  EXPECT_THAT(Items(machine.arguments), testing::ElementsAre("7", "9"));
}

TEST(GetOp, FailsOutsideTheListAndTheOperandsAndForBadWords) {
  WithArguments machine("7 X");
  EXPECT_FALSE(machine.interpreter.GetOp(2, 0));
  EXPECT_FALSE(machine.interpreter.GetOp(-1, 0));
  EXPECT_FALSE(machine.interpreter.GetOp(0, 5));
  EXPECT_FALSE(machine.interpreter.GetOp(0, -1));
  EXPECT_FALSE(machine.interpreter.GetOp(1, 0));
  EXPECT_EQ(machine.arguments.Count(), 2);
}

TEST(GetStrOps, TakesWordsAsText) {
  WithArguments machine("7 ABC REST");
  EXPECT_TRUE(machine.interpreter.GetStrOps(2));
  EXPECT_STREQ(machine.interpreter.StringOperands[0].c_str(), "7");
  EXPECT_STREQ(machine.interpreter.StringOperands[1].c_str(), "ABC");
  EXPECT_THAT(Items(machine.arguments), testing::ElementsAre("REST"));
}

TEST(GetStrOps, FailsWithTooFewWordsAndMoreThanFiveOperands) {
  EXPECT_FALSE(WithArguments("1 2").interpreter.GetStrOps(3));
  EXPECT_FALSE(WithArguments("1 2 3 4 5 6").interpreter.GetStrOps(6));
  EXPECT_FALSE(WithArguments("1 2").interpreter.GetStrOps(-1));
  EXPECT_FALSE(Machine().interpreter.GetStrOps(1));
}

TEST(GetStrOp, TakesOneWord) {
  WithArguments machine("A B C");
  EXPECT_TRUE(machine.interpreter.GetStrOp(2, 4));
  EXPECT_STREQ(machine.interpreter.StringOperands[4].c_str(), "C");
  EXPECT_FALSE(machine.interpreter.GetStrOp(2, 0));
  EXPECT_FALSE(machine.interpreter.GetStrOp(0, 5));
  EXPECT_FALSE(machine.interpreter.GetStrOp(-1, 0));
  EXPECT_FALSE(machine.interpreter.GetStrOp(0, -1));
}

TEST(CheckOps, FindsTheExactWord) {
  WithArguments machine("A /S B");
  EXPECT_TRUE(machine.interpreter.CheckOps("/S"));
  EXPECT_FALSE(machine.interpreter.CheckOps("/s"));
  EXPECT_FALSE(machine.interpreter.CheckOps("/"));
  EXPECT_FALSE(Machine().interpreter.CheckOps("A"));
}

TEST(CheckOpValue, HoldsUpToTheLimit) {
  Machine machine;
  EXPECT_TRUE(machine.interpreter.CheckOpValue(5, 5));
  EXPECT_TRUE(machine.interpreter.CheckOpValue(0, 5));
  EXPECT_FALSE(machine.interpreter.CheckOpValue(6, 5));
  EXPECT_TRUE(machine.interpreter.CheckOpValue(0xFFFFFFFF, 0xFFFFFFFF));
}

TEST(CheckPciCmd, KnowsTheLastBusDeviceFunctionAndRegister) {
  Machine machine;
  const unsigned last[4] = {255, 31, 7, 255};
  std::copy_n(last, 4, machine.interpreter.Operands);
  EXPECT_TRUE(machine.interpreter.CheckPciCmd());
  for (size_t i = 0; i < 4; ++i) {
    machine.interpreter.Operands[i] = last[i] + 1;
    EXPECT_FALSE(machine.interpreter.CheckPciCmd()) << i;
    machine.interpreter.Operands[i] = last[i];
  }
}

TEST(ReturnBits, WritesTheMostSignificantBitFirst) {
  Machine machine;
  EXPECT_STREQ(machine.interpreter.Return8Bits(0x81).c_str(), "10000001");
  EXPECT_STREQ(machine.interpreter.Return16Bits(0x8001).c_str(), "1000000000000001");
  EXPECT_STREQ(machine.interpreter.Return32Bits(0x80000003).c_str(), "10000000000000000000000000000011");
  EXPECT_STREQ(machine.interpreter.Return64Bits(0x8000000000000005).c_str(),
               "1000000000000000000000000000000000000000000000000000000000000101");
}

TEST(ReturnBits, PutsAHeadingOfBitNumbersAboveGroupsOfEight) {
  Machine machine;
  VynStringList lines;
  machine.interpreter.ReturnBits(static_cast<unsigned char>(0x81), &lines);
  machine.interpreter.ReturnBits(static_cast<unsigned short>(0x8001), &lines);
  machine.interpreter.ReturnBits(0x80000003u, &lines);
  machine.interpreter.ReturnBits(0x8000000000000005ull, &lines);
  EXPECT_THAT(Items(lines),
              testing::ElementsAre("7      0",                             //
                                   "10000001",                             //
                                   "15     8 7      0",                    //
                                   "10000000 00000001",                    //
                                   "31    24 23    16 15     8 7      0",  //
                                   "10000000 00000000 00000000 00000011",  //
                                   "63    56 55    48 47    40 39    32 31    24 23    16 15     8 7      0",
                                   "10000000 00000000 00000000 00000000 00000000 00000000 00000000 00000101"));
  machine.interpreter.ReturnBits(0u, nullptr);
}

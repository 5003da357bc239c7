// SPDX-License-Identifier: MIT
// Scripts as blocks of statements, long ones included.
#include "script/Program.h"

#include <algorithm>
#include <ctime>
#include <functional>

#include "tests/unit/script/Machine.h"

using scripttest::Machine;

namespace {

constexpr size_t kMebibyte = 1 << 20;

std::string Repeated(const std::string& piece, size_t bytes) {
  std::string text;
  while (text.size() < bytes) text += piece;
  return text;
}

struct LongScript {
  const char* head;
  const char* piece;  ///< repeated
  const char* tail;
  bool runs;
};

const LongScript kLongScripts[] = {
    {"", ";", "", true},
    {"", " ", "", true},
    {"", "()", "", true},
    {"", "( ;", "", true},
    {"", "{", "", false},
    {"", "}", "", false},
    {"", "x", "", false},
    {"", "1 ", "", false},
    {"", "Cmds{", "", false},
    {"", "Cmds{}", "", true},
    {"", "Cmds{ ; }", "", true},
    {"", "Wait{", "", false},
    {"", "Wait{1,", "", false},
    {"", "Wait{1,1,", "", false},
    {"", "Wait{1,1,}", "", true},
    {"", "Loop{1,Local1=1}", "", true},
    {"", "Loop{1,Local1=1};Local2=2;", "", true},
    {"", "Wait{1,1,Local1=1};Local2=2;", "", true},
    {"", "Local1=1;", "", true},
    {"", "Local1=", "1", true},  // cut at the second "=", a variable
    {"", "Add(1,2);", "", true},
    {"", "BkIf1(Add(1,2));", "", true},  // the first one ends the run
    {"Add(1,2", ",3", ")", true},        // words behind the operands
    {"Fmem(0,1,1,0", ",3", ")", true},   // a pattern longer than the range is found nowhere
    {"Local1=", "1", "", true},          // a number beyond every range
    {"Local", "0", "1=1", true},         // a variable by a long name
    {"Cmds{", "Local1=1;", "}", true},
    {"Cmds{", "Local1=1;", "", false},
    {"Wait{1,", "0", "5,Local1=1}", true},
};

double Seconds(const std::function<void()>& action) {
  double best = 1e9;
  for (int i = 0; i < 2; ++i) {
    const std::clock_t start = std::clock();
    action();
    best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  return best;
}

}  // namespace

TEST(LongScripts, OfAMebibyteRunOrFailCleanly) {
  for (const LongScript& script : kLongScripts) {
    Machine machine;
    const bool runs = machine.Run(script.head + Repeated(script.piece, kMebibyte) + script.tail);
    EXPECT_EQ(runs, script.runs) << script.head << script.piece << script.tail;
  }
}

TEST(LongScripts, TakeTimeInProportionToTheirLength) {
  for (const LongScript& script : kLongScripts) {
    const auto run = [&script](size_t bytes) {
      const std::string text = script.head + Repeated(script.piece, bytes) + script.tail;
      return Seconds([&text] {
        Machine machine;
        machine.Run(text);
      });
    };
    const double quarter = run(kMebibyte / 16);
    // Four times the text; time by the square would be sixteen times the time. What ends within 250 ms
    // is no such thing at these lengths, only noise.
    EXPECT_LT(run(kMebibyte / 4), std::max(0.25, 10 * quarter)) << script.head << script.piece << script.tail;
  }
}

TEST(ParseScript, KeepsNoStatementBehindOneThatFails) {
  const script::Program program = script::ParseScript("LOCAL1=1;BAD 1;LOCAL2=2;LOCAL3=3");
  ASSERT_EQ(program.blocks.size(), 1u);
  EXPECT_EQ(program.statements.size(), 2u);
}

TEST(ParseScript, EndsAtAMalformedBlock) {
  const script::Program program = script::ParseScript("LOCAL1=1; WAIT{X 1 LOCAL2=2}LOCAL3=3");
  ASSERT_EQ(program.blocks.size(), 2u);
  EXPECT_EQ(program.blocks[0].kind, script::Block::Kind::kOnce);
  EXPECT_EQ(program.blocks[1].kind, script::Block::Kind::kMalformed);
}

TEST(ParseScript, GivesEachBlockItsStatements) {
  const script::Program program =
      script::ParseScript("DELAY 10; WAIT{2 0X8000 LOCAL1=I LOCAL0 ; BKIF1 AND LOCAL1 4  ; AND LOCAL1 2 }");
  ASSERT_EQ(program.blocks.size(), 2u);
  EXPECT_EQ(program.blocks[0].end, 1u);
  EXPECT_EQ(program.blocks[1].kind, script::Block::Kind::kWait);
  EXPECT_EQ(program.blocks[1].waitValue.number, 2u);
  EXPECT_EQ(program.blocks[1].count.number, 0x8000u);
  EXPECT_EQ(program.blocks[1].first, 1u);
  EXPECT_EQ(program.blocks[1].end, 4u);
}

TEST(Trimmed, RemovesSpacesAtBothEnds) {
  EXPECT_EQ(script::Trimmed("  a b "), "a b");
  EXPECT_EQ(script::Trimmed("   "), "");
  EXPECT_EQ(script::Trimmed(""), "");
}

TEST(CutBefore, TakesTheSeparatorAway) {
  std::string_view text = "a;b;;c";
  EXPECT_EQ(script::CutBefore(&text, ';'), "a");
  EXPECT_EQ(script::CutBefore(&text, ';'), "b");
  EXPECT_EQ(script::CutBefore(&text, ';'), "");
  EXPECT_EQ(script::CutBefore(&text, ';'), "c");
  EXPECT_EQ(text, "");
}

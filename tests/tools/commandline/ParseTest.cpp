// SPDX-License-Identifier: MIT
// What described command lines accept, and what they say of the rest.
#include <gtest/gtest.h>

#include "commandline/Command.h"

namespace commandline {
namespace {

/// A tool with an argument of every kind, and what was typed.
struct Tool {
  bool flag = false;
  double number = 0;
  unsigned address = 0;
  std::string colour, file, board, word, chosen, verb;
  std::vector<std::string> words, each;
  std::vector<unsigned> bytes;

  Program program{
      .command =
          {.name = "tool",
           .summary = "Does things.",
           .arguments = {{.name = "-f,--flag", .target = &flag, .help = "raise it", .needs = "--board"},
                         {.name = "--board", .target = &board, .help = "a board", .file = "BOARD"},
                         {.name = "--colour", .target = &colour, .choices = {"red", "blue"}}},
           .commands = {{.name = "go",
                         .summary = "goes",
                         .arguments = {{.name = "--every", .target = &number, .range = {0.5, 10}},
                                       {.name = "-e,--each", .target = &each, .oneEach = true},
                                       {.name = "WORDS", .target = &words}},
                         .footer = "Examples:\n  tool go"},
                        {.name = "send",
                         .summary = "sends",
                         .arguments = {{.name = "address", .target = &address, .required = true, .range = {0, 255}},
                                       {.name = "bytes", .target = &bytes, .least = 1, .most = 2}}},
                        {.name = "dog",
                         .summary = "is fed",
                         .commands =
                             {{.name = "feed", .summary = "feeds", .arguments = {{.name = "WORD", .target = &word}}}},
                         .chosen = &verb,
                         .footer = "Woof"}},
           .chosen = &chosen},
      .version = "tool 1.2.3",
      .everywhere = true};

  Outcome Reads(std::vector<std::string> typed) {
    typed.insert(typed.begin(), "tool");
    std::vector<char*> argv;
    for (std::string& text : typed) argv.push_back(text.data());
    return Parse(program, static_cast<int>(argv.size()), argv.data());
  }
  Outcome::Kind KindOf(std::vector<std::string> typed) { return Reads(std::move(typed)).kind; }
};

TEST(Parse, FillsEveryKindOfTarget) {
  Tool tool;
  ASSERT_EQ(Outcome::kRun, tool.KindOf({"--board", "/dev/null", "-f", "--colour", "red", "go", "b", "d", "--every",
                                        "2.5", "-e", "a", "--each", "c"}));
  EXPECT_TRUE(tool.flag);
  EXPECT_EQ("/dev/null", tool.board);
  EXPECT_EQ("red", tool.colour);
  EXPECT_EQ("go", tool.chosen);
  EXPECT_EQ(2.5, tool.number);
  EXPECT_EQ((std::vector<std::string>{"a", "c"}), tool.each);
  EXPECT_EQ((std::vector<std::string>{"b", "d"}), tool.words);
}

TEST(Parse, LeavesTheNextWordWhereAnOptionTakesOneEach) {
  Tool tool;
  ASSERT_EQ(Outcome::kRun, tool.KindOf({"go", "-e", "a", "b", "--each=c", "d"}));
  EXPECT_EQ((std::vector<std::string>{"a", "c"}), tool.each);
  EXPECT_EQ((std::vector<std::string>{"b", "d"}), tool.words);
}

TEST(Parse, ReadsNumbersInBothNotations) {
  Tool tool;
  ASSERT_EQ(Outcome::kRun, tool.KindOf({"send", "0xA0", "1", "0x02"}));
  EXPECT_EQ(0xA0u, tool.address);
  EXPECT_EQ((std::vector<unsigned>{1, 2}), tool.bytes);
}

TEST(Parse, NamesTheCommandBelowACommand) {
  Tool tool;
  ASSERT_EQ(Outcome::kRun, tool.KindOf({"dog", "feed", "bone"}));
  EXPECT_EQ("dog", tool.chosen);
  EXPECT_EQ("feed", tool.verb);
  EXPECT_EQ("bone", tool.word);
}

TEST(Parse, TakesTheOptionsOfTheProgramBehindACommand) {
  Tool tool;
  EXPECT_EQ(Outcome::kRun, tool.KindOf({"go", "--colour", "blue"}));
  EXPECT_EQ("blue", tool.colour);
  tool.program.everywhere = false;
  EXPECT_EQ(Outcome::kWrong, tool.KindOf({"send", "1", "--colour", "blue"}));
}

TEST(Parse, RefusesWhatTheRowsForbid) {
  const std::vector<std::vector<std::string>> kMistakes = {
      {},                             // no command
      {"fly"},                        // no such command
      {"dog"},                        // no command below
      {"go", "--every", "0.4"},       // outside the range
      {"go", "--every", "10.5"},      //
      {"go", "--every", "x"},         // no number
      {"go", "--every", "nan"},       //
      {"go", "--every", "1e999"},     //
      {"go", "--each", ""},           // empty
      {"--colour", "green", "go"},    // none of the choices
      {"--board", "/nowhere", "go"},  // no file
      {"--flag", "go"},               // without what it needs
      {"send"},                       // required
      {"send", "256"},                // outside the range
      {"send", "1", "1", "2", "3"},   // too many
      {"go", "--unknown"},
  };
  for (const std::vector<std::string>& words : kMistakes) {
    const Outcome outcome = Tool().Reads(words);
    EXPECT_EQ(Outcome::kWrong, outcome.kind) << ::testing::PrintToString(words);
    EXPECT_NE("", outcome.error);
    EXPECT_TRUE(outcome.text.starts_with("tool: " + outcome.error + "\nTry 'tool")) << outcome.text;
  }
}

struct Sentence {
  std::vector<std::string> typed;
  const char* error;
};

TEST(Parse, SaysWhatIsWrong) {
  const Sentence kSentences[] = {
      {{"go", "--every", "nan"}, "--every: needs a number from 0.5 to 10, not 'nan'"},
      {{"send", "x"}, "address: needs a whole number from 0 to 255, not 'x'"},
      {{"send", "1", "-1"}, "bytes: needs a whole number from 0 to 4294967295, not '-1'"},
      {{"send", "1", "99999999999999999999"},
       "bytes: needs a whole number from 0 to 4294967295, not '99999999999999999999'"},
      {{"--board", "", "go"}, "--board: must not be empty"},
      {{"got"}, "there is no subcommand 'got' (did you mean 'go'?)"},
      {{"dog", "food"}, "there is no subcommand 'food' (did you mean 'feed'?)"},
      {{"dog", "zzzz"}, "there is no subcommand 'zzzz'"},
  };
  for (const Sentence& row : kSentences) EXPECT_EQ(row.error, Tool().Reads(row.typed).error);
}

TEST(Parse, ShowsNoControlCharacterOfWhatWasTyped) {
  EXPECT_EQ("--board: File does not exist: /\\x1B[2J\\xFF", Tool().Reads({"--board", "/\x1b[2J\xff", "go"}).error);
  EXPECT_EQ("there is no subcommand '\\x07a'", Tool().Reads({"\aa"}).error);
}

TEST(Parse, SetsFlagsInSpiteOfAMistake) {
  Tool tool;
  EXPECT_EQ(Outcome::kWrong, tool.KindOf({"go", "--unknown", "--flag", "--board", "/dev/null"}));
  EXPECT_TRUE(tool.flag);
}

TEST(Parse, PointsToTheHelpOfTheCommand) {
  EXPECT_EQ("tool: there is no subcommand 'food' (did you mean 'feed'?)\nTry 'tool dog --help'.\n",
            Tool().Reads({"dog", "food"}).text);
}

TEST(Parse, ShowsTheUsageThatARowGives) {
  Tool tool;
  tool.program.command.commands[1].usage = "ADDRESS [COUNT]";
  EXPECT_TRUE(tool.Reads({"send", "--help"}).text.starts_with("sends\nUsage: tool send [OPTIONS] ADDRESS [COUNT]\n"));
}

TEST(Parse, NamesTheCommandBeforeAMistake) {
  Tool tool;
  EXPECT_EQ(Outcome::kWrong, tool.KindOf({"go", "--unknown"}));
  EXPECT_EQ("go", tool.chosen);
}

TEST(Parse, AnswersForHelpAndVersion) {
  EXPECT_EQ("tool 1.2.3\n", Tool().Reads({"--version"}).text);
  const Outcome help = Tool().Reads({"go", "--help"});
  EXPECT_EQ(Outcome::kAnswer, help.kind);
  EXPECT_TRUE(help.text.starts_with("goes\nUsage: tool go [OPTIONS] [WORDS...]\n")) << help.text;
  EXPECT_TRUE(help.text.ends_with("\nExamples:\n  tool go\n")) << help.text;
}

TEST(Parse, ShowsAFooterForItsCommandAlone) {
  EXPECT_NE(std::string::npos, Tool().Reads({"dog", "--help"}).text.find("Woof"));
  EXPECT_EQ(std::string::npos, Tool().Reads({"dog", "feed", "--help"}).text.find("Woof"));
}

}  // namespace
}  // namespace commandline

// SPDX-License-Identifier: MIT
// What may be typed next at each place of a command line.
#include <gtest/gtest.h>

#include "commandline/Place.h"

namespace commandline {
namespace {

struct Tool {
  bool flag = false;
  std::string board, colour, name, verb, chosen;
  std::vector<std::string> words;

  Program program{
      .command = {.name = "tool",
                  .arguments = {{.name = "-b,--board", .target = &board, .help = "a board", .file = "BOARD"},
                                {.name = "--colour", .target = &colour, .choices = {"red", "blue"}}},
                  .commands = {{.name = "go",
                                .summary = "goes",
                                .arguments = {{.name = "NAME", .target = &name},
                                              {.name = "--flag", .target = &flag, .help = "raise it"},
                                              {.name = "WORDS", .target = &words}}},
                               {.name = "dog",
                                .summary = "is fed",
                                .commands = {{.name = "feed", .summary = "feeds"}},
                                .chosen = &verb}},
                  .chosen = &chosen},
      .version = "",
      .everywhere = true};

  Place At(const std::vector<std::string>& typed) const { return PlaceOf(program, typed); }
  std::vector<std::string> Words(const std::vector<std::string>& typed) const {
    std::vector<std::string> found;
    for (const Candidate& candidate : At(typed).candidates) found.push_back(candidate.word);
    return found;
  }
  std::string ArgumentAt(const std::vector<std::string>& typed) const {
    const Place place = At(typed);
    return place.argument == nullptr ? "" : place.argument->name;
  }
};

using Texts = std::vector<std::string>;

TEST(Place, CommandsWithTheirSummaries) {
  const Tool tool;
  EXPECT_EQ(Texts({"go", "dog"}), tool.Words({""}));
  EXPECT_EQ(Texts({"go", "dog"}), tool.Words({}));
  EXPECT_EQ("is fed", tool.At({"d"}).candidates.at(1).help);
  EXPECT_EQ(Texts({"feed"}), tool.Words({"dog", ""}));
}

TEST(Place, OptionsOfTheCommandAndOfTheTool) {
  const Tool tool;
  EXPECT_EQ(Texts({"-b", "--board", "--colour", "--help"}), tool.Words({"-"}));
  EXPECT_EQ(Texts({"-b", "--board", "--colour", "--flag", "--help"}), tool.Words({"go", "--f"}));
}

TEST(Place, OptionsOfTheToolStayThereWhereTheyAreNotKnownEverywhere) {
  Tool tool;
  tool.program.everywhere = false;
  EXPECT_EQ(Texts({"--flag", "--help"}), tool.Words({"go", "-"}));
}

TEST(Place, ChoicesOfAnOption) {
  const Tool tool;
  EXPECT_EQ(Texts({"red", "blue"}), tool.Words({"--colour", ""}));
  EXPECT_EQ(Texts({"red", "blue"}), tool.Words({"go", "--colour=r"}));
  EXPECT_EQ("--colour=", tool.At({"go", "--colour=r"}).attached);
  EXPECT_TRUE(tool.At({"--colour", ""}).isOption);
}

TEST(Place, WordsInTheirPlaces) {
  const Tool tool;
  EXPECT_EQ("NAME", tool.ArgumentAt({"go", ""}));
  EXPECT_FALSE(tool.At({"go", ""}).isOption);
  EXPECT_EQ("WORDS", tool.ArgumentAt({"go", "one", ""}));
  EXPECT_EQ("WORDS", tool.ArgumentAt({"go", "one", "two", "--flag", "three", ""}));
  EXPECT_EQ(Texts({"one", "two"}), tool.At({"go", "one", "two", ""}).words);
  EXPECT_EQ("go", tool.At({"go", "one", ""}).command);
}

TEST(Place, WordsOfOptionsAreNoneOfThem) {
  const Tool tool;
  EXPECT_EQ("NAME", tool.ArgumentAt({"--colour", "red", "go", "-b", "file", "--board=other", ""}));
  EXPECT_EQ("-b,--board", tool.ArgumentAt({"go", "-b", ""}));
}

TEST(Place, OptionsGivenBeforeReachTheirTargets) {
  const Tool tool;
  tool.At({"-b", "here.toml", "go", ""});
  EXPECT_EQ("here.toml", tool.board);
  tool.At({"go", "--board=there.toml", ""});
  EXPECT_EQ("there.toml", tool.board);
  tool.At({"go", "--board", "unfinished"});
  EXPECT_EQ("there.toml", tool.board);
}

TEST(Place, NothingWhereNothingMayStand) {
  const Tool tool;
  EXPECT_EQ(Texts(), tool.Words({"dog", "feed", ""}));
  EXPECT_EQ("", tool.ArgumentAt({"dog", "feed", ""}));
  EXPECT_EQ("", tool.ArgumentAt({"--unknown=x"}));
}

}  // namespace
}  // namespace commandline

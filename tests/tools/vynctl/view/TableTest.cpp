// SPDX-License-Identifier: MIT
// Aligned columns, colours, and lines side by side.
#include "view/Table.h"

#include <gtest/gtest.h>

namespace vynctl {
namespace {

using enum Table::Align;

constexpr Style kPlainStyle{.colour = false, .unicode = false, .width = 40};
constexpr Style kColourStyle{.colour = true, .unicode = true, .width = 40};

TEST(TableRender, AlignsNamesLeftAndNumbersRight) {
  Table table({kLeft, kRight, kLeft});
  table.Add({{"+12V"}, {"12.000"}, {"V"}});
  table.Add({{"CPU Core"}, {"-9.5"}, {"C"}});
  EXPECT_EQ("+12V      12.000  V\nCPU Core    -9.5  C\n", table.Render(kPlainStyle));
}

TEST(TableRender, LeavesNoSpaceAtTheEndOfALine) {
  Table table({kLeft, kRight, kLeft});
  table.Add({{"a"}, {"1"}, {""}});
  table.Add({{"bb"}, {""}, {""}});
  EXPECT_EQ("a   1\nbb\n", table.Render(kPlainStyle));
}

TEST(TableRender, CountsACharacterOfTwoBytesAsOneColumn) {
  Table table({kLeft, kLeft});
  table.Add({{"\u00B0"}, {"x"}});
  table.Add({{"C"}, {"y"}});
  EXPECT_EQ("\u00B0  x\nC  y\n", table.Render(kPlainStyle));
}

TEST(TableRender, PaintsTheTextAndNotThePadding) {
  Table table({kRight, kLeft});
  table.Add({{"1", Tone::kBad}, {"x"}});
  table.Add({{"22"}, {"y"}});
  EXPECT_EQ(" \x1b[31m1\x1b[0m  x\n22  y\n", table.Render(kColourStyle));
}

TEST(Paint, DoesNothingWithoutColour) { EXPECT_EQ("x", kPlainStyle.Paint(Tone::kBad, "x")); }

TEST(SideBySide, FillsColumnsDownwards) {
  EXPECT_EQ("  aa    cc\n  bb    dd\n", SideBySide({"aa", "bb", "cc", "dd"}, 14));
}

TEST(SideBySide, UsesOneColumnWhereTwoDoNotFit) { EXPECT_EQ("  aaaa\n  bbbb\n", SideBySide({"aaaa", "bbbb"}, 13)); }

TEST(SideBySide, DoesNotCountColours) {
  EXPECT_EQ("  \x1b[1maa\x1b[0m    bb\n", SideBySide({"\x1b[1maa\x1b[0m", "bb"}, 14));
}

}  // namespace
}  // namespace vynctl

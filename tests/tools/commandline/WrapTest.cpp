// SPDX-License-Identifier: MIT
// Lines on narrow terminals.
#include "commandline/Wrap.h"

#include <gtest/gtest.h>

namespace commandline {
namespace {

TEST(Columns, CountsCharactersAndNoColours) {
  EXPECT_EQ(0u, Columns(""));
  EXPECT_EQ(5u, Columns("45 \u00B0C"));
  EXPECT_EQ(3u, Columns("\x1b[31mbad\x1b[0m"));
}

TEST(Wrapped, LeavesLinesThatFit) { EXPECT_EQ("one two\n\nthree\n", Wrapped("one two\n\nthree\n", 7)); }

TEST(Wrapped, BreaksAtBlanksAndIndentsTheRest) {
  EXPECT_EQ("one two\n  three\n  four", Wrapped("one two three four", 7));
  EXPECT_EQ("  one\n    two", Wrapped("  one two", 8));
  EXPECT_EQ("a\n  b\nc\n", Wrapped("a           b\nc\n", 10));
}

TEST(Wrapped, LeavesAWordThatIsLongerThanTheWidthWhole) {
  EXPECT_EQ("a\n bcdefgh\n i", Wrapped("a bcdefgh i", 3));
  EXPECT_EQ("abcdefgh", Wrapped("abcdefgh", 3));
}

TEST(Wrapped, DoesNotCountColours) {
  EXPECT_EQ("\x1b[31mone\x1b[0m two\n  six", Wrapped("\x1b[31mone\x1b[0m two six", 7));
}

}  // namespace
}  // namespace commandline

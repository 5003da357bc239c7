// SPDX-License-Identifier: MIT
// vynlib/vynlib.hpp on a board whose firmware says nothing.
#include "Reference.h"

using testing::IsEmpty;
using vynlib::Board;
using vynlib::Result;

TEST(BareBoard, OffersNothing) {
  setenv("VYNLIB_BOARD", BARE_BOARD, 1);
  const Result<Board> board = Board::Open(Alone());
  ASSERT_TRUE(board);
  EXPECT_FALSE(board->tablesFound());
  EXPECT_THAT(board->voltages(), IsEmpty());
  EXPECT_THAT(board->features(), IsEmpty());
  EXPECT_THAT(board->fans(), IsEmpty());
  EXPECT_FALSE(board->watchdog().Offered());
  EXPECT_EQ(board->voltage("+12V").Read().error().words, "voltage: the board does not offer it");
  EXPECT_EQ(board->feature("com-type").Instances().error().code, 0x200u);
  EXPECT_EQ(board->fan("CPU Fan").Modes().error().code, 0x1800u);
  EXPECT_EQ(board->watchdog().Start(30).error().code, 0x1700u);
}

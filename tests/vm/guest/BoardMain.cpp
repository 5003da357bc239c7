// SPDX-License-Identifier: MIT
// Runs the tests of the guest on a board with tables.
#include "BoardEnvironment.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  ::testing::AddGlobalTestEnvironment(new BoardEnvironment);
  return RUN_ALL_TESTS();
}

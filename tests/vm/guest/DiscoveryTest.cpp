// SPDX-License-Identifier: MIT
// Start-up over the firmware's real tables: root pointer, RSDT, IADT, IAMT and the BIOS information record.
#include "BoardEnvironment.h"

TEST(Init, SucceedsAndPrintsTheModelNameOfTheBiosInformationRecord) {
  EXPECT_EQ(1, BoardEnvironment::initResult);
  EXPECT_EQ(0u, BoardEnvironment::initCode);
  EXPECT_EQ("ModelName::VYN-Q35\n", BoardEnvironment::initOutput);
}

TEST(Init, FindsBothVendorTables) {
  EXPECT_EQ(1, VynLibTableSupported(2));
  EXPECT_EQ(0, VynLibTableSupported(1));
}

// SPDX-License-Identifier: MIT
// Where the tables of a machine were looked for, in words.
#include "board/BoardTables.h"

#include <gtest/gtest.h>

#include "doctor/FakeMachine.h"

namespace vynctl {
namespace {

using doctor::AcpiTable;
using doctor::FakeMachine;

TEST(SeekTables, NamesTheDeviceThatDoesNotOpen) {
  const FakeMachine machine;
  const TablesSought sought = SeekTables(machine);
  EXPECT_EQ("nowhere", sought.source);
  EXPECT_EQ("not in /sys/firmware/acpi/tables; the library cannot read it; /dev/mem: not there", sought.iadt);
  EXPECT_FALSE(sought.hasIadt);
}

TEST(SeekTables, TellsTheKernelsCopiesApart) {
  const FakeMachine machine;
  machine.Poke(0xFFFF0, std::string(16, '\0'));
  machine.Write("/sys/firmware/acpi/tables/IADT", AcpiTable("IADT", "1234"));
  const TablesSought sought = SeekTables(machine);
  EXPECT_EQ("the kernel's copies (/sys/firmware/acpi/tables)", sought.source);
  EXPECT_EQ(
      "40 bytes in /sys/firmware/acpi/tables; the library is served this copy because there is no root pointer below 1 "
      "MiB",
      sought.iadt);
  EXPECT_TRUE(sought.hasIadt);
  EXPECT_EQ(
      "not in /sys/firmware/acpi/tables; the library is served the kernel's copies because there is no root pointer "
      "below 1 MiB",
      sought.iamt);
  EXPECT_FALSE(sought.hasIamt);
}

}  // namespace
}  // namespace vynctl

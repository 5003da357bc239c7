// SPDX-License-Identifier: MIT
// What goes into a bundle, and what is said of what does not.
#include "doctor/Bundle.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "Board.h"

namespace vynctl::doctor {
namespace {

using testing::ElementsAre;

class BundleTest : public testing::Test {
 protected:
  std::vector<BundleFile> Files() const { return CollectBundle(board, LookAtTables(board), "{}\n"); }

  /// The content of a file, or in brackets why it is missing.
  std::string Of(const std::string& name) const {
    for (const BundleFile& file : Files()) {
      if (file.name == "vynctl-doctor/" + name) return file.missing.empty() ? file.content : '(' + file.missing + ')';
    }
    return "(no such file)";
  }

  Board board;
};

TEST_F(BundleTest, HoldsTheTablesAndWhatSupportAsksFor) {
  EXPECT_EQ(Of("doctor.json"), "{}\n");
  EXPECT_EQ(Of("iadt.bin"), AcpiTable("IADT", BoardRecords()));
  EXPECT_EQ(Of("iamt.bin").substr(0, 4), "IAMT");
  EXPECT_EQ(Of("biosinfo.bin").substr(10, 9), std::string("VYN-R900 ", 9));
  EXPECT_EQ(Of("kernel-version.txt"), "Linux version 6.1.0-30-amd64 (debian-kernel@lists.example.org)\n");
}

TEST_F(BundleTest, KeepsTheLinesOfTheLogThatConcernAcpi) {
  board.Write("/dev/kmsg",
              "6,1,0,-;BIOS-e820: [mem 0x07fe0000-0x07ffffff] ACPI data\n"
              "6,2,12345678,-;ACPI: IADT 0x0000000007FE1000 000150\n"
              " SUBSYSTEM=acpi\n"
              " DEVICE=+acpi:ACPI0003:00\n"
              "6,3,12345679,-,caller=T1;usb 1-1: new device\n"
              "4,4,98,c,more=1;ACPI: last");
  EXPECT_EQ(Of("kernel-log.txt"),
            "[    0.000000] BIOS-e820: [mem 0x07fe0000-0x07ffffff] ACPI data\n"
            "[   12.345678] ACPI: IADT 0x0000000007FE1000 000150\n"
            "[    0.000098] ACPI: last\n");
}

TEST_F(BundleTest, TellsWhyAFileIsMissing) {
  board.closed["/dev/kmsg"] = EPERM;
  board.closed["/dev/mem"] = EPERM;
  board.closed["/sys/firmware/acpi/tables/IADT"] = EACCES;
  EXPECT_EQ(Of("kernel-log.txt"), "(Operation not permitted (EPERM))");
  EXPECT_EQ(Of("iadt.bin"), "(Permission denied (EACCES))");
  EXPECT_EQ(Of("biosinfo.bin"), "(there is no sound one)");
  board.closed.erase("/dev/kmsg");
  EXPECT_EQ(Of("kernel-log.txt"), "(it says nothing)");
}

TEST_F(BundleTest, HoldsTheKernelsCopyWhereMemoryCannotBeRead) {
  board.closed["/dev/mem"] = EPERM;
  EXPECT_EQ(Of("iadt.bin"), AcpiTable("IADT", BoardRecords()));
}

TEST_F(BundleTest, HoldsTheTableThatTheLibraryWorksOn) {
  board.Write("/sys/firmware/acpi/tables/IADT", AcpiTable("IADT", ""));
  EXPECT_EQ(Of("iadt.bin"), AcpiTable("IADT", BoardRecords()));
}

TEST_F(BundleTest, IsPackedWithoutWhatIsMissing) {
  const std::vector<BundleFile> files = {{.name = "a", .holds = "", .content = "xyz"},
                                         {.name = "b", .holds = "", .content = "", .missing = "why"}};
  const std::string archive = PackBundle(files, 0);
  EXPECT_EQ(archive.size(), 4u * 512);
  EXPECT_EQ(archive[0], 'a');
}

}  // namespace
}  // namespace vynctl::doctor

// SPDX-License-Identifier: MIT
// What vynctl doctor finds on a machine with a board, whatever the firmware.
#include <nlohmann/json.hpp>

#include "BoardEnvironment.h"
#include "FirmwareKind.h"

using guest::ThisFirmware;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

struct Found {
  std::string text, verdict;
};

/// The doctor is asked once: nothing that it looks at changes while the tests run.
const nlohmann::json& Document() {
  static const nlohmann::json document =
      nlohmann::json::parse(guest::Run("vynctl doctor --json").output, nullptr, false);
  return document;
}

/// A finding by its identifier.
Found Finding(const std::string& id) {
  if (Document().is_discarded()) return {"no JSON", ""};
  for (const nlohmann::json& finding : Document()["doctor"]["findings"])
    if (finding["id"] == id) return {finding["found"], finding["verdict"]};
  return {"no such finding", ""};
}

/// Why the library is served the kernel's copies on firmware of this kind; empty where it reads memory.
std::string WhyCopies() {
  if (!ThisFirmware().pointerBelow1MiB) return "there is no root pointer below 1 MiB";
  return ThisFirmware().tablesReachable ? "" : "the kernel refuses /dev/mem at 0x";
}

}  // namespace

// The ports of the table are those of the kernel's clock and serial ports: warnings.
TEST(Doctor, FindsThatTheBoardCanBeUsed) { EXPECT_EQ(1, guest::Run("vynctl doctor").status); }

TEST(Doctor, FindsTheHardwareOpen) {
  for (const char* id : {"user", "capability", "iopl", "filter", "lockdown", "dev-mem", "low-memory", "table-memory",
                         "root-pointer", "iadt", "iamt", "library"})
    EXPECT_EQ("ok", Finding(id).verdict) << id << ": " << Finding(id).text;
  EXPECT_EQ("can be raised", Finding("iopl").text);
}

TEST(Doctor, TellsWhereTheLibraryTakesTheTablesFrom) {
  const std::string why = WhyCopies();
  for (const char* id : {"iadt", "iamt"})
    EXPECT_THAT(Finding(id).text, HasSubstr(why.empty() ? "the library reads it from memory (/dev/mem) at 0x"
                                                        : "the library is served this copy because " + why));
}

TEST(Doctor, NamesTheFirmware) {
  const bool bios = ThisFirmware().pointerBelow1MiB;
  EXPECT_EQ(bios ? "BIOS" : "UEFI", Finding("firmware").text);
  EXPECT_THAT(Finding("root-pointer").text, StartsWith(bios ? "at 0xF" : "none below 1 MiB"));
}

TEST(Doctor, NamesTheModelAndTheController) {
  EXPECT_THAT(Finding("bios-record").text, EndsWith("model 'VYN-Q35'"));
  EXPECT_EQ("8086:2930 at 0000:00:1f.3, record 'Intel ICH7/ICH8/ICH9/ICH10'", Finding("smbus-controller").text);
  EXPECT_THAT(Finding("virtual-machine").text, StartsWith("yes, QEMU"));
}

// The NVRAM's ports 0x70 and 0x71 are those of the clock.
TEST(Doctor, NamesTheDriverThatOwnsPortsOfTheTable) {
  EXPECT_THAT(Finding("port-owner/70").text, HasSubstr("the table touches 0x70, 0x71"));
  EXPECT_EQ("warning", Finding("port-owner/70").verdict);
}

TEST(Doctor, LeavesThePrivilegeLevelOfItsParentAlone) {
  // The shell that starts it has inherited the level from this program; a port access behind it still works.
  EXPECT_EQ(1, guest::Run("vynctl doctor > /dev/null").status);
  guest::SetNvram(0x60, 0x5A);
  EXPECT_EQ(0x5A, guest::Nvram(0x60));
}

TEST(Doctor, PacksTheTablesAndTheKernelsLog) {
  EXPECT_EQ(1, guest::Run("cd /tmp && rm -f report.tar && vynctl doctor --bundle report.tar > /dev/null").status);
  EXPECT_EQ(0, guest::Run("cd /tmp && tar xf report.tar").status);
  EXPECT_EQ(0, guest::Run("cmp /tmp/vynctl-doctor/iadt.bin /sys/firmware/acpi/tables/IADT").status);
  EXPECT_EQ(0, guest::Run("cmp /tmp/vynctl-doctor/iamt.bin /sys/firmware/acpi/tables/IAMT").status);
  EXPECT_THAT(guest::Run("cat /tmp/vynctl-doctor/kernel-log.txt").output, HasSubstr("ACPI: IADT 0x"));
}

// SPDX-License-Identifier: MIT
// What an ordinary user needs to drive the board: a capability, and a group that opens the devices and the kernel's
// copies of the tables, as the files of packaging/access give them. The memory of the tables is hidden here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "Machine.h"

using ::testing::HasSubstr;

namespace {

constexpr gid_t kGroup = 990;
constexpr char kMemory[] = "/dev/mem";
constexpr char kRegisters[] = "/dev/cpu/0/msr";
constexpr char kLock[] = "/run/lock/vynlib.lock";
const std::filesystem::path kTables = "/sys/firmware/acpi/tables";

void Give(const std::filesystem::path& file, gid_t group, mode_t mode) {
  ASSERT_EQ(0, chown(file.c_str(), 0, group)) << file;
  ASSERT_EQ(0, chmod(file.c_str(), mode)) << file;
}

void GiveTables(gid_t group, mode_t mode) {
  for (const auto& entry : std::filesystem::directory_iterator(kTables))
    if (entry.is_regular_file()) Give(entry.path(), group, mode);
}

/// A command as a user of the group, with the capabilities that setpriv is told to keep. By its path, for the guest's
/// shell has a smaller one of that name built in.
guest::CommandResult RunAsUser(const std::string& capabilities, const std::string& command) {
  return guest::Run("/usr/bin/setpriv --reuid=991 --regid=990 --clear-groups --no-new-privs " + capabilities + " " +
                    command + " 2>&1");
}

const std::string kOneCapability =
    "--inh-caps=-all,+sys_rawio --ambient-caps=-all,+sys_rawio --bounding-set=-all,+sys_rawio";
const std::string kNoCapability = "--bounding-set=-all";

class OrdinaryUser : public ::testing::Test {
 protected:
  void SetUp() override {
    guest::Run("modprobe msr");
    std::filesystem::create_directories("/run/lock");
    std::ofstream(kLock, std::ios::app);
    Give(kLock, kGroup, 0660);
    Give(kMemory, kGroup, 0660);
    Give(kRegisters, kGroup, 0640);
    GiveTables(kGroup, 0440);
  }
};

}  // namespace

TEST_F(OrdinaryUser, ReadsAndChangesTheBoardWithTheCapability) {
  EXPECT_THAT(RunAsUser(kOneCapability, "vynctl info").output, HasSubstr("VYN-Q35"));
  EXPECT_EQ(0, RunAsUser(kOneCapability, "vynctl set lvds-state 2").status);
  EXPECT_EQ("2\n", RunAsUser(kOneCapability, "vynctl get lvds-state").output);
}

TEST_F(OrdinaryUser, StartsNothingWithTheGroupAlone) {
  const guest::CommandResult result = RunAsUser(kNoCapability, "vynctl get lvds-state");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("Please run as root!"));
}

TEST_F(OrdinaryUser, OpensDevicesOnlyWithTheCapability) {
  const auto open = [](const std::string& capabilities, const std::string& file) {
    return RunAsUser(capabilities, "sh -c ': < " + file + "'").status;
  };
  for (const std::string device : {kMemory, kRegisters}) {
    EXPECT_EQ(0, open(kOneCapability, device)) << device;
    EXPECT_NE(0, open(kNoCapability, device)) << device;
  }
  EXPECT_EQ(0, open(kNoCapability, kTables / "IADT"));
}

TEST_F(OrdinaryUser, FindsNoTablesThatOnlyRootMayRead) {
  GiveTables(0, 0400);
  const guest::CommandResult result = RunAsUser(kOneCapability, "vynctl get lvds-state");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("0x600"));
}

TEST_F(OrdinaryUser, FindsNoTablesWithTheCapabilityAlone) {
  Give(kMemory, 0, 0640);
  const guest::CommandResult result = RunAsUser(kOneCapability, "vynctl get lvds-state");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("0x600"));
}

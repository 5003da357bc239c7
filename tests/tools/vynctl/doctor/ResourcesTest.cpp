// SPDX-License-Identifier: MIT
// Who owns ports and memory, after lists like the kernel's.
#include "doctor/Resources.h"

#include <gmock/gmock.h>

#include "FakeMachine.h"

namespace vynctl::doctor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kPorts[] =
    "0000-0cf7 : PCI Bus 0000:00\n"
    "  0070-0077 : rtc0\n"
    "  0290-0297 : pnp 00:03\n"
    "    0295-0296 : it87\n"
    "  0400-047f : 0000:00:1f.0\n"
    "    0400-0403 : ACPI PM1a_EVT_BLK\n"
    "    0460-047f : iTCO_wdt.0.auto\n"
    "      0460-047f : iTCO_wdt\n"
    "  0500-05ff : gpio_ich.1.auto\n"
    "0cf8-0cff : PCI conf1\n";

class ResourcesTest : public testing::Test {
 protected:
  std::vector<std::string> Owners(uint64_t first, uint64_t last) const {
    std::vector<std::string> names;
    const Resources resources(machine, "/proc/ioports");
    for (const Resource* owner : resources.Owners({first, last})) names.push_back(owner->name);
    return names;
  }

  FakeMachine machine;
};

TEST_F(ResourcesTest, GiveTheInnermostOwner) {
  machine.Write("/proc/ioports", kPorts);
  EXPECT_THAT(Owners(0x295, 0x295), ElementsAre("it87"));
  EXPECT_THAT(Owners(0x296, 0x299), ElementsAre("it87"));
  EXPECT_THAT(Owners(0x464, 0x464), ElementsAre("iTCO_wdt"));
}

TEST_F(ResourcesTest, PassOverWhatIsNoDriver) {
  machine.Write("/proc/ioports", kPorts);
  EXPECT_THAT(Owners(0x290, 0x294), IsEmpty());
  EXPECT_THAT(Owners(0x297, 0x299), IsEmpty());
  EXPECT_THAT(Owners(0x410, 0x410), IsEmpty());
  EXPECT_THAT(Owners(0x500, 0x500), IsEmpty());
  EXPECT_THAT(Owners(0xCF8, 0xCF8), IsEmpty());
  EXPECT_THAT(Owners(0x1000, 0x1000), IsEmpty());
}

TEST_F(ResourcesTest, GiveEveryOwnerOfARange) {
  machine.Write("/proc/ioports", kPorts);
  EXPECT_THAT(Owners(0x60, 0x4FF), ElementsAre("rtc0", "it87", "ACPI PM1a_EVT_BLK", "iTCO_wdt"));
}

TEST_F(ResourcesTest, GiveTheOuterOwnerWhereNobodyIsInside) {
  machine.Write("/proc/ioports", "0290-0297 : nct6775\n  0295-0296 : inner\n");
  EXPECT_THAT(Owners(0x290, 0x290), ElementsAre("nct6775"));
  EXPECT_THAT(Owners(0x295, 0x295), ElementsAre("inner"));
}

TEST_F(ResourcesTest, AreHiddenWhereEveryAddressIsZero) {
  machine.Write("/proc/ioports", "0000-0000 : PCI Bus 0000:00\n  0000-0000 : it87\n");
  EXPECT_TRUE(Resources(machine, "/proc/ioports").Hidden());
  EXPECT_TRUE(Resources(machine, "/proc/none").Hidden());
  machine.Write("/proc/ioports", kPorts);
  EXPECT_FALSE(Resources(machine, "/proc/ioports").Hidden());
}

TEST_F(ResourcesTest, PassOverLinesOfAnotherForm) {
  machine.Write("/proc/ioports", "\nnothing\n12\n12-\n12-13\n12-13: a\n12-zz : b\n0012-0013 : c\n  0012-0012 : ");
  EXPECT_THAT(Owners(0x12, 0x13), ElementsAre("c"));
}

}  // namespace
}  // namespace vynctl::doctor

// SPDX-License-Identifier: MIT
// The search for PCI functions.
#include "hw/TReadWrite.h"

#include <string>
#include <vector>

#include "tests/unit/hw/Hardware.h"

using hwtest::Hardware;
using hwtest::RefusalsPrinted;
using sim::Access;
using sim::In32;
using sim::In8;
using sim::Out32;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr unsigned kNotFound = 0xFFFFFFFF;

/// A function with identifiers, class (24 bits) and header type.
sim::PciFunction& Add(sim::Board& board, unsigned bus, unsigned device, unsigned function, uint32_t id,
                      uint32_t classCode, bool multiFunction = false) {
  return board.Pci(bus, device, function)
      .Set(0x00, 4, id)
      .Set(0x08, 4, classCode << 8 | 0x05)
      .Set(0x0E, 1, multiFunction ? 0x80 : 0x00);
}

/// What the library did with the function that the latch selects by `latch` (register bits 0).
std::vector<Access> AccessesTo(const sim::Board& board, uint32_t latch) {
  std::vector<Access> chosen;
  const auto log = board.PortLog();
  for (size_t i = 0; i + 1 < log.size(); i += 2)
    if ((log[i].value & 0xFFFFFF00) == latch) chosen.insert(chosen.end(), {log[i], log[i + 1]});
  return chosen;
}

struct IdCase {
  const char* name;
  unsigned wanted;
  unsigned char mode;
  bool matches;
};

/// Against identifier 0x29308086 and class 0x0C0500.
const IdCase kIdCases[] = {
    {"DeviceExactly", 0x29308086, 0, true},
    {"DeviceOfAnyVendor", 0x2930FFFF, 0, true},
    {"AnyDeviceOfTheVendor", 0xFFFF8086, 0, true},
    {"NotAnyDeviceOfAnyVendor", 0xFFFFFFFF, 0, false},
    {"NotHalfAVendorWildcard", 0x2930FF86, 0, false},
    {"NotAnotherDevice", 0x29318086, 0, false},
    {"NotAnotherVendor", 0x29301022, 0, false},
    {"NotAnyDeviceOfAnotherVendor", 0xFFFF1022, 0, false},
    {"ClassExactly", 0x0C0500, 1, true},
    {"ClassOfAnyInterface", 0x0C05FF, 1, true},
    {"ClassOfAnySubclass", 0x0CFF00, 1, true},
    {"ClassOfAnyBase", 0xFF0500, 1, true},
    {"ClassByBaseAlone", 0x0CFFFF, 1, true},
    {"ClassBySubclassAlone", 0xFF05FF, 1, true},
    {"ClassByInterfaceAlone", 0xFFFF00, 1, true},
    {"NotAllThreeClassBytesAtOnce", 0xFFFFFF, 1, false},
    {"NotAnotherInterface", 0x0C0501, 1, false},
    {"NotAnotherSubclass", 0x0C03FF, 1, false},
    {"NotAnotherBase", 0x0605FF, 1, false},
    {"NotMoreThan24Bits", 0x010C0500, 1, false},
};

class PciIdentifier : public testing::TestWithParam<IdCase> {
 protected:
  PciIdentifier() { Add(hw.board, 0, 0x1F, 3, 0x29308086, 0x0C0500); }
  Hardware hw;
};

}  // namespace

TEST_P(PciIdentifier, IsMatchedBySearch) {
  hw.board.Pci(0, 0x1F, 0).Set(0x00, 4, 0x12345678).Set(0x08, 4, 0x06070800).Set(0x0E, 1, 0x80);
  for (const unsigned function : {1u, 2u, 4u, 5u, 6u, 7u}) hw.board.Pci(0, 0x1F, function).Set(0x08, 4, 0x01020300);
  EXPECT_EQ(hw.rw.FindPci(GetParam().wanted, 0, GetParam().mode), GetParam().matches ? 0x00FBu : kNotFound);
}

TEST_P(PciIdentifier, IsMatchedByTheSingleFunctionTest) {
  EXPECT_EQ(hw.rw.FindPciCheckId(0, 0x1F, 3, GetParam().wanted, GetParam().mode), GetParam().matches);
}

INSTANTIATE_TEST_SUITE_P(Every, PciIdentifier, testing::ValuesIn(kIdCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(FindPci, ReadsTwoPortsPerSlotOfAnEmptyMachine) {
  Hardware hw;
  EXPECT_EQ(hw.rw.FindPci(0x29308086, 0, 0), kNotFound);
  const auto log = hw.board.Log();
  ASSERT_EQ(log.size(), 16384u);
  for (unsigned slot = 0; slot < 8192; ++slot) {
    // Bus << 16 and device << 11 of slot bus * 32 + device.
    ASSERT_EQ(log[2 * slot], Out32(0xCF8, 0x80000000 + slot * 0x800));
    ASSERT_EQ(log[2 * slot + 1], In32(0xCFC, 0xFFFFFFFF));
  }
}

TEST(FindPci, ReadsPresenceHeaderTypeAndThenTheModesRegister) {
  Hardware hw;
  Add(hw.board, 0, 0, 0, 0x12348086, 0x060000);
  EXPECT_EQ(hw.rw.FindPci(0x060000, 0, 1), 0u);
  EXPECT_THAT(hw.board.Log(), ElementsAre(Out32(0xCF8, 0x80000000), In32(0xCFC, 0x12348086), Out32(0xCF8, 0x8000000C),
                                          In8(0xCFE, 0x00), Out32(0xCF8, 0x80000008), In32(0xCFC, 0x06000005)));
}

TEST(FindPci, TestsOnlyFunctionZeroOfASingleFunctionDevice) {
  Hardware hw;
  Add(hw.board, 0, 2, 0, 0x11118086, 0x030000);
  Add(hw.board, 0, 2, 1, 0x22228086, 0x0C0500);
  EXPECT_EQ(hw.rw.FindPci(0x22228086, 0, 0), kNotFound);
  for (uint32_t function = 1; function < 8; ++function)
    EXPECT_THAT(AccessesTo(hw.board, 0x80001000 + (function << 8)), IsEmpty());
}

TEST(FindPci, DoesNotTestAnAbsentDevicesHigherFunctions) {
  Hardware hw;
  Add(hw.board, 0, 2, 1, 0x22228086, 0x0C0500);
  EXPECT_EQ(hw.rw.FindPci(0x22228086, 0, 0), kNotFound);
}

TEST(FindPci, TestsEightFunctionsOfAMultiFunctionDevice) {
  Hardware hw;
  Add(hw.board, 0, 2, 0, 0x11118086, 0x030000, true);
  Add(hw.board, 0, 2, 7, 0x22228086, 0x0C0500);
  EXPECT_EQ(hw.rw.FindPci(0x22228086, 0, 0), 0x0017u);
}

TEST(FindPci, DoesNotTestHigherFunctionsForPresence) {
  Hardware hw;
  Add(hw.board, 0, 2, 0, 0x11118086, 0x030000, true);
  // Function 1 is absent: its class reads 0xFFFFFF, which is what is wanted.
  EXPECT_EQ(hw.rw.FindPci(0xFFFFFF, 0, 1), 0x0011u);
  EXPECT_THAT(AccessesTo(hw.board, 0x80001100), ElementsAre(Out32(0xCF8, 0x80001108), In32(0xCFC, 0xFFFFFFFF)));
}

TEST(FindPci, TakesMatchesInTheOrderOfBusDeviceAndFunction) {
  Hardware hw;
  Add(hw.board, 1, 0, 0, 0x29308086, 0);
  Add(hw.board, 0, 31, 1, 0x29308086, 0);
  Add(hw.board, 0, 31, 0, 0x29308086, 0, true);
  Add(hw.board, 0, 4, 0, 0x29308086, 0);
  Add(hw.board, 255, 31, 0, 0x29308086, 0);
  EXPECT_EQ(hw.rw.FindPci(0x29308086, 0, 0), 0x0020u);
  EXPECT_EQ(hw.rw.FindPci(0x29308086, 1, 0), 0x00F8u);
  EXPECT_EQ(hw.rw.FindPci(0x29308086, 2, 0), 0x00F9u);
  EXPECT_EQ(hw.rw.FindPci(0x29308086, 3, 0), 0x0100u);
  EXPECT_EQ(hw.rw.FindPci(0x29308086, 4, 0), 0xFFF8u);
  EXPECT_EQ(hw.rw.FindPci(0x29308086, 5, 0), kNotFound);
}

TEST(FindPci, CachesNothing) {
  Hardware hw;
  EXPECT_EQ(hw.rw.FindPci(0x29308086, 0, 0), kNotFound);
  Add(hw.board, 0, 0, 0, 0x29308086, 0);
  EXPECT_EQ(hw.rw.FindPci(0x29308086, 0, 0), 0u);
}

TEST(FindPci, WithoutPrivilegePrintsOncePerSlot) {
  Hardware hw;
  hw.rw.IoplFailed = 1;
  unsigned found = 0;
  EXPECT_EQ(RefusalsPrinted([&] { found = hw.rw.FindPci(0x29308086, 0, 0); }), 8192);
  EXPECT_EQ(found, kNotFound);
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

TEST(FindPciDevice, FindsTheFirstOfAVendor) {
  Hardware hw;
  Add(hw.board, 0, 0, 0, 0x14801022, 0x060000);
  Add(hw.board, 0, 3, 0, 0x11118086, 0x060000);
  Add(hw.board, 0, 5, 0, 0x22228086, 0x060000);
  EXPECT_EQ(hw.rw.FindPciDevice(0xFFFF8086), 0x0018u);
  EXPECT_EQ(hw.rw.FindPciDevice(0xFFFF8086, 0), 0x0018u);
  EXPECT_EQ(hw.rw.FindPciDevice(0xFFFF8086, 1), 0x0028u);
  EXPECT_EQ(hw.rw.FindPciDevice(0xFFFF8086, 2), kNotFound);
}

TEST(FindPciClass, FindsTheFirstOfAClass) {
  Hardware hw;
  Add(hw.board, 0, 0, 0, 0x0C0500FF, 0x060000);
  Add(hw.board, 0, 3, 0, 0x11118086, 0x0C0501);
  Add(hw.board, 0, 5, 0, 0x22228086, 0x0C0500);
  EXPECT_EQ(hw.rw.FindPciClass(0x0C0500), 0x0028u);
  EXPECT_EQ(hw.rw.FindPciClass(0x0C05FF), 0x0018u);
  EXPECT_EQ(hw.rw.FindPciClass(0x0C05FF, 1), 0x0028u);
  EXPECT_EQ(hw.rw.FindPciClass(0x0C05FF, 2), kNotFound);
}

TEST(FindPciCheckId, ReadsTheModesRegisterOnce) {
  Hardware hw;
  Add(hw.board, 0, 0x1F, 3, 0x29308086, 0x0C0500);
  EXPECT_TRUE(hw.rw.FindPciCheckId(0, 0x1F, 3, 0x0C0500, 1));
  EXPECT_THAT(hw.board.Log(), ElementsAre(Out32(0xCF8, 0x8000FB08), In32(0xCFC, 0x0C050005)));
}

TEST(FindPciCheckId, KnowsNoOtherMode) {
  Hardware hw;
  Add(hw.board, 0, 0, 0, 0x29308086, 0x0C0500);
  EXPECT_FALSE(hw.rw.FindPciCheckId(0, 0, 0, 0x29308086, 2));
  EXPECT_FALSE(hw.rw.FindPciCheckId(0, 0, 0, 0x0C0500, 0xFF));
}

TEST(FindPciCheckId, WithoutPrivilegePrintsOncePerReadAndFailsWhateverIsWanted) {
  Hardware hw;
  hw.rw.IoplFailed = 1;
  struct Case {
    unsigned wanted;
    unsigned char mode;
    int messages;
  };
  // What is read counts as all ones, which match nothing, not even all ones; a mode that is not known reads nothing.
  for (const Case& each :
       {Case{0x29308086, 0, 1}, Case{0xFFFFFFFF, 0, 1}, Case{0xFFFFFF, 1, 1}, Case{0xFFFFFFFF, 2, 0}}) {
    bool result = true;
    EXPECT_EQ(RefusalsPrinted([&] { result = hw.rw.FindPciCheckId(0, 0, 0, each.wanted, each.mode); }), each.messages);
    EXPECT_FALSE(result) << each.wanted;
  }
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

TEST(FindPciCheckId, MatchesAnAbsentFunctionByAllOnes) {
  Hardware hw;
  EXPECT_TRUE(hw.rw.FindPciCheckId(0, 0, 0, 0xFFFFFFFF, 0));
  EXPECT_TRUE(hw.rw.FindPciCheckId(0, 0, 0, 0xFFFFFF, 1));
}

TEST(PciSequence, TouchesNothing) {
  Hardware hw;
  EXPECT_EQ(RefusalsPrinted([&] { hw.rw.PciSequence(nullptr); }), 0);
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

namespace {

struct Capability {
  unsigned offset, id, next;
};

/// A function at 0:2.0 (or another) with a capability list that starts at the first one given.
sim::PciFunction& AddCapabilities(sim::PciFunction& function, const std::vector<Capability>& list) {
  function.Set(0x06, 1, 0x10).Set(0x34, 1, list.front().offset);
  for (const Capability& each : list) function.Set(each.offset, 1, each.id).Set(each.offset + 1, 1, each.next);
  return function;
}

}  // namespace

TEST(FindPciCapabilityDevice, WritesTheOffsetOfTheFirstCapability) {
  Hardware hw;
  AddCapabilities(Add(hw.board, 0, 2, 0, 0x11118086, 0), {{0x50, 0x01, 0x00}});
  unsigned char offset = 0xEE;
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x01, &offset, 0), 0x0010u);
  EXPECT_EQ(offset, 0x50);
}

TEST(FindPciCapabilityDevice, ReadsPresenceHeaderTypePresenceStatusAndTheList) {
  Hardware hw;
  AddCapabilities(Add(hw.board, 0, 0, 0, 0x11118086, 0), {{0x50, 0x01, 0x80}, {0x80, 0x10, 0x00}});
  unsigned char offset = 0;
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x10, &offset, 0), 0u);
  EXPECT_EQ(offset, 0x80);
  EXPECT_THAT(hw.board.Log(), ElementsAre(Out32(0xCF8, 0x80000000), In32(0xCFC, 0x11118086),  // the slot
                                          Out32(0xCF8, 0x8000000C), In8(0xCFE, 0x00),         // header type
                                          Out32(0xCF8, 0x80000000), In32(0xCFC, 0x11118086),  // the function
                                          Out32(0xCF8, 0x80000004), In8(0xCFE, 0x10),         // status
                                          Out32(0xCF8, 0x80000034), In8(0xCFC, 0x50),         // pointer
                                          Out32(0xCF8, 0x80000050), In8(0xCFC, 0x01),         // identifier
                                          Out32(0xCF8, 0x80000050), In8(0xCFD, 0x80),         // next
                                          Out32(0xCF8, 0x80000080), In8(0xCFC, 0x10)));       // identifier
}

TEST(FindPciCapabilityDevice, FollowsUnalignedPointersAsTheyAre) {
  Hardware hw;
  AddCapabilities(Add(hw.board, 0, 0, 0, 0x11118086, 0), {{0x53, 0x05, 0x00}});
  unsigned char offset = 0;
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x05, &offset, 0), 0u);
  EXPECT_EQ(offset, 0x53);
  EXPECT_EQ(hw.board.PortLog().back(), In8(0xCFF, 0x05));
}

TEST(FindPciCapabilityDevice, ReadsTheNextPointerOfACapabilityAt0xFFFromRegister0x100) {
  Hardware hw;
  // Register 0x00 holds 0x86, where a capability with the wanted identifier stands too.
  AddCapabilities(Add(hw.board, 0, 0, 0, 0x11118086, 0), {{0xFF, 0x01, 0x60}, {0x60, 0x10, 0x00}, {0x86, 0x10, 0x00}});
  unsigned char offset = 0;
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x10, &offset, 0), 0u);
  EXPECT_EQ(offset, 0x60);
  EXPECT_THAT(AccessesTo(hw.board, 0x81000000), ElementsAre(Out32(0xCF8, 0x81000000), In8(0xCFC, 0x60)));
}

TEST(FindPciCapabilityDevice, PassesOverFunctionsWithoutTheStatusBit) {
  Hardware hw;
  AddCapabilities(Add(hw.board, 0, 2, 0, 0x11118086, 0), {{0x50, 0x01, 0x00}}).Set(0x06, 1, 0xEF);
  unsigned char offset = 0xEE;
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x01, &offset, 0), kNotFound);
  EXPECT_EQ(offset, 0xEE);
}

TEST(FindPciCapabilityDevice, TestsHigherFunctionsForPresence) {
  Hardware hw;
  Add(hw.board, 0, 2, 0, 0x11118086, 0, true);
  AddCapabilities(Add(hw.board, 0, 2, 5, 0x22228086, 0), {{0x40, 0x09, 0x00}});
  unsigned char offset = 0;
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x09, &offset, 0), 0x0015u);
  EXPECT_THAT(AccessesTo(hw.board, 0x80001100), ElementsAre(Out32(0xCF8, 0x80001100), In32(0xCFC, 0xFFFFFFFF)));
}

TEST(FindPciCapabilityDevice, CountsMatchesAcrossFunctionsAndWithinAList) {
  Hardware hw;
  AddCapabilities(Add(hw.board, 0, 2, 0, 0x11118086, 0), {{0x50, 0x09, 0x60}, {0x60, 0x01, 0x70}, {0x70, 0x09, 0x00}});
  AddCapabilities(Add(hw.board, 3, 0, 0, 0x22228086, 0), {{0x44, 0x09, 0x00}});
  unsigned char offset = 0;
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x09, &offset, 0), 0x0010u);
  EXPECT_EQ(offset, 0x50);
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x09, &offset, 1), 0x0010u);
  EXPECT_EQ(offset, 0x70);
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x09, &offset, 2), 0x0300u);
  EXPECT_EQ(offset, 0x44);
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x09, &offset, 3), kNotFound);
}

TEST(FindPciCapabilityDevice, EndsAtAnEmptyList) {
  Hardware hw;
  AddCapabilities(Add(hw.board, 0, 2, 0, 0x11118086, 0), {{0x00, 0x86, 0x80}});
  unsigned char offset = 0xEE;
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x86, &offset, 0), kNotFound);
  EXPECT_EQ(offset, 0x00);
}

TEST(FindPciCapabilityDevice, EndsThoughAListRunsInACircle) {
  Hardware hw;
  AddCapabilities(Add(hw.board, 0, 2, 0, 0x11118086, 0), {{0x50, 0x01, 0x60}, {0x60, 0x05, 0x50}});
  AddCapabilities(Add(hw.board, 0, 3, 0, 0x22228086, 0), {{0x44, 0x09, 0x00}});
  unsigned char offset = 0;
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x09, &offset, 0), 0x0018u);
  EXPECT_EQ(offset, 0x44);
}

TEST(FindPciCapabilityDevice, CountsTheMatchesOfEveryRoundOfACircle) {
  Hardware hw;
  AddCapabilities(Add(hw.board, 0, 2, 0, 0x11118086, 0), {{0x50, 0x01, 0x60}, {0x60, 0x05, 0x50}});
  unsigned char offset = 0;
  EXPECT_EQ(hw.rw.FindPciCapabilityDevice(0x05, &offset, 255), 0x0010u);
  EXPECT_EQ(offset, 0x60);
}

TEST(FindPciCapabilityDevice, WithoutPrivilegePrintsOncePerSlot) {
  Hardware hw;
  hw.rw.IoplFailed = 1;
  unsigned char offset = 0;
  unsigned found = 0;
  EXPECT_EQ(RefusalsPrinted([&] { found = hw.rw.FindPciCapabilityDevice(0x01, &offset, 0); }), 8192);
  EXPECT_EQ(found, kNotFound);
  EXPECT_THAT(hw.board.Log(), IsEmpty());
}

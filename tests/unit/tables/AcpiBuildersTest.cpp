// SPDX-License-Identifier: MIT
// What each builder takes from its table, and the search for SSDTs.
#include "firmware/AcpiImage.h"
#include "firmware/AcpiTable.h"
#include "firmware/Bytes.h"
#include "tables/TAcpiBase.h"
#include "tests/unit/tables/Machine.h"

using namespace tabletest;
using firmware::AcpiImage;
using testing::ElementsAre;

namespace {

class Builders : public testing::Test, protected Machine {
 protected:
  TAcpiBase* acpi = nullptr;

  void Discover(const AcpiImage& image) {
    image.PutInto(&board);
    Printed([this] { acpi = TAcpiBase::GetInstance(); });
  }
  std::vector<uint32_t> Addresses() const {
    std::vector<uint32_t> addresses;
    for (const auto& entry : *acpi->Tables) addresses.push_back(entry->Address);
    return addresses;
  }
};

class BuildFACP : public Builders {};
class BuildAPIC : public Builders {};
class BuildECDT : public Builders {};
class BuildMCFG : public Builders {};
class SetupSSDTEx : public Builders {};

Bytes Subtable(uint8_t type, uint32_t address, uint32_t interruptBase) {
  return Join({{1, type}, {1, 12}, {2, 0}, {4, address}, {4, interruptBase}});
}

Bytes Ssdt(uint32_t size = 48) { return firmware::AcpiTable({.signature = "SSDT"}, Bytes(size - 36, 0x22)); }

}  // namespace

TEST_F(BuildFACP, NotesThePlatformValues) {
  Bytes fadt = firmware::FadtTable(0x7D000000);
  firmware::Put(&fadt, 46, 2, 0x0114);
  firmware::Put(&fadt, 48, 4, 0x000000B2);
  firmware::Put(&fadt, 52, 4, 0xD3C2B1A0);
  firmware::Put(&fadt, 56, 4, 0x00001800);
  firmware::Put(&fadt, 76, 4, 0x00001808);
  firmware::Put(&fadt, 112, 4, 0x00000100);
  Discover(AcpiImage().Table(fadt));
  const TKQConfig& config = *acpi->Config;
  EXPECT_EQ(config.SciInterrupt, 0x0114);
  EXPECT_EQ(config.SmiCommandPort, 0xB2u);
  EXPECT_EQ(config.AcpiEnable, 0xA0);
  EXPECT_EQ(config.AcpiDisable, 0xB1);
  EXPECT_EQ(config.S4BiosRequest, 0xC2);
  EXPECT_EQ(config.PstateControl, 0xD3);
  EXPECT_EQ(config.Pm1aEventBlock, 0x1800u);
  EXPECT_EQ(config.PmTimerBlock, 0x1808u);
  EXPECT_TRUE(config.PmTimerIs32Bits);
}

TEST_F(BuildFACP, TakesATimerWithoutTheFlagFor24Bits) {
  Bytes fadt = firmware::FadtTable(0x7D000000);
  firmware::Put(&fadt, 112, 4, 0xFFFFFEFF);
  Discover(AcpiImage().Table(fadt));
  EXPECT_FALSE(acpi->Config->PmTimerIs32Bits);
}

TEST_F(BuildAPIC, TakesTheAddressOfAFirstIoApicWithInterruptBase0) {
  Discover(AcpiImage().Table(firmware::MadtTable(Subtable(1, 0xFEC80000, 0))));
  EXPECT_EQ(acpi->Config->IoApicBase, 0xFEC80000u);
}

TEST_F(BuildAPIC, KeepsTheDefaultForAnotherInterruptBase) {
  Discover(AcpiImage().Table(firmware::MadtTable(Subtable(1, 0xFEC80000, 24))));
  EXPECT_EQ(acpi->Config->IoApicBase, 0xFEC00000u);
}

TEST_F(BuildAPIC, LooksAtTheFirstSubtableOnly) {
  Discover(AcpiImage().Table(firmware::MadtTable(Subtable(0, 0xFEC70000, 0) + Subtable(1, 0xFEC80000, 0))));
  EXPECT_EQ(acpi->Config->IoApicBase, 0xFEC00000u);
}

TEST_F(BuildAPIC, EndsAtASubtableOfLength0) {
  Bytes endless = Subtable(0, 0, 0);
  endless[1] = 0;
  Discover(AcpiImage().Table(firmware::MadtTable(endless + Subtable(1, 0xFEC80000, 0))));
  EXPECT_EQ(acpi->Config->IoApicBase, 0xFEC00000u);
}

TEST_F(BuildAPIC, ReadsNothingBeyondATableThatCutsItsSubtableShort) {
  Bytes madt = firmware::MadtTable(Subtable(1, 0xFEC80000, 0));
  firmware::Put(&madt, 4, 4, 55);
  Discover(AcpiImage().Table(madt));
  EXPECT_EQ(acpi->Config->IoApicBase, 0xFEC00000u);
}

TEST_F(BuildECDT, TakesBothPortsAndTheControlValue) {
  // Control at 36, command port at 40, data port at 52.
  Bytes ecdt = firmware::EcdtTable(0x0266, 0x0262);
  ecdt[36] = 0x5C;
  Discover(AcpiImage().Table(ecdt));
  EXPECT_EQ(acpi->Config->EcPorts, 0x02620266u);
  EXPECT_EQ(acpi->Config->EcControl, 0x5C);
}

TEST_F(BuildMCFG, TakesTheLow32BitsOfTheFirstAllocation) {
  Discover(AcpiImage().Table(firmware::McfgTable({0x1E0000000, 0xF0000000})));
  EXPECT_EQ(acpi->GetPcieBaseAddress(), 0xE0000000u);
}

TEST_F(BuildMCFG, LeavesAllOnesWithoutAnAllocation) {
  Discover(AcpiImage().Table(firmware::McfgTable({})));
  EXPECT_EQ(acpi->GetPcieBaseAddress(), 0xFFFFFFFF);
}

TEST_F(BuildMCFG, TakesNoPartOfAnAllocation) {
  Bytes mcfg = firmware::McfgTable({0xE0000000});
  firmware::Put(&mcfg, 4, 4, 59);
  Discover(AcpiImage().Table(mcfg));
  EXPECT_EQ(acpi->GetPcieBaseAddress(), 0xFFFFFFFF);
}

TEST_F(BuildMCFG, SetsBackToAllOnesForALaterTableWithoutAllocations) {
  Discover(AcpiImage().Table(firmware::McfgTable({0xE0000000})).Table(firmware::McfgTable({})));
  EXPECT_EQ(acpi->GetPcieBaseAddress(), 0xFFFFFFFF);
}

TEST_F(BuildMCFG, DoesNotFeedTheAccessLayer) {
  Discover(AcpiImage().Table(firmware::McfgTable({0xE0000000})));
  EXPECT_EQ(TReadWrite::GetInstance()->PcieBase, 0xFFFFFFFF);
}

// ---- SSDTs that the RSDT does not list ----

namespace {

constexpr uint32_t kRsdp = 0xF0000, kRsdt = 0x7F000000;
constexpr uint32_t kFadt = 0x7E000000, kFacs = 0x7D000000, kDsdt = 0x7F100000;
/// The DSDT has 0x27 bytes; its end rounded down to a multiple of 16.
constexpr uint32_t kSearch = kDsdt + 0x20;

Bytes Facs() { return firmware::AcpiTable({.signature = "FACS"}, Bytes(28, 0)); }

/// A DSDT that ends above every other table.
AcpiImage WithDsdt() {
  return AcpiImage()
      .TableAt(kFadt, firmware::FadtTable(kDsdt, kFacs))
      .UnlistedAt(kFacs, Facs())
      .UnlistedAt(kDsdt, firmware::DsdtTable({1, 2, 3}));
}

}  // namespace

TEST_F(SetupSSDTEx, ListsWhatLiesBehindTheHighestTable) {
  board.Memory(kSearch + 0x10, Ssdt()).Memory(kSearch + 0x100, Ssdt());
  Discover(WithDsdt());
  EXPECT_THAT(Addresses(), ElementsAre(kRsdp, kRsdt, kFadt, kFacs, kDsdt, kSearch + 0x10, kSearch + 0x100));
  EXPECT_EQ(acpi->Tables->back()->Length, 48u);
}

TEST_F(SetupSSDTEx, BeginsAtTheEndRoundedDownTo16) {
  // A DSDT that claims 0x3F bytes ends inside the paragraph where the SSDT begins.
  Bytes dsdt = firmware::DsdtTable({});
  firmware::Put(&dsdt, 4, 4, 0x3F);
  board.Memory(kDsdt + 0x30, Ssdt());
  Discover(
      AcpiImage().TableAt(kFadt, firmware::FadtTable(kDsdt, kFacs)).UnlistedAt(kFacs, Facs()).UnlistedAt(kDsdt, dsdt));
  EXPECT_THAT(Addresses(), ElementsAre(kRsdp, kRsdt, kFadt, kFacs, kDsdt, kDsdt + 0x30));
}

TEST_F(SetupSSDTEx, LooksOnlyAtEvery16thByte) {
  board.Memory(kSearch + 0x18, Ssdt());
  Discover(WithDsdt());
  EXPECT_EQ(Addresses().size(), 5u);
}

TEST_F(SetupSSDTEx, EndsAfter64KiB) {
  board.Memory(kSearch + 0xFFF0, Ssdt(36)).Memory(kSearch + 0x10020, Ssdt());
  Discover(WithDsdt());
  EXPECT_THAT(Addresses(), ElementsAre(kRsdp, kRsdt, kFadt, kFacs, kDsdt, kSearch + 0xFFF0));
}

TEST_F(SetupSSDTEx, PassesOverABadChecksumAndTriesTheNext) {
  Bytes bad = Ssdt();
  bad[9] ^= 1;
  board.Memory(kSearch + 0x10, bad).Memory(kSearch + 0x100, Ssdt());
  Discover(WithDsdt());
  EXPECT_THAT(Addresses(), ElementsAre(kRsdp, kRsdt, kFadt, kFacs, kDsdt, kSearch + 0x100));
}

TEST_F(SetupSSDTEx, MapsTwicePerSignatureHoweverManyThereAre) {
  Bytes signatures;
  for (int i = 0; i < 0x1000; ++i) {
    signatures.insert(signatures.end(), {'S', 'S', 'D', 'T'});
    signatures.resize(signatures.size() + 12);
  }
  Discover(WithDsdt());
  const auto maps = [this] {
    return std::count_if(board.Log().begin(), board.Log().end(),
                         [](const auto& access) { return access.kind == sim::Access::kMap; });
  };
  const auto without = maps();
  TAcpiBase::FreeInstance();
  board.Memory(kSearch + 0x10, signatures);
  board.Log().clear();
  Discover(WithDsdt());
  // All but the last lie in the 64 KiB searched; each is found by one map, and its header read by another.
  EXPECT_EQ(maps(), without - 16 + 2 * 0x0FFF);
}

TEST_F(SetupSSDTEx, PassesOverATableShorterThanItsHeaderOrOfAHugeLength) {
  uint32_t address = kSearch + 0x40;
  for (const uint32_t length : {35u, 0u, 0xFFFFFFFFu}) {
    Bytes ssdt = Ssdt();
    firmware::Put(&ssdt, 4, 4, length);
    board.Memory(address, ssdt);
    address += 0x40;
  }
  board.Memory(address, Ssdt());
  Discover(WithDsdt());
  EXPECT_THAT(Addresses(), ElementsAre(kRsdp, kRsdt, kFadt, kFacs, kDsdt, address));
}

TEST_F(SetupSSDTEx, ListsAgainWhatTheRsdtListsToo) {
  // A second RSDT lists this SSDT behind the DSDT, so that its own end does not count yet when the search begins.
  board.Memory(kSearch + 0x40, Ssdt());
  board.Memory(0x7E002000, firmware::RsdtTable({kSearch + 0x40}));
  AcpiImage image = WithDsdt();
  image.Entry(0x7E002000);
  Discover(image);
  EXPECT_THAT(Addresses(), ElementsAre(kRsdp, kRsdt, kFadt, 0x7E002000, kFacs, kDsdt, kSearch + 0x40, kSearch + 0x40));
}

TEST_F(SetupSSDTEx, RunsOncePerDsdtAddress) {
  board.Memory(kSearch + 0x10, Ssdt());
  AcpiImage image = WithDsdt();
  image.TableAt(0x7E001000, firmware::FadtTable(kDsdt, kFacs));
  Discover(image);
  EXPECT_THAT(Addresses(), ElementsAre(kRsdp, kRsdt, kFadt, 0x7E001000, kFacs, kDsdt, kFacs, kDsdt, kSearch + 0x10));
}

TEST_F(SetupSSDTEx, DoesNotRunWithTheSettingOff) {
  board.Memory(0x7F000030, Ssdt());
  Discover(AcpiImage());
  acpi->Config->ScanExtraSsdt = false;
  Bytes dsdt = firmware::DsdtTable({});
  acpi->BuildDSDT(dsdt.data());
  EXPECT_EQ(Addresses().size(), 2u);
  acpi->Config->ScanExtraSsdt = true;
  acpi->BuildDSDT(dsdt.data());
  EXPECT_THAT(Addresses(), ElementsAre(kRsdp, kRsdt, 0x7F000030));
}

TEST_F(SetupSSDTEx, StopsAt16MiBWhenTheTablesLieBelowIt) {
  // The highest table ends at 0xFFC024.
  board.Memory(0xFFFFC0, Ssdt(36)).Memory(0x1000000, Ssdt(36));
  Discover(AcpiImage()
               .TablesAt(0x800000)
               .TableAt(0x900000, firmware::FadtTable(0xFFC000, 0xA00000))
               .UnlistedAt(0xA00000, Facs())
               .UnlistedAt(0xFFC000, firmware::DsdtTable({})));
  EXPECT_THAT(Addresses(), ElementsAre(kRsdp, 0x800000, 0x900000, 0xA00000, 0xFFC000, 0xFFFFC0));
}

TEST_F(SetupSSDTEx, SearchesNothingWhenTheTablesEndAt16MiB) {
  board.Memory(0x1000000, Ssdt());
  Discover(AcpiImage()
               .TablesAt(0x800000)
               .TableAt(0x900000, firmware::FadtTable(0xFFFF00, 0xA00000))
               .UnlistedAt(0xA00000, Facs())
               .UnlistedAt(0xFFFF00, firmware::DsdtTable(Bytes(0x100 - 36, 0))));
  EXPECT_THAT(Addresses(), ElementsAre(kRsdp, 0x800000, 0x900000, 0xA00000, 0xFFFF00));
}

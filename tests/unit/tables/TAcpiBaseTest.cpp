// SPDX-License-Identifier: MIT
// Discovery: the root pointer, the tables behind it, what is passed over.
#include "tables/TAcpiBase.h"

#include <cstddef>
#include <functional>
#include <iterator>
#include <utility>

#include "firmware/AcpiImage.h"
#include "firmware/AcpiTable.h"
#include "firmware/IadtBuilder.h"
#include "firmware/IamtBuilder.h"
#include "tests/unit/tables/Machine.h"

using namespace tabletest;
using firmware::AcpiImage;
using firmware::AcpiTable;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Entry = std::pair<uint32_t, uint32_t>;  // address, length

class Discovery : public testing::Test, protected Machine {
 protected:
  std::string output;
  TAcpiBase* acpi = nullptr;

  void Discover() {
    output = Printed([this] { acpi = TAcpiBase::GetInstance(); });
  }
  void Discover(const AcpiImage& image) {
    image.PutInto(&board);
    Discover();
  }
  std::vector<Entry> Entries() const {
    std::vector<Entry> entries;
    for (const auto& entry : *acpi->Tables) entries.emplace_back(entry->Address, entry->Length);
    return entries;
  }
};

class BuildRSDP : public Discovery {};
class BuildAcpiTables : public Discovery {};
class GetAcpiTable : public Discovery {};
class TAcpiBaseInstance : public Discovery {};
class CheckTableChecksum : public Discovery {};

constexpr uint32_t kRsdp = 0xF0000, kRsdt = 0x7F000000;

Bytes Unknown(const char* signature, uint32_t size) {
  return AcpiTable({.signature = signature}, Bytes(size - 36, 0x11));
}

}  // namespace

// ---- the root pointer ----

TEST_F(BuildRSDP, TakesLength20ForRevision0) {
  Discover(AcpiImage());
  EXPECT_THAT(Entries(), ElementsAre(Entry{kRsdp, 20}, Entry{kRsdt, 36}));
  EXPECT_EQ(acpi->RsdpFound, 1u);
  EXPECT_EQ(output, "");
}

TEST_F(BuildRSDP, TakesItsOwnLengthFieldForRevision2) {
  Discover(AcpiImage().RootPointerRevision(2));
  EXPECT_THAT(Entries(), ElementsAre(Entry{kRsdp, 36}, Entry{kRsdt, 36}));
}

TEST_F(BuildRSDP, TakesAnyLengthFieldAsItIs) {
  Bytes pointer = firmware::Rsdp(kRsdt, 2);
  pointer[20] = 0x44;
  pointer[21] = 0x33;
  board.Memory(kRsdp, pointer);
  Discover();
  EXPECT_EQ(Entries()[0], (Entry{kRsdp, 0x3344}));
}

TEST_F(BuildRSDP, PrintsALineAndKeepsAnEmptyListWhenThereIsNone) {
  Discover();
  EXPECT_EQ(output, "TAcpiBase::BuildRSDP Failed !!\n");
  EXPECT_THAT(Entries(), IsEmpty());
  EXPECT_EQ(acpi->RsdpFound, 0u);
}

TEST_F(BuildRSDP, LooksFromTheFirstToTheLastParagraphOfTheBiosArea) {
  for (const uint32_t address : {0xE0000u, 0xE0010u, 0xFFFE0u}) {
    Machine other;
    AcpiImage().RootPointerAt(address).PutInto(&other.board);
    Printed([] { TAcpiBase::GetInstance(); });
    EXPECT_EQ(TAcpiBase::g_Instance->RsdpFound, 1u) << address;
    EXPECT_EQ((*TAcpiBase::g_Instance->Tables)[0]->Address, address);
    TAcpiBase::FreeInstance();
  }
  sim::Board::MakeCurrent(&board);
}

TEST_F(BuildRSDP, LooksOnlyAtEvery16thByteAndOnlyInTheBiosArea) {
  for (const uint32_t address : {0xE0008u, 0xF0001u, 0xDFFF0u, 0x100000u}) board.Memory(address, firmware::Rsdp(kRsdt));
  Discover();
  EXPECT_EQ(output, "TAcpiBase::BuildRSDP Failed !!\n");
}

TEST_F(BuildRSDP, TriesNoLaterCopyAfterABadChecksum) {
  Bytes bad = firmware::Rsdp(kRsdt);
  bad[8] ^= 1;
  board.Memory(0xE0000, bad);
  Discover(AcpiImage());
  EXPECT_EQ(output, "TAcpiBase::BuildRSDP Failed !!\n");
  EXPECT_THAT(Entries(), IsEmpty());
}

TEST_F(BuildRSDP, SumsTheFirst20BytesAlone) {
  Bytes pointer = firmware::Rsdp(kRsdt, 2);
  pointer[35] ^= 0x5A;
  board.Memory(kRsdp, pointer).Memory(kRsdt, firmware::RsdtTable({}));
  Discover();
  EXPECT_EQ(acpi->RsdpFound, 1u);
}

TEST_F(BuildRSDP, FindsNothingWhenMemoryCannotBeRead) {
  AcpiImage().PutInto(&board);
  board.memDevice = false;
  Discover();
  EXPECT_EQ(output, "TAcpiBase::BuildRSDP Failed !!\n");
}

TEST_F(BuildRSDP, FindsNothingWithoutPrivilege) {
  AcpiImage().PutInto(&board);
  board.privileged = false;
  Discover();
  EXPECT_EQ(output, "Please run as root!\nTAcpiBase::BuildRSDP Failed !!\n");
  EXPECT_THAT(Entries(), IsEmpty());
}

// ---- the walk ----

TEST_F(BuildAcpiTables, ListsTablesInTheOrderOfTheRsdtWithTheirLengths) {
  Discover(AcpiImage().TableAt(0x7E001000, Unknown("HPET", 56)).TableAt(0x7E000000, Unknown("BOOT", 40)));
  EXPECT_THAT(Entries(), ElementsAre(Entry{kRsdp, 20}, Entry{kRsdt, 44}, Entry{0x7E001000, 56}, Entry{0x7E000000, 40}));
}

TEST_F(BuildAcpiTables, GoesByTheRsdtWhenTheRootPointerNamesAnXsdtToo) {
  constexpr uint32_t kXsdt = 0x7F100000;
  Bytes pointer = firmware::Rsdp(kRsdt, 2);
  firmware::Put(&pointer, 24, 8, kXsdt);
  pointer[32] = 0;
  unsigned sum = 0;
  for (const uint8_t byte : pointer) sum += byte;
  pointer[32] = static_cast<uint8_t>(0 - sum);
  board.Memory(kRsdp, pointer)
      .Memory(kRsdt, firmware::RsdtTable({0x7E000000}))
      .Memory(kXsdt, AcpiTable({.signature = "XSDT"}, Join({{8, 0x7E001000}})))
      .Memory(0x7E000000, Unknown("HPET", 56))
      .Memory(0x7E001000, Unknown("BOOT", 40));
  Discover();
  EXPECT_THAT(Entries(), ElementsAre(Entry{kRsdp, 36}, Entry{kRsdt, 40}, Entry{0x7E000000, 56}));
}

TEST_F(BuildAcpiTables, SkipsZeroEntriesOfTheRsdt) {
  Discover(
      AcpiImage().Entry(0).TableAt(0x7E001000, Unknown("HPET", 56)).Entry(0).TableAt(0x7E002000, Unknown("BOOT", 40)));
  EXPECT_THAT(Entries(), ElementsAre(Entry{kRsdp, 20}, Entry{kRsdt, 52}, Entry{0x7E001000, 56}, Entry{0x7E002000, 40}));
}

TEST_F(BuildAcpiTables, LeavesARemainderOfTheRsdtAlone) {
  board.Memory(kRsdp, firmware::Rsdp(kRsdt));
  Bytes rsdt = firmware::RsdtTable({0x7E001000, 0x7E002000});
  rsdt[4] = 43;  // one entry and three bytes
  board.Memory(kRsdt, rsdt).Memory(0x7E001000, Unknown("HPET", 56));
  Discover();
  EXPECT_EQ(Entries().size(), 3u);
}

TEST_F(BuildAcpiTables, VisitsTheDsdtOfTheFadtAndListsTheFacs) {
  board.Memory(0x7D000000, firmware::DsdtTable({1, 2, 3})).Memory(0x7D010000, Unknown("FACS", 64));
  Discover(AcpiImage().TableAt(0x7E000000, firmware::FadtTable(0x7D000000, 0x7D010000)));
  EXPECT_THAT(Entries(), ElementsAre(Entry{kRsdp, 20}, Entry{kRsdt, 40}, Entry{0x7E000000, 116}, Entry{0x7D010000, 64},
                                     Entry{0x7D000000, 39}));
  EXPECT_EQ(std::string(acpi->DsdtHeader.Signature, 4), "DSDT");
  EXPECT_EQ(acpi->DsdtAddress, 0x7D000000u);
}

TEST_F(BuildAcpiTables, ListsFacsAndDsdtEvenAtAddress0) {
  Discover(AcpiImage().TableAt(0x7E000000, firmware::FadtTable(0, 0)));
  EXPECT_EQ(Entries().size(), 5u);
  EXPECT_EQ(Entries()[3].first, 0u);
  EXPECT_EQ(Entries()[4].first, 0u);
}

TEST_F(BuildAcpiTables, ParsesTheVendorTables) {
  Discover(AcpiImage()
               .Table(firmware::IadtBuilder().Feature("LVDSState", 3, {}).Build())
               .Table(firmware::IamtBuilder().Chips(0x94D2, 2, 3).Build()));
  ASSERT_NE(acpi->IadTable, nullptr);
  ASSERT_NE(acpi->IamTable, nullptr);
  EXPECT_EQ(acpi->IadTable, TIADTable::g_Instance);
  EXPECT_EQ(acpi->IamTable, TIAMTable::g_Instance);
  EXPECT_EQ(acpi->IadTable->Slots[13][2], 3);
  EXPECT_EQ(acpi->IamTable->BoardInfo[29], 0xD2);
  EXPECT_EQ(output, "");
}

TEST_F(BuildAcpiTables, TestsNoTableChecksum) {
  Discover(AcpiImage().Table(firmware::IadtBuilder().Checksum(0x12).Feature("LVDSState", 3, {}).Build()));
  EXPECT_NE(TIADTable::GetInstance()->Slots[13], nullptr);
}

TEST_F(BuildAcpiTables, FilesTheRecordsOfATableAsOftenAsItIsListed) {
  const Bytes iadt = firmware::IadtBuilder().Feature("LVDSState", 3, {}).Build();
  Discover(AcpiImage().TableAt(0x7E000000, iadt).TableAt(0x7E000000, iadt));
  int nodes = 0;
  for ([[maybe_unused]] const IadtEntry entry : TIADTable::GetInstance()->List(13)) ++nodes;
  EXPECT_EQ(nodes, 2);
}

TEST_F(BuildAcpiTables, EndsWhenTheRsdtListsItself) {
  board.Memory(0x7E000000, Unknown("HPET", 56));
  Discover(AcpiImage().Entry(kRsdt).Entry(0x7E000000));
  EXPECT_THAT(Entries(), ElementsAre(Entry{kRsdp, 20}, Entry{kRsdt, 44}, Entry{kRsdt, 44}, Entry{0x7E000000, 56}));
}

TEST_F(BuildAcpiTables, EndsWhenTwoRootTablesListEachOther) {
  board.Memory(0x7E000000, firmware::RsdtTable({kRsdt}));
  Discover(AcpiImage().Entry(0x7E000000));
  EXPECT_THAT(Entries(), ElementsAre(Entry{kRsdp, 20}, Entry{kRsdt, 40}, Entry{0x7E000000, 40}, Entry{kRsdt, 40}));
}

TEST_F(BuildAcpiTables, EndsWhenAFadtNamesItselfAsDsdt) {
  Discover(AcpiImage().TableAt(0x7E000000, firmware::FadtTable(0x7E000000, 0x7E000000)));
  EXPECT_EQ(Entries().size(), 5u);
}

TEST_F(BuildAcpiTables, PassesOverTablesShorterThanTheirFixedPart) {
  struct Case {
    const char* signature;
    uint32_t fixedBytes;
  };
  for (const Case& each : {Case{"FACP", 116}, Case{"APIC", 44}, Case{"ECDT", 54}, Case{"DSDT", 36}, Case{"MCFG", 44},
                           Case{"IAMT", 36}, Case{"IADT", 36}, Case{"RSDT", 36}}) {
    SCOPED_TRACE(each.signature);
    Machine other;
    Bytes table = Unknown(each.signature, 120);
    firmware::Put(&table, 4, 4, each.fixedBytes - 1);
    AcpiImage().TableAt(0x7E000000, table).PutInto(&other.board);
    Printed([] { TAcpiBase::GetInstance(); });
    const TAcpiBase& found = *TAcpiBase::g_Instance;
    EXPECT_EQ(found.Tables->size(), 3u);
    EXPECT_EQ((*found.Tables)[2]->Length, each.fixedBytes - 1);
    EXPECT_EQ(found.DsdtHeader.Signature[0], 0);
    EXPECT_EQ(found.IadTable, nullptr);
    EXPECT_EQ(found.IamTable, nullptr);
    EXPECT_EQ(found.PcieBase, 0xFFFFFFFF);
    EXPECT_EQ(found.Config->EcPorts, 0x00620066u);
    EXPECT_EQ(found.Config->SciInterrupt, 9);
    TAcpiBase::FreeInstance();
  }
  sim::Board::MakeCurrent(&board);
}

TEST_F(BuildAcpiTables, PassesOverATableOfAHugeLength) {
  Bytes table = firmware::IadtBuilder().Feature("LVDSState", 3, {}).Length(0xFFFFFFFF).Build();
  Discover(AcpiImage().TableAt(0x7E000000, table).Table(firmware::IamtBuilder().Chips(1, 2, 3).Build()));
  EXPECT_EQ(acpi->IadTable, nullptr);
  EXPECT_NE(acpi->IamTable, nullptr);
  EXPECT_EQ(Entries()[2], (Entry{0x7E000000, 0xFFFFFFFF}));
}

TEST_F(BuildAcpiTables, PassesOverATableThatCannotBeMapped) {
  board.mappingLimit = 0x21000;
  Discover(AcpiImage().Table(firmware::IadtBuilder().Length(0x22000).Feature("LVDSState", 3, {}).Build()));
  EXPECT_EQ(acpi->IadTable, nullptr);
}

TEST_F(BuildAcpiTables, BoundsTheListOverAHugeRsdt) {
  board.Memory(kRsdp, firmware::Rsdp(kRsdt));
  Bytes rsdt = firmware::RsdtTable(std::vector<uint32_t>(10000, 0x7E000000));
  board.Memory(kRsdt, rsdt).Memory(0x7E000000, Unknown("HPET", 40));
  Discover();
  EXPECT_EQ(Entries().size(), 4096u);
}

TEST_F(BuildAcpiTables, LeavesNoMappingAndNoDescriptor) {
  Discover(AcpiImage().Table(firmware::IadtBuilder().Build()));
  EXPECT_EQ(board.LiveMappings(), 0);
  EXPECT_EQ(board.OpenDescriptors(), 0);
}

// ---- look-ups ----

TEST_F(GetAcpiTable, SelectsByIndex) {
  Discover(AcpiImage().TableAt(0x7E000000, Unknown("HPET", 56)));
  EXPECT_TRUE(acpi->GetAcpiTable(0));
  EXPECT_EQ(acpi->Current->Address, kRsdp);
  EXPECT_TRUE(acpi->GetAcpiTable(2));
  EXPECT_EQ(acpi->Current->Address, 0x7E000000u);
}

TEST_F(GetAcpiTable, FailsWithAnIndexEqualToTheNumberOfEntries) {
  Discover(AcpiImage());
  EXPECT_FALSE(acpi->GetAcpiTable(2));
  EXPECT_FALSE(acpi->GetAcpiTable(-1));
  EXPECT_EQ(acpi->Current, nullptr);
}

TEST_F(GetAcpiTable, ReadsTheEntryInItsLength) {
  const Bytes table = Unknown("HPET", 56);
  Discover(AcpiImage().TableAt(0x7E000000, table));
  Bytes buffer(60, 0xEE);
  EXPECT_TRUE(acpi->GetAcpiTable(2, buffer.data()));
  EXPECT_EQ(buffer, table + Bytes(4, 0xEE));
  EXPECT_FALSE(acpi->GetAcpiTable(3, buffer.data()));
}

TEST_F(GetAcpiTable, SelectsTheFirstOfASignature) {
  const Bytes second = Unknown("HPET", 44);
  Discover(AcpiImage()
               .TableAt(0x7E000000, Unknown("BOOT", 40))
               .TableAt(0x7E001000, second)
               .TableAt(0x7E002000, Unknown("HPET", 48)));
  EXPECT_TRUE(acpi->GetAcpiTable("HPET"));
  EXPECT_EQ(acpi->Current->Address, 0x7E001000u);
  Bytes buffer(44);
  EXPECT_TRUE(acpi->GetAcpiTable("HPET", buffer.data()));
  EXPECT_EQ(buffer, second);
}

TEST_F(GetAcpiTable, FailsForASignatureThatIsNotThere) {
  Discover(AcpiImage());
  Bytes buffer(64);
  EXPECT_FALSE(acpi->GetAcpiTable("HPET"));
  EXPECT_FALSE(acpi->GetAcpiTable("HPET", buffer.data()));
}

TEST_F(GetAcpiTable, FailsForATextThatIsNotFourCharactersLong) {
  // Two signatures end in the NULs that a shorter text ends in.
  Discover(AcpiImage()
               .TableAt(0x7E000000, Unknown("FACX", 40))
               .TableAt(0x7E001000, Bytes{'F', 'A', 'C', 0} + Bytes(32, 0))
               .TableAt(0x7E002000, Bytes(36, 0)));
  for (const char* text : {"FACXX", "FACX ", "FAC", "F", ""}) {
    EXPECT_FALSE(acpi->GetAcpiTable(text)) << text;
    Bytes buffer(64);
    EXPECT_FALSE(acpi->GetAcpiTable(text, buffer.data())) << text;
  }
  EXPECT_EQ(acpi->Current, nullptr);
  EXPECT_TRUE(acpi->GetAcpiTable("FACX"));
}

TEST_F(GetAcpiTable, LooksAtTheRootPointerTooBySignature) {
  Discover(AcpiImage());
  EXPECT_TRUE(acpi->GetAcpiTable("RSD "));
  EXPECT_EQ(acpi->Current->Address, kRsdp);
}

TEST_F(GetAcpiTable, FindsNothingInAnEmptyList) {
  Discover();
  EXPECT_FALSE(acpi->GetAcpiTable(0));
  EXPECT_FALSE(acpi->GetAcpiTable("RSDT"));
  EXPECT_FALSE(acpi->CheckAcpiTableEntry(0));
}

TEST_F(GetAcpiTable, ByAddressPassesOverTheRootPointer) {
  Discover(AcpiImage().TableAt(0x7E000000, Unknown("HPET", 56)));
  EXPECT_TRUE(acpi->CheckAcpiTableEntry(0x7E000000));
  EXPECT_EQ(acpi->Current, (*acpi->Tables)[2].get());
  EXPECT_TRUE(acpi->CheckAcpiTableEntry(kRsdt));
  EXPECT_FALSE(acpi->CheckAcpiTableEntry(kRsdp));
  EXPECT_EQ(acpi->Current, (*acpi->Tables)[1].get());
}

// ---- checksums and the instance ----

TEST_F(CheckTableChecksum, SumsTheBytesModulo256) {
  Discover();
  unsigned char bytes[] = {0x80, 0x70, 0x10, 0x01};
  EXPECT_TRUE(acpi->CheckTableChecksum(bytes, 3));
  EXPECT_FALSE(acpi->CheckTableChecksum(bytes, 4));
  EXPECT_FALSE(acpi->CheckTableChecksum(bytes, 2));
}

TEST_F(CheckTableChecksum, IsTrueForALengthOf0) {
  Discover();
  unsigned char byte = 1;
  EXPECT_TRUE(acpi->CheckTableChecksum(&byte, 0));
  TableHeader header = {};
  header.Revision = 1;
  EXPECT_TRUE(acpi->CheckTableChecksum(&header));
}

TEST_F(CheckTableChecksum, TakesTheLengthFromTheHeader) {
  Discover();
  Bytes table = Unknown("HPET", 56);
  EXPECT_TRUE(acpi->CheckTableChecksum(reinterpret_cast<TableHeader*>(table.data())));
  table[55] ^= 1;
  EXPECT_FALSE(acpi->CheckTableChecksum(reinterpret_cast<TableHeader*>(table.data())));
}

TEST_F(TAcpiBaseInstance, IsTheSameUntilItIsFreedAndDiscoversOnce) {
  Discover();
  EXPECT_EQ(Printed([this] { EXPECT_EQ(TAcpiBase::GetInstance(), acpi); }), "");
  TAcpiBase::FreeInstance();
  EXPECT_EQ(TAcpiBase::g_Instance, nullptr);
}

TEST_F(TAcpiBaseInstance, HoldsItsMembersInTheirOrder) {
  Discover();
  const void* const members[] = {&acpi->ReadWrite, &acpi->Config,    &acpi->DsdtHeader, &acpi->DsdtAddress,
                                 &acpi->PcieBase,  &acpi->RsdpFound, &acpi->Tables,     &acpi->Current,
                                 &acpi->IamTable,  &acpi->IadTable};
  EXPECT_EQ(members[0], acpi);
  for (size_t i = 1; i < std::size(members); ++i) EXPECT_TRUE(std::less<>{}(members[i - 1], members[i])) << i;
}

TEST_F(TAcpiBaseInstance, StartsFromTheDefaultSettings) {
  Discover();
  const TKQConfig& config = *acpi->Config;
  EXPECT_EQ(config.EcPorts, 0x00620066u);
  EXPECT_EQ(config.EcControl, 1);
  EXPECT_EQ(config.IoApicBase, 0xFEC00000u);
  EXPECT_EQ(config.Pm1aEventBlock, 0x800u);
  EXPECT_EQ(config.SciInterrupt, 9);
  EXPECT_TRUE(config.ScanExtraSsdt);
  EXPECT_EQ(config.CommandFile, "CMD.kq");
  EXPECT_EQ(config.DebugFile, "KqDebug.kq");
  EXPECT_EQ(config.IoApicRegister, 0xFEC00010u);
  EXPECT_EQ(config.IndexPort, 0x2E);
  EXPECT_EQ(config.DataPort, 0x2F);
  EXPECT_THAT(config.Timeouts, Each(1500u));
  EXPECT_EQ(acpi->GetPcieBaseAddress(), 0xFFFFFFFF);
}

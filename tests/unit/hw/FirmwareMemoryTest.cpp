// SPDX-License-Identifier: MIT
// Discovery over machines that hide the firmware's tables: what it is served, from where, and when nothing is.
#include "hw/FirmwareMemory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "api/TVyn.h"
#include "firmware/AcpiImage.h"
#include "firmware/AcpiTable.h"
#include "firmware/BiosInfo.h"
#include "firmware/Bytes.h"
#include "firmware/IamtBuilder.h"
#include "hw/TReadWrite.h"
#include "layout/LittleEndian.h"
#include "tables/TAcpiBase.h"
#include "tables/TIADTable.h"
#include "tables/TIAMTable.h"
#include "tests/support/TrappedMachine.h"

using firmware::Bytes;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

namespace {

constexpr uint32_t kTables = 0x7F000000;  ///< where the RSDT lies; the tables follow it
constexpr uint32_t kDsdtAddress = 0x7F010000, kFacsAddress = 0x7F020000;
constexpr char kRam[] =
    "00001000-0009ffff : System RAM\n00100000-3fffffff : System RAM\n"
    "  01000000-01ffffff : Kernel code\n7f000000-7f0fffff : ACPI Tables\n";
// The end of RAM at 0x40000000, less 64 KiB and a page that stay free, less one page of tables.
constexpr uint32_t kInvented = 0x3FFEE000;

Bytes Iadt(uint8_t mark = 0x11) { return firmware::AcpiTable({.signature = "IADT", .revision = mark}, {}); }
Bytes Iamt() { return firmware::IamtBuilder().Chips(1, 2, 3).Build(); }
Bytes Facs() {
  Bytes facs(64);
  std::copy_n("FACS", 4, facs.begin());
  facs[4] = 64;
  return facs;
}

uint8_t SumOf(const Bytes& bytes) {
  unsigned sum = 0;
  for (const uint8_t byte : bytes) sum += byte;
  return static_cast<uint8_t>(sum);
}

/// A machine with tables in memory and the kernel's copies in a folder, and discovery over it.
class FirmwareMemoryTest : public testing::Test {
 protected:
  TrappedMachine machine;
  std::filesystem::path folder = std::filesystem::temp_directory_path() / ("tables-" + std::to_string(getpid()));

  FirmwareMemoryTest() {
    std::filesystem::create_directories(folder / "dynamic");
    std::filesystem::create_directories(folder / "data");
    machine.tableFolder = folder;
    machine.memoryMap = folder / "dynamic" / "iomem";
    std::ofstream(machine.memoryMap) << kRam;
  }
  ~FirmwareMemoryTest() override {
    End();
    std::filesystem::remove_all(folder);
  }

  void Kernel(const std::string& name, const Bytes& bytes) {
    std::ofstream(folder / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  void Memory(const firmware::AcpiImage& image) {
    for (const auto& [address, bytes] : image.Build()) machine.StoreMemory(address, bytes);
  }
  /// IADT, IAMT, FADT, FACS and DSDT, in memory and as the kernel's copies.
  void EverythingTwice() {
    const Bytes fadt = firmware::FadtTable(kDsdtAddress, kFacsAddress);
    Memory(firmware::AcpiImage()
               .Table(fadt)
               .Table(Iadt())
               .Table(Iamt())
               .UnlistedAt(kDsdtAddress, firmware::DsdtTable({1, 2, 3}))
               .UnlistedAt(kFacsAddress, Facs()));
    Kernel("FACP", fadt);
    Kernel("IADT", Iadt());
    Kernel("IAMT", Iamt());
    Kernel("DSDT", firmware::DsdtTable({1, 2, 3}));
    Kernel("FACS", Facs());
  }

  /// Starts as the library does; what it prints.
  std::string Start() {
    testing::internal::CaptureStdout();
    if (TReadWrite::GetInstance() != nullptr) {
      { const TVyn vyn; }
      TAcpiBase::GetInstance();
    }
    return testing::internal::GetCapturedStdout();
  }
  static void End() {
    TIADTable::FreeInstance();
    TIAMTable::FreeInstance();
    TReadWrite::FreeInstance();
    TAcpiBase::FreeInstance();
  }

  static TAcpiBase& Acpi() { return *TAcpiBase::GetInstance(); }
  /// The bytes of the first table of this signature; empty when discovery has none.
  static Bytes Table(const char* signature) {
    if (!Acpi().GetAcpiTable(signature)) return {};
    Bytes bytes(Acpi().Current->Length);
    Acpi().GetAcpiTable(signature, bytes.data());
    return bytes;
  }
  static uint32_t AddressOf(const char* signature) {
    return Acpi().GetAcpiTable(signature) ? Acpi().Current->Address : 0;
  }
  std::vector<std::string> LookedAt() const {
    std::vector<std::string> lines;
    for (const std::string& line : machine.Log())
      if (line.find("/sys/") != std::string::npos || line.find("/proc/") != std::string::npos) lines.push_back(line);
    return lines;
  }
};

using HiddenTables = FirmwareMemoryTest;
using NoRootPointer = FirmwareMemoryTest;
using KernelCopies = FirmwareMemoryTest;

}  // namespace

// --- machines that hide nothing ---

TEST_F(FirmwareMemoryTest, ReadsTablesThatCanBeMappedWithTheSameAccessesAsWithoutAnyCopies) {
  EverythingTwice();
  machine.StoreMemory(0xE8000, firmware::BiosInfo{.model = "PLAIN"}.Build());
  Kernel("IADT", Iadt(0x22));
  Start();
  EXPECT_EQ(Table("IADT"), Iadt(0x11));
  const std::vector<std::string> withCopies = machine.Log();
  End();
  machine.ClearLog();
  machine.tableFolder = machine.memoryMap = "";
  Start();
  Table("IADT");
  EXPECT_EQ(machine.Log(), withCopies);
  EXPECT_THAT(LookedAt(), SizeIs(0));
}

TEST_F(FirmwareMemoryTest, LooksForNoCopiesWhereThereIsARootPointerAndNoBiosInformationRecord) {
  EverythingTwice();
  EXPECT_EQ(Start(), "Is Core8 ... ???\n");
  EXPECT_EQ(Table("IADT"), Iadt());
  EXPECT_THAT(LookedAt(), SizeIs(0));
}

TEST_F(FirmwareMemoryTest, LooksForNoCopiesWhenOtherMemoryIsRefused) {
  EverythingTwice();
  Start();
  machine.refused = {{0xFED80000, 0xFED81000}, {kTables, kTables + 0x100000}};
  EXPECT_EQ(TReadWrite::GetInstance()->MemoryReadByte(0xFED80000), 0xFF);
  // Not a header of a table, though on the page of one.
  EXPECT_EQ(TReadWrite::GetInstance()->MemoryReadDword(kTables + 0x800), 0xFFFFFFFF);
  EXPECT_THAT(LookedAt(), SizeIs(0));
}

// --- tables in memory that is refused ---

TEST_F(HiddenTables, AreServedFromTheKernelsCopiesWithTheRootTableWhereItWasRefused) {
  EverythingTwice();
  machine.refused = {{kTables, kTables + 0x100000}};
  EXPECT_EQ(Start(), "Is Core8 ... ???\n");
  EXPECT_EQ(AddressOf("RSDT"), kTables);
  EXPECT_EQ(Table("IADT"), Iadt());
  EXPECT_EQ(Table("IAMT"), Iamt());
  EXPECT_EQ(Table("DSDT"), firmware::DsdtTable({1, 2, 3}));
  EXPECT_EQ(Table("FACS"), Facs());
  EXPECT_THAT(LookedAt(),
              ElementsAre("open /sys/firmware/acpi/tables O_RDONLY|O_DIRECTORY|O_CLOEXEC", "fopen /proc/iomem"));
}

TEST_F(HiddenTables, HaveARootTableThatSumsToZeroAndNamesAllButWhatHangsOnTheFadt) {
  EverythingTwice();
  machine.refused = {{kTables, kTables + 0x100000}};
  Start();
  const Bytes root = Table("RSDT");
  ASSERT_THAT(root, SizeIs(36 + 3 * 4));
  EXPECT_EQ(SumOf(root), 0);
  EXPECT_EQ(layout::Load32(&root[36]), AddressOf("FACP"));
  EXPECT_EQ(layout::Load32(&root[40]), AddressOf("IADT"));
  EXPECT_EQ(layout::Load32(&root[44]), AddressOf("IAMT"));
}

TEST_F(HiddenTables, HaveAFadtThatNamesTheFacsAndTheDsdtServed) {
  EverythingTwice();
  machine.refused = {{kTables, kTables + 0x100000}};
  Start();
  const Bytes fadt = Table("FACP");
  EXPECT_EQ(layout::Load32(&fadt[36]), AddressOf("FACS"));
  EXPECT_EQ(layout::Load32(&fadt[40]), AddressOf("DSDT"));
  EXPECT_EQ(SumOf(fadt), 0);
  EXPECT_NE(AddressOf("DSDT"), kDsdtAddress);
}

TEST_F(HiddenTables, AreServedAtTheAddressesThatAReadableRootTableNames) {
  EverythingTwice();
  const uint32_t iamt = kTables + 64 + 128 + 64;                // behind the root table, the FADT and the IADT
  machine.StoreMemory(kTables + 36, {0x00, 0x10, 0x00, 0x7E});  // the FADT's entry leads to a page of its own
  machine.StoreMemory(0x7E001000, firmware::FadtTable(kDsdtAddress, kFacsAddress));
  machine.StoreMemory(kTables + 40, {0x00, 0x20, 0x00, 0x7E});
  machine.StoreMemory(0x7E002000, Iadt(0x33));
  machine.refused = {{0x7E002000, 0x7E002024}, {kDsdtAddress, kDsdtAddress + 39}};
  Start();
  EXPECT_EQ(AddressOf("IADT"), 0x7E002000u);
  EXPECT_EQ(Table("IADT"), Iadt(0x11));
  EXPECT_EQ(AddressOf("DSDT"), kDsdtAddress);
  EXPECT_EQ(Table("DSDT"), firmware::DsdtTable({1, 2, 3}));
  EXPECT_EQ(AddressOf("IAMT"), iamt);
  EXPECT_EQ(AddressOf("FACP"), 0x7E001000u);
  EXPECT_EQ(AddressOf("FACS"), kFacsAddress);
}

TEST_F(HiddenTables, GetWhatHangsOnAFadtThatWasRefusedInSystemRam) {
  EverythingTwice();
  machine.StoreMemory(kTables + 36, {0x00, 0x10, 0x00, 0x7E});
  machine.refused = {{0x7E001000, 0x7E002000}, {kDsdtAddress, kFacsAddress + 64}};
  Start();
  EXPECT_EQ(AddressOf("FACP"), 0x7E001000u);
  EXPECT_EQ(Table("DSDT"), firmware::DsdtTable({1, 2, 3}));
  EXPECT_EQ(AddressOf("DSDT"), kInvented);
  EXPECT_EQ(AddressOf("FACS"), kInvented + 48);  // 39 bytes, to the next multiple of 16
  EXPECT_EQ(Table("FACS"), Facs());
}

TEST_F(HiddenTables, LeaveEverythingAroundThemRefused) {
  EverythingTwice();
  machine.refused = {{kTables, kTables + 0x100000}};
  Start();
  TReadWrite& rw = *TReadWrite::GetInstance();
  EXPECT_EQ(rw.MemoryReadByte(kTables + 47), kInvented >> 24);  // the root table's last byte
  EXPECT_EQ(rw.MemoryReadByte(kTables + 48), 0xFF);
  EXPECT_EQ(rw.MemoryReadByte(kTables + 0x10000), 0xFF);
  EXPECT_FALSE(rw.MemoryWriteByte(kTables, 0));
}

TEST_F(HiddenTables, AreFoundAnewAtTheNextStart) {
  EverythingTwice();
  machine.refused = {{kTables, kTables + 0x100000}};
  Start();
  EXPECT_EQ(Table("IADT"), Iadt());
  End();
  Kernel("IADT", Iadt(0x44));
  Start();
  EXPECT_EQ(Table("IADT"), Iadt(0x44));
  End();
  machine.refused.clear();
  Start();
  EXPECT_EQ(Table("IADT"), Iadt(0x11));
}

TEST_F(HiddenTables, StayHiddenWithoutCopies) {
  EverythingTwice();
  machine.refused = {{kTables, kTables + 0x100000}};
  machine.tableFolder = "";
  Start();
  EXPECT_EQ(AddressOf("IADT"), 0u);
  EXPECT_EQ(AddressOf("RSDT"), 0u);
}

TEST_F(HiddenTables, StayHiddenWhereTheKernelHasNoVendorTable) {
  EverythingTwice();
  std::filesystem::remove(folder / "IADT");
  std::filesystem::remove(folder / "IAMT");
  machine.refused = {{kTables, kTables + 0x100000}};
  Start();
  EXPECT_EQ(AddressOf("FACP"), 0u);
}

// --- firmware without a root pointer in the BIOS area ---

TEST_F(NoRootPointer, TheKernelsCopiesAreServedInSystemRam) {
  Kernel("IADT", Iadt());
  Kernel("IAMT", Iamt());
  EXPECT_EQ(Start(), "Is Core8 ... ???\n");
  EXPECT_EQ(Table("IADT"), Iadt());
  EXPECT_EQ(Table("IAMT"), Iamt());
  EXPECT_EQ(AddressOf("IADT"), kInvented);
  EXPECT_EQ(AddressOf("IAMT"), kInvented + 48);  // 36 bytes, to the next multiple of 16
}

TEST_F(NoRootPointer, OneAppearsInTheHighestFreeBytesOfTheBiosArea) {
  Kernel("IADT", Iadt());
  machine.StoreMemory(0xFFFF0, {0xEA, 0x5B, 0xE0, 0x00, 0xF0});  // the processor's first instruction
  Start();
  ASSERT_TRUE(Acpi().GetAcpiTable(0));
  EXPECT_EQ(Acpi().Current->Address, 0xFFFC0u);
  EXPECT_EQ(Acpi().Current->Length, 20u);
}

TEST_F(NoRootPointer, NoneAppearsInABiosInformationRecord) {
  Kernel("IADT", Iadt());
  machine.StoreMemory(0xFFFC0, firmware::BiosInfo{.model = "TOP"}.Build());  // zeros behind the name
  testing::internal::CaptureStdout();
  TReadWrite::GetInstance();
  const TVyn vyn;
  TAcpiBase::GetInstance();
  EXPECT_EQ(vyn.ModelName(), "TOP");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  ASSERT_TRUE(Acpi().GetAcpiTable(0));
  EXPECT_EQ(Acpi().Current->Address, 0xFFF90u);
  EXPECT_EQ(Table("IADT"), Iadt());
}

TEST_F(NoRootPointer, TheRestOfTheBiosAreaStaysWhatItIs) {
  Kernel("IADT", Iadt());
  Start();
  machine.StoreMemory(0xFFFB0, {0x5A});
  machine.StoreMemory(0xE0000, {0xA5});
  TReadWrite& rw = *TReadWrite::GetInstance();
  EXPECT_EQ(rw.MemoryReadByte(0xFFFB0), 0x5A);
  EXPECT_EQ(rw.MemoryReadByte(0xE0000), 0xA5);
  EXPECT_EQ(rw.MemoryReadByte(0xFFFC0 + 40), 0x00);
}

TEST_F(NoRootPointer, OneWithAWrongChecksumIsPassedOver) {
  Kernel("IADT", Iadt());
  Bytes bad = firmware::Rsdp(kTables);
  bad[10] ^= 1;
  machine.StoreMemory(0xF0000, bad);
  EXPECT_EQ(Start(), "Is Core8 ... ???\n");
  EXPECT_EQ(Table("IADT"), Iadt());
}

TEST_F(NoRootPointer, OneThatNamesAnXsdtAloneIsPassedOver) {
  Kernel("IADT", Iadt());
  machine.StoreMemory(0xF0000, firmware::Rsdp(0, 2));
  Start();
  EXPECT_EQ(Table("IADT"), Iadt());
}

TEST_F(NoRootPointer, ASoundOneBehindAnotherLeavesDiscoveryToFail) {
  Kernel("IADT", Iadt());
  Bytes bad = firmware::Rsdp(kTables);
  bad[10] ^= 1;
  machine.StoreMemory(0xF0000, bad);
  machine.StoreMemory(0xF8000, firmware::Rsdp(kTables));
  EXPECT_THAT(Start(), HasSubstr("TAcpiBase::BuildRSDP Failed !!\n"));
}

TEST_F(NoRootPointer, DiscoveryFailsWhereTheKernelHasNoVendorTable) {
  Kernel("FACP", firmware::FadtTable(0, 0));
  EXPECT_EQ(Start(), "Is Core8 ... ???\nTAcpiBase::BuildRSDP Failed !!\n");
}

TEST_F(NoRootPointer, DiscoveryFailsWhereTheBiosAreaHasNoFreeBytes) {
  Kernel("IADT", Iadt());
  Bytes full(0x20000);
  for (size_t i = 0; i < full.size(); ++i) full[i] = static_cast<uint8_t>(i % 32 + 1);
  machine.StoreMemory(0xE0000, full);
  EXPECT_THAT(Start(), HasSubstr("TAcpiBase::BuildRSDP Failed !!\n"));
}

TEST_F(NoRootPointer, AddressesThatTheKernelHidesAreTakenFrom16MiBOn) {
  std::ofstream(machine.memoryMap) << "00000000-00000000 : System RAM\n";
  Kernel("IADT", Iadt());
  Start();
  EXPECT_EQ(AddressOf("IADT"), 0x1000000u);
}

TEST_F(NoRootPointer, DiscoveryFailsWithoutRoomInSystemRam) {
  std::ofstream(machine.memoryMap) << "00001000-0009ffff : System RAM\n00100000-00110fff : System RAM\n"
                                      "100000000-1ffffffff : System RAM\n";
  Kernel("IADT", Iadt());
  EXPECT_THAT(Start(), HasSubstr("TAcpiBase::BuildRSDP Failed !!\n"));
}

TEST_F(NoRootPointer, RoomMayEndRightAtTheEndOfRam) {
  std::ofstream(machine.memoryMap) << "00100000-00111fff : System RAM\n";  // 64 KiB and two pages
  Kernel("IADT", Iadt());
  Start();
  EXPECT_EQ(AddressOf("IADT"), 0x100000u);
}

// --- the folder of copies ---

TEST_F(KernelCopies, OfOneSignatureKeepTheirOrder) {
  Kernel("IADT", Iadt());
  for (int i = 1; i <= 11; ++i)
    Kernel("SSDT" + std::to_string(i),
           firmware::AcpiTable({.signature = "SSDT", .revision = static_cast<uint8_t>(i)}, {}));
  Start();
  const uint32_t first = AddressOf("SSDT");
  for (int i = 1; i <= 11; ++i) {
    ASSERT_TRUE(Acpi().CheckAcpiTableEntry(first + 48 * static_cast<uint32_t>(i - 1)));
    Bytes header(36);
    ASSERT_TRUE(TReadWrite::GetInstance()->MemoryReadBlock(Acpi().Current->Address, header.data(), 36));
    EXPECT_EQ(header[8], i);
  }
}

TEST_F(KernelCopies, ThatLieAboutThemselvesArePassedOver) {
  Kernel("IADT", Iadt());
  Kernel("AAAA", firmware::AcpiTable({.signature = "AAAA", .length = 35}, {}));   // shorter than a header
  Kernel("BBBB", firmware::AcpiTable({.signature = "BBBB", .length = 37}, {}));   // longer than the file
  Kernel("CCCC", firmware::AcpiTable({.signature = "CCCC", .length = 36}, {1}));  // shorter than the file
  Kernel("DDDD", firmware::AcpiTable({.signature = "EEEE"}, {}));                 // of another signature
  Kernel("FFFF", Bytes(35));                                                      // no whole header
  Kernel("GGGG", firmware::AcpiTable({.signature = "GGGG", .length = (16u << 20) + 1}, Bytes((16u << 20) - 35)));
  Kernel("HHHHx", firmware::AcpiTable({.signature = "HHHH"}, {}));  // no instance number
  Kernel("III", firmware::AcpiTable({.signature = "III"}, {}));
  std::filesystem::create_symlink(folder / "IADT", folder / "IADT2");
  std::filesystem::create_directory(folder / "JJJJ");
  const auto tables = platform::ReadKernelTables();
  ASSERT_THAT(tables, SizeIs(1));
  EXPECT_EQ(tables[0].signature, "IADT");
  EXPECT_EQ(tables[0].bytes, Iadt());
}

TEST_F(KernelCopies, OfTheLargestSizeAreTaken) {
  Kernel("GGGG", firmware::AcpiTable({.signature = "GGGG"}, Bytes((16u << 20) - 36)));
  ASSERT_THAT(platform::ReadKernelTables(), SizeIs(1));
}

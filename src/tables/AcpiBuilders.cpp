// SPDX-License-Identifier: MIT
// What discovery takes from each kind of ACPI table.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <safe_mem_lib.h>

#include "hw/TReadWrite.h"
#include "layout/AcpiLayout.h"
#include "layout/LittleEndian.h"
#include "tables/TAcpiBase.h"
#include "tables/TIADTable.h"
#include "tables/TIAMTable.h"

using namespace layout;

namespace {
uint32_t LengthOf(const unsigned char* table) { return Load32(table + acpi::kLengthOffset); }
}  // namespace

void TAcpiBase::BuildRSDT(unsigned char* table) {
  const size_t count = (LengthOf(table) - acpi::rsdt::kEntries) / acpi::rsdt::kEntryBytes;
  for (size_t i = 0; i < count; ++i) {
    const uint32_t address = Load32(table + acpi::rsdt::kEntries + acpi::rsdt::kEntryBytes * i);
    if (address != 0) Append(address);
  }
}

void TAcpiBase::BuildFACP(unsigned char* table) {
  using namespace acpi::fadt;
  Config->Pm1aEventBlock = Load32(table + kPm1aEventBlock);
  Config->SciInterrupt = Load16(table + kSciInterrupt);
  Config->PmTimerBlock = Load32(table + kPmTimerBlock);
  Config->PmTimerIs32Bits = (Load32(table + kFlags) & kTimerIs32Bits) != 0;
  Config->SmiCommandPort = Load32(table + kSmiCommand);
  Config->AcpiEnable = table[kAcpiEnable];
  Config->AcpiDisable = table[kAcpiDisable];
  Config->S4BiosRequest = table[kS4BiosRequest];
  Config->PstateControl = table[kPstateControl];
  DsdtAddress = Load32(table + kDsdt);
  Append(Load32(table + kFacs));
  Append(DsdtAddress);
}

void TAcpiBase::BuildDSDT(unsigned char* table) {
  std::memcpy(&DsdtHeader, table, sizeof DsdtHeader);
  if (Config->ScanExtraSsdt && appending_) SetupSSDTEx();
}

void TAcpiBase::BuildAPIC(unsigned char* table) {
  using namespace acpi::madt;
  if (LengthOf(table) < kFirstSubtable + kIoApicBytes) return;
  // Contract: only the first subtable is looked at.
  const unsigned char* subtable = table + kFirstSubtable;
  if (subtable[0] == kIoApicType && Load32(subtable + kIoApicInterruptBase) == 0)
    Config->IoApicBase = Load32(subtable + kIoApicAddress);
}

void TAcpiBase::BuildECDT(unsigned char* table) {
  using namespace acpi::ecdt;
  Config->EcPorts = uint32_t{Load16(table + kDataPort)} << 16 | Load16(table + acpi::ecdt::kCommandPort);
  Config->EcControl = table[kControl];
}

void TAcpiBase::BuildMCFG(unsigned char* table) {
  using namespace acpi::mcfg;
  PcieBase = TReadWrite::kNoPcieBase;
  if ((LengthOf(table) - kAllocations) / kAllocationBytes >= 1) PcieBase = Load32(table + kAllocations);
}

void TAcpiBase::BuildIAMT(unsigned char* table) {
  if (table == nullptr) {
    std::puts("IAMT is NULL !!");
    return;
  }
  IamTable = TIAMTable::GetInstance();
  IamTable->Fill(table, LengthOf(table));
}

void TAcpiBase::BuildIADT(unsigned char* table) {
  if (table == nullptr) {
    std::puts("IADT is NULL !!");
    return;
  }
  IadTable = TIADTable::GetInstance();
  IadTable->Fill(table, LengthOf(table));
}

// SPDX-License-Identifier: MIT
/// Discovery of the ACPI tables in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

class TIADTable;
class TIAMTable;
class TReadWrite;

/// The header of every ACPI table, as firmware writes it.
struct TableHeader {
  char Signature[4];
  unsigned char Length[4];  ///< of the whole table, little-endian
  unsigned char Revision;
  unsigned char Checksum;
  char OemId[6];
  char OemTableId[8];
  unsigned char OemRevision[4];
  char CreatorId[4];
  unsigned char CreatorRevision[4];
};
static_assert(sizeof(TableHeader) == 36);

/// One discovered table.
struct TableEntry {
  unsigned int Address;  ///< physical
  unsigned int Length;   ///< bytes; 0 until the walk reaches the entry
};

/// Platform values noted during discovery, and the settings of the script tool.
struct TKQConfig {
  unsigned int EcPorts = 0x00620066;  ///< data port in the high half, command port in the low one
  unsigned char EcControl = 1;
  unsigned int IoApicBase = 0xFEC00000;
  unsigned int Pm1aEventBlock = 0x800;
  unsigned short SciInterrupt = 9;
  unsigned int PmTimerBlock = 0;
  bool PmTimerIs32Bits = false;
  unsigned int SmiCommandPort = 0;
  unsigned char AcpiEnable = 0, AcpiDisable = 0, S4BiosRequest = 0, PstateControl = 0;
  bool ScanExtraSsdt = true;  ///< look for SSDTs that the RSDT does not list

  std::string CommandFile = "CMD.kq";
  std::string DebugFile = "KqDebug.kq";
  std::string HomePage;
  std::string Author;
  unsigned int IoApicRegister = 0xFEC00010;
  unsigned short IndexPort = 0x2E, DataPort = 0x2F;
  unsigned int Timeouts[3] = {1500, 1500, 1500};
};

/// Finds the firmware's ACPI tables in physical memory and hands each known one to its builder. The XSDT is not used
/// and no table's checksum is tested, but the root pointer's and those of SSDTs found by scanning.
///
/// Hostile tables end in bounded time and memory: a table appends entries once per address, a table beyond 16 MiB
/// cannot be read, and the list, the bytes read and the SSDT candidates have an upper bound each.
class TAcpiBase {
 public:
  using TableList = std::vector<std::unique_ptr<TableEntry>>;

  TReadWrite* ReadWrite;
  std::unique_ptr<TKQConfig> Config;
  TableHeader DsdtHeader;
  unsigned int DsdtAddress;
  unsigned int PcieBase;  ///< all ones when there is none
  unsigned int RsdpFound;
  std::unique_ptr<TableList> Tables;
  TableEntry* Current;  ///< what the last lookup selected
  TIAMTable* IamTable;
  TIADTable* IadTable;

  static TAcpiBase* g_Instance;

  /// The instance; the first call runs discovery. Never null: without a root pointer the list is empty.
  static TAcpiBase* GetInstance();
  static void FreeInstance();

  TAcpiBase();
  ~TAcpiBase();
  TAcpiBase(const TAcpiBase&) = delete;
  TAcpiBase& operator=(const TAcpiBase&) = delete;

  /// Selects entry `index`. The root pointer is entry 0, the RSDT entry 1.
  bool GetAcpiTable(int index);
  /// Also reads the entry's length in bytes into `buffer`.
  bool GetAcpiTable(int index, unsigned char* buffer);
  /// Selects the first entry whose 4-character signature equals the text; false for texts of any other length.
  bool GetAcpiTable(const char* signature);
  bool GetAcpiTable(const char* signature, unsigned char* buffer);
  /// Selects the first entry after the root pointer's that lies at `address`.
  bool CheckAcpiTableEntry(unsigned int address);
  /// True when the bytes sum to 0 modulo 256, and for a length of 0.
  bool CheckTableChecksum(TableHeader* table);
  bool CheckTableChecksum(unsigned char* bytes, int length);
  /// The MCFG's base. The PCI Express access of TReadWrite keeps its own, which this does not feed.
  unsigned int GetPcieBaseAddress();

  void InitKQConfig();
  void BuildRSDP();
  /// Tests the root pointer at `address` and starts the list with it and the RSDT.
  bool VerifyRSDP(unsigned int address);
  void BuildAcpiTables();

  /// Each takes a copy of the whole table, at least as long as its fixed part.
  void BuildRSDT(unsigned char* table);
  void BuildFACP(unsigned char* table);
  void BuildAPIC(unsigned char* table);
  void BuildECDT(unsigned char* table);
  void BuildDSDT(unsigned char* table);
  void BuildMCFG(unsigned char* table);
  void BuildIAMT(unsigned char* table);
  void BuildIADT(unsigned char* table);
  /// Looks for SSDTs behind the highest table known so far.
  void SetupSSDTEx();

 private:
  void Append(uint32_t address, uint32_t length = 0);
  bool Select(TableEntry* entry);
  bool ReadEntry(const TableEntry& entry, unsigned char* buffer);
  bool Read(uint32_t address, void* buffer, uint32_t count);
  uint64_t Find(uint64_t start, uint32_t length, const char* text);
  TableHeader ReadHeader(uint32_t address);
  std::unique_ptr<unsigned char[]> ReadTable(uint32_t address, uint32_t length);
  void VisitTable(TableEntry* entry);

  std::set<uint32_t> visited_;
  bool appending_ = true;     ///< false while a table is visited that has appended its entries before
  uint64_t readBudget_;       ///< bytes of whole tables that may still be read
  unsigned candidateBudget_;  ///< SSDT candidates that may still be looked at
};

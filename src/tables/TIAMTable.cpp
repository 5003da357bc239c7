#include "tables/TIAMTable.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include <safe_mem_lib.h>

#include "layout/AcpiLayout.h"
#include "layout/BoardRecord.h"

using namespace layout;

TIAMTable* TIAMTable::g_Instance = nullptr;

TIAMTable* TIAMTable::GetInstance() {
  if (g_Instance == nullptr) g_Instance = new TIAMTable;
  return g_Instance;
}

void TIAMTable::FreeInstance() {
  delete g_Instance;
  g_Instance = nullptr;
}

TIAMTable::TIAMTable()
    : Header(new unsigned char[acpi::kHeaderBytes]()), BoardInfo(new unsigned char[iamt::kBoardRecordBytes]()) {}

TIAMTable::~TIAMTable() {
  delete[] Header;
  delete[] BoardInfo;
}

void TIAMTable::Fill(const unsigned char* table, uint32_t length) {
  memcpy_s(Header, acpi::kHeaderBytes, table, acpi::kHeaderBytes);
  const unsigned char* record = table + iamt::kRecords;
  int64_t remaining = int64_t{length} - static_cast<int64_t>(iamt::kRecords);
  while (remaining >= static_cast<int64_t>(iamt::kLengthEnd)) {
    const uint8_t recordLength = record[iamt::kLength];
    if (record[iamt::kType] == iamt::kBoardRecordType) {
      if (BoardInfo == nullptr) {
        std::puts("BuildIAMT Failed!! (IAMTBoardInfoTable is NULL)");
        return;
      }
      KeepBoardRecord(record, remaining);
    }
    if (recordLength == 0) return;
    remaining -= recordLength;
    record += recordLength;
  }
}

/// A shorter record takes the bytes of the table that follow it; beyond the table there are zeros.
void TIAMTable::KeepBoardRecord(const unsigned char* record, int64_t available) {
  const size_t kept = std::min<size_t>(iamt::kBoardRecordBytes, static_cast<size_t>(available));
  std::memset(BoardInfo, 0, iamt::kBoardRecordBytes);
  memcpy_s(BoardInfo, iamt::kBoardRecordBytes, record, kept);
}

// SPDX-License-Identifier: MIT
// Keeps the header and the board record of the board information table.
#include "tables/TIAMTable.h"

#include <cstdio>
#include <cstring>
#include <memory>

#include <safe_mem_lib.h>

#include "layout/AcpiLayout.h"
#include "layout/BoardRecord.h"
#include "layout/Walk.h"

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

TIAMTable::TIAMTable() : Header(nullptr), BoardInfo(nullptr) {
  auto header = std::make_unique<unsigned char[]>(acpi::kHeaderBytes);
  BoardInfo = new unsigned char[iamt::kBoardRecordBytes]();
  Header = header.release();
}

TIAMTable::~TIAMTable() {
  delete[] Header;
  delete[] BoardInfo;
}

void TIAMTable::Fill(const unsigned char* table, uint32_t length) {
  memcpy_s(Header, acpi::kHeaderBytes, table, acpi::kHeaderBytes);
  for (BoardRecordCursor cursor({table, length}); cursor.Valid(); cursor.Next()) {
    const BoardRecordView record = cursor.Current();
    if (!record.IsBoardRecord()) continue;
    if (BoardInfo == nullptr) {
      std::puts("BuildIAMT Failed!! (IAMTBoardInfoTable is NULL)");
      return;
    }
    std::memset(BoardInfo, 0, iamt::kBoardRecordBytes);
    memcpy_s(BoardInfo, iamt::kBoardRecordBytes, record.Kept().data(), record.Kept().size());
  }
}

// SPDX-License-Identifier: MIT
// Files the records of the function description table into its lists.
#include "tables/TIADTable.h"

#include <algorithm>
#include <memory>

#include <safe_mem_lib.h>

#include "layout/AcpiLayout.h"
#include "layout/Walk.h"

using namespace layout;

namespace {

constexpr uint64_t kMostBytesKept = 64u << 20;

void StorePointer(unsigned char* to, unsigned char* pointer) { std::memcpy(to, &pointer, sizeof pointer); }

/// A fresh zeroed buffer of `size` bytes that starts with the given ones, which are no more.
unsigned char* NewCopy(size_t size, View bytes) {
  auto* buffer = new unsigned char[size]();
  if (!bytes.empty()) memcpy_s(buffer, size, bytes.data(), bytes.size());
  return buffer;
}

}  // namespace

TIADTable* TIADTable::g_Instance = nullptr;

TIADTable* TIADTable::GetInstance() {
  if (g_Instance == nullptr) g_Instance = new TIADTable;
  return g_Instance;
}

void TIADTable::FreeInstance() {
  delete g_Instance;
  g_Instance = nullptr;
}

TIADTable::TIADTable() : Slots{}, tails_{}, budget_(kMostBytesKept) {
  Slots[0] = new unsigned char[acpi::kHeaderBytes]();
}

TIADTable::~TIADTable() {
  for (unsigned list = 1; list < kSlots; ++list) FreeList(list);
  delete[] Slots[0];
}

void TIADTable::FreeList(unsigned list) {
  for (unsigned char* node = Slots[list]; node != nullptr;) {
    unsigned char* next = IadtEntry::LoadPointer(node + IadtEntry::kLinkOffsets[list]);
    if (IadtEntry::kKeptBytes[list] == 0) delete[] IadtEntry::LoadPointer(node + iadt::kBody);
    delete[] node;
    node = next;
  }
}

void TIADTable::Fill(const unsigned char* table, uint32_t length) {
  memcpy_s(Slots[0], acpi::kHeaderBytes, table, acpi::kHeaderBytes);
  for (RecordCursor cursor({table, length}); cursor.Valid(); cursor.Next())
    if (!File(cursor.Current())) return;
}

/// Appends the record to its list; false when the lists are full.
bool TIADTable::File(const RecordView& record) {
  const RecordType* type = record.Row();
  if (type == nullptr) return true;
  const unsigned list = type->list;
  unsigned char* node = NewNode(*type, record);
  if (node == nullptr) return false;
  if (tails_[list] == nullptr) {
    Slots[list] = node;
  } else {
    StorePointer(tails_[list] + IadtEntry::kLinkOffsets[list], node);
  }
  tails_[list] = node;
  return true;
}

unsigned char* TIADTable::NewNode(const RecordType& type, const RecordView& record) {
  const size_t nodeBytes = IadtEntry::kLinkOffsets[type.list] + IadtEntry::kPointerBytes;
  const uint64_t needed = nodeBytes + (type.IsSensor() ? 0 : record.length);
  if (needed > budget_) return nullptr;
  budget_ -= needed;
  if (type.IsSensor()) return NewCopy(nodeBytes, record.Leading(type.keptBytes));
  std::unique_ptr<unsigned char[]> node(NewCopy(nodeBytes, record.Leading(iadt::kBody)));
  const View bytes = record.Bytes();
  StorePointer(node.get() + iadt::kBody, NewCopy(record.length, bytes.subspan(std::min(iadt::kBody, bytes.size()))));
  return node.release();
}

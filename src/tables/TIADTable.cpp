#include "tables/TIADTable.h"

#include <algorithm>

#include <safe_mem_lib.h>

#include "layout/AcpiLayout.h"

using namespace layout;

namespace {

constexpr uint64_t kMostBytesKept = 64u << 20;
void StorePointer(unsigned char* to, unsigned char* pointer) { std::memcpy(to, &pointer, sizeof pointer); }

/// A fresh zeroed buffer of `size` bytes that starts with up to `count` bytes from `source`, as far as they exist.
unsigned char* NewCopy(size_t size, const unsigned char* source, int64_t count, int64_t available) {
  auto* buffer = new unsigned char[size]();
  const int64_t copied = std::min({count, available, static_cast<int64_t>(size)});
  if (copied > 0) memcpy_s(buffer, size, source, static_cast<size_t>(copied));
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
  const unsigned char* record = table + iadt::kRecords;
  int64_t remaining = int64_t{length} - static_cast<int64_t>(iadt::kRecords);
  while (remaining >= static_cast<int64_t>(iadt::kLengthEnd)) {
    const uint32_t recordLength = Load32(record + iadt::kLength);
    if (recordLength == 0 || recordLength > remaining) return;
    if (!File(record, recordLength, remaining)) return;
    remaining -= recordLength;
    record += recordLength;
  }
}

/// Appends the record to its list; false when the lists are full.
bool TIADTable::File(const unsigned char* record, uint32_t recordLength, int64_t available) {
  const RecordType* type = FindRecordType(record[iadt::kType], record[iadt::kValue]);
  if (type == nullptr) return true;
  const unsigned list = type->list;
  unsigned char* node = NewNode(list, record, recordLength, available);
  if (node == nullptr) return false;
  if (tails_[list] == nullptr) {
    Slots[list] = node;
  } else {
    StorePointer(tails_[list] + IadtEntry::kLinkOffsets[list], node);
  }
  tails_[list] = node;
  return true;
}

unsigned char* TIADTable::NewNode(unsigned list, const unsigned char* record, uint32_t recordLength,
                                  int64_t available) {
  constexpr auto kHeaderBytes = static_cast<int64_t>(iadt::kBody);
  const int64_t keptBytes = IadtEntry::kKeptBytes[list];
  const size_t nodeBytes = IadtEntry::kLinkOffsets[list] + IadtEntry::kPointerBytes;
  const uint64_t needed = nodeBytes + (keptBytes == 0 ? recordLength : 0);
  if (needed > budget_) return nullptr;
  budget_ -= needed;
  if (keptBytes != 0) return NewCopy(nodeBytes, record, keptBytes, available);
  unsigned char* node = NewCopy(nodeBytes, record, kHeaderBytes, available);
  StorePointer(node + iadt::kBody,
               NewCopy(recordLength, record + iadt::kBody, recordLength - kHeaderBytes, available - kHeaderBytes));
  return node;
}

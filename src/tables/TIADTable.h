#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "layout/LittleEndian.h"

/// Offsets within an IADT record, and the lists that its types go to.
namespace iadt {

inline constexpr size_t kRecords = 36;
inline constexpr size_t kType = 0, kIndex = 1, kValue = 2, kLength = 3, kName = 7, kBody = 27;
inline constexpr size_t kNameBytes = 20;
/// Bytes up to and including the length field.
inline constexpr size_t kLengthEnd = 7;

struct ListRow {
  uint8_t type;
  uint8_t subType;  ///< record byte 2; kAnySubType where every value belongs to the list
  uint8_t list;
  uint8_t keptBytes;  ///< leading record bytes that a sensor node keeps; 0 for ordinary nodes
};
inline constexpr uint8_t kAnySubType = 0xFF;

// clang-format off
inline constexpr ListRow kLists[] = {
  { 1, kAnySubType,  1, 0},
  { 2, 1,  2, 101}, { 2, 2,  3,  65}, { 2, 3,  4,  51},
  { 3, 1,  5, 175}, { 3, 2,  6,  63}, { 3, 3,  7, 111}, { 3, 4,  8, 69},
  { 4, 1,  9, 171}, { 4, 2, 10, 103}, { 4, 3, 11,  73},
  { 5, kAnySubType, 13, 0}, { 6, kAnySubType, 14, 0}, { 7, kAnySubType, 16, 0}, { 8, kAnySubType, 17, 0},
  { 9, kAnySubType, 18, 0}, {10, kAnySubType, 19, 0}, {11, kAnySubType, 20, 0}, {12, kAnySubType, 21, 0},
  {13, kAnySubType, 22, 0}, {14, kAnySubType, 23, 0}, {15, kAnySubType, 24, 0}, {16, kAnySubType, 25, 0},
  {17, kAnySubType, 26, 0}, {18, kAnySubType, 27, 0}, {19, kAnySubType, 28, 0}, {20, kAnySubType, 29, 0},
  {21, kAnySubType, 30, 0}, {22, kAnySubType, 31, 0}, {23, kAnySubType, 32, 0}, {24, kAnySubType, 33, 0},
  {25, kAnySubType, 36, 0}, {26, kAnySubType, 37, 0}, {27, kAnySubType, 15, 0}, {28, kAnySubType, 38, 0},
  {29, kAnySubType, 40, 0}, {30, kAnySubType, 41, 0}, {31, 1, 12, 48},
  {32, kAnySubType, 42, 0}, {33, kAnySubType, 39, 0}, {34, kAnySubType, 34, 0}, {35, kAnySubType, 35, 0},
};
// clang-format on

inline constexpr unsigned kSlots = 43;  ///< slot 0 and lists 1 to 42
inline constexpr size_t kPointerBytes = sizeof(unsigned char*);

/// Leading record bytes that the nodes of each list keep; 0 where they are ordinary.
inline constexpr auto kKeptBytes = [] {
  std::array<uint8_t, kSlots> kept{};
  for (const ListRow& row : kLists) kept[row.list] = row.keptBytes;
  return kept;
}();

/// Where a node's link lies: behind the kept bytes and, in ordinary nodes, the body pointer.
inline constexpr auto kLinkOffsets = [] {
  std::array<uint8_t, kSlots> offsets{};
  for (unsigned list = 0; list < kSlots; ++list)
    offsets[list] = kKeptBytes[list] != 0 ? kKeptBytes[list] : kBody + kPointerBytes;
  return offsets;
}();

/// The list of a record; 0 for types and sub-types that are not understood.
unsigned ListOf(uint8_t type, uint8_t subType);

}  // namespace iadt

/// One list entry, by the bytes of its node: the kept record bytes, then (ordinary nodes) a pointer to the copy of the
/// body, then the link to the next node.
class IadtEntry {
 public:
  IadtEntry(unsigned char* node, size_t list) : node_(node), list_(list) {}

  uint8_t Index() const { return node_[iadt::kIndex]; }
  uint8_t Value() const { return node_[iadt::kValue]; }
  /// Of the whole record, header included.
  uint32_t Length() const { return layout::Load32(node_ + iadt::kLength); }
  /// 20 bytes, NUL-padded but not always NUL-terminated.
  const char* Name() const { return reinterpret_cast<const char*>(node_ + iadt::kName); }
  /// Of an ordinary node: Length() - 27 command bytes.
  unsigned char* Body() const { return LoadPointer(node_ + iadt::kBody); }
  /// Of a sensor node: the record bytes and how many of them were kept.
  unsigned char* Record() const { return node_; }
  size_t KeptBytes() const { return iadt::kKeptBytes[list_]; }

  static unsigned char* LoadPointer(const unsigned char* from) {
    unsigned char* pointer;
    std::memcpy(&pointer, from, sizeof pointer);
    return pointer;
  }

 private:
  unsigned char* node_;
  size_t list_;
};

/// One list in firmware order, for range-based for.
class IadtList {
 public:
  class Iterator {
   public:
    Iterator(unsigned char* node, size_t list) : node_(node), list_(list) {}
    IadtEntry operator*() const { return {node_, list_}; }
    Iterator& operator++() {
      node_ = IadtEntry::LoadPointer(node_ + iadt::kLinkOffsets[list_]);
      return *this;
    }
    bool operator!=(const Iterator& other) const { return node_ != other.node_; }

   private:
    unsigned char* node_;
    size_t list_;
  };

  IadtList(unsigned char* head, size_t list) : head_(head), list_(list) {}
  Iterator begin() const { return {head_, list_}; }
  Iterator end() const { return {nullptr, list_}; }

 private:
  unsigned char* head_;
  size_t list_;
};

/// The function description table, cut into one singly linked list per record type and sub-type.
class TIADTable {
 public:
  /// Slot 0: a 36-byte copy of the table header, zero until a table was found. Slots 1 to 42: list heads, null while
  /// empty.
  unsigned char* Slots[iadt::kSlots];

  static TIADTable* g_Instance;

  static TIADTable* GetInstance();
  static void FreeInstance();

  TIADTable();
  ~TIADTable();
  TIADTable(const TIADTable&) = delete;
  TIADTable& operator=(const TIADTable&) = delete;

  /// Files every record of a whole table behind those already there. A record length of 0 or beyond the table ends the
  /// walk; so does the upper bound on what the lists may hold (64 MiB).
  void Fill(const unsigned char* table, uint32_t length);

  /// List `number`, 1 to 42; empty when absent.
  IadtList List(unsigned number) const { return {Slots[number], number}; }
  bool Has(unsigned number) const { return Slots[number] != nullptr; }

 private:
  bool File(const unsigned char* record, uint32_t recordLength, int64_t available);
  unsigned char* NewNode(unsigned list, const unsigned char* record, uint32_t recordLength, int64_t available);
  void FreeList(unsigned list);

  unsigned char* tails_[iadt::kSlots];
  uint64_t budget_;  ///< bytes that nodes and bodies may still take
};

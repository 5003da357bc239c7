// SPDX-License-Identifier: MIT
/// The function description table, filed: the lists, their entries, and the table of lists that the features read.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "layout/LittleEndian.h"
#include "layout/RecordLayout.h"
#include "layout/Walk.h"

/// The walk over the commands of an ordinary entry.
using IadtCommands = layout::CommandCursor<unsigned char>;

/// One list entry, by the bytes of its node: the kept record bytes, then (ordinary nodes) a pointer to the copy of the
/// body, then the link to the next node.
class IadtEntry {
 public:
  static constexpr size_t kPointerBytes = sizeof(unsigned char*);
  /// Leading record bytes that the nodes of each list keep; 0 where they are ordinary.
  static constexpr auto kKeptBytes = [] {
    std::array<uint8_t, 1 + layout::iadt::kLists> kept{};
    for (const layout::RecordType& row : layout::kRecordTypes) kept[row.list] = row.keptBytes;
    return kept;
  }();
  /// Where a node's link lies: behind the kept bytes and, in ordinary nodes, the body pointer.
  static constexpr auto kLinkOffsets = [] {
    std::array<uint8_t, 1 + layout::iadt::kLists> offsets{};
    for (size_t list = 0; list < offsets.size(); ++list)
      offsets[list] = kKeptBytes[list] != 0 ? kKeptBytes[list] : layout::iadt::kBody + kPointerBytes;
    return offsets;
  }();

  IadtEntry(unsigned char* node, size_t list) : node_(node), list_(list) {}

  uint8_t Index() const { return node_[layout::iadt::kIndex]; }
  uint8_t Value() const { return node_[layout::iadt::kValue]; }
  /// Of the whole record, header included.
  uint32_t Length() const { return layout::Load32(node_ + layout::iadt::kLength); }
  /// 20 bytes, NUL-padded but not always NUL-terminated.
  const char* Name() const { return reinterpret_cast<const char*>(node_ + layout::iadt::kName); }
  /// Of an ordinary node: Length() - 27 command bytes.
  unsigned char* Body() const { return LoadPointer(node_ + layout::iadt::kBody); }
  IadtCommands Commands() const { return {Body(), int64_t{Length()} - static_cast<int64_t>(layout::iadt::kBody)}; }
  /// Of a sensor node: the record bytes and how many of them were kept.
  unsigned char* Record() const { return node_; }
  size_t KeptBytes() const { return kKeptBytes[list_]; }

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
      node_ = IadtEntry::LoadPointer(node_ + IadtEntry::kLinkOffsets[list_]);
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
  static constexpr unsigned kSlots = 1 + layout::iadt::kLists;

  /// Slot 0: a 36-byte copy of the table header, zero until a table was found. Slots 1 to 42: list heads, null while
  /// empty.
  unsigned char* Slots[kSlots];

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
  bool File(const layout::RecordView& record);
  unsigned char* NewNode(const layout::RecordType& type, const layout::RecordView& record);
  void FreeList(unsigned list);

  unsigned char* tails_[kSlots];
  uint64_t budget_;  ///< bytes that nodes and bodies may still take
};

// SPDX-License-Identifier: MIT
// Root pointer and tables, and where they lie.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

#include "firmware/AcpiImage.h"
#include "firmware/AcpiTable.h"
#include "firmware/Bytes.h"
#include "layout/LittleEndian.h"
#include "sim/Board.h"

namespace {

using firmware::AcpiImage;
using firmware::Bytes;
using layout::Load;

unsigned SumOf(const Bytes& bytes, size_t count) {
  return std::accumulate(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(count), 0u) & 0xFF;
}

TEST(RootPointer, OfRevisionZeroHasTwentyBytes) {
  const Bytes pointer = firmware::Rsdp(0x7F000000);
  ASSERT_EQ(pointer.size(), 20u);
  EXPECT_EQ(std::string(pointer.begin(), pointer.begin() + 8), "RSD PTR ");
  EXPECT_EQ(pointer[15], 0);
  EXPECT_EQ(Load(pointer, 16, 4), 0x7F000000u);
  EXPECT_EQ(SumOf(pointer, 20), 0u);
}

TEST(RootPointer, OfRevisionTwoHasItsOwnLength) {
  const Bytes pointer = firmware::Rsdp(0x7F000000, 2);
  ASSERT_EQ(pointer.size(), 36u);
  EXPECT_EQ(Load(pointer, 20, 4), 36u);
  EXPECT_EQ(SumOf(pointer, 20), 0u);
  EXPECT_EQ(SumOf(pointer, 36), 0u);
}

TEST(StandardTables, HaveTheirFieldsAtPublishedOffsets) {
  const Bytes fadt = firmware::FadtTable(0x11223344, 0x55667788, 9, 0x1800, 0x1808);
  EXPECT_EQ(Load(fadt, 36, 4), 0x55667788u);
  EXPECT_EQ(Load(fadt, 40, 4), 0x11223344u);
  EXPECT_EQ(Load(fadt, 46, 2), 9u);
  EXPECT_EQ(Load(fadt, 56, 4), 0x1800u);
  EXPECT_EQ(Load(fadt, 76, 4), 0x1808u);
  const Bytes mcfg = firmware::McfgTable({0xE0000000});
  EXPECT_EQ(mcfg.size(), 60u);
  EXPECT_EQ(Load(mcfg, 44, 8), 0xE0000000u);
  const Bytes madt = firmware::MadtTable(firmware::IoApicSubtable(0xFEC00000, 24));
  EXPECT_EQ(Load(madt, 44, 2), 0x0C01u);
  EXPECT_EQ(Load(madt, 48, 4), 0xFEC00000u);
  EXPECT_EQ(Load(madt, 52, 4), 24u);
  const Bytes ecdt = firmware::EcdtTable(0x66, 0x62);
  EXPECT_EQ(Load(ecdt, 40, 2), 0x66u);
  EXPECT_EQ(Load(ecdt, 52, 2), 0x62u);
  for (const Bytes& table : {fadt, mcfg, madt, ecdt, firmware::DsdtTable()}) EXPECT_EQ(SumOf(table, table.size()), 0u);
}

TEST(Layout, ListsTablesAndEntriesInOrder) {
  const Bytes table = firmware::AcpiTable({.signature = "ABCD"}, {1, 2, 3});
  const auto image = AcpiImage()
                         .RootPointerAt(0xE0000)
                         .TablesAt(0x10000)
                         .Table(table)
                         .Entry(0)
                         .TableAt(0x30000, table)
                         .UnlistedAt(0x40000, table)
                         .Build();
  ASSERT_EQ(image.size(), 5u);
  EXPECT_EQ(image[0].first, 0xE0000u);
  EXPECT_EQ(Load(image[0].second, 16, 4), 0x10000u);
  EXPECT_EQ(image[1].first, 0x10000u);
  ASSERT_EQ(image[1].second.size(), 36u + 12);
  // The RSDT's 48 bytes take one 64-byte slot.
  EXPECT_EQ(Load(image[1].second, 36, 4), 0x10040u);
  EXPECT_EQ(Load(image[1].second, 40, 4), 0u);
  EXPECT_EQ(Load(image[1].second, 44, 4), 0x30000u);
  EXPECT_EQ(image[2].first, 0x10040u);
  EXPECT_EQ(image[4].first, 0x40000u);
}

TEST(Layout, GoesIntoPhysicalMemory) {
  sim::Board board;
  AcpiImage().Table(firmware::DsdtTable()).PutInto(&board);
  EXPECT_EQ(board.MemoryByte(0xF0000), 'R');
  EXPECT_EQ(board.MemoryByte(0x7F000000), 'R');
  EXPECT_EQ(board.MemoryByte(0x7F000040), 'D');
  EXPECT_EQ(board.MemoryByte(0x7F000040 + 36), 0xFF);
}

}  // namespace

// SPDX-License-Identifier: MIT
// Lists and nodes of the function description table.
#include "tables/TIADTable.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <set>

#include "firmware/AcpiTable.h"
#include "tests/unit/tables/Machine.h"

using namespace tabletest;

namespace {

/// A record with counting bytes: body byte k holds k + 1, modulo 256.
Bytes Counting(uint8_t type, uint8_t value, uint32_t length) {
  Bytes record = Join({{1, type}, {1, 0x55}, {1, value}, {4, length}});
  for (unsigned i = 7; i < length; ++i) record.push_back(static_cast<uint8_t>(i));
  return record;
}

Bytes Table(const Bytes& records) { return firmware::AcpiTable({.signature = "IADT"}, records); }

unsigned char* PointerAt(const unsigned char* bytes) {
  unsigned char* pointer;
  std::memcpy(&pointer, bytes, sizeof pointer);
  return pointer;
}

/// The table parsed as discovery does it.
class Iadt : public testing::Test, protected Machine {
 protected:
  TIADTable* table = TIADTable::GetInstance();

  void Fill(const Bytes& bytes) { table->Fill(bytes.data(), static_cast<uint32_t>(bytes.size())); }

  int Nodes(unsigned list) {
    int count = 0;
    for ([[maybe_unused]] const IadtEntry entry : table->List(list)) ++count;
    return count;
  }
  int AllNodes() {
    int count = 0;
    for (unsigned list = 1; list <= 42; ++list) count += Nodes(list);
    return count;
  }
};

class BuildIADT : public Iadt {};
class TIADTableLists : public Iadt {};
class TIADTableNodes : public Iadt {};
class TIADTableWalk : public Iadt {};

/// Record type, byte 2, list, bytes that a sensor node keeps (0: an ordinary node).
struct ListCase {
  uint8_t type, value, list, kept;
};
constexpr ListCase kCases[] = {
    {1, 0, 1, 0},   {2, 1, 2, 101}, {2, 2, 3, 65},   {2, 3, 4, 51},  {3, 1, 5, 175},  {3, 2, 6, 63},  {3, 3, 7, 111},
    {3, 4, 8, 69},  {4, 1, 9, 171}, {4, 2, 10, 103}, {4, 3, 11, 73}, {31, 1, 12, 48}, {5, 0, 13, 0},  {6, 0, 14, 0},
    {27, 0, 15, 0}, {7, 0, 16, 0},  {8, 0, 17, 0},   {9, 0, 18, 0},  {10, 0, 19, 0},  {11, 0, 20, 0}, {12, 0, 21, 0},
    {13, 0, 22, 0}, {14, 0, 23, 0}, {15, 0, 24, 0},  {16, 0, 25, 0}, {17, 0, 26, 0},  {18, 0, 27, 0}, {19, 0, 28, 0},
    {20, 0, 29, 0}, {21, 0, 30, 0}, {22, 0, 31, 0},  {23, 0, 32, 0}, {24, 0, 33, 0},  {34, 0, 34, 0}, {35, 0, 35, 0},
    {25, 0, 36, 0}, {26, 0, 37, 0}, {28, 0, 38, 0},  {33, 0, 39, 0}, {29, 0, 40, 0},  {30, 0, 41, 0}, {32, 0, 42, 0},
};

}  // namespace

// ---- lists ----

TEST_F(TIADTableLists, AreAll42Covered) {
  std::set<int> lists;
  for (const ListCase& each : kCases) lists.insert(each.list);
  EXPECT_EQ(lists.size(), 42u);
  EXPECT_EQ(std::size(kCases), 42u);
}

TEST_F(TIADTableLists, TakeEachRecordByTypeAndSubType) {
  for (const ListCase& each : kCases) {
    SCOPED_TRACE(int{each.list});
    TIADTable parsed;
    const Bytes bytes = Table(Counting(each.type, each.value, 200));
    parsed.Fill(bytes.data(), static_cast<uint32_t>(bytes.size()));
    for (unsigned list = 1; list <= 42; ++list)
      EXPECT_EQ(parsed.Slots[list] != nullptr, list == each.list) << "slot " << list;
  }
}

TEST_F(TIADTableLists, TakeOrdinaryRecordsWhateverByte2Holds) {
  for (const ListCase& each : kCases) {
    if (each.kept != 0) continue;
    TIADTable parsed;
    const Bytes bytes = Table(Counting(each.type, 0xFF, 40) + Counting(each.type, 4, 40));
    parsed.Fill(bytes.data(), static_cast<uint32_t>(bytes.size()));
    ASSERT_NE(parsed.Slots[each.list], nullptr) << int{each.list};
    EXPECT_EQ(parsed.Slots[each.list][2], 0xFF);
    EXPECT_EQ(PointerAt(parsed.Slots[each.list] + 35)[2], 4);
  }
}

TEST_F(TIADTableLists, TakeNoSensorRecordOfAnotherSubType) {
  Fill(Table(Counting(2, 0, 110) + Counting(2, 4, 110) + Counting(3, 0, 180) + Counting(3, 5, 180) +
             Counting(4, 0, 180) + Counting(4, 4, 180) + Counting(31, 0, 56) + Counting(31, 2, 56) +
             Counting(2, 255, 110)));
  EXPECT_EQ(AllNodes(), 0);
}

TEST_F(TIADTableLists, TakeNoRecordOfType0OrAbove35) {
  Fill(Table(Counting(0, 0, 40) + Counting(36, 0, 40) + Counting(40, 0, 40) + Counting(255, 0, 40)));
  EXPECT_EQ(AllNodes(), 0);
}

TEST_F(TIADTableLists, GoOnBehindARecordOfAnUnknownType) {
  Fill(Table(Counting(40, 1, 50) + Counting(5, 7, 30)));
  EXPECT_EQ(AllNodes(), 1);
  EXPECT_EQ(table->Slots[13][2], 7);
}

/// Byte k of what a node holds of its record's first bytes: zeros beyond the table.
Bytes FirstBytes(const Bytes& table, size_t record, size_t count) {
  Bytes bytes(count);
  for (size_t i = 0; i < count && record + i < table.size(); ++i) bytes[i] = table[record + i];
  return bytes;
}

TEST_F(TIADTableLists, TakeRecordsOfEveryTypeAndSubTypeAtEveryLength) {
  for (unsigned type = 0; type < 256; ++type)
    for (uint8_t value = 0; value < 6; ++value)
      for (uint32_t length = 0; length <= 80; ++length) {
        const ListCase* row = std::find_if(std::begin(kCases), std::end(kCases), [&](const ListCase& each) {
          return each.type == type && (each.kept == 0 || each.value == value);
        });
        // What follows is too little for a record.
        Bytes record = Counting(static_cast<uint8_t>(type), value, length);
        record.resize(std::max<size_t>(length, 7) + (length < 7 ? length : 6));
        const Bytes bytes = Table(record);
        TIADTable parsed;
        parsed.Fill(bytes.data(), static_cast<uint32_t>(bytes.size()));
        const bool filed = length != 0 && row != std::end(kCases);
        for (unsigned list = 1; list <= 42; ++list)
          ASSERT_EQ(parsed.Slots[list] != nullptr, filed && list == row->list)
              << type << " " << int{value} << " " << length << " " << list;
        if (!filed) continue;
        const unsigned char* const node = parsed.Slots[row->list];
        const size_t kept = row->kept != 0 ? row->kept : 27;
        ASSERT_EQ(Bytes(node, node + kept), FirstBytes(bytes, 36, kept)) << type << " " << length;
        if (row->kept == 0 && length > 27) {
          const unsigned char* const body = PointerAt(node + 27);
          ASSERT_EQ(Bytes(body, body + length - 27), Bytes(record.begin() + 27, record.begin() + length)) << length;
        }
      }
}

TEST_F(TIADTableLists, KeepTheOrderOfTheTable) {
  Fill(Table(Counting(5, 3, 30) + Counting(6, 9, 30) + Counting(5, 1, 30) + Counting(5, 2, 30)));
  Bytes values;
  for (const IadtEntry entry : table->List(13)) values.push_back(entry.Value());
  EXPECT_EQ(values, (Bytes{3, 1, 2}));
}

TEST_F(TIADTableLists, GrowAtTheTailWhenASecondTableIsFilledIn) {
  Fill(Table(Counting(5, 3, 30)));
  Fill(Table(Counting(5, 4, 30)));
  Bytes values;
  for (const IadtEntry entry : table->List(13)) values.push_back(entry.Value());
  EXPECT_EQ(values, (Bytes{3, 4}));
}

TEST_F(TIADTableLists, AreTheFirstMembersInSlotOrder) {
  EXPECT_EQ(static_cast<void*>(table), static_cast<void*>(&table->Slots[0]));
  EXPECT_EQ(sizeof table->Slots, 43 * sizeof(void*));
}

// ---- nodes ----

TEST_F(TIADTableNodes, OfOrdinaryRecordsAreTheHeaderABodyPointerAndALink) {
  const Bytes record = Counting(5, 2, 63);
  Fill(Table(record + Counting(5, 3, 30)));
  const unsigned char* node = table->Slots[13];
  EXPECT_EQ(Bytes(node, node + 27), Bytes(record.begin(), record.begin() + 27));
  const unsigned char* body = PointerAt(node + 27);
  EXPECT_EQ(Bytes(body, body + 36), Bytes(record.begin() + 27, record.end()));
  const unsigned char* next = PointerAt(node + 35);
  ASSERT_NE(next, nullptr);
  EXPECT_EQ(next[2], 3);
  EXPECT_EQ(PointerAt(next + 35), nullptr);
}

TEST_F(TIADTableNodes, OfSensorsAreTheKeptBytesAndALink) {
  for (const ListCase& each : kCases) {
    if (each.kept == 0) continue;
    SCOPED_TRACE(int{each.list});
    TIADTable parsed;
    const Bytes record = Counting(each.type, each.value, 200);
    const Bytes bytes = Table(record + record);
    parsed.Fill(bytes.data(), static_cast<uint32_t>(bytes.size()));
    const unsigned char* node = parsed.Slots[each.list];
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(Bytes(node, node + each.kept), Bytes(record.begin(), record.begin() + each.kept));
    const unsigned char* next = PointerAt(node + each.kept);
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(PointerAt(next + each.kept), nullptr);
  }
}

TEST_F(TIADTableNodes, OfCurrentSensorsDropTheLastEightRecordBytes) {
  Fill(Table(Counting(31, 1, 56)));
  EXPECT_EQ(table->Slots[12][47], 47);
  EXPECT_EQ(PointerAt(table->Slots[12] + 48), nullptr);
}

TEST_F(TIADTableNodes, OfAShortSensorRecordGoOnWithTheBytesOfTheTable) {
  // 30 of 51 bytes; the record behind it supplies the next 21.
  const Bytes following = Counting(5, 2, 40);
  Fill(Table(Counting(2, 3, 30) + following));
  const unsigned char* node = table->Slots[4];
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(Bytes(node + 30, node + 51), Bytes(following.begin(), following.begin() + 21));
}

TEST_F(TIADTableNodes, AreZeroBeyondTheEndOfTheTable) {
  Fill(Table(Counting(2, 3, 30)));
  const unsigned char* node = table->Slots[4];
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node[29], 29);
  EXPECT_EQ(Bytes(node + 30, node + 51), Bytes(21, 0));
}

TEST_F(TIADTableNodes, OfARecordShorterThanItsHeaderStayInsideTheTable) {
  Fill(Table(Counting(5, 2, 7)));
  const unsigned char* node = table->Slots[13];
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node[0], 5);
  EXPECT_EQ(Bytes(node + 7, node + 27), Bytes(20, 0));
}

TEST_F(TIADTableNodes, GiveTheirFieldsByName) {
  Bytes record = Counting(24, 9, 30);
  record[1] = 3;
  std::memcpy(&record[7], "General purpose\0\0\0\0\0", 20);
  Fill(Table(record));
  const IadtEntry entry = *table->List(33).begin();
  EXPECT_EQ(entry.Index(), 3);
  EXPECT_EQ(entry.Value(), 9);
  EXPECT_EQ(entry.Length(), 30u);
  EXPECT_STREQ(entry.Name(), "General purpose");
  EXPECT_EQ(entry.Body()[0], 27);
}

// ---- the walk over the records ----

TEST_F(TIADTableWalk, OfAHeaderAloneFindsNothingAndKeepsTheHeader) {
  const Bytes bytes = Table({});
  Fill(bytes);
  EXPECT_EQ(AllNodes(), 0);
  EXPECT_EQ(Bytes(table->Slots[0], table->Slots[0] + 36), bytes);
}

TEST_F(TIADTableWalk, OfATableShorterThanItsHeaderFindsNothing) {
  const Bytes bytes = Table(Counting(5, 2, 30));
  table->Fill(bytes.data(), 35);
  table->Fill(bytes.data(), 0);
  EXPECT_EQ(AllNodes(), 0);
}

TEST_F(TIADTableWalk, EndsAtARecordOfLength0) {
  Fill(Table(Counting(5, 1, 30) + Join({{1, 5}, {1, 0}, {1, 2}, {4, 0}, {20, 0}}) + Counting(5, 3, 30)));
  EXPECT_EQ(Nodes(13), 1);
}

TEST_F(TIADTableWalk, EndsAtARecordThatReachesBeyondTheTable) {
  Bytes last = Counting(5, 2, 30);
  last[3] = 31;
  Fill(Table(Counting(5, 1, 30) + last));
  EXPECT_EQ(Nodes(13), 1);
}

TEST_F(TIADTableWalk, EndsAtAHugeRecordLength) {
  Bytes last = Counting(5, 2, 30);
  last[3] = last[4] = last[5] = last[6] = 0xFF;
  Fill(Table(Counting(5, 1, 30) + last));
  EXPECT_EQ(Nodes(13), 1);
}

TEST_F(TIADTableWalk, TakesARecordThatEndsWithTheTable) {
  Fill(Table(Counting(5, 1, 30) + Counting(5, 2, 30)));
  EXPECT_EQ(Nodes(13), 2);
}

TEST_F(TIADTableWalk, EndsWhereNoWholeLengthFieldIsLeft) {
  Fill(Table(Counting(5, 1, 30) + Bytes{5, 0, 2, 7, 0, 0}));
  EXPECT_EQ(Nodes(13), 1);
}

TEST_F(TIADTableWalk, TakesAHundredThousandRecords) {
  Bytes records;
  const Bytes record = Counting(5, 1, 28);
  for (int i = 0; i < 100000; ++i) records.insert(records.end(), record.begin(), record.end());
  Fill(Table(records));
  EXPECT_EQ(Nodes(13), 100000);
}

TEST_F(TIADTableWalk, KeepsNoMoreThan64MiB) {
  // 7-byte records: 43 bytes of node and 7 of body each; 67108864 / 50 is 1342177.
  Bytes records;
  for (int i = 0; i < 1400000; ++i) {
    const uint8_t record[] = {5, 0, 1, 7, 0, 0, 0};
    records.insert(records.end(), std::begin(record), std::end(record));
  }
  Fill(Table(records));
  EXPECT_EQ(Nodes(13), 1342177);
}

// ---- the singleton ----

TEST_F(TIADTableWalk, LeavesNothingInAFreshInstance) {
  TIADTable::FreeInstance();
  EXPECT_EQ(TIADTable::g_Instance, nullptr);
  table = TIADTable::GetInstance();
  EXPECT_EQ(TIADTable::GetInstance(), table);
  EXPECT_EQ(Bytes(table->Slots[0], table->Slots[0] + 36), Bytes(36, 0));
  for (unsigned list = 1; list <= 42; ++list) EXPECT_EQ(table->Slots[list], nullptr);
}

TEST_F(BuildIADT, PrintsALineWhenThereIsNoTable) {
  std::string output = Printed([] { TAcpiBase::GetInstance(); });
  EXPECT_EQ(output, "TAcpiBase::BuildRSDP Failed !!\n");
  output = Printed([] { TAcpiBase::GetInstance()->BuildIADT(nullptr); });
  EXPECT_EQ(output, "IADT is NULL !!\n");
  EXPECT_EQ(TAcpiBase::GetInstance()->IadTable, nullptr);
}

TEST_F(BuildIADT, FillsTheSingletonAndRemembersIt) {
  Printed([] { TAcpiBase::GetInstance(); });
  Bytes bytes = Table(Counting(5, 1, 30));
  TAcpiBase::GetInstance()->BuildIADT(bytes.data());
  EXPECT_EQ(TAcpiBase::GetInstance()->IadTable, TIADTable::g_Instance);
  EXPECT_TRUE(TIADTable::g_Instance->Has(13));
}

TEST_F(BuildIADT, TestsNoChecksum) {
  Printed([] { TAcpiBase::GetInstance(); });
  Bytes bytes = Table(Counting(5, 1, 30));
  bytes[9] ^= 0x5A;
  TAcpiBase::GetInstance()->BuildIADT(bytes.data());
  EXPECT_TRUE(TIADTable::g_Instance->Has(13));
}

// SPDX-License-Identifier: MIT
// What is kept of the board information table.
#include "tables/TIAMTable.h"

#include "firmware/AcpiTable.h"
#include "tests/unit/tables/Machine.h"

using namespace tabletest;

namespace {

/// A record of `length` bytes: type, two unused bytes, the length byte, then `filler` throughout.
Bytes Record(uint8_t type, uint8_t length, uint8_t filler) {
  Bytes record(length, filler);
  record[0] = type;
  record[3] = length;
  return record;
}

Bytes Table(const Bytes& records) { return firmware::AcpiTable({.signature = "IAMT"}, records); }

class TIAMTableFill : public testing::Test, protected Machine {
 protected:
  void Fill(const Bytes& bytes) { table->Fill(bytes.data(), static_cast<uint32_t>(bytes.size())); }
  Bytes BoardInfo() const { return Bytes(table->BoardInfo, table->BoardInfo + 55); }

  TIAMTable* table = TIAMTable::GetInstance();
};

class BuildIAMT : public TIAMTableFill {};

}  // namespace

TEST_F(TIAMTableFill, StartsFromZeroedBuffers) {
  EXPECT_EQ(Bytes(table->Header, table->Header + 36), Bytes(36, 0));
  EXPECT_EQ(BoardInfo(), Bytes(55, 0));
}

TEST_F(TIAMTableFill, HasTheHeaderAndTheBoardRecordAsItsFirstMembers) {
  EXPECT_EQ(static_cast<void*>(table), static_cast<void*>(&table->Header));
  EXPECT_EQ(static_cast<void*>(&table->Header + 1), static_cast<void*>(&table->BoardInfo));
}

TEST_F(TIAMTableFill, KeepsTheHeaderAloneOfATableOf36Bytes) {
  const Bytes bytes = Table({});
  Fill(bytes);
  EXPECT_EQ(Bytes(table->Header, table->Header + 36), bytes);
  EXPECT_EQ(BoardInfo(), Bytes(55, 0));
}

TEST_F(TIAMTableFill, KeepsTheFirst55BytesOfABoardRecord) {
  const Bytes record = Record(0, 60, 0x77);
  Fill(Table(record));
  EXPECT_EQ(BoardInfo(), Bytes(record.begin(), record.begin() + 55));
}

TEST_F(TIAMTableFill, KeepsTheLastOfTwoBoardRecords) {
  Fill(Table(Record(0, 55, 0x11) + Record(0, 55, 0x22)));
  EXPECT_EQ(BoardInfo(), Record(0, 55, 0x22));
}

TEST_F(TIAMTableFill, StepsOverOtherRecordsByTheirLengthByte) {
  Fill(Table(Record(7, 9, 0x00) + Record(1, 200, 0x00) + Record(0, 55, 0x33) + Record(2, 60, 0x44)));
  EXPECT_EQ(BoardInfo(), Record(0, 55, 0x33));
}

TEST_F(TIAMTableFill, TakesTheFollowingBytesForAShortBoardRecord) {
  const Bytes shorter = Record(0, 20, 0x55);
  const Bytes following = Record(9, 60, 0x66);
  Fill(Table(shorter + following));
  EXPECT_EQ(BoardInfo(), shorter + Bytes(following.begin(), following.begin() + 35));
}

TEST_F(TIAMTableFill, ReadsNothingBeyondTheTable) {
  const Bytes shorter = Record(0, 20, 0x55);
  Fill(Table(shorter));
  EXPECT_EQ(BoardInfo(), shorter + Bytes(35, 0));
}

TEST_F(TIAMTableFill, KeepsNothingOfAnEarlierRecordBehindAShortOneAtTheEnd) {
  const Bytes shorter = Record(0, 20, 0x55);
  Fill(Table(Record(0, 55, 0x11) + shorter));
  EXPECT_EQ(BoardInfo(), shorter + Bytes(35, 0));
}

TEST_F(TIAMTableFill, EndsAtARecordOfLength0) {
  Bytes endless = Record(5, 8, 0x00);
  endless[3] = 0;
  Fill(Table(Record(0, 55, 0x11) + endless + Record(0, 55, 0x22)));
  EXPECT_EQ(BoardInfo(), Record(0, 55, 0x11));
}

TEST_F(TIAMTableFill, KeepsABoardRecordWhoseLengthIs0AndEndsThere) {
  Bytes endless = Record(0, 55, 0x66);
  endless[3] = 0;
  Fill(Table(endless + Record(0, 55, 0x22)));
  EXPECT_EQ(BoardInfo(), endless);
}

TEST_F(TIAMTableFill, EndsAtARecordThatReachesBeyondTheTable) {
  Fill(Table(Record(0, 55, 0x11) + Bytes{3, 0, 0, 250, 0, 0}));
  EXPECT_EQ(BoardInfo(), Record(0, 55, 0x11));
}

TEST_F(TIAMTableFill, EndsWhereNoWholeRecordHeaderIsLeft) {
  Fill(Table(Record(0, 55, 0x11) + Bytes{0, 0, 0}));
  EXPECT_EQ(BoardInfo(), Record(0, 55, 0x11));
}

TEST_F(TIAMTableFill, PrintsALineWhenThereIsNoBufferForABoardRecord) {
  delete[] table->BoardInfo;
  table->BoardInfo = nullptr;
  EXPECT_EQ(Printed([&] { Fill(Table(Record(7, 9, 0x00) + Record(0, 55, 0x11))); }),
            "BuildIAMT Failed!! (IAMTBoardInfoTable is NULL)\n");
}

TEST_F(TIAMTableFill, PrintsNothingWithoutABufferWhenThereIsNoBoardRecord) {
  delete[] table->BoardInfo;
  table->BoardInfo = nullptr;
  EXPECT_EQ(Printed([&] { Fill(Table(Record(7, 9, 0x00))); }), "");
}

TEST_F(TIAMTableFill, ServesOneInstanceUntilItIsFreed) {
  EXPECT_EQ(TIAMTable::GetInstance(), table);
  TIAMTable::FreeInstance();
  EXPECT_EQ(TIAMTable::g_Instance, nullptr);
}

TEST_F(BuildIAMT, PrintsALineWhenThereIsNoTable) {
  Printed([] { TAcpiBase::GetInstance(); });
  EXPECT_EQ(Printed([] { TAcpiBase::GetInstance()->BuildIAMT(nullptr); }), "IAMT is NULL !!\n");
  EXPECT_EQ(TAcpiBase::GetInstance()->IamTable, nullptr);
}

TEST_F(BuildIAMT, FillsTheSingletonAndRemembersItWithoutTestingTheChecksum) {
  Printed([] { TAcpiBase::GetInstance(); });
  Bytes bytes = Table(Record(0, 55, 0x11));
  bytes[9] ^= 0x5A;
  TAcpiBase::GetInstance()->BuildIAMT(bytes.data());
  EXPECT_EQ(TAcpiBase::GetInstance()->IamTable, table);
  EXPECT_EQ(BoardInfo(), Record(0, 55, 0x11));
}

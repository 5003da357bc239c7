// SPDX-License-Identifier: MIT
// I/O chips by kind and name, and whether both tables were found.
#include "api/Capability.h"

#include <stdexcept>

#include "tables/TIAMTable.h"
#include "tests/unit/api/ApiBoard.h"

using namespace apitest;
using testing::IsEmpty;

namespace {

constexpr uint8_t kWatchdogKind = 25, kFanKind = 26, kIdValue = 240;

class Capability : public Api {
 protected:
  uint8_t io = 0xEE;

  /// An identifying entry that reads the identifier from the ports 0x320 (low byte) and 0x321.
  Record IdEntry(const char* list, const char* name) {
    return Record::Feature(list).Name(name).Value(kIdValue).Commands(
        {Command::Port(0x320).Get().Argument(0), Command::Port(0x321).Get().Argument(1)});
  }
  void SetIdentifier(uint16_t identifier) {
    board.Ports(0x320, {static_cast<uint8_t>(identifier), static_cast<uint8_t>(identifier >> 8)});
  }
  void Ask(uint8_t kind, const char* name) {
    io = 0xEE;
    VynLibGetWhichIOToBeUse(kind, name, &io);
  }
  void ExpectAnswer(uint8_t number, uint64_t code) {
    EXPECT_EQ(io, number);
    EXPECT_EQ(VynLibDllGetLastError(), code);
  }
};

class GetIOName : public Capability {};
class GetWhichIOUse : public Capability {};
class GetWhichIOToBeUse : public Capability {};
class TableSupported : public Capability {};

struct ChipCase {
  uint16_t identifier;
  uint8_t number;
  const char* name;
};

constexpr ChipCase kChips[] = {
    {0x00D8, 6, "Nuvoton 6796D-S"},
    {0x0215, 1, "Fintek 81966"},
    {0x80D2, 2, "None"},
    {0x83D2, 2, "Nuvoton 6126D"},
    {0x84D2, 0, "Nuvoton 6126D"},
    {0x94D2, 5, "Nuvoton 5525D-S"},
    {0xAEC2, 4, "MCU 121"},
    {0xB0D2, 3, "None"},
    {0xB3D2, 3, "Nuvoton 5525D"},
    {0xB4D2, 0, "Nuvoton 5525D"},
    {0xE4D2, 7, "None"},
    {0x1234, 0, "None"},
    {0x0000, 0, "None"},
    {0xD294, 0, "None"},
    {0xFFFF, 0, "None"},
};

}  // namespace

// ---- the chip table ----

TEST_F(GetIOName, NamesEveryChip) {
  for (const ChipCase& chip : kChips) EXPECT_STREQ(api::GetIOName(chip.identifier), chip.name) << chip.identifier;
}

TEST_F(GetWhichIOUse, NumbersEveryChipThatTheBoardLists) {
  for (const ChipCase& chip : kChips) {
    iamt.Chips(1, chip.identifier, 3);
    Start();
    uint8_t number = 0xEE;
    api::LastErrorCode = 99;
    EXPECT_EQ(api::GetWhichIOUse(chip.identifier, &number), 1) << chip.identifier;
    EXPECT_EQ(number, chip.number) << chip.identifier;
    EXPECT_EQ(VynLibDllGetLastError(), 0u);
    StartOver();
  }
}

TEST_F(GetWhichIOUse, LooksAtAllThreeIdentifiersOfTheBoard) {
  iamt.Chips(0x94D2, 0x0215, 0x00D8);
  Start();
  uint8_t number = 0;
  EXPECT_EQ(api::GetWhichIOUse(0x94D2, &number), 1);
  EXPECT_EQ(number, 5);
  EXPECT_EQ(api::GetWhichIOUse(0x0215, &number), 1);
  EXPECT_EQ(number, 1);
  EXPECT_EQ(api::GetWhichIOUse(0x00D8, &number), 1);
  EXPECT_EQ(number, 6);
}

TEST_F(GetWhichIOUse, FailsForAChipThatTheBoardDoesNotList) {
  iamt.Chips(0x94D2, 0x0215, 0x00D8);
  Start();
  uint8_t number = 0xEE;
  EXPECT_EQ(api::GetWhichIOUse(0xAEC2, &number), 0);
  EXPECT_EQ(TakeCode(), 19u);
  EXPECT_EQ(number, 0xEE);
}

TEST_F(GetWhichIOUse, FailsWithoutABoardRecord) {
  uint8_t number = 0xEE;
  EXPECT_EQ(api::GetWhichIOUse(0, &number), 0);
  EXPECT_EQ(TakeCode(), 17u);
  EXPECT_EQ(number, 0xEE);
}

// ---- which chip serves a function ----

TEST_F(GetWhichIOToBeUse, LeavesEverythingBeforeTheStart) {
  Ask(1, "a");
  ExpectAnswer(0xEE, 1);
}

TEST_F(GetWhichIOToBeUse, FailsForAnotherKind) {
  Start();
  for (const uint8_t kind : Numbers{0, 27, 28, 255}) {
    Ask(kind, "a");
    ExpectAnswer(0, 13);
  }
}

TEST_F(GetWhichIOToBeUse, LooksUpIdentifier0ForKinds1To24) {
  iamt.Chips(0, 0x0215, 0x00D8);
  Start();
  for (uint8_t kind = 1; kind <= 24; ++kind) {
    Ask(kind, "a");
    ExpectAnswer(0, 18);
  }
}

TEST_F(GetWhichIOToBeUse, FailsForKinds1To24WhenTheBoardListsNoIdentifier0) {
  iamt.Chips(0x94D2, 0x0215, 0x00D8);
  Start();
  for (uint8_t kind = 1; kind <= 24; ++kind) {
    Ask(kind, "a");
    ExpectAnswer(0, 19);
  }
}

TEST_F(GetWhichIOToBeUse, ReadsIdentifiersOf0OnABoardWithoutATable) {
  StartWithoutTables();
  Ask(3, "a");
  ExpectAnswer(0, 18);
}

TEST_F(GetWhichIOToBeUse, DoesNothingForKinds1To24RightAfterCode16) {
  Start();
  Ask(25, "none");
  ExpectAnswer(0, 16);
  for (uint8_t kind = 1; kind <= 24; ++kind) {
    Ask(kind, "a");
    ExpectAnswer(0, 16);
  }
  uint8_t state = 0;
  VynLibGetLVDSState(&state, 2);  // any other code in between
  Ask(3, "a");
  ExpectAnswer(0, 18);
}

TEST_F(GetWhichIOToBeUse, FailsWithoutABoardRecordAfterTheTearDown) {
  Start();
  VynLibDllUnInit();
  Ask(3, "a");
  ExpectAnswer(0, 17);
}

TEST_F(GetWhichIOToBeUse, ReadsTheWatchdogsIdentifier) {
  iadt.Add(IdEntry("Watchdog", "WDT"));
  iamt.Chips(0x0215, 0x94D2, 0);
  SetIdentifier(0x94D2);
  Start();
  Ask(kWatchdogKind, "WDT");
  ExpectAnswer(5, 0);
}

TEST_F(GetWhichIOToBeUse, ReadsAFansIdentifier) {
  iadt.Add(IdEntry("FanConfig", "CPU Fan Id"));
  iamt.Chips(0x0215, 0x94D2, 0);
  SetIdentifier(0x0215);
  Start();
  Ask(kFanKind, "CPU Fan");
  ExpectAnswer(1, 0);
}

TEST_F(GetWhichIOToBeUse, ReadsEachByteFromItsOwnSlotAndKeeps16Bits) {
  // The low byte's command reads 16 bits: 0x02 * 256 + 0x0115 = 0x0315; 0xFF01 * 256 is cut to 0x0100.
  board.Ports(0x320, {0x15, 0x01, 0x02, 0xFF});
  iadt.Add(Record::Feature("Watchdog")
               .Name("WDT")
               .Value(kIdValue)
               .Commands(
                   {Command::Port(0x320).Get().Argument(0).Width(2), Command::Port(0x322).Get().Argument(1).Width(2)}));
  iamt.Chips(0x0315, 0, 0);
  Start();
  Ask(kWatchdogKind, "WDT");
  ExpectAnswer(0, 18);  // listed, but without a number
}

TEST_F(GetWhichIOToBeUse, FailsForAChipThatTheBoardDoesNotList) {
  iadt.Add(IdEntry("Watchdog", "WDT"));
  iamt.Chips(0x0215, 0x00D8, 0);
  SetIdentifier(0x94D2);
  Start();
  Ask(kWatchdogKind, "WDT");
  ExpectAnswer(0, 19);
}

TEST_F(GetWhichIOToBeUse, FailsForAChipWithoutANumber) {
  iadt.Add(IdEntry("Watchdog", "WDT"));
  iamt.Chips(0x84D2, 0, 0);
  SetIdentifier(0x84D2);
  Start();
  Ask(kWatchdogKind, "WDT");
  ExpectAnswer(0, 18);
}

TEST_F(GetWhichIOToBeUse, FailsWithCode20WhenACommandFails) {
  board.Ports(0x320, {1, 2});
  iadt.Add(Record::Feature("Watchdog")
               .Name("WDT")
               .Value(kIdValue)
               .Commands({PortIs(0x320, 9), Command::Port(0x321).Get().Argument(1)}));
  Start();
  Ask(kWatchdogKind, "WDT");
  ExpectAnswer(0, 20);
  EXPECT_EQ(board.PortLog().size(), 1u);
}

TEST_F(GetWhichIOToBeUse, EndsWithCode21AtAnUnknownKind) {
  iadt.Add(Record::Feature("Watchdog").Name("WDT").Value(kIdValue).Commands({UnknownKind()}));
  Start();
  Ask(kWatchdogKind, "WDT");
  ExpectAnswer(0, 21);
}

TEST_F(GetWhichIOToBeUse, EndsWithCode18ForAnEntryWithoutCommandsWhateverTheBoardLists) {
  iadt.Add(Record::Feature("Watchdog").Name("WDT").Value(kIdValue));
  iamt.Chips(0x94D2, 0x0215, 0x00D8);
  Start();
  Ask(kWatchdogKind, "WDT");
  ExpectAnswer(0, 18);
}

TEST_F(GetWhichIOToBeUse, FindsNoEntryOfAnotherValue) {
  iadt.Add(IdEntry("Watchdog", "WDT").Value(239)).Add(IdEntry("FanConfig", "CPU Fan Id").Value(0));
  Start();
  Ask(kWatchdogKind, "WDT");
  ExpectAnswer(0, 16);
  Ask(kFanKind, "CPU");
  ExpectAnswer(0, 16);
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(GetWhichIOToBeUse, FindsNoEntryWithoutTheList) {
  Start();
  Ask(kWatchdogKind, "WDT");
  ExpectAnswer(0, 16);
  Ask(kFanKind, "CPU");
  ExpectAnswer(0, 16);
}

TEST_F(GetWhichIOToBeUse, ComparesAWatchdogsWholeName) {
  iadt.Add(IdEntry("Watchdog", "WDT one"));
  iamt.Chips(0x94D2, 0, 0);
  SetIdentifier(0x94D2);
  Start();
  Ask(kWatchdogKind, "WDT");
  ExpectAnswer(0, 16);
  Ask(kWatchdogKind, "WDT one");
  ExpectAnswer(5, 0);
}

TEST_F(GetWhichIOToBeUse, Compares20CharactersOfAWatchdogsName) {
  iadt.Add(IdEntry("Watchdog", "abcdefghijklmnopqrst"));
  iamt.Chips(0x94D2, 0, 0);
  SetIdentifier(0x94D2);
  Start();
  Ask(kWatchdogKind, "abcdefghijklmnopqrst and more");
  ExpectAnswer(5, 0);
}

TEST_F(GetWhichIOToBeUse, FindsAFanByAnyPartOfItsName) {
  iadt.Add(IdEntry("FanConfig", "SYS Fan Id")).Add(IdEntry("FanConfig", "CPU Fan Id"));
  iamt.Chips(0x94D2, 0, 0);
  SetIdentifier(0x94D2);
  Start();
  Ask(kFanKind, "U Fan");
  ExpectAnswer(5, 0);
  Ask(kFanKind, "cpu");
  ExpectAnswer(0, 16);
}

TEST_F(GetWhichIOToBeUse, TakesTheFirstEntryOfTheName) {
  iadt.Add(Record::Feature("Watchdog").Name("WDT").Value(1)).Add(IdEntry("Watchdog", "WDT"));
  iadt.Add(Record::Feature("Watchdog").Name("WDT").Value(kIdValue).Commands({UnknownKind()}));
  iamt.Chips(0x94D2, 0, 0);
  SetIdentifier(0x94D2);
  Start();
  Ask(kWatchdogKind, "WDT");
  ExpectAnswer(5, 0);
}

// ---- were the tables found? ----

TEST_F(TableSupported, Is1WithBothTables) {
  Start();
  api::LastErrorCode = 99;
  EXPECT_EQ(VynLibTableSupported(2), 1);
  EXPECT_EQ(VynLibDllGetLastError(), 99u);
}

TEST_F(TableSupported, Is0ForAnyOtherSelectorAndLeavesTheCode) {
  Start();
  for (const uint8_t selector : Numbers{0, 1, 3, 255}) {
    api::LastErrorCode = 99;
    EXPECT_EQ(VynLibTableSupported(selector), 0);
    EXPECT_EQ(VynLibDllGetLastError(), 99u);
  }
}

TEST_F(TableSupported, Is0WithOneTableAlone) {
  firmware::AcpiImage().Table(iadt.Build()).PutInto(&board);
  StartWithoutTables();
  api::LastErrorCode = 99;
  EXPECT_EQ(VynLibTableSupported(2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 99u);
  Stop();
  support::CurrentBoard other;
  firmware::AcpiImage().Table(iamt.Build()).PutInto(&other.board);
  StartWithoutTables();
  EXPECT_EQ(VynLibTableSupported(2), 0);
  Stop();
}

TEST_F(TableSupported, Is0WithoutTables) {
  StartWithoutTables();
  EXPECT_EQ(VynLibTableSupported(2), 0);
}

TEST_F(TableSupported, FailsWithCode1BeforeTheStart) {
  for (const uint8_t selector : Numbers{0, 1, 2, 3}) {
    EXPECT_EQ(VynLibTableSupported(selector), 0);
    EXPECT_EQ(TakeCode(), 1u);
  }
}

TEST_F(TableSupported, ThrowsAfterTheTearDown) {
  Start();
  VynLibDllUnInit();
  try {
    VynLibTableSupported(2);
    FAIL();
  } catch (const std::logic_error& error) {
    EXPECT_STREQ(error.what(), "basic_string::_M_construct null not valid");
  }
  EXPECT_EQ(VynLibTableSupported(1), 0);
}

TEST_F(TableSupported, ThrowsWithoutAHeaderToCompare) {
  Start();
  unsigned char* header = api::IAMTable->Header;
  api::IAMTable->Header = nullptr;
  EXPECT_THROW(VynLibTableSupported(2), std::logic_error);
  api::IAMTable->Header = header;
  header = api::IADTable->Slots[0];
  api::IADTable->Slots[0] = nullptr;
  EXPECT_THROW(VynLibTableSupported(2), std::logic_error);
  api::IADTable->Slots[0] = header;
  EXPECT_EQ(VynLibTableSupported(2), 1);
}

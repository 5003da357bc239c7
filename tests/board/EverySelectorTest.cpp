// SPDX-License-Identifier: MIT
// Every selector of the exported functions that are no feature states: before a start, on a board without what they
// need, on one with an empty table, on one with one entry, and after the tear-down.
#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <vector>

#include "api/Library.h"
#include "firmware/AcpiImage.h"
#include "firmware/IadtBuilder.h"
#include "firmware/IamtBuilder.h"
#include "tests/support/Machine.h"
#include "tests/support/Printed.h"
#include "vynlib/vynlib.h"

namespace {

using firmware::Record;

/// Results and codes: of the query without and with the entry, and of performing without and with it.
struct Answer {
  int returned;
  uint64_t code;
};
constexpr Answer kYes = {1, 0};

struct Row {
  const char* name;
  std::function<int(uint8_t selector)> call;
  Answer queryAbsent, queryOne, performAbsent, performOne;
  uint32_t sleeps = 0;  ///< microseconds, of every started call
};

uint8_t number;
uint32_t interval;
uint16_t speed;
float reading;

/// Answers with the number of names.
template <auto function>
int Count(uint8_t selector) {
  return function(nullptr, &number, selector);
}

// The one entry: sensors named "S" whose commands read nothing, so that their raw value is 0; a watchdog entry of
// operation 3 (interval) without commands; a fan "F" of mode 0 without commands, whose block holds the mode alone.
// clang-format off
const Row kRows[] = {
  // Contract: the query says yes without any voltage list and with the first.
  {"GetVoltage", [](uint8_t s) { return VynLibGetVoltage("S", &reading, s); },
                                         kYes,        kYes,        {0, 0x0300}, {0, 0x0301}},
  {"GetTemperature", [](uint8_t s) { return VynLibGetTemperature("S", &reading, s); },
                                         {0, 0x0400}, kYes,        {0, 0x0400}, kYes},
  {"GetFanSpeed", [](uint8_t s) { return VynLibGetFanSpeed("S", &speed, s); },
                                         {0, 0x0500}, kYes,        {0, 0x0500}, kYes},
  {"GetCurrent", [](uint8_t s) { return VynLibGetCurrent("S", &reading, s); },
                                         {0, 0x1A00}, kYes,        {0, 0x1A00}, {0, 0x1A04}},
  {"GetVoltageNames", Count<VynLibGetVoltageNames>,
                                         {0, 0x0300}, kYes,        {0, 0x0300}, kYes},
  {"GetTemperatureNames", Count<VynLibGetTemperatureNames>,
                                         {0, 0x0400}, kYes,        {0, 0x0400}, kYes},
  {"GetFanSpeedNames", Count<VynLibGetFanSpeedNames>,
                                         {0, 0x0500}, kYes,        {0, 0x0500}, kYes},
  {"GetCurrentNames", Count<VynLibGetCurrentNames>,
                                         {0, 0x1A00}, kYes,        {0, 0x1A00}, kYes},
  {"WDTEnable", [](uint8_t s) { return VynLibWDTEnable(9, 0, s); },
                                         {0, 0x1700}, kYes,        {0, 0x1700}, {0, 0x1708}},
  {"WDTDisable", VynLibWDTDisable,       {0, 0x1700}, kYes,        {0, 0x1700}, {0, 0x1708}, 50000},
  {"WDTSetInterval", [](uint8_t s) { return VynLibWDTSetInterval(9, s); },
                                         {0, 0x1700}, kYes,        {0, 0x1700}, kYes},
  {"WDTGetInterval", [](uint8_t s) { return VynLibWDTGetInterval(&interval, s); },
                                         {0, 0x1700}, kYes,        {0, 0x1700}, kYes},
  {"WDTSetCountMode", [](uint8_t s) { return VynLibWDTSetCountMode(0, s); },
                                         {0, 0x1700}, {0, 0x1707}, {0, 0x1700}, {0, 0x170A}},
  {"WDTGetCountMode", [](uint8_t s) { return VynLibWDTGetCountMode(&number, s); },
                                         {0, 0x1700}, {0, 0x1707}, {0, 0x1700}, {0, 0x170A}},
  {"GetFanConfigNames", Count<VynLibGetFanConfigNames>,
                                         {0, 0x1800}, kYes,        {0, 0x1800}, kYes},
  {"GetFANConfig", [](uint8_t s) { uint8_t block[1] = {0}, room = 1; return VynLibGetFANConfig("F", block, &room, s); },
                                         {0, 0x1800}, kYes,        {0, 0x1800}, kYes},
  {"SetFANConfig", [](uint8_t s) { const uint8_t block[1] = {0}; return VynLibSetFANConfig("F", block, 1, s); },
                                         {0, 0x1800}, kYes,        {0, 0x1800}, kYes},
};
// clang-format on

/// Every selector of every row gets the answers given.
class EverySelector : public testing::Test, protected support::Machine {
 protected:
  ~EverySelector() override { VynLibDllUnInit(); }

  void Start(firmware::IadtBuilder* iadt) {
    firmware::AcpiImage image;
    if (iadt != nullptr) image.Table(iadt->Build());
    image.PutInto(&board);
    support::Printed([] { EXPECT_EQ(VynLibDllInit(), 1); });
  }
  void Expect(const Row& row, uint8_t selector, Answer wanted, uint32_t sleeps) {
    board.Log().clear();
    EXPECT_EQ(row.call(selector), wanted.returned) << row.name << " " << int{selector};
    EXPECT_EQ(VynLibDllGetLastError(), wanted.code) << row.name << " " << int{selector};
    const std::vector<sim::Access> slept(sleeps == 0 ? 0 : 1, sim::Sleep(sleeps));
    EXPECT_EQ(board.Log(), slept) << row.name << " " << int{selector};
  }
  void ExpectEach(Answer Row::*query, Answer Row::*perform) {
    for (const Row& row : kRows)
      for (unsigned selector = 0; selector < 256; ++selector) {
        const Answer wanted = selector == 0 ? row.*query : selector <= 2 ? row.*perform : Answer{0, 12};
        Expect(row, static_cast<uint8_t>(selector), wanted, row.sleeps);
      }
  }
  void ExpectAbsent() { ExpectEach(&Row::queryAbsent, &Row::performAbsent); }
};

}  // namespace

TEST_F(EverySelector, IsTakenBy17Functions) { EXPECT_EQ(std::size(kRows), 17u); }

TEST_F(EverySelector, FailsBeforeAStartAndTouchesNothing) {
  api::InitOk = 0;
  for (const Row& row : kRows)
    for (unsigned selector = 0; selector < 256; ++selector) Expect(row, static_cast<uint8_t>(selector), {0, 1}, 0);
}

TEST_F(EverySelector, IsAnsweredOnABoardWithoutTables) {
  Start(nullptr);
  ExpectAbsent();
}

TEST_F(EverySelector, IsAnsweredWithATableWithoutRecords) {
  firmware::IadtBuilder empty;
  Start(&empty);
  ExpectAbsent();
}

TEST_F(EverySelector, IsAnsweredWithOneEntry) {
  firmware::IadtBuilder iadt;
  for (const char* quantity : {"voltage", "temperature", "fan", "current"})
    iadt.Add(Record::Sensor(quantity, 1).Name("S"));
  iadt.Add(Record::Feature("Watchdog").Name("WDT").Value(3));
  iadt.Add(Record::Feature("FanConfig").Name("F Mode").Value(0));
  Start(&iadt);
  ExpectEach(&Row::queryOne, &Row::performOne);
}

TEST_F(EverySelector, FindsNothingAfterTheTearDown) {
  Start(nullptr);
  VynLibDllUnInit();
  ExpectAbsent();
}

TEST_F(EverySelector, ButTheSecondSaysNoWhetherTheTablesAreThere) {
  api::InitOk = 0;
  EXPECT_EQ(VynLibTableSupported(2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 1u);
  firmware::AcpiImage().Table(firmware::IadtBuilder().Build()).Table(firmware::IamtBuilder().Build()).PutInto(&board);
  support::Printed([] { EXPECT_EQ(VynLibDllInit(), 1); });
  board.Log().clear();
  for (unsigned selector = 0; selector < 256; ++selector)
    EXPECT_EQ(VynLibTableSupported(static_cast<uint8_t>(selector)), selector == 2 ? 1 : 0) << selector;
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
  EXPECT_TRUE(board.Log().empty());
}

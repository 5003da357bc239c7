// SPDX-License-Identifier: MIT
// Every finding, by its offset, on tables that hold its cause.
#include "diagnosis/Check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "firmware/BiosInfo.h"
#include "firmware/IadtBuilder.h"
#include "firmware/IamtBuilder.h"

using namespace layout;

namespace {

using namespace diagnosis;
using firmware::Bytes;
using firmware::Command;
using firmware::IadtBuilder;
using firmware::IamtBuilder;
using firmware::Record;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// "offset severity text" of every finding.
std::vector<std::string> Findings(Kind kind, const Bytes& bytes) {
  constexpr const char* kSeverities[] = {"note", "warning", "error"};
  std::vector<std::string> lines;
  for (const Finding& finding : CheckImage({kind, "x", bytes}))
    lines.push_back(std::to_string(finding.offset) + " " + kSeverities[static_cast<int>(finding.severity)] + " " +
                    finding.text);
  return lines;
}

std::vector<std::string> Iadt(const IadtBuilder& builder) { return Findings(Kind::kIadt, builder.Build()); }

/// Findings of a table whose one entry holds one command, which begins at byte 63.
std::vector<std::string> OfCommand(const Command& command) {
  return Iadt(IadtBuilder().Feature("BTState", 1, {command}));
}

constexpr char kTitle[] = " (BTState index 0 value 1)";

TEST(CheckTable, FindsNothingInAGoodOne) {
  EXPECT_THAT(Iadt(IadtBuilder().Feature("BTState", 1, {Command::Port(0x80).Get(1, 1)})), IsEmpty());
  EXPECT_THAT(Findings(Kind::kIamt, IamtBuilder().Chips(0x94D2, 0, 0x0215).Build()), IsEmpty());
  EXPECT_THAT(Findings(Kind::kBiosInfo, firmware::BiosInfo{.model = "M", .checksum = {}}.Build()), IsEmpty());
}

TEST(CheckTable, FindsAWrongLengthAndAWrongChecksum) {
  // The right checksum of a table of length 36 is one more than that of length 37.
  EXPECT_THAT(Iadt(IadtBuilder().Length(37)), ElementsAre("4 error the length field says 37, the table has 36 bytes"));
  EXPECT_THAT(Iadt(IadtBuilder().Checksum(0)), ElementsAre("9 error the bytes do not sum to 0 modulo 256"));
  EXPECT_THAT(Findings(Kind::kIadt, Bytes(35, 0)), ElementsAre("0 error shorter than the 36 bytes of a table header"));
}

TEST(CheckRecord, FindsLengthsThatEndTheWalk) {
  EXPECT_THAT(Iadt(IadtBuilder().Add(Record::Type(5).Length(0))),
              ElementsAre("39 error the length of this record is 0; the walk ends here"));
  EXPECT_THAT(Iadt(IadtBuilder().Add(Record::Type(5).Length(28))),
              ElementsAre("39 error the length of this record (28) reaches beyond the table; the walk ends here"));
}

TEST(CheckRecord, GoesOnBehindARecordShorterThanItsHead) {
  Bytes head(26, 0);
  head[0] = 5;
  head[3] = 26;
  EXPECT_THAT(Iadt(IadtBuilder().Add(Record::Raw(head)).Feature("BTState", 1, {})),
              ElementsAre("39 error 26 bytes, shorter than a record's head of 27: what follows is taken as part of it, "
                          "and running it ends with code 21 (LVDSState index 0 value 0)",
                          std::string("62 warning an entry without commands always succeeds") + kTitle));
}

TEST(CheckRecord, FindsBytesThatNoRecordHolds) {
  EXPECT_THAT(Iadt(IadtBuilder().Feature("BTState", 1, {Command::Port(1).Get(1, 1)}).Add(Record::Raw({5, 0, 0}))),
              ElementsAre("91 error 3 bytes are left, too few for a record; the walk ends here"));
}

TEST(CheckRecord, FindsWhatIsNotKeptOfACurrent) {
  const auto current = [] { return Record::Sensor("current", 1).Name("A").Commands({Command::Smbus(0x5A, 0).Get()}); };
  EXPECT_THAT(Iadt(IadtBuilder().Add(current())), IsEmpty());
  const char* const note = "84 note bytes beyond the sensor record are not kept (current 31.1 \"A\")";
  EXPECT_THAT(Iadt(IadtBuilder().Add(current().Append({1}))), ElementsAre(note));
  EXPECT_THAT(Iadt(IadtBuilder().Add(current().Byte(48, 1))), ElementsAre(note));
  EXPECT_THAT(Iadt(IadtBuilder().Add(current().Byte(55, 1))), ElementsAre(note));
}

TEST(CheckRecord, FindsTypesThatNobodyReads) {
  EXPECT_THAT(
      Iadt(IadtBuilder().Add(Record::Type(36))),
      ElementsAre("36 warning the library passes this record over: unknown type or sensor kind (type 36 index 0 "
                  "value 0)"));
  EXPECT_THAT(Iadt(IadtBuilder().Add(Record::Type(2).Value(4))), testing::SizeIs(1));
  EXPECT_THAT(Iadt(IadtBuilder().Add(Record::Type(9).Commands({Command::Port(1).Get(1, 1)}))),
              ElementsAre("36 note no function reads records of this type (Type9 index 0 value 0)"));
}

TEST(CheckRecord, FindsNamesWithoutTerminator) {
  const Record record =
      Record::Sensor("current", 1).Name("ABCDEFGHIJKLMNOPQRST").Commands({Command::Smbus(0x5A, 0).Get()});
  EXPECT_THAT(Iadt(IadtBuilder().Add(record)),
              ElementsAre("43 error the name has no terminator: it is reported as an empty name (current 31.1 "
                          "\"ABCDEFGHIJKLMNOPQRST\")"));
}

TEST(CheckRecord, FindsSensorsOfTheSameNameOfNoNameAndOfOtherSizes) {
  const Record record =
      Record::Sensor("voltage", 3).Name("A").Parameter("step", 1).Commands({Command::Smbus(0x5A, 0).Get()});
  EXPECT_THAT(Iadt(IadtBuilder().Add(record).Add(record)),
              ElementsAre("94 warning a sensor of this quantity has the same name (voltage 2.3 \"A\")"));
  EXPECT_THAT(Iadt(IadtBuilder().Add(Record(record).Name(""))),
              ElementsAre("43 error the record is found by name and has none (voltage 2.3)"));
  EXPECT_THAT(Iadt(IadtBuilder().Add(Record::Type(2).Value(3).Name("A"))),
              ElementsAre("39 error 27 bytes where this sensor record has 51 (voltage 2.3 \"A\")"));
  EXPECT_THAT(Iadt(IadtBuilder().Add(Record(record).Append({1}))),
              ElementsAre("87 note bytes beyond the sensor record are not kept (voltage 2.3 \"A\")"));
}

TEST(CheckRecord, FindsEntriesThatAlwaysSucceed) {
  EXPECT_THAT(Iadt(IadtBuilder().Feature("BTState", 1, {})),
              ElementsAre(std::string("36 warning an entry without commands always succeeds") + kTitle));
}

TEST(CheckRecord, LetsEntriesBeEmptyThatNeedDoNothing) {
  EXPECT_THAT(Iadt(IadtBuilder().Feature("MBVersionState", 0, 1, {}).Feature("MBVersionState", 1, 0, {})), IsEmpty());
  IadtBuilder builder;
  for (const uint8_t value : std::initializer_list<uint8_t>{1, 2, 4, 5, 240})
    builder.Add(Record::Feature("Watchdog").Value(value).Name("WDT"));
  builder.Feature("Watchdog", 3, {Command::Port(0x443).Get().Set().Argument(0)});
  EXPECT_THAT(Iadt(builder), IsEmpty());
  // Without commands the interval is neither kept nor told.
  EXPECT_THAT(Iadt(builder.Feature("Watchdog", 3, {})), testing::SizeIs(1));
}

TEST(CheckRecord, FindsMissingWatchdogOperations) {
  IadtBuilder builder;
  for (const uint8_t value : std::initializer_list<uint8_t>{1, 2, 5})
    builder.Feature("Watchdog", value, {Command::Port(0x443).Set(0, value)});
  builder.Feature("Watchdog", 3, {Command::Port(0x443).Get().Set().Argument(0)});
  EXPECT_THAT(Iadt(builder), ElementsAre("36 warning the watchdog has no entry for operation 4: enabling it ends with "
                                         "code 0x1709"));
}

struct CommandCase {
  Command command;
  std::string finding;
};

TEST(CheckCommand, FindsWhatTheLibraryWouldStumbleOver) {
  const CommandCase cases[] = {
      {Command::Msr(0x1B).Get(),
       "error no entry can go on behind an MSR command: where it succeeds, the call ends with code 21"},
      {Command::Port(0x80).Get(1, 1).Opcode(0x07),
       "error addressing form 3 does not fit its kind: when reading, the entry fails; when setting, the command is run "
       "for "
       "ever"},
      {Command::Port(0x80).Get(1, 1).Opcode(0x06),
       "error a command of 36 bytes does not fit into the 28 that are left: the call ends with code 21"},
      {Command::Port(0x80).Opcode(0x19), "error unknown access kind 0x18: the call ends with code 21"},
      {Command::Raw({0x05, 0x80}),
       "error a command of 28 bytes does not fit into the 2 that are left: the call ends with code 21"},
      {Command::Pci(0, 0, 0, 0).Width(4).Get(0xFF, 0),
       "warning what a PCI read finds is dropped: the value is 0 before the masks"},
      {Command::Pci(0, 0, 0, 0).Width(4).Get(0xFF, 1), "error the expected value can never be read"},
      {Command::Port(0x80).Get(0x0F, 0x10), "error the expected value can never be read"},
      {Command::Port(0x80).Get().Expected(0x100), "error the expected value can never be read"},
      {Command::Pci(0, 0, 0, 0).Set(0, 1), "note a PCI access is always 4 bytes wide"},
      {Command::Smbus(0x5A, 0).Width(4).Set(0, 1),
       "warning an SMBus access is 1 or 2 bytes wide; this one moves nothing"},
      {Command::Smbus(0x5B, 0).Get(1, 1), "warning bit 0 of an SMBus address is not part of it"},
      {Command::Delay(kSeconds, 1).Get(), "error a delay that reads waits and then fails its entry"},
      {Command::Delay(DelayUnit{4}, 1).Set(), "warning a delay without a known unit does not wait"},
      {Command::Delay(kSeconds, 1).Set().Argument(0),
       "warning a delay in argument mode waits for its argument index, not its count"},
      {Command::Port(0x80).Get().Argument(1),
       "warning the argument index names no argument: reading is not compared, writing uses the masks"},
      {Command::Port(0x80), "note neither reads nor writes, in either direction"},
      {Command::Port(0x80).Get(1, 1).Byte(5, 1),
       "warning only the low 16 bits of a port number and the low 8 of an index are used"},
  };
  for (const CommandCase& c : cases) EXPECT_THAT(OfCommand(c.command), ElementsAre("63 " + c.finding + kTitle));
}

TEST(CheckCommand, LetsFanModesNameTheirParameters) {
  const auto mode = [](std::vector<Command> commands) {
    return Iadt(IadtBuilder().Add(Record::Feature("FanConfig").Value(1).Name("CPU FanMode").Commands(commands)));
  };
  EXPECT_THAT(mode({Command::Port(0x80).Get().Set().Argument(1)}), IsEmpty());
  EXPECT_THAT(mode({Command::Port(0x80).Get().Set().Argument(2)}), testing::SizeIs(2));
}

TEST(CheckCommand, LetsSensorsReadModelSpecificRegisters) {
  const Record record = Record::Sensor("temperature", 3)
                            .Name("CPU")
                            .Parameter("width", 7)
                            .Commands({Command::Msr(0x1A2).Get(), Command::Msr(0x19C).Get()});
  EXPECT_THAT(Iadt(IadtBuilder().Add(record)), IsEmpty());
}

TEST(CheckCommand, WarnsOfRegistersThatAProcessorMayNotHave) {
  const Record record = Record::Sensor("temperature", 3)
                            .Name("CPU")
                            .Parameter("width", 7)
                            .Commands({Command::Msr(0x1A2).Get(), Command::Msr(0x1A0).Get()});
  // The second command of a record that begins at byte 36 has its place at byte 71 of it.
  EXPECT_THAT(Iadt(IadtBuilder().Add(record)),
              ElementsAre("107 warning not every processor has this register: where it is missing, each reading yields "
                          "0 and leaves a file open (temperature 3.3 \"CPU\")"));
}

TEST(CheckBoardInformation, FindsMissingRepeatedAndUnknown) {
  EXPECT_THAT(Findings(Kind::kIamt, IamtBuilder().Build()),
              ElementsAre("36 error no board information record (type 0)"));
  EXPECT_THAT(Findings(Kind::kIamt, IamtBuilder().Chips(0x94D2, 0x1234, 0).Chips(0x94D2, 0, 0).Build()),
              ElementsAre("67 warning the library knows no chip 0x1234",
                          "91 warning a second board information record: the last one counts"));
  EXPECT_THAT(Findings(Kind::kIamt, IamtBuilder().Chips(0x94D2, 0, 0).Add({1, 0, 0, 0}).Build()),
              ElementsAre("94 error the length of this record is 0; the walk ends here"));
}

TEST(CheckBoardInformation, TakesARecordThatReachesBeyondTheTable) {
  Bytes record(55, 0);
  record[3] = 56;
  record[29] = 0x34;
  record[30] = 0x12;
  EXPECT_THAT(Findings(Kind::kIamt, IamtBuilder().Add(record).Build()),
              ElementsAre("39 error the length of this record (56) reaches beyond the table; the walk ends here",
                          "65 warning the library knows no chip 0x1234"));
}

TEST(CheckBoardInformation, TakesARecordOfLengthZero) {
  EXPECT_THAT(Findings(Kind::kIamt, IamtBuilder().Add({0, 0, 0, 0}).Build()),
              ElementsAre("39 warning shorter than 55 bytes: what follows is taken as part of it",
                          "39 error the length of this record is 0; the walk ends here"));
}

TEST(CheckCommand, LooksAtNothingBehindAModelSpecificRegister) {
  EXPECT_THAT(
      Iadt(IadtBuilder().Feature("BTState", 1, {Command::Msr(0x1B).Get(), Command::Port(1)})),
      ElementsAre(
          std::string(
              "63 error no entry can go on behind an MSR command: where it succeeds, the call ends with code 21") +
          kTitle));
}

TEST(CheckBiosInformation, FindsSizeChecksumAndTerminator) {
  EXPECT_THAT(Findings(Kind::kBiosInfo, Bytes(63, 0)),
              ElementsAre("0 error 63 bytes where a BIOS information record has 64"));
  EXPECT_THAT(Findings(Kind::kBiosInfo, firmware::BiosInfo{.model = std::string(54, 'A'), .checksum = {}}.Build()),
              ElementsAre("10 error the model name has no terminator"));
  Bytes record = firmware::BiosInfo{.model = "M", .checksum = {}}.Build();
  ++record[9];
  EXPECT_THAT(Findings(Kind::kBiosInfo, record), ElementsAre("0 error the bytes do not sum to 0 modulo 256"));
}

}  // namespace

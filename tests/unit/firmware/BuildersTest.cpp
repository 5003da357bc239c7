// SPDX-License-Identifier: MIT
// Commands, records, tables and the BIOS information record as bytes.
#include "firmware/BiosInfo.h"
#include "firmware/IadtBuilder.h"
#include "firmware/IamtBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <stdexcept>

using namespace layout;

namespace {

using firmware::Bytes;
using firmware::Command;
using firmware::IadtBuilder;
using firmware::IamtBuilder;
using firmware::Record;

unsigned SumOf(const Bytes& bytes) { return std::accumulate(bytes.begin(), bytes.end(), 0u) & 0xFF; }

TEST(CommandBytes, OfAnIndexDataReadAreTheWorkedExample) {
  const Bytes expected = {0x06, 0xA0, 0x00, 0x2E, 0x00, 0x00, 0x00, 0x2F, 0x00, 0x00, 0x00, 0xF0,
                          0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01,
                          0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
  EXPECT_EQ(Command::IndexData(0x2E, 0x2F, 0xF0).Get(0x01, 0x01).ArgumentIndex(0).Build(), expected);
}

TEST(CommandBytes, OfAMemoryWrite) {
  // Kind 0, form 1, width exponent 2: 0x81. Set writes, ANDs, ORs: 0x0007.
  const Bytes expected = {0x81, 0x07, 0x00, 0x00, 0x10, 0xD4, 0xFE, 0xF0, 0xFF, 0xFF, 0xFF, 0x05, 0x00, 0x00,
                          0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00};
  EXPECT_EQ(Command::Memory(0xFED41000).Width(4).Set(0xFFFFFFF0, 0x05).Build(), expected);
}

TEST(CommandBytes, OfAPortArgument) {
  // Get reads, Set writes, argument mode: 0x0184.
  const Bytes expected = {0x05, 0x84, 0x01, 0x43, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                          0x00, 0x00, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
  EXPECT_EQ(Command::Port(0x443).Get().Set().Argument(2).Build(), expected);
}

TEST(CommandBytes, OfAnSmbusWord) {
  // Kind 12, form 1, width exponent 1: 0x4D. Get reads and ANDs.
  const Bytes expected = {0x4D, 0xA0, 0x00, 0x5A, 0x20, 0x00, 0xFF, 0x03, 0x00, 0x00, 0x34,
                          0x02, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00};
  EXPECT_EQ(Command::Smbus(0x5A, 0x20).Width(2).Get(0x03FF, 0x0234).Build(), expected);
}

TEST(CommandBytes, OfAPciWrite) {
  const Bytes expected = {0x91, 0x05, 0x00, 0x00, 0x1F, 0x03, 0x40, 0x01, 0x00, 0x00, 0x00, 0x00, 0x07, 0x00, 0x00,
                          0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00};
  EXPECT_EQ(Command::Pci(0, 0x1F, 3, 0x140).Width(4).AddControl(kSetWrites | kSetOr).Or(7).Build(), expected);
}

TEST(CommandBytes, OfAModelSpecificRegister) {
  const Bytes expected = {0xC9, 0xA0, 0x00, 0x9C, 0x01, 0x00, 0x00, 0x00, 0x00, 0x7F, 0x00, 0x00,
                          0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01,
                          0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF};
  EXPECT_EQ(Command::Msr(0x19C).Width(8).Get(0x80000000007F0000, 1).Build(), expected);
}

TEST(CommandBytes, OfADelay) {
  // Control: Set writes. Unit 2 (milliseconds), count 0x0102.
  const Bytes expected = {0x14, 0x04, 0x00, 0x02, 0x02, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0};
  EXPECT_EQ(Command::Delay(kMilliseconds, 0x0102).Set().Build(), expected);
}

TEST(CommandBytes, KeepTheLayoutUnderAnotherOpcode) {
  const Bytes bytes = Command::Port(0x80).Opcode(0x06).Build();
  EXPECT_EQ(bytes.size(), 28u);
  EXPECT_EQ(bytes[0], 0x06);
  EXPECT_EQ(bytes[3], 0x80);
}

TEST(CommandBytes, RefuseAFieldThatTheKindLacks) {
  EXPECT_THROW(Command::Delay(kSeconds, 1).And(1), std::logic_error);
  EXPECT_THROW(Command::Raw({0x05}).Expected(1), std::logic_error);
  EXPECT_THROW(Command::Port(1).Width(3), std::logic_error);
}

TEST(RecordBytes, OfAnOrdinaryRecord) {
  Bytes expected = {13, 2, 7, 28, 0, 0, 0, 'P', 'C', 'I', 'e'};
  expected.resize(27);
  expected.push_back(0xEE);
  EXPECT_EQ(Record::Feature("PcieBandwidthMode").Index(2).Value(7).Name("PCIe").Append({0xEE}).Build(), expected);
}

TEST(RecordBytes, OfANameOfTwentyCharactersHaveNoTerminator) {
  const Bytes bytes = Record::Type(25).Name("ABCDEFGHIJKLMNOPQRSTUVW").Build();
  EXPECT_EQ(std::string(bytes.begin() + 7, bytes.end()), "ABCDEFGHIJKLMNOPQRST");
}

struct SensorCase {
  const char* quantity;
  uint8_t subType, type;
  size_t bytes;
  std::vector<size_t> commands;
};

TEST(RecordBytes, OfSensorsHaveTheirCommandsAtTheirPlaces) {
  const SensorCase cases[] = {
      {"voltage", 1, 2, 101, {29, 65}},    {"voltage", 2, 2, 65, {29}},
      {"voltage", 3, 2, 51, {30}},         {"temperature", 1, 3, 175, {29, 65, 103, 139}},
      {"temperature", 2, 3, 63, {27}},     {"temperature", 3, 3, 111, {29, 71}},
      {"temperature", 4, 3, 69, {27, 48}}, {"fan", 1, 4, 171, {27, 63, 99, 135}},
      {"fan", 2, 4, 103, {31, 67}},        {"fan", 3, 4, 73, {31, 52}},
      {"current", 1, 31, 56, {27}},
  };
  for (const SensorCase& c : cases) {
    SCOPED_TRACE(c.quantity + std::to_string(c.subType));
    std::vector<Command> commands;
    for (size_t i = 0; i < c.commands.size(); ++i) commands.push_back(Command::Smbus(static_cast<uint8_t>(i + 1), 0));
    const Bytes bytes = Record::Sensor(c.quantity, c.subType).Commands(commands).Build();
    ASSERT_EQ(bytes.size(), c.bytes);
    EXPECT_EQ(bytes[0], c.type);
    EXPECT_EQ(bytes[2], c.subType);
    EXPECT_EQ(bytes[3], c.bytes);
    for (size_t i = 0; i < c.commands.size(); ++i) {
      EXPECT_EQ(bytes[c.commands[i]], 0x0D);
      EXPECT_EQ(bytes[c.commands[i] + 3], i + 1);
    }
  }
}

TEST(RecordBytes, OfSensorParametersLieWhereTheFormulasReadThem) {
  const Bytes step = Record::Sensor("voltage", 3).Parameter("step", 16).Parameter("r1", 2).Parameter("r2", 3).Build();
  EXPECT_EQ(Bytes(step.begin() + 27, step.begin() + 30), (Bytes{16, 2, 3}));
  const Bytes fraction =
      Record::Sensor("temperature", 1).Parameter("fraction_divisor", 4).Parameter("fraction_shift", 5).Build();
  EXPECT_EQ(Bytes(fraction.begin() + 101, fraction.begin() + 103), (Bytes{4, 5}));
  const Bytes fields = Record::Sensor("temperature", 3).Parameter("width", 8).Parameter("subtrahend_width", 7).Build();
  EXPECT_EQ(fields[28], 8);
  EXPECT_EQ(fields[70], 7);
}

TEST(RecordBytes, RefuseWhatDoesNotFit) {
  EXPECT_THROW(Record::Feature("Toaster"), std::logic_error);
  EXPECT_THROW(Record::Sensor("voltage", 4), std::logic_error);
  EXPECT_THROW(Record::Sensor("current", 1).Commands({Command::Port(0x80)}), std::logic_error);
  EXPECT_THROW(Record::Sensor("fan", 2).Parameter("r1", 1), std::logic_error);
}

TEST(RecordBytes, LieAboutTheirLengthWhenTold) {
  const Bytes bytes = Record::Feature("LVDSState").Length(0x01020304).Build();
  EXPECT_EQ(bytes.size(), 27u);
  EXPECT_EQ(Bytes(bytes.begin() + 3, bytes.begin() + 7), (Bytes{4, 3, 2, 1}));
}

TEST(IadtBytes, HaveHeaderRecordsAndAChecksum) {
  const Bytes table = IadtBuilder().Feature("LVDSState", 1, {}).Feature("ComType", 3, 2, {}).Build();
  ASSERT_EQ(table.size(), 36u + 27 + 27);
  EXPECT_EQ(std::string(table.begin(), table.begin() + 4), "IADT");
  EXPECT_EQ(Bytes(table.begin() + 4, table.begin() + 9), (Bytes{90, 0, 0, 0, 1}));
  EXPECT_EQ(SumOf(table), 0u);
  EXPECT_EQ(Bytes(table.begin() + 36, table.begin() + 43), (Bytes{5, 0, 1, 27, 0, 0, 0}));
  EXPECT_EQ(Bytes(table.begin() + 63, table.begin() + 70), (Bytes{1, 3, 2, 27, 0, 0, 0}));
}

TEST(IadtBytes, AreBrokenWhenTold) {
  const Bytes table = IadtBuilder().Length(20).Checksum(0x55).Build();
  EXPECT_EQ(table.size(), 36u);
  EXPECT_EQ(table[4], 20);
  EXPECT_EQ(table[9], 0x55);
}

TEST(IamtBytes, CarryThreeChipIdentifiers) {
  const Bytes table = IamtBuilder().Chips(0x94D2, 0x0215, 0xAEC2).Build();
  ASSERT_EQ(table.size(), 36u + 55);
  EXPECT_EQ(table[36], 0);
  EXPECT_EQ(table[39], 55);
  EXPECT_EQ(Bytes(table.begin() + 65, table.begin() + 71), (Bytes{0xD2, 0x94, 0x15, 0x02, 0xC2, 0xAE}));
  EXPECT_EQ(SumOf(table), 0u);
}

TEST(BiosInfoBytes, AreSixtyFourAndSumToZero) {
  const Bytes record = firmware::BiosInfo{.model = "Model X", .checksum = {}}.Build();
  ASSERT_EQ(record.size(), 64u);
  EXPECT_EQ(std::string(record.begin(), record.begin() + 8), "$CN1368$");
  EXPECT_EQ(std::string(record.begin() + 10, record.begin() + 18), std::string("Model X\0", 8));
  EXPECT_EQ(SumOf(record), 0u);
}

TEST(BiosInfoBytes, CutAModelNameThatIsTooLong) {
  const Bytes record = firmware::BiosInfo{.model = std::string(60, 'A'), .checksum = 0}.Build();
  EXPECT_EQ(record.size(), 64u);
  EXPECT_EQ(record[63], 'A');
  EXPECT_EQ(record[9], 0);
}

}  // namespace

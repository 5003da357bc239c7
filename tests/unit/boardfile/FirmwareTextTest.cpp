// SPDX-License-Identifier: MIT
// Tables as text, and back.
#include "boardfile/FirmwareText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "boardfile/BoardFile.h"
#include "firmware/BiosInfo.h"
#include "firmware/IadtBuilder.h"
#include "firmware/IamtBuilder.h"

using namespace layout;

namespace {

using namespace boardfile;
using firmware::Bytes;
using firmware::Command;
using firmware::IadtBuilder;
using firmware::IamtBuilder;
using firmware::Record;
using testing::HasSubstr;

Firmware Compile(const std::string& text) {
  const CompiledFirmware compiled = CompileText(text, "text");
  EXPECT_EQ(compiled.error, "") << text;
  return compiled.firmware.value_or(Firmware{});
}

TEST(HexText, IsPairsOfDigits) { EXPECT_EQ(Hex(Bytes{0x06, 0xA0, 0x00}), "06 A0 00"); }

TEST(IadtAsText, NamesEveryField) {
  const Bytes table = IadtBuilder()
                          .Add(Record::Feature("ComType").Index(2).Value(1).Name("COM2").Commands(
                              {Command::IndexData(0x2E, 0x2F, 0xF0).Get(0x03, 0x01),
                               Command::Msr(0x1B).Width(8).Get(0x8000000000000001, 1)}))
                          .Build();
  const std::string text = IadtText(table);
  EXPECT_THAT(text,
              HasSubstr("[[feature]]\nfunction = \"ComType\"\nindex = 2\nvalue = 1\nname = \"COM2\"\n"
                        "commands = [\n"
                        "  { index_port = 0x2e, data_port = 0x2f, register = 0xf0, get = \"read and\", and = 0x3, "
                        "expected = 0x1 },\n"
                        "  { msr = 0x1b, width = 8, get = \"read and\", and = \"0x8000000000000001\", "
                        "expected = 0x1 },\n]\n"));
  EXPECT_EQ(Compile(text).iadt, table);
}

struct TextCase {
  const char* what;
  IadtBuilder table;
};

TEST(IadtAsText, CompilesBackToTheSameBytes) {
  IadtBuilder header;
  header.header.oemId = std::string("A\0B\n\"", 5);
  const TextCase cases[] = {
      {"nothing", {}},
      {"every kind", IadtBuilder().Feature("BTState", 1,
                                           {Command::Memory(1).Width(4).Set(1, 2), Command::Port(2).Get().Argument(3),
                                            Command::IndexData(1, 2, 3).Get(4, 5), Command::Smbus(2, 3).Width(2).Set(),
                                            Command::Pci(1, 2, 3, 4).Set(5, 6), Command::Delay(kMilliseconds, 7).Set(),
                                            Command::Msr(8).Get(9, 10)})},
      {"control bits without a name", IadtBuilder().Feature("BTState", 1, {Command::Port(1).Control(0xFE00)})},
      {"bytes not used", IadtBuilder().Feature("BTState", 1, {Command::Port(1).Byte(27, 0xEE)})},
      {"odd delay unit", IadtBuilder().Feature("BTState", 1, {Command::Delay(DelayUnit{9}, 1)})},
      {"port above 16 bits", IadtBuilder().Feature("BTState", 1, {Command::Port(1).Byte(6, 1)})},
      {"argument index without its mode", IadtBuilder().Feature("BTState", 1, {Command::Port(1).ArgumentIndex(0)})},
      {"form that does not fit",
       IadtBuilder().Feature("BTState", 1, {Command::Port(1).Opcode(0x07), Command::Port(2)})},
      {"unknown type", IadtBuilder().Add(Record::Type(200).Value(3).Append({1, 2, 3}))},
      {"unknown sensor kind", IadtBuilder().Add(Record::Type(31).Value(2).Append(Bytes(29, 7)))},
      {"short sensor", IadtBuilder().Add(Record::Type(2).Value(1))},
      {"long sensor", IadtBuilder().Add(Record::Sensor("fan", 1).Append({1, 2}))},
      {"sensor with its first place empty",
       IadtBuilder().Add(Record::Sensor("fan", 3).Name("F").Commands({Command::Raw({}), Command::Smbus(2, 3).Get()}))},
      {"sensor with bytes between places", IadtBuilder().Add(Record::Sensor("temperature", 3).Byte(66, 0x5A))},
      {"name of 20 characters", IadtBuilder().Add(Record::Type(25).Name("ABCDEFGHIJKLMNOPQRST"))},
      {"name that is no text", IadtBuilder().Add(Record::Type(25).Name("A\x01\xFF\"\\"))},
      {"name with bytes behind its end", IadtBuilder().Add(Record::Type(25).Name(std::string("A\0B", 3)))},
      {"record shorter than its head", IadtBuilder().Add(Record::Type(5).Length(26)).Feature("BTState", 1, {})},
      {"commands behind a model-specific register",
       IadtBuilder().Feature("BTState", 1, {Command::Msr(1).Get(), Command::Port(2).Get()})},
      {"length of 0", IadtBuilder().Add(Record::Type(5).Length(0)).Feature("BTState", 1, {})},
      {"length too long", IadtBuilder().Add(Record::Type(5).Length(28))},
      {"table length too short", IadtBuilder().Feature("BTState", 1, {}).Feature("BTState", 2, {}).Length(63)},
      {"table length below the header", IadtBuilder().Feature("BTState", 1, {}).Length(3)},
      {"bad checksum", IadtBuilder().Checksum(0x12)},
      {"header text that is none", header},
  };
  for (const TextCase& c : cases) {
    SCOPED_TRACE(c.what);
    const Bytes table = c.table.Build();
    EXPECT_EQ(Compile(IadtText(table)).iadt, table);
  }
}

TEST(IadtAsText, HasKeysForBytesThatNothingReads) {
  const auto text = [](const Command& command) {
    return IadtText(IadtBuilder().Feature("BTState", 1, {command}).Build());
  };
  EXPECT_THAT(text(Command::Port(1).Byte(23, 1).Byte(24, 2)), HasSubstr("  { port = 0x1, unused = \"01 02\" },\n"));
  EXPECT_THAT(text(Command::Smbus(2, 3).Byte(5, 9)), HasSubstr("{ smbus = 0x02, command = 0x03, unused = \"09\" }"));
  EXPECT_THAT(text(Command::Delay(kSeconds, 1).Opcode(0x17)), HasSubstr("{ delay = 1, unit = \"s\", form = 3 }"));
  EXPECT_THAT(text(Command::Delay(DelayUnit{9}, 1)), HasSubstr("{ delay = 1, unit = 9 }"));
  EXPECT_THAT(text(Command::Port(1).Control(0xFE84)), HasSubstr("{ port = 0x1, control = 0xfe84 }"));
  for (const std::string& all :
       {text(Command::Port(1).Byte(27, 1)), text(Command::Delay(DelayUnit{9}, 1).Opcode(0x16).Byte(14, 1))})
    EXPECT_THAT(all, testing::Not(HasSubstr("raw")));
}

TEST(IadtAsText, TakesTimeByTheLength) {
  IadtBuilder builder;
  for (int i = 0; i < 2000; ++i)
    builder.Feature("BTState", 1, {Command::Port(1).Get(1, 1), Command::Port(1).Set(0, 1)});
  const Bytes table = builder.Build();
  const auto begin = std::chrono::steady_clock::now();
  const std::string text = IadtText(table);
  const auto written = std::chrono::steady_clock::now();
  EXPECT_EQ(Compile(text).iadt, table);
  const auto compiled = std::chrono::steady_clock::now();
  // Writing the text compiles it once; by itself it is little.
  EXPECT_LT(written - begin, 3 * (compiled - written));
}

TEST(IadtAsText, CompilesBackFromAnyBytes) {
  std::minstd_rand random(1368);
  for (int round = 0; round < 200; ++round) {
    Bytes body(random() % 400);
    for (uint8_t& byte : body) byte = static_cast<uint8_t>(random() % 40);
    for (size_t i = 4; i < body.size(); i += 7) body[i] = 0;
    const Bytes table = firmware::AcpiTable({.signature = "IADT"}, body);
    ASSERT_EQ(Compile(IadtText(table)).iadt, table) << "round " << round;
  }
}

TEST(IamtAsText, CompilesBackToTheSameBytes) {
  const IamtBuilder cases[] = {
      IamtBuilder(),
      IamtBuilder().Chips(0x94D2, 0x0215, 0xAEC2),
      IamtBuilder().Add({9, 1, 2, 5, 7}).Chips(1, 2, 3),
      IamtBuilder().Add({0, 0, 0, 0, 1, 2}),
      IamtBuilder().Add({7, 0, 0, 3}),
      IamtBuilder().Add({0, 0, 0, 200, 1, 2}),
      IamtBuilder().Chips(1, 2, 3).Length(40).Checksum(1),
  };
  for (const IamtBuilder& builder : cases) {
    const Bytes table = builder.Build();
    EXPECT_EQ(Compile(IamtText(table)).iamt, table);
  }
}

TEST(BiosInfoAsText, CompilesBackToTheSameBytes) {
  Bytes bad = firmware::BiosInfo{.model = "M", .checksum = 0x77}.Build();
  for (const Bytes& record : {firmware::BiosInfo{.model = "Model \"1\"", .checksum = {}}.Build(), bad, Bytes{'$', 'C'}})
    EXPECT_EQ(Compile(BiosInfoText(record)).biosInfo, record);
  EXPECT_THAT(BiosInfoText(firmware::BiosInfo{.model = "M1", .checksum = {}}.Build()), HasSubstr("model = \"M1\""));
}

}  // namespace

#include "vyntable/Words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "firmware/IadtBuilder.h"

using namespace layout;

namespace {

using namespace vyntable;
using firmware::Command;

struct WordsCase {
  Command command;
  std::vector<std::string> words;
};

TEST(CommandWords, SayTargetAndBothDirections) {
  const WordsCase cases[] = {
      {Command::Memory(0xFED81000).Width(4).Get(0x10000, 0x10000),
       {"memory 0xfed81000, 4 bytes", "Get: reads AND 0x10000, must be 0x10000", "Set: nothing"}},
      {Command::Port(0x443).Set(0xFE, 0x01),
       {"port 0x443, 1 byte", "Get: nothing", "Set: writes the old value AND 0xfe OR 0x1"}},
      {Command::IndexData(0x2E, 0x2F, 0xF6).Get().Set().Argument(0),
       {"register 0xf6 behind ports 0x2e/0x2f, 1 byte", "Get: reads, into argument 0", "Set: writes argument 0"}},
      {Command::Smbus(0x5A, 0x20).Width(2).Get(),
       {"SMBus device 0x5a register 0x20, 2 bytes", "Get: reads, must be 0x0", "Set: nothing"}},
      {Command::Pci(0, 0x1F, 3, 0x40).Get(1, 0).Set(0, 7),
       {"PCI 00:1f.3 register 0x40, 4 bytes", "Get: reads, takes 0 AND 0x0, must be 0x0",
        "Set: writes 0 AND 0x0 OR 0x7"}},
      {Command::Msr(0x19C).Get(), {"model-specific register 0x19c", "Get: reads, must be 0x0", "Set: nothing"}},
      {Command::Delay(kMilliseconds, 20).Set(), {"wait 20 ms", "Get: nothing", "Set: waits"}},
      {Command::Delay(kSeconds, 1).Get(), {"wait 1 s", "Get: waits, then fails", "Set: nothing"}},
  };
  for (const WordsCase& c : cases) {
    const firmware::Bytes& bytes = c.command.Build();
    EXPECT_EQ(Words({0, bytes, FindLayout(bytes[0])}), c.words);
  }
}

TEST(CommandWords, AdmitWhatIsNoCommand) {
  const firmware::Bytes bytes = {0x18};
  EXPECT_EQ(Words({0, bytes, nullptr}).size(), 1u);
}

TEST(RecordTitle, NamesTypeAndInstanceOrSensor) {
  const auto title = [](const firmware::Record& record) {
    return Title(RecordCursor(firmware::IadtBuilder().Add(record).Build()).Current());
  };
  EXPECT_EQ(title(firmware::Record::Feature("LVDSState").Index(2).Value(1)), "LVDSState index 2 value 1");
  EXPECT_EQ(title(firmware::Record::Sensor("voltage", 1).Name("+12V")), "voltage 2.1 \"+12V\"");
  EXPECT_EQ(title(firmware::Record::Type(36).Value(3).Name("A")), "type 36 index 0 value 3 \"A\"");
}

}  // namespace

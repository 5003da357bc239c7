// SPDX-License-Identifier: MIT
// Each kind of access command, and features of one to a thousand entries.
#include <memory>

#include "bench/Case.h"
#include "bench/Fixture.h"
#include "firmware/IadtBuilder.h"
#include "hw/Platform.h"

using namespace layout;

namespace bench {

namespace {

using firmware::Command;

volatile uint64_t sink;

/// One read or write of a command through the executor.
Case Executing(const std::string& name, const Command& command, unsigned char direction, void (*baseline)()) {
  auto bytes = std::make_shared<firmware::Bytes>(command.Build());
  return {.name = "command/" + name,
          .setUp = [] { StartLibrary(); },
          .library =
              [bytes, direction] {
                unsigned char* cursor = bytes->data();
                unsigned long long slot = 0;
                sink = static_cast<uint64_t>(TIAxTCommon::g_Instance->IAxTRW(&cursor, direction, &slot, 1)) + slot;
              },
          .baseline = baseline};
}

template <typename Use>
void Mapped(uint64_t address, size_t count, bool writable, Use use) {
  const int file =
      platform::Open("/dev/mem", writable ? platform::OpenMode::kReadWriteSync : platform::OpenMode::kRead);
  const uint64_t offset = address % 4096;
  void* base = platform::Map(file, address - offset, offset + count, writable);
  use(static_cast<volatile uint8_t*>(base) + offset);
  platform::Unmap(base, offset + count);
  platform::Close(file);
}

void ReadPort() { sink = platform::In8(0x80) & 1; }
void WritePort() { platform::Out8(0x80, static_cast<uint8_t>((platform::In8(0x80) & 0xFE) | 1)); }
void ReadIndexed() {
  platform::Out8(kIndexPort, 0xF0);
  sink = platform::In8(kDataPort) & 1;
}
void WriteIndexed() {
  platform::Out8(kIndexPort, 0xF0);
  const uint8_t value = static_cast<uint8_t>((platform::In8(kDataPort) & 0xFE) | 1);
  platform::Out8(kIndexPort, 0xF0);
  platform::Out8(kDataPort, value);
}
void ReadMemory() {
  Mapped(0xE0010, 1, false, [](volatile uint8_t* byte) { sink = *byte & 1u; });
}
void WriteMemory() {
  uint8_t value = 0;
  Mapped(0xE0010, 1, false, [&](volatile uint8_t* byte) { value = static_cast<uint8_t>((*byte & 0xFE) | 1); });
  Mapped(0xE0010, 1, true, [&](volatile uint8_t* byte) { *byte = value; });
}
void ReadPci() {
  platform::Out32(0xCF8, 0x8000FB40);
  sink = platform::In32(0xCFC);
}
void WritePci() {
  ReadPci();
  platform::Out32(0xCF8, 0x8000FB40);
  platform::Out32(0xCFC, 1);
}
void ReadMsr() {
  platform::RunCommand("modprobe msr");
  const int file = platform::Open("/dev/cpu/0/msr", platform::OpenMode::kRead);
  uint64_t value = 0;
  platform::ReadAt(file, &value, sizeof value, 0x1A0);
  platform::Close(file);
  sink = value;
}
void Wait() { platform::SleepMicroseconds(5); }

/// Of one feature over accesses that cost nothing, in multiples of the baseline's instructions.
constexpr double kFeatureTarget = 4;

/// A feature whose last of `count` entries is the one: reading passes over the others by their state, setting by their
/// value.
Case Feature(unsigned count, bool set) {
  firmware::IadtBuilder builder;
  for (unsigned i = 0; i < count; ++i) {
    const bool last = i + 1 == count;
    builder.Feature("LVDSState", last ? 1 : 0,
                    {Command::IndexData(kIndexPort, kDataPort, 0xF0).Get(0xFF, last ? 0xFF : 0x00).Set(0xFE, 1)});
  }
  return {.name = (set ? "feature set/" : "feature get/") + std::to_string(count),
          .setUp = [builder] { StartLibrary(builder); },
          .library =
              [set] {
                uint8_t result;
                sink = static_cast<uint64_t>(set ? VynLibSetLVDSState(1, 2) : VynLibGetLVDSState(&result, 2));
              },
          .baseline =
              [set, count] {
                if (set) return WriteIndexed();
                for (unsigned i = 0; i < count; ++i) ReadIndexed();
              },
          .target = count == 1 ? kFeatureTarget : 0};
}

}  // namespace

std::vector<Case> CommandCases() {
  constexpr unsigned char kGet = 0, kSet = 1;
  const auto both = [](Command command) { return command.Get(1, 1).Set(0xFE, 1); };
  const Command port = both(Command::Port(0x80));
  const Command indexed = both(Command::IndexData(kIndexPort, kDataPort, 0xF0));
  const Command memory = both(Command::Memory(0xE0010));
  const Command pci = both(Command::Pci(0, 0x1F, 3, 0x40));
  const Command msr = Command::Msr(0x1A0).Get(1, 1);
  const Command delay = Command::Delay(kMicroseconds, 5).Set();
  std::vector<Case> cases = {
      Executing("port read", port, kGet, ReadPort),        Executing("port write", port, kSet, WritePort),
      Executing("index read", indexed, kGet, ReadIndexed), Executing("index write", indexed, kSet, WriteIndexed),
      Executing("memory read", memory, kGet, ReadMemory),  Executing("memory write", memory, kSet, WriteMemory),
      Executing("PCI read", pci, kGet, ReadPci),           Executing("PCI write", pci, kSet, WritePci),
      Executing("MSR read", msr, kGet, ReadMsr),           Executing("delay", delay, kSet, Wait),
  };
  for (const unsigned count : {1, 10, 100, 1000}) cases.push_back(Feature(count, false));
  for (const unsigned count : {1, 10, 100, 1000}) cases.push_back(Feature(count, true));
  return cases;
}

}  // namespace bench

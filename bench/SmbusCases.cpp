// SPDX-License-Identifier: MIT
// Byte transfers through the records of two controllers. The baseline makes the accesses that one transfer was seen to
// make, one platform call each.
#include <memory>

#include "bench/Case.h"
#include "bench/Fixture.h"
#include "hw/Platform.h"
#include "smbus/TSMBus.h"

namespace bench {

namespace {

constexpr uint16_t kBase = 0x400;
constexpr uint32_t kIch4 = 0x24C08086, kIch9 = 0x29188086, kIch9Smbus = 0x29308086;

/// The LPC bridge 0:1f.0 with this identifier and the SMBus function 0:1f.3 with its base and enable bits.
void StartController(uint32_t lpc) {
  VynLibDllUnInit();
  NullMachine& machine = NullMachine::Get();
  machine.Reset();
  machine.pci = {{0x8000F800, lpc},        {0x8000F840, 0x00000801}, {0x8000F8F0, 0},         {0x8000FB00, kIch9Smbus},
                 {0x8000FB04, 0x00000001}, {0x8000FB08, 0x0C050000}, {0x8000FB20, kBase | 1}, {0x8000FB40, 0x00000001}};
  machine.smbusBase = kBase;
  machine.ports[kBase] = 0;
  machine.ports[kBase + 0xD] = 0;
  VynLibDllInit();
}

void ReadByte() {
  unsigned char byte = 0;
  TSMBus::g_Instance->ReadSmbusByte(0xA0, &byte, 0x10, 1);
}

void WriteByte() { TSMBus::g_Instance->WriteSmbusByte(0xA0, 0x10, 0x5A); }

/// Repeats a log, one call of the platform for each access.
void Replay(const std::vector<Access>& log) {
  for (const Access& access : log) {
    const auto port = static_cast<uint16_t>(access.address);
    const auto value = static_cast<uint32_t>(access.value);
    if (access.kind == 's') {
      platform::SleepMicroseconds(value);
    } else if (access.kind == 'i') {
      access.width == 1 ? platform::In8(port) : access.width == 2 ? platform::In16(port) : platform::In32(port);
    } else if (access.width == 1) {
      platform::Out8(port, static_cast<uint8_t>(value));
    } else if (access.width == 2) {
      platform::Out16(port, static_cast<uint16_t>(value));
    } else {
      platform::Out32(port, value);
    }
  }
}

Case Transfer(const std::string& name, uint32_t lpc, void (*transfer)(), double targetInstructions) {
  auto log = std::make_shared<std::vector<Access>>();
  return {.name = "smbus/" + name,
          .setUp =
              [=] {
                StartController(lpc);
                NullMachine& machine = NullMachine::Get();
                transfer();
                machine.logging = true;
                machine.log.clear();
                transfer();
                machine.logging = false;
                *log = machine.log;
              },
          .library = transfer,
          .baseline = [log] { Replay(*log); },
          .targetInstructions = targetInstructions};
}

}  // namespace

std::vector<Case> SmbusCases() {
  constexpr double kReadTarget = 25000;
  return {Transfer("ICHx byte read", kIch4, ReadByte, kReadTarget), Transfer("ICHx byte write", kIch4, WriteByte, 0),
          Transfer("ICH7 byte read", kIch9, ReadByte, kReadTarget), Transfer("ICH7 byte write", kIch9, WriteByte, 0)};
}

}  // namespace bench

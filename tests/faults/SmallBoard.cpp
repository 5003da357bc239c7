// SPDX-License-Identifier: MIT
// The tables, registers and controller of the small board.
#include "tests/faults/SmallBoard.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "firmware/AcpiImage.h"
#include "firmware/BiosInfo.h"
#include "firmware/IadtBuilder.h"
#include "sim/chips/SmbusPlatforms.h"
#include "vynlib/vynlib.h"

namespace small_board {
namespace {

using firmware::Bytes;
using firmware::Command;
using firmware::IadtBuilder;
using firmware::Record;

constexpr uint32_t kBiosRecord = 0xE0000, kRootPointer = 0xE0040, kTables = 0xE0100;

/// A command that reads, expecting bit 0 to be `state`, and one that stores it there.
std::vector<Command> State(const Command& command, uint8_t state) {
  return {Command(command).Get(0x01, state), Command(command).Set(0xFE, state)};
}

void AddStates(IadtBuilder* iadt) {
  for (uint8_t state = 0; state < 2; ++state) {
    iadt->Feature("LVDSState", state, State(Command::IndexData(0x2E, 0x2F, 0xF0), state));
    iadt->Feature("BTState", state, State(Command::Port(0x80), state));
    iadt->Feature("WifiState", state, State(Command::Memory(kWifiAddress), state));
    iadt->Feature("UsbPwrState", state, {Command::Pci(0, 0x10, 0, 0x40).Width(4).Set(0, state)});
    iadt->Feature("ComType", 1, state, State(Command::Smbus(kSlave, kStateRegister), state));
    iadt->Feature("OnboardTPMState", state, {Command::Msr(0x10).Get(0x01, state)});
  }
}

void AddSensors(IadtBuilder* iadt) {
  const Command high = Command::Smbus(kSlave, kTemperatureRegister).Get();
  const Command low = Command::Smbus(kSlave, kTemperatureRegister + 1).Get();
  iadt->Add(Record::Sensor("voltage", 2)
                .Name("+5V")
                .Parameter("r1", 10)
                .Parameter("r2", 5)
                .Commands({Command::Port(0x100).Get()}));
  iadt->Add(Record::Sensor("temperature", 2).Name("CPU").Commands({Command::Port(0x101).Get()}));
  iadt->Add(Record::Sensor("temperature", 4).Name("Board").Commands({high, low}));
  iadt->Add(Record::Sensor("fan", 2).Name("CPU").Commands({Command::Port(0x102).Get(), Command::Port(0x103).Get()}));
  iadt->Add(Record::Sensor("current", 1).Name("12V").Commands({Command::Smbus(kSlave, kCurrentRegister).Get()}));
}

void AddController(sim::Board* board, std::string_view controller) {
  const sim::SmbusPlatform* platform = sim::FindSmbusPlatform(controller);
  if (platform == nullptr) throw std::invalid_argument("no SMBus controller " + std::string(controller));
  const auto slave = std::make_shared<sim::SmbusSlave>();
  slave->registers[kTemperatureRegister] = 0x0B;
  slave->registers[kTemperatureRegister + 1] = 0xB8;
  slave->registers[kCurrentRegister] = 25;
  sim::SmbusSetup setup;
  setup.slaves[kSlave] = slave;
  sim::AttachSmbus(*board, *platform, setup);
}

}  // namespace

void Build(sim::Board* board, std::string_view controller) {
  IadtBuilder iadt;
  AddStates(&iadt);
  AddSensors(&iadt);
  board->Memory(kBiosRecord, firmware::BiosInfo{.model = "SMALL"}.Build());
  firmware::AcpiImage().RootPointerAt(kRootPointer).TablesAt(kTables).Table(iadt.Build()).PutInto(board);
  board->IndexData(0x2E, 0x2F);
  board->Ports(0x80, {0}).Ports(0x100, {208, 0x2D, 0x04, 0xE2});
  board->Memory(kWifiAddress, Bytes{0});
  board->Msr(0x10, 0);
  board->Pci(0, 0x10, 0).Set(0, 4, 0x00011D0F);
  AddController(board, controller);
  board->logging = false;
}

Quiet::Quiet() : stdout_(dup(STDOUT_FILENO)) {
  std::fflush(stdout);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);
  close(nowhere);
}

Quiet::~Quiet() {
  std::fflush(stdout);
  dup2(stdout_, STDOUT_FILENO);
  close(stdout_);
}

int Start() {
  const Quiet quiet;
  return VynLibDllInit();
}

}  // namespace small_board

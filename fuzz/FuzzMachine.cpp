// SPDX-License-Identifier: MIT
// The machine of the fuzz targets: every answer of the hardware is taken from the input.
#include "fuzz/FuzzMachine.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unordered_map>
#include <vector>

#include "hw/Platform.h"
#include "hw/TReadWrite.h"
#include "smbus/TSMBus.h"
#include "smbus/TSMBusConfig.h"
#include "tables/TAcpiBase.h"
#include "tables/TIADTable.h"
#include "tables/TIAMTable.h"
#include "tables/TIAxTCommon.h"

namespace fuzz {

namespace {

struct State {
  Machine machine;
  size_t next = 0;
  uint32_t pciAddress = 0;
  int openFiles = 0;
  std::unordered_map<void*, std::unique_ptr<uint8_t[]>> mappings;
};

State state;

void Check(bool good, const char* what) {
  if (good) return;
  std::fprintf(stderr, "fuzz: %s\n", what);
  std::abort();
}

void Count() {
  if (state.machine.callsLeft == 0) throw Exhausted();
  --state.machine.callsLeft;
}

/// Round and round through the answers, with a running number in them so that waiting for any value ends.
uint8_t Answer() {
  const auto number = static_cast<uint8_t>(state.next / 256);
  const auto& answers = state.machine.answers;
  const uint8_t byte = answers.empty() ? static_cast<uint8_t>(state.next) : answers[state.next % answers.size()];
  ++state.next;
  return static_cast<uint8_t>(byte + number);
}

/// The SCH's LPC bridge 0:1f.0, with an enabled SMBus I/O base: one of the first controllers that are tried.
uint32_t ControllerConfig(uint32_t address) {
  switch (address & 0xFFFFFC) {
    case 0x00F800:
      return 0x81198086;
    case 0x00F840:
      return 0x80000400;
    default:
      return (address & 0xFFFF00) == 0x00F800 ? 0 : 0xFFFFFFFF;
  }
}

/// A root pointer that leads to no table, so that discovery ends at once.
std::span<const uint8_t> EmptyFirmware() {
  static const auto rsdp = [] {
    std::array<uint8_t, 64> bytes{};
    SealRootPointer(bytes.data());
    return bytes;
  }();
  return rsdp;
}

template <typename T>
T In(uint16_t port) {
  Count();
  if (port >= 0xCFC && port <= 0xCFF)
    return static_cast<T>(state.machine.hasController ? ControllerConfig(state.pciAddress) >> (8 * (port & 3)) : ~0u);
  T value = 0;
  for (size_t i = 0; i < sizeof(T); ++i) value = static_cast<T>(value | T{Answer()} << (8 * i));
  return value;
}

void FreeSingletons() {
  TIAxTCommon::FreeInstance();
  TSMBus::FreeInstance();
  TSMBusConfig::FreeInstance();
  TIADTable::FreeInstance();
  TIAMTable::FreeInstance();
  TReadWrite::FreeInstance();
  TAcpiBase::FreeInstance();
}

}  // namespace

std::span<const uint8_t> Input::Bytes(size_t count) {
  const auto front = bytes_.first(std::min(count, bytes_.size()));
  bytes_ = bytes_.subspan(front.size());
  return front;
}

uint64_t Input::Number(size_t count) {
  uint64_t value = 0;
  const auto front = Bytes(count);
  std::memcpy(&value, front.data(), front.size());
  return value;
}

void SealRootPointer(uint8_t* rsdp) {
  std::memcpy(rsdp, "RSD PTR ", 8);
  uint8_t sum = 0;
  for (size_t i = 0; i < 20; ++i) sum = static_cast<uint8_t>(sum + rsdp[i]);
  rsdp[8] = static_cast<uint8_t>(rsdp[8] - sum);
}

void Start(const Machine& machine) {
  FreeSingletons();
  state = {};
  state.machine = machine;
  if (machine.memory.empty()) state.machine.memory = EmptyFirmware();
}

void Finish() {
  FreeSingletons();
  Check(state.mappings.empty(), "a mapping was left");
  Check(state.openFiles == 0, "a descriptor was left open");
}

}  // namespace fuzz

namespace platform {

using namespace fuzz;

int SetIoPrivilegeLevel(int) { return 0; }

uint8_t In8(uint16_t port) { return In<uint8_t>(port); }
uint16_t In16(uint16_t port) { return In<uint16_t>(port); }
uint32_t In32(uint16_t port) { return In<uint32_t>(port); }
void Out8(uint16_t, uint8_t) { Count(); }
void Out16(uint16_t, uint16_t) { Count(); }
void Out32(uint16_t port, uint32_t value) {
  Count();
  if (port == 0xCF8) state.pciAddress = value;
}

int Open(const char* path, OpenMode) {
  Count();
  // A short MSR read leaves its descriptor open by contract: that device never gives one.
  if (std::strcmp(path, "/dev/mem") != 0) return -1;
  return 3 + state.openFiles++;
}

void Close(int) { --state.openFiles; }

void* Map(int, uint64_t offset, size_t length, bool) {
  Count();
  if (length == 0 || length > state.machine.bytesLeft || offset % PageSize() != 0) return nullptr;
  state.machine.bytesLeft -= length;
  auto bytes = std::make_unique<uint8_t[]>(length);
  const auto& memory = state.machine.memory;
  size_t at = static_cast<size_t>((offset - kBiosArea) % memory.size());
  for (size_t i = 0; i < length; at = 0) {
    const size_t run = std::min(length - i, memory.size() - at);
    std::memcpy(bytes.get() + i, memory.data() + at, run);
    i += run;
  }
  void* address = bytes.get();
  state.mappings.emplace(address, std::move(bytes));
  return address;
}

void Unmap(void* address, size_t) { Check(state.mappings.erase(address) == 1, "an unknown mapping was released"); }

long ReadAt(int, void*, size_t, uint64_t) { return -1; }

size_t PageSize() { return 4096; }

void RunCommand(const char*) { Count(); }

void SleepMicroseconds(uint32_t) { Count(); }

}  // namespace platform

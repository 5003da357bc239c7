// SPDX-License-Identifier: MIT
// Canned answers to every platform call, and a log of the accesses.
#include "bench/NullMachine.h"

#include <cstring>

#include "hw/Platform.h"

namespace bench {

namespace {
constexpr uint16_t kPciAddressPort = 0xCF8;
constexpr uint16_t kPciDataPort = 0xCFC;
}  // namespace

NullMachine& NullMachine::Get() {
  static NullMachine machine;
  return machine;
}

void NullMachine::Reset() {
  ports.fill(0xFF);
  pci.clear();
  memory.assign(kMemoryBytes, 0);
  smbusBase = 0;
  accesses = 0;
  logging = false;
  log.clear();
  pciAddress = 0;
}

namespace {

template <typename T>
T In(uint16_t port) {
  NullMachine& machine = NullMachine::Get();
  T value;
  if (port >= kPciDataPort && port < kPciDataPort + 4) {
    uint32_t dword = 0xFFFFFFFF;
    if (!machine.pci.empty()) {
      const auto found = machine.pci.find(machine.pciAddress);
      if (found != machine.pci.end()) dword = found->second;
    }
    value = static_cast<T>(dword >> (8 * (port & 3)));
  } else {
    std::memcpy(&value, &machine.ports[port], sizeof value);
  }
  machine.Note('i', sizeof(T), port, value);
  return value;
}

template <typename T>
void Out(uint16_t port, T value) {
  NullMachine& machine = NullMachine::Get();
  machine.Note('o', sizeof(T), port, value);
  if (port == kPciAddressPort) {
    machine.pciAddress = static_cast<uint32_t>(value);
  } else if (machine.smbusBase != 0 && port == machine.smbusBase) {
    machine.ports[port] = static_cast<uint8_t>(machine.ports[port] & ~value);
  } else if (machine.smbusBase != 0 && port == machine.smbusBase + 2) {
    if ((value & 0x40) != 0) machine.ports[machine.smbusBase] = 2;
  } else if (port < kPciDataPort || port >= kPciDataPort + 4) {
    std::memcpy(&machine.ports[port], &value, sizeof value);
  }
}

}  // namespace

}  // namespace bench

namespace platform {

using bench::NullMachine;

int SetIoPrivilegeLevel(int level) {
  NullMachine::Get().Note('p', 0, 0, static_cast<uint64_t>(level));
  return 0;
}

uint8_t In8(uint16_t port) { return bench::In<uint8_t>(port); }
uint16_t In16(uint16_t port) { return bench::In<uint16_t>(port); }
uint32_t In32(uint16_t port) { return bench::In<uint32_t>(port); }
void Out8(uint16_t port, uint8_t value) { bench::Out(port, value); }
void Out16(uint16_t port, uint16_t value) { bench::Out(port, value); }
void Out32(uint16_t port, uint32_t value) { bench::Out(port, value); }

int Open(const char*, OpenMode mode) {
  NullMachine::Get().Note('f', 0, 0, mode == OpenMode::kReadWriteSync);
  return 3;
}

void Close(int) { NullMachine::Get().Note('c', 0, 0, 0); }

void* Map(int, uint64_t offset, size_t length, bool writable) {
  NullMachine& machine = NullMachine::Get();
  machine.Note('m', writable, offset, length);
  const uint64_t at = offset - bench::kMemoryBase;
  return at + length <= machine.memory.size() ? machine.memory.data() + at : nullptr;
}

void Unmap(void*, size_t length) { NullMachine::Get().Note('u', 0, 0, length); }

long ReadAt(int, void* buffer, size_t count, uint64_t offset) {
  NullMachine::Get().Note('a', 0, offset, count);
  std::memset(buffer, 0, count);
  return static_cast<long>(count);
}

size_t PageSize() { return 4096; }

void RunCommand(const char*) { NullMachine::Get().Note('r', 0, 0, 0); }

void SleepMicroseconds(uint32_t microseconds) { NullMachine::Get().Note('s', 0, 0, microseconds); }

}  // namespace platform

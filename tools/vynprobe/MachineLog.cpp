// SPDX-License-Identifier: MIT
// The platform of the real machine's program: notes each access and hands it to the machine. PlatformLinux.cpp is built
// once more under the namespace `machine` for it.
#include <utility>

#include "AccessLog.h"
#include "hw/Platform.h"
#include "sim/Access.h"

namespace machine {

enum class OpenMode { kRead, kReadWriteSync };
int Open(const char* path, OpenMode mode);
decltype(platform::SetIoPrivilegeLevel) SetIoPrivilegeLevel;
decltype(platform::In8) In8;
decltype(platform::In16) In16;
decltype(platform::In32) In32;
decltype(platform::Out8) Out8;
decltype(platform::Out16) Out16;
decltype(platform::Out32) Out32;
decltype(platform::Close) Close;
decltype(platform::Map) Map;
decltype(platform::Unmap) Unmap;
decltype(platform::ReadAt) ReadAt;
decltype(platform::PageSize) PageSize;
decltype(platform::RunCommand) RunCommand;
decltype(platform::SleepMicroseconds) SleepMicroseconds;

}  // namespace machine

namespace {

using sim::Access;

std::vector<std::string>& Lines() {
  static std::vector<std::string> lines;
  return lines;
}

void Note(Access::Kind kind, uint64_t address, unsigned width, uint64_t value, const char* text = "") {
  Lines().push_back(sim::ToString({kind, address, width, value, text}));
}

template <typename Value>
Value NotedIn(uint16_t port, Value value) {
  Note(Access::kIn, port, sizeof value, value);
  return value;
}

template <typename Value>
void NotedOut(void (*out)(uint16_t, Value), uint16_t port, Value value) {
  Note(Access::kOut, port, sizeof value, value);
  out(port, value);
}

}  // namespace

namespace platform {

int SetIoPrivilegeLevel(int level) {
  Note(Access::kIopl, 0, 0, static_cast<uint64_t>(level));
  return machine::SetIoPrivilegeLevel(level);
}

uint8_t In8(uint16_t port) { return NotedIn(port, machine::In8(port)); }
uint16_t In16(uint16_t port) { return NotedIn(port, machine::In16(port)); }
uint32_t In32(uint16_t port) { return NotedIn(port, machine::In32(port)); }
void Out8(uint16_t port, uint8_t value) { NotedOut(machine::Out8, port, value); }
void Out16(uint16_t port, uint16_t value) { NotedOut(machine::Out16, port, value); }
void Out32(uint16_t port, uint32_t value) { NotedOut(machine::Out32, port, value); }

int Open(const char* path, OpenMode mode) {
  const bool write = mode == OpenMode::kReadWriteSync;
  Note(Access::kOpen, 0, 0, write, path);
  return machine::Open(path, write ? machine::OpenMode::kReadWriteSync : machine::OpenMode::kRead);
}

void Close(int descriptor) {
  Note(Access::kClose, 0, 0, 0);
  machine::Close(descriptor);
}

void* Map(int descriptor, uint64_t offset, size_t length, bool writable) {
  Note(Access::kMap, offset, writable, length);
  return machine::Map(descriptor, offset, length, writable);
}

void Unmap(void* address, size_t length) {
  Note(Access::kUnmap, 0, 0, length);
  machine::Unmap(address, length);
}

long ReadAt(int descriptor, void* buffer, size_t count, uint64_t offset) {
  Note(Access::kReadAt, offset, 0, count);
  return machine::ReadAt(descriptor, buffer, count, offset);
}

size_t PageSize() { return machine::PageSize(); }

void RunCommand(const char* command) {
  Note(Access::kCommand, 0, 0, 0, command);
  machine::RunCommand(command);
}

void SleepMicroseconds(uint32_t microseconds) {
  Note(Access::kSleep, 0, 0, microseconds);
  machine::SleepMicroseconds(microseconds);
}

}  // namespace platform

namespace probe {

bool UseBoard(const std::string&) { return false; }

std::vector<std::string> TakeAccesses() { return std::exchange(Lines(), {}); }

}  // namespace probe

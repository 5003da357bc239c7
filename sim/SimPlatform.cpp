// SPDX-License-Identifier: MIT
// The seam over the current simulated board.
#include "hw/Platform.h"
#include "sim/Board.h"

namespace platform {

using sim::Board;

int SetIoPrivilegeLevel(int level) { return Board::Current().SetIoPrivilegeLevel(level); }

uint8_t In8(uint16_t port) { return static_cast<uint8_t>(Board::Current().In(port, 1)); }
uint16_t In16(uint16_t port) { return static_cast<uint16_t>(Board::Current().In(port, 2)); }
uint32_t In32(uint16_t port) { return Board::Current().In(port, 4); }
void Out8(uint16_t port, uint8_t value) { Board::Current().Out(port, 1, value); }
void Out16(uint16_t port, uint16_t value) { Board::Current().Out(port, 2, value); }
void Out32(uint16_t port, uint32_t value) { Board::Current().Out(port, 4, value); }

int Open(const char* path, OpenMode mode) { return Board::Current().Open(path, mode == OpenMode::kReadWriteSync); }
void Close(int descriptor) { Board::Current().Close(descriptor); }
void* Map(int descriptor, uint64_t offset, size_t length, bool writable) {
  return Board::Current().Map(descriptor, offset, length, writable);
}
void Unmap(void* address, size_t length) { Board::Current().Unmap(address, length); }
long ReadAt(int descriptor, void* buffer, size_t count, uint64_t offset) {
  return Board::Current().ReadAt(descriptor, buffer, count, offset);
}

size_t PageSize() { return 4096; }

void RunCommand(const char* command) { Board::Current().RunCommand(command); }

void SleepMicroseconds(uint32_t microseconds) { Board::Current().Sleep(microseconds); }

}  // namespace platform

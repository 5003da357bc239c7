// SPDX-License-Identifier: MIT
/// The few things the library asks of the machine. Exactly one implementation is linked: the real one
/// (PlatformLinux.cpp) or the simulated board's (sim/SimPlatform.cpp).
#pragma once

#include <cstddef>
#include <cstdint>

namespace platform {

/// Sets the I/O privilege level of the process. Returns 0 on success, as iopl(2) does.
int SetIoPrivilegeLevel(int level);

uint8_t In8(uint16_t port);
uint16_t In16(uint16_t port);
uint32_t In32(uint16_t port);
void Out8(uint16_t port, uint8_t value);
void Out16(uint16_t port, uint16_t value);
void Out32(uint16_t port, uint32_t value);

enum class OpenMode { kRead, kReadWriteSync };

/// Opens a device file. Returns a descriptor, or -1.
int Open(const char* path, OpenMode mode);
void Close(int descriptor);

/// Maps `length` bytes at `offset` (a multiple of the page size) of an open file, shared. Returns null on failure.
void* Map(int descriptor, uint64_t offset, size_t length, bool writable);
void Unmap(void* address, size_t length);

/// Reads up to `count` bytes at `offset` of an open file. Returns the number of bytes read, or -1.
long ReadAt(int descriptor, void* buffer, size_t count, uint64_t offset);

/// Bytes, a power of two.
size_t PageSize();

/// Runs a shell command and waits for it; its outcome is of no interest.
void RunCommand(const char* command);

void SleepMicroseconds(uint32_t microseconds);

}  // namespace platform

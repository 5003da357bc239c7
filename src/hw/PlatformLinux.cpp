// The real machine: each function is the system call or the instruction it is named for, and nothing more.
#include <fcntl.h>
#include <sys/io.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "hw/Platform.h"

namespace platform {

int SetIoPrivilegeLevel(int level) { return iopl(level); }

uint8_t In8(uint16_t port) { return inb(port); }
uint16_t In16(uint16_t port) { return inw(port); }
uint32_t In32(uint16_t port) { return inl(port); }
void Out8(uint16_t port, uint8_t value) { outb(value, port); }
void Out16(uint16_t port, uint16_t value) { outw(value, port); }
void Out32(uint16_t port, uint32_t value) { outl(value, port); }

int Open(const char* path, OpenMode mode) {
  return mode == OpenMode::kRead ? open(path, O_RDONLY) : open(path, O_RDWR | O_SYNC);
}

void Close(int descriptor) { close(descriptor); }

void* Map(int descriptor, uint64_t offset, size_t length, bool writable) {
  const int protection = writable ? PROT_READ | PROT_WRITE : PROT_READ;
  void* address = mmap(nullptr, length, protection, MAP_SHARED, descriptor, static_cast<off_t>(offset));
  return address == MAP_FAILED ? nullptr : address;
}

void Unmap(void* address, size_t length) { munmap(address, length); }

long ReadAt(int descriptor, void* buffer, size_t count, uint64_t offset) {
  return pread(descriptor, buffer, count, static_cast<off_t>(offset));
}

size_t PageSize() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }

void RunCommand(const char* command) {
  if (system(command) != 0) return;  // the outcome is of no interest: the following open tells
}

void SleepMicroseconds(uint32_t microseconds) { usleep(microseconds); }

}  // namespace platform

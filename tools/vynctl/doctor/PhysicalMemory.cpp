// SPDX-License-Identifier: MIT
// Maps one page at a time, as the library does.
#include "doctor/PhysicalMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace vynctl::doctor {
PhysicalMemory::PhysicalMemory(const Machine& machine)
    : machine_(machine),
      pageSize_(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
      // As the library opens it for reading: not O_SYNC, for what others have mapped cached is refused uncached.
      file_(machine.Open(kPath, O_RDONLY)) {}

int PhysicalMemory::Read(uint64_t address, size_t count, std::string* bytes) {
  bytes->clear();
  while (count > 0) {
    const size_t first = address % pageSize_;
    const size_t part = std::min(count, pageSize_ - first);
    const int error = ReadPart(address - first, first, part, bytes);
    if (error != 0) {
      bytes->clear();
      return error;
    }
    address += part;
    count -= part;
  }
  return 0;
}

int PhysicalMemory::ReadPart(uint64_t page, size_t first, size_t count, std::string* bytes) {
  if (!IsOpen()) return OpenError();
  void* mapped = machine_.Map(file_.Number(), page, pageSize_);
  const int error = mapped == nullptr ? errno : 0;
  pages_[page] = error;
  if (mapped == nullptr) return error;
  bytes->append(static_cast<const char*>(mapped) + first, count);
  munmap(mapped, pageSize_);
  return 0;
}

}  // namespace vynctl::doctor

// SPDX-License-Identifier: MIT
/// Owners of an open device file and of a mapping of one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "hw/Platform.h"

namespace hw {

class DeviceFile {
 public:
  DeviceFile(const char* path, platform::OpenMode mode) : descriptor_(platform::Open(path, mode)) {}
  ~DeviceFile() {
    if (IsOpen()) platform::Close(descriptor_);
  }
  DeviceFile(const DeviceFile&) = delete;
  DeviceFile& operator=(const DeviceFile&) = delete;

  bool IsOpen() const { return descriptor_ >= 0; }
  int Descriptor() const { return descriptor_; }
  /// Gives the descriptor away: nothing closes it any more.
  void Abandon() { descriptor_ = -1; }

 private:
  int descriptor_;
};

/// `count` bytes of physical memory from any address on, through "/dev/mem".
class MemoryMapping {
 public:
  MemoryMapping(uint64_t address, size_t count, bool writable)
      : file_("/dev/mem", writable ? platform::OpenMode::kReadWriteSync : platform::OpenMode::kRead) {
    if (!file_.IsOpen()) return;
    offset_ = static_cast<size_t>(address % platform::PageSize());
    length_ = offset_ + count;
    // Contract: length 0, of count 0 on a page boundary, is asked for too and refused.
    base_ = platform::Map(file_.Descriptor(), address - offset_, length_, writable);
  }
  ~MemoryMapping() {
    if (IsMapped()) platform::Unmap(base_, length_);
  }
  MemoryMapping(const MemoryMapping&) = delete;
  MemoryMapping& operator=(const MemoryMapping&) = delete;

  bool IsMapped() const { return base_ != nullptr; }

  /// The elements from the one that holds the address on: low address bits below the element size are dropped.
  template <typename T>
  volatile T* Elements() const {
    return static_cast<volatile T*>(base_) + offset_ / sizeof(T);
  }

 private:
  DeviceFile file_;
  void* base_ = nullptr;
  size_t offset_ = 0;
  size_t length_ = 0;
};

}  // namespace hw

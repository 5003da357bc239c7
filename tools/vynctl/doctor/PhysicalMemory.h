// SPDX-License-Identifier: MIT
/// Physical memory through /dev/mem, for reading, page by page: only what is asked for is mapped.
#pragma once

#include <map>
#include <string>

#include "doctor/Machine.h"

namespace vynctl::doctor {

class PhysicalMemory {
 public:
  static constexpr char kPath[] = "/dev/mem";

  explicit PhysicalMemory(const Machine& machine);

  bool IsOpen() const { return file_.IsOpen(); }
  /// Why /dev/mem does not open.
  int OpenError() const { return file_.Error(); }

  /// Copies `count` bytes at `address`.
  /// @return 0, or the error number of the first page that cannot be mapped; then `bytes` is empty
  int Read(uint64_t address, size_t count, std::string* bytes);

  /// The pages that were asked for, by address: 0 for one that maps, else its error number.
  const std::map<uint64_t, int>& Pages() const { return pages_; }

 private:
  int ReadPart(uint64_t page, size_t first, size_t count, std::string* bytes);

  const Machine& machine_;
  const size_t pageSize_;
  Descriptor file_;
  std::map<uint64_t, int> pages_;
};

}  // namespace vynctl::doctor

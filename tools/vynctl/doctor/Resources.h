// SPDX-License-Identifier: MIT
/// The kernel's list of who owns which ports or which physical memory.
#pragma once

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "doctor/Machine.h"

namespace vynctl::doctor {

/// Both ends included.
struct Range {
  uint64_t first = 0, last = 0;
  bool operator==(const Range&) const = default;
  bool operator<(const Range& other) const { return std::tie(first, last) < std::tie(other.first, other.last); }
};

struct Resource {
  Range range = {};
  unsigned depth = 0;     ///< 0 for the outermost
  std::string name = {};  ///< as the kernel gives it
};

class Resources {
 public:
  /// @param path  /proc/ioports or /proc/iomem
  Resources(const Machine& machine, std::string_view path);

  /// The kernel shows addresses to privileged readers alone; to others all are 0.
  bool Hidden() const { return hidden_; }
  /// Who claims something of the range: the innermost claims, without those that merely describe the machine (windows
  /// of buses, reservations of the firmware, devices that no driver has taken).
  std::vector<const Resource*> Owners(const Range& range) const;

 private:
  std::vector<Resource> list_;
  bool hidden_ = true;
};

}  // namespace vynctl::doctor

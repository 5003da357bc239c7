// SPDX-License-Identifier: MIT
/// Archives of small files, in the ustar form of POSIX.1-1988.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vynctl::doctor {

/// Collects files into one archive in memory.
class Tar {
 public:
  /// @param now  time of change of every file, in seconds since 1970
  explicit Tar(uint64_t now) : now_(now) {}

  /// @param name  at most 100 bytes
  void Add(std::string_view name, std::string_view content);
  /// The archive with the two empty blocks that end it.
  std::string Finish() const;

 private:
  uint64_t now_;
  std::string bytes_;
};

/// Makes a file that only its owner can read and write it. An existing file or link of that name is an error.
/// @return 0 or an error number; then nothing is left behind
int WriteNewFile(const std::string& path, std::string_view content);

}  // namespace vynctl::doctor

/// Keeps two runs of the tool from touching the hardware at once.
#pragma once

#include <string>

namespace vynctl {

/// An advisory lock on a file; nothing is locked where the file cannot be opened.
class HardwareLock {
 public:
  /// @param path  a file that only those who may touch the hardware can open; empty: no lock
  explicit HardwareLock(const std::string& path);
  ~HardwareLock();
  HardwareLock(const HardwareLock&) = delete;
  HardwareLock& operator=(const HardwareLock&) = delete;

  /// Waits until no other run has it.
  void Take() const;
  void Give() const;

 private:
  int descriptor_;
};

}  // namespace vynctl

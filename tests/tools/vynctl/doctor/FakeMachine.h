// SPDX-License-Identifier: MIT
/// A machine for the doctor to look at: folders that stand for /sys, /proc, /dev and /run, and answers for what no
/// folder can stand for.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "doctor/Machine.h"

namespace vynctl::doctor {

class FakeMachine : public Machine {
 public:
  /// An empty machine in a folder of its own.
  FakeMachine();
  ~FakeMachine() override;

  void Write(const std::string& path, const std::string& bytes) const;
  /// At a physical address of /dev/mem.
  void Poke(uint64_t address, const std::string& bytes) const;
  void Link(const std::string& path, const std::string& target) const;
  /// A file or a folder with all that it holds.
  void Remove(const std::string& path) const;
  std::string Path(const std::string& path) const { return Whole(path); }

  Descriptor Open(std::string_view path, int flags) const override;
  void* Map(int descriptor, uint64_t offset, size_t length) const override;
  Trial TryPrivilege() const override { return trial; }
  Library FindLibrary() const override { return library; }

  std::map<std::string, int, std::less<>> closed;    ///< error numbers of files that do not open
  std::map<std::string, int, std::less<>> readOnly;  ///< of files that do not open for writing
  uint64_t hiddenFrom = UINT64_MAX;                  ///< /dev/mem refuses what begins here
  int refusal = 0;                                   ///< with this error number
  Trial trial;
  Library library{.file = "/usr/lib/x86_64-linux-gnu/libvynlib.so.1.0.0"};
};

/// An ACPI table of that signature, with its length and its checksum.
std::string AcpiTable(const std::string& signature, const std::string& body);
/// `value` in `count` bytes, lowest first.
std::string Little(uint64_t value, size_t count);
/// `bytes` with the last one changed so that all sum to 0.
std::string Summed(std::string bytes, size_t place);

}  // namespace vynctl::doctor

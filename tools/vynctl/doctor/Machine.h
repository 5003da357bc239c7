// SPDX-License-Identifier: MIT
/// The machine that the doctor looks at: its files, and the few system calls that no file stands for.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vynctl::doctor {

/// An open file, or why there is none.
class Descriptor {
 public:
  /// @param number  of an open file, which this closes; else negative: an error number below 0
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor();
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;

  bool IsOpen() const { return number_ >= 0; }
  int Number() const { return number_; }
  int Error() const { return IsOpen() ? 0 : -number_; }

 private:
  int number_;
};

class Machine {
 public:
  /// @param root  stands before every path; "" for the machine that this runs on
  explicit Machine(std::string root = "") : root_(std::move(root)) {}
  virtual ~Machine() = default;
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  struct Content {
    int error = 0;  ///< 0: the bytes are the whole file
    std::string bytes;
  };
  /// At most 16 MiB; a larger file is EFBIG.
  Content Read(std::string_view path) const;
  /// The bytes without white space at both ends; empty when the file cannot be read.
  std::string Line(std::string_view path) const;
  /// What stands behind `key` and a colon in a file of such lines, without white space around it; empty when nothing
  /// does.
  std::string Field(std::string_view path, std::string_view key) const;
  bool Exists(std::string_view path) const;
  /// A module of that name is loaded into the kernel.
  bool HasModule(std::string_view name) const;
  /// The names in a folder, in order; none when it cannot be read.
  std::vector<std::string> Names(std::string_view folder) const;
  /// The last part of what a symbolic link points to; empty when it is none.
  std::string LinkName(std::string_view path) const;

  /// Opens a file, following links.
  virtual Descriptor Open(std::string_view path, int flags) const;
  /// As mmap(2), shared and for reading; null and errno when it is refused.
  virtual void* Map(int descriptor, uint64_t offset, size_t length) const;

  /// How raising the privilege level went.
  struct Trial {
    int error = 0;   ///< of iopl(3); 0: it was raised
    int signal = 0;  ///< not 0: the call ended the process that made it
  };
  /// Tries it in a process of its own, so that nothing stays raised.
  virtual Trial TryPrivilege() const;

  struct Library {
    std::string file = {};   ///< where the loader found it, links resolved; empty when it did not
    std::string error = {};  ///< what the loader says then
  };
  /// Has the loader find the library by its soname, without starting it.
  virtual Library FindLibrary() const;

 protected:
  std::string Whole(std::string_view path) const { return root_ + std::string(path); }

 private:
  const std::string root_;
};

}  // namespace vynctl::doctor

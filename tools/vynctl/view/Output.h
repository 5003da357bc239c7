// SPDX-License-Identifier: MIT
/// Where text goes: the tool's own standard output, messages beside it, and files.
#pragma once

#include <string>
#include <string_view>

namespace vynctl {

/// Keeps what the library prints out of the tool's own output: while one exists, everything the process writes to
/// standard output (the library, and commands that it runs) goes to an anonymous file; the tool itself writes to the
/// standard output it was started with through Write().
class OutputDivert {
 public:
  OutputDivert();
  ~OutputDivert();
  OutputDivert(const OutputDivert&) = delete;
  OutputDivert& operator=(const OutputDivert&) = delete;

  /// What was printed since the last call.
  std::string Take();
  /// Writes all of `text` to the real standard output. False when that fails (a full disk, a closed descriptor).
  bool Write(std::string_view text) const;
  /// The real standard output, or -1 when the tool was started without one.
  int Descriptor() const { return real_; }

 private:
  int real_;
  int file_;
};

/// Writes what fits at once: a paused terminal, a full pipe or a hung journal lose the text and do not delay the
/// caller.
void WriteWithoutWaiting(int descriptor, std::string_view text);

/// "vynctl: TEXT" and a line feed on standard error, in that way.
void Notice(const std::string& text);

/// Writes `text` to a file of a random name beside `path` and moves that there, so that a reader never meets half a
/// file; both the file and its folder are flushed to the disk. No link is followed, neither one at `path` nor one in
/// the place of its folder. What killed runs left behind is removed.
/// @throws std::runtime_error when that fails, or when something that is no regular file stands at `path`
void ReplaceFile(const std::string& path, const std::string& text);

}  // namespace vynctl

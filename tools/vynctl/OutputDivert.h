/// Keeps what the library prints out of the tool's own output.
#pragma once

#include <string>
#include <string_view>

namespace vynctl {

/// While one exists, everything the process writes to standard output (the library, and commands that it runs) goes to
/// an anonymous file; the tool itself writes to the standard output it was started with through Write().
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

}  // namespace vynctl

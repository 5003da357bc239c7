/// Keeps what the library prints out of the tool's own output.
#pragma once

#include <string>
#include <string_view>

namespace vynctl {

/// While one exists, everything the process writes to a standard stream (the library, and commands that it runs) goes
/// to an anonymous file; the tool itself writes to the stream it was started with through Write().
class OutputDivert {
 public:
  /// @param stream  1, standard output, or 2, standard error
  explicit OutputDivert(int stream = 1);
  ~OutputDivert();
  OutputDivert(const OutputDivert&) = delete;
  OutputDivert& operator=(const OutputDivert&) = delete;

  /// What was printed since the last call.
  std::string Take();
  /// Writes all of `text` to the real stream. False when that fails (a full disk, a closed descriptor).
  bool Write(std::string_view text) const;
  /// The real stream, or -1 when the tool was started without one.
  int Descriptor() const { return real_; }

 private:
  int stream_;
  int real_;
  int file_;
};

}  // namespace vynctl

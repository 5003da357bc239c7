// SPDX-License-Identifier: MIT
// Writing that fails is reported, never thrown.
#include "commandline/Streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "commandline/Wrap.h"

namespace commandline {
namespace {

std::string Fitted(int descriptor, const std::string& text) {
  const size_t columns = TerminalColumns(descriptor);
  return columns == 0 ? text : Wrapped(text, columns);
}

bool ReportOutput(const char* tool, int error) {
  const std::string why = error == 0 ? "" : std::string(": ") + std::strerror(error);
  Say(std::string(tool) + ": cannot write to standard output" + why + "\n");
  return false;
}

}  // namespace

void HoldStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    // open() takes the lowest free number, which is this one.
    open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

bool WriteAll(int descriptor, const std::string& text) {
  for (size_t done = 0; done < text.size();) {
    const ssize_t written = write(descriptor, text.data() + done, text.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    done += static_cast<size_t>(written);
  }
  return true;
}

void Say(const std::string& text) { WriteAll(STDERR_FILENO, Fitted(STDERR_FILENO, text)); }

bool Print(const char* tool, const std::string& text) {
  return WriteAll(STDOUT_FILENO, Fitted(STDOUT_FILENO, text)) || ReportOutput(tool, errno);
}

bool Flush(const char* tool) {
  errno = 0;
  // Why an earlier writing failed is no longer known.
  const bool failed = std::ferror(stdout) != 0;
  return (std::fflush(stdout) == 0 && !failed) || ReportOutput(tool, errno);
}

}  // namespace commandline

#include "OutputDivert.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace vynctl {
namespace {

constexpr int kFirstFreeDescriptor = 3;

}  // namespace

OutputDivert::OutputDivert() : real_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, kFirstFreeDescriptor)) {
  fflush(stdout);
  const int file = memfd_create("library-output", MFD_CLOEXEC);
  file_ = fcntl(file, F_DUPFD_CLOEXEC, kFirstFreeDescriptor);
  dup2(file, STDOUT_FILENO);
  if (file > STDERR_FILENO) close(file);
}

OutputDivert::~OutputDivert() {
  fflush(stdout);
  if (real_ >= 0) dup2(real_, STDOUT_FILENO);
  if (real_ >= 0) close(real_);
  if (file_ >= 0) close(file_);
}

std::string OutputDivert::Take() {
  fflush(stdout);
  const off_t size = lseek(file_, 0, SEEK_END);
  if (size <= 0) return {};
  std::string text(static_cast<size_t>(size), '\0');
  const ssize_t got = pread(file_, text.data(), text.size(), 0);
  text.resize(got > 0 ? static_cast<size_t>(got) : 0);
  if (ftruncate(file_, 0) == 0) lseek(file_, 0, SEEK_SET);
  return text;
}

bool OutputDivert::Write(std::string_view text) const {
  while (!text.empty()) {
    const ssize_t written = write(real_, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

}  // namespace vynctl

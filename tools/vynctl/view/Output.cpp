// SPDX-License-Identifier: MIT
// Writing to descriptors: diverted, without waiting, and to files that are replaced in one step.
#include "view/Output.h"

#include <dirent.h>
#include <fcntl.h>
#include <fmt/core.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "commandline/Streams.h"
#include "view/Text.h"

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

void WriteWithoutWaiting(int descriptor, std::string_view text) {
  if (send(descriptor, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL) >= 0 || errno != ENOTSOCK) return;
  // A pipe is ready when a page fits, a terminal when it takes output.
  pollfd ready{descriptor, POLLOUT, 0};
  if (poll(&ready, 1, 0) != 1 || (ready.revents & POLLOUT) == 0) return;
  if (write(descriptor, text.data(), text.size()) < 0) return;
}

void Notice(const std::string& text) { WriteWithoutWaiting(STDERR_FILENO, "vynctl: " + text + '\n'); }

// Everything happens within the one folder that was opened: nobody who owns it can lead the writing elsewhere.
namespace {

constexpr size_t kRandomDigits = 16;
constexpr mode_t kMode = 0644;
constexpr int kAttempts = 8;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Number() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }

 private:
  const int number_;
};

struct Place {
  std::string folder, name;
};

Place PlaceOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return {".", path};
  // A slash behind the folder would have its link followed.
  const size_t end = path.find_last_not_of('/', slash);
  return {end == std::string::npos ? "/" : path.substr(0, end + 1), path.substr(slash + 1)};
}

[[noreturn]] void Fail(const std::string& path, const char* why) {
  throw std::runtime_error(fmt::format("cannot write {}: {}", Printable(path), why));
}

std::string Prefix(const std::string& name) { return '.' + name + ".vynctl-"; }

std::string RandomName(const std::string& name) {
  uint64_t number = 0;
  if (getrandom(&number, sizeof number, 0) != sizeof number) return "";
  return fmt::format("{}{:0{}x}", Prefix(name), number, kRandomDigits);
}

/// Is `entry` a name that RandomName() makes?
bool IsTemporary(const std::string& entry, const std::string& name) {
  const std::string prefix = Prefix(name);
  return entry.starts_with(prefix) && entry.size() == prefix.size() + kRandomDigits &&
         entry.find_first_not_of("0123456789abcdef", prefix.size()) == std::string::npos;
}

std::vector<std::string> TemporaryFiles(int folder, const std::string& name) {
  std::vector<std::string> found;
  const int copy = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  DIR* entries = copy >= 0 ? fdopendir(copy) : nullptr;
  if (entries == nullptr) return found;
  while (const dirent* entry = readdir(entries)) {
    if (IsTemporary(entry->d_name, name)) found.emplace_back(entry->d_name);
  }
  closedir(entries);
  return found;
}

/// A run that still writes holds a lock on its file.
void RemoveLeftovers(int folder, const std::string& name) {
  for (const std::string& entry : TemporaryFiles(folder, name)) {
    const Descriptor file(openat(folder, entry.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat state {};
    if (!file.IsOpen() || fstat(file.Number(), &state) != 0 || state.st_uid != geteuid()) continue;
    if (S_ISREG(state.st_mode) && flock(file.Number(), LOCK_EX | LOCK_NB) == 0) unlinkat(folder, entry.c_str(), 0);
  }
}

/// Locks the file before another run can take it for a leftover. False when one did.
bool Claim(int file) {
  struct stat state {};
  return flock(file, LOCK_EX | LOCK_NB) == 0 && fstat(file, &state) == 0 && state.st_nlink == 1;
}

bool WriteOut(int file, const std::string& text) {
  return fchmod(file, kMode) == 0 && commandline::WriteAll(file, text) && fsync(file) == 0;
}

/// Writes and moves. False with errno when that fails.
bool WriteBeside(int folder, const std::string& name, const std::string& text) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const std::string temporary = RandomName(name);
    const Descriptor file(
        openat(folder, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.IsOpen() && errno != EEXIST) return false;
    if (!file.IsOpen() || !Claim(file.Number())) continue;
    if (WriteOut(file.Number(), text) && renameat(folder, temporary.c_str(), folder, name.c_str()) == 0)
      return fsync(folder) == 0;
    const int error = errno;
    unlinkat(folder, temporary.c_str(), 0);
    errno = error;
    return false;
  }
  errno = EBUSY;
  return false;
}

}  // namespace

void ReplaceFile(const std::string& path, const std::string& text) {
  const Place place = PlaceOf(path);
  if (place.name.empty()) Fail(path, strerror(EISDIR));
  const Descriptor folder(open(place.folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder.IsOpen()) Fail(path, strerror(errno));
  struct stat present {};
  const bool there = fstatat(folder.Number(), place.name.c_str(), &present, AT_SYMLINK_NOFOLLOW) == 0;
  if (there && !S_ISREG(present.st_mode)) Fail(path, "it is there already and no regular file");
  RemoveLeftovers(folder.Number(), place.name);
  if (!WriteBeside(folder.Number(), place.name, text)) Fail(path, strerror(errno));
}

}  // namespace vynctl

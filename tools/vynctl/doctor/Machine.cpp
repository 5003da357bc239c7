// SPDX-License-Identifier: MIT
// Reading the machine's files and trying its system calls.
#include "doctor/Machine.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/io.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>

#include "view/Text.h"

namespace vynctl::doctor {
namespace {

constexpr size_t kMostBytes = 16u << 20;
constexpr char kLibrary[] = "libvynlib.so.1";
constexpr int kRaised = 3;

/// The kernel's log gives one record per read and says EAGAIN at its end, EPIPE where records were overwritten.
bool Append(int descriptor, std::string* bytes, int* error) {
  char chunk[1 << 16];
  const ssize_t got = read(descriptor, chunk, sizeof chunk);
  if (got > 0) bytes->append(chunk, static_cast<size_t>(got));
  if (got > 0 || (got < 0 && (errno == EINTR || errno == EPIPE))) return true;
  if (got < 0 && errno != EAGAIN) *error = errno;
  return false;
}

std::string LastPart(const std::string& path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

Descriptor::~Descriptor() {
  if (IsOpen()) close(number_);
}

Machine::Content Machine::Read(std::string_view path) const {
  Content content;
  const Descriptor file = Open(path, O_RDONLY | O_NONBLOCK);
  content.error = file.Error();
  while (file.IsOpen() && content.error == 0 && Append(file.Number(), &content.bytes, &content.error)) {
    if (content.bytes.size() > kMostBytes) content.error = EFBIG;
  }
  if (content.error != 0) content.bytes.clear();
  return content;
}

std::string Machine::Line(std::string_view path) const { return std::string(Trim(Read(path).bytes)); }

std::string Machine::Field(std::string_view path, std::string_view key) const {
  const std::string bytes = Read(path).bytes;
  std::string_view rest = bytes;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    const size_t colon = line.find(':');
    if (colon != std::string_view::npos && Trim(line.substr(0, colon)) == key)
      return std::string(Trim(line.substr(colon + 1)));
  }
  return {};
}

bool Machine::Exists(std::string_view path) const { return access(Whole(path).c_str(), F_OK) == 0; }

bool Machine::HasModule(std::string_view name) const {
  const std::string modules = '\n' + Read("/proc/modules").bytes;
  return modules.find('\n' + std::string(name) + ' ') != std::string::npos;
}

std::vector<std::string> Machine::Names(std::string_view folder) const {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(Whole(folder).c_str()), closedir);
  if (stream == nullptr) return names;
  while (const dirent* entry = readdir(stream.get())) {
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string Machine::LinkName(std::string_view path) const {
  char target[4096];
  const ssize_t length = readlink(Whole(path).c_str(), target, sizeof target);
  return length > 0 ? LastPart(std::string(target, static_cast<size_t>(length))) : "";
}

Descriptor Machine::Open(std::string_view path, int flags) const {
  const int number = open(Whole(path).c_str(), flags | O_CLOEXEC | O_NOCTTY);
  return Descriptor(number >= 0 ? number : -errno);
}

void* Machine::Map(int descriptor, uint64_t offset, size_t length) const {
  void* address = mmap(nullptr, length, PROT_READ, MAP_SHARED, descriptor, static_cast<off_t>(offset));
  return address == MAP_FAILED ? nullptr : address;
}

Machine::Trial Machine::TryPrivilege() const {
  const pid_t child = fork();
  if (child < 0) return {.error = errno};
  if (child == 0) _exit(iopl(kRaised) == 0 ? 0 : errno);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFSIGNALED(status)) return {.signal = WTERMSIG(status)};
  return {.error = WEXITSTATUS(status)};
}

Machine::Library Machine::FindLibrary() const {
  const std::unique_ptr<void, int (*)(void*)> handle(dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL), dlclose);
  if (handle == nullptr) return {.error = dlerror()};
  link_map* map = nullptr;
  if (dlinfo(handle.get(), RTLD_DI_LINKMAP, &map) != 0) return {.error = dlerror()};
  const std::unique_ptr<char, void (*)(void*)> resolved(realpath(map->l_name, nullptr), free);
  return {.file = resolved != nullptr ? resolved.get() : map->l_name};
}

}  // namespace vynctl::doctor

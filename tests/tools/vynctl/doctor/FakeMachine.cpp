// SPDX-License-Identifier: MIT
// A folder in place of the file system, and prepared answers in place of system calls.
#include "FakeMachine.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace vynctl::doctor {
namespace {

namespace fs = std::filesystem;

std::string NewFolder() {
  std::string path = testing::TempDir() + "vynctl-doctor-XXXXXX";
  return mkdtemp(path.data()) != nullptr ? path : "";
}

}  // namespace

FakeMachine::FakeMachine() : Machine(NewFolder()) {}

FakeMachine::~FakeMachine() { fs::remove_all(Whole("")); }

void FakeMachine::Write(const std::string& path, const std::string& bytes) const {
  fs::create_directories(fs::path(Whole(path)).parent_path());
  std::ofstream(Whole(path), std::ios::binary) << bytes;
}

void FakeMachine::Poke(uint64_t address, const std::string& bytes) const {
  if (!Exists("/dev/mem")) Write("/dev/mem", "");
  std::fstream file(Whole("/dev/mem"), std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(static_cast<std::streamoff>(address));
  file << bytes;
}

void FakeMachine::Link(const std::string& path, const std::string& target) const {
  fs::create_directories(fs::path(Whole(path)).parent_path());
  fs::remove(Whole(path));
  fs::create_symlink(target, Whole(path));
}

void FakeMachine::Remove(const std::string& path) const { fs::remove_all(Whole(path)); }

Descriptor FakeMachine::Open(std::string_view path, int flags) const {
  const auto& refused = (flags & O_ACCMODE) == O_RDONLY || closed.contains(path) ? closed : readOnly;
  const auto found = refused.find(path);
  return found != refused.end() ? Descriptor(-found->second) : Machine::Open(path, flags);
}

void* FakeMachine::Map(int descriptor, uint64_t offset, size_t length) const {
  errno = refusal;
  return offset + length > hiddenFrom ? nullptr : Machine::Map(descriptor, offset, length);
}

std::string Little(uint64_t value, size_t count) {
  std::string bytes;
  for (size_t i = 0; i < count; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
  return bytes;
}

std::string Summed(std::string bytes, size_t place) {
  unsigned char sum = 0;
  for (const char byte : bytes) sum = static_cast<unsigned char>(sum + static_cast<unsigned char>(byte));
  bytes[place] = static_cast<char>(bytes[place] - sum);
  return bytes;
}

std::string AcpiTable(const std::string& signature, const std::string& body) {
  constexpr size_t kHeader = 36, kChecksum = 9;
  const std::string revisionAndChecksum(2, '\0'), maker = "BOARD TABLE   ", rest(12, '\0');
  return Summed(signature + Little(kHeader + body.size(), 4) + revisionAndChecksum + maker + rest + body, kChecksum);
}

}  // namespace vynctl::doctor

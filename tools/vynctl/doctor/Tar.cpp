// SPDX-License-Identifier: MIT
// Writes ustar headers: texts and octal numbers at fixed places of a block of 512 bytes.
#include "doctor/Tar.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace vynctl::doctor {
namespace {

constexpr size_t kBlock = 512;

struct Place {
  size_t offset, bytes;
};
constexpr Place kName{0, 100}, kMode{100, 8}, kUser{108, 8}, kGroup{116, 8}, kSize{124, 12}, kTime{136, 12},
    kChecksum{148, 8}, kType{156, 1}, kMagic{257, 8};
constexpr std::string_view kUstar("ustar\00000", 8);
constexpr unsigned kFileMode = 0644;

void Put(std::string* header, Place place, std::string_view text) {
  text = text.substr(0, place.bytes);
  std::copy(text.begin(), text.end(), header->begin() + static_cast<ptrdiff_t>(place.offset));
}

/// Digits up to the last byte of the place, which stays 0.
void PutNumber(std::string* header, Place place, uint64_t number) {
  Put(header, place, fmt::format("{:0{}o}", number, place.bytes - 1));
}

uint64_t Sum(const std::string& header) {
  uint64_t sum = 0;
  for (const char byte : header) sum += static_cast<unsigned char>(byte);
  return sum;
}

int WriteAll(int descriptor, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = write(descriptor, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    content.remove_prefix(static_cast<size_t>(written));
  }
  return fsync(descriptor) != 0 && errno != EINVAL ? errno : 0;
}

}  // namespace

void Tar::Add(std::string_view name, std::string_view content) {
  std::string header(kBlock, '\0');
  Put(&header, kName, name);
  PutNumber(&header, kMode, kFileMode);
  PutNumber(&header, kUser, 0);
  PutNumber(&header, kGroup, 0);
  PutNumber(&header, kSize, content.size());
  PutNumber(&header, kTime, now_);
  Put(&header, kType, "0");
  Put(&header, kMagic, kUstar);
  // The sum counts its own place as spaces; six digits, a 0 byte and a space stand there afterwards.
  Put(&header, kChecksum, std::string(kChecksum.bytes, ' '));
  Put(&header, kChecksum, fmt::format("{:06o}", Sum(header)) + '\0');
  bytes_ += header;
  bytes_ += content;
  bytes_.resize((bytes_.size() + kBlock - 1) / kBlock * kBlock);
}

std::string Tar::Finish() const { return bytes_ + std::string(2 * kBlock, '\0'); }

int WriteNewFile(const std::string& path, std::string_view content) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (descriptor < 0) return errno;
  int error = WriteAll(descriptor, content);
  if (close(descriptor) != 0 && error == 0) error = errno;
  if (error != 0) unlink(path.c_str());
  return error;
}

}  // namespace vynctl::doctor

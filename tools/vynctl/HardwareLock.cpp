#include "HardwareLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace vynctl {

HardwareLock::HardwareLock(const std::string& path)
    : descriptor_(path.empty() ? -1 : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}

HardwareLock::~HardwareLock() {
  if (descriptor_ >= 0) close(descriptor_);
}

void HardwareLock::Take() const {
  while (descriptor_ >= 0 && flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) {
  }
}

void HardwareLock::Give() const {
  if (descriptor_ >= 0) flock(descriptor_, LOCK_UN);
}

}  // namespace vynctl

// Writing without waiting, to whatever stands behind a descriptor.
#include "Notice.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace vynctl {

void WriteWithoutWaiting(int descriptor, std::string_view text) {
  if (send(descriptor, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL) >= 0 || errno != ENOTSOCK) return;
  // A pipe is ready when a page fits, a terminal when it takes output.
  pollfd ready{descriptor, POLLOUT, 0};
  if (poll(&ready, 1, 0) != 1 || (ready.revents & POLLOUT) == 0) return;
  if (write(descriptor, text.data(), text.size()) < 0) return;
}

void Notice(const std::string& text) { WriteWithoutWaiting(STDERR_FILENO, "vynctl: " + text + '\n'); }

}  // namespace vynctl

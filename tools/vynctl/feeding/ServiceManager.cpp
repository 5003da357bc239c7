// SPDX-License-Identifier: MIT
// The notification socket.
#include "feeding/ServiceManager.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

namespace vynctl {
namespace {

constexpr double kMicrosecondsPerSecond = 1e6;

/// A file, or with '@' a name without one. -1 when there is no manager.
int Connect() {
  const char* name = getenv("NOTIFY_SOCKET");
  if (name == nullptr || (name[0] != '/' && name[0] != '@')) return -1;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const size_t length = strlen(name);
  if (length >= sizeof address.sun_path) return -1;
  memcpy(address.sun_path, name, length);
  if (name[0] == '@') address.sun_path[0] = '\0';
  const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
  if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), size) == 0) return descriptor;
  if (descriptor >= 0) close(descriptor);
  return -1;
}

double SecondsOfWatchdog() {
  const char* microseconds = getenv("WATCHDOG_USEC");
  const char* process = getenv("WATCHDOG_PID");
  if (microseconds == nullptr || (process != nullptr && atol(process) != getpid())) return 0;
  return strtod(microseconds, nullptr) / kMicrosecondsPerSecond;
}

/// `message` with `attached` for the receiver; -1 attaches nothing.
bool Send(int socket, std::string_view message, int attached) {
  iovec text{const_cast<char*>(message.data()), message.size()};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof attached)] = {};
  msghdr packet{};
  packet.msg_iov = &text;
  packet.msg_iovlen = 1;
  if (attached >= 0) {
    packet.msg_control = control;
    packet.msg_controllen = sizeof control;
    cmsghdr* head = CMSG_FIRSTHDR(&packet);
    head->cmsg_level = SOL_SOCKET;
    head->cmsg_type = SCM_RIGHTS;
    head->cmsg_len = CMSG_LEN(sizeof attached);
    memcpy(CMSG_DATA(head), &attached, sizeof attached);
  }
  return sendmsg(socket, &packet, MSG_NOSIGNAL) >= 0;
}

}  // namespace

ServiceManager::ServiceManager() : socket_(Connect()), watchdogSeconds_(socket_ >= 0 ? SecondsOfWatchdog() : 0) {}

ServiceManager::~ServiceManager() {
  if (socket_ >= 0) close(socket_);
}

void ServiceManager::Tell(std::string_view message) const {
  if (socket_ >= 0) Send(socket_, message, -1);
}

int ServiceManager::SendBarrier() const {
  int ends[2];
  if (socket_ < 0 || pipe2(ends, O_CLOEXEC) != 0) return -1;
  const bool sent = Send(socket_, "BARRIER=1", ends[1]);
  close(ends[1]);
  if (sent) return ends[0];
  close(ends[0]);
  return -1;
}

}  // namespace vynctl

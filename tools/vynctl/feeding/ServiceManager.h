// SPDX-License-Identifier: MIT
/// Messages to the service manager that started the tool, by its notification protocol: datagrams of "NAME=VALUE".
#pragma once

#include <string_view>

namespace vynctl {

/// Speaks to the socket that NOTIFY_SOCKET names. Never waits; a message that does not fit is lost.
class ServiceManager {
 public:
  ServiceManager();
  ~ServiceManager();
  ServiceManager(const ServiceManager&) = delete;
  ServiceManager& operator=(const ServiceManager&) = delete;

  bool IsThere() const { return socket_ >= 0; }
  /// Seconds in which it wants to hear "WATCHDOG=1" again; 0 when it does not care.
  double WatchdogSeconds() const { return watchdogSeconds_; }
  void Tell(std::string_view message) const;

  /// Sends a descriptor that the manager closes when it has read all messages so far.
  /// @return the other end, the caller's to close, which hangs up then; -1 when nothing could be sent
  int SendBarrier() const;

 private:
  int socket_;
  double watchdogSeconds_;
};

}  // namespace vynctl

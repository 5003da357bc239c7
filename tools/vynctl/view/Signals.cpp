// SPDX-License-Identifier: MIT
// Signals as events of a descriptor.
#include "view/Signals.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>

namespace vynctl {
namespace {

constexpr int kStops[] = {SIGINT, SIGTERM, SIGHUP};
constexpr int kOthers[] = {SIGWINCH, SIGTSTP, SIGCONT};

bool IsIgnored(int number) {
  struct sigaction action {};
  return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

Signals::Signals() {
  sigset_t caught;
  sigemptyset(&caught);
  for (int number : kOthers) sigaddset(&caught, number);
  for (int number : kStops) {
    if (!IsIgnored(number)) sigaddset(&caught, number);
  }
  sigprocmask(SIG_BLOCK, &caught, &former_);
  descriptor_ = signalfd(-1, &caught, SFD_CLOEXEC | SFD_NONBLOCK);
}

Signals::~Signals() {
  close(descriptor_);
  sigprocmask(SIG_SETMASK, &former_, nullptr);
}

Signals::Event Signals::Next() const {
  signalfd_siginfo information{};
  if (read(descriptor_, &information, sizeof information) != sizeof information) return Event::kTimeout;
  switch (information.ssi_signo) {
    case SIGWINCH:
      return Event::kResize;
    case SIGTSTP:
      return Event::kSuspend;
    case SIGCONT:
      return Event::kContinue;
    default:
      return Event::kStop;
  }
}

Signals::Event Signals::Wait(int milliseconds, int keys) const {
  pollfd sources[] = {{descriptor_, POLLIN, 0}, {keys, POLLIN, 0}};
  if (poll(sources, 2, milliseconds) <= 0) return Event::kTimeout;
  return sources[0].revents != 0 ? Next() : Event::kKey;
}

bool Signals::StopIsPending() {
  sigset_t pending;
  sigpending(&pending);
  return std::any_of(std::begin(kStops), std::end(kStops),
                     [&](int number) { return sigismember(&pending, number) == 1 && !IsIgnored(number); });
}

}  // namespace vynctl

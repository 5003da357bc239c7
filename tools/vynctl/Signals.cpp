#include "Signals.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <initializer_list>

namespace vynctl {

Signals::Signals() {
  sigset_t caught;
  sigemptyset(&caught);
  for (int number : {SIGINT, SIGTERM, SIGHUP, SIGWINCH, SIGTSTP, SIGCONT}) sigaddset(&caught, number);
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

}  // namespace vynctl

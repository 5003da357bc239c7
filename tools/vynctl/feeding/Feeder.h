// SPDX-License-Identifier: MIT
/// Feeds the watchdog again and again, for as long as the system deserves it.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "commands/Context.h"
#include "feeding/ServiceManager.h"
#include "view/Signals.h"

namespace vynctl {

struct FeedPlan {
  uint8_t interval = 0;    ///< as the board takes it
  double seconds = 0;      ///< what that means
  double every = 0;        ///< seconds between two feedings
  std::string check = {};  ///< command that must succeed before each feeding; empty: none
  double checkSeconds = 0;
  bool barrier = false;  ///< the service manager must have read its messages before each feeding
};

struct FeedEnd {
  enum class Reason {
    kSignal,
    kStopped,  ///< a signal, and the watchdog was stopped then
    kRefused,  ///< the library failed, in feeding until the interval was over
    kUnwell    ///< the command or the service manager does not answer as it should
  };
  Reason reason;
  uint64_t code = 0;       ///< the library's
  std::string words = {};  ///< of kUnwell
};

class Feeder {
 public:
  Feeder(const Context& context, const FeedPlan& plan, const ServiceManager& manager)
      : context_(context), plan_(plan), manager_(manager) {}

  /// Feeds until a signal comes, the library refuses for a whole interval or the system is found unwell. Waits for the
  /// hardware a third of the period at most, and feeds then in any case.
  FeedEnd Run();

 private:
  using Clock = std::chrono::steady_clock;

  FeedEnd Loop();
  /// The command and the service manager are asked. True when feeding may go on; else `end` tells why not.
  bool MayFeed(FeedEnd* end);
  bool ManagerReads(FeedEnd* end);
  /// Feeds, and tries again within the interval when that fails.
  bool Feed(FeedEnd* end);
  bool IntervalIsOver() const { return Clock::now() >= fed_ + Duration(plan_.seconds); }
  void Show() const;
  /// False when a signal ended it.
  bool WaitUntil(Clock::time_point then) const;
  static Clock::duration Duration(double seconds) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  }

  const Context& context_;
  const FeedPlan plan_;
  const ServiceManager& manager_;
  const Signals signals_;
  Clock::time_point fed_ = Clock::now();
};

}  // namespace vynctl

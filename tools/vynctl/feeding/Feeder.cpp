// SPDX-License-Identifier: MIT
// The feeder's loop. Nothing in it waits without an end, but for the hardware itself.
#include "feeding/Feeder.h"

#include <fmt/chrono.h>
#include <fmt/core.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ctime>

#include "board/Codes.h"
#include "feeding/HealthCheck.h"
#include "view/Output.h"

namespace vynctl {
namespace {

constexpr double kWaitsPerPeriod = 3;
constexpr double kTriesPerPeriod = 4;
constexpr double kLongestRetrySeconds = 1;
constexpr int kBarrierMilliseconds = 100;

}  // namespace

FeedEnd Feeder::Run() {
  context_.library.Lock().SetPatience({plan_.every / kWaitsPerPeriod, true});
  // A reader of the messages that went away must not end the feeding.
  signal(SIGPIPE, SIG_IGN);
  try {
    return Loop();
  } catch (const StoppedWaiting&) {
    return {FeedEnd::Reason::kSignal};
  }
}

FeedEnd Feeder::Loop() {
  FeedEnd end{FeedEnd::Reason::kSignal};
  for (Clock::time_point next = Clock::now();;) {
    if (!MayFeed(&end) || !Feed(&end)) return end;
    manager_.Tell("READY=1\nWATCHDOG=1");
    Show();
    next = std::max(next + Duration(plan_.every), Clock::now());
    if (!WaitUntil(next)) return {FeedEnd::Reason::kSignal};
  }
}

bool Feeder::MayFeed(FeedEnd* end) {
  if (!plan_.check.empty()) {
    const Health health = AskCommand(plan_.check, plan_.checkSeconds, signals_);
    if (health.state == Health::State::kStopped) *end = {FeedEnd::Reason::kSignal};
    if (health.state == Health::State::kUnwell)
      *end = {FeedEnd::Reason::kUnwell, 0, "the health command " + health.words};
    if (health.state != Health::State::kWell) return false;
  }
  return !plan_.barrier || ManagerReads(end);
}

bool Feeder::ManagerReads(FeedEnd* end) {
  const Clock::time_point late = Clock::now() + Duration(plan_.every / 2);
  bool silent = true;
  int answer = manager_.SendBarrier();
  Signals::Event event = Signals::Event::kTimeout;
  while (event != Signals::Event::kKey && event != Signals::Event::kStop && !IntervalIsOver()) {
    event = signals_.Wait(kBarrierMilliseconds, answer);
    if (answer < 0) answer = manager_.SendBarrier();
    if (!silent || Clock::now() < late) continue;
    silent = false;
    Notice("the service manager does not read its messages; not feeding before it does");
  }
  if (answer >= 0) close(answer);
  if (event == Signals::Event::kKey) return true;
  *end = event == Signals::Event::kStop ? FeedEnd{FeedEnd::Reason::kSignal}
                                        : FeedEnd{FeedEnd::Reason::kUnwell, 0,
                                                  "the service manager has not read its messages for a whole interval"};
  return false;
}

bool Feeder::Feed(FeedEnd* end) {
  const double retry = std::min(plan_.every / kTriesPerPeriod, kLongestRetrySeconds);
  for (bool silent = true;; silent = false) {
    if (context_.library.Functions().WDTSetInterval(plan_.interval, VYNLIB_PERFORM) != 0) {
      if (!silent) Notice("fed again");
      fed_ = Clock::now();
      return true;
    }
    const uint64_t code = context_.library.LastError();
    if (silent) Notice(fmt::format("feeding failed, trying again: {} (code {})", WordsFor(code), Hex(code)));
    *end = {FeedEnd::Reason::kRefused, code};
    if (IntervalIsOver()) return false;
    if (WaitUntil(Clock::now() + Duration(retry))) continue;
    *end = {FeedEnd::Reason::kSignal};
    return false;
  }
}

void Feeder::Show() const {
  const int terminal = context_.output.Descriptor();
  if (context_.options.json || isatty(terminal) == 0) return;
  WriteWithoutWaiting(
      terminal, fmt::format("{:%H:%M:%S}  fed; again in {:g} s\n", fmt::localtime(std::time(nullptr)), plan_.every));
}

bool Feeder::WaitUntil(Clock::time_point then) const {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(then - Clock::now()).count();
    if (left <= 0) return true;
    if (signals_.Wait(static_cast<int>(left)) == Signals::Event::kStop) return false;
  }
}

}  // namespace vynctl

// SPDX-License-Identifier: MIT
// watchdog: shows, starts, feeds and stops the watchdog.
#include <fmt/core.h>

#include <algorithm>
#include <memory>

#include "board/BoardTables.h"
#include "board/Codes.h"
#include "board/Controls.h"
#include "board/Features.h"
#include "commands/Arguments.h"
#include "commands/Context.h"
#include "feeding/Feeder.h"
#include "view/BoardText.h"
#include "view/Output.h"
#include "view/Text.h"

namespace vynctl {
namespace {

struct Arguments {
  std::string verb;
  std::string interval;
  std::string mode = "0";
  double every = 0;  ///< seconds between two feedings; 0 feeds once
  bool thenStop = false;
  std::string unit;
  std::string check;
  double checkTime = 0;  ///< seconds; 0: half of `every`
  bool barrier = false;
};

constexpr double kSecondsPerMinute = 60;

std::string StatusText(const Context& context, const std::vector<Value>& values) {
  using enum Table::Align;
  Table table({kLeft, kLeft});
  for (const Value& value : values) {
    const bool ok = value.state == State::kOk;
    const int64_t* number = std::get_if<int64_t>(&value.data);
    std::string shown = ok ? ShownData(value) : ShownFailure(value);
    if (number != nullptr && value.quantity == "interval" && *number > 0 && *number <= UINT16_MAX) {
      shown += fmt::format("  ({}, where the firmware counts seconds)", DurationWords(static_cast<unsigned>(*number)));
    }
    table.Add({{value.quantity == "interval" ? "Interval" : "Count mode", Tone::kFaint},
               {shown, ok ? Tone::kPlain : ToneOf(value)}});
  }
  return table.Render(context.style);
}

/// `sentence` and the state that the hardware is in now; a refusal when the library's call left a code.
int FinishWith(Context& context, const std::string& sentence, uint64_t code) {
  Document document;
  document.values = ReadWatchdog(context.library);
  if (code != VYNLIB_OK) document.refusal = Refusal{code, WordsFor(code)};
  return context.Finish(document, sentence + StatusText(context, document.values));
}

uint8_t Interval(const std::string& text) {
  const uint8_t interval = ByteArgument("SECONDS", text);
  if (interval == 0) throw UsageError("SECONDS must be 1 to 255; 'vynctl watchdog stop' stops the watchdog");
  return interval;
}

int Start(Context& context, const Arguments& arguments) {
  const uint8_t interval = Interval(arguments.interval);
  const uint8_t mode = ByteArgument("--mode", arguments.mode);
  if (mode > 1) throw UsageError("--mode must be 0 or 1");
  const int done = context.library.Functions().WDTEnable(interval, mode, VYNLIB_PERFORM);
  const uint64_t code = context.library.LastError();
  if (done == 0) return context.Finish(Document::Refused(code), "");
  // The library reports success even when counting did not start; the code tells.
  const char* sentence = code == VYNLIB_OK ? "Watchdog started.\n" : "Watchdog activated, but it does not count.\n";
  return FinishWith(context, sentence, code);
}

int Stop(Context& context) {
  const int done = context.library.Functions().WDTDisable(VYNLIB_PERFORM);
  if (done == 0) return context.Finish(Document::Refused(context.library.LastError()), "");
  return FinishWith(context, "Watchdog stopped.\n", VYNLIB_OK);
}

/// The interval to feed with: the one given, else the one that the board reports.
uint8_t FeedInterval(const Context& context, const Arguments& arguments) {
  if (!arguments.interval.empty()) return Interval(arguments.interval);
  const Value present = ReadWatchdog(context.library).front();
  const int64_t* number = std::get_if<int64_t>(&present.data);
  if (number == nullptr || *number < 1 || *number > UINT8_MAX) {
    throw UsageError("the board reports no interval to feed with; give SECONDS");
  }
  return static_cast<uint8_t>(*number);
}

/// How long the interval is. Count mode 1 counts minutes on the boards that have it, and the user may know better.
double SecondsOf(const Context& context, const Arguments& arguments, uint8_t interval) {
  bool minutes = arguments.unit == "minutes";
  if (arguments.unit.empty()) {
    uint8_t mode = 0;
    minutes = context.library.Functions().WDTGetCountMode(&mode, VYNLIB_PERFORM) != 0 && mode == 1;
  }
  return minutes ? interval * kSecondsPerMinute : interval;
}

/// Refuses a plan that cannot keep the board alive, and warns of one that hardly can.
void CheckPlan(const FeedPlan& plan) {
  if (plan.every >= plan.seconds) {
    throw UsageError(
        fmt::format("feeding every {:g} s is too slow for an interval of {:g} s", plan.every, plan.seconds));
  }
  // The wait for the hardware comes on top of the period and the command.
  if (!plan.check.empty() && plan.every * 4 / 3 + plan.checkSeconds >= plan.seconds) {
    throw UsageError(
        fmt::format("feeding every {:g} s after a command of up to {:g} s is too slow for an interval of {:g} s",
                    plan.every, plan.checkSeconds, plan.seconds));
  }
  if (plan.every > plan.seconds / 2) {
    Notice(fmt::format("feeding every {:g} s leaves no room for a failure in an interval of {:g} s; a third of it does",
                       plan.every, plan.seconds));
  }
}

/// As often as the user says, or oftener where the service manager wants to hear of it.
double Period(const Arguments& arguments, const ServiceManager& manager) {
  const double longest = manager.WatchdogSeconds() / 2;
  if (longest <= 0 || arguments.every <= longest) return arguments.every;
  Notice(fmt::format("feeding every {:g} s: the service manager wants to hear of it", longest));
  return longest;
}

FeedPlan Plan(const Context& context, const Arguments& arguments, const ServiceManager& manager) {
  if (arguments.barrier && !manager.IsThere()) throw UsageError("--barrier needs a service manager (NOTIFY_SOCKET)");
  const uint8_t interval = FeedInterval(context, arguments);
  const double every = Period(arguments, manager);
  FeedPlan plan{.interval = interval,
                .seconds = SecondsOf(context, arguments, interval),
                .every = every,
                .check = arguments.check,
                .checkSeconds = arguments.checkTime > 0 ? arguments.checkTime : every / 2,
                .barrier = arguments.barrier};
  CheckPlan(plan);
  return plan;
}

/// Feeds to the end, and stops the watchdog after a signal when that is wanted. Further signals wait until it is done.
FeedEnd FeedToTheEnd(const Context& context, const FeedPlan& plan, bool thenStop) {
  constexpr double kLongestWaitToStop = 1;
  const ServiceManager manager;
  Feeder feeder(context, plan, manager);
  FeedEnd end = feeder.Run();
  manager.Tell("STOPPING=1");
  context.library.Lock().SetPatience({std::min(plan.every / 3, kLongestWaitToStop), true, true});
  if (end.reason != FeedEnd::Reason::kSignal || !thenStop) return end;
  const bool stopped = context.library.Functions().WDTDisable(VYNLIB_PERFORM) != 0;
  return {stopped ? FeedEnd::Reason::kStopped : FeedEnd::Reason::kRefused, context.library.LastError()};
}

int FeedRegularly(Context& context, const Arguments& arguments) {
  const FeedPlan plan = Plan(context, arguments, ServiceManager());
  const FeedEnd end = FeedToTheEnd(context, plan, arguments.thenStop);
  if (end.reason == FeedEnd::Reason::kStopped) return FinishWith(context, "Watchdog stopped.\n", VYNLIB_OK);
  Notice(fmt::format("the watchdog counts on and resets the board in about {:g} s; 'vynctl watchdog stop' stops it",
                     plan.seconds));
  if (end.reason == FeedEnd::Reason::kSignal) return FinishWith(context, "Watchdog fed.\n", VYNLIB_OK);
  Document document = Document::Refused(end.code);
  if (end.reason == FeedEnd::Reason::kUnwell) document.refusal->words = end.words;
  const int status = context.Finish(document, "");
  return end.reason == FeedEnd::Reason::kUnwell ? kUnwell : status;
}

int Feed(Context& context, const Arguments& arguments) {
  if (!OffersWatchdog(context.library)) return context.Finish(Document::Refused(context.library.LastError()), "");
  if (arguments.every > 0) return FeedRegularly(context, arguments);
  const uint8_t interval = FeedInterval(context, arguments);
  if (context.library.Functions().WDTSetInterval(interval, VYNLIB_PERFORM) != 0) {
    return FinishWith(context, "Watchdog fed.\n", VYNLIB_OK);
  }
  return context.Finish(Document::Refused(context.library.LastError()), "");
}

int Status(Context& context) {
  if (const auto refusal = RefuseWithoutTables(context.library, context.options.load)) {
    return context.Finish(Document::Refused(*refusal), "");
  }
  if (!OffersWatchdog(context.library)) return context.Finish(Document::Refused(context.library.LastError()), "");
  return FinishWith(context, "", VYNLIB_OK);
}

int Run(Context& context, const Arguments& arguments) {
  if (arguments.verb == "start") return Start(context, arguments);
  if (arguments.verb == "feed") return Feed(context, arguments);
  if (arguments.verb == "stop") return Stop(context);
  return Status(context);
}

commandline::Command StartSyntax(Arguments& arguments) {
  return {.name = "start",
          .summary = "activate the watchdog and start counting",
          .arguments = {{.name = "SECONDS",
                         .target = &arguments.interval,
                         .help = "1 to 255, in the unit of the board's firmware",
                         .required = true},
                        {.name = "--mode",
                         .target = &arguments.mode,
                         .help = "count mode 0 (default) or 1; the firmware gives them their meaning"}}};
}

commandline::Command FeedSyntax(Arguments& arguments) {
  return {.name = "feed",
          .summary = "write the interval again, so that counting begins anew",
          .arguments = {{.name = "SECONDS",
                         .target = &arguments.interval,
                         .help = "the interval; without it the one the board reports (give it where the board counts "
                                 "down in place)"},
                        {.name = "--every",
                         .target = &arguments.every,
                         .help = "go on feeding every so many seconds until a signal ends it",
                         .range = {0.01, 86400}},
                        {.name = "--then-stop",
                         .target = &arguments.thenStop,
                         .help = "and stop the watchdog then",
                         .needs = "--every"},
                        {.name = "--unit",
                         .target = &arguments.unit,
                         .help = "what the interval counts: seconds or minutes; without it minutes in count mode 1",
                         .choices = {"seconds", "minutes"}},
                        {.name = "--check",
                         .target = &arguments.check,
                         .help = "feed only after this shell command has succeeded; end when it fails",
                         .needs = "--every"},
                        {.name = "--check-time",
                         .target = &arguments.checkTime,
                         .help = "seconds that the command may take (half of --every)",
                         .range = {0.01, 86400},
                         .needs = "--check"},
                        {.name = "--barrier",
                         .target = &arguments.barrier,
                         .help = "feed only while the service manager reads its messages",
                         .needs = "--every"}}};
}

}  // namespace

Syntax DescribeWatchdog() {
  const auto arguments = std::make_shared<Arguments>();
  return {.verbs = {{.name = "status", .summary = "show interval and count mode"},
                    StartSyntax(*arguments),
                    FeedSyntax(*arguments),
                    {.name = "stop", .summary = "stop counting and deactivate the watchdog"}},
          .verb = &arguments->verb,
          .run = [arguments](Context& context) { return Run(context, *arguments); }};
}

}  // namespace vynctl

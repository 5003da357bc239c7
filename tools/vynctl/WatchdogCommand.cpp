#include <fmt/core.h>

#include <memory>

#include "Codes.h"
#include "FeatureArguments.h"
#include "Signals.h"
#include "Subcommand.h"
#include "Text.h"
#include "Watchdog.h"

namespace vynctl {
namespace {

struct Arguments {
  std::string verb;
  std::string interval;
  std::string mode = "0";
  double every = 0;  ///< seconds between two feedings; 0 feeds once
  bool thenStop = false;
};

constexpr int kMillisecondsPerSecond = 1000;

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

/// Feeds until a signal ends it.
uint64_t FeedRegularly(const Context& context, uint8_t interval, double every) {
  const Signals signals;
  const int wait = static_cast<int>(every * kMillisecondsPerSecond);
  for (;;) {
    if (context.library.Functions().WDTSetInterval(interval, VYNLIB_PERFORM) == 0) return context.library.LastError();
    if (signals.Wait(wait) == Signals::Event::kStop) return VYNLIB_OK;
  }
}

int Feed(Context& context, const Arguments& arguments) {
  if (!OffersWatchdog(context.library)) return context.Finish(Document::Refused(context.library.LastError()), "");
  const uint8_t interval = FeedInterval(context, arguments);
  uint64_t code = VYNLIB_OK;
  if (arguments.every > 0) {
    code = FeedRegularly(context, interval, arguments.every);
  } else if (context.library.Functions().WDTSetInterval(interval, VYNLIB_PERFORM) == 0) {
    code = context.library.LastError();
  }
  if (code != VYNLIB_OK) return context.Finish(Document::Refused(code), "");
  if (arguments.thenStop) return Stop(context);
  return FinishWith(context, "Watchdog fed.\n", VYNLIB_OK);
}

int Status(Context& context) {
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

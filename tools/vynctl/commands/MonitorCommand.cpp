// SPDX-License-Identifier: MIT
// monitor: the sensors, live on a screen or as a stream of JSON.
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <map>
#include <memory>

#include "board/Sensors.h"
#include "commands/Arguments.h"
#include "commands/Context.h"
#include "view/BoardText.h"
#include "view/Screen.h"
#include "view/Signals.h"

namespace vynctl {
namespace {

using Clock = std::chrono::steady_clock;

struct Arguments {
  std::vector<std::string> sensors;
  double seconds = 1;
  unsigned count = 0;  ///< views to show; 0: until ended
};

struct Extremes {
  Value lowest;
  Value highest;
};

constexpr double kMillisecondsPerSecond = 1000;

double Number(const Value& value) {
  const int64_t* whole = std::get_if<int64_t>(&value.data);
  return whole != nullptr ? static_cast<double>(*whole) : std::get<double>(value.data);
}

/// Reads, remembers the extremes and draws.
class View {
 public:
  View(const Context& context, const Arguments& arguments)
      : context_(context),
        wanted_(arguments.sensors),
        seconds_(arguments.seconds),
        doubts_(Doubts::About(context.options.load)) {}

  /// Reads the sensors again. What the library prints meanwhile is dropped, so that it cannot pile up.
  /// @throws UsageError when one of those that were asked for does not exist
  void Refresh();
  void ForgetExtremes() { extremes_.clear(); }
  std::vector<std::string> Lines() const;
  const std::vector<Value>& Values() const { return values_; }

 private:
  Table Rows() const;

  const Context& context_;
  const std::vector<std::string>& wanted_;
  const double seconds_;
  const Doubts doubts_;
  std::vector<Value> values_;
  std::map<std::string, Extremes> extremes_;
  std::time_t now_ = 0;
};

void View::Refresh() {
  values_ = ReadSensors(context_.library, doubts_);
  context_.output.Take();
  const std::string missing = Choose(values_, wanted_);
  if (!missing.empty()) throw UsageError(fmt::format("{}; 'vynctl sensors' lists them", missing));
  now_ = std::time(nullptr);
  for (const Value& value : values_) {
    if (!value.HasData()) continue;
    Extremes& extremes = extremes_.try_emplace(value.id, Extremes{value, value}).first->second;
    if (Number(value) < Number(extremes.lowest)) extremes.lowest = value;
    if (Number(value) > Number(extremes.highest)) extremes.highest = value;
  }
}

Table View::Rows() const {
  using enum Table::Align;
  const Style& style = context_.style;
  Table table({kLeft, kRight, kLeft, kRight, kRight, kLeft});
  table.Heading({"SENSOR", "NOW", "", "LOWEST", "HIGHEST", ""});
  for (const Value& value : values_) {
    const Tone tone = value.state == State::kOk ? Tone::kPlain : ToneOf(value);
    const auto known = extremes_.find(value.id);
    const bool seen = known != extremes_.end();
    table.Add({{value.name},
               {ShownData(value), value.state == State::kOk ? Tone::kHeading : tone},
               {value.HasData() ? ShownUnit(value, style) : "", Tone::kFaint},
               {seen ? ShownData(known->second.lowest) : "-", Tone::kFaint},
               {seen ? ShownData(known->second.highest) : "-", Tone::kFaint},
               {ShownFailure(value), tone}});
  }
  return table;
}

std::vector<std::string> View::Lines() const {
  const Style& style = context_.style;
  const std::string model = context_.library.Model().empty() ? "Unknown model" : context_.library.Model();
  const std::string hint = fmt::format("  {:%H:%M:%S}, every {} s   q quits, r resets", fmt::localtime(now_), seconds_);
  std::vector<std::string> lines = {style.Paint(Tone::kHeading, model) + style.Paint(Tone::kFaint, hint), ""};
  if (values_.empty()) lines.push_back("This board has no sensors.");
  const std::vector<std::string> rows = Rows().Lines(style);
  for (size_t i = 0; i < values_.size(); ++i) {
    if (i == 0) lines.push_back("  " + rows[0]);
    if (i == 0 || values_[i].quantity != values_[i - 1].quantity)
      lines.push_back(style.Paint(Tone::kHeading, QuantityTitle(values_[i].quantity)));
    lines.push_back("  " + rows[i + 1]);
  }
  return lines;
}

int MillisecondsUntil(Clock::time_point then) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(then - Clock::now()).count();
  return static_cast<int>(std::max<int64_t>(left + 1, 0));
}

void Suspend(Screen& screen) {
  screen.Leave();
  raise(SIGSTOP);
  screen.Enter();
}

/// Does what the key says. False when it ends the display.
bool Obey(char key, View& view) {
  // No key although the source is ready: the terminal is gone.
  if (key == 'q' || key == 'Q' || key == '\0') return false;
  if (key != 'r') return true;
  view.ForgetExtremes();
  view.Refresh();
  return true;
}

/// Waits for the next view, answering keys and the window meanwhile. False when the user ends it.
bool WaitOnScreen(Screen& screen, View& view, const Signals& signals, Clock::time_point next) {
  while (Clock::now() < next) {
    switch (signals.Wait(MillisecondsUntil(next), screen.KeySource())) {
      case Signals::Event::kStop:
        return false;
      case Signals::Event::kTimeout:
        continue;
      case Signals::Event::kSuspend:
        Suspend(screen);
        break;
      case Signals::Event::kKey:
        if (!Obey(screen.Key(), view)) return false;
        break;
      case Signals::Event::kResize:
      case Signals::Event::kContinue:
        break;
    }
    screen.Show(view.Lines());
  }
  return true;
}

Clock::duration Period(const Arguments& arguments) {
  return std::chrono::milliseconds(static_cast<int64_t>(arguments.seconds * kMillisecondsPerSecond));
}

int RunOnScreen(Context& context, const Arguments& arguments) {
  if (isatty(context.output.Descriptor()) == 0) {
    throw UsageError("monitor needs a terminal; use 'vynctl sensors', or monitor --json for a stream");
  }
  const Signals signals;
  View view(context, arguments);
  view.Refresh();
  Screen screen(context.output);
  Clock::time_point next = Clock::now();
  for (unsigned shown = 1;; ++shown) {
    if (shown > 1) view.Refresh();
    screen.Show(view.Lines());
    if (shown == arguments.count) return kDone;
    next = std::max(next + Period(arguments), Clock::now());
    if (!WaitOnScreen(screen, view, signals, next)) return kDone;
  }
}

/// One document per line.
int RunAsStream(Context& context, const Arguments& arguments) {
  const Signals signals;
  View view(context, arguments);
  Clock::time_point next = Clock::now();
  for (unsigned shown = 1;; ++shown) {
    view.Refresh();
    Document document;
    document.values = view.Values();
    context.Print(CompactText(ToJson(document, context.command, context.options, context.library.Model())) + '\n');
    if (shown == arguments.count) return kDone;
    next = std::max(next + Period(arguments), Clock::now());
    while (Clock::now() < next) {
      if (signals.Wait(MillisecondsUntil(next)) == Signals::Event::kStop) return kDone;
    }
  }
}

int Run(Context& context, const Arguments& arguments) {
  try {
    return context.options.json ? RunAsStream(context, arguments) : RunOnScreen(context, arguments);
  } catch (const StoppedWaiting&) {
    return kDone;
  }
}

}  // namespace

Syntax DescribeMonitor() {
  const auto arguments = std::make_shared<Arguments>();
  return {.arguments = {{.name = "SENSOR",
                         .target = &arguments->sensors,
                         .help = "names, identifiers or quantities (voltage, temperature, ...); without: all"},
                        {.name = "-i,--interval",
                         .target = &arguments->seconds,
                         .help = "seconds between two views (1)",
                         .range = {0.01, 86400}},
                        {.name = "-n,--count", .target = &arguments->count, .help = "end after so many views"}},
          .needsTable = true,
          .run = [arguments](Context& context) { return Run(context, *arguments); }};
}

}  // namespace vynctl

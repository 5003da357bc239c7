// SPDX-License-Identifier: MIT
// A controller: shows the sensors, lights a LED and drives a fan by the hottest temperature, feeds the watchdog.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vynlib/vynlib.hpp>

namespace {

// What values mean is the firmware's business. These are those of the reference board.
constexpr std::uint8_t kLedSteady = 1, kLedBlinking = 2, kFullSpeed = 0, kWatchdogSeconds = 60;
constexpr double kTooHot = 45;
constexpr char kFanName[] = "CPU Fan";

/// Says so when a call failed.
template <typename Value>
bool Worked(const std::string& what, const vynlib::Result<Value>& result) {
  if (!result) std::printf("%s: %s\n", what.c_str(), result.error().words.c_str());
  return static_cast<bool>(result);
}

// ---- sensors ----

/// Shows all sensors. Returns the hottest temperature.
double ShowSensors(const vynlib::Board& board) {
  double hottest = 0;
  for (const auto& sensors : {board.voltages(), board.temperatures(), board.fanSpeeds()}) {
    for (const vynlib::Sensor& sensor : sensors) {
      const vynlib::Result<double> value = sensor.Read();
      if (!Worked(sensor.name(), value)) continue;
      std::printf("%s: %.1f %s\n", sensor.name().c_str(), *value, sensor.unit());
      if (sensor.quantity() == vynlib::Quantity::kTemperature) hottest = std::max(hottest, *value);
    }
  }
  return hottest;
}

// ---- LED and fan ----

/// Lights the LED and drives the fan, which gets its former setting back at the end.
class Cooling {
 public:
  explicit Cooling(const vynlib::Board& board)
      : led_(board.feature("user-led")), fan_(board.fan(kFanName)), before_(fan_.Read()) {
    Worked(kFanName, before_);
  }
  ~Cooling() { Restore(); }
  Cooling(const Cooling&) = delete;
  Cooling& operator=(const Cooling&) = delete;

  void ActOn(double hottest) {
    const bool hot = hottest >= kTooHot;
    std::printf("%s at %.1f C\n", hot ? "too hot" : "good", hottest);
    Worked("LED", led_.Set(hot ? kLedBlinking : kLedSteady));
    if (!hot) Restore();
    if (hot) Worked(kFanName, fan_.Set({kFullSpeed, {}}));
  }

 private:
  void Restore() {
    if (before_) Worked(kFanName, fan_.Set(*before_));
  }

  const vynlib::Feature led_;
  const vynlib::Fan fan_;
  const vynlib::Result<vynlib::FanSetting> before_;
};

// ---- watchdog ----

/// Counts for as long as this exists, on a board that has one.
class Guard {
 public:
  explicit Guard(const vynlib::Board& board)
      : watchdog_(board.watchdog()), watched_(Worked("starting", watchdog_.Start(kWatchdogSeconds))) {}
  ~Guard() {
    if (watched_) Worked("stopping", watchdog_.Stop());
  }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

  /// What fails is tried again in the next round, long before the interval is over.
  void Feed() const {
    if (watched_) Worked("feeding", watchdog_.Feed(kWatchdogSeconds));
  }

 private:
  const vynlib::Watchdog watchdog_;
  const bool watched_;
};

// ---- the program ----

volatile sig_atomic_t ended = 0;

void Run(const vynlib::Board& board, long rounds) {
  const Guard guard(board);
  Cooling cooling(board);
  while (!ended) {
    cooling.ActOn(ShowSensors(board));
    guard.Feed();
    std::fflush(stdout);
    if (--rounds == 0) break;
    sleep(1);
  }
}

}  // namespace

// application [ROUNDS [LOCK-FILE]]: without ROUNDS until a signal comes.
int main(int count, char** arguments) {
  for (int number : {SIGINT, SIGTERM}) signal(number, [](int) { ended = 1; });
  vynlib::Settings settings;
  if (count > 2) settings.lockFile = arguments[2];
  const vynlib::Result<vynlib::Board> board = vynlib::Board::Open(settings);
  if (!Worked("starting", board)) return 1;
  Run(*board, count > 1 ? std::atol(arguments[1]) : 0);
  return 0;
}

// SPDX-License-Identifier: MIT
// Chips that act on a set of registers as time goes by.
#include "sim/chips/RegisterChips.h"

#include <algorithm>
#include <cstdio>

#include "sim/Board.h"

namespace sim {
namespace {

constexpr uint64_t kRegister = 0xFF, kMask = 0xFF;
constexpr uint64_t kSecond = 1000000, kMinute = 60 * kSecond;

// --- watchdog ---

constexpr ChipOption kWatchdogOptions[] = {
    {"control", kRegister},                                // holds the two bits below; counting needs both
    {"active_mask", kMask, 0x01},                          //
    {"count_mask", kMask, 0x02},                           //
    {"interval", kRegister},                               // what is left; writing it feeds the watchdog
    {"mode", kRegister},                                   // holds the bit below
    {"minutes_mask", kMask, 0x08}, {"status", kRegister},  // holds the bit below
    {"expired_mask", kMask, 0x10},
};

/// Counts the interval register down once per second or minute; at 0 it sets the status bit and stops counting.
class Watchdog {
 public:
  Watchdog(Board& board, Registers registers, Options options)
      : registers_(std::move(registers)), options_(std::move(options)) {
    const std::string name = "watchdog" + std::to_string(board.remembered.size());
    since_ = &board.remembered[name + "_since"];
    left_ = &board.remembered[name + "_left"];
  }

  void operator()(Board& board) {
    uint8_t& left = At("interval");
    const uint64_t now = board.Microseconds();
    if (!Counting() || left != *left_) *since_ = now;
    const uint64_t period = (At("mode") & options_["minutes_mask"]) ? kMinute : kSecond;
    while (Counting() && now - *since_ >= period) {
      *since_ += period;
      if (--left == 0) Expire();
    }
    *left_ = left;
  }

 private:
  uint8_t& At(const char* option) { return (*registers_)[options_[option]]; }
  bool Counting() {
    const uint64_t bits = options_["active_mask"] | options_["count_mask"];
    return (At("control") & bits) == bits && At("interval") != 0;
  }
  void Expire() {
    At("status") = static_cast<uint8_t>(At("status") | options_["expired_mask"]);
    At("control") = static_cast<uint8_t>(At("control") & ~options_["count_mask"]);
    std::fputs("simulated board: the watchdog expired\n", stderr);
  }

  Registers registers_;
  Options options_;
  // Of the board: when the present second or minute began, and what was left then.
  uint64_t* since_;
  uint64_t* left_;
};

// --- fan ---

constexpr ChipOption kFanOptions[] = {
    {"mode", kRegister},         // 0 full speed, 1 fixed duty, 2 by temperature
    {"duty", kRegister},         // 0 to 255, in mode 1
    {"temperature", kRegister},  // degrees, for mode 2:
    {"low", kRegister},          // duty 0x40 at and below these degrees
    {"high", kRegister},         // full duty at and above these
    {"speed_high", kRegister},   // the two bytes of the reading
    {"speed_low", kRegister},    //
    {"max_rpm", 0xFFFF},         //
    {"counts", 1, 0},            // 1: the reading is 1500000 / rpm
};
constexpr unsigned kFullDuty = 255, kIdleDuty = 0x40;
constexpr unsigned kCountClock = 1500000, kStalledCount = 0xFFFF;

enum FanMode { kFull = 0, kFixed = 1, kByTemperature = 2 };

unsigned DutyAt(int temperature, int low, int high) {
  if (temperature >= high) return kFullDuty;
  if (temperature <= low) return kIdleDuty;
  return kIdleDuty +
         (kFullDuty - kIdleDuty) * static_cast<unsigned>(temperature - low) / static_cast<unsigned>(high - low);
}

/// Keeps the speed reading in step with control mode and duty.
struct Fan {
  Registers registers;
  Options options;

  uint8_t& At(const char* option) { return (*registers)[options[option]]; }

  unsigned Duty() {
    switch (At("mode")) {
      case kFixed:
        return At("duty");
      case kByTemperature:
        return DutyAt(At("temperature"), At("low"), At("high"));
      default:
        return kFullDuty;
    }
  }

  void operator()(Board&) {
    const unsigned rpm = static_cast<unsigned>(options["max_rpm"]) * Duty() / kFullDuty;
    const unsigned count = rpm == 0 ? kStalledCount : std::min(kCountClock / rpm, kStalledCount);
    const unsigned reading = options["counts"] ? count : rpm;
    At("speed_high") = static_cast<uint8_t>(reading >> 8);
    At("speed_low") = static_cast<uint8_t>(reading);
  }
};

// --- drift ---

constexpr ChipOption kDriftOptions[] = {
    {"register", kRegister}, {"min", 0xFF}, {"max", 0xFF}, {"period", 86400, 60},  // seconds there and back
};

/// On a live board the register wanders between its bounds and back, beginning at its first value.
struct Drift {
  Registers registers;
  uint64_t index, min, range, period, start;

  void operator()(Board& board) {
    if (!board.live || range == 0) return;
    const uint64_t moved = (start + board.Microseconds() / 1000 * 2 * range / (period * 1000)) % (2 * range);
    (*registers)[index] = static_cast<uint8_t>(min + (moved <= range ? moved : 2 * range - moved));
  }
};

void AttachWatchdog(Board& board, const Registers& registers, const Options& options) {
  board.OnTick(Watchdog(board, registers, options));
}

void AttachFan(Board& board, const Registers& registers, const Options& options) {
  Fan fan{registers, options};
  fan(board);
  board.OnTick(fan);
}

void AttachDrift(Board& board, const Registers& registers, const Options& options) {
  const uint64_t index = options.at("register"), min = options.at("min"), max = std::max(min, options.at("max"));
  const uint64_t first = std::clamp<uint64_t>((*registers)[index], min, max);
  board.OnTick(Drift{registers, index, min, max - min, std::max<uint64_t>(1, options.at("period")), first - min});
}

constexpr ChipModel kChipModels[] = {
    {"watchdog", kWatchdogOptions, AttachWatchdog},
    {"fan", kFanOptions, AttachFan},
    {"drift", kDriftOptions, AttachDrift},
};

}  // namespace

std::span<const ChipModel> ChipModels() { return kChipModels; }

const ChipModel* FindChipModel(std::string_view name) {
  for (const ChipModel& model : ChipModels())
    if (model.name == name) return &model;
  return nullptr;
}

}  // namespace sim

// SPDX-License-Identifier: MIT
/// A board whose initialisation is short: BIOS record and root pointer at the beginning of their search, few tables,
/// and an SMBus controller that detection finds early. It offers:
///
///   LVDS state  index/data pair 0x2E/0x2F, register 0xF0, bit 0   voltage "+5V"        port 0x100, 8 mV, divider 10:5
///   Bluetooth   port 0x80, bit 0                                  temperature "CPU"    port 0x101, degrees
///   Wi-Fi       physical memory, bit 0 of kWifiAddress            temperature "Board"  SMBus, hundredths
///   USB power   PCI 0:10.0 register 0x40, set only                fan "CPU"            ports 0x102, 0x103, a period
///   COM type    instance 1: SMBus kSlave, kStateRegister, bit 0   current "12V"        SMBus, tenths
///   TPM         reads MSR 0x10, which ends the call with code 21
///
/// Each state is 0 or 1, and 0 at the beginning.
#pragma once

#include <string_view>

#include "sim/chips/SmbusHost.h"
#include "tests/support/CurrentBoard.h"

namespace small_board {

inline constexpr uint64_t kWifiAddress = 0xFED40000;
inline constexpr uint8_t kSlave = 0x5A, kStateRegister = 0x20, kTemperatureRegister = 0x30, kCurrentRegister = 0x40;

/// What the sensors read, by the formulas of their records.
inline constexpr float kVolts = 4.992F;     ///< 208 counts * 8 mV * (10 + 5) / 5
inline constexpr float kCelsius = 45;       ///< 0x2D
inline constexpr float kBoardCelsius = 30;  ///< 0x0BB8 hundredths
inline constexpr uint16_t kRpm = 1200;      ///< 1500000 / 0x04E2
inline constexpr float kAmperes = 2.5F;     ///< 25 tenths

/// Puts all of this onto an empty board. `controller` is the name of a chipset of the SMBus models.
void Build(sim::Board* board, std::string_view controller);

/// Sends standard output nowhere while it lives.
class Quiet {
 public:
  Quiet();
  ~Quiet();
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;

 private:
  int stdout_;
};

/// VynLibDllInit, which prints, quietly.
int Start();

/// Such a board, current while it lives. A library that was started on another goes on on this one.
struct Machine : support::CurrentBoard {
  explicit Machine(std::string_view controller) { Build(&board, controller); }
};

}  // namespace small_board

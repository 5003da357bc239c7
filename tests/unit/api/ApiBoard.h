// SPDX-License-Identifier: MIT
/// A simulated board with firmware tables, and the library started on it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "api/Library.h"
#include "firmware/AcpiImage.h"
#include "firmware/IadtBuilder.h"
#include "firmware/IamtBuilder.h"
#include "tests/support/Machine.h"
#include "tests/support/Printed.h"
#include "vynlib/vynlib.h"

namespace apitest {

using firmware::Bytes;
using firmware::Command;
using firmware::Record;

/// Small numbers to go through: for (const uint8_t selector : Numbers{1, 2}).
using Numbers = std::initializer_list<uint8_t>;

class Api : public testing::Test, protected support::Machine {
 protected:
  firmware::IadtBuilder iadt;
  firmware::IamtBuilder iamt;
  std::string printed;  ///< by the start

  ~Api() override { Stop(); }

  /// Puts the tables built so far into memory and initialises the library; the log is empty afterwards.
  void Start() {
    firmware::AcpiImage().Table(iadt.Build()).Table(iamt.Build()).PutInto(&board);
    StartWithoutTables();
  }
  void StartWithoutTables() {
    printed = support::Printed([] { EXPECT_EQ(VynLibDllInit(), 1); });
    board.Log().clear();
  }
  /// As if the library had been loaded afresh.
  void Stop() {
    VynLibDllUnInit();
    api::InitOk = 0;
    api::LastErrorCode = 0;
  }
  /// Stops and forgets the tables, for a test that starts more than once.
  void StartOver() {
    Stop();
    iadt = {};
    iamt = {};
  }
};

/// The code of the last call, cleared from the way of the next one.
inline uint64_t TakeCode() {
  const uint64_t code = VynLibDllGetLastError();
  api::LastErrorCode = 0xBADC0DE;
  return code;
}

/// What the code is before a call whose code is to be seen.
constexpr uint64_t kNoCode = 0xBADC0DE;

// ---- commands on plain ports ----

/// Succeeds in reading when the port holds `value`; does nothing in setting.
inline Command PortIs(uint16_t port, uint8_t value) { return Command::Port(port).Get(0xFF, value); }
/// Writes `value` in setting (after a read); does nothing in reading.
inline Command PortPut(uint16_t port, uint8_t value) { return Command::Port(port).Set(0, value); }
/// Fails in setting unless the port holds `value`; does nothing in reading.
inline Command PortMustBe(uint16_t port, uint8_t value) {
  return Command::Port(port).Control(layout::kSetReads).Expected(value);
}
/// A kind that cannot be stepped over, flagged for nothing.
inline Command UnknownKind() { return Command::Raw({0x19, 0x00, 0x00, 0, 0, 0, 0, 0}); }

}  // namespace apitest

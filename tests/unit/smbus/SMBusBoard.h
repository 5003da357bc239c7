// SPDX-License-Identifier: MIT
/// What the SMBus tests share: their machine, and a controller record whose scripts leave marks on it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "tests/support/Answers.h"
#include "tests/support/Machine.h"

class SMBusBoard : public ::testing::Test, protected support::Machine {};

/// A record that writes the number of each script it runs to port 0x80 (2 detect, 3 enable, 4 to 7 base, 8 idle wait,
/// 14 and 15 byte starts, 16 byte wait, 17 byte read, 18 to 27 blocks and restore, 31 retry, 33 to 37 words) and what
/// it is given to a port per prefix: 0x81 address, 0x82 command, 0x83 byte data, 0x84 block count, 0x85 block data,
/// 0x86 and 0x87 word. Results come from port 0x90 (idle), 0x91 (waits), 0x92 (data), 0x93 (block count), 0x94 (next).
inline TSMBusCfg MarkedRecord() {
  TSMBusCfg config;
  config.Name = "A";
  config.DetectScript = "o(0x80,2); Local0=0";
  config.EnableScript = "o(0x80,3)";
  config.BaseScript1 = "o(0x80,4)";
  config.WaitIdleScript = "o(0x80,8); i(0x90)";
  config.AddressPrefix = "o(0x81,";
  config.CommandPrefix = "o(0x82,";
  config.ByteWritePrefix = "o(0x84,";
  config.DataWritePrefix = "o(0x83,";
  config.DataReadPrefix = "i(0x93,";
  config.ByteReadStartScript = "o(0x80,14)";
  config.ByteWriteStartScript = "o(0x80,15)";
  config.ByteWaitScript = "o(0x80,16); i(0x91)";
  config.ByteReadScript = "o(0x80,17); i(0x92)";
  config.BlockReadStartScript = "o(0x80,18)";
  config.BlockWriteStartScript = "o(0x80,19)";
  config.BlockWaitScript = "o(0x80,20); i(0x91)";
  config.BlockSetupScript = "o(0x80,21)";
  config.BlockWritePrefix = "o(0x85,";
  config.BlockReadScript = "o(0x80,23); i(0x92)";
  config.BlockNextScript = "o(0x80,25); i(0x94)";
  config.BlockStepScript = "o(0x80,26)";
  config.RestoreScript = "o(0x80,27)";
  config.ErrorMask = 4;
  config.RetryScript = "o(0x80,31)";
  config.WordReadStartScript = "o(0x80,33)";
  config.WordWriteStartScript = "o(0x80,34)";
  config.WordWaitScript = "o(0x80,35); i(0x91)";
  config.WordReadLowScript = "o(0x80,36); i(0x92)";
  config.WordReadHighScript = "o(0x80,37); i(0x92)";
  config.WordWriteLowPrefix = "o(0x86,";
  config.WordWriteHighPrefix = "o(0x87,";
  return config;
}

/// A board whose controller is a marked record, changed by the test before detection runs.
class MarkedBoard : public SMBusBoard {
 protected:
  static constexpr uint16_t kIdlePort = 0x90, kWaitPort = 0x91, kDataPort = 0x92, kCountPort = 0x93, kNextPort = 0x94;

  MarkedBoard() { board.Ports(kIdlePort, {0, 0, 0, 0, 0}); }

  TSMBus& Bus() {
    if (TSMBus::g_Instance) return *TSMBus::g_Instance;
    TSMBusConfig::GetInstance()->AddConfig(&config);
    TSMBus& bus = *TSMBus::GetInstance();
    board.Log().clear();
    return bus;
  }

  void Answer(uint16_t port, std::vector<uint32_t> values) { support::Answer(&board, port, std::move(values)); }

  TSMBusCfg config = MarkedRecord();
};

inline sim::Access Step(uint8_t number) { return sim::Out8(0x80, number); }
/// Detection, enabling, the base script and the idle wait that every transaction begins with.
inline std::vector<sim::Access> Opening(uint8_t base = 4) {
  return {Step(2), Step(3), Step(base), Step(8), sim::In8(0x90, 0)};
}
inline std::vector<sim::Access> Closing() { return {Step(8), sim::In8(0x90, 0), Step(27)}; }

inline std::vector<sim::Access> operator+(std::vector<sim::Access> left, const std::vector<sim::Access>& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

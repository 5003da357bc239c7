// SPDX-License-Identifier: MIT
/// What the tests of shared hosts have in common: the boards, and a world in which accesses, sleeps and transfers take
/// their time.
#pragma once

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "../SMBusBoard.h"
#include "sim/chips/SmbusPlatforms.h"
#include "sim/chips/SmbusUser.h"

/// A record and a board to run it on.
struct SharedRow {
  const char* name;  ///< of the tests
  const char* platform;
  const char* record;
  bool searches = false;  ///< detection looks for the chip instead of looking at one place
  friend void PrintTo(const SharedRow& row, std::ostream* stream) { *stream << row.name; }
};

// clang-format off
inline const SharedRow kSharedRows[] = {
    {"Sis964",       "sis964",      "SiS 964"},
    {"Sis968",       "sis968",      "SiS 968"},
    {"IntelSch",     "sch",         "Intel SCH"},
    {"UliM1563",     "m1563",       "ULI M1563", true},
    {"UliM1573",     "m1573",       "ULI M1573", true},
    {"UliM1575",     "m1575",       "ULI M1575", true},
    {"ViaVx900",     "vx900",       "VIA VX900"},
    {"Sis962",       "sis962",      "SiS 962/963"},
    {"Sis965",       "sis965",      "SiS 965/966"},
    {"NvidiaMcp2",   "nforce2",     "nVidia MCP2", true},
    {"Promontory",   "promontory",  "AMD Promontory"},
    {"Carrizo",      "carrizo",     "AMD Promontory"},
    {"EarlyFch",     "fch-early",   "AMD Promontory"},
    {"IntelAutoPch", "cannon-lake", "Intel Auto PCH", true},
    {"IntelKaby",    "kaby-lake",   "Intel Kaby lake"},
    {"IntelAvoton",  "avoton",      "Intel Avoton PCH"},
    {"IntelSkylake", "skylake",     "Intel Skylake PCH"},
    {"IntelBraswell","braswell",    "Intel Braswell PCH"},
    {"NvidiaCk804",  "ck804",       "nVidia nForce3/CK804", true},
    {"IntelPch",     "pch7",        "Intel PCH/P67/Z77/Z87"},
    {"Osb4",         "osb4",        "ServerWorks OSB4/CSB5", true},
    {"Csb5",         "csb5",        "ServerWorks OSB4/CSB5", true},
    {"Via8237",      "vt8237",      "VIA 8235/8237/8237A/8251"},
    {"IntelIch9",    "ich9",        "Intel ICH7/ICH8/ICH9/ICH10"},
    {"AtiSb400",     "sb400",       "ATI SB400/SB600/SB700/SB800/Hudson"},
    {"AtiSb700",     "sb700",       "ATI SB400/SB600/SB700/SB800/Hudson"},
    {"AtiSb800",     "sb800",       "ATI SB400/SB600/SB700/SB800/Hudson"},
    {"AmdHudson",    "hudson",      "ATI SB400/SB600/SB700/SB800/Hudson"},
    {"AmdMullins",   "mullins",     "ATI SB400/SB600/SB700/SB800/Hudson"},
};
// clang-format on
/// Its texts are given; SharedIchxTest.cpp says how they share.
inline constexpr SharedRow kIchxRow = {"IntelIchx", "ich5", "Intel ICHx"};

/// The rows whose platform is as asked.
inline std::vector<SharedRow> SharedRowsWhere(bool (*wanted)(const sim::SmbusPlatform&)) {
  std::vector<SharedRow> rows;
  for (const SharedRow& row : kSharedRows)
    if (wanted(*sim::FindSmbusPlatform(row.platform))) rows.push_back(row);
  return rows;
}

inline std::string SharedRowName(const testing::TestParamInfo<SharedRow>& info) { return info.param.name; }

/// A board with one chip, enabled by firmware, in which a port access takes 1 us, a sleep 10 us more than asked for, a
/// start or stop on the bus 10 us and a byte there 90 us.
class SharedBoard : public SMBusBoard {
 protected:
  static constexpr unsigned char kSlave = 0xA0, kSlow = 0xA4, kMissing = 0xA2;
  static constexpr unsigned char kCommand = 0x10, kValue = 0x73, kSlowValue = 0x37;
  static constexpr uint64_t kMillisecond = 1000, kSecond = 1000 * kMillisecond;
  static constexpr unsigned kLock = 8;  ///< the register that AMD's host and embedded controller share it by

  struct Outcome {
    int done;
    unsigned char value;
    uint64_t took;  ///< microseconds
  };

  void Build(const SharedRow& row) {
    sim::SmbusSetup setup;
    setup.slaves = {{kSlave, slave}, {kSlow, slow}};
    slave->registers[kCommand] = kValue;
    slow->registers[kCommand] = kSlowValue;
    platform = sim::FindSmbusPlatform(row.platform);
    ASSERT_NE(platform, nullptr);
    host = sim::AttachSmbus(board, *platform, setup);
    board.logging = false;
    TSMBus::GetInstance();
    board.pace = {.portAccess = 1, .sleepExtra = 10, .step = 10};
    host->microsecondsPerStart = 10;
    host->microsecondsToStop = 500;
    host->onWrite = [this](const sim::SmbusWrite& write) { writes.push_back(write); };
    board.Pci(0, platform->host.device, platform->host.function).onWrite = [this](sim::Board&, unsigned offset,
                                                                                  unsigned) {
      if (host->owned) configured.push_back(offset);
    };
  }

  Outcome Read(unsigned char address) {
    const uint64_t before = board.Microseconds();
    unsigned char byte = 0xEE;
    const int done = TSMBus::GetInstance()->ReadSmbusByte(address, &byte, kCommand, 1);
    return {done, byte, board.Microseconds() - before};
  }

  void ExpectReads(unsigned char address, unsigned char value) {
    const Outcome outcome = Read(address);
    EXPECT_EQ(outcome.done, 1);
    EXPECT_EQ(outcome.value, value);
  }
  void ExpectReads() { ExpectReads(kSlave, kValue); }
  /// In less than a second, with nothing left running.
  void ExpectFails(unsigned char address) {
    const Outcome outcome = Read(address);
    EXPECT_EQ(outcome.done, 0);
    EXPECT_LT(outcome.took, kSecond);
    EXPECT_FALSE(RunsNow());
  }

  /// A transfer is on the wires.
  bool RunsNow() {
    const sim::SmbusLayout& layout = host->Layout();
    if (layout.busy.offset != layout.status) return (host->Peek(board, layout.busy.offset) & layout.busy.mask) != 0;
    const uint8_t status = host->Peek(board, layout.status);
    const bool took = layout.inUse != 0 && (status & layout.inUse) == 0;
    if (took) host->Poke(board, layout.status, layout.inUse);
    return (status & layout.busy.mask) != 0;
  }

  /// Reads through the host from now on, for `microseconds`, whatever it finds in the semaphore if `asks` is false.
  std::shared_ptr<sim::SmbusUser> Another(uint64_t microseconds, unsigned char address = kSlave, bool asks = true) {
    const auto expected = static_cast<uint8_t>(address == kSlave ? kValue : kSlowValue);
    return sim::SmbusUser::Start(board, host,
                                 {.until = board.Microseconds() + microseconds,
                                  .address = address,
                                  .command = kCommand,
                                  .expected = expected,
                                  .asks = asks});
  }

  /// A read that somebody begins who takes no semaphore and clears nothing.
  void StartAnothers(unsigned char address) {
    const sim::SmbusLayout& layout = host->Layout();
    host->Poke(board, layout.address, static_cast<uint8_t>(address | 1));
    host->Poke(board, layout.command, kCommand);
    host->Poke(board, layout.control, layout.startByteRead);
  }
  /// Such a read, over: its result stays in the status, and the semaphore taken.
  void LeaveBehind(unsigned char address) {
    StartAnothers(address);
    board.Sleep(3 * kMillisecond);
    host->Peek(board, host->Layout().status);
    ASSERT_FALSE(host->Busy());
  }

  template <typename Predicate>
  std::vector<std::string> WritesWhere(Predicate predicate) const {
    std::vector<std::string> texts;
    for (const sim::SmbusWrite& write : writes)
      if (predicate(write) && texts.size() < kFewWrites)
        texts.push_back("register " + std::to_string(write.offset) + " <- " + std::to_string(write.value) + " at " +
                        std::to_string(write.at) + " us");
    return texts;
  }
  std::vector<std::string> WritesToAnothersHost() const {
    return WritesWhere([](const sim::SmbusWrite& write) { return write.foreign; });
  }
  /// That could clear what a transfer on the wires reports. Moving a block on and giving the semaphore back cannot.
  std::vector<std::string> StatusWritesWhileBusy() const {
    const sim::SmbusLayout& layout = host->Layout();
    const auto harmless = static_cast<uint8_t>(layout.next | layout.inUse);
    return WritesWhere([&](const sim::SmbusWrite& write) {
      return write.running && write.offset == layout.status && (write.value & ~harmless) != 0;
    });
  }
  size_t GivenBack() const {
    const sim::SmbusLayout& layout = host->Layout();
    return static_cast<size_t>(std::count_if(writes.begin(), writes.end(), [&](const sim::SmbusWrite& write) {
      return write.offset == layout.status && (write.value & layout.inUse) != 0;
    }));
  }
  bool SemaphoreTaken() {
    const sim::SmbusLayout& layout = host->Layout();
    const uint8_t status = host->Peek(board, layout.status);
    return (status & layout.inUse) != 0;
  }

  const sim::SmbusPlatform* platform = nullptr;
  std::shared_ptr<sim::SmbusSlave> slave = std::make_shared<sim::SmbusSlave>();
  std::shared_ptr<sim::SmbusSlave> slow = std::make_shared<sim::SmbusSlave>();
  std::shared_ptr<sim::SmbusHost> host;
  std::vector<sim::SmbusWrite> writes;  ///< of the library to the host
  std::vector<unsigned> configured;     ///< offsets that it wrote in the host's function while another owned it

 private:
  static constexpr size_t kFewWrites = 5;
};

/// The same for each of several rows. No status is written while a transfer is on the wires, whatever the test does.
class SharedRows : public SharedBoard, public testing::WithParamInterface<SharedRow> {
 protected:
  void SetUp() override { Build(GetParam()); }
  void TearDown() override { EXPECT_THAT(StatusWritesWhileBusy(), testing::IsEmpty()); }
};

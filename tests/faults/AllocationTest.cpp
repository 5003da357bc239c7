// SPDX-License-Identifier: MIT
// Every heap allocation of a scenario fails in turn. Nothing may leave the C interface, the call ends with code 1, what
// was begun on the hardware is ended, and everything works once there is memory again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <new>
#include <utility>
#include <vector>

#include "bench/NullMachine.h"
#include "firmware/AcpiImage.h"
#include "firmware/BiosInfo.h"
#include "firmware/IadtBuilder.h"
#include "firmware/IamtBuilder.h"
#include "tests/faults/SmallBoard.h"
#include "vynlib/vynlib.h"

namespace {

constexpr uint64_t kNever = ~0ull;
uint64_t allocations = 0;   ///< since the scenario began
uint64_t failing = kNever;  ///< the number of the one that fails
bool failed = false;

void* Allocate(size_t size) {
  if (allocations++ == failing) {
    failed = true;
    return nullptr;
  }
  return std::malloc(size != 0 ? size : 1);
}

void* AllocateOrThrow(size_t size) {
  if (void* block = Allocate(size)) return block;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(size_t size) { return AllocateOrThrow(size); }
void* operator new[](size_t size) { return AllocateOrThrow(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t) noexcept { std::free(block); }

namespace {

using bench::NullMachine;
using firmware::Command;
using firmware::Record;

constexpr uint16_t kSmbusBase = 0x400, kSmbusControl = kSmbusBase + 2, kSmbusData = kSmbusBase + 5;
constexpr uint8_t kSlave = 0x5A;

/// ICH9 with an SMBus device whose every register is what was written last, and tables in the BIOS area.
class Allocations : public testing::Test {
 protected:
  NullMachine& machine = NullMachine::Get();

  Allocations() {
    machine.Reset();
    machine.pci = {{0x8000F800, 0x24C08086},     {0x8000F840, 0x00000801}, {0x8000F8F0, 0},
                   {0x8000FB00, 0x24C38086},     {0x8000FB04, 0x00000001}, {0x8000FB08, 0x0C050000},
                   {0x8000FB20, kSmbusBase | 1}, {0x8000FB40, 0x00000001}};
    machine.smbusBase = kSmbusBase;
    machine.ports[kSmbusBase] = machine.ports[kSmbusBase + 0xD] = 0;
    machine.ports[kSmbusData] = 1;
    firmware::IadtBuilder iadt;
    for (uint8_t state = 0; state < 2; ++state) {
      const Command reg = Command::Smbus(kSlave, 0x20);
      iadt.Feature("ComType", 1, state, {Command(reg).Get(0x01, state), Command(reg).Set(0xFE, state)});
      iadt.Feature("LVDSState", state, {Command::Port(0x80).Get(0xFF, state), Command::Port(0x80).Set(0, state)});
    }
    iadt.Add(Record::Feature("Watchdog").Value(3).Commands({Command::Smbus(kSlave, 0x30).Set().Get().Argument(0)}));
    iadt.Add(Record::Feature("FanConfig")
                 .Name("CPU Fan Mode")
                 .Value(0)
                 .Commands({Command::Port(0x90).Get().Set().Argument(1)}));
    iadt.Add(Record::Sensor("temperature", 4)
                 .Name("Board")
                 .Commands({Command::Smbus(kSlave, 0x40).Get(), Command::Smbus(kSlave, 0x41).Get()}));
    for (const auto& [address, bytes] : firmware::AcpiImage()
                                            .RootPointerAt(0xE0040)
                                            .TablesAt(0xE1000)
                                            .Table(iadt.Build())
                                            .Table(firmware::IamtBuilder().Chips(1, 2, 3).Build())
                                            .Build())
      std::copy(bytes.begin(), bytes.end(), machine.memory.begin() + (address - bench::kMemoryBase));
    const auto record = firmware::BiosInfo{.model = "SHORT"}.Build();
    std::copy(record.begin(), record.end(), machine.memory.begin());
    machine.log.reserve(1u << 16);
    machine.logging = true;
  }
  ~Allocations() override {
    failing = kNever;
    VynLibDllUnInit();
    machine.logging = false;
  }

  /// Runs `call` with its first, second, ... allocation failing, until it has none left to fail. `before` and `after`
  /// have all memory.
  void FailEach(const std::function<void()>& before, const std::function<int()>& call,
                const std::function<void(int)>& after) {
    int rounds = 0;
    for (failed = true; failed; ++rounds) {
      before();
      machine.log.clear();
      allocations = 0;
      failed = false;
      failing = static_cast<uint64_t>(rounds);
      const int result = call();
      failing = kNever;
      SCOPED_TRACE(rounds);
      if (failed) after(result);
    }
    EXPECT_GT(rounds, 1) << "no allocation was made to fail";
  }

  /// A started library; a call that fails for want of memory; the same call once there is some.
  void ExpectRefusedAndThenDone(const std::function<int()>& call) {
    VynLibDllUnInit();
    ASSERT_EQ(small_board::Start(), 1);
    machine.log.clear();
    EXPECT_EQ(call(), 1);
    const Writes restoring = LastRestoring();
    ASSERT_EQ(VynLibDllUnInit(), 1);  // what was parsed is forgotten
    ASSERT_EQ(small_board::Start(), 1);
    FailEach([] {}, call,
             [&](int result) {
               // A copy that only spares work may be done without.
               if (result == 0) {
                 EXPECT_EQ(VynLibDllGetLastError(), 1u);
               }
               const Writes written = ConfigurationWrites();
               EXPECT_TRUE(written.empty() || EndsWith(written, restoring)) << "the controller was left enabled";
               EXPECT_EQ(call(), 1);
               EXPECT_EQ(VynLibDllGetLastError(), 0u);
               // The next allocation to fail is that of a library that has parsed nothing.
               VynLibDllUnInit();
               small_board::Start();
             });
  }

  using Writes = std::vector<std::pair<uint32_t, uint64_t>>;

  /// The writes to configuration space from the `first` access of the log on.
  Writes ConfigurationWrites(size_t first = 0) const {
    Writes writes;
    uint32_t address = 0;
    for (size_t i = 0; i < machine.log.size(); ++i) {
      const bench::Access& access = machine.log[i];
      if (access.kind != 'o') continue;
      if (access.address == 0xCF8) address = static_cast<uint32_t>(access.value);
      if (i >= first && access.address >= 0xCFC && access.address < 0xD00) writes.emplace_back(address, access.value);
    }
    return writes;
  }
  /// What puts the controller back: the writes after the last transfer was started.
  Writes LastRestoring() const {
    size_t started = 0;
    for (size_t i = 0; i < machine.log.size(); ++i)
      if (machine.log[i].kind == 'o' && machine.log[i].address == kSmbusControl) started = i;
    return started == 0 ? Writes() : ConfigurationWrites(started);
  }
  static bool EndsWith(const Writes& writes, const Writes& tail) {
    return writes.size() >= tail.size() && std::equal(tail.rbegin(), tail.rend(), writes.rbegin());
  }
};

}  // namespace

TEST_F(Allocations, OfAStartThatFailLeaveNothingStarted) {
  FailEach([] { VynLibDllUnInit(); }, [] { return small_board::Start(); },
           [&](int started) {
             if (started == 1) return;
             EXPECT_EQ(VynLibDllGetLastError(), 1u);
             uint8_t state = 9;
             EXPECT_EQ(VynLibGetLVDSState(&state, 2), 0);
             EXPECT_EQ(VynLibDllGetLastError(), 1u);
             EXPECT_EQ(state, 9);
             EXPECT_EQ(VynLibDllUnInit(), 0);
             int raised = 0;
             for (const bench::Access& access : machine.log)
               if (access.kind == 'p') raised += access.value != 0 ? 1 : -1;
             EXPECT_EQ(raised, 0) << "the privilege level stays raised";
             EXPECT_EQ(small_board::Start(), 1);
             EXPECT_EQ(VynLibTableSupported(2), 1);
           });
}

TEST_F(Allocations, OfAReadingOverSmbus) {
  uint8_t state = 9;
  ExpectRefusedAndThenDone([&] { return VynLibGetComType(1, &state, 2); });
  EXPECT_EQ(state, 1);
}

TEST_F(Allocations, OfASettingOverSmbus) {
  ExpectRefusedAndThenDone([] { return VynLibSetComType(1, 1, 2); });
}

TEST_F(Allocations, OfAWatchdogOverSmbus) {
  uint32_t interval = 0;
  ExpectRefusedAndThenDone([] { return VynLibWDTSetInterval(30, 2); });
  ExpectRefusedAndThenDone([&] { return VynLibWDTGetInterval(&interval, 2); });
  EXPECT_EQ(interval, 30u);
}

TEST_F(Allocations, OfASensorOverSmbus) {
  float celsius = 0;
  ExpectRefusedAndThenDone([&] { return VynLibGetTemperature("Board", &celsius, 2); });
  EXPECT_FLOAT_EQ(celsius, 2.57F);  // 0x0101 hundredths
}

TEST_F(Allocations, OfFanNamesAndModes) {
  uint8_t count = 0;
  ExpectRefusedAndThenDone([&] { return VynLibGetFanConfigNames(nullptr, &count, 2); });
  EXPECT_EQ(count, 1);
  uint8_t block[2] = {0, 40};
  ExpectRefusedAndThenDone([&] { return VynLibSetFANConfig("CPU Fan", block, 2, 2); });
  uint8_t size = 2;
  ExpectRefusedAndThenDone([&] { return VynLibGetFANConfig("CPU Fan", block, &size, 2); });
  EXPECT_EQ(block[1], 40);
}

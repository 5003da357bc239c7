// SPDX-License-Identifier: MIT
// Two users of the hardware at once, with and without the lock, and programs that are ended in the middle of a call.
// Figures are printed; what is judged is that none is wrong with the lock.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vynlib/lock.h>
#include <vynlib/vynlib.h>

#include <array>
#include <cmath>
#include <thread>

#include "Child.h"
#include "Tool.h"

using ::testing::HasSubstr;

namespace {

constexpr uint8_t kMonitor = 0xA4;
constexpr double kSeconds = 3;
constexpr float kTolerance = 0.001f;

struct Count {
  long right = 0, wrong = 0, failed = 0;
};

/// A sensor that always has the same value.
struct Constant {
  int (*read)(const char* name, float* value, uint8_t selector);
  const char* name;
  float value;
};

using Pair = std::array<Constant, 2>;
constexpr Pair kSmbus = {{{VynLibGetVoltage, "+VCORE", 1.6f}, {VynLibGetVoltage, "+VBAT", 4.0f}}};
constexpr Pair kIndexData = {{{VynLibGetTemperature, "System", 45.0f}, {VynLibGetVoltage, "+12V", 12.0f}}};

/// Reads for some seconds; `lock` may be null.
Count Read(const Constant& sensor, vynlib_lock* lock) {
  Count count;
  for (const double end = guest::SecondsSinceBoot() + kSeconds; guest::SecondsSinceBoot() < end;) {
    float value = 0;
    if (lock != nullptr && vynlib_lock_take(lock, 10000) != VYNLIB_LOCK_OK) return {0, 0, -1};
    const int done = sensor.read(sensor.name, &value, VYNLIB_PERFORM);
    if (lock != nullptr) vynlib_lock_give(lock);
    ++(done == 0 ? count.failed : std::fabs(value - sensor.value) < kTolerance ? count.right : count.wrong);
  }
  return count;
}

/// The lock of all programs, or none.
class MaybeLock {
 public:
  explicit MaybeLock(bool wanted) : wanted_(wanted) {
    if (wanted_ && vynlib_lock_open(&lock_, VYNLIB_LOCK_PATH) != VYNLIB_LOCK_OK) throw std::runtime_error("no lock");
  }
  ~MaybeLock() {
    if (wanted_) vynlib_lock_close(&lock_);
  }
  MaybeLock(const MaybeLock&) = delete;
  MaybeLock& operator=(const MaybeLock&) = delete;
  vynlib_lock* Get() { return wanted_ ? &lock_ : nullptr; }

 private:
  const bool wanted_;
  vynlib_lock lock_{};
};

Count operator+(const Count& a, const Count& b) { return {a.right + b.right, a.wrong + b.wrong, a.failed + b.failed}; }

/// A process that starts the library, reads and sends its count.
pid_t StartReader(const Constant& sensor, bool locked, int sink) {
  const pid_t child = fork();
  if (child != 0) return child;
  MaybeLock lock(locked);
  if (locked && vynlib_lock_take(lock.Get(), 10000) != VYNLIB_LOCK_OK) _exit(1);
  const bool started = VynLibDllInit() != 0;
  if (locked) vynlib_lock_give(lock.Get());
  const Count count = started ? Read(sensor, lock.Get()) : Count{0, 0, -1};
  _exit(write(sink, &count, sizeof count) == sizeof count ? 0 : 1);
}

Count TwoProcesses(const Pair& pair, bool locked) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  const pid_t children[] = {StartReader(pair[0], locked, ends[1]), StartReader(pair[1], locked, ends[1])};
  for (pid_t child : children) waitpid(child, nullptr, 0);
  close(ends[1]);
  Count sum, one;
  while (read(ends[0], &one, sizeof one) == sizeof one) sum = sum + one;
  close(ends[0]);
  return sum;
}

void Print(const char* what, const Count& count) {
  std::printf("%s: %ld right, %ld wrong with success, %ld failed\n", what, count.right, count.wrong, count.failed);
}

/// Two threads of one process; an empty count when the process did not live through it.
Count TwoThreads(const Pair& pair, bool locked) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  const std::string end = guest::EndOfChild([&] {
    MaybeLock lock(locked);
    if (VynLibDllInit() == 0) return 1;
    Count counts[2];
    std::thread other([&] { counts[1] = Read(pair[1], lock.Get()); });
    counts[0] = Read(pair[0], lock.Get());
    other.join();
    const Count sum = counts[0] + counts[1];
    return write(ends[1], &sum, sizeof sum) == sizeof sum ? 0 : 1;
  });
  std::printf("two threads end with %s\n", end.c_str());
  close(ends[1]);
  Count sum;
  if (read(ends[0], &sum, sizeof sum) != sizeof sum) sum = {};
  close(ends[0]);
  return sum;
}

class Sharing : public ::testing::Test {
 protected:
  void SetUp() override {
    guest::AllowPorts();
    SetConstants();
  }

  /// Users without the lock overwrite registers: one selects a bank where the other has just selected a register.
  static void SetConstants() {
    guest::SetSmbus(kMonitor, 0x20, 100);
    guest::SetSmbus(kMonitor, 0x21, 250);
    guest::SetNvram(0x67, 250);
    guest::SetNvram(0x68, 45);
  }

  static void ExpectNoneWrong(const Count& count) {
    EXPECT_GT(count.right, 10);
    EXPECT_EQ(0, count.wrong);
    EXPECT_EQ(0, count.failed);
  }
};

// The controller's register that enabling changes: bit 0 lets it work.
constexpr uint32_t kSmbusEnable = 0x80000000 | 0x1F << 11 | 3 << 8 | guest::kSmbusConfiguration;

/// A controller that firmware left off, as the tool must leave it.
class Ended : public Sharing {
 protected:
  void SetUp() override {
    Sharing::SetUp();
    before_ = Enable();
    SetEnable(0);
    duration_ = Duration();
  }
  void TearDown() override { SetEnable(before_); }

  static uint8_t Enable() {
    guest::Out32(0xCF8, kSmbusEnable);
    return guest::In8(0xCFC);
  }
  static void SetEnable(uint8_t value) {
    guest::Out32(0xCF8, kSmbusEnable);
    guest::Out8(0xCFC, value);
  }

  /// Ends a run in each part of the time in which it calls the library, and calls `check` each time. How often the
  /// controller was left on.
  template <typename Check>
  int EndEverywhere(int signal, const Check& check) const {
    int changed = 0;
    for (int i = 0; i < kEnds; ++i) {
      guest::Tool tool(kRun);
      AwaitFirstCall(tool);
      usleep(static_cast<unsigned>(duration_ * (i + 0.5) / kEnds * 1e6));
      tool.Signal(signal);
      tool.End();
      changed += Enable() != 0;
      check(Enable() != 0);
      SetEnable(0);
    }
    return changed;
  }

  static constexpr int kEnds = 40;

 private:
  static constexpr char kRun[] = "report";

  /// The lock file says who has the lock.
  static void AwaitFirstCall(const guest::Tool& tool) {
    struct stat status {};
    while ((stat(VYNLIB_LOCK_PATH, &status) != 0 || status.st_size == 0) && tool.Runs()) usleep(200);
  }
  static double Duration() {
    guest::Tool tool(kRun);
    AwaitFirstCall(tool);
    const double begin = guest::SecondsSinceBoot();
    tool.End();
    return guest::SecondsSinceBoot() - begin;
  }

  uint8_t before_ = 0;
  double duration_ = 0;
};

}  // namespace

TEST_F(Sharing, ProcessesReadRightWithTheLock) {
  Print("SMBus, two processes, no lock", TwoProcesses(kSmbus, false));
  Print("index/data, two processes, no lock", TwoProcesses(kIndexData, false));
  SetConstants();
  const Count smbus = TwoProcesses(kSmbus, true), indexData = TwoProcesses(kIndexData, true);
  Print("SMBus, two processes, lock", smbus);
  Print("index/data, two processes, lock", indexData);
  ExpectNoneWrong(smbus);
  ExpectNoneWrong(indexData);
}

TEST_F(Sharing, ThreadsReadRightWithTheLock) {
  Print("SMBus, two threads, no lock", TwoThreads(kSmbus, false));
  Print("index/data, two threads, no lock", TwoThreads(kIndexData, false));
  SetConstants();
  const Count smbus = TwoThreads(kSmbus, true), indexData = TwoThreads(kIndexData, true);
  Print("SMBus, two threads, lock", smbus);
  Print("index/data, two threads, lock", indexData);
  ExpectNoneWrong(smbus);
  ExpectNoneWrong(indexData);
}

TEST_F(Ended, BySigtermLeavesTheControllerAsItWas) {
  const int changed = EndEverywhere(SIGTERM, [](bool) {});
  std::printf("SIGTERM left the controller changed %d times of %d\n", changed, kEnds);
  EXPECT_EQ(0, changed);
}

TEST_F(Ended, BySigkillIsToldByTheNextRunWhenTheControllerChanged) {
  int told = 0;
  const int changed = EndEverywhere(SIGKILL, [&](bool left) {
    guest::Tool next("get lvds-state");
    next.End();
    const bool tells = guest::Tool::Output().find("ended in the middle of a library call") != std::string::npos;
    told += tells;
    EXPECT_TRUE(tells || !left);
  });
  std::printf("SIGKILL left the controller changed %d times of %d; the next run told %d times\n", changed, kEnds, told);
}

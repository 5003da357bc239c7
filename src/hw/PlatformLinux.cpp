// SPDX-License-Identifier: MIT
// The real machine: each function is the system call or the instruction it is named for, and what makes that hold on
// every thread, through signals, and on kernels that hide the firmware's tables.
#include <fcntl.h>
#include <sys/io.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

#include "hw/FirmwareMemory.h"
#include "hw/Platform.h"

namespace platform {
namespace {

constexpr long kMicrosecondsPerSecond = 1000000;
constexpr long kNanosecondsPerMicrosecond = 1000;
constexpr long kNanosecondsPerSecond = 1000000000;

/// The I/O privilege level belongs to a thread. A start raises it for its own; every other thread is raised at its
/// first port access. A thread has the level of the start whose number it keeps.
std::atomic<unsigned> startsMade = 0;  ///< successful ones
std::atomic<unsigned> inForce = 0;     ///< the number of the last one, 0 when all of them have ended
unsigned notEnded = 0;                 ///< how many are in force
thread_local unsigned raisedBy = 0;

/// Raises the level of a thread that a start in force has not reached yet, and drops what an ended one left behind.
bool FollowTheStarts() {
  const unsigned start = inForce;
  if (iopl(start != 0 ? 3 : 0) != 0) return false;
  raisedBy = start;
  return start != 0;
}

/// False where a port instruction would end the process. Ports then read all ones, as where nobody answers.
inline bool MayUsePorts() { return raisedBy == inForce.load(std::memory_order_relaxed) || FollowTheStarts(); }

/// Outlives every call, those made while the process ends included.
FirmwareMemory& Firmware() {
  static FirmwareMemory& memory = *new FirmwareMemory;
  return memory;
}

/// Short sleeps end within a microsecond of their time rather than within the 50 that the kernel may add to let timers
/// expire together: polls of a bus come every 20. The thread's own choice is back afterwards.
class ShortSleep {
 public:
  explicit ShortSleep(uint32_t microseconds) {
    constexpr uint32_t kShort = 1000;
    if (microseconds > kShort) return;
    const int slack = prctl(PR_GET_TIMERSLACK);
    if (slack <= kNanosecondsPerMicrosecond) return;
    if (prctl(PR_SET_TIMERSLACK, kNanosecondsPerMicrosecond) == 0) former_ = static_cast<unsigned long>(slack);
  }
  ~ShortSleep() {
    if (former_ != 0) prctl(PR_SET_TIMERSLACK, former_);
  }
  ShortSleep(const ShortSleep&) = delete;
  ShortSleep& operator=(const ShortSleep&) = delete;

 private:
  unsigned long former_ = 0;  ///< nanoseconds; 0: nothing to put back
};

timespec Now() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now;
}

timespec After(timespec time, uint32_t microseconds) {
  time.tv_sec += microseconds / kMicrosecondsPerSecond;
  time.tv_nsec += static_cast<long>(microseconds % kMicrosecondsPerSecond) * kNanosecondsPerMicrosecond;
  if (time.tv_nsec >= kNanosecondsPerSecond) {
    time.tv_nsec -= kNanosecondsPerSecond;
    ++time.tv_sec;
  }
  return time;
}

}  // namespace

int SetIoPrivilegeLevel(int level) {
  const int result = iopl(level);
  if (level != 0) {
    if (result != 0) return result;
    ++notEnded;
    raisedBy = inForce = ++startsMade;
    return result;
  }
  raisedBy = 0;
  if (notEnded > 0 && --notEnded == 0) {
    inForce = 0;
    Firmware().Forget();
  }
  return result;
}

uint8_t In8(uint16_t port) { return MayUsePorts() ? inb(port) : UINT8_MAX; }
uint16_t In16(uint16_t port) { return MayUsePorts() ? inw(port) : UINT16_MAX; }
uint32_t In32(uint16_t port) { return MayUsePorts() ? inl(port) : UINT32_MAX; }
void Out8(uint16_t port, uint8_t value) {
  if (MayUsePorts()) outb(value, port);
}
void Out16(uint16_t port, uint16_t value) {
  if (MayUsePorts()) outw(value, port);
}
void Out32(uint16_t port, uint32_t value) {
  if (MayUsePorts()) outl(value, port);
}

int Open(const char* path, OpenMode mode) {
  return mode == OpenMode::kRead ? open(path, O_RDONLY | O_CLOEXEC) : open(path, O_RDWR | O_SYNC | O_CLOEXEC);
}

void Close(int descriptor) { close(descriptor); }

void* Map(int descriptor, uint64_t offset, size_t length, bool writable) {
  if (!writable) return Firmware().Map(descriptor, offset, length);
  void* address = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, static_cast<off_t>(offset));
  return address == MAP_FAILED ? nullptr : address;
}

void Unmap(void* address, size_t length) { munmap(address, length); }

long ReadAt(int descriptor, void* buffer, size_t count, uint64_t offset) {
  return pread(descriptor, buffer, count, static_cast<off_t>(offset));
}

size_t PageSize() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }

void RunCommand(const char* command) {
  if (system(command) != 0) return;  // the outcome is of no interest: the following open tells
}

void SleepMicroseconds(uint32_t microseconds) {
  const ShortSleep precise(microseconds);
  const timespec deadline = After(Now(), microseconds);
  // A signal ends the sleep, and must not shorten what the hardware needs.
  if (usleep(microseconds) == 0 || errno != EINTR) return;
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {
  }
}

}  // namespace platform

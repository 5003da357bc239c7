// SPDX-License-Identifier: MIT
// Starts, uses and stops the library many times, then makes many feature calls in one go, over the simulated board.
// Memory and descriptors must stay what they were once everything had been touched.
//
//     soak CYCLES CALLS [ROUNDS]     the status is 1 when something grew or a call failed
#include <malloc.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/faults/SmallBoard.h"
#include "vynlib/vynlib.h"

namespace {

constexpr uint64_t kWarmUp = 500;
// Bytes that measuring itself and the allocator's caches may move; a single leak per start would be megabytes.
constexpr size_t kHeapSlack = 4096;
constexpr size_t kResidentSlack = size_t{SOAK_RESIDENT_SLACK_KIB} << 10;

/// What the process holds.
struct Holdings {
  size_t heap = mallinfo2().uordblks;
  size_t resident = Resident();
  size_t descriptors = Descriptors();

  static size_t Resident() {
    size_t whole = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> whole >> resident;
    return resident * 4096;
  }
  static size_t Descriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(all), end(all)));
  }
};

bool Flat(const char* what, const Holdings& before, const small_board::Machine& machine) {
  const Holdings now;
  const int simulated = machine.board.OpenDescriptors() + machine.board.LiveMappings();
  const bool flat = now.heap <= before.heap + kHeapSlack && now.resident <= before.resident + kResidentSlack &&
                    now.descriptors == before.descriptors && simulated == 0;
  std::fprintf(stderr,
               "%s: heap %zu -> %zu bytes, resident %zu -> %zu KiB, descriptors %zu -> %zu, device files %d: %s\n",
               what, before.heap, now.heap, before.resident >> 10, now.resident >> 10, before.descriptors,
               now.descriptors, simulated, flat ? "flat" : "GREW");
  return flat;
}

/// Every kind of access once. Returns whether all of it worked.
bool Use() {
  uint8_t state = 0;
  float value = 0;
  return VynLibSetLVDSState(1, 2) && VynLibGetLVDSState(&state, 2) && state == 1 && VynLibSetWifiState(1, 2) &&
         VynLibGetWifiState(&state, 2) && state == 1 && VynLibSetUsbPwrState(1, 2) &&
         VynLibGetVoltage("+5V", &value, 2) && !VynLibGetOnboardTPMState(&state, 2) && VynLibDllGetLastError() == 21;
}

bool Cycle() { return VynLibDllInit() && Use() && VynLibDllUnInit(); }

/// Reads and sets in turn; each value that was set is read back.
bool Call(uint64_t number) {
  const auto wanted = static_cast<uint8_t>(number / 2 % 2);
  if (number % 2 == 0) return VynLibSetBTState(wanted, 2) != 0;
  uint8_t state = 0xFF;
  return VynLibGetBTState(&state, 2) != 0 && state == wanted;
}

template <typename Step>
bool Repeat(uint64_t count, Step step) {
  for (uint64_t i = 0; i < count; ++i)
    if (!step(i)) return false;
  return true;
}

/// Warms up, then runs `count` steps and compares what is held before and after them.
template <typename Step>
bool Soak(const char* what, uint64_t count, const small_board::Machine& machine, Step step) {
  bool works = Repeat(kWarmUp, step);
  const Holdings before;
  const auto start = std::chrono::steady_clock::now();
  works = works && Repeat(count, step);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  std::fprintf(stderr, "%s: %llu in %.1f s%s\n", what, static_cast<unsigned long long>(count), took.count(),
               works ? "" : ", and one FAILED");
  return Flat(what, before, machine) && works;
}

bool Round(uint64_t cycles, uint64_t calls) {
  const small_board::Machine machine("sis964");
  const small_board::Quiet quiet;
  bool good = Soak("start, use and stop", cycles, machine, [](uint64_t) { return Cycle(); });
  good &= VynLibDllInit() != 0;
  good &= Soak("feature calls", calls, machine, Call);
  good &= VynLibDllUnInit() != 0;
  return good;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) {
    std::fprintf(stderr, "usage: soak CYCLES CALLS [ROUNDS]\n");
    return 2;
  }
  const uint64_t cycles = std::strtoull(arguments[1], nullptr, 10), calls = std::strtoull(arguments[2], nullptr, 10);
  const uint64_t rounds = count > 3 ? std::strtoull(arguments[3], nullptr, 10) : 1;
  for (uint64_t round = 0; round < rounds; ++round)
    if (!Round(cycles, calls)) return 1;
  return 0;
}

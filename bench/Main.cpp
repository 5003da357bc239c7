// SPDX-License-Identifier: MIT
// vynbench: times every case with Google Benchmark. Other modes: `--verify` compares the accesses of library and
// baseline; `--account` prints accesses and allocations of one unit of each; `--instructions` runs each once between
// Callgrind marks (scripts/bench reads them); `--targets` prints the targets. The last three print JSON lines.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstring>

#include "bench/Case.h"
#include "bench/NullMachine.h"

namespace {

using bench::Case;
using bench::NullMachine;

std::vector<Case> AllCases() {
  std::vector<Case> all;
  for (auto group : {bench::TableCases, bench::CommandCases, bench::SensorCases, bench::SmbusCases, bench::ScriptCases,
                     bench::MemoryCases})
    for (Case& item : group()) all.push_back(std::move(item));
  return all;
}

/// The library greets on standard output; the figures go there too, so the greetings go elsewhere.
class Quiet {
 public:
  Quiet() : saved_(dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    close(null);
  }
  ~Quiet() {
    std::fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
  }
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;

 private:
  int saved_;
};

std::vector<bench::Access> LogOf(const std::function<void()>& run) {
  NullMachine& machine = NullMachine::Get();
  machine.log.clear();
  machine.logging = true;
  run();
  machine.logging = false;
  return machine.log;
}

/// The accesses of both sides, each from the state that `setUp` leaves.
bool SameAccesses(const Case& item) {
  const Quiet quiet;
  item.setUp();
  const auto library = LogOf(item.library);
  item.setUp();
  return library == LogOf(item.baseline);
}

int Verify() {
  int failed = 0;
  int passed = 0;
  for (const Case& item : AllCases()) {
    const bool same = SameAccesses(item);
    ++(same ? passed : failed);
    if (!same) std::printf("%s: library and baseline access the machine differently\n", item.name.c_str());
  }
  std::printf("%d passed, %d failed\n", passed, failed);
  return failed == 0 ? 0 : 1;
}

int Account() {
  for (const Case& item : AllCases()) {
    uint64_t accesses = 0;
    uint64_t allocations = 0;
    {
      const Quiet quiet;
      item.setUp();
      item.library();  // warm
      accesses = NullMachine::Get().accesses;
      allocations = bench::Allocations();
      item.library();
      accesses = NullMachine::Get().accesses - accesses;
      allocations = bench::Allocations() - allocations;
    }
    std::printf("{\"name\": \"%s\", \"accesses\": %g, \"allocations\": %g}\n", item.name.c_str(),
                static_cast<double>(accesses) / item.perCall, static_cast<double>(allocations) / item.perCall);
  }
  return 0;
}

/// Callgrind numbers its dumps: the library and the baseline of each case in turn.
int Instructions() {
  for (const Case& item : AllCases()) {
    const Quiet quiet;
    item.setUp();
    for (const bool library : {true, false}) {
      const auto& run = library ? item.library : item.baseline;
      run();  // warm
      CALLGRIND_ZERO_STATS;
      run();
      CALLGRIND_DUMP_STATS;
    }
  }
  return 0;
}

int Targets() {
  for (const Case& item : AllCases())
    std::printf("{\"name\": \"%s\", \"perCall\": %u, \"ratio\": %g, \"instructions\": %g}\n", item.name.c_str(),
                item.perCall, item.target, item.targetInstructions);
  return 0;
}

void Time(benchmark::State& state, const Case& item, bool library) {
  {
    const Quiet quiet;
    item.setUp();
  }
  const auto& run = library ? item.library : item.baseline;
  const bool greets = item.name.starts_with("init");
  const auto loop = [&] {
    for (auto _ : state) run();
  };
  if (greets) {
    const Quiet quiet;
    loop();
  } else {
    loop();
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * item.perCall);
}

int Benchmarks(int argc, char** argv) {
  for (const Case& item : AllCases())
    for (const bool library : {true, false})
      benchmark::RegisterBenchmark((item.name + (library ? "|library" : "|baseline")).c_str(),
                                   [item, library](benchmark::State& state) { Time(state, item, library); });
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const char* mode = argc > 1 ? argv[1] : "";
  if (std::strcmp(mode, "--verify") == 0) return Verify();
  if (std::strcmp(mode, "--account") == 0) return Account();
  if (std::strcmp(mode, "--instructions") == 0) return Instructions();
  if (std::strcmp(mode, "--targets") == 0) return Targets();
  return Benchmarks(argc, argv);
}

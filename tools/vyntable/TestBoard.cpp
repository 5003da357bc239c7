// SPDX-License-Identifier: MIT
// 'vyntable test': what a board's tables do on its simulated machine.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <memory>

#include <fmt/core.h>

#include "commandline/Streams.h"
#include "commandline/Words.h"
#include "vyntable/Commands.h"
#include "vyntable/Files.h"
#include "vyntable/Trial.h"

namespace vyntable {

using namespace diagnosis;
namespace {

struct Options {
  std::string board;
};

constexpr size_t kBarColumns = 40;

/// A bar on a terminal, once it has taken longer than a second.
class Bar {
 public:
  ~Bar() {
    if (shown_) commandline::Say("\r\x1B[K");
  }
  void Show(size_t done, size_t all) {
    if (!terminal_ || std::chrono::steady_clock::now() - begin_ < std::chrono::seconds(1)) return;
    const size_t filled = kBarColumns * done / all;
    shown_ = true;
    commandline::WriteAll(STDERR_FILENO, fmt::format("\r[{}{}] {}/{}", std::string(filled, '#'),
                                                     std::string(kBarColumns - filled, '.'), done, all));
  }

 private:
  const bool terminal_ = isatty(STDERR_FILENO) != 0;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  bool shown_ = false;
};

int Test(const Options& options) {
  const CompiledBoard board = CompileBoard(options.board);
  const auto iadt = std::ranges::find(board.images, Kind::kIadt, &Image::kind);
  if (iadt == board.images.end()) throw BadInput(options.board + ": describes no function of the board");
  for (const Remark& remark : board.images.front().remarks)
    commandline::Say(
        fmt::format("{}: {}\n", commandline::Printable(remark.place), commandline::Printable(remark.text)));
  TrialResult result;
  {
    Bar bar;
    result = TryBoard(options.board, *iadt, [&](size_t done, size_t all) { bar.Show(done, all); });
  }
  for (const Failure& failure : result.failures) {
    fmt::print("{}: {}\n", commandline::Printable(failure.place), commandline::Printable(failure.text));
    for (const std::string& access : failure.accesses) fmt::print("    {}\n", access);
  }
  fmt::print("{} tried, {} failed\n", result.tried, result.failures.size());
  return result.failures.empty() ? kExitOk : kExitFindings;
}

}  // namespace

Syntax DescribeTest() {
  const auto options = std::make_shared<Options>();
  return {.arguments = {{.name = "BOARD.toml", .target = &options->board, .help = "the board file", .required = true}},
          .run = [options] { return Test(*options); }};
}

}  // namespace vyntable

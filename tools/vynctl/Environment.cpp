// The library runs "modprobe msr" through a shell by its bare name: whatever steers either of them is kept away.
#include "Environment.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace vynctl {
namespace {

constexpr char kBoardVariable[] = "VYNLIB_BOARD";
constexpr char kLiveVariable[] = "VYNLIB_LIVE";
constexpr char kSafePath[] = "/usr/sbin:/usr/bin:/sbin:/bin";

constexpr std::string_view kKept[] = {
    "TERM", "COLUMNS", "LINES", "NO_COLOR", "LANG", "TZ", "NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID",
};
constexpr std::string_view kKeptPrefix = "LC_";

bool IsKept(std::string_view name) {
  return name.starts_with(kKeptPrefix) || std::find(std::begin(kKept), std::end(kKept), name) != std::end(kKept);
}

std::vector<std::pair<std::string, std::string>> KeptVariables() {
  std::vector<std::pair<std::string, std::string>> kept;
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
    const std::string_view text = *variable;
    const size_t equals = text.find('=');
    if (equals != std::string_view::npos && IsKept(text.substr(0, equals)))
      kept.emplace_back(text.substr(0, equals), text.substr(equals + 1));
  }
  return kept;
}

}  // namespace

void PrepareEnvironment(const LoadOptions& options) {
  const auto kept = KeptVariables();
  clearenv();
  for (const auto& [name, value] : kept) setenv(name.c_str(), value.c_str(), 1);
  setenv("PATH", kSafePath, 1);
  if (!options.board.empty()) setenv(kBoardVariable, options.board.c_str(), 1);
  if (options.live) setenv(kLiveVariable, "1", 1);
}

}  // namespace vynctl

// SPDX-License-Identifier: MIT
// Loading the library with an environment that cannot lead it astray, and asking it for names.
#include "board/Library.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <sstream>
#include <string_view>
#include <utility>

#include "board/BoardTables.h"
#include "board/Codes.h"
#include "doctor/Privilege.h"
#include "view/Text.h"
#include "vynlib/vynlib.h"

namespace vynctl {
namespace {

constexpr char kBoardVariable[] = "VYNLIB_BOARD";
constexpr char kLiveVariable[] = "VYNLIB_LIVE";
constexpr char kStateVariable[] = "VYNLIB_STATE";
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

/// What of the environment may reach the library and the commands that it runs as root: clears it but for the variables
/// that say how output looks, which time and words are meant, and where the service manager listens; sets a safe PATH,
/// and for a simulated board its description. The library runs "modprobe msr" through a shell by its bare name:
/// whatever steers either of them is kept away.
void PrepareEnvironment(const LoadOptions& options) {
  const auto kept = KeptVariables();
  clearenv();
  for (const auto& [name, value] : kept) setenv(name.c_str(), value.c_str(), 1);
  setenv("PATH", kSafePath, 1);
  if (!options.board.empty()) setenv(kBoardVariable, options.board.c_str(), 1);
  if (options.live) setenv(kLiveVariable, "1", 1);
  if (!options.state.empty()) setenv(kStateVariable, options.state.c_str(), 1);
}

constexpr char kRealLibrary[] = "libvynlib.so.1";
constexpr char kSimulatedLibrary[] = "libvynlib-sim.so.1";
constexpr char kModelPrefix[] = "ModelName::";

std::string LockFile(const LoadOptions& options) {
  if (options.noLock) return "";
  if (!options.lockFile.empty()) return options.lockFile;
  return options.board.empty() ? VYNLIB_LOCK_PATH : "";
}

void* Load(const char* fileName) {
  void* handle = dlopen(fileName, RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr)
    throw LibraryError(fmt::format("cannot load the library: {}; after installing it, run ldconfig", dlerror()), 0);
  return handle;
}

}  // namespace

Library::Library(const LoadOptions& options, OutputDivert& output)
    : fileName_(options.board.empty() ? kRealLibrary : kSimulatedLibrary), lock_(LockFile(options), options.wait) {
  PrepareEnvironment(options);
  handle_ = Load(fileName_);
  Bind();
  Start(options, output);
}

void Library::Start(const LoadOptions& options, OutputDivert& output) {
  const bool started = api_.Init() != 0;
  TakeMessages(output.Take());
  if (started) return;
  const uint64_t code = api_.GetLastError();
  std::string cause = options.board.empty() ? WhyNoPrivilege(doctor::LookAtPrivilege(doctor::Machine()))
                                            : Printable(BoardTables(options.board).Trouble());
  if (cause.empty()) cause = options.state.empty() ? WordsFor(code) : "the state file cannot be used";
  const std::string said = messages_.empty() ? "" : fmt::format("; it says: {}", fmt::join(messages_, ", "));
  throw LibraryError(fmt::format("the library does not start: {}{}", cause, said), code);
}

Library::~Library() { api_.UnInit(); }

void* Library::Symbol(const char* name) const {
  void* symbol = dlsym(handle_, name);
  if (symbol == nullptr) throw LibraryError(fmt::format("{} has no function {}", fileName_, name), 0);
  return symbol;
}

void Library::Bind() {
  const auto bind = [this]<typename Function>(Guarded<Function>& member, const char* name) {
    member = Find<Function>(name);
  };
  bind(api_.Init, "VynLibDllInit");
  // These touch no hardware.
  api_.UnInit = reinterpret_cast<decltype(api_.UnInit)>(Symbol("VynLibDllUnInit"));
  api_.GetLastError = reinterpret_cast<decltype(api_.GetLastError)>(Symbol("VynLibDllGetLastError"));
  bind(api_.GetVoltage, "VynLibGetVoltage");
  bind(api_.GetTemperature, "VynLibGetTemperature");
  bind(api_.GetFanSpeed, "VynLibGetFanSpeed");
  bind(api_.GetCurrent, "VynLibGetCurrent");
  bind(api_.GetVoltageNames, "VynLibGetVoltageNames");
  bind(api_.GetTemperatureNames, "VynLibGetTemperatureNames");
  bind(api_.GetFanSpeedNames, "VynLibGetFanSpeedNames");
  bind(api_.GetCurrentNames, "VynLibGetCurrentNames");
  bind(api_.WDTEnable, "VynLibWDTEnable");
  bind(api_.WDTDisable, "VynLibWDTDisable");
  bind(api_.WDTSetInterval, "VynLibWDTSetInterval");
  bind(api_.WDTGetInterval, "VynLibWDTGetInterval");
  bind(api_.WDTGetCountMode, "VynLibWDTGetCountMode");
  bind(api_.GetFanConfigNames, "VynLibGetFanConfigNames");
  bind(api_.GetFANModeSupport, "VynLibGetFANModeSupport");
  bind(api_.GetFANConfig, "VynLibGetFANConfig");
  bind(api_.SetFANConfig, "VynLibSetFANConfig");
  bind(api_.TableSupported, "VynLibTableSupported");
  bind(api_.GetWhichIOToBeUse, "VynLibGetWhichIOToBeUse");
}

void Library::TakeMessages(const std::string& printed) {
  std::istringstream lines(printed);
  for (std::string line; std::getline(lines, line);) {
    const std::string_view text = Trim(line);
    if (text.starts_with(kModelPrefix)) {
      model_ = Printable(Trim(text.substr(sizeof kModelPrefix - 1)));
    } else if (!text.empty()) {
      messages_.push_back(Printable(text));
    }
  }
}

std::vector<std::string> ListNames(const NamesFunction& getNames) {
  uint8_t count = 0;
  if (getNames(nullptr, &count, VYNLIB_PERFORM) == 0 || count == 0) return {};
  std::vector<std::array<char, VYNLIB_NAME_BYTES>> buffers(count);
  std::vector<char*> pointers;
  for (auto& buffer : buffers) pointers.push_back(buffer.data());
  if (getNames(pointers.data(), &count, VYNLIB_PERFORM) == 0) return {};
  std::vector<std::string> names;
  for (const auto& buffer : buffers) names.emplace_back(buffer.data(), strnlen(buffer.data(), buffer.size()));
  return names;
}

std::string DoctorHint(const LoadOptions& options) { return options.board.empty() ? "; run 'vynctl doctor'" : ""; }

}  // namespace vynctl

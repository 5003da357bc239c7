#include "Library.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <sstream>

#include "Codes.h"
#include "Environment.h"
#include "StartFailure.h"
#include "Text.h"
#include "board/BoardTables.h"

namespace vynctl {
namespace {

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
  if (cause.empty()) cause = WordsFor(code);
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

}  // namespace vynctl

// SPDX-License-Identifier: MIT
/// The VynLib library, loaded at run time: the real one or the simulated one, initialised for as long as this exists.
/// Programs that use the real one take turns.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "board/HardwareLock.h"
#include "view/Output.h"
#include "vynlib/vynlib.h"

namespace vynctl {

/// The functions that the tool calls by name; the feature states are reached through Library::Find() by their rows.
/// Those that may touch the hardware take their turn.
struct Api {
  Guarded<decltype(::VynLibDllInit)> Init;
  decltype(&::VynLibDllUnInit) UnInit;
  decltype(&::VynLibDllGetLastError) GetLastError;
  Guarded<decltype(::VynLibGetVoltage)> GetVoltage;
  Guarded<decltype(::VynLibGetTemperature)> GetTemperature;
  Guarded<decltype(::VynLibGetFanSpeed)> GetFanSpeed;
  Guarded<decltype(::VynLibGetCurrent)> GetCurrent;
  Guarded<decltype(::VynLibGetVoltageNames)> GetVoltageNames;
  Guarded<decltype(::VynLibGetTemperatureNames)> GetTemperatureNames;
  Guarded<decltype(::VynLibGetFanSpeedNames)> GetFanSpeedNames;
  Guarded<decltype(::VynLibGetCurrentNames)> GetCurrentNames;
  Guarded<decltype(::VynLibWDTEnable)> WDTEnable;
  Guarded<decltype(::VynLibWDTDisable)> WDTDisable;
  Guarded<decltype(::VynLibWDTSetInterval)> WDTSetInterval;
  Guarded<decltype(::VynLibWDTGetInterval)> WDTGetInterval;
  Guarded<decltype(::VynLibWDTGetCountMode)> WDTGetCountMode;
  Guarded<decltype(::VynLibGetFanConfigNames)> GetFanConfigNames;
  Guarded<decltype(::VynLibGetFANModeSupport)> GetFANModeSupport;
  Guarded<decltype(::VynLibGetFANConfig)> GetFANConfig;
  Guarded<decltype(::VynLibSetFANConfig)> SetFANConfig;
  Guarded<decltype(::VynLibTableSupported)> TableSupported;
  Guarded<decltype(::VynLibGetWhichIOToBeUse)> GetWhichIOToBeUse;
};

using NamesFunction = Guarded<int(char** names, uint8_t* count, uint8_t selector)>;

/// The library cannot be loaded or does not start.
class LibraryError : public std::runtime_error {
 public:
  LibraryError(const std::string& what, uint64_t libraryCode) : std::runtime_error(what), code(libraryCode) {}
  uint64_t code;  ///< the library's code, 0 when it could not even be loaded
};

struct LoadOptions {
  std::string board;  ///< board description to simulate; empty: the real hardware
  bool live = false;  ///< simulated readings move
  std::string state;  ///< file that keeps what was changed on the simulated board; empty: none
  bool noLock = false;
  std::string lockFile;  ///< empty: the one of all programs for the real hardware, none for a simulated board
  double wait = 10;      ///< seconds to wait for the hardware
};

class Library {
 public:
  /// Prepares the environment, loads the library by its soname and calls VynLibDllInit.
  /// @throws LibraryError, LockError
  Library(const LoadOptions& options, OutputDivert& output);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  const Api& Functions() const { return api_; }
  uint64_t LastError() const { return api_.GetLastError(); }

  /// The exported function `name` of type `Function`.
  /// @throws LibraryError when the library does not have it
  template <typename Function>
  Guarded<Function> Find(const char* name) const {
    return {reinterpret_cast<Function*>(Symbol(name)), lock_};
  }

  /// The board's model name as the library printed it at its start, printable ASCII; empty when it has none.
  const std::string& Model() const { return model_; }
  /// The other lines that it printed then.
  const std::vector<std::string>& Messages() const { return messages_; }
  const char* FileName() const { return fileName_; }

  /// How the calls wait for the hardware.
  HardwareLock& Lock() const { return lock_; }

 private:
  void* Symbol(const char* name) const;
  void Bind();
  void Start(const LoadOptions& options, OutputDivert& output);
  void TakeMessages(const std::string& printed);

  const char* fileName_;
  mutable HardwareLock lock_;
  void* handle_;
  Api api_{};
  std::string model_;
  std::vector<std::string> messages_;
};

/// Asks `getNames` for the count and then for that many names, as they stand in the firmware. Empty when the board has
/// none; the library's last error then says why.
std::vector<std::string> ListNames(const NamesFunction& getNames);

/// What ends a message about a failure of which 'vynctl doctor' knows more; empty on a simulated board.
std::string DoctorHint(const LoadOptions& options);

}  // namespace vynctl

/// The VynLib library, loaded at run time: the real one or the simulated one, initialised for as long as this exists.
/// Runs of the tool on the real one take turns.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "HardwareLock.h"
#include "OutputDivert.h"
#include "vynlib/vynlib.h"

namespace vynctl {

/// The functions that the tool calls by name; the feature states are reached through Library::Find() by their rows.
struct Api {
  decltype(&::VynLibDllInit) Init;
  decltype(&::VynLibDllUnInit) UnInit;
  decltype(&::VynLibDllGetLastError) GetLastError;
  decltype(&::VynLibGetVoltage) GetVoltage;
  decltype(&::VynLibGetTemperature) GetTemperature;
  decltype(&::VynLibGetFanSpeed) GetFanSpeed;
  decltype(&::VynLibGetCurrent) GetCurrent;
  decltype(&::VynLibGetVoltageNames) GetVoltageNames;
  decltype(&::VynLibGetTemperatureNames) GetTemperatureNames;
  decltype(&::VynLibGetFanSpeedNames) GetFanSpeedNames;
  decltype(&::VynLibGetCurrentNames) GetCurrentNames;
  decltype(&::VynLibWDTEnable) WDTEnable;
  decltype(&::VynLibWDTDisable) WDTDisable;
  decltype(&::VynLibWDTSetInterval) WDTSetInterval;
  decltype(&::VynLibWDTGetInterval) WDTGetInterval;
  decltype(&::VynLibWDTGetCountMode) WDTGetCountMode;
  decltype(&::VynLibGetFanConfigNames) GetFanConfigNames;
  decltype(&::VynLibGetFANModeSupport) GetFANModeSupport;
  decltype(&::VynLibGetFANConfig) GetFANConfig;
  decltype(&::VynLibSetFANConfig) SetFANConfig;
  decltype(&::VynLibTableSupported) TableSupported;
  decltype(&::VynLibGetWhichIOToBeUse) GetWhichIOToBeUse;
};

/// The library cannot be loaded or does not start.
class LibraryError : public std::runtime_error {
 public:
  LibraryError(const std::string& what, uint64_t libraryCode) : std::runtime_error(what), code(libraryCode) {}
  uint64_t code;  ///< the library's code, 0 when it could not even be loaded
};

struct LoadOptions {
  std::string board;  ///< board description to simulate; empty: the real hardware
  bool live = false;  ///< simulated readings move
};

class Library {
 public:
  /// Prepares the environment, loads the library by its soname and calls VynLibDllInit.
  /// @throws LibraryError
  Library(const LoadOptions& options, OutputDivert& output);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  const Api& Functions() const { return api_; }
  uint64_t LastError() const { return api_.GetLastError(); }

  /// The exported function `name` as a pointer of type `Function*`.
  /// @throws LibraryError when the library does not have it
  template <typename Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(Symbol(name));
  }

  /// The board's model name as the library printed it at its start, printable ASCII; empty when it has none.
  const std::string& Model() const { return model_; }
  /// The other lines that it printed then.
  const std::vector<std::string>& Messages() const { return messages_; }
  const char* FileName() const { return fileName_; }

  /// While one exists, other runs of the tool may use the hardware; this one must not.
  class Idle {
   public:
    explicit Idle(const Library& library) : lock_(library.lock_) { lock_.Give(); }
    ~Idle() { lock_.Take(); }
    Idle(const Idle&) = delete;
    Idle& operator=(const Idle&) = delete;

   private:
    const HardwareLock& lock_;
  };

 private:
  void* Symbol(const char* name) const;
  void Bind();
  void TakeMessages(const std::string& printed);

  const char* fileName_;
  HardwareLock lock_;
  void* handle_;
  Api api_{};
  std::string model_;
  std::vector<std::string> messages_;
};

}  // namespace vynctl

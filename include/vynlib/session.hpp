// SPDX-License-Identifier: MIT
/// The started library, and turns at calling it. Part of vynlib/vynlib.hpp, which is what programs include.
#ifndef VYNLIB_SESSION_HPP
#define VYNLIB_SESSION_HPP

#include <signal.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "vynlib/error_text.h"
#include "vynlib/lock.h"
#include "vynlib/result.hpp"
#include "vynlib/vynlib.h"

namespace vynlib {

/// How a board takes turns with other programs.
struct Settings {
  std::string lockFile = VYNLIB_LOCK_PATH;  ///< empty: with none, as a simulated board needs
  std::chrono::milliseconds wait{10000};    ///< for others to be done with the hardware, per call
};

namespace detail {

inline Error ErrorOf(std::uint64_t code) { return {code, vynlib_error_text(code)}; }

/// The library is one for the whole process: who calls it, or looks at its error code, holds this.
inline std::mutex& CallMutex() {
  static std::mutex mutex;
  return mutex;
}

/// Whether a board is open. Guarded by CallMutex().
inline bool& IsInUse() {
  static bool inUse = false;
  return inUse;
}

/// Signals wait for as long as this exists: one that ended the program in a call would leave the hardware there.
class DeferredSignals {
 public:
  DeferredSignals() {
    sigset_t deferred;
    sigfillset(&deferred);
    for (int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) sigdelset(&deferred, fault);
    pthread_sigmask(SIG_BLOCK, &deferred, &former_);
  }
  ~DeferredSignals() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
  DeferredSignals(const DeferredSignals&) = delete;
  DeferredSignals& operator=(const DeferredSignals&) = delete;

 private:
  sigset_t former_;
};

/// The lock of all programs, or none.
class MachineLock {
 public:
  explicit MachineLock(const Settings& settings) : settings_(settings) {}
  ~MachineLock() {
    if (opened_) vynlib_lock_close(&lock_);
  }
  MachineLock(const MachineLock&) = delete;
  MachineLock& operator=(const MachineLock&) = delete;

  Result<void> Open() {
    if (settings_.lockFile.empty()) return {};
    const int outcome = vynlib_lock_open(&lock_, settings_.lockFile.c_str());
    const int why = errno;
    opened_ = true;
    if (outcome == VYNLIB_LOCK_OK) return {};
    const char* words =
        outcome == VYNLIB_LOCK_UNSAFE ? "it must be a regular file of root or of this user" : std::strerror(why);
    return Error{0, "cannot lock " + settings_.lockFile + ": " + words};
  }

  /// Signals act while it waits, and wait for as long as `deferred` holds something.
  Result<void> Take(std::optional<DeferredSignals>* deferred) {
    const auto end = Clock::now() + settings_.wait;
    int outcome = VYNLIB_LOCK_OK, why = 0;
    do {
      deferred->emplace();
      if (opened_) outcome = vynlib_lock_take(&lock_, kStepMilliseconds);
      why = errno;
      if (outcome == VYNLIB_LOCK_OK) return {};
      deferred->reset();
    } while (outcome == VYNLIB_LOCK_TIMEOUT && Clock::now() < end);
    if (outcome == VYNLIB_LOCK_TIMEOUT) return Error{0, Holder() + " has had the hardware for " + Waited()};
    return Error{0, std::string("cannot lock the hardware: ") + std::strerror(why)};
  }
  void Give() {
    if (opened_) vynlib_lock_give(&lock_);
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr int kStepMilliseconds = 20;

  std::string Holder() const {
    const vynlib_lock_owner holder = vynlib_lock_holder(&lock_);
    return holder.pid != 0 ? holder.name + (" (pid " + std::to_string(holder.pid) + ")") : "another program";
  }
  std::string Waited() const { return std::to_string(settings_.wait.count()) + " ms"; }

  const Settings settings_;
  vynlib_lock lock_;
  bool opened_ = false;
};

/// The code of a call: of a function that returns a truth value, and of one whose outcome is the last error alone.
template <typename... Parameters, typename... Arguments>
std::uint64_t CodeOf(int (*function)(Parameters...), Arguments... arguments) {
  return function(arguments...) != 0 ? VYNLIB_OK : VynLibDllGetLastError();
}
template <typename... Parameters, typename... Arguments>
std::uint64_t CodeOf(void (*function)(Parameters...), Arguments... arguments) {
  function(arguments...);
  return VynLibDllGetLastError();
}

/// The started library. Boards and what comes from them share it; it ends with the board.
class Session {
 public:
  explicit Session(const Settings& settings) : lock_(settings) {}

  Result<void> Start() {
    if (Result<void> opened = lock_.Open(); !opened) return opened;
    return InTurn([this]() -> Result<void> {
      if (IsInUse()) return Error{0, "this program has a board open already"};
      if (VynLibDllInit() == 0) return ErrorOf(VynLibDllGetLastError());
      IsInUse() = open_ = true;
      return {};
    });
  }

  void End() {
    const DeferredSignals deferred;
    const std::lock_guard<std::mutex> guard(CallMutex());
    if (!open_) return;
    VynLibDllUnInit();
    IsInUse() = open_ = false;
  }

  /// Runs `calls`, which returns the code that they came to, with the library to itself.
  template <typename Calls>
  Result<void> Perform(Calls calls) {
    return InTurn([&]() -> Result<void> {
      const std::uint64_t code = open_ ? calls() : VYNLIB_ERROR_NOT_INITIALISED;
      if (code != VYNLIB_OK) return ErrorOf(code);
      return {};
    });
  }
  template <typename Function, typename... Arguments>
  Result<void> Call(Function* function, Arguments... arguments) {
    return Perform([&] { return CodeOf(function, arguments...); });
  }
  /// The same, for a function that stores a `Value`.
  template <typename Value, typename Calls>
  Result<Value> Read(Calls calls) {
    Value value{};
    const Result<void> done = Perform([&] { return calls(&value); });
    if (!done) return done.error();
    return value;
  }

 private:
  template <typename Body>
  Result<void> InTurn(Body body) {
    std::optional<DeferredSignals> deferred;
    if (Result<void> taken = lock_.Take(&deferred); !taken) return taken;
    const Given given{lock_};
    const std::lock_guard<std::mutex> guard(CallMutex());
    return body();
  }
  /// The lock is given back before signals act.
  struct Given {
    MachineLock& lock;
    ~Given() { lock.Give(); }
  };

  MachineLock lock_;
  bool open_ = false;  ///< guarded by CallMutex()
};

using SharedSession = std::shared_ptr<Session>;
using NamesFunction = int(char** names, std::uint8_t* count, std::uint8_t selector);

/// The names that a names function lists; none where the board has none.
inline Result<std::vector<std::string>> Names(Session& session, NamesFunction* function) {
  std::vector<std::array<char, VYNLIB_NAME_BYTES>> buffers;
  const Result<void> listed = session.Perform([&]() -> std::uint64_t {
    std::uint8_t count = 0;
    const std::uint64_t code = CodeOf(function, static_cast<char**>(nullptr), &count, std::uint8_t{VYNLIB_PERFORM});
    if (code != VYNLIB_OK) return VYNLIB_SUB(code) == 0 ? std::uint64_t{VYNLIB_OK} : code;
    buffers.resize(count);
    std::vector<char*> pointers;
    for (auto& buffer : buffers) pointers.push_back(buffer.data());
    return count == 0 ? VYNLIB_OK : CodeOf(function, pointers.data(), &count, std::uint8_t{VYNLIB_PERFORM});
  });
  if (!listed) return listed.error();
  std::vector<std::string> names;
  for (const auto& buffer : buffers) names.emplace_back(buffer.data());
  return names;
}

}  // namespace detail
}  // namespace vynlib

#endif

/// A function of the library that is called with the hardware to itself.
#pragma once

#include "HardwareLock.h"

namespace vynctl {

template <typename Function>
class Guarded;

/// Called like the function. Each call waits for its turn, and throws what HardwareLock::Turn throws.
template <typename Result, typename... Arguments>
class Guarded<Result(Arguments...)> {
 public:
  Guarded() = default;
  Guarded(Result (*function)(Arguments...), HardwareLock& lock) : function_(function), lock_(&lock) {}

  Result operator()(Arguments... arguments) const {
    const HardwareLock::Turn turn(*lock_);
    return function_(arguments...);
  }

 private:
  Result (*function_)(Arguments...) = nullptr;
  HardwareLock* lock_ = nullptr;
};

}  // namespace vynctl

// SPDX-License-Identifier: MIT
/// The boundary that keeps C++ exceptions from the callers of the C interface.
#pragma once

#include "api/Library.h"

namespace api {

/// Runs the body of an exported function. Memory that cannot be had ends the call with code 1 and a result of 0.
template <typename Body>
auto Guarded(Body body) noexcept {
  try {
    return body();
  } catch (...) {
    LastErrorCode = VYNLIB_ERROR_NOT_INITIALISED;
    return decltype(body())();
  }
}

}  // namespace api

// SPDX-License-Identifier: MIT
/// Width-generic access for the hw sources.
#pragma once

#include <cstdint>

#include "hw/Platform.h"

namespace hw {

/// What a failed read of one value yields.
template <typename T>
inline constexpr T kAllOnes = static_cast<T>(~T{0});

template <typename T>
T In(uint16_t port) {
  if constexpr (sizeof(T) == 1) return platform::In8(port);
  if constexpr (sizeof(T) == 2) return platform::In16(port);
  if constexpr (sizeof(T) == 4) return platform::In32(port);
}

template <typename T>
void Out(uint16_t port, T value) {
  if constexpr (sizeof(T) == 1) platform::Out8(port, value);
  if constexpr (sizeof(T) == 2) platform::Out16(port, value);
  if constexpr (sizeof(T) == 4) platform::Out32(port, value);
}

}  // namespace hw

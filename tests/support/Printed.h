// SPDX-License-Identifier: MIT
/// What an action prints on standard output.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace support {

template <typename Action>
std::string Printed(Action action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

}  // namespace support

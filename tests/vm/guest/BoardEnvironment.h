// SPDX-License-Identifier: MIT
/// Brings the library up once for a whole test program and takes it down at the end.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vynlib/vynlib.h>

#include <string>

#include "Machine.h"

class BoardEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    guest::AllowPorts();
    ::testing::internal::CaptureStdout();
    initResult = VynLibDllInit();
    initCode = VynLibDllGetLastError();
    initOutput = ::testing::internal::GetCapturedStdout();
  }
  void TearDown() override { EXPECT_EQ(1, VynLibDllUnInit()); }

  static inline int initResult = -1;
  static inline uint64_t initCode = ~0ull;
  static inline std::string initOutput;
};

inline uint64_t Code() { return VynLibDllGetLastError(); }

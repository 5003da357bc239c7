// SPDX-License-Identifier: MIT
// The shared library itself, by its exported functions, over a trapped machine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/TrappedMachine.h"
#include "vynlib/vynlib.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// What `action` prints on standard output.
template <typename Action>
std::string Printed(Action action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

/// A BIOS information record: signature, two unused bytes, model name, and a last byte that makes the sum 0.
std::vector<uint8_t> BiosRecord(const std::string& model) {
  std::vector<uint8_t> record(64);
  const std::string head = "$CN1368$..";
  std::copy(head.begin(), head.end(), record.begin());
  std::copy(model.begin(), model.end(), record.begin() + 10);
  unsigned sum = 0;
  for (const uint8_t byte : record) sum += byte;
  record[63] = static_cast<uint8_t>(0x100 - sum % 0x100);
  return record;
}

}  // namespace

TEST(ProductionLibrary, WithoutPrivilegeFailsToStart) {
  TrappedMachine machine;
  machine.privileged = false;
  int result = 1;
  EXPECT_EQ(Printed([&] { result = VynLibDllInit(); }), "Please run as root!\n");
  EXPECT_EQ(result, 0);
  EXPECT_EQ(VynLibDllGetLastError(), 1u);
  EXPECT_THAT(machine.Log(), ElementsAre("iopl 3", "iopl 0"));
}

TEST(ProductionLibrary, StartsOnFirmwareInAMemoryImageAndLetsGoOfEverything) {
  TrappedMachine machine;
  machine.StoreMemory(0xF0123, BiosRecord("TRAPPED-1"));
  EXPECT_THAT(Printed([] { EXPECT_EQ(VynLibDllInit(), 1); }), HasSubstr("ModelName::TRAPPED-1\n"));
  EXPECT_EQ(machine.Log().front(), "iopl 3");
  EXPECT_EQ(machine.Log()[1], "open /dev/mem O_RDONLY|O_CLOEXEC");
  EXPECT_EQ(VynLibDllUnInit(), 1);
  EXPECT_EQ(machine.Log().back(), "iopl 0");
  EXPECT_EQ(machine.OpenDescriptors(), 0u);
  EXPECT_EQ(machine.LiveMappings(), 0u);
}

// SPDX-License-Identifier: MIT
// The board that the simulated library takes from the environment.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "hw/Platform.h"
#include "sim/Board.h"

namespace {

class DefaultBoard : public testing::Test {
 protected:
  ~DefaultBoard() override {
    unsetenv("VYNLIB_BOARD");
    unsetenv("VYNLIB_LIVE");
    sim::Board::MakeCurrent(nullptr);
  }
  void Name(const char* file) {
    setenv("VYNLIB_BOARD", file, 1);
    sim::Board::MakeCurrent(nullptr);
  }
};

TEST_F(DefaultBoard, IsTheFileThatTheEnvironmentNames) {
  Name(REFERENCE_BOARD);
  EXPECT_EQ(platform::SetIoPrivilegeLevel(3), 0);
  EXPECT_FALSE(sim::Board::Current().logging);
}

TEST_F(DefaultBoard, IsLiveWhenTheEnvironmentSaysSo) {
  setenv("VYNLIB_LIVE", "1", 1);
  Name(REFERENCE_BOARD);
  EXPECT_TRUE(sim::Board::Current().live);
}

TEST_F(DefaultBoard, IsUnprivilegedWithOneLineWhenTheFileIsBroken) {
  Name("/nonexistent/b.toml");
  testing::internal::CaptureStderr();
  EXPECT_NE(platform::SetIoPrivilegeLevel(3), 0);
  EXPECT_EQ(platform::In8(0x80), 0xFF);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "/nonexistent/b.toml:1: expected a readable board file: No such file or directory\n");
}

/// The same with a file of this content in the place of a board's.
std::string Complaint(const std::string& text) {
  const std::string file = testing::TempDir() + "default-board.toml";
  std::ofstream(file) << text;
  setenv("VYNLIB_BOARD", file.c_str(), 1);
  sim::Board::MakeCurrent(nullptr);
  testing::internal::CaptureStderr();
  const int refused = platform::SetIoPrivilegeLevel(3);
  const std::string said = testing::internal::GetCapturedStderr();
  const size_t name = said.rfind(file, 0) == 0 ? file.size() : 0;
  return (refused != 0 ? "refused" : "taken") + said.substr(name);
}

TEST_F(DefaultBoard, IsRefusedWhereACallWouldNeverEnd) {
  const std::string feature = "[iadt]\noem_id = \"ACME\"\n[[feature]]\nfunction = \"BTState\"\ncommands = [\n";
  EXPECT_EQ(
      Complaint(feature + "  { port = 0x80, set = \"write\" },\n  { port = 0x80, opcode = 0x07 },\n]\n"),
      "refused:7: expected a command that ends: this one is run for ever, for its addressing form does not fit its "
      "kind\n");
  // One that reads fails, and one with too few bytes is not run.
  EXPECT_EQ(Complaint(feature + "  { port = 0x80, get = \"read\", set = \"read\", opcode = 0x07 },\n]\n"), "taken");
  EXPECT_EQ(Complaint(feature + "  { raw = \"00 00 00\" },\n]\n"), "taken");
}

TEST_F(DefaultBoard, IsTakenWithoutAWordWhereNoMakerIsNamed) { EXPECT_EQ(Complaint("[iadt]\n"), "taken"); }

TEST_F(DefaultBoard, IsUnprivilegedWithOneLineWithoutAFile) {
  Name("");
  testing::internal::CaptureStderr();
  EXPECT_NE(platform::SetIoPrivilegeLevel(3), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "VYNLIB_BOARD names no board file\n");
}

}  // namespace

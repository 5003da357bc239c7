// The board that the simulated library takes from the environment.
#include <gtest/gtest.h>

#include <cstdlib>

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

TEST_F(DefaultBoard, IsUnprivilegedWithOneLineWithoutAFile) {
  Name("");
  testing::internal::CaptureStderr();
  EXPECT_NE(platform::SetIoPrivilegeLevel(3), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "VYNLIB_BOARD names no board file\n");
}

}  // namespace

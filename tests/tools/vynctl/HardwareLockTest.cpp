#include "HardwareLock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <fstream>

namespace vynctl {
namespace {

class HardwareLockTest : public testing::Test {
 protected:
  HardwareLockTest()
      : path(testing::TempDir() + "vynctl-lock-" + testing::UnitTest::GetInstance()->current_test_info()->name()) {
    std::ofstream file(path);
  }
  ~HardwareLockTest() override { unlink(path.c_str()); }

  /// Could another process have the lock now?
  bool IsFree() const {
    const int other = open(path.c_str(), O_RDONLY);
    const bool free = flock(other, LOCK_EX | LOCK_NB) == 0;
    close(other);
    return free;
  }

  const std::string path;
};

TEST_F(HardwareLockTest, KeepsOthersOutUntilItIsGiven) {
  const HardwareLock lock(path);
  EXPECT_TRUE(IsFree());
  lock.Take();
  EXPECT_FALSE(IsFree());
  lock.Give();
  EXPECT_TRUE(IsFree());
}

TEST_F(HardwareLockTest, IsGivenAtItsEnd) {
  { HardwareLock(path).Take(); }
  EXPECT_TRUE(IsFree());
}

TEST_F(HardwareLockTest, DoesNothingWithoutAFile) {
  for (const char* missing : {"", "/nowhere/lock"}) {
    const HardwareLock lock(missing);
    lock.Take();
    lock.Give();
  }
  EXPECT_TRUE(IsFree());
}

}  // namespace
}  // namespace vynctl

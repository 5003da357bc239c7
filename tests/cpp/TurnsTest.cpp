// SPDX-License-Identifier: MIT
// How a board takes turns with other programs, and what it does about signals meanwhile.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Reference.h"

using testing::HasSubstr;
using vynlib::Board;
using vynlib::Result;
using vynlib::Settings;
using namespace std::chrono_literals;

namespace {

/// A lock file of the test's own.
class Turns : public testing::Test {
 protected:
  Turns() { remove(path.c_str()); }
  ~Turns() override { remove(path.c_str()); }

  const std::string path = testing::TempDir() + "vynlib-cpp-" + std::to_string(getpid()) + ".lock";
};

/// Somebody else, who has the lock for as long as this exists.
class Other {
 public:
  explicit Other(const std::string& path) {
    vynlib_lock_open(&lock_, path.c_str());
    vynlib_lock_take(&lock_, 1000);
  }
  ~Other() {
    vynlib_lock_give(&lock_);
    vynlib_lock_close(&lock_);
  }

 private:
  vynlib_lock lock_;
};

bool IsDeferred(int number) {
  sigset_t mask;
  pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  return sigismember(&mask, number) == 1;
}

}  // namespace

TEST_F(Turns, EndWhenSomebodyElseKeepsTheHardware) {
  const Result<Board> board = OpenReference({path, 50ms});
  ASSERT_TRUE(board);
  {
    const Other other(path);
    const Result<double> reading = board->voltage("+12V").Read();
    ASSERT_FALSE(reading);
    EXPECT_EQ(reading.error().code, 0u);
    EXPECT_THAT(reading.error().words,
                HasSubstr("(pid " + std::to_string(getpid()) + ") has had the hardware for 50 ms"));
  }
  EXPECT_TRUE(board->voltage("+12V").Read());
}

TEST_F(Turns, CoverTheStart) {
  const Other other(path);
  EXPECT_THAT(OpenReference({path, 0ms}).error().words, HasSubstr("has had the hardware"));
}

TEST_F(Turns, GiveTheHardwareBackAfterEachCall) {
  const Result<Board> board = OpenReference({path, 1000ms});
  ASSERT_TRUE(board->voltage("+12V").Read());
  vynlib_lock lock;
  ASSERT_EQ(vynlib_lock_open(&lock, path.c_str()), VYNLIB_LOCK_OK);
  EXPECT_EQ(vynlib_lock_take(&lock, 0), VYNLIB_LOCK_OK);
  vynlib_lock_give(&lock);
  vynlib_lock_close(&lock);
}

TEST_F(Turns, RefuseAFileThatIsNotSafe) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const Result<Board> board = OpenReference({path, 0ms});
  ASSERT_FALSE(board);
  EXPECT_EQ(board.error().words, "cannot lock " + path + ": it must be a regular file of root or of this user");
}

TEST_F(Turns, SayWhyThereIsNoFile) {
  const Result<Board> board = OpenReference({"/nonexistent/lock", 0ms});
  ASSERT_FALSE(board);
  EXPECT_EQ(board.error().words, "cannot lock /nonexistent/lock: No such file or directory");
}

TEST_F(Turns, DeferSignalsButNotFaults) {
  setenv("VYNLIB_BOARD", REFERENCE_BOARD, 1);
  vynlib::detail::Session session(Settings{path, 1000ms});
  ASSERT_TRUE(session.Start());
  bool termination = false, fault = true;
  ASSERT_TRUE(session.Perform([&] {
    termination = IsDeferred(SIGTERM);
    fault = IsDeferred(SIGSEGV);
    return VYNLIB_OK;
  }));
  session.End();
  EXPECT_TRUE(termination);
  EXPECT_FALSE(fault);
  EXPECT_FALSE(IsDeferred(SIGTERM));
}

// SPDX-License-Identifier: MIT
// The lock among threads, among processes, and before files that must not be trusted.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Process.h"
#include "vynlib/lock.h"

namespace {

constexpr int kPatience = 60000;  // milliseconds, for what must not fail on a busy machine

class Lock : public testing::Test {
 protected:
  Lock()
      : path(testing::TempDir() + "vynlib-" + testing::UnitTest::GetInstance()->current_test_info()->name() +
             std::to_string(getpid())) {}
  ~Lock() override { unlink(path.c_str()); }

  std::string Content() const {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  }
  mode_t Mode() const {
    struct stat status {};
    stat(path.c_str(), &status);
    return status.st_mode & 07777;
  }

  const std::string path;
};

/// Opened for the length of a test.
class Opened {
 public:
  explicit Opened(const std::string& path) : code(vynlib_lock_open(&lock, path.c_str())) {}
  ~Opened() { vynlib_lock_close(&lock); }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;

  vynlib_lock lock;
  const int code;
};

/// Takes the lock in a process of its own and never gives it back.
bool HoldForever(const std::string& path, const Flag& held) {
  Opened own(path);
  if (vynlib_lock_take(&own.lock, kPatience) != VYNLIB_LOCK_OK) return false;
  held.Raise();
  for (;;) pause();
}

double CpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

}  // namespace

TEST_F(Lock, FileSaysWhoHasIt) {
  Opened own(path);
  EXPECT_EQ("", Content());
  ASSERT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&own.lock, 0));
  EXPECT_EQ(std::to_string(getpid()) + " lock_test\n", Content());
  vynlib_lock_give(&own.lock);
  EXPECT_EQ("", Content());
}

TEST_F(Lock, FileIsForItsOwnerAndGroup) {
  const mode_t mask = umask(077);
  Opened own(path);
  umask(mask);
  EXPECT_EQ(VYNLIB_LOCK_OK, own.code);
  EXPECT_EQ(0660u, Mode());
}

TEST_F(Lock, FileOutlivesItsUsers) {
  { Opened own(path); }
  EXPECT_EQ(0, access(path.c_str(), F_OK));
}

TEST_F(Lock, KeepsAnotherProcessOutUntilItIsGiven) {
  Opened own(path);
  ASSERT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&own.lock, 0));
  Process other([&] {
    Opened lock(path);
    const long long start = vynlib_lock_milliseconds();
    const bool refused = vynlib_lock_take(&lock.lock, 30) == VYNLIB_LOCK_TIMEOUT;
    const bool waited = vynlib_lock_milliseconds() - start >= 30;
    return refused && waited && vynlib_lock_holder(&lock.lock).pid == getppid();
  });
  EXPECT_TRUE(other.Succeeded());
  vynlib_lock_give(&own.lock);
  Process next([&] {
    Opened lock(path);
    return vynlib_lock_take(&lock.lock, 0) == VYNLIB_LOCK_OK;
  });
  EXPECT_TRUE(next.Succeeded());
}

TEST_F(Lock, KeepsAnotherThreadOut) {
  Opened own(path);
  ASSERT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&own.lock, 0));
  std::thread([&] { EXPECT_EQ(VYNLIB_LOCK_TIMEOUT, vynlib_lock_take(&own.lock, 10)); }).join();
  EXPECT_EQ(VYNLIB_LOCK_TIMEOUT, vynlib_lock_take(&own.lock, 0)) << "nor is it taken twice";
  vynlib_lock_give(&own.lock);
}

TEST_F(Lock, IsFreeAfterATimeout) {
  Opened first(path), second(path);
  ASSERT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&first.lock, 0));
  EXPECT_EQ(VYNLIB_LOCK_TIMEOUT, vynlib_lock_take(&second.lock, 5));
  vynlib_lock_give(&first.lock);
  EXPECT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&second.lock, 0));
  vynlib_lock_give(&second.lock);
  EXPECT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&first.lock, 0));
  vynlib_lock_give(&first.lock);
}

TEST_F(Lock, ManyThreadsOfManyProcessesComeOneAfterAnother) {
  constexpr int kProcesses = 3, kThreads = 3, kTurns = 10;
  const std::string counter = path + ".counter";
  std::ofstream(counter) << 0;
  const auto count = [&](vynlib_lock* lock) {
    for (int i = 0; i < kTurns; ++i) {
      if (vynlib_lock_take(lock, kPatience) != VYNLIB_LOCK_OK) return;
      int number = 0;
      std::ifstream(counter) >> number;
      std::this_thread::yield();
      std::ofstream(counter) << number + 1;
      vynlib_lock_give(lock);
    }
  };
  {
    std::vector<std::unique_ptr<Process>> processes;
    for (int i = 0; i < kProcesses; ++i) {
      processes.push_back(std::make_unique<Process>([&] {
        Opened own(path);
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) threads.emplace_back(count, &own.lock);
        for (std::thread& thread : threads) thread.join();
        return true;
      }));
    }
    for (const auto& process : processes) EXPECT_TRUE(process->Succeeded());
  }
  int number = 0;
  std::ifstream(counter) >> number;
  unlink(counter.c_str());
  EXPECT_EQ(kProcesses * kThreads * kTurns, number);
}

TEST_F(Lock, WhoeverWaitsIsNext) {
  Flag begun;
  // This one gives the lock up for no longer than it takes to ask for it again.
  Process greedy([&] {
    Opened own(path);
    for (int i = 0;; ++i) {
      if (vynlib_lock_take(&own.lock, kPatience) != VYNLIB_LOCK_OK) return false;
      if (i == 0) begun.Raise();
      usleep(5000);
      vynlib_lock_give(&own.lock);
    }
  });
  begun.Await();
  Opened own(path);
  for (int i = 0; i < 20; ++i) {
    usleep(3000);
    ASSERT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&own.lock, 400)) << i;
    vynlib_lock_give(&own.lock);
  }
}

TEST_F(Lock, IsGivenBackByTheEndOfAProcessAndItsNextHolderKnows) {
  Flag held;
  Process killed([&] { return HoldForever(path, held); });
  held.Await();
  killed.Signal(SIGKILL);
  killed.Succeeded();
  Opened own(path);
  ASSERT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&own.lock, kPatience));
  EXPECT_EQ(killed.Id(), vynlib_lock_dead_holder(&own.lock).pid);
  EXPECT_STREQ("lock_test", vynlib_lock_dead_holder(&own.lock).name);
  vynlib_lock_give(&own.lock);
  ASSERT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&own.lock, 0));
  EXPECT_EQ(0, vynlib_lock_dead_holder(&own.lock).pid) << "told once";
  vynlib_lock_give(&own.lock);
}

TEST_F(Lock, WaitingCostsNearlyNothing) {
  Flag held;
  Process holder([&] { return HoldForever(path, held); });
  held.Await();
  Opened own(path);
  const double before = CpuSeconds();
  EXPECT_EQ(VYNLIB_LOCK_TIMEOUT, vynlib_lock_take(&own.lock, 500));
  EXPECT_LT(CpuSeconds() - before, 0.25);
}

TEST_F(Lock, AProgramThatIsStartedDoesNotHoldIt) {
  Opened own(path);
  ASSERT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&own.lock, 0));
  EXPECT_EQ(FD_CLOEXEC, fcntl(own.lock.descriptor, F_GETFD));
  vynlib_lock_give(&own.lock);
}

TEST_F(Lock, DoesNotBecomeAStandardStream) {
  Process without([&] {
    close(STDIN_FILENO);
    Opened own(path);
    return own.code == VYNLIB_LOCK_OK && own.lock.descriptor > STDERR_FILENO && fcntl(STDIN_FILENO, F_GETFD) == -1;
  });
  EXPECT_TRUE(without.Succeeded());
}

TEST_F(Lock, ShellsMayTakePartInIt) {
  Opened own(path);
  ASSERT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&own.lock, 0));
  const int other = open(path.c_str(), O_RDWR | O_CLOEXEC);
  EXPECT_EQ(-1, flock(other, LOCK_EX | LOCK_NB));
  vynlib_lock_give(&own.lock);
  EXPECT_EQ(0, flock(other, LOCK_EX | LOCK_NB));
  EXPECT_EQ(VYNLIB_LOCK_TIMEOUT, vynlib_lock_take(&own.lock, 0));
  EXPECT_EQ(0, vynlib_lock_holder(&own.lock).pid) << "they leave no name";
  close(other);
}

TEST_F(Lock, AFolderThatIsMissingIsAnError) {
  const Opened lock("/nowhere/lock");
  EXPECT_EQ(VYNLIB_LOCK_ERROR, lock.code);
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(Lock, LinksAreNotTrusted) {
  const std::string target = path + ".target";
  std::ofstream(target) << "precious";
  ASSERT_EQ(0, symlink(target.c_str(), path.c_str()));
  EXPECT_EQ(VYNLIB_LOCK_UNSAFE, Opened(path).code);
  unlink(path.c_str());
  ASSERT_EQ(0, link(target.c_str(), path.c_str()));
  EXPECT_EQ(VYNLIB_LOCK_UNSAFE, Opened(path).code);
  EXPECT_EQ("precious", Content());
  unlink(target.c_str());
}

TEST_F(Lock, APipeIsNotTrusted) {
  ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
  EXPECT_EQ(VYNLIB_LOCK_UNSAFE, Opened(path).code);
}

/// What `work` returns as the ordinary user `id`, who belongs to the group of that number alone.
bool AsUser(uid_t id, const std::function<bool()>& work) {
  return Process([&] { return setgid(id) == 0 && setuid(id) == 0 && work(); }).Succeeded();
}

class LockOfUsers : public Lock {
 protected:
  void SetUp() override { ASSERT_EQ(geteuid(), 0u) << "only root can become another user"; }
};

TEST_F(LockOfUsers, AFileOfAnotherUserIsNotTrusted) {
  constexpr uid_t kOne = 65533, kOther = 65534;
  const auto open = [&] { return Opened(path).code; };
  EXPECT_TRUE(AsUser(kOne, [&] { return open() == VYNLIB_LOCK_OK && open() == VYNLIB_LOCK_OK; }));
  EXPECT_EQ(VYNLIB_LOCK_UNSAFE, open()) << "root";
  ASSERT_EQ(0, chmod(path.c_str(), 0666));
  EXPECT_TRUE(AsUser(kOther, [&] { return open() == VYNLIB_LOCK_UNSAFE; }));
}

TEST_F(LockOfUsers, TheGroupOfRootsFileMayUseIt) {
  constexpr uid_t kService = 65533;
  { Opened roots(path); }
  ASSERT_EQ(0, chown(path.c_str(), 0, kService));
  EXPECT_TRUE(AsUser(kService, [&] {
    Opened own(path);
    return own.code == VYNLIB_LOCK_OK && vynlib_lock_take(&own.lock, 0) == VYNLIB_LOCK_OK;
  }));
  EXPECT_TRUE(AsUser(kService + 1, [&] { return Opened(path).code == VYNLIB_LOCK_ERROR && errno == EACCES; }));
}

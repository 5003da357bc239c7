// SPDX-License-Identifier: MIT
// Which threads of a process reach the ports, and when: the kernel gives that privilege to threads, and a thread
// without it that touches a port ends the process with a signal. So each test is a process of its own. Calls do not
// overlap.
#include <gtest/gtest.h>
#include <sys/io.h>
#include <vynlib/vynlib.h>

#include <csignal>
#include <semaphore>
#include <thread>

#include "Child.h"

using guest::EndOfChild;

namespace {

constexpr uint16_t kNvramData = 0x71;
const std::string kEndsBySegv = "signal " + std::to_string(SIGSEGV);

/// A thread that takes its turns with the one that made it.
class Worker {
 public:
  Worker() = default;
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  ~Worker() {
    step_ = nullptr;
    turn_.release();
    thread_.join();
  }

  /// What `step` gives, run by the worker while the caller waits.
  int Run(const std::function<int()>& step) {
    step_ = step;
    turn_.release();
    done_.acquire();
    return result_;
  }

 private:
  void TakeTurns() {
    for (turn_.acquire(); step_; turn_.acquire()) {
      result_ = step_();
      done_.release();
    }
  }

  std::binary_semaphore turn_{0}, done_{0};
  std::function<int()> step_;
  int result_ = -1;
  std::thread thread_{[this] { TakeTurns(); }};
};

/// Starts the library and puts the feature that ReadState reads into a state.
void StartWithState(uint8_t state) {
  if (VynLibDllInit() != 1 || VynLibSetLVDSState(state, 2) != 1) _exit(99);
}

/// The state of a feature behind ports, 100 when it cannot be read.
int ReadState() {
  uint8_t state = 0;
  return VynLibGetLVDSState(&state, 2) == 1 ? state : 100;
}

/// 1 when reading that feature fails with this code.
int IsRefusedWith(uint64_t code) { return ReadState() == 100 && VynLibDllGetLastError() == code ? 1 : 0; }

int TouchAPort() {
  inb(kNvramData);
  return 3;
}

}  // namespace

TEST(Thread, MadeBeforeTheStartItReadsAFeature) {
  EXPECT_EQ("status 2", EndOfChild([] {
              Worker worker;
              StartWithState(2);
              return worker.Run(ReadState);
            }));
}

TEST(Thread, MadeAfterTheStartItReadsAFeature) {
  EXPECT_EQ("status 1", EndOfChild([] {
              StartWithState(1);
              Worker worker;
              return worker.Run(ReadState);
            }));
}

TEST(Thread, MadeBeforeTheStartItChangesAFeature) {
  EXPECT_EQ("status 2", EndOfChild([] {
              Worker worker;
              StartWithState(1);
              worker.Run([] { return VynLibSetLVDSState(2, 2); });
              return ReadState();
            }));
}

TEST(Thread, ReadsInASecondLifeOfTheLibrary) {
  EXPECT_EQ("status 2", EndOfChild([] {
              Worker worker;
              StartWithState(1);
              if (worker.Run(ReadState) != 1) return 98;
              VynLibDllUnInit();
              StartWithState(2);
              return worker.Run(ReadState);
            }));
}

TEST(Thread, ThatStartsTheLibraryNeedNotBeTheFirst) {
  EXPECT_EQ("status 1", EndOfChild([] {
              Worker worker;
              worker.Run([] {
                StartWithState(1);
                return 0;
              });
              return ReadState();
            }));
}

TEST(Thread, IsOfferedNothingAfterTheTearDown) {
  EXPECT_EQ("status 1", EndOfChild([] {
              Worker worker;
              StartWithState(1);
              worker.Run(ReadState);
              VynLibDllUnInit();
              return worker.Run([] { return IsRefusedWith(0x600); });
            }));
}

TEST(Thread, IsRefusedAfterAFailedStart) {
  EXPECT_EQ("status 1", guest::EndAsNobody([] {
              Worker worker;
              VynLibDllInit();
              return worker.Run([] { return IsRefusedWith(1); });
            }));
}

TEST(Ports, AreOpenToTheThreadThatStartedTheLibrary) {
  EXPECT_EQ("status 3", EndOfChild([] {
              StartWithState(1);
              return TouchAPort();
            }));
}

TEST(Ports, AreClosedToAThreadThatHasNotCalledYet) {
  EXPECT_EQ(kEndsBySegv, EndOfChild([] {
              Worker worker;
              StartWithState(1);
              return worker.Run(TouchAPort);
            }));
}

TEST(Ports, AreOpenToAThreadThatHasCalled) {
  EXPECT_EQ("status 3", EndOfChild([] {
              Worker worker;
              StartWithState(1);
              worker.Run(ReadState);
              return worker.Run(TouchAPort);
            }));
}

TEST(Ports, AreOpenToProcessesMadeAfterTheStart) {
  EXPECT_EQ("status 1", EndOfChild([] {
              StartWithState(1);
              return EndOfChild(TouchAPort) == "status 3" ? 1 : 0;
            }));
}

TEST(Ports, AreClosedToTheThreadThatTookTheLibraryDown) {
  EXPECT_EQ(kEndsBySegv, EndOfChild([] {
              StartWithState(1);
              VynLibDllUnInit();
              return TouchAPort();
            }));
}

TEST(Ports, AreClosedToThreadsMadeAfterTheTearDown) {
  EXPECT_EQ(kEndsBySegv, EndOfChild([] {
              StartWithState(1);
              VynLibDllUnInit();
              Worker worker;
              return worker.Run(TouchAPort);
            }));
}

TEST(Ports, StayOpenToAnotherThreadAfterTheTearDown) {
  EXPECT_EQ("status 3", EndOfChild([] {
              Worker worker;
              StartWithState(1);
              worker.Run(ReadState);
              VynLibDllUnInit();
              return worker.Run(TouchAPort);
            }));
}

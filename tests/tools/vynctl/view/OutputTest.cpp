// SPDX-License-Identifier: MIT
// Replacing a file in a folder that somebody else may write to.
#include "view/Output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace vynctl {
namespace {

namespace fs = std::filesystem;

class ReplaceFileTest : public testing::Test {
 protected:
  ReplaceFileTest() { fs::create_directories(folder_); }
  ~ReplaceFileTest() override { fs::remove_all(folder_); }

  std::string At(const std::string& name) const { return (folder_ / name).string(); }
  void Write(const std::string& name, const std::string& text) const { std::ofstream(At(name)) << text; }
  std::string Read(const std::string& name) const {
    std::ifstream file(At(name));
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_)) names.insert(entry.path().filename());
    return names;
  }
  std::string Refusal(const std::string& name) const {
    try {
      ReplaceFile(At(name), "new");
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "";
  }

  const fs::path folder_ = fs::path(testing::TempDir()) / ("output." + std::to_string(getpid()));
};

TEST_F(ReplaceFileTest, WritesAFileThatAllMayRead) {
  const mode_t former = umask(0077);
  ReplaceFile(At("m.prom"), "one\n");
  umask(former);
  struct stat state {};
  ASSERT_EQ(0, stat(At("m.prom").c_str(), &state));
  EXPECT_EQ(0644u, state.st_mode & 07777u);
  EXPECT_EQ("one\n", Read("m.prom"));
  EXPECT_EQ((std::set<std::string>{"m.prom"}), Names());
}

TEST_F(ReplaceFileTest, LeavesThePresentFileWhole) {
  Write("m.prom", "old");
  fs::create_hard_link(At("m.prom"), At("other"));
  ReplaceFile(At("m.prom"), "new");
  EXPECT_EQ("new", Read("m.prom"));
  EXPECT_EQ("old", Read("other"));
}

TEST_F(ReplaceFileTest, RefusesWhatIsNoRegularFile) {
  fs::create_directory(At("folder"));
  Write("victim", "precious");
  fs::create_symlink(At("victim"), At("link"));
  fs::create_symlink(At("nothing"), At("dangling"));
  ASSERT_EQ(0, mkfifo(At("fifo").c_str(), 0600));
  for (const char* name : {"folder", "link", "dangling", "fifo"}) {
    EXPECT_EQ("cannot write " + At(name) + ": it is there already and no regular file", Refusal(name));
  }
  EXPECT_EQ("precious", Read("victim"));
  EXPECT_TRUE(fs::is_fifo(At("fifo")));
  EXPECT_EQ("cannot write " + At("folder/") + ": Is a directory", Refusal("folder/"));
  EXPECT_EQ("cannot write " + At("nowhere/m") + ": No such file or directory", Refusal("nowhere/m"));
}

TEST_F(ReplaceFileTest, FollowsNoLinkInPlaceOfTheFolder) {
  fs::create_directory(At("real"));
  fs::create_directory_symlink(At("real"), At("link"));
  EXPECT_EQ("cannot write " + At("link/m") + ": Not a directory", Refusal("link/m"));
  EXPECT_EQ("cannot write " + At("link//m") + ": Not a directory", Refusal("link//m"));
  EXPECT_TRUE(fs::is_empty(At("real")));
}

TEST_F(ReplaceFileTest, RemovesWhatKilledRunsLeft) {
  Write(".m.prom.vynctl-0123456789abcdef", "half");
  Write(".m.prom.vynctl-0123456789abcde", "a name that no run makes");
  Write(".m.prom.vynctl-0123456789abcdeg", "another");
  Write(".other.vynctl-0123456789abcdef", "of another file");
  fs::create_symlink(At("m"), At(".m.prom.vynctl-00000000000000ff"));
  ReplaceFile(At("m.prom"), "new");
  EXPECT_EQ((std::set<std::string>{"m.prom", ".m.prom.vynctl-0123456789abcde", ".m.prom.vynctl-0123456789abcdeg",
                                   ".other.vynctl-0123456789abcdef", ".m.prom.vynctl-00000000000000ff"}),
            Names());
}

TEST_F(ReplaceFileTest, KeepsTheFileOfARunThatStillWrites) {
  const std::string name = ".m.prom.vynctl-0123456789abcdef";
  Write(name, "half");
  const int other = open(At(name).c_str(), O_WRONLY);
  ASSERT_EQ(0, flock(other, LOCK_EX));
  ReplaceFile(At("m.prom"), "new");
  EXPECT_EQ((std::set<std::string>{"m.prom", name}), Names());
  close(other);
}

TEST_F(ReplaceFileTest, LeavesNothingWhereTheDiskIsFull) {
  const rlimit none{.rlim_cur = 0, .rlim_max = RLIM_INFINITY};
  rlimit former{};
  getrlimit(RLIMIT_FSIZE, &former);
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &none);
  const std::string refusal = Refusal("m.prom");
  setrlimit(RLIMIT_FSIZE, &former);
  signal(SIGXFSZ, handler);
  EXPECT_EQ("cannot write " + At("m.prom") + ": File too large", refusal);
  EXPECT_TRUE(Names().empty());
}

}  // namespace
}  // namespace vynctl

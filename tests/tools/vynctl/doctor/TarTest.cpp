// SPDX-License-Identifier: MIT
// Archives byte by byte, and files that are made without touching what is there.
#include "doctor/Tar.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace vynctl::doctor {
namespace {

using namespace std::string_literals;

constexpr size_t kBlock = 512;

std::string Field(const std::string& archive, size_t offset, size_t bytes) { return archive.substr(offset, bytes); }

TEST(Tar, WritesTheHeaderOfUstar) {
  Tar tar(0);
  tar.Add("a", "xyz");
  const std::string archive = tar.Finish();
  EXPECT_EQ(archive.size(), 4 * kBlock);
  EXPECT_EQ(Field(archive, 0, 100), "a" + std::string(99, '\0'));
  EXPECT_EQ(Field(archive, 100, 8), "0000644\0"s);
  EXPECT_EQ(Field(archive, 108, 16),
            "0000000\0"
            "0000000\0"s);
  EXPECT_EQ(Field(archive, 124, 12), "00000000003\0"s);
  EXPECT_EQ(Field(archive, 136, 12), "00000000000\0"s);
  // Name 97; "0000644" 7 * 48 + 14 = 350; user and group 7 * 48 = 336 each; size 11 * 48 + 3 = 531; time 528; eight
  // spaces 256; type 48; "ustar" 559 and "00" 96: 3137, octal 6101.
  EXPECT_EQ(Field(archive, 148, 8), "006101\0 "s);
  EXPECT_EQ(Field(archive, 156, 1), "0");
  EXPECT_EQ(Field(archive, 257, 8),
            "ustar\0"
            "00"s);
  EXPECT_EQ(Field(archive, kBlock, kBlock), "xyz" + std::string(kBlock - 3, '\0'));
  EXPECT_EQ(archive.substr(2 * kBlock), std::string(2 * kBlock, '\0'));
}

TEST(Tar, WritesTheTimeInOctalSeconds) {
  Tar tar(8 * 8 + 1);
  tar.Add("a", "");
  EXPECT_EQ(Field(tar.Finish(), 136, 12), "00000000101\0"s);
}

TEST(Tar, AddsNoBlockForAnEmptyFileAndNoneForAFullBlock) {
  Tar tar(0);
  tar.Add("empty", "");
  tar.Add("full", std::string(kBlock, 'x'));
  EXPECT_EQ(tar.Finish().size(), (1 + 2 + 2) * kBlock);
}

class NewFile : public testing::Test {
 protected:
  NewFile() {
    std::string pattern = testing::TempDir() + "vynctl-tar-XXXXXX";
    folder = mkdtemp(pattern.data());
  }
  ~NewFile() override { std::filesystem::remove_all(folder); }

  std::string Content(const std::string& name) const {
    std::ifstream file(folder + '/' + name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::string folder;
};

TEST_F(NewFile, IsForItsOwnerAlone) {
  const mode_t before = umask(0);
  EXPECT_EQ(WriteNewFile(folder + "/a", "xyz"), 0);
  umask(before);
  struct stat status = {};
  ASSERT_EQ(stat((folder + "/a").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
  EXPECT_EQ(Content("a"), "xyz");
}

TEST_F(NewFile, LeavesAFileThatIsThere) {
  std::ofstream(folder + "/a") << "old";
  EXPECT_EQ(WriteNewFile(folder + "/a", "xyz"), EEXIST);
  EXPECT_EQ(Content("a"), "old");
}

TEST_F(NewFile, FollowsNoLink) {
  std::ofstream(folder + "/old") << "old";
  std::filesystem::create_symlink("old", folder + "/link");
  std::filesystem::create_symlink("new", folder + "/dangling");
  EXPECT_EQ(WriteNewFile(folder + "/link", "xyz"), EEXIST);
  EXPECT_EQ(WriteNewFile(folder + "/dangling", "xyz"), EEXIST);
  EXPECT_EQ(Content("old"), "old");
  EXPECT_FALSE(std::filesystem::exists(folder + "/new"));
}

TEST_F(NewFile, SaysWhyThereIsNone) { EXPECT_EQ(WriteNewFile(folder + "/none/a", "xyz"), ENOENT); }

}  // namespace
}  // namespace vynctl::doctor

// SPDX-License-Identifier: MIT
// The bytes of the function description table, from both places.
#include "board/BoardTables.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace vynctl {
namespace {

class BoardTablesTest : public testing::Test {
 protected:
  BoardTablesTest() { std::filesystem::create_directories(folder_); }
  ~BoardTablesTest() override { std::filesystem::remove_all(folder_); }

  std::string Write(const std::string& name, const std::string& content) const {
    std::ofstream(folder_ / name, std::ios::binary) << content;
    return (folder_ / name).string();
  }
  std::string Folder() const { return folder_.string(); }

 private:
  std::filesystem::path folder_ = std::filesystem::path(testing::TempDir()) / ("tables." + std::to_string(getpid()));
};

TEST_F(BoardTablesTest, CompilesThatOfASimulatedBoard) {
  const std::string board = Write("board.toml", "[[feature]]\nfunction = \"WifiState\"\nindex = 3\nvalue = 7\n");
  BoardTables tables(board, "/nowhere");
  // The header of 36 bytes, then one record: type 16, index, value, its length of 27 in four bytes.
  ASSERT_EQ(tables.Iadt().size(), 63u);
  EXPECT_EQ(std::vector<uint8_t>(tables.Iadt().begin() + 36, tables.Iadt().begin() + 43),
            (std::vector<uint8_t>{16, 3, 7, 27, 0, 0, 0}));
}

TEST_F(BoardTablesTest, ReadsTheKernelsCopyOfTheMachines) {
  Write("IADT", std::string("IADT\0\n\xFF", 7));
  EXPECT_EQ(BoardTables("", Folder()).Iadt(), (std::vector<uint8_t>{'I', 'A', 'D', 'T', 0, '\n', 0xFF}));
}

TEST_F(BoardTablesTest, HasNothingWhereThereIsNoTable) {
  EXPECT_TRUE(BoardTables("", Folder()).Iadt().empty());
  std::filesystem::create_directory(std::filesystem::path(Folder()) / "IADT");
  EXPECT_TRUE(BoardTables("", Folder()).Iadt().empty());
  EXPECT_TRUE(BoardTables(Write("broken.toml", "[bios\n")).Iadt().empty());
}

TEST_F(BoardTablesTest, ReadsOnce) {
  Write("IADT", "first");
  BoardTables tables("", Folder());
  EXPECT_EQ(tables.Iadt().size(), 5u);
  Write("IADT", "second");
  EXPECT_EQ(tables.Iadt().size(), 5u);
}

}  // namespace
}  // namespace vynctl

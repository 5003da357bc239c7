// Where the bytes of the table come from: the kernel's copy, or the compiled board description.
#include "board/BoardTables.h"

#include <filesystem>
#include <fstream>

#include "boardfile/BoardFile.h"
#include "layout/AcpiLayout.h"

namespace vynctl {
namespace {

constexpr char kIadtFile[] = "IADT";
constexpr char kIamtFile[] = "IAMT";

/// The file's bytes; nothing when it cannot be read or is larger than any table.
std::vector<uint8_t> FileBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<uint8_t> bytes(layout::acpi::limits::kLargestTable);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (file.bad() || !file.eof()) return {};
  bytes.resize(static_cast<size_t>(file.gcount()));
  bytes.shrink_to_fit();
  return bytes;
}

/// The tables of a board description; none when it is wrong.
boardfile::Firmware Compiled(const std::string& board) {
  return boardfile::CompileFile(board).firmware.value_or(boardfile::Firmware{});
}

}  // namespace

BoardTables::BoardTables(std::string board, std::string kernelTables)
    : board_(std::move(board)), kernelTables_(std::move(kernelTables)) {}

std::vector<uint8_t> BoardTables::ReadIadt() const {
  if (board_.empty()) return FileBytes(std::filesystem::path(kernelTables_) / kIadtFile);
  return Compiled(board_).iadt;
}

std::string BoardTables::Trouble() const { return boardfile::LoadBoard(board_).error; }

bool BoardTables::HasMsrDevice() const {
  const boardfile::LoadedBoard loaded = boardfile::LoadBoard(board_);
  return loaded.board != nullptr && loaded.board->msrDevice;
}

std::vector<uint8_t> BoardTables::Iamt() const {
  if (board_.empty()) return FileBytes(std::filesystem::path(kernelTables_) / kIamtFile);
  return Compiled(board_).iamt;
}

const std::vector<uint8_t>& BoardTables::Iadt() {
  if (!read_) iadt_ = ReadIadt();
  read_ = true;
  return iadt_;
}

}  // namespace vynctl

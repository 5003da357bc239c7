#include "sim/BoardFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "sim/MachineFile.h"
#include "sim/TomlSection.h"

namespace sim {
namespace {

/// Dots of one line; keys of more parts would nest tables deeper than they can be released again.
constexpr ptrdiff_t kDotLimit = 24;

std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
  return text;
}

LoadedBoard Failed(const std::string& name, unsigned line, const std::string& what) {
  LoadedBoard failed;
  failed.error = OneLine(name + ":" + std::to_string(line) + ": " + what);
  return failed;
}

void CheckDots(std::string_view text) {
  unsigned number = 1;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    const size_t first = line.find_first_not_of(" \t");
    const bool comment = first != line.npos && line[first] == '#';
    if (!comment && std::count(line.begin(), line.end(), '.') > kDotLimit)
      throw BoardFileError(number, "expected at most 24 dots in one line");
    if (end == text.npos) return;
    text.remove_prefix(end + 1);
    ++number;
  }
}

LoadedBoard Read(std::string_view text, const std::string& name) {
  if (text.size() > kBoardFileLimit) throw BoardFileError(1, "expected a file of at most 4 MiB");
  CheckDots(text);
  TomlSection root = TomlSection::Parse(text, name, "the board file");
  LoadedBoard loaded;
  auto board = std::make_unique<Board>();
  board->logging = false;
  loaded.firmware = ReadFirmware(&root);
  ReadMachine(&root, board.get());
  PlaceFirmware(&root, loaded.firmware, board.get());
  root.Finish();
  loaded.board = std::move(board);
  return loaded;
}

}  // namespace

LoadedBoard ParseBoard(std::string_view text, const std::string& name) {
  try {
    return Read(text, name);
  } catch (const BoardFileError& error) {
    return Failed(name, error.line, error.what());
  }
}

LoadedBoard LoadBoard(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text(kBoardFileLimit + 1, '\0');
  if (!file.read(text.data(), static_cast<std::streamsize>(text.size())) && !file.eof())
    return Failed(path, 1, "expected a readable board file: " + std::string(std::strerror(errno)));
  text.resize(static_cast<size_t>(file.gcount()));
  return ParseBoard(text, path);
}

}  // namespace sim

// SPDX-License-Identifier: MIT
// Whole board files: their limits, their errors, their parts.
#include "boardfile/BoardFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "boardfile/Description.h"
#include "boardfile/MachineFile.h"
#include "boardfile/TomlSection.h"

namespace boardfile {

namespace {

/// Dots of one line; keys of more parts would nest tables deeper than they can be released again.
constexpr ptrdiff_t kDotLimit = 24;
/// Files of this format will always be read.
constexpr uint64_t kFormat = 1;

std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
  return text;
}

void CheckDots(std::string_view text) {
  unsigned number = 1;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    const size_t first = line.find_first_not_of(" \t");
    const bool comment = first != line.npos && line[first] == '#';
    if (!comment && std::count(line.begin(), line.end(), '.') > kDotLimit)
      throw BoardFileError(Spot{.line = number}, "expected at most 24 dots in one line");
    if (end == text.npos) return;
    text.remove_prefix(end + 1);
    ++number;
  }
}

TomlSection ReadRoot(std::string_view text, const std::string& name) {
  if (text.size() > kBoardFileLimit) throw BoardFileError(Spot{}, "expected a file of at most 4 MiB");
  CheckDots(text);
  return TomlSection::Parse(text, name, "the board file");
}

void Read(TomlSection* root, LoadedBoard* loaded) {
  auto board = std::make_unique<sim::Board>();
  board->logging = false;
  loaded->firmware = ReadFirmware(root);
  ReadMachine(root, board.get());
  loaded->firmware.PutInto(board.get());
  loaded->board = std::move(board);
}

void Read(TomlSection* root, CompiledFirmware* compiled) {
  compiled->firmware = ReadFirmware(root);
  for (const char* section : kMachineSections) root->Skip(section);
}

template <typename Result>
Result Refused(const std::string& name, std::vector<Complaint> complaints) {
  Result result;
  result.error = LineOf(complaints.front(), name);
  result.complaints = std::move(complaints);
  return result;
}

template <typename Result>
Result ParseText(std::string_view text, const std::string& name) {
  try {
    Result result;
    TomlSection root = ReadRoot(text, name);
    root.Try([&] {
      if (root.Number("format", kFormat, kFormat) != kFormat)
        root.Fail("format", "1, which is all that this program reads");
      Read(&root, &result);
      root.Finish();
    });
    const std::vector<Complaint> complaints = root.Complaints();
    return complaints.empty() ? std::move(result) : Refused<Result>(name, complaints);
  } catch (const BoardFileError& error) {
    return Refused<Result>(name, {error.complaint});
  }
}

template <typename Result>
Result ParseFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text(kBoardFileLimit + 1, '\0');
  if (!file.read(text.data(), static_cast<std::streamsize>(text.size())) && !file.eof()) {
    return Refused<Result>(
        path, {{.spot = {}, .text = "expected a readable board file: " + std::string(std::strerror(errno))}});
  }
  text.resize(static_cast<size_t>(file.gcount()));
  return ParseText<Result>(text, path);
}

}  // namespace

std::string LineOf(const Complaint& complaint, const std::string& name) {
  const std::string& file = complaint.spot.file.empty() ? name : complaint.spot.file;
  return OneLine(file + ":" + std::to_string(complaint.spot.line) + ": " + complaint.text);
}

LoadedBoard ParseBoard(std::string_view text, const std::string& name) { return ParseText<LoadedBoard>(text, name); }
LoadedBoard LoadBoard(const std::string& path) { return ParseFile<LoadedBoard>(path); }

CompiledFirmware CompileText(std::string_view text, const std::string& name) {
  return ParseText<CompiledFirmware>(text, name);
}
CompiledFirmware CompileFile(const std::string& path) { return ParseFile<CompiledFirmware>(path); }

Description Describe(const std::string& path) {
  const LoadedBoard loaded = LoadBoard(path);
  return {.iadt = loaded.firmware.iadt,
          .iamt = loaded.firmware.iamt,
          .msrDevice = loaded.board != nullptr && loaded.board->msrDevice,
          .error = loaded.error};
}

}  // namespace boardfile

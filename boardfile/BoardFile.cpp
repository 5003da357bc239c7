// SPDX-License-Identifier: MIT
// Whole board files: their limits, their errors, their parts.
#include "boardfile/BoardFile.h"

#include <algorithm>

#include "boardfile/Description.h"
#include "boardfile/Includes.h"
#include "boardfile/MachineFile.h"
#include "boardfile/TomlSection.h"

namespace boardfile {

namespace {

/// Files of this format will always be read.
constexpr uint64_t kFormat = 1;

std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
  return text;
}

void Read(TomlSection* root, std::vector<IncludedFile>* included, LoadedBoard* loaded) {
  auto board = std::make_unique<sim::Board>();
  board->logging = false;
  loaded->firmware = ReadFirmware(root, included);
  ReadMachine(root, board.get());
  loaded->firmware.PutInto(board.get());
  loaded->board = std::move(board);
}

void Read(TomlSection* root, std::vector<IncludedFile>* included, CompiledFirmware* compiled) {
  compiled->firmware = ReadFirmware(root, included);
  for (const IncludedFile& file : *included) compiled->included.push_back(file.path);
  for (const char* section : kMachineSections) root->Skip(section);
}

template <typename Result>
Result Refused(const std::string& name, std::vector<Complaint> complaints) {
  Result result;
  result.error = LineOf(complaints.front(), name);
  result.complaints = std::move(complaints);
  return result;
}

void CheckFormat(TomlSection* root) {
  if (root->Number("format", kFormat, kFormat) != kFormat)
    root->Fail("format", "1, which is all that this program reads");
}

std::vector<Complaint> AllComplaints(const TomlSection& root, const std::vector<IncludedFile>& included) {
  std::vector<Complaint> complaints = root.Complaints();
  for (const IncludedFile& file : included) {
    const std::vector<Complaint> more = file.root.Complaints();
    complaints.insert(complaints.end(), more.begin(), more.end());
  }
  return complaints;
}

/// `path`: where the text lies, for the files that it includes; "" when it comes from nowhere.
template <typename Result>
Result ParseText(std::string_view text, const std::string& name, const std::string& path) {
  try {
    Result result;
    TomlSection root = ReadRoot(text, name);
    std::vector<IncludedFile> included;
    root.Try([&] {
      CheckFormat(&root);
      included = ReadIncludes(&root, path);
      for (IncludedFile& file : included) file.root.Try([&] { CheckFormat(&file.root); });
      Read(&root, &included, &result);
      root.Finish();
      for (const IncludedFile& file : included) file.root.Finish();
    });
    const std::vector<Complaint> complaints = AllComplaints(root, included);
    return complaints.empty() ? std::move(result) : Refused<Result>(name, complaints);
  } catch (const BoardFileError& error) {
    return Refused<Result>(name, {error.complaint});
  }
}

template <typename Result>
Result ParseFile(const std::string& path) {
  try {
    return ParseText<Result>(ReadWhole(path), path, path);
  } catch (const BoardFileError& error) {
    return Refused<Result>(path, {error.complaint});
  }
}

}  // namespace

std::string LineOf(const Complaint& complaint, const std::string& name) {
  const std::string& file = complaint.spot.file.empty() ? name : complaint.spot.file;
  return OneLine(file + ":" + std::to_string(complaint.spot.line) + ": " + complaint.text);
}

LoadedBoard ParseBoard(std::string_view text, const std::string& name) {
  return ParseText<LoadedBoard>(text, name, "");
}
LoadedBoard LoadBoard(const std::string& path) { return ParseFile<LoadedBoard>(path); }

CompiledFirmware CompileText(std::string_view text, const std::string& name) {
  return ParseText<CompiledFirmware>(text, name, "");
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

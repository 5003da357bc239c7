// SPDX-License-Identifier: MIT
// Files are told apart by where they lie, whatever way leads there.
#include "boardfile/Includes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

#include "boardfile/BoardFile.h"

namespace boardfile {
namespace {

namespace fs = std::filesystem;

constexpr size_t kPathLimit = 1024, kMostFiles = 64;
/// Dots of one line; keys of more parts would nest tables deeper than they can be released again.
constexpr ptrdiff_t kDotLimit = 24;

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

class Reader {
 public:
  explicit Reader(const std::string& path) : tree_(Canonical(fs::path(path).parent_path())) {
    open_.insert(Canonical(path));
  }

  void Read(TomlSection* section, const fs::path& path) {
    for (const std::string& name : section->Texts("include", kPathLimit))
      section->Try([&] { ReadOne(section, name, path.parent_path() / name); });
  }
  std::vector<IncludedFile> Take() { return std::move(files_); }

 private:
  static fs::path Canonical(const fs::path& path) {
    std::error_code error;
    return fs::weakly_canonical(fs::absolute(path.empty() ? fs::path(".") : path, error), error);
  }

  bool IsInTree(const fs::path& file) const {
    return std::mismatch(tree_.begin(), tree_.end(), file.begin(), file.end()).first == tree_.end();
  }

  void ReadOne(TomlSection* section, const std::string& name, const fs::path& path) {
    const fs::path file = Canonical(path);
    if (fs::path(name).is_absolute() || !IsInTree(file))
      section->Fail("include", "paths of files in the folder of the board file or below, not \"" + name + "\"");
    if (open_.contains(file)) section->Fail("include", "files that do not include each other, not \"" + name + "\"");
    if (!done_.insert(file).second) return;
    if (done_.size() > kMostFiles) section->Fail("include", "at most 64 files in all");
    open_.insert(file);
    section->Try([&] {
      TomlSection root = ReadRoot(ReadWhole(path.string()), path.string());
      Read(&root, path);
      files_.push_back({path.string(), root});
    });
    open_.erase(file);
  }

  const fs::path tree_;
  std::set<fs::path> open_, done_;
  std::vector<IncludedFile> files_;
};

}  // namespace

TomlSection ReadRoot(std::string_view text, const std::string& name) {
  const Spot begin{.file = name};
  if (text.size() > kBoardFileLimit) throw BoardFileError(begin, "expected a file of at most 4 MiB");
  CheckDots(text);
  return TomlSection::Parse(text, name, "the board file");
}

std::string ReadWhole(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text(kBoardFileLimit + 1, '\0');
  if (!file.read(text.data(), static_cast<std::streamsize>(text.size())) && !file.eof())
    throw BoardFileError(Spot{.file = path}, "expected a readable board file: " + std::string(std::strerror(errno)));
  text.resize(static_cast<size_t>(file.gcount()));
  return text;
}

std::vector<IncludedFile> ReadIncludes(TomlSection* root, const std::string& path) {
  if (path.empty()) return {};
  Reader reader(path);
  reader.Read(root, path);
  return reader.Take();
}

}  // namespace boardfile

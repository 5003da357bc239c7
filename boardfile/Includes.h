// SPDX-License-Identifier: MIT
/// The files that a board file takes sequences and records from.
#pragma once

#include <string>
#include <vector>

#include "boardfile/TomlSection.h"

namespace boardfile {

struct IncludedFile {
  std::string path;
  TomlSection root;
};

/// The text of a board file. Throws BoardFileError when it cannot be read or is no board file.
TomlSection ReadRoot(std::string_view text, const std::string& name);
std::string ReadWhole(const std::string& path);

/// The files named by `include` of the file's root, and by theirs, each once, before those that name them. Paths are
/// relative to the file that names them, and stay in the folder of `path`; an empty path includes nothing. What is
/// wrong is noted in the roots.
std::vector<IncludedFile> ReadIncludes(TomlSection* root, const std::string& path);

}  // namespace boardfile

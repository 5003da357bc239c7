// SPDX-License-Identifier: MIT
/// The files that vyntable reads and writes.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "diagnosis/Image.h"
#include "firmware/Bytes.h"

namespace vyntable {

using diagnosis::Image;
using diagnosis::Kind;
using firmware::Bytes;

inline constexpr int kExitOk = 0;
inline constexpr int kExitFindings = 1;
inline constexpr int kExitTrouble = 2;  ///< usage, or a file

/// Input that cannot be used; the text is what the user sees, a line for each complaint.
struct BadInput : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads tables from
///   a single table, whatever its file is called, or `-` for standard input;
///   a folder that holds them under the names of `compile` (iadt.bin), of dumps (iadt.dat), of compilers (iadt.aml) or
///   of
///     the kernel (IADT);
///   the text of a dump;
///   a firmware image, all that it holds, or with @OFFSET behind its name the one there;
///   a board file, which is compiled first.
/// Throws BadInput.
std::vector<Image> ReadImages(const std::vector<std::string>& paths);

/// The tables of a board file; remarks on it are with the first.
struct CompiledBoard {
  std::vector<Image> images;
  std::vector<std::string> files;  ///< that it was compiled from, its own first
};
/// Throws BadInput.
CompiledBoard CompileBoard(const std::string& path);

/// Throws BadInput when a table is shorter than the header that every table has.
void RequireHeader(const Image& image);

/// Throws BadInput when the file cannot be written.
void WriteFile(const std::string& path, std::string_view content);

}  // namespace vyntable

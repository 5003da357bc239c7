/// The files that vyntable reads and writes.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "firmware/Bytes.h"
#include "vyntable/Image.h"

namespace vyntable {

using firmware::Bytes;

inline constexpr int kExitOk = 0;
inline constexpr int kExitBadInput = 1;
inline constexpr int kExitUsage = 2;

inline constexpr char kIadtFile[] = "iadt.bin";
inline constexpr char kIamtFile[] = "iamt.bin";
inline constexpr char kBiosInfoFile[] = "biosinfo.bin";

/// Input that cannot be used; the text is the one line that the user sees.
struct BadInput : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads tables: a directory holding what `compile` writes, a single table file, or a board file, which is compiled
/// first. Throws BadInput.
std::vector<Image> ReadImages(const std::vector<std::string>& paths);
/// The tables of a board file. Throws BadInput.
std::vector<Image> CompileBoard(const std::string& path);

/// Throws BadInput when a table is shorter than the header that every table has.
void RequireHeader(const Image& image);

/// Throws BadInput when the file cannot be written.
void WriteFile(const std::string& path, std::string_view content);

}  // namespace vyntable

// SPDX-License-Identifier: MIT
// Which file holds what is told by its content; only a board file is known by its name.
#include "vyntable/Files.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>

#include <fmt/format.h>

#include "boardfile/BoardFile.h"
#include "commandline/Words.h"
#include "layout/AcpiLayout.h"
#include "vyntable/Kinds.h"
#include "vyntable/TableSources.h"

using namespace layout;

namespace vyntable {
namespace {

/// Longer input is no firmware.
constexpr size_t kFileLimit = size_t{64} << 20;
constexpr char kStandardInput[] = "-";
constexpr char kBoardFile[] = ".toml";

[[noreturn]] void Fail(const std::string& path) { throw BadInput(path + ": " + std::strerror(errno)); }

using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

Stream Open(const std::string& path) {
  if (path == kStandardInput) return {stdin, [](std::FILE*) { return 0; }};
  Stream file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) Fail(path);
  return file;
}

/// The sizes that the kernel gives its files say nothing, so all of them are read to the end.
Bytes ReadFile(const std::string& path) {
  const Stream file = Open(path);
  Bytes bytes;
  for (uint8_t part[size_t{1} << 16];;) {
    const size_t count = std::fread(part, 1, sizeof part, file.get());
    if (std::ferror(file.get()) != 0) Fail(path);
    bytes.insert(bytes.end(), part, part + count);
    if (bytes.size() > kFileLimit) throw BadInput(path + ": larger than any firmware");
    if (count < sizeof part && std::feof(file.get()) != 0) return bytes;
  }
}

std::string Upper(std::string text) {
  for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return text;
}

/// The file of a folder that holds the table; empty when there is none.
std::string FileOf(const std::string& folder, const KindRow& row) {
  const std::string stem = row.stem;
  std::string found;
  for (const std::string& name : {stem + ".bin", stem + ".dat", stem + ".aml", Upper(stem)}) {
    const std::string file = (std::filesystem::path(folder) / name).string();
    if (!std::filesystem::is_regular_file(file)) continue;
    if (!found.empty()) throw BadInput(fmt::format("{}: there is {} as well: name the one that is meant", file, found));
    found = file;
  }
  return found;
}

void ReadDirectory(const std::string& path, std::vector<Image>* images) {
  const size_t before = images->size();
  for (const KindRow& row : kKinds)
    if (const std::string file = FileOf(path, row); !file.empty()) images->push_back({row.kind, file, ReadFile(file)});
  if (images->size() == before)
    throw BadInput(path + ": holds none of iadt.bin, iamt.bin, biosinfo.bin, nor their like (.dat, .aml, IADT, IAMT)");
}

/// The tables in a file that is none itself.
std::vector<Image> TablesWithin(const Bytes& bytes, const std::string& name) {
  const bool dump = IsDump(bytes);
  std::vector<Image> images = dump ? TablesOfDump(bytes, name) : TablesInside(bytes, name);
  if (!images.empty()) return images;
  throw BadInput(name + (dump ? ": a dump without an IADT or IAMT table"
                              : ": expected an IADT or IAMT table, a BIOS information record, a dump or firmware image "
                                "that holds one, or a board file (.toml)"));
}

/// "FILE@0x1234", where the file exists and that name does not.
struct Within {
  std::string file;
  size_t offset;
};
std::optional<Within> SplitOffset(const std::string& path) {
  const size_t mark = path.rfind("@0x");
  if (mark == std::string::npos || std::filesystem::exists(path)) return {};
  size_t offset = 0;
  const char* const end = path.data() + path.size();
  const auto [next, error] = std::from_chars(path.data() + mark + 3, end, offset, 16);
  if (error != std::errc() || next != end) return {};
  return Within{path.substr(0, mark), offset};
}

void ReadWithin(const Within& within, std::vector<Image>* images) {
  const size_t before = images->size();
  for (Image& image : TablesWithin(ReadFile(within.file), within.file))
    if (image.base == within.offset) images->push_back(std::move(image));
  if (images->size() == before) throw BadInput(fmt::format("{}: no table at offset {:#x}", within.file, within.offset));
}

void ReadOne(const std::string& path, std::vector<Image>* images) {
  if (std::filesystem::is_directory(path)) return ReadDirectory(path, images);
  if (const auto within = SplitOffset(path)) return ReadWithin(*within, images);
  const auto append = [&](std::vector<Image> more) {
    images->insert(images->end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
  };
  if (path.ends_with(kBoardFile)) return append(CompileBoard(path).images);
  Bytes bytes = ReadFile(path);
  const KindRow* row = IsDump(bytes) ? nullptr : KindOfTable(bytes);
  if (row)
    images->push_back({row->kind, path, std::move(bytes)});
  else
    append(TablesWithin(bytes, path));
}

std::string PlaceText(const boardfile::Spot& spot, const std::string& board) {
  return fmt::format("{}:{}:{}", spot.file.empty() ? board : spot.file, spot.line, spot.column);
}

std::string Line(const boardfile::Complaint& complaint, const std::string& board) {
  return PlaceText(complaint.spot, board) + ": " + complaint.text +
         commandline::Suggestion(complaint.word, complaint.candidates);
}

/// The tables of compiled firmware by kind.
struct PartRow {
  Kind kind;
  Bytes boardfile::Firmware::*bytes;
  std::vector<boardfile::Origin> boardfile::Firmware::*origins;
  std::vector<boardfile::Allowance> boardfile::Firmware::*allowed;
};
constexpr PartRow kParts[] = {
    {Kind::kIadt, &boardfile::Firmware::iadt, &boardfile::Firmware::iadtOrigins, &boardfile::Firmware::iadtAllowed},
    {Kind::kIamt, &boardfile::Firmware::iamt, &boardfile::Firmware::iamtOrigins, &boardfile::Firmware::iamtAllowed},
    {Kind::kBiosInfo, &boardfile::Firmware::biosInfo, &boardfile::Firmware::biosInfoOrigins,
     &boardfile::Firmware::biosInfoAllowed},
};

}  // namespace

std::vector<Image> ReadImages(const std::vector<std::string>& paths) {
  std::vector<Image> images;
  for (const std::string& path : paths) ReadOne(path, &images);
  return images;
}

CompiledBoard CompileBoard(const std::string& path) {
  const boardfile::CompiledFirmware compiled = boardfile::CompileFile(path);
  if (!compiled.firmware) {
    std::string lines;
    for (const boardfile::Complaint& complaint : compiled.complaints)
      lines += (lines.empty() ? "" : "\n") + Line(complaint, path);
    throw BadInput(lines);
  }
  CompiledBoard board{.images = {}, .files = {path}};
  board.files.insert(board.files.end(), compiled.included.begin(), compiled.included.end());
  for (const PartRow& part : kParts) {
    const Bytes& bytes = (*compiled.firmware).*part.bytes;
    if (bytes.empty()) continue;
    Image& image = board.images.emplace_back(Image{part.kind, path, bytes});
    for (const boardfile::Origin& origin : (*compiled.firmware).*part.origins)
      image.places.push_back({origin.offset, PlaceText(origin.spot, path)});
    for (const boardfile::Allowance& each : (*compiled.firmware).*part.allowed)
      image.allowed.push_back({each.rule, each.first, each.end, PlaceText(each.spot, path)});
  }
  for (const boardfile::Complaint& remark : compiled.firmware->remarks)
    board.images.front().remarks.push_back({PlaceText(remark.spot, path), remark.text});
  return board;
}

void RequireHeader(const Image& image) {
  if (image.bytes.size() < acpi::kHeaderBytes)
    throw BadInput(image.name + ": shorter than the 36 bytes of a table header");
}

void WriteFile(const std::string& path, std::string_view content) {
  std::ofstream file(path, std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  if (!file) throw BadInput(path + ": " + std::strerror(errno));
}

}  // namespace vyntable

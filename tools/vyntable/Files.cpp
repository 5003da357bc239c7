#include "vyntable/Files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "boardfile/BoardFile.h"
#include "layout/AcpiLayout.h"
#include "layout/BiosRecord.h"
#include "layout/BoardRecord.h"
#include "layout/RecordLayout.h"

using namespace layout;

namespace vyntable {
namespace {

struct KindRow {
  Kind kind;
  std::string_view signature;
  const char* file;
  Bytes boardfile::Firmware::*bytes;
};
constexpr KindRow kKinds[] = {
    {Kind::kIadt, iadt::kSignature, kIadtFile, &boardfile::Firmware::iadt},
    {Kind::kIamt, iamt::kSignature, kIamtFile, &boardfile::Firmware::iamt},
    {Kind::kBiosInfo, bios::kSignature, kBiosInfoFile, &boardfile::Firmware::biosInfo},
};

/// Longer input is no firmware table and no board file.
constexpr std::streamsize kFileLimit = std::streamsize{64} << 20;

Bytes ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const auto size = file ? static_cast<std::streamsize>(file.tellg()) : -1;
  if (size < 0 || std::filesystem::is_directory(path)) throw BadInput(path + ": " + std::strerror(errno));
  if (size > kFileLimit) throw BadInput(path + ": larger than any firmware table");
  Bytes bytes(static_cast<size_t>(size));
  file.seekg(0);
  if (!file.read(reinterpret_cast<char*>(bytes.data()), size)) throw BadInput(path + ": " + std::strerror(errno));
  return bytes;
}

const KindRow* KindOfTable(const Bytes& bytes) {
  for (const KindRow& row : kKinds)
    if (bytes.size() >= row.signature.size() && std::equal(row.signature.begin(), row.signature.end(), bytes.begin()))
      return &row;
  return nullptr;
}

void ReadDirectory(const std::string& path, std::vector<Image>* images) {
  const size_t before = images->size();
  for (const KindRow& row : kKinds) {
    const std::string file = (std::filesystem::path(path) / row.file).string();
    if (std::filesystem::exists(file)) images->push_back({row.kind, file, ReadFile(file)});
  }
  if (images->size() == before)
    throw BadInput(path + ": holds none of " + kIadtFile + ", " + kIamtFile + ", " + kBiosInfoFile);
}

void ReadOne(const std::string& path, std::vector<Image>* images) {
  if (std::filesystem::is_directory(path)) return ReadDirectory(path, images);
  Bytes bytes = ReadFile(path);
  if (const KindRow* row = KindOfTable(bytes)) {
    images->push_back({row->kind, path, std::move(bytes)});
  } else if (path.ends_with(".toml")) {
    const std::vector<Image> compiled = CompileBoard(path);
    images->insert(images->end(), compiled.begin(), compiled.end());
  } else {
    throw BadInput(path + ": expected an IADT or IAMT table, a BIOS information record or a board file (.toml)");
  }
}

}  // namespace

std::vector<Image> ReadImages(const std::vector<std::string>& paths) {
  std::vector<Image> images;
  for (const std::string& path : paths) ReadOne(path, &images);
  return images;
}

std::vector<Image> CompileBoard(const std::string& path) {
  const boardfile::CompiledFirmware compiled = boardfile::CompileFile(path);
  if (!compiled.firmware) throw BadInput(compiled.error);
  std::vector<Image> images;
  for (const KindRow& row : kKinds)
    if (const Bytes& bytes = (*compiled.firmware).*row.bytes; !bytes.empty())
      images.push_back({row.kind, row.file, bytes});
  return images;
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

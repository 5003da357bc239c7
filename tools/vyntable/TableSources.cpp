// SPDX-License-Identifier: MIT
// Dumps are read line by line, images byte by byte.
#include "vyntable/TableSources.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <optional>

#include <fmt/format.h>

#include "layout/Checksum.h"
#include "layout/Walk.h"
#include "vyntable/Files.h"
#include "vyntable/Kinds.h"

namespace vyntable {

using namespace layout;
namespace {

constexpr size_t kBytesPerLine = 16;
constexpr std::string_view kAddressMark = " @ 0x";

std::string_view TextOf(View bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

std::string_view NextLine(std::string_view* text) {
  const size_t end = std::min(text->find('\n'), text->size());
  std::string_view line = text->substr(0, end);
  text->remove_prefix(std::min(end + 1, text->size()));
  while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.remove_suffix(1);
  return line;
}

bool BeginsTable(std::string_view line) {
  return line.size() > acpi::kSignatureBytes && line.substr(acpi::kSignatureBytes).starts_with(kAddressMark);
}

/// The digits that a text begins with, as a number; they are taken off it.
std::optional<size_t> TakeHex(std::string_view* text, size_t most) {
  size_t value = 0;
  const char* const end = text->data() + std::min(most, text->size());
  const auto [next, error] = std::from_chars(text->data(), end, value, 16);
  if (error != std::errc()) return {};
  text->remove_prefix(static_cast<size_t>(next - text->data()));
  return value;
}

/// One line of bytes; what stands behind two blanks is the same as characters. Empty when it is none.
struct DumpLine {
  size_t offset;
  Bytes bytes;
};
std::optional<DumpLine> ReadLine(std::string_view line) {
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  const auto offset = TakeHex(&line, line.size());
  if (!offset || !line.starts_with(": ")) return {};
  line.remove_prefix(1);
  DumpLine read{*offset, {}};
  while (read.bytes.size() < kBytesPerLine && line.size() >= 3 && line[0] == ' ') {
    line.remove_prefix(1);
    const std::string_view before = line;
    const auto byte = TakeHex(&line, 2);
    if (!byte || before.size() - line.size() != 2) break;
    read.bytes.push_back(static_cast<uint8_t>(*byte));
  }
  return read;
}

bool HasRightChecksum(View table) { return ByteSum(table.data(), table.size()) == 0; }

bool RecordsFill(Kind kind, View table) {
  if (kind == Kind::kIamt) {
    BoardRecordCursor cursor(table);
    for (; cursor.Valid(); cursor.Next()) {
    }
    return table.size() > acpi::kHeaderBytes && cursor.Offset() == table.size();
  }
  RecordCursor cursor(table);
  for (; cursor.Valid(); cursor.Next()) {
  }
  return table.size() > acpi::kHeaderBytes && cursor.Offset() == table.size();
}

/// The table that begins with `bytes`; empty when it is none.
View TableAt(Kind kind, View bytes) {
  if (kind == Kind::kBiosInfo) {
    const View record = bytes.first(std::min(bytes.size(), bios::kRecordBytes));
    return record.size() == bios::kRecordBytes && HasRightChecksum(record) ? record : View{};
  }
  const auto length = static_cast<size_t>(Load(bytes, acpi::kLengthOffset, 4));
  if (length < acpi::kHeaderBytes || length > std::min<size_t>(bytes.size(), acpi::limits::kLargestTable)) return {};
  const View table = bytes.first(length);
  return HasRightChecksum(table) || RecordsFill(kind, table) ? table : View{};
}

}  // namespace

bool IsDump(View bytes) {
  std::string_view text = TextOf(bytes), line;
  while (line.empty() && !text.empty()) line = NextLine(&text);
  return BeginsTable(line);
}

std::vector<Image> TablesOfDump(View bytes, const std::string& name) {
  std::vector<Image> images;
  Image* current = nullptr;
  std::string_view text = TextOf(bytes);
  for (size_t number = 1; !text.empty(); ++number) {
    const std::string_view line = NextLine(&text);
    if (BeginsTable(line)) {
      const KindRow* row = KindOfTable(View(reinterpret_cast<const uint8_t*>(line.data()), acpi::kSignatureBytes));
      if (row) images.push_back({row->kind, fmt::format("{}({})", name, row->signature), {}});
      current = row ? &images.back() : nullptr;
    } else if (const auto read = ReadLine(line); read && current) {
      if (read->offset != current->bytes.size())
        throw BadInput(fmt::format("{}:{}: expected the byte at offset {:#x}", name, number, current->bytes.size()));
      current->bytes.insert(current->bytes.end(), read->bytes.begin(), read->bytes.end());
    }
  }
  return images;
}

std::vector<Image> TablesInside(View bytes, const std::string& name) {
  std::vector<Image> images;
  for (const KindRow& row : kKinds) {
    const std::boyer_moore_horspool_searcher searcher(row.signature.begin(), row.signature.end());
    for (auto at = bytes.begin(); (at = std::search(at, bytes.end(), searcher)) != bytes.end(); ++at) {
      const auto offset = static_cast<size_t>(at - bytes.begin());
      const View table = TableAt(row.kind, bytes.subspan(offset));
      if (!table.empty()) images.push_back({row.kind, name, Bytes(table.begin(), table.end()), offset});
    }
  }
  return images;
}

}  // namespace vyntable

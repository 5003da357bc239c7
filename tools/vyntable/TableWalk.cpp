#include "vyntable/TableWalk.h"

#include <algorithm>

#include <fmt/core.h>

namespace vyntable {

using namespace layout;
namespace {}  // namespace

uint64_t Load(View bytes, size_t offset, size_t size) {
  uint64_t value = 0;
  for (size_t i = 0; i < size && offset + i < bytes.size(); ++i) value |= uint64_t{bytes[offset + i]} << (8 * i);
  return value;
}

uint8_t SumOf(View bytes) {
  uint8_t sum = 0;
  for (uint8_t byte : bytes) sum = static_cast<uint8_t>(sum + byte);
  return sum;
}

uint64_t CommandView::Field(CommandField field) const { return Load(bytes, field.offset, field.bytes); }

uint16_t CommandView::Control() const { return static_cast<uint16_t>(Load(bytes, kControlOffset, 2)); }

std::string RecordView::NameText() const {
  const View name = Name();
  return {name.begin(), std::find(name.begin(), name.end(), uint8_t{0})};
}

bool RecordView::NameTerminated() const { return std::ranges::count(Name(), uint8_t{0}) != 0; }

std::string RecordView::Title() const {
  const std::string name = NameText().empty() ? "" : fmt::format(" \"{}\"", NameText());
  if (type && type->IsSensor()) return fmt::format("{} {}.{}{}", type->name, type->type, type->subType, name);
  const std::string kind = type ? std::string(type->name) : fmt::format("type {}", TypeCode());
  return fmt::format("{} index {} value {}{}", kind, Index(), Value(), name);
}

View Body(const Image& image) {
  const View all(image.bytes);
  const size_t length = static_cast<size_t>(Load(all, acpi::kLengthOffset, 4));
  return all.first(std::clamp(length, std::min(all.size(), acpi::kHeaderBytes), all.size()));
}

Records WalkRecords(const Image& iadt) {
  const View table = Body(iadt);
  Records result{{}, std::min(acpi::kHeaderBytes, table.size())};
  while (table.size() - result.end >= iadt::kBody) {
    const size_t length = static_cast<size_t>(Load(table, result.end + iadt::kLength, 4));
    if (length < iadt::kBody || length > table.size() - result.end) break;
    const View bytes = table.subspan(result.end, length);
    result.records.push_back({result.end, bytes, FindRecordType(bytes[0], bytes[2])});
    result.end += length;
  }
  return result;
}

std::vector<CommandView> WalkCommands(const RecordView& record) {
  std::vector<CommandView> commands;
  size_t offset = iadt::kBody;
  while (offset < record.bytes.size()) {
    const View rest = record.bytes.subspan(offset);
    const CommandLayout* layout = FindLayout(rest[0]);
    if (!layout || layout->length > rest.size()) {
      commands.push_back({record.offset + offset, rest});
      break;
    }
    commands.push_back({record.offset + offset, rest.first(layout->length), layout});
    offset += layout->length;
  }
  return commands;
}

std::vector<CommandView> SensorCommands(const RecordView& record) {
  std::vector<CommandView> commands;
  for (const CommandPlace& place : record.type->places) {
    if (size_t{place.offset} + place.bytes > record.bytes.size()) break;
    const View bytes = record.bytes.subspan(place.offset, place.bytes);
    const CommandLayout* layout = FindLayout(bytes[0]);
    const bool fits = layout && layout->length <= bytes.size();
    commands.push_back(
        {record.offset + place.offset, fits ? bytes.first(layout->length) : bytes, fits ? layout : nullptr});
  }
  return commands;
}

BoardRecords WalkBoardRecords(const Image& iamt) {
  const View table = Body(iamt);
  BoardRecords result{{}, std::min(acpi::kHeaderBytes, table.size())};
  while (table.size() - result.end > iamt::kLength) {
    const size_t length = table[result.end + iamt::kLength];
    if (length <= iamt::kLength || length > table.size() - result.end) break;
    result.records.push_back({result.end, table.subspan(result.end, length)});
    result.end += length;
  }
  return result;
}

}  // namespace vyntable

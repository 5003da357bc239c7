// SPDX-License-Identifier: MIT
// 'vyntable diff': two firmwares by feature, instance and state, in words.
#include <algorithm>
#include <map>
#include <memory>
#include <optional>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "commandline/Words.h"
#include "diagnosis/Words.h"
#include "layout/BiosRecord.h"
#include "layout/Walk.h"
#include "vyntable/Commands.h"
#include "vyntable/Files.h"

namespace vyntable {

using namespace diagnosis;

using namespace layout;
namespace {

struct Options {
  std::string before, after;
};

/// Something that a table has, by the name that it is found under, with what is to be said of it.
struct Item {
  std::string name;
  std::vector<std::string> lines;
};
using Items = std::vector<Item>;

std::string TextOf(View field) {
  return fmt::format("\"{}\"", std::string(field.begin(), std::find(field.begin(), field.end(), uint8_t{0})));
}

Item HeaderOf(View table, const char* name) {
  const View header = table.first(std::min(table.size(), acpi::kHeaderBytes));
  const auto field = [&](size_t offset, size_t bytes) { return Load(header, offset, bytes); };
  const auto text = [&](size_t offset, size_t bytes) {
    return offset + bytes <= header.size() ? TextOf(header.subspan(offset, bytes)) : "";
  };
  return {
      fmt::format("header of {}", name),
      {fmt::format("revision {}", field(acpi::kRevisionOffset, 1)), "oem_id " + text(acpi::kOemId, acpi::kOemIdBytes),
       "oem_table_id " + text(acpi::kOemTableId, acpi::kOemTableIdBytes),
       fmt::format("oem_revision {:#x}", field(acpi::kOemRevision, 4)),
       "creator_id " + text(acpi::kCreatorId, acpi::kCreatorIdBytes),
       fmt::format("creator_revision {:#x}", field(acpi::kCreatorRevision, 4))}};
}

/// The name without a record's place among others of the same name, which Numbered adds.
Item RecordItem(const RecordView& record) {
  Item item{.name = Title(record), .lines = {}};
  const RecordType* const type = record.Row();
  const bool sensor = type && type->IsSensor();
  if (sensor)
    for (const RecordParameter& parameter : type->parameters)
      if (parameter.offset < record.length)
        item.lines.push_back(
            fmt::format("{} {}", parameter.name, Load(record.Bytes(), parameter.offset, parameter.bytes)));
  const CommandContext context = ContextOf(record);
  for (const CommandView& command : sensor ? SensorCommands(record) : Commands(record))
    item.lines.push_back(fmt::format("{}", fmt::join(Words(command, context), "; ")));
  return item;
}

/// Items of one name are told apart by their order.
void Number(Items* items) {
  std::map<std::string, unsigned> seen;
  for (Item& item : *items)
    if (const unsigned number = ++seen[item.name]; number > 1) item.name += fmt::format(", number {}", number);
}

Items ItemsOf(const Image& image) {
  Items items;
  const View bytes(image.bytes);
  switch (image.kind) {
    case Kind::kIadt:
      items.push_back(HeaderOf(bytes, "IADT"));
      for (RecordCursor cursor(Covered(bytes)); cursor.Valid(); cursor.Next())
        items.push_back(RecordItem(cursor.Current()));
      break;
    case Kind::kIamt:
      items.push_back(HeaderOf(bytes, "IAMT"));
      for (BoardRecordCursor cursor(Covered(bytes)); cursor.Valid(); cursor.Next()) {
        Item item{fmt::format("board record of type {}", cursor.Current().rest[iamt::kType]), {}};
        if (cursor.Current().IsBoardRecord())
          for (const size_t place : iamt::kChipIds)
            item.lines.push_back(fmt::format("chip {:#06x}", Load(cursor.Current().Kept(), place, 2)));
        items.push_back(item);
      }
      break;
    case Kind::kBiosInfo:
      items.push_back(
          {"BIOS information record", {"model " + TextOf(bytes.subspan(std::min(bytes.size(), bios::kModel)))}});
      break;
  }
  Number(&items);
  return items;
}

void Print(const char* sign, const std::string& text) { fmt::print("{}{}\n", sign, commandline::Printable(text)); }

/// Lines that both have at the beginning and at the end are left out.
void PrintChanges(const Item& before, const Item& after) {
  const auto& a = before.lines;
  const auto& b = after.lines;
  size_t first = 0, last = 0;
  const size_t shorter = std::min(a.size(), b.size());
  while (first < shorter && a[first] == b[first]) ++first;
  while (last < shorter - first && a[a.size() - 1 - last] == b[b.size() - 1 - last]) ++last;
  for (size_t i = first; i < a.size() - last; ++i) Print("    - ", a[i]);
  for (size_t i = first; i < b.size() - last; ++i) Print("    + ", b[i]);
}

const Item* Find(const Items& items, const std::string& name) {
  const auto found = std::ranges::find(items, name, &Item::name);
  return found != items.end() ? &*found : nullptr;
}

/// The names that both have, in the order of the first.
std::vector<std::string> CommonNames(const Items& items, const Items& others) {
  std::vector<std::string> names;
  for (const Item& item : items)
    if (Find(others, item.name)) names.push_back(item.name);
  return names;
}

/// Whether anything differs; what does is printed. The bytes may differ where the words do not.
bool Compare(const Items& before, const Items& after, bool sameBytes) {
  bool differ = false;
  const auto note = [&](const char* sign, const std::string& text) {
    differ = true;
    Print(sign, text);
  };
  for (const Item& item : before) {
    const Item* const other = Find(after, item.name);
    if (!other) {
      note("- ", item.name);
    } else if (other->lines != item.lines) {
      note("~ ", item.name);
      PrintChanges(item, *other);
    }
  }
  for (const Item& item : after)
    if (!Find(before, item.name)) {
      note("+ ", item.name);
      for (const std::string& line : item.lines) Print("    + ", line);
    }
  if (CommonNames(before, after) != CommonNames(after, before))
    note("~ ", "the order of the records: the first that succeeds is the one that counts");
  if (!differ && !sameBytes) note("~ ", "bytes that the library does not use");
  return differ;
}

const Image* Find(const std::vector<Image>& images, Kind kind) {
  const auto found = std::ranges::find(images, kind, &Image::kind);
  return found != images.end() ? &*found : nullptr;
}

int Diff(const Options& options) {
  const std::vector<Image> before = ReadImages({options.before}), after = ReadImages({options.after});
  bool differ = false;
  for (const Kind kind : {Kind::kBiosInfo, Kind::kIamt, Kind::kIadt}) {
    const Image *const one = Find(before, kind), *const other = Find(after, kind);
    const bool changed = Compare(one ? ItemsOf(*one) : Items{}, other ? ItemsOf(*other) : Items{},
                                 one && other ? one->bytes == other->bytes : one == other);
    differ = differ || changed;
  }
  return differ ? kExitFindings : kExitOk;
}

}  // namespace

Syntax DescribeDiff() {
  const auto options = std::make_shared<Options>();
  return {.arguments = {{.name = "OLD", .target = &options->before, .help = "where tables come from", .required = true},
                        {.name = "NEW", .target = &options->after, .help = "the same, of the other", .required = true}},
          .run = [options] { return Diff(*options); }};
}

}  // namespace vyntable

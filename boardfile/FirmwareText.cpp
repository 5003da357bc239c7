// SPDX-License-Identifier: MIT
// The fields that bytes stand for; what fields do not give exactly stays bytes.
#include "boardfile/FirmwareText.h"

#include <algorithm>
#include <span>

#include <fmt/format.h>

#include "boardfile/BoardFile.h"
#include "boardfile/CommandWords.h"
#include "layout/BiosRecord.h"
#include "layout/Checksum.h"
#include "layout/Walk.h"

namespace boardfile {

using namespace firmware;
using namespace layout;
namespace {

Firmware Compiled(const std::string& text) { return CompileText(text, "decompiled").firmware.value_or(Firmware{}); }

/// The records that the text stands for.
Bytes RecordBytes(const std::string& text) {
  const Bytes iadt = Compiled(text).iadt;
  return iadt.size() < acpi::kHeaderBytes ? Bytes{} : Bytes(iadt.begin() + acpi::kHeaderBytes, iadt.end());
}

bool Same(View a, View b) { return std::ranges::equal(a, b); }

bool IsPlainText(View bytes) {
  return std::ranges::all_of(bytes, [](uint8_t c) { return c >= ' ' && c < 0x7F; });
}

std::string Quoted(View bytes) {
  std::string text = "\"";
  for (uint8_t c : bytes) {
    if (c == '"' || c == '\\') text += '\\';
    text += static_cast<char>(c);
  }
  return text + "\"";
}

View Trimmed(View bytes) {
  while (!bytes.empty() && bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
  return bytes;
}

// --- commands ---

std::string UnitText(uint64_t unit) {
  for (const DelayWord& word : kDelayWords)
    if (word.unit == unit) return fmt::format("\"{}\"", word.word);
  return fmt::format("{}", unit);
}

std::string KeyText(const CommandView& c) {
  const CommandLayout& row = *c.layout;
  const uint64_t address = c.Field(row.address), second = c.Field(row.second), third = c.Field(row.third);
  switch (row.kind) {
    case kCommandMemory:
      return fmt::format("memory = {:#010x}", address);
    case kCommandPort:
      if (row.form == kFormDirect) return fmt::format("port = {:#x}", address & 0xFFFF);
      return fmt::format("index_port = {:#x}, data_port = {:#x}, register = {:#04x}", address & 0xFFFF, second & 0xFFFF,
                         third & 0xFF);
    case kCommandMsr:
      return fmt::format("msr = {:#x}", address);
    case kCommandSmbus:
      return fmt::format("smbus = {:#04x}, command = {:#04x}", address, second);
    case kCommandPci:
      return fmt::format("pci = \"{:02x}:{:02x}.{:x}\", register = {:#x}", address, second, third, c.Field(row.reg));
    default:
      break;
  }
  const std::string form = FormOf(c.Opcode()) ? fmt::format(", form = {}", FormOf(c.Opcode())) : "";
  return fmt::format("delay = {}, unit = {}{}", c.Field(row.count), UnitText(c.Field(row.unit)), form);
}

std::string ControlText(std::string_view key, uint16_t control, uint16_t ControlWord::*bits) {
  std::string words;
  for (const ControlWord& word : kControlWords)
    if (control & word.*bits) words += (words.empty() ? "" : " ") + std::string(word.word);
  return words.empty() ? "" : fmt::format(", {} = \"{}\"", key, words);
}

std::string NumberText(std::string_view key, const CommandView& c, CommandField field) {
  const uint64_t value = c.Field(field);
  if (field.bytes == 0 || value == 0) return "";
  // TOML integers have a sign bit.
  const char* format = value >> 63 ? ", {} = \"{:#x}\"" : ", {} = {:#x}";
  return fmt::format(fmt::runtime(format), key, value);
}

std::string ArgumentText(const CommandView& c) {
  const uint64_t index = c.Field(c.layout->argument);
  const bool mode = c.Control() & kArgumentMode, named = index != kNoArgument;
  std::string text = named ? fmt::format(", argument = {}", index) : "";
  if (mode != named) text += fmt::format(", argument_mode = {}", mode);
  return text;
}

std::string UnusedText(const CommandView& c) {
  Bytes bytes;
  for (const uint8_t offset : UnusedBytes(*c.layout)) bytes.push_back(c.bytes[offset]);
  const View used = Trimmed(bytes);
  return used.empty() ? "" : fmt::format(", unused = \"{}\"", Hex(used));
}

/// Both directions in words, or the whole control word where it has more bits than words stand for.
std::string BothDirections(const CommandView& c) {
  if (c.Control() & ~kNamedControl) return fmt::format(", control = {:#x}", c.Control());
  return ControlText("get", c.Control(), &ControlWord::get) + ControlText("set", c.Control(), &ControlWord::set);
}

std::string FieldsText(const CommandView& c) {
  const unsigned width = WidthOf(c.Opcode());
  return KeyText(c) + (width == 1 ? "" : fmt::format(", width = {}", width)) + BothDirections(c) +
         NumberText("and", c, c.layout->andMask) + NumberText("or", c, c.layout->orMask) +
         NumberText("expected", c, c.layout->expected) + ArgumentText(c) + UnusedText(c);
}

std::string RawCommand(const CommandView& c) { return fmt::format("{{ raw = \"{}\" }}", Hex(c.bytes)); }

/// By fields, whatever these give.
std::string HopefulCommand(const CommandView& c) {
  return c.layout ? fmt::format("{{ {} }}", FieldsText(c)) : RawCommand(c);
}

/// By fields where these give exactly the bytes, else as bytes.
std::string ExactCommand(const CommandView& c) {
  const std::string text = HopefulCommand(c);
  const Bytes record = RecordBytes("[[feature]]\ntype = 1\ncommands = [" + text + "]\n");
  const bool same = record.size() > iadt::kBody && Same(View(record).subspan(iadt::kBody), c.bytes);
  return same ? text : RawCommand(c);
}

using CommandWriter = std::string (*)(const CommandView&);

std::string CommandsText(const std::vector<CommandView>& commands, CommandWriter write) {
  std::string text;
  for (const CommandView& command : commands) text += "  " + write(command) + ",\n";
  return text.empty() ? "" : "commands = [\n" + text + "]\n";
}

// --- records ---

std::string NameLine(const RecordView& record) {
  const View name = Trimmed(record.Name());
  if (name.empty()) return "";
  return IsPlainText(name) ? fmt::format("name = {}\n", Quoted(name)) : fmt::format("name_bytes = \"{}\"\n", Hex(name));
}

std::string IndexLine(const RecordView& record) {
  return record.Index() ? fmt::format("index = {}\n", record.Index()) : "";
}

std::string FeatureText(const RecordView& record, CommandWriter write) {
  const RecordType* row = record.Row();
  const std::string type =
      row ? fmt::format("function = \"{}\"\n", row->name) : fmt::format("type = {}\n", record.Type());
  return "[[feature]]\n" + type + IndexLine(record) + fmt::format("value = {}\n", record.Value()) + NameLine(record) +
         CommandsText(Commands(record), write);
}

std::string SensorText(const RecordView& record, const RecordType& type, CommandWriter write) {
  const View bytes = record.Bytes();
  std::string text = fmt::format("[[sensor]]\nquantity = \"{}\"\nkind = {}\n", type.name, type.subType);
  text += IndexLine(record) + NameLine(record);
  for (const RecordParameter& parameter : type.parameters)
    if (const uint64_t value = Load(bytes, parameter.offset, parameter.bytes))
      text += fmt::format("{} = {}\n", parameter.name, value);
  std::vector<CommandView> commands = SensorCommands(record);
  while (!commands.empty() && Trimmed(commands.back().bytes).empty()) commands.pop_back();
  text += CommandsText(commands, write);
  if (bytes.size() > type.bytes) text += fmt::format("extra = \"{}\"\n", Hex(bytes.subspan(type.bytes)));
  return text;
}

std::string RawText(View bytes) { return fmt::format("[[record]]\nraw = \"{}\"\n", Hex(bytes)); }

std::string RecordText(const RecordView& record, CommandWriter write) {
  const RecordType* type = record.Row();
  return type && type->IsSensor() ? SensorText(record, *type, write) : FeatureText(record, write);
}

std::string ExactRecord(const RecordView& record) {
  const std::string text = RecordText(record, ExactCommand);
  return Same(RecordBytes(text), record.Bytes()) ? text : RawText(record.Bytes());
}

/// The text of records in a row. Compiling takes most of the time, so it is done for as many records as possible at
/// once: where that does not bring their bytes back, each half is tried.
std::string RecordsText(std::span<const RecordView> records) {
  if (records.empty()) return "";
  std::string text;
  size_t size = 0;
  for (const RecordView& record : records) {
    text += "\n" + RecordText(record, HopefulCommand);
    size += record.length;
  }
  if (Same(RecordBytes(text), records.front().rest.first(size))) return text;
  if (records.size() == 1) return "\n" + ExactRecord(records.front());
  const size_t half = records.size() / 2;
  return RecordsText(records.first(half)) + RecordsText(records.subspan(half));
}

// --- tables ---

std::string TextLine(std::string_view key, View field) { return fmt::format("{} = {}\n", key, Quoted(Trimmed(field))); }

View OemId(View table) { return table.subspan(acpi::kOemId, acpi::kOemIdBytes); }
View OemTableId(View table) { return table.subspan(acpi::kOemTableId, acpi::kOemTableIdBytes); }
View CreatorId(View table) { return table.subspan(acpi::kCreatorId, acpi::kCreatorIdBytes); }

/// Header fields of the table, `length` and `checksum` only where they are not the right ones.
std::string HeaderFields(View table) {
  std::string text = fmt::format("revision = {}\n", table[acpi::kRevisionOffset]);
  text += TextLine("oem_id", OemId(table)) + TextLine("oem_table_id", OemTableId(table));
  text += fmt::format("oem_revision = {:#x}\n", Load(table, acpi::kOemRevision, 4));
  text += TextLine("creator_id", CreatorId(table));
  text += fmt::format("creator_revision = {:#x}\n", Load(table, acpi::kCreatorRevision, 4));
  const uint64_t length = Load(table, acpi::kLengthOffset, 4);
  if (length != table.size()) text += fmt::format("length = {}\n", length);
  if (ByteSum(table.data(), table.size()) != 0)
    text += fmt::format("checksum = {:#04x}\n", table[acpi::kChecksumOffset]);
  return text;
}

/// `[iadt]` or `[iamt]`; records follow. `bytes` picks the compiled table.
std::string HeaderText(View table, std::string_view section, Bytes Firmware::*bytes) {
  const std::string fields = fmt::format("[{}]\n", section) + HeaderFields(table);
  const View header = table.first(acpi::kHeaderBytes);
  // What is worked out from the records is right when they are.
  std::string whole = fields;
  if (fields.find("\nlength = ") == fields.npos)
    whole += fmt::format("length = {}\n", Load(table, acpi::kLengthOffset, 4));
  if (fields.find("\nchecksum = ") == fields.npos)
    whole += fmt::format("checksum = {}\n", table[acpi::kChecksumOffset]);
  const bool plain = IsPlainText(Trimmed(OemId(table))) && IsPlainText(Trimmed(OemTableId(table))) &&
                     IsPlainText(Trimmed(CreatorId(table)));
  if (plain && Same(Compiled(whole).*bytes, header)) return fields;
  return fmt::format("[{}]\nheader_bytes = \"{}\"\n", section, Hex(header));
}

std::string BoardRecordText(View record) {
  std::string text = fmt::format("[[iamt.record]]\ntype = {}\nsize = {}\n", record[iamt::kType], record.size());
  if (const uint64_t length = Load(record, iamt::kLength, 1); length != record.size())
    text += fmt::format("length = {}\n", length);
  const auto chip = [&](size_t i) { return Load(record, iamt::kChipIds[i], 2); };
  if (record.size() >= iamt::kChipIdsEnd)
    text += fmt::format("chips = [{:#06x}, {:#06x}, {:#06x}]\n", chip(0), chip(1), chip(2));
  const Bytes compiled = Compiled("[iamt]\n" + text).iamt;
  if (compiled.size() > acpi::kHeaderBytes && Same(View(compiled).subspan(acpi::kHeaderBytes), record)) return text;
  return fmt::format("[[iamt.record]]\nraw = \"{}\"\n", Hex(record));
}

}  // namespace

std::string IadtText(View iadt) {
  std::vector<RecordView> records;
  RecordCursor cursor(Covered(iadt));
  for (; cursor.Valid(); cursor.Next()) records.push_back(cursor.Current());
  std::string text = HeaderText(iadt, "iadt", &Firmware::iadt) + RecordsText(records);
  const View rest = iadt.subspan(cursor.Offset());
  if (!rest.empty()) text += "\n# The library's walk ends here.\n" + RawText(rest);
  return text;
}

std::string IamtText(View iamt) {
  std::string records;
  BoardRecordCursor cursor(Covered(iamt));
  for (; cursor.Valid(); cursor.Next())
    if (const View record = cursor.Current().Bytes(); !record.empty()) records += "\n" + BoardRecordText(record);
  const View rest = iamt.subspan(cursor.Offset());
  if (!rest.empty())
    records += fmt::format("\n# The library's walk ends here.\n[[iamt.record]]\nraw = \"{}\"\n", Hex(rest));
  return HeaderText(iamt, "iamt", &Firmware::iamt) + records;
}

std::string BiosInfoText(View record) {
  const View model = Trimmed(record.size() == bios::kRecordBytes ? record.subspan(bios::kModel) : View{});
  if (!model.empty() && IsPlainText(model)) {
    const std::string text =
        fmt::format("[bios]\nmodel = {}\nunused = {:#x}\n", Quoted(model), Load(record, bios::kUnused, 1));
    if (Same(Compiled(text).biosInfo, record)) return text;
  }
  return fmt::format("[bios]\nraw = \"{}\"\n", Hex(record));
}

std::string Hex(View bytes) { return fmt::format("{:02X}", fmt::join(bytes, " ")); }

}  // namespace boardfile

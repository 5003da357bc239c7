// SPDX-License-Identifier: MIT
// Access commands from their keys.
#include "boardfile/CommandFile.h"

#include <algorithm>
#include <set>
#include <sstream>

#include "boardfile/CommandWords.h"
#include "boardfile/PciPlace.h"

namespace boardfile {

using namespace firmware;
using namespace layout;
namespace {

constexpr uint64_t kByte = 0xFF, kWord = 0xFFFF, kDword = 0xFFFFFFFF;
constexpr size_t kTextLimit = 64;
constexpr unsigned kDeepest = 16;
/// More commands than this in one list are a mistake in the file.
constexpr size_t kListBytes = size_t{1} << 16;

uint8_t Byte8(TomlSection* section, std::string_view key) { return static_cast<uint8_t>(section->Need(key, kByte)); }
uint16_t Word16(TomlSection* section, std::string_view key) { return static_cast<uint16_t>(section->Need(key, kWord)); }
uint32_t Dword32(TomlSection* section, std::string_view key) {
  return static_cast<uint32_t>(section->Need(key, kDword));
}

Command ReadMemory(TomlSection* section) { return Command::Memory(Dword32(section, "memory")); }
Command ReadPort(TomlSection* section) { return Command::Port(Word16(section, "port")); }
Command ReadIndexData(TomlSection* section) {
  return Command::IndexData(Word16(section, "index_port"), Word16(section, "data_port"), Byte8(section, "register"));
}
Command ReadSmbus(TomlSection* section) { return Command::Smbus(Byte8(section, "smbus"), Byte8(section, "command")); }
Command ReadPci(TomlSection* section) {
  const PciPlace place = ReadPciPlace(section, "pci");
  return Command::Pci(place.bus, place.device, place.function, Word16(section, "register"));
}
Command ReadMsr(TomlSection* section) { return Command::Msr(Dword32(section, "msr")); }

Command ReadDelay(TomlSection* section) {
  if (section->Has("unit") && !section->IsList("unit"))
    return Command::Delay(DelayUnit{Byte8(section, "unit")}, Word16(section, "delay"));
  const auto word = section->Has("unit") ? section->Text("unit", kTextLimit) : std::optional<std::string>("us");
  for (const DelayWord& row : kDelayWords)
    if (row.word == word) return Command::Delay(DelayUnit{row.unit}, Word16(section, "delay"));
  section->Fail("unit", "\"us\", \"ms\" or \"s\"");
}

struct KindRow {
  std::string_view key;
  Command (*read)(TomlSection*);
};
constexpr KindRow kKinds[] = {
    {"memory", ReadMemory}, {"port", ReadPort}, {"index_port", ReadIndexData}, {"smbus", ReadSmbus},
    {"pci", ReadPci},       {"msr", ReadMsr},   {"delay", ReadDelay},
};

uint16_t ReadWords(TomlSection* section, std::string_view key, uint16_t ControlWord::*bits) {
  const auto text = section->Text(key, kTextLimit);
  uint16_t control = 0;
  std::istringstream words(text.value_or(""));
  for (std::string word; words >> word;) {
    const ControlWord* found = nullptr;
    for (const ControlWord& row : kControlWords)
      if (row.word == word) found = &row;
    if (!found) section->Fail(key, "made of the words read, write, and, or");
    control = static_cast<uint16_t>(control | found->*bits);
  }
  return control;
}

/// Bytes that nothing reads, in their order; and the form bits of a kind that has but one form.
void ReadUnused(TomlSection* section, const CommandLayout& layout, Command* command) {
  const std::vector<uint8_t> offsets = UnusedBytes(layout);
  const auto bytes = section->ByteList("unused").value_or(Bytes{});
  if (bytes.size() > offsets.size()) section->Fail("unused", "at most " + std::to_string(offsets.size()) + " bytes");
  for (size_t i = 0; i < bytes.size(); ++i) command->Byte(offsets[i], bytes[i]);
  if (layout.form != 0) return;
  if (const auto form = section->Number("form", kFormMask))
    command->Opcode(static_cast<uint8_t>(command->Build()[0] | *form));
}

/// Sets the fields that the layout has; keys that name others stay unasked and are complained about.
void ReadFields(TomlSection* section, const CommandLayout& layout, Command* command) {
  const auto limit = [](CommandField field) {
    return field.bytes >= 8 ? ~uint64_t{0} : (uint64_t{1} << (8 * field.bytes)) - 1;
  };
  if (layout.andMask.bytes)
    if (const auto mask = section->Number("and", limit(layout.andMask))) command->And(*mask);
  if (layout.orMask.bytes)
    if (const auto mask = section->Number("or", limit(layout.orMask))) command->Or(*mask);
  if (layout.expected.bytes)
    if (const auto value = section->Number("expected", limit(layout.expected)))
      command->Expected(static_cast<uint32_t>(*value));
  ReadUnused(section, layout, command);
  const auto index = section->Number("argument", kNoArgument);
  if (index) command->ArgumentIndex(static_cast<uint32_t>(*index));
  if (section->Flag("argument_mode", index && *index != kNoArgument)) command->AddControl(kArgumentMode);
}

void ReadControl(TomlSection* section, Command* command) {
  command->AddControl(ReadWords(section, "get", &ControlWord::get));
  command->AddControl(ReadWords(section, "set", &ControlWord::set));
  if (const auto control = section->Number("control", kWord)) command->Control(static_cast<uint16_t>(*control));
}

void ReadWidth(TomlSection* section, Command* command) {
  const uint64_t width = section->Number("width", 8, 1);
  if (width == 0 || (width & (width - 1)) != 0) section->Fail("width", "1, 2, 4 or 8 (bytes)");
  command->Width(static_cast<unsigned>(width));
}

Command ReadCommand(TomlSection* section) {
  if (const auto raw = section->ByteList("raw")) {
    section->Finish();
    return Command::Raw(*raw);
  }
  for (const KindRow& kind : kKinds) {
    if (!section->Has(kind.key)) continue;
    Command command = kind.read(section);
    ReadWidth(section, &command);
    ReadFields(section, *FindLayout(command.Build()[0]), &command);
    ReadControl(section, &command);
    if (const auto opcode = section->Number("opcode", kByte)) command.Opcode(static_cast<uint8_t>(*opcode));
    section->Finish();
    return command;
  }
  throw BoardFileError(section->Where(),
                       "a command needs memory, port, index_port, smbus, pci, msr, delay, use or raw");
}

std::vector<std::string> NamesOf(const Sequences& sequences) {
  std::vector<std::string> names;
  for (const auto& [name, commands] : sequences) names.push_back(name);
  return names;
}

/// The commands that one element of a list stands for.
std::vector<Command> ReadElement(TomlSection* section, const Sequences& sequences) {
  if (!section->Has("use")) return {ReadCommand(section)};
  const std::string name = section->NeedText("use", kTextLimit);
  section->Finish();
  return FindSequence(*section, "use", name, sequences);
}

}  // namespace

CommandList ReadCommands(TomlSection* section, std::string_view key, const Sequences& sequences) {
  CommandList list;
  size_t size = 0;
  for (TomlSection& each : section->List(key)) {
    std::vector<Command> commands;
    each.Try([&] { commands = ReadElement(&each, sequences); });
    for (Command& command : commands) {
      size += std::max<size_t>(1, command.Build().size());
      if (size > kListBytes) throw BoardFileError(each.Where(), "the commands of one list must fit into 64 KiB");
      list.commands.push_back(std::move(command));
      list.spots.push_back(each.Where());
    }
  }
  return list;
}

namespace {

/// Reads what a sequence uses before the sequence itself.
class SequenceReader {
 public:
  SequenceReader(TomlSection* section, const Sequences& known)
      : section_(*section), names_(section->Keys()), sequences_(known) {
    for (const std::string& name : names_)
      if (known.contains(name))
        section_.Try([&] { section_.Fail(name, "another name: an included file has a sequence of this one"); });
  }

  Sequences Read() {
    for (const std::string& name : names_) ReadOne(name);
    return sequences_;
  }

 private:
  /// What is wrong with it is noted; it then has no commands.
  void ReadOne(const std::string& name) {
    if (sequences_.contains(name)) return;
    open_.insert(name);
    std::vector<Command> commands;
    section_.Try([&] {
      ReadUsed(name);
      commands = ReadCommands(&section_, name, sequences_).commands;
    });
    open_.erase(name);
    sequences_[name] = std::move(commands);
  }

  void ReadUsed(const std::string& name) {
    for (TomlSection& each : section_.List(name)) {
      if (!each.Has("use")) continue;
      const std::string used = each.NeedText("use", kTextLimit);
      if (open_.contains(used)) section_.Fail(name, "a sequence that does not use itself");
      if (open_.size() >= kDeepest)
        section_.Fail(name, "within " + std::to_string(kDeepest) + " sequences that use each other");
      if (std::ranges::find(names_, used) != names_.end()) ReadOne(used);
    }
  }

  TomlSection section_;
  const std::vector<std::string> names_;
  std::set<std::string> open_;
  Sequences sequences_;
};

}  // namespace

const std::vector<Command>& FindSequence(const TomlSection& section, std::string_view key, const std::string& name,
                                         const Sequences& sequences) {
  const auto found = sequences.find(name);
  if (found == sequences.end()) section.Fail(key, "the name of one of the [sequences]", name, NamesOf(sequences));
  return found->second;
}

Command ReadPlace(TomlSection* section) {
  for (const KindRow& kind : kKinds) {
    if (!section->Has(kind.key) || kind.key == "delay" || kind.key == "msr" || kind.key == "pci") continue;
    Command command = kind.read(section);
    ReadWidth(section, &command);
    return command;
  }
  throw BoardFileError(section->Where(), "a field needs memory, port, index_port or smbus");
}

Sequences ReadSequences(TomlSection* root, const Sequences& known) {
  auto section = root->Sub("sequences");
  return section ? SequenceReader(&*section, known).Read() : known;
}

}  // namespace boardfile

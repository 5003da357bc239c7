// SPDX-License-Identifier: MIT
// The words follow what the library does with a command, bit by bit.
#include "diagnosis/Words.h"

#include <algorithm>

#include <fmt/format.h>

namespace diagnosis {

using namespace layout;
namespace {

constexpr unsigned kWidestSmbus = 2;

std::string Count(size_t number, const char* word) {
  return fmt::format("{} {}{}", number, word, number == 1 ? "" : "s");
}

std::string ByteCount(const CommandView& command) { return Count(WidthOf(command.Opcode()), "byte"); }

/// The direction of one command, with all that the words depend on.
class Phrase {
 public:
  Phrase(const CommandView& command, const CommandContext& context, const DirectionBits& direction)
      : c_(command), context_(context), d_(direction) {}

  std::string Text() const {
    const bool reads = Has(d_.reads), writes = Has(d_.writes);
    if (!reads && !writes) return fmt::format("{}: nothing{}", d_.name, Stops());
    if (Is(kCommandDelay)) return fmt::format("{}: {}{}", d_.name, Waits() ? "waits" : "does not wait", Fails(writes));
    return fmt::format("{}: {}", d_.name, (writes ? Write() : Read()) + Stops());
  }

 private:
  bool Has(uint16_t bits) const { return (c_.Control() & bits) != 0; }
  bool Is(uint8_t kind) const { return c_.layout->kind == kind; }
  bool IsPair() const { return c_.layout->kind == kCommandPort && c_.layout->form == kFormIndexData; }
  /// An SMBus access of another width is left out.
  bool Moves() const { return !Is(kCommandSmbus) || WidthOf(c_.Opcode()) <= kWidestSmbus; }
  bool Waits() const {
    const uint64_t unit = c_.Field(c_.layout->unit);
    return unit >= kMicroseconds && unit <= kSeconds;
  }
  std::string Fails(bool writes) const { return writes || context_.sensor ? "" : ", then fails"; }
  /// A register of the processor is no command that an entry can go on behind.
  std::string Stops() const { return Is(kCommandMsr) && !context_.sensor ? ", then the call ends with code 21" : ""; }

  uint64_t Argument() const { return c_.Field(c_.layout->argument); }
  bool NamesArgument() const { return Has(kArgumentMode) && Argument() < context_.arguments; }
  /// Whether it depends on the caller's count that the index names an argument.
  bool MayNameArgument() const {
    return Has(kArgumentMode) && context_.asked && !NamesArgument() && Argument() < kMostArguments && &d_ == &kGetting;
  }

  std::string Masked(std::string text) const {
    if (Has(d_.ands)) text = fmt::format("{} AND {:#x}", text, c_.Field(c_.layout->andMask));
    if (Has(d_.ors)) text = fmt::format("{} OR {:#x}", text, c_.Field(c_.layout->orMask));
    return text;
  }

  std::string Read() const {
    // What is read from PCI configuration space is dropped.
    const std::string text = Masked(!Moves() ? "reads nothing, takes 0" : Is(kCommandPci) ? "reads, takes 0" : "reads");
    if (context_.sensor) return text;
    if (NamesArgument()) return fmt::format("{}, into argument {}", text, Argument());
    if (MayNameArgument())
      return fmt::format("{}, into argument {} where the caller offers it, else into argument 0", text, Argument());
    if (Has(kArgumentMode)) return text + ", into argument 0: its index names none";
    return fmt::format("{}, must be {:#x}{}", text, c_.Field(c_.layout->expected), Compared());
  }

  /// Masks of 4 bytes leave no more.
  std::string Compared() const {
    if (Is(kCommandSmbus) || Is(kCommandPci) || (!Is(kCommandMsr) && WidthOf(c_.Opcode()) <= 4)) return "";
    const bool low = Has(d_.ands) && c_.Field(c_.layout->andMask) >> 32 == 0;
    return low ? "" : " in the low 4 bytes";
  }

  std::string Write() const {
    if (Is(kCommandMsr)) return "writes nothing, such a register is only read";
    if (!Moves()) return fmt::format("writes nothing, no SMBus access has {}", ByteCount(c_));
    const std::string old = "writes " + Masked(Is(kCommandPci) ? "0" : "the old value");
    if (NamesArgument()) return WriteArgument();
    if (MayNameArgument()) return fmt::format("{} where the caller offers it, else {}", WriteArgument(), old);
    return old;
  }

  std::string WriteArgument() const {
    const std::string text = fmt::format("writes argument {}", Argument());
    if (!IsPair()) return text;
    // The argument stands for the OR mask as well, so that an OR brings back what the AND took away.
    const bool masked = Has(d_.ands) && !Has(d_.ors);
    return (masked ? fmt::format("{} AND {:#x}", text, c_.Field(c_.layout->andMask)) : text) +
           ", which becomes the OR mask";
  }

  const CommandView& c_;
  const CommandContext& context_;
  const DirectionBits& d_;
};

/// In argument mode the index is the time.
std::string DelayText(const CommandView& c, const CommandContext& context) {
  constexpr const char* kUnits[] = {"us", "ms", "s"};
  const uint64_t unit = c.Field(c.layout->unit), index = c.Field(c.layout->argument);
  if (unit < kMicroseconds || unit > kSeconds) return fmt::format("no wait: there is no unit {}", unit);
  const bool mode = c.Control() & kArgumentMode, named = mode && index < context.arguments;
  const bool maybe = mode && !named && context.asked && index < kMostArguments;
  return fmt::format("wait {} {}{}", named ? index : c.Field(c.layout->count), kUnits[unit - kMicroseconds],
                     maybe ? fmt::format(", or {} where the caller offers that argument", index) : "");
}

/// A device above 31 or a function above 7 carries into its neighbour, and a register has 12 bits.
std::string PciTarget(uint64_t bus, uint64_t device, uint64_t function, uint64_t reg) {
  const uint64_t place = (bus << 8) + (device << 3) + function;
  return fmt::format("PCI {:02x}:{:02x}.{:x} register {:#x}, 4 bytes", place >> 8 & 0xFF, place >> 3 & 0x1F, place & 7,
                     reg & 0xFFF);
}

std::string Target(const CommandView& c, const CommandContext& context) {
  const CommandLayout& row = *c.layout;
  const uint64_t address = c.Field(row.address), second = c.Field(row.second), third = c.Field(row.third);
  switch (row.kind) {
    case kCommandMemory:
      return fmt::format("memory {:#010x}, {}", address, ByteCount(c));
    case kCommandPort:
      if (row.form == kFormDirect) return fmt::format("port {:#x}, {}", address & 0xFFFF, ByteCount(c));
      return fmt::format("register {:#04x} behind ports {:#x}/{:#x}, {}", third & 0xFF, address & 0xFFFF,
                         second & 0xFFFF, ByteCount(c));
    case kCommandMsr:
      return fmt::format("model-specific register {:#x}", address);
    case kCommandSmbus:
      return fmt::format("SMBus device {:#04x} register {:#04x}, {}", address & 0xFE, second, ByteCount(c));
    case kCommandPci:
      return PciTarget(address, second, third, c.Field(row.reg));
    default:
      return DelayText(c, context);
  }
}

/// Why the walk cannot step over the command.
std::string Reason(const CommandView& command) {
  const uint8_t opcode = command.Opcode();
  const std::string left = Count(command.bytes.size(), "byte");
  if (const CommandLayout* layout = FindLayout(opcode))
    return fmt::format("a command of {} bytes does not fit into the {} that {} left", layout->length,
                       command.bytes.size(), command.bytes.size() == 1 ? "is" : "are");
  if (command.bytes.size() < BytesToRun(opcode))
    return fmt::format("{} {} left over that hold{} no command", left, command.bytes.size() == 1 ? "is" : "are",
                       command.bytes.size() == 1 ? "s" : "");
  if (!FindKind(opcode)) return fmt::format("unknown access kind {:#04x}", KindOf(opcode));
  return fmt::format("addressing form {} does not fit its kind", FormOf(opcode));
}

const char* EndingText(Ending ending) {
  constexpr const char* kTexts[] = {"the call ends with code 21", "the entry fails", "the command is run for ever"};
  return kTexts[static_cast<size_t>(ending)];
}

std::string SensorEndText(const CommandView& command) {
  const CommandLayout* layout = FindLayout(command.Opcode());
  if (!layout) return "no command: nothing is accessed";
  return fmt::format("a command of {} bytes in a place of {}: the bytes behind the place are taken as its rest",
                     layout->length, command.bytes.size());
}

}  // namespace

std::string NameText(const RecordView& record) {
  const View name = record.Name();
  return {name.begin(), std::find(name.begin(), name.end(), uint8_t{0})};
}

std::string FanText(const RecordView& record) {
  std::string name = NameText(record);
  if (const size_t at = name.find(kFanModeWord); at != std::string::npos) name.erase(at, kFanModeWord.size());
  return name;
}

std::string Title(const RecordView& record) {
  const std::string text = NameText(record), name = text.empty() ? "" : fmt::format(" \"{}\"", text);
  const RecordType* type = record.Row();
  if (type && type->IsSensor()) return fmt::format("{} {}.{}{}", type->name, type->type, type->subType, name);
  const std::string kind = type ? std::string(type->name) : fmt::format("type {}", record.Type());
  return fmt::format("{} index {} value {}{}", kind, record.Index(), record.Value(), name);
}

std::string EndText(const CommandView& command, const CommandContext& context) {
  if (context.sensor) return SensorEndText(command);
  // The commands of a fan's modes are counted before any is run.
  if (context.asked) return Reason(command) + ": the call ends with code 21";
  const Ending get = EndingOf(command, kGetting), set = EndingOf(command, kSetting);
  const std::string reason = Reason(command) + ": ";
  if (get == set) return reason + EndingText(get);
  return fmt::format("{}when reading, {}; when setting, {}", reason, EndingText(get), EndingText(set));
}

std::vector<std::string> Words(const CommandView& command, const CommandContext& context) {
  if (!command.layout) return {EndText(command, context)};
  if (context.asked && !command.layout->steps)
    return {Target(command, context), "the call ends with code 21 before anything is run"};
  std::vector<std::string> words = {Target(command, context), Phrase(command, context, kGetting).Text()};
  if (!context.sensor) words.push_back(Phrase(command, context, kSetting).Text());
  return words;
}

}  // namespace diagnosis

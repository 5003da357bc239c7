#include "vyntable/Words.h"

#include <algorithm>

#include <fmt/format.h>

namespace vyntable {

using namespace layout;
namespace {

std::string ByteCount(const CommandView& command) {
  const unsigned width = WidthOf(command.Opcode());
  return fmt::format("{} byte{}", width, width == 1 ? "" : "s");
}

std::string DelayText(const CommandView& command) {
  constexpr const char* kUnits[] = {"(no unit: not at all)", "us", "ms", "s"};
  const uint64_t unit = command.Field(command.layout->unit);
  return fmt::format("wait {} {}", command.Field(command.layout->count), kUnits[unit < std::size(kUnits) ? unit : 0]);
}

std::string Target(const CommandView& c) {
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
      return fmt::format("SMBus device {:#04x} register {:#04x}, {}", address, second, ByteCount(c));
    case kCommandPci:
      return fmt::format("PCI {:02x}:{:02x}.{:x} register {:#x}, 4 bytes", address, second, third, c.Field(row.reg));
    default:
      return DelayText(c);
  }
}

/// The control bits of one direction.
struct Direction {
  const char* name;
  uint16_t reads, writes, ands, ors;
};
constexpr Direction kDirections[] = {
    {"Get", kGetReads, kGetWrites, kGetAnd, kGetOr},
    {"Set", kSetReads, kSetWrites, kSetAnd, kSetOr},
};

std::string Masked(const CommandView& c, const Direction& d, std::string text) {
  if (c.Control() & d.ands) text = fmt::format("{} AND {:#x}", text, c.Field(c.layout->andMask));
  if (c.Control() & d.ors) text = fmt::format("{} OR {:#x}", text, c.Field(c.layout->orMask));
  return text;
}

std::string ReadText(const CommandView& c, const Direction& d) {
  // A read of PCI configuration space leaves the value at 0 before the masks.
  std::string text = Masked(c, d, c.layout->kind == kCommandPci ? "reads, takes 0" : "reads");
  if (c.Control() & kArgumentMode) return fmt::format("{}, into argument {}", text, c.Field(c.layout->argument));
  return fmt::format("{}, must be {:#x}", text, c.Field(c.layout->expected));
}

std::string WriteText(const CommandView& c, const Direction& d) {
  if (c.layout->kind == kCommandMsr) return "writes, which the library cannot";
  if (c.Control() & kArgumentMode) return fmt::format("writes argument {}", c.Field(c.layout->argument));
  return "writes " + Masked(c, d, c.layout->kind == kCommandPci ? "0" : "the old value");
}

std::string DirectionText(const CommandView& c, const Direction& d) {
  const bool reads = c.Control() & d.reads, writes = c.Control() & d.writes;
  if (!reads && !writes) return fmt::format("{}: nothing", d.name);
  if (c.layout->kind == kCommandDelay) return fmt::format("{}: waits{}", d.name, writes ? "" : ", then fails");
  return fmt::format("{}: {}", d.name, writes ? WriteText(c, d) : ReadText(c, d));
}

}  // namespace

std::string NameText(const RecordView& record) {
  const View name = record.Name();
  return {name.begin(), std::find(name.begin(), name.end(), uint8_t{0})};
}

std::string Title(const RecordView& record) {
  const std::string text = NameText(record), name = text.empty() ? "" : fmt::format(" \"{}\"", text);
  const RecordType* type = record.Row();
  if (type && type->IsSensor()) return fmt::format("{} {}.{}{}", type->name, type->type, type->subType, name);
  const std::string kind = type ? std::string(type->name) : fmt::format("type {}", record.Type());
  return fmt::format("{} index {} value {}{}", kind, record.Index(), record.Value(), name);
}

std::vector<std::string> Words(const CommandView& command) {
  if (!command.layout) return {"the walk over the commands ends here"};
  return {Target(command), DirectionText(command, kDirections[0]), DirectionText(command, kDirections[1])};
}

}  // namespace vyntable

#include "diagnosis/CommandCheck.h"

#include <algorithm>
#include <iterator>

#include "diagnosis/Words.h"

namespace diagnosis {

using namespace layout;
namespace {

constexpr uint32_t kLastPort = 0xFFFF;
constexpr uint8_t kLastDelayUnit = kSeconds;
constexpr unsigned kSmbusWidths = 2;

/// The command with all that the single checks look at.
struct Subject {
  const CommandView& command;
  const CommandContext& context;
  const CommandLayout& layout;
  uint16_t control;

  bool Kind(uint8_t kind) const { return layout.kind == kind; }
  bool Gets() const { return (control & kGetReads) && !(control & kGetWrites); }
  bool Sets() const { return (control & kSetReads) && !(control & kSetWrites); }
  bool Writes() const { return control & (kGetWrites | kSetWrites); }
  bool Idle() const { return !(control & (kGetReads | kGetWrites | kSetReads | kSetWrites)); }
  bool Argument() const { return control & kArgumentMode; }
  uint64_t Field(CommandField field) const { return command.Field(field); }
};

/// The thermal status of a core and of the package, and the temperature that they count down from: in every Intel
/// processor of the boards that have the tables. Others come and go with the model.
constexpr uint64_t kCommonRegisters[] = {0x19C, 0x1A2, 0x1B1};

bool ReadsRareRegister(const Subject& s) {
  return s.context.sensor && s.Kind(kCommandMsr) &&
         std::ranges::find(kCommonRegisters, s.Field(s.layout.address)) == std::end(kCommonRegisters);
}

struct Rule {
  Severity severity;
  const char* text;
  bool (*broken)(const Subject&);
};

bool ComparesAndCannotMatch(const Subject& s) {
  if (!s.Gets() || s.Argument() || s.context.sensor || s.Kind(kCommandDelay)) return false;
  const unsigned bytes =
      s.Kind(kCommandMsr) ? s.layout.valueBytes : std::min<unsigned>(WidthOf(s.command.Opcode()), s.layout.valueBytes);
  const uint64_t fixed = (s.control & kGetOr) ? s.Field(s.layout.orMask) : 0;
  const bool drops = s.Kind(kCommandPci) || (s.Kind(kCommandSmbus) && WidthOf(s.command.Opcode()) > kSmbusWidths);
  uint64_t possible = drops ? 0 : bytes >= 8 ? ~uint64_t{0} : (uint64_t{1} << (8 * bytes)) - 1;
  if (s.control & kGetAnd) possible &= s.Field(s.layout.andMask);
  const uint64_t expected = s.Field(s.layout.expected);
  const uint64_t compared = s.layout.valueBytes == 2 ? 0xFFFF : 0xFFFFFFFF;
  return (expected & ~(possible | fixed)) != 0 || (~expected & fixed & compared) != 0;
}

constexpr Rule kRules[] = {
    {Severity::kError, "no entry can go on behind an MSR command: where it succeeds, the call ends with code 21",
     [](const Subject& s) { return !s.context.sensor && s.Kind(kCommandMsr); }},
    {Severity::kWarning,
     "not every processor has this register: where it is missing, each reading yields 0 and leaves a file open",
     ReadsRareRegister},
    {Severity::kError, "an MSR cannot be written", [](const Subject& s) { return s.Kind(kCommandMsr) && s.Writes(); }},
    {Severity::kError, "a delay that reads waits and then fails its entry",
     [](const Subject& s) { return !s.context.sensor && s.Kind(kCommandDelay) && (s.Gets() || s.Sets()); }},
    {Severity::kError, "the expected value can never be read", ComparesAndCannotMatch},
    {Severity::kWarning, "what a PCI read finds is dropped: the value is 0 before the masks",
     [](const Subject& s) { return s.Kind(kCommandPci) && (s.Gets() || s.Sets()) && !ComparesAndCannotMatch(s); }},
    {Severity::kWarning, "a PCI access is always 4 bytes wide",
     [](const Subject& s) { return s.Kind(kCommandPci) && WidthOf(s.command.Opcode()) != 4; }},
    {Severity::kWarning, "an SMBus access is 1 or 2 bytes wide; this one moves nothing",
     [](const Subject& s) { return s.Kind(kCommandSmbus) && WidthOf(s.command.Opcode()) > kSmbusWidths; }},
    {Severity::kWarning, "bit 0 of an SMBus address is not part of it",
     [](const Subject& s) { return s.Kind(kCommandSmbus) && (s.Field(s.layout.address) & 1) != 0; }},
    {Severity::kWarning, "only the low 16 bits of a port number are used",
     [](const Subject& s) {
       return s.Kind(kCommandPort) && (s.Field(s.layout.address) > kLastPort || s.Field(s.layout.second) > kLastPort);
     }},
    {Severity::kWarning, "a delay without a known unit does not wait",
     [](const Subject& s) {
       return s.Kind(kCommandDelay) && (s.Field(s.layout.unit) == 0 || s.Field(s.layout.unit) > kLastDelayUnit);
     }},
    {Severity::kWarning, "a delay in argument mode waits for its argument index, not its count",
     [](const Subject& s) {
       return s.Kind(kCommandDelay) && s.Argument() && s.Field(s.layout.argument) < s.context.arguments;
     }},
    {Severity::kWarning, "the argument index names no argument: reading is not compared, writing uses the masks",
     [](const Subject& s) {
       return !s.Kind(kCommandDelay) && s.Argument() && !s.Idle() && s.Field(s.layout.argument) >= s.context.arguments;
     }},
    {Severity::kNote, "neither reads nor writes, in either direction",
     [](const Subject& s) { return !s.context.sensor && s.Idle(); }},
    {Severity::kWarning, "does not read when the sensor is read",
     [](const Subject& s) { return s.context.sensor && !(s.control & (kGetReads | kGetWrites)) && s.control != 0; }},
};

}  // namespace

void CheckCommand(const CommandView& command, const CommandContext& context, std::vector<Finding>* findings) {
  if (!command.layout) {
    findings->push_back({command.offset, Severity::kError, EndText(command, context)});
    return;
  }
  const Subject subject{command, context, *command.layout, command.Control()};
  for (const Rule& rule : kRules)
    if (rule.broken(subject)) findings->push_back({command.offset, rule.severity, rule.text});
}

}  // namespace diagnosis

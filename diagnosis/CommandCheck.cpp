// SPDX-License-Identifier: MIT
// One row per rule that a single command can break.
#include "diagnosis/CommandCheck.h"

#include <algorithm>
#include <iterator>

#include "diagnosis/CommandFacts.h"
#include "diagnosis/Words.h"

namespace diagnosis {

using namespace layout;
namespace {

/// The thermal status of a core and of the package, and the temperature that they count down from: in every Intel
/// processor of the boards that have the tables. Others come and go with the model.
constexpr uint64_t kCommonRegisters[] = {0x19C, 0x1A2, 0x1B1};

constexpr uint32_t kLastPort = 0xFFFF, kLastIndex = 0xFF;
constexpr uint64_t kLastDevice = 31, kLastFunction = 7, kLastPciRegister = 0xFFC;
/// Address bytes of SMBus devices: below are the general call and bus protocols, above ten-bit addresses.
constexpr uint64_t kFirstSlave = 0x10, kEndOfSlaves = 0xF0;

bool ReadsRareRegister(const CommandFacts& c) {
  return c.context.sensor && c.Is(kCommandMsr) &&
         std::ranges::find(kCommonRegisters, c.Field(c.layout.address)) == std::end(kCommonRegisters);
}

bool AnyDirection(const CommandFacts& c, bool (*holds)(const CommandFacts&, const DirectionBits&)) {
  return holds(c, kGetting) || holds(c, kSetting);
}

bool NeverEqual(const CommandFacts& c, const DirectionBits& d) {
  // Tested bits take any value; what is expected beyond all compared bits is never there.
  return c.Compares(d) && (!c.FixedBitsFit(d) || (c.Field(c.layout.expected) & ~c.ComparedBits()) != 0);
}

bool AlwaysEqual(const CommandFacts& c, const DirectionBits& d) {
  return c.Compares(d) && c.TakesWhatIsRead() && c.TestedBits(d) == 0 && !NeverEqual(c, d);
}

bool IsUnknownUnit(const CommandFacts& c) {
  const uint64_t unit = c.Field(c.layout.unit);
  return unit < kMicroseconds || unit > kSeconds;
}

bool HasHighPortBits(const CommandFacts& c) {
  if (!c.Is(kCommandPort)) return false;
  return c.Field(c.layout.address) > kLastPort || c.Field(c.layout.second) > kLastPort ||
         c.Field(c.layout.third) > kLastIndex;
}

bool IsOddPciPlace(const CommandFacts& c) {
  const uint64_t reg = c.Field(c.layout.reg);
  return c.Is(kCommandPci) && (c.Field(c.layout.second) > kLastDevice || c.Field(c.layout.third) > kLastFunction ||
                               (reg & 3) != 0 || reg > kLastPciRegister);
}

bool Overwrites(const CommandFacts& c, const DirectionBits& d) {
  return c.Writes(d) && !c.NamesArgument() && c.Has(d.ands) && c.Field(c.layout.andMask) != 0;
}

bool IsReservedSlave(const CommandFacts& c) {
  const uint64_t address = c.Field(c.layout.address);
  return c.Is(kCommandSmbus) && (address < kFirstSlave || address >= kEndOfSlaves);
}

/// An AND mask of ones beyond the access keeps what is not there, which does no harm.
bool IsMaskWide(const CommandFacts& c, const DirectionBits& d) {
  if (c.Is(kCommandDelay) || c.Is(kCommandMsr) || !(c.Reads(d) || c.Writes(d))) return false;
  const unsigned bytes = c.layout.orMask.bytes;
  const uint64_t field = bytes >= 8 ? ~uint64_t{0} : (uint64_t{1} << (8 * bytes)) - 1, beyond = field & ~c.AccessBits();
  const uint64_t ands = c.Has(d.ands) ? c.Field(c.layout.andMask) & beyond : 0;
  return (c.OrMask(d) & beyond) != 0 || (ands != 0 && ands != beyond);
}

struct RuleCheck {
  Rule rule;
  const char* text;
  bool (*broken)(const CommandFacts&);
};

constexpr RuleCheck kChecks[] = {
    {"msr-in-entry", "no entry can go on behind an MSR command: where it succeeds, the call ends with code 21",
     [](const CommandFacts& c) { return !c.context.sensor && c.Is(kCommandMsr); }},
    {"msr-rare",
     "not every processor has this register: where it is missing, each reading yields 0 and leaves a file open",
     ReadsRareRegister},
    {"msr-write", "an MSR cannot be written", [](const CommandFacts& c) { return c.Is(kCommandMsr) && c.Writes(); }},
    {"delay-reads", "a delay that reads waits and then fails its entry",
     [](const CommandFacts& c) { return !c.context.sensor && c.Is(kCommandDelay) && c.Reads(); }},
    {"never-equal", "the expected value can never be read",
     [](const CommandFacts& c) { return AnyDirection(c, NeverEqual); }},
    {"always-equal", "the masks leave nothing of what is read: the comparison always succeeds",
     [](const CommandFacts& c) { return AnyDirection(c, AlwaysEqual); }},
    {"pci-read", "what a PCI read finds is dropped: the value is 0 before the masks",
     [](const CommandFacts& c) { return c.Is(kCommandPci) && c.Reads() && !AnyDirection(c, NeverEqual); }},
    {"pci-width", "a PCI access is always 4 bytes wide",
     [](const CommandFacts& c) { return c.Is(kCommandPci) && c.Width() != 4; }},
    {"pci-place", "the place is not what it seems: devices go to 31, functions to 7, registers to 0xffc by fours",
     IsOddPciPlace},
    {"pci-overwrite", "a PCI write starts from 0: what the AND mask should keep is overwritten",
     [](const CommandFacts& c) { return c.Is(kCommandPci) && AnyDirection(c, Overwrites); }},
    {"smbus-width", "an SMBus access is 1 or 2 bytes wide; this one moves nothing",
     [](const CommandFacts& c) { return c.Is(kCommandSmbus) && c.Width() > kWidestSmbus; }},
    {"smbus-odd", "bit 0 of an SMBus address is not part of it",
     [](const CommandFacts& c) { return c.Is(kCommandSmbus) && (c.Field(c.layout.address) & 1) != 0; }},
    {"smbus-reserved", "the address is the general call's or reserved for the bus", IsReservedSlave},
    {"port-bits", "only the low 16 bits of a port number and the low 8 of an index are used", HasHighPortBits},
    {"pair-same", "index and data port are the same",
     [](const CommandFacts& c) { return c.IsPair() && c.Field(c.layout.address) == c.Field(c.layout.second); }},
    {"mask-wide", "a mask has bits beyond the width of the access",
     [](const CommandFacts& c) { return AnyDirection(c, IsMaskWide); }},
    {"delay-unit", "a delay without a known unit does not wait",
     [](const CommandFacts& c) { return c.Is(kCommandDelay) && IsUnknownUnit(c); }},
    {"delay-argument", "a delay in argument mode waits for its argument index, not its count",
     [](const CommandFacts& c) { return c.Is(kCommandDelay) && c.NamesArgument(); }},
    {"argument-unnamed", "the argument index names no argument: reading is not compared, writing uses the masks",
     [](const CommandFacts& c) {
       return !c.Is(kCommandDelay) && c.ArgumentMode() && !c.NamesArgument() && (c.Reads() || c.Writes());
     }},
    {"command-idle", "neither reads nor writes, in either direction",
     [](const CommandFacts& c) { return !c.context.sensor && !c.Reads() && !c.Writes(); }},
    {"sensor-write-only", "does not read when the sensor is read",
     [](const CommandFacts& c) { return c.context.sensor && !c.Reads() && !c.Writes() && c.command.Control() != 0; }},
};

}  // namespace

void CheckCommand(const RecordView& record, const CommandView& command, Findings* findings) {
  const CommandContext context = ContextOf(record);
  const size_t place = command.offset - record.offset;
  if (!command.layout) return findings->Add(record, place, "walk-ends", EndText(command, context));
  const CommandFacts facts{command, *command.layout, context};
  for (const RuleCheck& check : kChecks)
    if (check.broken(facts)) findings->Add(record, place, check.rule, check.text);
}

}  // namespace diagnosis

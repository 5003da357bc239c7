// SPDX-License-Identifier: MIT
/// What checks ask of a command: how it behaves in each direction, and what it can read and write.
#pragma once

#include <algorithm>

#include "diagnosis/CommandContext.h"
#include "layout/Ending.h"

namespace diagnosis {

inline constexpr unsigned kWidestSmbus = 2;

/// A command with its layout.
struct CommandFacts {
  const layout::CommandView& command;
  const layout::CommandLayout& layout;
  const CommandContext& context;

  bool Is(uint8_t kind) const { return layout.kind == kind; }
  bool IsPair() const { return Is(layout::kCommandPort) && layout.form == layout::kFormIndexData; }
  uint64_t Field(layout::CommandField field) const { return command.Field(field); }
  unsigned Width() const { return layout::WidthOf(command.Opcode()); }
  bool Has(uint16_t bits) const { return (command.Control() & bits) != 0; }

  /// A writing command does not read for its own sake, and sensors are never set.
  bool Writes(const layout::DirectionBits& d) const { return Runs(d) && Has(d.writes); }
  bool Reads(const layout::DirectionBits& d) const { return Runs(d) && Has(d.reads) && !Has(d.writes); }
  bool Writes() const { return Writes(layout::kGetting) || Writes(layout::kSetting); }
  bool Reads() const { return Reads(layout::kGetting) || Reads(layout::kSetting); }
  bool Runs(const layout::DirectionBits& d) const { return !context.sensor || &d == &layout::kGetting; }

  bool ArgumentMode() const { return Has(layout::kArgumentMode); }
  uint64_t Argument() const { return Field(layout.argument); }
  bool NamesArgument() const { return ArgumentMode() && Argument() < context.arguments; }
  /// Whether what it reads decides over the entry.
  bool Compares(const layout::DirectionBits& d) const {
    return Reads(d) && !ArgumentMode() && !context.sensor && !Is(layout::kCommandDelay);
  }

  /// Whether anything that is read reaches the value: from PCI it is dropped, and SMBus accesses have a widest.
  bool TakesWhatIsRead() const {
    return !Is(layout::kCommandPci) && !(Is(layout::kCommandSmbus) && Width() > kWidestSmbus);
  }
  /// The bits that an access can read or write.
  uint64_t AccessBits() const {
    const unsigned bytes = Is(layout::kCommandMsr) ? 8 : Is(layout::kCommandPci) ? 4 : Width();
    return bytes >= 8 ? ~uint64_t{0} : (uint64_t{1} << (8 * bytes)) - 1;
  }
  /// The bits of a value that are compared.
  uint64_t ComparedBits() const { return layout.valueBytes == 2 ? 0xFFFF : 0xFFFFFFFF; }
  uint64_t OrMask(const layout::DirectionBits& d) const { return Has(d.ors) ? Field(layout.orMask) : 0; }
  uint64_t AndMask(const layout::DirectionBits& d) const { return Has(d.ands) ? Field(layout.andMask) : ~uint64_t{0}; }
  /// The bits of what is read that the comparison depends on.
  uint64_t TestedBits(const layout::DirectionBits& d) const {
    return TakesWhatIsRead() ? AccessBits() & AndMask(d) & ~OrMask(d) & ComparedBits() : 0;
  }
  /// Whether the bits that do not depend on what is read are as expected.
  bool FixedBitsFit(const layout::DirectionBits& d) const {
    const uint64_t fixed = ComparedBits() & ~TestedBits(d);
    return ((OrMask(d) ^ Field(layout.expected)) & fixed) == 0;
  }
};

/// The time that a delay waits, in microseconds.
inline uint64_t WaitOf(const CommandFacts& facts) {
  if (!facts.Is(layout::kCommandDelay)) return 0;
  const uint64_t time = facts.NamesArgument() ? facts.Argument() : facts.Field(facts.layout.count);
  switch (facts.Field(facts.layout.unit)) {
    case layout::kMicroseconds:
      return time;
    case layout::kMilliseconds:
      return time * 1000;
    case layout::kSeconds:
      return time * 1000000;
    default:
      return 0;
  }
}

}  // namespace diagnosis

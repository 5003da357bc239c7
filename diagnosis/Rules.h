// SPDX-License-Identifier: MIT
/// What is looked for in tables: one row per rule, with why it matters and what helps.
#pragma once

#include <string_view>

namespace diagnosis {

enum class Severity { kNote, kWarning, kError };

struct RuleRow {
  std::string_view id;
  Severity severity;
  std::string_view reason;
  std::string_view cure;
};

// clang-format off
inline constexpr RuleRow kRules[] = {
  // --- tables ---
  {"table-length", Severity::kError, "The kernel and the library take as many bytes as the length field says.",
   "Write the number of bytes of the table, header included, at offset 4."},
  {"table-checksum", Severity::kError, "A kernel drops a table whose bytes do not sum to 0.",
   "Write the byte at offset 9 that makes the sum 0."},
  {"oem-empty", Severity::kWarning, "Nobody can tell whose table it is, and which version.",
   "Name the board's maker in oem_id and the board in oem_table_id."},
  {"oem-missing", Severity::kError, "The table would carry the name of another maker.",
   "Name the board's maker in oem_id."},
  {"record-length", Severity::kError, "The library stops reading the table there: everything behind is missing.",
   "Write the number of bytes of the record, its head included."},
  {"bytes-left", Severity::kError, "A record needs 7 bytes to have a length; these are never read.",
   "Take the bytes out, or complete the record."},
  {"record-short", Severity::kError, "A call that runs the entry ends with code 21.",
   "Give the record its whole head of 27 bytes."},
  {"record-unknown", Severity::kWarning, "The library files no record of this kind.",
   "Use a type from 1 to 35, and of sensors a sub-type that exists."},
  {"record-unread", Severity::kNote, "The record is filed, but no function of the library looks at it.",
   "Take the record out."},
  {"name-unterminated", Severity::kError, "A name of 20 bytes has no room for its terminator and is reported as empty.",
   "Shorten the name to 19 characters."},
  {"name-missing", Severity::kError, "The record is found by its name alone.", "Give it a name."},
  {"bytes-lost", Severity::kNote, "The library does not keep these bytes.", "Take them out."},
  {"entry-empty", Severity::kWarning, "An entry without commands always succeeds: it hides every entry behind it.",
   "Add the commands that tell and make the state."},
  // --- the walk over commands ---
  {"walk-ends", Severity::kError, "The library cannot step over these bytes.",
   "Use a kind and form that exist, and give each command all its bytes."},
  {"msr-in-entry", Severity::kError, "Commands behind a model-specific register have no place: the call ends with code 21.",
   "Read such registers in sensors alone."},
  {"msr-write", Severity::kError, "Model-specific registers are only read.", "Take the command out."},
  {"msr-rare", Severity::kWarning,
   "Where a processor has no such register, each reading yields 0 and leaves a file open.",
   "Read 0x19C, 0x1A2 or 0x1B1, which all boards' processors have."},
  {"delay-reads", Severity::kError, "A delay that reads waits and then fails its entry.", "Let the delay write."},
  {"delay-unit", Severity::kWarning, "A delay without a known unit does not wait.", "Use us, ms or s."},
  {"delay-argument", Severity::kWarning, "In argument mode a delay waits for its argument index, not its count.",
   "Leave argument mode off."},
  {"delay-long", Severity::kWarning, "A caller waits, and holds the hardware, all the time.",
   "Wait for less than a second in a call."},
  {"never-equal", Severity::kError, "The comparison can never succeed, so the entry never does.",
   "Expect a value that the masks leave."},
  {"always-equal", Severity::kWarning, "The comparison always succeeds: the command tests nothing.",
   "Leave bits in the AND mask that tell the state."},
  {"pci-read", Severity::kWarning, "What a PCI read finds is dropped: the value is 0 before the masks.",
   "Read the register by memory or ports, or leave the command out."},
  {"pci-width", Severity::kNote, "A PCI access is always 4 bytes wide.", "Give the command a width of 4."},
  {"pci-place", Severity::kWarning, "The access reaches another register, or another function, than it names.",
   "Use devices to 31, functions to 7 and registers to 0xFFC in steps of 4."},
  {"pci-overwrite", Severity::kWarning,
   "A PCI write starts from 0, not from the old value: what the AND mask should keep is overwritten.",
   "Put the whole register into the OR mask."},
  {"smbus-width", Severity::kWarning, "An SMBus access is 1 or 2 bytes wide; one of 4 or 8 moves nothing.",
   "Use a width of 1 or 2."},
  {"smbus-odd", Severity::kWarning, "Bit 0 of an SMBus address is the direction, not part of the address.",
   "Use the even address."},
  {"smbus-reserved", Severity::kWarning,
   "General call and reserved addresses speak to no device alone: every device may answer, or the host itself.",
   "Use an address from 0x10 to 0xEE."},
  {"port-bits", Severity::kWarning, "Only 16 bits of a port number and 8 of a register index are used.",
   "Leave the other bits 0."},
  {"argument-unnamed", Severity::kWarning,
   "The argument index names no argument: reading is not compared, writing uses the masks.",
   "Name an argument that the function has."},
  {"command-idle", Severity::kNote, "The command neither reads nor writes, in either direction.", "Take it out."},
  {"mask-wide", Severity::kWarning, "Bits beyond the width of the access are never read nor written.",
   "Cut the mask to the width."},
  // --- harm ---
  {"harm-interrupts", Severity::kWarning, "The interrupt controllers belong to the kernel.",
   "Leave ports 0x20, 0x21, 0xA0, 0xA1 and memory at 0xFEC00000 and 0xFEE00000 alone."},
  {"harm-pci-ports", Severity::kWarning,
   "The kernel uses the configuration ports at the same time: its next access may reach another device.",
   "Use a PCI command."},
  {"harm-reset", Severity::kError, "A write there can reset the machine.", "Leave port 0xCF9 alone."},
  {"harm-clock", Severity::kWarning, "Registers 0x00 to 0x0D of the NVRAM are the clock, which the kernel keeps.",
   "Use registers from 0x0E on."},
  {"harm-timer", Severity::kWarning, "The interval timer belongs to the kernel.", "Leave ports 0x40 to 0x43 alone."},
  {"harm-index", Severity::kWarning,
   "An index port written by itself leaves the pair at a register that somebody else then reads or writes.",
   "Use a command for the pair."},
  {"pair-same", Severity::kError, "Index and data port are the same: what is meant for a register goes to the index.",
   "Name the data port, most often the next one."},
  // --- sensors ---
  {"sensor-short", Severity::kError, "What the record lacks is taken from the bytes behind it.",
   "Give the record all the bytes of its kind."},
  {"sensor-twice", Severity::kWarning, "Sensors are found by name: the second is read only where the first gives none.",
   "Give each sensor a name of its own."},
  {"sensor-silent", Severity::kError, "No command reads the raw value: it stays 0.", "Add a command that reads it."},
  {"sensor-half", Severity::kWarning, "No command reads the second raw value: it counts as 0.",
   "Add the command for the low byte or the subtrahend."},
  {"sensor-write-only", Severity::kWarning, "The command does not read when the sensor is read.", "Let it read."},
  {"sensor-divisor", Severity::kError, "The reading is divided by 0.", "Give a divisor from 1 on."},
  {"sensor-divider", Severity::kWarning, "With one resistor of 0 the other does not count either.",
   "Give both resistors, or none."},
  {"sensor-step", Severity::kError, "With a step of 0 every reading is 0 V.", "Give the millivolts of a count."},
  {"sensor-width", Severity::kError, "A field of 0 bits is always 0.", "Give the number of bits of the field."},
  {"sensor-shift", Severity::kError, "A value shifted by all its bits is 0.",
   "Give a shift below the bits that are read."},
  // --- fans ---
  {"fan-mode", Severity::kWarning, "Fan modes are 0, 1 and 2; nothing reports or sets another.", "Use 0, 1 or 2."},
  {"fan-word", Severity::kWarning, "A fan's name is its entry's name without the word Mode.",
   "Put the word Mode into the name."},
  {"fan-id-name", Severity::kError,
   "The letters of the name count as the word Id, which marks the entry that identifies a chip: it is no mode then.",
   "Use at most one capital I, and no Id, in the names of modes."},
  {"fan-id-missing", Severity::kWarning,
   "An entry that identifies a chip and has no Id in its name is taken for a mode of the fan.",
   "Put the word Id into its name, and leave Mode out."},
  {"fan-prefix", Severity::kError, "The library takes a fan for the same as an earlier one whose name begins with its own.",
   "Put the shorter name first, or choose names that differ from the beginning."},
  {"fan-confused", Severity::kWarning, "Asked for one fan, the library takes entries of the other as well.",
   "Choose names of which none is part of another, not even by letters at other places."},
  {"fan-argument-0", Severity::kWarning, "Argument 0 is the mode; a parameter there reads or writes the mode's number.",
   "Number the parameters from 1 on."},
  {"fan-argument-gap", Severity::kError,
   "The caller offers as many arguments as the entry names different ones: those behind a gap are out of reach.",
   "Number the parameters 1, 2, 3 and so on."},
  {"fan-count", Severity::kWarning, "The first entry of a mode says how many parameters it has; this one has another number.",
   "Give all entries of a mode the same parameters."},
  // --- watchdog ---
  {"watchdog-operation", Severity::kWarning, "Watchdog operations are 1 to 7, and 240.", "Use one of these."},
  {"watchdog-missing", Severity::kWarning, "The watchdog cannot be used to the full without this operation.",
   "Add an entry for it, without commands where nothing needs to be done."},
  {"watchdog-interval", Severity::kError, "The interval that the caller asks for is not written anywhere.",
   "Let a command of operation 3 write and read argument 0."},
  {"watchdog-unread", Severity::kWarning, "The interval cannot be asked for.",
   "Let a command of operation 3 read argument 0."},
  {"watchdog-wide", Severity::kNote, "A caller gives an interval of one byte; the rest is written as 0.",
   "Use the low byte alone where the chip allows it."},
  {"watchdog-mode", Severity::kWarning, "A count mode that cannot be left again.", "Give operations 6 and 7, or neither."},
  // --- states: registers are taken to keep what is written ---
  {"state-hidden", Severity::kWarning, "An earlier entry succeeds whenever this one does: its state is never reported.",
   "Test a bit that tells the two apart, or put this entry first."},
  {"state-twice", Severity::kWarning, "An entry with the same index and value does the same.", "Take one out."},
  {"state-never", Severity::kError, "The tests of the entry contradict each other.", "Expect values that can be together."},
  {"state-unread", Severity::kNote, "No reading tells this state: whoever sets it cannot see it.",
   "Add a command that tells the state."},
  {"state-other", Severity::kWarning, "After setting this state, another is reported.",
   "Let the setting write what the reading tests."},
  {"state-unset", Severity::kWarning, "A caller is told that the state was set, and nothing has happened.",
   "Add a command that makes the state, to the first entry of its value."},
  {"state-unknown", Severity::kNote, "Which state is reported depends on more than the bits that are tested.",
   "Nothing, or write nothing while reading that is tested."},
  // --- board and BIOS information ---
  {"board-missing", Severity::kError, "Without a board information record no chip can be told.", "Add a record of type 0."},
  {"board-twice", Severity::kWarning, "The last board information record counts.", "Keep one."},
  {"board-short", Severity::kWarning, "The library keeps 55 bytes: what follows is taken as part of the record.",
   "Give the record 55 bytes."},
  {"chip-unknown", Severity::kWarning, "The library knows no such chip and reports none.", "Use an identifier it knows."},
  {"bios-size", Severity::kError, "A BIOS information record has 64 bytes.", "Give it 64."},
  {"bios-checksum", Severity::kError, "The library passes over a record whose bytes do not sum to 0.",
   "Write the byte that makes the sum 0."},
  {"bios-model", Severity::kError, "The model's name has no end.", "Shorten it to 53 characters."},
};
// clang-format on

/// Null when there is no such rule.
constexpr const RuleRow* FindRule(std::string_view id) {
  for (const RuleRow& row : kRules)
    if (row.id == id) return &row;
  return nullptr;
}

/// A rule by its identifier: one that does not exist does not compile.
struct Rule {
  const RuleRow* row;
  consteval Rule(const char* id) : row(FindRule(id)) {
    if (row == nullptr) throw "no such rule";
  }
};

}  // namespace diagnosis

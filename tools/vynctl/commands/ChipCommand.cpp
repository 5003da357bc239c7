// SPDX-License-Identifier: MIT
// chip: which I/O chip serves a function, and what in the tables names chips.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <memory>

#include "board/BoardTables.h"
#include "board/Codes.h"
#include "commands/Arguments.h"
#include "commands/Context.h"
#include "layout/IoChips.h"
#include "layout/Walk.h"
#include "view/BoardText.h"
#include "view/Text.h"

namespace vynctl {
namespace {

struct Arguments {
  std::string kind;
  std::string name;
};

// Kinds are the numbers of record types; below these two, the board as a whole is asked about.
constexpr uint8_t kWatchdogKind = layout::Feature("Watchdog").type;
constexpr uint8_t kFanKind = layout::Feature("FanConfig").type;
constexpr char kBoardKinds[] =
    "kinds 1 to 24 ask for the board's chip of identifier 0, which has no number; 'vynctl chip' lists the entries that "
    "name a chip";

uint8_t Kind(const std::string& text) {
  if (text == "watchdog") return kWatchdogKind;
  if (text == "fan") return kFanKind;
  const std::optional<uint8_t> kind = ParseByte(text);
  if (!kind || *kind < 1 || *kind > kFanKind) {
    throw UsageError(fmt::format("KIND must be 1 to 26, 'watchdog' (25) or 'fan' (26), not '{}'", Printable(text)));
  }
  return *kind;
}

std::string ChipName(int64_t number) {
  for (const layout::IoChip& chip : layout::kIoChips) {
    if (chip.number == number && std::string_view(chip.name) != layout::kOtherChip.name) return chip.name;
  }
  return "unnamed";
}

/// "Nuvoton 5525D-S" or, for one that the library does not know, "0x1234".
std::string NameOf(uint64_t identifier) {
  const layout::IoChip* chip = layout::FindIoChip(static_cast<uint16_t>(identifier));
  return chip != nullptr && std::string_view(chip->name) != layout::kOtherChip.name
             ? chip->name
             : fmt::format("0x{:04X}", identifier);
}

/// What names the chips of a board: the record that lists them, and the entries that identify one each.
class Identification {
 public:
  explicit Identification(const LoadOptions& options);

  /// Empty when the table has no board information record, or cannot be read here.
  const std::vector<std::string>& Chips() const { return chips_; }
  bool HasTable() const { return hasTable_; }
  bool HasRecord() const { return hasRecord_; }

  struct Entry {
    uint8_t kind;
    std::string name;  ///< as in the firmware
  };
  const std::vector<Entry>& Entries() const { return entries_; }

 private:
  bool hasTable_ = false, hasRecord_ = false;
  std::vector<std::string> chips_;
  std::vector<Entry> entries_;
};

Identification::Identification(const LoadOptions& options) {
  const std::vector<uint8_t> iamt = IamtOf(options);
  hasTable_ = !iamt.empty();
  for (layout::BoardRecordCursor cursor(layout::Covered(iamt)); cursor.Valid(); cursor.Next()) {
    const layout::BoardRecordView record = cursor.Current();
    if (!record.IsBoardRecord()) continue;
    hasRecord_ = true;
    chips_.clear();  // the last record counts
    for (const size_t offset : layout::iamt::kChipIds) {
      if (const uint64_t identifier = layout::Load(record.Kept(), offset, 2)) chips_.push_back(NameOf(identifier));
    }
  }
  const std::vector<uint8_t> iadt = IadtOf(options);
  for (layout::RecordCursor cursor(layout::Covered(iadt)); cursor.Valid(); cursor.Next()) {
    const layout::RecordView record = cursor.Current();
    if (record.Type() != kWatchdogKind && record.Type() != kFanKind) continue;
    if (record.Value() != layout::iadt::kIdValue) continue;
    const layout::View bytes = record.Name();
    const std::string_view padded(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    entries_.push_back({record.Type(), std::string(padded.substr(0, padded.find('\0')))});
  }
}

/// Why no chip can be told; nothing when one might.
std::optional<Refusal> RefuseWithoutRecord(const Context& context, const Identification& known) {
  if (known.HasRecord() || (!known.HasTable() && HasBothTables(context.library))) return std::nullopt;
  const std::string where = known.HasTable() ? "it is not in the table IAMT"
                                             : "the table IAMT was not found: " + SeekTables(context.options.load).iamt;
  return Refusal{0, fmt::format("the firmware has no board information record, which names the board's chips; {}{}",
                                where, DoctorHint(context.options.load))};
}

Value Ask(const Library& library, uint8_t kind, const std::string& name) {
  Value value{.id = fmt::format("chip/{}", kind), .name = fmt::format("I/O chip of kind {}", kind), .quantity = "chip"};
  if (!name.empty()) value.id += '/' + IdPart(Printable(name));
  uint8_t io = 0;
  // A code 16 left by an earlier call would keep kinds 1 to 24 from looking; a query leaves another.
  library.Functions().GetTemperature("", nullptr, VYNLIB_QUERY);
  library.Functions().GetWhichIOToBeUse(kind, name.c_str(), &io);
  if (library.LastError() != VYNLIB_OK) return Failed(value, library.LastError());
  value.data = int64_t{io};
  return value;
}

std::string Shown(const Value& value) {
  const int64_t* number = std::get_if<int64_t>(&value.data);
  return number != nullptr ? fmt::format("I/O chip {} ({})", *number, ChipName(*number)) : ShownFailure(value);
}

int List(Context& context, const Identification& known) {
  using enum Table::Align;
  Document document;
  Table table({kLeft, kLeft, kLeft});
  table.Heading({"KIND", "NAME", "WHAT"});
  table.Add(
      {{"1 to 24"}, {"-"}, {"the board as a whole: its chip of identifier 0, which has no number", Tone::kFaint}});
  for (const Identification::Entry& entry : known.Entries()) {
    const Value value = Ask(context.library, entry.kind, entry.name);
    document.values.push_back(value);
    table.Add({{entry.kind == kFanKind ? "fan (26)" : "watchdog (25)"},
               {Printable(entry.name)},
               {Shown(value), value.state == State::kOk ? Tone::kPlain : ToneOf(value)}});
  }
  MakeIdsUnique(document.values);
  if (known.Entries().empty())
    table.Add({{"watchdog, fan"}, {"-"}, {"this board has no identifying entry", Tone::kFaint}});
  const std::string chips = known.Chips().empty() ? "none" : fmt::format("{}", fmt::join(known.Chips(), ", "));
  return context.Finish(document, fmt::format("The board's chips: {}\n\n{}", chips, table.Render(context.style)));
}

/// The library's reason and, of kinds that cannot name a chip, that they cannot.
Refusal Explained(const Value& value, uint8_t kind) {
  if (kind >= kWatchdogKind || value.code == VYNLIB_ERROR_NOT_INITIALISED) return {value.code, value.words};
  return {value.code, fmt::format("{}; {}", value.words, kBoardKinds)};
}

int Run(Context& context, const Arguments& arguments) {
  const uint8_t kind = arguments.kind.empty() ? 0 : Kind(arguments.kind);
  if (kind >= kWatchdogKind && arguments.name.empty()) {
    throw UsageError(
        fmt::format("kind {} needs NAME, the name of the board's identifying entry; 'vynctl chip' lists them", kind));
  }
  const Identification known(context.options.load);
  if (const std::optional<Refusal> refusal = RefuseWithoutRecord(context, known)) {
    return context.Finish(Document::Refused(*refusal), "");
  }
  if (arguments.kind.empty()) return List(context, known);
  Document document;
  document.values = {Ask(context.library, kind, arguments.name)};
  const Value& value = document.values.front();
  if (value.state != State::kOk) document.refusal = Explained(value, kind);
  return context.Finish(document, document.refusal ? "" : Shown(value) + '\n');
}

}  // namespace

Syntax DescribeChip() {
  const auto arguments = std::make_shared<Arguments>();
  return {.arguments = {{.name = "KIND",
                         .target = &arguments->kind,
                         .help = "'watchdog' (25) or 'fan' (26), or 1 to 24 for the board as a whole; without: lists "
                                 "the board's chips and identifying entries"},
                        {.name = "NAME",
                         .target = &arguments->name,
                         .help = "name of the identifying entry, for 'watchdog' and 'fan'"}},
          .usage = "[KIND [NAME]]",
          .run = [arguments](Context& context) { return Run(context, *arguments); }};
}

}  // namespace vynctl

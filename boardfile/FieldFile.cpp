// SPDX-License-Identifier: MIT
// Masks from bits, states from values, places from the instance.
#include "boardfile/FieldFile.h"

#include <algorithm>
#include <bit>
#include <charconv>

#include "boardfile/CommandWords.h"
#include "layout/AccessCommand.h"
#include "layout/LittleEndian.h"

namespace boardfile {

using namespace firmware;
using namespace layout;
namespace {

constexpr uint64_t kByte = 0xFF, kDword = 0xFFFFFFFF;
constexpr size_t kTextLimit = 64;
constexpr unsigned kBits = 32;
/// More than this of one field is a mistake in the file.
constexpr size_t kFieldBytes = size_t{1} << 20;
constexpr std::string_view kIndexWord = "index";

/// "4..5", "0x10..0x13" or a single number.
std::optional<std::pair<uint64_t, uint64_t>> ParseRange(std::string_view text, uint64_t max) {
  const size_t dots = text.find("..");
  const auto first = ParseNumber(text.substr(0, dots));
  const auto last = dots == text.npos ? first : ParseNumber(text.substr(dots + 2));
  if (!first || !last || *first > *last || *last > max) return {};
  return std::pair(*first, *last);
}

/// A number, a list of numbers, or a range in words.
std::vector<uint8_t> ReadNumbers(TomlSection* section, std::string_view key) {
  std::vector<uint8_t> numbers;
  if (!section->IsList(key)) return {static_cast<uint8_t>(section->Need(key, kByte))};
  if (!section->IsText(key)) {
    for (const uint64_t number : section->Numbers(key, kByte)) numbers.push_back(static_cast<uint8_t>(number));
    return numbers;
  }
  const auto range = ParseRange(section->NeedText(key, kTextLimit), kByte);
  if (!range) section->Fail(key, "a number, a list of numbers or a range from 0 to 255, \"0..7\"");
  for (uint64_t number = range->first; number <= range->second; ++number)
    numbers.push_back(static_cast<uint8_t>(number));
  return numbers;
}

/// The states: named (`{ low = 0, high = 1 }`), in the order of their values, or numbers alone.
std::vector<uint8_t> ReadValues(TomlSection* section) {
  if (!section->Has("values")) return {0, 1};
  if (!section->IsTable("values")) return ReadNumbers(section, "values");
  std::vector<uint8_t> values;
  auto named = section->Sub("values");
  for (const std::string& name : named->Keys()) values.push_back(static_cast<uint8_t>(named->Need(name, kByte)));
  std::ranges::sort(values);
  return values;
}

/// Which bits of the register, for one instance.
struct Mask {
  uint64_t bits;
  unsigned shift;  ///< what a state is shifted by
};

/// How the mask of an instance is found.
class Masks {
 public:
  explicit Masks(TomlSection* section) {
    if (section->Has("mask")) {
      mask_ = {section->Need("mask", kDword), 0};
    } else if (section->Has("bits")) {
      const auto range = ParseRange(section->NeedText("bits", kTextLimit), kBits - 1);
      if (!range) section->Fail("bits", "a range of bits, \"4..5\"");
      const auto count = static_cast<unsigned>(range->second - range->first + 1);
      mask_ = {((uint64_t{1} << count) - 1) << range->first, static_cast<unsigned>(range->first)};
    } else if (section->IsText("bit")) {
      byIndex_ = section->NeedText("bit", kTextLimit) == kIndexWord;
      if (!byIndex_) section->Fail("bit", "a number from 0 to 31, or \"index\"");
    } else {
      const auto bit = static_cast<unsigned>(section->Need("bit", kBits - 1));
      mask_ = {uint64_t{1} << bit, bit};
    }
  }
  Mask Of(uint8_t index) const { return byIndex_ ? Mask{uint64_t{1} << (index % kBits), index % kBits} : mask_; }
  bool Fits(uint8_t index) const { return !byIndex_ || index < kBits; }

 private:
  Mask mask_ = {};
  bool byIndex_ = false;
};

/// The number that tells one register from the next.
CommandField PlaceOf(const CommandLayout& layout) {
  if (layout.third.bytes && layout.kind == kCommandPort) return layout.third;
  return layout.kind == kCommandSmbus ? layout.second : layout.address;
}

Command Moved(const Command& command, uint64_t by) {
  Bytes bytes = command.Build();
  const CommandField place = PlaceOf(*FindLayout(bytes[0]));
  Put(&bytes, place.offset, place.bytes, Load(bytes, place.offset, place.bytes) + by);
  return Command::Raw(bytes);
}

/// All that a section says, once for all entries.
class Field {
 public:
  Field(TomlSection* section, const Sequences& sequences)
      : section_(*section), place_(ReadPlace(section)), masks_(section), width_(WidthOf(place_.Build()[0])) {
    const std::string function = section->NeedText("function", kTextLimit);
    type_ = FindFeature(function);
    if (!type_)
      section->Fail("function", "the name of a feature (docs/board-files.md lists them)", function, FeatureNames());
    values_ = ReadValues(section);
    codes_ = section->Numbers("codes", kDword);
    if (!codes_.empty() && codes_.size() != values_.size()) section->Fail("codes", "as many as there are values");
    indices_ = section->Has("index") ? ReadNumbers(section, "index") : std::vector<uint8_t>{0};
    step_ = section->Number("step", kByte, 0);
    name_ = section->Text("name", iadt::kNameBytes).value_or("");
    before_ = Sequence("before", sequences);
    after_ = Sequence("after", sequences);
    ReadAccess();
    section->Finish();
  }

  std::vector<FieldEntry> Entries() const {
    std::vector<FieldEntry> entries;
    size_t size = 0;
    for (size_t i = 0; i < indices_.size(); ++i)
      for (size_t v = 0; v < values_.size(); ++v) {
        entries.push_back({type_, indices_[i], values_[v], name_, Commands(indices_[i], i * step_, v)});
        size += iadt::kBody;
        for (const Command& command : entries.back().commands) size += command.Build().size();
        if (size > kFieldBytes) throw BoardFileError(section_.Where(), "the records of a field must fit into 1 MiB");
      }
    return entries;
  }

 private:
  std::vector<Command> Sequence(std::string_view key, const Sequences& sequences) {
    const auto name = section_.Text(key, kTextLimit);
    return name ? FindSequence(section_, key, *name, sequences) : std::vector<Command>{};
  }

  void ReadAccess() {
    const std::string access = section_.Text("access", kTextLimit).value_or("get set");
    gets_ = access == "get" || access == "get set";
    sets_ = access == "set" || access == "get set";
    if (!gets_ && !sets_) section_.Fail("access", "\"get\", \"set\" or \"get set\"");
  }

  uint64_t CodeOf(const Mask& mask, size_t v) const {
    const uint64_t code = (codes_.empty() ? values_[v] : codes_[v]) << mask.shift;
    const uint64_t all = (uint64_t{1} << std::min(8 * width_, 32u)) - 1;
    if ((mask.bits & ~all) != 0 || (code & ~mask.bits) != 0)
      throw BoardFileError(section_.Where(), "the bits of [[field]] must be within its register and hold its values");
    return code;
  }

  std::vector<Command> Commands(uint8_t index, uint64_t move, size_t v) const {
    if (!masks_.Fits(index)) throw BoardFileError(section_.WhereOf("bit"), "\"bit\" of [[field]] goes up to 31");
    const Mask mask = masks_.Of(index);
    const uint64_t code = CodeOf(mask, v), keep = ((uint64_t{1} << std::min(8 * width_, 32u)) - 1) & ~mask.bits;
    std::vector<Command> commands = before_;
    if (sets_) commands.push_back(Moved(Command(place_).Set(keep, code), move));
    if (gets_) commands.push_back(Moved(Command(place_).Get(mask.bits, static_cast<uint32_t>(code)), move));
    commands.insert(commands.end(), after_.begin(), after_.end());
    return commands;
  }

  TomlSection section_;
  Command place_;
  Masks masks_;
  unsigned width_;
  const RecordType* type_ = nullptr;
  std::vector<uint8_t> values_, indices_;
  std::vector<uint64_t> codes_;
  uint64_t step_ = 0;
  std::string name_;
  std::vector<Command> before_, after_;
  bool gets_ = true, sets_ = true;
};

}  // namespace

std::vector<FieldEntry> ReadField(TomlSection* section, const Sequences& sequences) {
  return Field(section, sequences).Entries();
}

}  // namespace boardfile

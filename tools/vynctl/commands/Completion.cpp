// SPDX-License-Identifier: MIT
// The board's names and numbers come out of its function description table, so that a key touches no hardware, waits
// for nobody and needs no library.
#include "commands/Completion.h"

#include <fmt/core.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "board/Features.h"
#include "board/Sensors.h"
#include "layout/Walk.h"
#include "view/Text.h"

namespace vynctl {
namespace {

using commandline::Candidate;
using Candidates = std::vector<Candidate>;

struct Asked {
  const commandline::Place& place;
  std::span<const uint8_t> iadt;

  const std::string& Word(size_t i) const { return place.words[i]; }
  bool Has(size_t words) const { return place.words.size() >= words; }
};

template <typename Visit>
void ForEachRecord(std::span<const uint8_t> iadt, Visit visit) {
  if (iadt.size() < layout::acpi::kHeaderBytes) return;
  for (layout::RecordCursor cursor(layout::Covered(iadt)); cursor.Valid(); cursor.Next()) visit(cursor.Current());
}

std::string NameOf(const layout::RecordView& record) {
  const layout::View bytes = record.Name();
  const std::string_view padded(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return std::string(padded.substr(0, padded.find('\0')));
}

/// Each word once, in the order of the table.
void Add(Candidates& candidates, const Candidate& candidate) {
  const auto same = [&](const Candidate& other) { return other.word == candidate.word; };
  if (!candidate.word.empty() && std::none_of(candidates.begin(), candidates.end(), same))
    candidates.push_back(candidate);
}

bool Fits(const std::string& command, const Feature& feature) {
  if (command == "get") return feature.getter != nullptr;
  return command != "set" || feature.setter != nullptr;
}

Candidates FeaturesOf(const Asked& asked) {
  Candidates found;
  for (const Feature& feature : Features()) {
    bool listed = asked.iadt.empty();
    ForEachRecord(asked.iadt, [&](const layout::RecordView& record) { listed |= record.Type() == feature.recordType; });
    if (listed && Fits(asked.place.command, feature)) found.push_back({feature.name});
  }
  return found;
}

Candidates Numbers(const std::vector<uint8_t>& numbers) {
  Candidates found;
  for (uint8_t number : numbers) found.push_back({fmt::format("{}", number)});
  return found;
}

/// The values of an instance, or of a feature without any.
Candidates ValuesAt(const Asked& asked, const Feature& feature, uint8_t index) {
  return Numbers(AllowedAt(FindAllowed(asked.iadt, feature), index));
}

/// Behind a feature without instances the place of the index is that of the value.
Candidates InstancesOf(const Asked& asked) {
  const Feature* feature = asked.Has(1) ? FindFeature(asked.Word(0)) : nullptr;
  if (feature == nullptr) return {};
  if (feature->shape != Shape::kIndexed)
    return asked.place.command == "set" ? ValuesAt(asked, *feature, 0) : Candidates{};
  std::vector<uint8_t> instances;
  for (const AllowedValues& row : FindAllowed(asked.iadt, *feature)) instances.push_back(row.index);
  return Numbers(instances);
}

Candidates ValuesOf(const Asked& asked) {
  const Feature* feature = asked.Has(2) ? FindFeature(asked.Word(0)) : nullptr;
  const std::optional<uint8_t> index = asked.Has(2) ? ParseByte(asked.Word(1)) : std::nullopt;
  if (feature == nullptr || feature->shape != Shape::kIndexed || !index) return {};
  return ValuesAt(asked, *feature, *index);
}

struct Sensor {
  const char* quantity;  ///< as on the command line
  std::string name;

  /// Its name, or its identifier where a sensor of another quantity has the same name.
  std::string Word(const std::vector<Sensor>& all) const {
    const auto other = [&](const Sensor& one) { return one.name == name && one.quantity != quantity; };
    return std::any_of(all.begin(), all.end(), other) ? fmt::format("{}/{}", quantity, IdPart(name)) : name;
  }
};

std::vector<Sensor> ListedSensors(std::span<const uint8_t> iadt) {
  std::vector<Sensor> sensors;
  ForEachRecord(iadt, [&](const layout::RecordView& record) {
    if (record.Row() == nullptr || !record.Row()->IsSensor()) return;
    // The table's word for a quantity is how the tool's begins.
    for (const Quantity& quantity : Quantities()) {
      if (std::string_view(quantity.name).starts_with(record.Row()->name))
        sensors.push_back({quantity.name, Printable(NameOf(record))});
    }
  });
  return sensors;
}

Candidates SensorsOf(const Asked& asked) {
  Candidates found;
  for (const Quantity& quantity : Quantities()) found.push_back({quantity.name, quantity.title});
  const std::vector<Sensor> sensors = ListedSensors(asked.iadt);
  for (const Sensor& sensor : sensors) Add(found, {sensor.Word(sensors), sensor.quantity});
  return found;
}

constexpr uint8_t kWatchdogKind = layout::Feature("Watchdog").type;
constexpr uint8_t kFanKind = layout::Feature("FanConfig").type;

bool IsIdentifying(const layout::RecordView& record) { return record.Value() == layout::iadt::kIdValue; }

/// The name of a fan's entry without the word that says what it sets; "" of other records.
std::string FanOf(const layout::RecordView& record) {
  if (record.Type() != kFanKind || IsIdentifying(record)) return "";
  std::string name = NameOf(record);
  const size_t mode = name.find(layout::kFanModeWord);
  if (mode != std::string::npos) name.erase(mode, layout::kFanModeWord.size());
  return Printable(Trim(name));
}

Candidates FansOf(const Asked& asked) {
  Candidates found;
  ForEachRecord(asked.iadt, [&](const layout::RecordView& record) { Add(found, {FanOf(record)}); });
  return found;
}

/// The fan's modes; what follows a mode are its parameters, of which the table tells no values.
Candidates FanModes(const Asked& asked) {
  Candidates found;
  if (asked.place.words.size() != 2) return found;
  ForEachRecord(asked.iadt, [&](const layout::RecordView& record) {
    if (FanOf(record) == asked.Word(0) && record.Value() < layout::kFanModes)
      Add(found, {fmt::format("{}", record.Value())});
  });
  return found;
}

Candidates ChipEntries(const Asked& asked) {
  Candidates found;
  const uint8_t kind = asked.Has(1) && asked.Word(0) == "fan" ? kFanKind : kWatchdogKind;
  ForEachRecord(asked.iadt, [&](const layout::RecordView& record) {
    if (record.Type() == kind && IsIdentifying(record)) Add(found, {Printable(Trim(NameOf(record)))});
  });
  return found;
}

Candidates Files(const Asked&) { return {{kFileNames}}; }

/// What may stand for an argument, by the name that its description gives it.
struct Offer {
  std::string_view argument;
  std::string_view command;  ///< "" for every command
  Candidates (*find)(const Asked& asked);
};
constexpr Offer kOffers[] = {
    {"FEATURE", "", FeaturesOf},
    {"INDEX", "", InstancesOf},
    {"VALUE", "set", ValuesOf},
    {"SENSOR", "", SensorsOf},
    {"NAME", "fan", FansOf},
    {"VERB", "fan", [](const Asked&) { return Candidates{{"set", "change the fan"}}; }},
    {"NUMBERS", "fan", FanModes},
    {"KIND", "chip", [](const Asked&) { return Candidates{{"watchdog"}, {"fan"}}; }},
    {"NAME", "chip", ChipEntries},
    {"-s,--simulate", "", Files},
    {"--lock-file", "", Files},
    {"-f,--limits", "check", Files},
    {"-o,--output", "metrics", Files},
    {"-b,--bundle", "doctor", Files},
};

Candidates OffersFor(const Asked& asked) {
  if (asked.place.argument == nullptr) return {};
  for (const Offer& offer : kOffers) {
    const bool here = offer.command.empty() || offer.command == asked.place.command;
    if (here && offer.argument == asked.place.argument->name) return offer.find(asked);
  }
  return {};
}

}  // namespace

std::string Completions(const commandline::Place& place, std::span<const uint8_t> iadt) {
  std::string text;
  Candidates candidates = place.candidates;
  for (const Candidate& offer : OffersFor({place, iadt})) candidates.push_back(offer);
  for (const Candidate& candidate : candidates) {
    const std::string attached = candidate.word == kFileNames ? "" : place.attached;
    text += attached + candidate.word + (candidate.help.empty() ? "" : '\t' + candidate.help) + '\n';
  }
  return text;
}

}  // namespace vynctl

// SPDX-License-Identifier: MIT
// States of features, fans and the watchdog's count modes: which can be told, and whether what is set is told.
#include <algorithm>
#include <map>
#include <set>
#include <span>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "diagnosis/FeatureShapes.h"
#include "diagnosis/RecordChecks.h"
#include "diagnosis/RegisterBits.h"
#include "diagnosis/Words.h"
#include "layout/FanName.h"

namespace diagnosis {

using namespace layout;
namespace {

constexpr uint8_t kWatchdogType = Feature("Watchdog").type, kFanConfigType = Feature("FanConfig").type;

/// An instance with more entries is not looked into: values have 8 bits.
constexpr size_t kMostEntries = 512;

/// The entries among which one call looks for the state, in the order of the table.
struct Instance {
  bool gets = true, sets = true;
  Records entries = {};
};

/// By what the entries of a call have in common; in the order of their first entries.
std::vector<Instance> Instances(const Records& records) {
  std::vector<Instance> instances;
  std::map<std::string, size_t> places;
  const auto add = [&](const std::string& key, bool gets, bool sets, const RecordView& record) {
    const auto [place, fresh] = places.emplace(key, instances.size());
    if (fresh) instances.push_back({.gets = gets, .sets = sets});
    instances[place->second].entries.push_back(record);
  };
  for (const RecordView& record : records) {
    if (record.Type() == kWatchdogType) {
      if (record.Value() == kWatchdogCountMode0 || record.Value() == kWatchdogCountMode1)
        add("count mode", true, true, record);
    } else if (record.Type() == kFanConfigType) {
      if (record.Value() != iadt::kIdValue && !FanNameMatches(NameText(record), kFanIdWord))
        add("fan " + FanText(record), true, true, record);
    } else if (const FeatureShape* shape = FindShape(record.Type())) {
      const int index = shape->indexed ? record.Index() : -1;
      add(fmt::format("{} {}", record.Type(), index), shape->gets, shape->sets, record);
    }
  }
  return instances;
}

/// One instance and all that is known of its entries.
class States {
 public:
  States(const Instance& instance, RegisterBits* bits, Findings* findings)
      : instance_(instance), entries_(instance.entries), findings_(findings) {
    for (const RecordView& record : entries_) {
      readings_.push_back(bits->ReadingOf(record));
      settings_.push_back(bits->SettingOf(record));
      if (Succeeds(readings_.size() - 1)) conditions_.push_back(readings_.back().tested);
      before_.push_back(conditions_.size() - (Succeeds(readings_.size() - 1) ? 1 : 0));
    }
  }

  void Check() {
    CheckTwins();
    CheckSettable();
    // An entry that ends a call with a code is found as such, and nothing behind it can be told.
    if (!instance_.gets || std::ranges::any_of(readings_, &Reading::broken)) return;
    CheckContradictions();
    if (const std::string why = Unknown(); !why.empty())
      return findings_->Add(entries_.front(), 0, "state-unknown", "cannot tell which state is reported: " + why);
    CheckHidden();
    if (instance_.sets)
      for (size_t i = 0; i < entries_.size(); ++i) CheckReadBack(i);
  }

 private:
  uint8_t Value(size_t i) const { return entries_[i].Value(); }
  bool Succeeds(size_t i) const { return !readings_[i].never && !readings_[i].contradicts; }
  static std::string Name(uint8_t value) { return fmt::format("value {}", value); }

  /// Later entries that only repeat an earlier one.
  void CheckTwins() {
    std::set<std::pair<uint8_t, std::string>> seen;
    for (size_t i = 0; i < entries_.size(); ++i) {
      const View body = Body(i);
      if (seen.emplace(Value(i), std::string(body.begin(), body.end())).second) continue;
      twins_.insert(i);
      findings_->Add(entries_[i], 0, "state-twice", "an entry before it has the same value and commands");
    }
  }
  View Body(size_t i) const {
    const View bytes = entries_[i].Bytes();
    return bytes.subspan(std::min(iadt::kBody, bytes.size()));
  }

  /// States that a call sets with success though nothing is written, where others are written.
  void CheckSettable() {
    const auto writes = [](const Setting& setting) { return setting.writes; };
    if (!instance_.sets || std::ranges::none_of(settings_, writes)) return;
    for (size_t i = 0; i < entries_.size(); ++i)
      if (IsFirst(i) && !settings_[i].writes && settings_[i].unknown.empty())
        findings_->Add(entries_[i], 0, "state-unset", "setting it succeeds and writes nothing");
  }

  /// The first entry of a value is the one that is set.
  bool IsFirst(size_t i) const {
    for (size_t j = 0; j < i; ++j)
      if (Value(j) == Value(i)) return false;
    return true;
  }

  void CheckContradictions() {
    for (size_t i = 0; i < entries_.size(); ++i)
      if (readings_[i].contradicts)
        findings_->Add(entries_[i], 0, "state-never", "its commands want different values of the same bit");
  }

  /// Why nothing can be said; empty when something can.
  std::string Unknown() {
    if (entries_.size() > kMostEntries) return fmt::format("it has more than {} entries", kMostEntries);
    for (size_t i = 0; i < entries_.size(); ++i) {
      if (!readings_[i].unknown.empty()) return fmt::format("of {} {}", Name(Value(i)), readings_[i].unknown);
      for (const auto& [bit, number] : readings_[i].places)
        if (tested_.emplace(bit, number).first->second != number)
          return "the same register is tested behind two selections, " + bit;
    }
    for (size_t i = 0; i < entries_.size(); ++i)
      for (const std::string& place : readings_[i].written)
        if (const auto next = tested_.lower_bound(place + " bit");
            next != tested_.end() && next->first.starts_with(place + " bit"))
          return fmt::format("reading {} writes what is tested, {}", Name(Value(i)), place);
    return "";
  }

  /// What must not hold for an entry to be reported: all that stand before it.
  std::span<const Bits> Before(size_t i) const { return std::span(conditions_).first(before_[i]); }

  /// Whether the entry can be the one that is reported on a board where `given` holds.
  Answer CanBeReported(size_t i, const Bits& given) const {
    if (!Succeeds(i) || !Agree(readings_[i].tested, given)) return Answer::kNo;
    Bits all = given;
    all.insert(readings_[i].tested.begin(), readings_[i].tested.end());
    return CanAvoid(all, Before(i));
  }

  void CheckHidden() {
    for (size_t i = 0; i < entries_.size(); ++i) {
      if (!Succeeds(i) || twins_.contains(i) || CanBeReported(i, {}) != Answer::kNo) continue;
      findings_->Add(entries_[i], 0, "state-hidden", HiddenBy(i));
    }
  }

  std::string HiddenBy(size_t i) const {
    for (size_t j = 0; j < i; ++j)
      if (Succeeds(j) && CanAvoid(readings_[i].tested, {&readings_[j].tested, 1}) == Answer::kNo)
        return fmt::format("it is never reported: {}, before it, succeeds whenever it does", Name(Value(j)));
    return "it is never reported: whenever it succeeds, one of the entries before it does";
  }

  /// The states that may be reported where `given` holds; nothing when that cannot be told.
  struct Reported {
    bool known = true, none = false;
    std::set<uint8_t> values = {};
  };
  Reported ReportedAfter(const Bits& given) const {
    Reported reported;
    const Answer none = CanAvoid(given, conditions_);
    reported.none = none == Answer::kYes;
    reported.known = none != Answer::kUnknown;
    for (size_t i = 0; i < entries_.size(); ++i) {
      const Answer answer = CanBeReported(i, given);
      if (answer == Answer::kUnknown) reported.known = false;
      if (answer == Answer::kYes) reported.values.insert(Value(i));
    }
    return reported;
  }

  /// Whether a bit that is tested is written behind another selection than it is read behind.
  bool WritesElsewhere(const Setting& setting) const {
    return std::ranges::any_of(setting.places, [&](const auto& written) {
      const auto found = tested_.find(written.first);
      return found != tested_.end() && found->second != written.second;
    });
  }

  void CheckReadBack(size_t i) {
    if (!IsFirst(i) || !settings_[i].writes || !settings_[i].unknown.empty()) return;
    const std::string unknown = "cannot tell what is reported after setting it: ";
    if (WritesElsewhere(settings_[i]))
      return findings_->Add(entries_[i], 0, "state-unknown", unknown + "it is written behind another selection");
    Reported reported = ReportedAfter(settings_[i].written);
    if (!reported.known) return findings_->Add(entries_[i], 0, "state-unknown", unknown + "too many bits are tested");
    const bool confirmed = reported.values.erase(Value(i)) != 0;
    if (confirmed && reported.values.empty() && !reported.none) return;
    if (!confirmed && reported.values.empty())
      return findings_->Add(entries_[i], 0, "state-unread", "after setting it no state is reported");
    std::vector<std::string> others;
    for (const uint8_t value : reported.values) others.push_back(Name(value));
    if (reported.none) others.push_back("no state");
    findings_->Add(entries_[i], 0, "state-other",
                   fmt::format("after setting it {} {} reported", fmt::join(others, " or "),
                               confirmed || others.size() > 1 ? "may be" : "is"));
  }

  const Instance& instance_;
  const Records& entries_;
  Findings* findings_;
  std::vector<Reading> readings_;
  std::vector<Setting> settings_;
  std::map<std::string, unsigned> tested_;  ///< bits by place
  std::vector<Bits> conditions_;            ///< of the entries that can succeed
  std::vector<size_t> before_;              ///< how many of these stand before each entry
  std::set<size_t> twins_;
};

}  // namespace

void CheckStates(const Records& records, Findings* findings) {
  RegisterBits bits(records);
  for (const Instance& instance : Instances(records)) States(instance, &bits, findings).Check();
}

}  // namespace diagnosis

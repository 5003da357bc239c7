// SPDX-License-Identifier: MIT
// Exceptions are matched by rule and place.
#include "vyntable/Judgement.h"

#include <algorithm>

#include <fmt/format.h>

#include "commandline/Words.h"
#include "vyntable/Files.h"

namespace vyntable {

using namespace diagnosis;
namespace {

void RequireRule(const std::string& rule, const std::string& where) {
  if (FindRule(rule)) return;
  std::vector<std::string> ids;
  for (const RuleRow& row : kRules) ids.emplace_back(row.id);
  throw BadInput(fmt::format("{}: there is no rule '{}'{}", where, rule, commandline::Suggestion(rule, ids)));
}

std::string Counted(size_t number, const char* word) {
  return fmt::format("{} {}{}", number, word, number == 1 ? "" : "s");
}

bool Covers(const Allowed& allowed, const Finding& finding) {
  return allowed.rule == finding.rule->id && allowed.first <= finding.offset && finding.offset < allowed.end;
}

}  // namespace

bool Exception::Covers(const Verdict& verdict) const {
  if (rule != verdict.rule->id) return false;
  return place.empty() || (":" + verdict.place + ":").find(":" + place + ":") != std::string::npos;
}

void Judgement::Allow(const std::string& text) {
  const size_t colon = text.find(':');
  const std::string rule = text.substr(0, colon);
  RequireRule(rule, "--allow");
  exceptions_.push_back({rule, colon == text.npos ? "" : text.substr(colon + 1)});
}

void Judgement::Keep(Verdict verdict) {
  if (std::ranges::any_of(exceptions_, [&](const Exception& each) { return each.Covers(verdict); }))
    ++allowed_;
  else
    verdicts_.push_back(std::move(verdict));
}

void Judgement::Add(const Image& image) {
  for (const Allowed& allowed : image.allowed) RequireRule(allowed.rule, allowed.place);
  constexpr Rule kNoMaker = "oem-missing";
  for (const Remark& remark : image.remarks) Keep({kNoMaker.row, kNoMaker.row->severity, remark.place, remark.text});
  for (const Finding& finding : CheckImage(image)) {
    if (std::ranges::any_of(image.allowed, [&](const Allowed& each) { return Covers(each, finding); }))
      ++allowed_;
    else
      Keep({finding.rule, finding.severity, PlaceOf(image, finding.offset), finding.text});
  }
}

size_t Judgement::Count(Severity severity) const {
  return static_cast<size_t>(std::ranges::count(verdicts_, severity, &Verdict::severity));
}

std::string Judgement::Summary() const {
  return fmt::format("{}, {}, {}{}", Counted(Count(Severity::kError), "error"),
                     Counted(Count(Severity::kWarning), "warning"), Counted(Count(Severity::kNote), "note"),
                     allowed_ ? fmt::format("; {} allowed", allowed_) : "");
}

const char* SeverityName(Severity severity) {
  constexpr const char* kNames[] = {"note", "warning", "error"};
  return kNames[static_cast<size_t>(severity)];
}

std::string LineOf(const Verdict& verdict) {
  return fmt::format("{}: {}: {} [{}]", commandline::Printable(verdict.place), SeverityName(verdict.severity),
                     commandline::Printable(verdict.text), verdict.rule->id);
}

}  // namespace vyntable

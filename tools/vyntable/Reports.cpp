// SPDX-License-Identifier: MIT
// The only source of the tool that knows the JSON library.
#include "vyntable/Reports.h"

#include <charconv>

#include <nlohmann/json.hpp>

#include "commandline/Words.h"

namespace vyntable {

using namespace diagnosis;

using Json = nlohmann::ordered_json;
using commandline::Printable;
namespace {

std::string Text(std::string_view text) { return std::string(text); }

std::string Written(const Json& json) { return json.dump(2) + "\n"; }

/// "FILE:LINE:COLUMN" of a board file, "FILE:0xOFFSET" of a table.
struct Location {
  std::string file;
  unsigned line = 0, column = 0;
  uint64_t offset = 0;
};

bool TakeNumber(std::string* text, uint64_t* number) {
  const size_t colon = text->rfind(':');
  if (colon == text->npos) return false;
  const bool hex = text->compare(colon + 1, 2, "0x") == 0;
  const char* const first = text->data() + colon + (hex ? 3 : 1);
  const char* const end = text->data() + text->size();
  const auto [next, error] = std::from_chars(first, end, *number, hex ? 16 : 10);
  if (error != std::errc() || next != end) return false;
  text->resize(colon);
  return true;
}

Location LocationOf(const std::string& place) {
  Location location{.file = place};
  uint64_t last = 0, before = 0;
  const bool hex = place.rfind(":0x") != place.npos;
  if (!TakeNumber(&location.file, &last)) return location;
  if (hex || !TakeNumber(&location.file, &before)) {
    location.offset = last;
    return location;
  }
  location.line = static_cast<unsigned>(before);
  location.column = static_cast<unsigned>(last);
  return location;
}

/// A path as a reference, every byte that means something there escaped.
std::string Reference(const std::string& path) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string uri;
  for (const char c : path) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       std::string_view("-._~/").find(c) != std::string_view::npos;
    if (plain) {
      uri += c;
    } else {
      uri += '%';
      uri += kDigits[static_cast<unsigned char>(c) >> 4];
      uri += kDigits[static_cast<unsigned char>(c) & 0xF];
    }
  }
  return uri;
}

Json RegionOf(const Location& location) {
  if (location.line != 0) return {{"startLine", location.line}, {"startColumn", location.column}};
  return {{"byteOffset", location.offset}, {"byteLength", 1}};
}

Json ResultOf(const Verdict& verdict) {
  const Location location = LocationOf(verdict.place);
  return {
      {"ruleId", Text(verdict.rule->id)},
      {"ruleIndex", verdict.rule - kRules},
      {"level", SeverityName(verdict.severity)},
      {"message", {{"text", Printable(verdict.text)}}},
      {"locations",
       Json::array({{{"physicalLocation",
                      {{"artifactLocation", {{"uri", Reference(location.file)}}}, {"region", RegionOf(location)}}}}})}};
}

Json Rules() {
  Json rules = Json::array();
  for (const RuleRow& row : kRules)
    rules.push_back({{"id", Text(row.id)},
                     {"shortDescription", {{"text", Text(row.reason)}}},
                     {"help", {{"text", Text(row.cure)}}},
                     {"defaultConfiguration", {{"level", SeverityName(row.severity)}}}});
  return rules;
}

}  // namespace

std::string JsonReport(const Judgement& judgement) {
  Json findings = Json::array();
  for (const Verdict& verdict : judgement.Verdicts())
    findings.push_back({{"rule", Text(verdict.rule->id)},
                        {"severity", SeverityName(verdict.severity)},
                        {"place", Printable(verdict.place)},
                        {"text", Printable(verdict.text)},
                        {"reason", Text(verdict.rule->reason)},
                        {"cure", Text(verdict.rule->cure)}});
  return Written({{"findings", findings},
                  {"errors", judgement.Count(Severity::kError)},
                  {"warnings", judgement.Count(Severity::kWarning)},
                  {"notes", judgement.Count(Severity::kNote)}});
}

std::string SarifReport(const Judgement& judgement, const std::string& version) {
  Json results = Json::array();
  for (const Verdict& verdict : judgement.Verdicts()) results.push_back(ResultOf(verdict));
  const Json driver = {{"name", "vyntable"}, {"version", version}, {"rules", Rules()}};
  return Written(
      {{"version", "2.1.0"}, {"runs", Json::array({{{"tool", {{"driver", driver}}}, {"results", results}}})}});
}

}  // namespace vyntable

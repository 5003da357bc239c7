// SPDX-License-Identifier: MIT
// Puts the findings of the check of a table into one line each.
#include "doctor/TableCheck.h"

#include <fmt/core.h>

#include <algorithm>

#include "diagnosis/Check.h"
#include "view/Text.h"

namespace vynctl::doctor {
namespace {

using diagnosis::Severity;

std::string Counts(const std::vector<diagnosis::Finding>& found) {
  const auto counted = [&](Severity severity, const char* word) {
    return Counted(static_cast<size_t>(std::ranges::count(found, severity, &diagnosis::Finding::severity)), word);
  };
  return fmt::format("{}, {}, {}", counted(Severity::kError, "error"), counted(Severity::kWarning, "warning"),
                     counted(Severity::kNote, "note"));
}

Finding Contents(const FirmwareTable& table, diagnosis::Kind kind, const char* id) {
  Finding finding{.id = id, .what = fmt::format("Check of {}", table.signature), .found = "in order"};
  if (table.Used().empty()) {
    finding.found = "not looked at, the library finds no such table";
    finding.verdict = Verdict::kWarning;
    finding.next = fmt::format("See 'Table {}'.", table.signature);
    return finding;
  }
  const std::vector<diagnosis::Finding> found = diagnosis::CheckImage(
      {.kind = kind, .name = table.signature, .bytes = {table.Used().begin(), table.Used().end()}});
  if (found.empty()) return finding;
  const auto error = std::ranges::find(found, Severity::kError, &diagnosis::Finding::severity);
  const diagnosis::Finding& shown = error != found.end() ? *error : found.front();
  finding.found = fmt::format("{}; the first{} at byte {:#x}: {}", Counts(found), error != found.end() ? " error" : "",
                              shown.offset, Printable(shown.text));
  if (error == found.end()) return finding;
  finding.verdict = Verdict::kWarning;
  finding.next =
      "What is wrong in it does not work, the rest does. Send a bundle to the board's maker: 'vynctl doctor --bundle "
      "FILE.tar'; "
      "'vyntable check' lists everything.";
  return finding;
}

}  // namespace

Findings JudgeContents(const Tables& tables) {
  return {Contents(tables.iadt, diagnosis::Kind::kIadt, "iadt-check"),
          Contents(tables.iamt, diagnosis::Kind::kIamt, "iamt-check")};
}

}  // namespace vynctl::doctor

// SPDX-License-Identifier: MIT
// Puts the parts of the examination together and writes them as text.
#include "doctor/Examine.h"

#include <fmt/core.h>

#include <algorithm>

#include "doctor/Owners.h"
#include "doctor/Privilege.h"
#include "doctor/Smbus.h"
#include "doctor/Surroundings.h"
#include "doctor/TableCheck.h"

namespace vynctl::doctor {
namespace {

constexpr Tone kTones[] = {Tone::kGood, Tone::kWarning, Tone::kBad};
constexpr size_t kIndent = 4;

void Append(Findings more, Findings* findings) { std::move(more.begin(), more.end(), std::back_inserter(*findings)); }

}  // namespace

Examination Examine(const Machine& machine, const std::string& toolVersion) {
  Examination result;
  const Privilege privilege = LookAtPrivilege(machine);
  result.tables = LookAtTables(machine);
  const std::string& table = result.tables.iadt.Used();
  std::optional<TableUse> use;
  if (!table.empty()) use = UseOf(table);
  Findings& findings = result.findings;
  Append(Judge(privilege), &findings);
  Append(JudgeMemory(result.tables, privilege), &findings);
  findings.push_back(JudgeMsr(machine, privilege, use));
  Append(JudgeTables(result.tables, privilege), &findings);
  Append(JudgeContents(result.tables), &findings);
  Append(JudgeSmbus(machine, use), &findings);
  Append(JudgeOwners(machine, use), &findings);
  findings.push_back(JudgeLock(machine));
  findings.push_back(JudgeHypervisor(machine, use.has_value()));
  Append(JudgeVersions(machine, toolVersion), &findings);
  return result;
}

std::string Summary(const Findings& findings) {
  const auto count = [&](Verdict verdict) {
    return static_cast<size_t>(std::ranges::count(findings, verdict, &Finding::verdict));
  };
  const std::string warnings = Counted(count(Verdict::kWarning), "warning");
  switch (Gravest(findings)) {
    case Verdict::kOk:
      return "The board can be used.";
    case Verdict::kWarning:
      return fmt::format("The board can be used, with {}.", warnings);
    case Verdict::kProblem:
      break;
  }
  return fmt::format("The board cannot be used: {}, {}.", Counted(count(Verdict::kProblem), "problem"), warnings);
}

std::string ToText(const Findings& findings, const Style& style) {
  std::string text;
  for (const Finding& finding : findings) {
    const std::string verdict = fmt::format("[{}]", ToString(finding.verdict));
    text += fmt::format("{}: {}  {}\n", finding.what, finding.found,
                        style.Paint(kTones[static_cast<size_t>(finding.verdict)], verdict));
    if (!finding.next.empty()) text += fmt::format("{:{}}{}\n", "", kIndent, finding.next);
  }
  return text + '\n' + Summary(findings) + '\n';
}

}  // namespace vynctl::doctor

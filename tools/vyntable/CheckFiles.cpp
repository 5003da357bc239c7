// SPDX-License-Identifier: MIT
// 'vyntable check': the findings of every table that is named, a line each or for programs.
#include <fmt/core.h>

#include <memory>

#include "commandline/Words.h"
#include "vyntable/Commands.h"
#include "vyntable/Files.h"
#include "vyntable/Judgement.h"
#include "vyntable/Reports.h"

namespace vyntable {

using namespace diagnosis;
namespace {

struct Options {
  std::vector<std::string> files, allow;
  bool strict = false, json = false, sarif = false, rules = false;
};

void PrintLines(const Judgement& judgement) {
  for (const Verdict& verdict : judgement.Verdicts()) fmt::print("{}\n", LineOf(verdict));
  fmt::print("{}\n", judgement.Summary());
}

int PrintRules() {
  for (const RuleRow& row : kRules)
    fmt::print("{} ({})\n  {}\n  {}\n", row.id, SeverityName(row.severity), row.reason, row.cure);
  return kExitOk;
}

int Check(const Options& options) {
  if (options.rules) return PrintRules();
  if (options.files.empty()) throw BadInput("check needs FILE, or --rules");
  Judgement judgement;
  for (const std::string& text : options.allow) judgement.Allow(text);
  for (const Image& image : ReadImages(options.files)) judgement.Add(image);
  if (options.sarif)
    fmt::print("{}", SarifReport(judgement, VYNTABLE_VERSION));
  else if (options.json)
    fmt::print("{}", JsonReport(judgement));
  else
    PrintLines(judgement);
  const bool bad = options.strict ? !judgement.Verdicts().empty() : judgement.Count(Severity::kError) != 0;
  return bad ? kExitFindings : kExitOk;
}

}  // namespace

Syntax DescribeCheck() {
  const auto options = std::make_shared<Options>();
  return {.arguments =
              {{.name = "FILE", .target = &options->files, .help = "where tables come from"},
               {.name = "--strict", .target = &options->strict, .help = "warnings and notes count as much as errors"},
               {.name = "--allow",
                .target = &options->allow,
                .help = "RULE or RULE:PLACE, which may be broken (everywhere, or there)",
                .oneEach = true},
               {.name = "--json", .target = &options->json, .help = "an object for programs"},
               {.name = "--sarif", .target = &options->sarif, .help = "a SARIF 2.1.0 log"},
               {.name = "--rules", .target = &options->rules, .help = "all rules, why they matter and what helps"}},
          .run = [options] { return Check(*options); }};
}

}  // namespace vyntable

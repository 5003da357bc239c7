// SPDX-License-Identifier: MIT
// doctor: looks at the machine without the library, and packs what support needs.
#include <fmt/core.h>

#include <ctime>
#include <memory>

#include "commands/Context.h"
#include "doctor/Bundle.h"
#include "doctor/Examine.h"
#include "doctor/Tar.h"
#include "view/Text.h"

namespace vynctl {
namespace {

using doctor::BundleFile;
using doctor::Examination;
using doctor::Finding;

constexpr char kToolVersion[] = VYNCTL_VERSION;

/// The exit status is the gravest verdict.
int StatusOf(const Examination& examination) { return static_cast<int>(examination.Result()); }

Json::Object FindingToJson(const Finding& finding) {
  return {{"id", finding.id},
          {"what", finding.what},
          {"found", finding.found},
          {"verdict", ToString(finding.verdict)},
          {"next", finding.next.empty() ? Json() : Json(finding.next)}};
}

Json::Object MembersOf(const Examination& examination) {
  Json::Array findings;
  for (const Finding& finding : examination.findings) findings.push_back(FindingToJson(finding));
  return {{"verdict", ToString(examination.Result())},
          {"exit", StatusOf(examination)},
          {"summary", doctor::Summary(examination.findings)},
          {"findings", findings}};
}

Json BundleToJson(const std::string& path, const std::vector<BundleFile>& files) {
  Json::Array list;
  for (const BundleFile& file : files) {
    list.push_back(Json::Object{{"name", file.name},
                                {"holds", file.holds},
                                {"bytes", uint64_t{file.content.size()}},
                                {"missing", file.missing.empty() ? Json() : Json(file.missing)}});
  }
  return Json::Object{{"file", Printable(path)}, {"files", list}};
}

std::string BundleText(const std::string& path, const std::vector<BundleFile>& files) {
  std::string text = fmt::format("\n{} was written (for its owner alone to read). It holds:\n", Printable(path));
  std::string missing;
  for (const BundleFile& file : files) {
    if (file.missing.empty()) {
      text += fmt::format("  {}  {} bytes, {}\n", file.name, file.content.size(), file.holds);
    } else {
      missing += fmt::format("  {}  {}: {}\n", file.name, file.holds, file.missing);
    }
  }
  return missing.empty() ? text : text + "It lacks:\n" + missing;
}

/// The bundle's files, written to `path`.
std::vector<BundleFile> WriteBundle(const Outlet& outlet, const doctor::Machine& machine,
                                    const Examination& examination, const std::string& path) {
  Document document;
  document.extra = {{"doctor", MembersOf(examination)}};
  const std::string json =
      IndentedText(ToJson(document, outlet.command, outlet.options, examination.tables.Model())) + '\n';
  std::vector<BundleFile> files = doctor::CollectBundle(machine, examination.tables, json);
  const int error = doctor::WriteNewFile(path, doctor::PackBundle(files, static_cast<uint64_t>(time(nullptr))));
  if (error == 0) return files;
  throw std::runtime_error(fmt::format("cannot write {}: {}", Printable(path), doctor::ErrorWords(error)));
}

int Run(const Outlet& outlet, const std::string& bundle) {
  if (!outlet.options.load.board.empty())
    throw UsageError("doctor looks at this machine; a simulated board has nothing to look at");
  const doctor::Machine machine;
  const Examination examination = doctor::Examine(machine, kToolVersion);
  std::string text = doctor::ToText(examination.findings, outlet.style);
  Json::Object members = MembersOf(examination);
  if (!bundle.empty()) {
    const std::vector<BundleFile> files = WriteBundle(outlet, machine, examination, bundle);
    text += BundleText(bundle, files);
    members.emplace_back("bundle", BundleToJson(bundle, files));
  }
  Document document;
  document.extra = {{"doctor", members}};
  outlet.Finish(document, text, examination.tables.Model());
  return StatusOf(examination);
}

}  // namespace

Syntax DescribeDoctor() {
  const auto bundle = std::make_shared<std::string>();
  return {.arguments = {{.name = "-b,--bundle",
                         .target = bundle.get(),
                         .help = "make this archive of what support needs (FILE.tar, which must not exist yet)"}},
          .runAlone = [bundle](const Outlet& outlet) { return Run(outlet, *bundle); }};
}

}  // namespace vynctl

// 'vyntable check': the findings of every table that is named, a line each.
#include <fmt/core.h>

#include <memory>

#include "commandline/Words.h"
#include "diagnosis/Check.h"
#include "vyntable/Commands.h"
#include "vyntable/Files.h"

namespace vyntable {

using namespace diagnosis;
namespace {

struct Options {
  std::vector<std::string> files;
};

std::string Counted(size_t number, const char* word) {
  return fmt::format("{} {}{}", number, word, number == 1 ? "" : "s");
}

int Check(const Options& options) {
  constexpr const char* kSeverities[] = {"note", "warning", "error"};
  size_t counts[3] = {};
  for (const Image& image : ReadImages(options.files)) {
    for (const Finding& finding : CheckImage(image)) {
      const auto severity = static_cast<size_t>(finding.severity);
      ++counts[severity];
      fmt::print("{}: {}: {}\n", commandline::Printable(PlaceOf(image, finding.offset)), kSeverities[severity],
                 commandline::Printable(finding.text));
    }
  }
  fmt::print("{}, {}, {}\n", Counted(counts[2], "error"), Counted(counts[1], "warning"), Counted(counts[0], "note"));
  return counts[2] ? kExitFindings : kExitOk;
}

}  // namespace

Syntax DescribeCheck() {
  const auto options = std::make_shared<Options>();
  return {.arguments = {{.name = "FILE",
                         .target = &options->files,
                         .help = "tables, a directory that holds them, or a board file",
                         .required = true}},
          .run = [options] { return Check(*options); }};
}

}  // namespace vyntable

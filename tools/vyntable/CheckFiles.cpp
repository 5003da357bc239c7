// 'vyntable check': the findings of every table that is named, a line each.
#include <fmt/core.h>

#include <memory>

#include "vyntable/Check.h"
#include "vyntable/Commands.h"
#include "vyntable/Files.h"

namespace vyntable {
namespace {

struct Options {
  std::vector<std::string> files;
};

int Check(const Options& options) {
  constexpr const char* kSeverities[] = {"note", "warning", "error"};
  size_t counts[3] = {};
  for (const Image& image : ReadImages(options.files)) {
    for (const Finding& finding : CheckImage(image)) {
      const auto severity = static_cast<size_t>(finding.severity);
      ++counts[severity];
      fmt::print("{}:{:#06x}: {}: {}\n", image.name, finding.offset, kSeverities[severity], finding.text);
    }
  }
  fmt::print("{} errors, {} warnings, {} notes\n", counts[2], counts[1], counts[0]);
  return counts[2] ? kExitBadInput : kExitOk;
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

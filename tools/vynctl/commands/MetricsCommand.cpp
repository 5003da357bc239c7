// SPDX-License-Identifier: MIT
// metrics: the sensors for Prometheus, on standard output or in a file.
#include <fmt/core.h>

#include <memory>

#include "board/BoardTables.h"
#include "board/Sensors.h"
#include "commandline/Streams.h"
#include "commands/Context.h"
#include "view/Metrics.h"
#include "view/Output.h"

namespace vynctl {
namespace {

/// To the file, or where there is none to standard output unless JSON goes there.
void TellFailure(const std::string& path, const Options& options) {
  if (!path.empty()) {
    ReplaceFile(path, MetricsOfNothing());
  } else if (!options.json) {
    commandline::Print("vynctl", MetricsOfNothing());
  }
}

int Run(Context& context, const std::string& path) {
  if (const auto refusal = RefuseWithoutTables(context.library, context.options.load)) {
    if (!path.empty()) ReplaceFile(path, MetricsOfNothing());
    return context.Finish(Document::Refused(*refusal), path.empty() ? MetricsOfNothing() : "");
  }
  Document document;
  document.values = ReadSensors(context.library, Doubts::About(context.options.load));
  const std::string text = MetricsText(document.values, context.library.Model(), HasBothTables(context.library));
  if (path.empty()) return context.Finish(document, text);
  ReplaceFile(path, text);
  return kDone;
}

}  // namespace

Syntax DescribeMetrics() {
  const auto path = std::make_shared<std::string>();
  return {.arguments = {{.name = "-o,--output",
                         .target = path.get(),
                         .help = "write to this file, replacing it in one step (for a textfile collector)"}},
          .run = [path](Context& context) { return Run(context, *path); },
          .notStarted = [path](const Options& options) { TellFailure(*path, options); }};
}

}  // namespace vynctl

// SPDX-License-Identifier: MIT
// sensors: the readings of all or of chosen sensors, by quantity.
#include <fmt/core.h>

#include <algorithm>
#include <memory>

#include "board/Sensors.h"
#include "commands/Arguments.h"
#include "commands/Context.h"
#include "view/BoardText.h"

namespace vynctl {
namespace {

int Run(Context& context, const std::vector<std::string>& wanted) {
  Document document;
  document.values = ReadSensors(context.library, Doubts::About(context.options.load));
  if (document.values.empty() && wanted.empty()) return context.Finish(document, "This board has no sensors.\n");
  const std::string missing = Choose(document.values, wanted);
  if (!missing.empty()) throw UsageError(fmt::format("{}; 'vynctl sensors' lists them", missing));
  return context.Finish(document, GroupedSensors(document.values, context.style));
}

}  // namespace

Syntax DescribeSensors() {
  const auto wanted = std::make_shared<std::vector<std::string>>();
  return {.arguments = {{.name = "SENSOR",
                         .target = wanted.get(),
                         .help = "names, identifiers or quantities (voltage, temperature, ...); without: all"}},
          .needsTable = true,
          .run = [wanted](Context& context) { return Run(context, *wanted); }};
}

}  // namespace vynctl

// SPDX-License-Identifier: MIT
// fans: the fans that can be controlled, as a table.
#include <fmt/core.h>

#include <algorithm>

#include "board/Controls.h"
#include "commands/Context.h"
#include "view/BoardText.h"
#include "view/Text.h"

namespace vynctl {
namespace {

int Run(Context& context) {
  const std::vector<Fan> fans = ReadFans(context.library);
  if (fans.empty()) return context.Finish(Document::Refused(context.library.LastError()), "");
  Document document;
  document.values = FanValues(fans);
  return context.Finish(document, FanTable(fans, context.style));
}

}  // namespace

Syntax DescribeFans() { return {.needsTable = true, .run = Run}; }

}  // namespace vynctl

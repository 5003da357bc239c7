#include <fmt/core.h>

#include <algorithm>

#include "FanText.h"
#include "Subcommand.h"
#include "Text.h"

namespace vynctl {
namespace {

Tone Mark(const Value& value) { return value.state == State::kOk ? Tone::kPlain : ToneOf(value); }

Cell Shown(const Value& value) {
  const std::string text = ShownData(value);
  return {text.empty() ? "-" : text, Mark(value)};
}

int Run(Context& context) {
  const std::vector<Fan> fans = ReadFans(context.library);
  if (fans.empty()) return context.Finish(Document::Refused(context.library.LastError()), "");
  Document document;
  document.values = FanValues(fans);
  return context.Finish(document, FanTable(fans, context.style));
}

}  // namespace

std::string FanTable(const std::vector<Fan>& fans, const Style& style, size_t indent) {
  using enum Table::Align;
  Table table({kLeft, kLeft, kLeft, kLeft, kLeft});
  table.Heading({"FAN", "MODES", "MODE", "PARAMETERS", ""});
  for (const Fan& fan : fans) {
    const bool moded = fan.modes.state == State::kOk || fan.mode.state == State::kOk;
    const std::string note = ShownFailure(fan.mode.state == State::kOk ? fan.parameters : fan.mode);
    if (moded) {
      table.Add({{fan.name}, Shown(fan.modes), Shown(fan.mode), Shown(fan.parameters), {note, Mark(fan.mode)}});
    } else {
      table.Add({{fan.name}, {"-"}, {"-"}, {"-"}, {note, Tone::kFaint}});
    }
  }
  return table.Render(style, indent);
}

Syntax DescribeFans() { return {.needsTable = true, .run = Run}; }

}  // namespace vynctl

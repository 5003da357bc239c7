#include <fmt/core.h>

#include <memory>

#include "Codes.h"
#include "FeatureArguments.h"
#include "Subcommand.h"
#include "Text.h"

namespace vynctl {
namespace {

struct Arguments {
  std::string kind;
  std::string name;
};

struct IoChip {
  uint8_t number;
  const char* name;
};

/// What the library's I/O numbers stand for.
constexpr IoChip kChips[] = {
    {1, "Fintek 81966"}, {2, "Nuvoton 6126D"},   {3, "Nuvoton 5525D"},
    {4, "MCU 121"},      {5, "Nuvoton 5525D-S"}, {6, "Nuvoton 6796D-S"},
};

constexpr uint8_t kWatchdogKind = 25;
constexpr uint8_t kFanKind = 26;

uint8_t Kind(const std::string& text) {
  if (text == "watchdog") return kWatchdogKind;
  if (text == "fan") return kFanKind;
  const std::optional<uint8_t> kind = ParseByte(text);
  if (!kind || *kind < 1 || *kind > kFanKind) {
    throw UsageError(fmt::format("KIND must be 1 to 26, 'watchdog' (25) or 'fan' (26), not '{}'", Printable(text)));
  }
  return *kind;
}

std::string ChipName(int64_t number) {
  for (const IoChip& chip : kChips) {
    if (chip.number == number) return chip.name;
  }
  return "unnamed";
}

Value Ask(const Library& library, uint8_t kind, const std::string& name) {
  Value value{.id = fmt::format("chip/{}", kind), .name = fmt::format("I/O chip of kind {}", kind), .quantity = "chip"};
  if (!name.empty()) value.id += '/' + IdPart(Printable(name));
  uint8_t io = 0;
  // A code 16 left by an earlier call would keep kinds 1 to 24 from looking; a query leaves another.
  library.Functions().GetTemperature("", nullptr, VYNLIB_QUERY);
  library.Functions().GetWhichIOToBeUse(kind, name.c_str(), &io);
  if (library.LastError() != VYNLIB_OK) return Failed(value, library.LastError());
  value.data = int64_t{io};
  return value;
}

int Run(Context& context, const Arguments& arguments) {
  const uint8_t kind = Kind(arguments.kind);
  if (kind >= kWatchdogKind && arguments.name.empty()) {
    throw UsageError(fmt::format("kind {} needs NAME, the name of the board's identifying entry", kind));
  }
  Document document;
  document.values = {Ask(context.library, kind, arguments.name)};
  const Value& value = document.values.front();
  document.RefuseIfNotOk(value);
  if (document.refusal) return context.Finish(document, "");
  const int64_t number = std::get<int64_t>(value.data);
  return context.Finish(document, fmt::format("I/O chip {} ({})\n", number, ChipName(number)));
}

}  // namespace

Syntax DescribeChip() {
  const auto arguments = std::make_shared<Arguments>();
  return {.arguments = {{.name = "KIND",
                         .target = &arguments->kind,
                         .help = "1 to 24, 'watchdog' (25) or 'fan' (26)",
                         .required = true},
                        {.name = "NAME",
                         .target = &arguments->name,
                         .help = "name of the identifying entry, for 'watchdog' and 'fan'"}},
          .run = [arguments](Context& context) { return Run(context, *arguments); }};
}

}  // namespace vynctl

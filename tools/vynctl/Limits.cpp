#include "Limits.h"

#include <fmt/core.h>

#include <fstream>

#include "Context.h"
#include "Text.h"

namespace vynctl {
namespace {

double ParseBound(std::string_view text, std::string_view range) {
  const std::optional<double> number = ParseNumber(text);
  if (!number) {
    throw UsageError(fmt::format("'{}' is not a range such as 10:20, 500:, ~:80 or @0:5", Printable(range)));
  }
  return *number;
}

}  // namespace

Range ParseRange(std::string_view text) {
  text = Trim(text);
  Range range;
  if (text.empty() || text == "-") return range;
  range.text = text;
  std::string_view rest = text;
  if (rest.starts_with('@')) {
    range.inverted = true;
    rest.remove_prefix(1);
  }
  const size_t colon = rest.find(':');
  const std::string_view low = colon == std::string_view::npos ? "" : rest.substr(0, colon);
  const std::string_view high = colon == std::string_view::npos ? rest : rest.substr(colon + 1);
  if (low != "~") range.low = low.empty() ? 0 : ParseBound(low, text);
  if (!high.empty() || colon == std::string_view::npos) range.high = ParseBound(high, text);
  if (range.low > range.high) throw UsageError(fmt::format("the range '{}' ends before it begins", Printable(text)));
  return range;
}

Limit ParseLimit(std::string_view text) {
  const size_t equals = text.rfind('=');
  if (equals == std::string_view::npos || Trim(text.substr(0, equals)).empty()) {
    throw UsageError(fmt::format("'{}' is not a limit; write SENSOR=WARNING,CRITICAL", Printable(text)));
  }
  const std::string_view ranges = text.substr(equals + 1);
  const size_t comma = ranges.find(',');
  Limit limit{.sensor = std::string(Trim(text.substr(0, equals))), .warning = ParseRange(ranges.substr(0, comma))};
  if (comma != std::string_view::npos) limit.critical = ParseRange(ranges.substr(comma + 1));
  if (limit.warning.text.empty() && limit.critical.text.empty()) {
    throw UsageError(fmt::format("the limit of '{}' has no range", Printable(limit.sensor)));
  }
  return limit;
}

std::vector<Limit> ReadLimits(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw UsageError(fmt::format("cannot read the limits file {}", Printable(path)));
  std::vector<Limit> limits;
  size_t number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    const std::string_view text = Trim(line);
    if (text.empty() || text.starts_with('#')) continue;
    try {
      limits.push_back(ParseLimit(text));
    } catch (const UsageError& error) {
      throw UsageError(fmt::format("{}:{}: {}", Printable(path), number, error.what()));
    }
  }
  if (file.bad()) throw UsageError(fmt::format("cannot read the limits file {}", Printable(path)));
  // A monitoring that judges nothing would say OK for ever.
  if (limits.empty()) throw UsageError(fmt::format("the limits file {} holds no limit", Printable(path)));
  return limits;
}

}  // namespace vynctl

// SPDX-License-Identifier: MIT
// check: judges the sensors by limits, in one line for a monitoring system.
#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <memory>

#include "board/BoardTables.h"
#include "board/Codes.h"
#include "board/Sensors.h"
#include "commands/Arguments.h"
#include "commands/Context.h"
#include "view/BoardText.h"
#include "view/Text.h"

namespace vynctl {
namespace {

struct Arguments {
  std::vector<std::string> sensors;
  std::vector<std::string> limits;
  std::string file;
};

/// Plugin states: the number is the exit status, the order in the table is from harmless to grave.
struct Verdict {
  const char* word;
  int exit;
};
constexpr Verdict kVerdicts[] = {{"OK", 0}, {"UNKNOWN", 3}, {"WARNING", 1}, {"CRITICAL", 2}};
enum Gravity : size_t { kFine, kUnknown, kWarning, kCritical };

struct Judged {
  Value value;
  Range warning = {};
  Range critical = {};
  Gravity gravity = kFine;
};

double Number(const Value& value) {
  if (const int64_t* number = std::get_if<int64_t>(&value.data)) return static_cast<double>(*number);
  return std::get<double>(value.data);
}

Judged Judge(const Value& value, const std::vector<Limit>& limits) {
  Judged judged{.value = value, .warning = {}, .critical = {}};
  for (const Limit& limit : limits) {
    if (!IsCalled(value, limit.sensor)) continue;
    judged.warning = limit.warning;
    judged.critical = limit.critical;
  }
  if (!value.HasData()) {
    judged.gravity = kUnknown;
  } else if (!judged.critical.Accepts(Number(value))) {
    judged.gravity = kCritical;
  } else if (!judged.warning.Accepts(Number(value))) {
    judged.gravity = kWarning;
  } else if (value.state == State::kDoubtful) {
    judged.gravity = kUnknown;
  }
  return judged;
}

/// Text without the characters that divide a plugin's output.
std::string PluginText(std::string text) {
  std::replace(text.begin(), text.end(), '|', '_');
  std::replace(text.begin(), text.end(), ';', ',');
  return text;
}

std::string Complaint(const Judged& judged) {
  const Value& value = judged.value;
  if (!value.HasData()) return PluginText(fmt::format("{}: {}", value.name, ShownFailure(value)));
  std::string text = fmt::format("{} {} {}", value.name, ShownData(value), value.unit);
  const Range& broken = judged.gravity == kCritical ? judged.critical : judged.warning;
  if (judged.gravity > kUnknown) text += fmt::format(" (good: {})", broken.text);
  if (value.state == State::kDoubtful) text += fmt::format(" (doubtful: {})", ShownFailure(value));
  return PluginText(text);
}

/// Labels by identifier: the name where no other sensor of the board has it or is called so, else the identifier.
using Labels = std::map<std::string, std::string>;

Labels LabelsOf(const std::vector<Value>& sensors) {
  Labels labels;
  std::map<std::string, int> taken;
  for (const Value& value : sensors) {
    std::string label = DistinctName(value);
    std::replace_if(
        label.begin(), label.end(), [](char c) { return c == '=' || c == '\'' || c == '|'; }, '_');
    ++taken[label];
    ++taken[value.id];
    labels[value.id] = std::move(label);
  }
  for (auto& [id, label] : labels) {
    if (taken[label] > 1) label = id;
  }
  return labels;
}

/// 'label'=value unit;warning;critical
std::string PerformanceData(const Judged& judged, const std::string& label) {
  std::string tail = fmt::format(";{};{}", judged.warning.text, judged.critical.text);
  tail.erase(tail.find_last_not_of(';') + 1);
  if (!judged.value.HasData()) return fmt::format("'{}'=U{}", label, tail);
  return fmt::format("'{}'={}{}{}", label, ShortData(judged.value), judged.value.unit, tail);
}

Gravity Worst(const std::vector<Judged>& all) {
  Gravity worst = kFine;
  for (const Judged& judged : all) worst = std::max(worst, judged.gravity);
  return worst;
}

std::string Line(const std::vector<Judged>& all, const Labels& labels) {
  const Gravity worst = Worst(all);
  std::string complaints, data;
  for (size_t gravity = kCritical; gravity > kFine; --gravity) {
    for (const Judged& judged : all) {
      if (judged.gravity == gravity) complaints += (complaints.empty() ? "" : ", ") + Complaint(judged);
    }
  }
  for (const Judged& judged : all) data += ' ' + PerformanceData(judged, labels.at(judged.value.id));
  if (complaints.empty()) complaints = fmt::format("{} sensor{}", all.size(), all.size() == 1 ? "" : "s");
  return fmt::format("VYNLIB {} - {} |{}\n", kVerdicts[worst].word, complaints, data);
}

Json::Member ToJson(const Verdict& verdict, const std::vector<Judged>& all) {
  Json::Array sensors;
  for (const Judged& judged : all) {
    sensors.push_back(Json::Object{{"id", judged.value.id},
                                   {"status", kVerdicts[judged.gravity].word},
                                   {"warning", Printable(judged.warning.text)},
                                   {"critical", Printable(judged.critical.text)}});
  }
  return {"check", Json::Object{{"status", verdict.word}, {"exit", verdict.exit}, {"sensors", sensors}}};
}

std::vector<Limit> AllLimits(const Arguments& arguments) {
  std::vector<Limit> limits;
  if (!arguments.file.empty()) limits = ReadLimits(arguments.file);
  for (const std::string& text : arguments.limits) limits.push_back(ParseLimit(text));
  return limits;
}

/// "" or a sentence about the first limit that names no sensor for certain.
std::string StrayLimit(const std::vector<Value>& values, const std::vector<Limit>& limits) {
  for (const Limit& limit : limits) {
    std::string sentence = Misnamed(values, limit.sensor);
    if (!sentence.empty()) return sentence;
  }
  return "";
}

int Unknown(Context& context, const std::string& why) {
  Document document;
  document.refusal = Refusal{0, why};
  document.extra = {ToJson(kVerdicts[kUnknown], {})};
  if (context.options.json) {
    context.Finish(document, "");
  } else {
    context.Print(fmt::format("VYNLIB UNKNOWN - {}\n", PluginText(why)));
  }
  return kVerdicts[kUnknown].exit;
}

int Run(Context& context, const Arguments& arguments) {
  const std::vector<Limit> limits = AllLimits(arguments);
  if (const auto refusal = RefuseWithoutTables(context.library, context.options.load)) {
    return Unknown(context, refusal->words);
  }
  std::vector<Value> values = ReadSensors(context.library, Doubts::About(context.options.load));
  const Labels labels = LabelsOf(values);
  std::string trouble = StrayLimit(values, limits);
  if (trouble.empty()) trouble = Choose(values, arguments.sensors);
  if (trouble.empty() && values.empty()) trouble = "this board has no sensors";
  if (!trouble.empty()) return Unknown(context, trouble);
  std::vector<Judged> all;
  for (const Value& value : values) all.push_back(Judge(value, limits));
  Document document;
  document.values = values;
  const Verdict& verdict = kVerdicts[Worst(all)];
  document.extra = {ToJson(verdict, all)};
  context.Finish(document, Line(all, labels));
  return verdict.exit;
}

}  // namespace

Syntax DescribeCheck() {
  const auto arguments = std::make_shared<Arguments>();
  return {
      .arguments = {{.name = "SENSOR",
                     .target = &arguments->sensors,
                     .help = "names, identifiers or quantities to check; without: all sensors"},
                    {.name = "-l,--limit",
                     .target = &arguments->limits,
                     .help = "SENSOR=WARNING,CRITICAL: ranges of good values (10:20, 500:, ~:80)",
                     .oneEach = true},
                    {.name = "-f,--limits", .target = &arguments->file, .help = "file with one such limit per line"}},
      .run = [arguments](Context& context) { return Run(context, *arguments); }};
}

}  // namespace vynctl

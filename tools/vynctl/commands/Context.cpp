// SPDX-License-Identifier: MIT
// Documents as JSON or text, and the looks of text where it goes.
#include "commands/Context.h"

#include <fmt/core.h>
#include <langinfo.h>
#include <locale.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "board/Codes.h"
#include "commandline/Streams.h"
#include "commandline/Wrap.h"

namespace vynctl {
namespace {

constexpr char kSchema[] = "vynctl";
constexpr int kSchemaVersion = 1;
constexpr size_t kDefaultWidth = 80;

Json ToJson(const Data& data) {
  if (const bool* flag = std::get_if<bool>(&data)) return *flag;
  if (const int64_t* number = std::get_if<int64_t>(&data)) return *number;
  if (const double* number = std::get_if<double>(&data)) return *number;
  if (const std::string* text = std::get_if<std::string>(&data)) return *text;
  if (const auto* list = std::get_if<std::vector<uint8_t>>(&data)) return Json::Array(list->begin(), list->end());
  return {};
}

Json::Object CodeToJson(uint64_t code, const std::string& words) {
  return {{"code", code}, {"hex", Hex(code)}, {"words", words}};
}

void Append(Json::Object& object, const Json::Object& members) {
  object.insert(object.end(), members.begin(), members.end());
}

Json ToJson(const Value& value) {
  Json::Object json = {{"id", value.id},     {"name", value.name},          {"quantity", value.quantity},
                       {"unit", value.unit}, {"value", ToJson(value.data)}, {"state", ToString(value.state)}};
  if (value.state != State::kOk) Append(json, CodeToJson(value.code, value.words));
  if (!value.allowed.empty()) json.emplace_back("allowed", Json::Array(value.allowed.begin(), value.allowed.end()));
  return json;
}

bool EnvironmentSays(const char* name) {
  const char* value = getenv(name);
  return value != nullptr && *value != '\0';
}

bool WantsColour(const Options& options, int descriptor) {
  if (options.colour != "auto") return options.colour == "always";
  const char* terminal = getenv("TERM");
  const bool dumb = terminal == nullptr || strcmp(terminal, "dumb") == 0;
  return isatty(descriptor) != 0 && !dumb && !EnvironmentSays("NO_COLOR");
}

size_t WidthOf(int descriptor) {
  if (const size_t terminal = commandline::TerminalColumns(descriptor); terminal > 0) return terminal;
  const char* columns = getenv("COLUMNS");
  const int width = columns != nullptr ? atoi(columns) : 0;
  return width > 0 ? static_cast<size_t>(width) : kDefaultWidth;
}

}  // namespace

Document Document::Refused(uint64_t code) { return Refused(Refusal{code, WordsFor(code)}); }

Document Document::Refused(const Refusal& refusal) {
  Document document;
  document.refusal = refusal;
  return document;
}

void Document::RefuseIfNotOk(const Value& value) {
  if (value.state != State::kOk) refusal = Refusal{value.code, value.words};
}

Json ToJson(const Document& document, const std::string& command, const Options& options, const std::string& model) {
  Json error;
  if (document.refusal) error = CodeToJson(document.refusal->code, document.refusal->words);
  Json::Array values;
  for (const Value& value : document.values) values.push_back(ToJson(value));
  Json::Object json = {{"schema", kSchema},
                       {"version", kSchemaVersion},
                       {"command", command.empty() ? Json() : Json(command)},
                       {"model", model.empty() ? Json() : Json(model)},
                       {"simulated", !options.load.board.empty()},
                       {"ok", !document.refusal.has_value()},
                       {"error", error},
                       {"values", values}};
  Append(json, document.extra);
  return json;
}

Style StyleFor(const Options& options, int descriptor) {
  setlocale(LC_CTYPE, "");
  return {.colour = WantsColour(options, descriptor),
          .unicode = strcmp(nl_langinfo(CODESET), "UTF-8") == 0,
          .terminal = isatty(descriptor) != 0,
          .width = WidthOf(descriptor)};
}

int Outlet::Finish(const Document& document, const std::string& text, const std::string& model) const {
  if (options.json) {
    Print(IndentedText(ToJson(document, command, options, model)) + '\n');
  } else {
    Print(style.terminal ? commandline::Wrapped(text, style.width) : text);
    if (document.refusal) {
      const std::string code =
          document.refusal->code != 0 ? fmt::format(" (code {})", Hex(document.refusal->code)) : "";
      commandline::Say(fmt::format("vynctl: {}{}\n", document.refusal->words, code));
    }
  }
  return document.refusal ? kRefused : kDone;
}

void Outlet::Print(const std::string& text) const {
  if (!text.empty() && !output.Write(text)) {
    throw std::runtime_error(fmt::format("cannot write to standard output: {}", strerror(errno)));
  }
}

}  // namespace vynctl

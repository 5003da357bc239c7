// SPDX-License-Identifier: MIT
// 'vyntable new': a board file to begin with, from flags or from answers.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include <fmt/core.h>

#include "commandline/Streams.h"
#include "commandline/Words.h"
#include "vyntable/Commands.h"
#include "vyntable/Files.h"

namespace vyntable {
namespace {

struct Options {
  std::string maker, board, model, output;
  unsigned chip = 0;
};

constexpr unsigned kLastChip = 0xFFFF;

/// What is asked for where no option says it.
struct Question {
  const char* option;
  const char* text;
  std::string Options::*answer;
  size_t most;  ///< characters
};
constexpr Question kQuestions[] = {
    {"--maker", "The board's maker, as ACPI tables name it", &Options::maker, 6},
    {"--board", "The board, as ACPI tables name it", &Options::board, 8},
    {"--model", "The model's name in full", &Options::model, 53},
};

constexpr char kTemplate[] = R"(# {model}: what the board offers, and a machine to try it on.
format = 1

[board]
name = "{model}"

[bios]
model = "{model}"

[iadt]
oem_id = "{maker}"
oem_table_id = "{board}"

[iamt]
oem_id = "{maker}"
oem_table_id = "{board}"
chips = [{chip:#06x}]

# What the super I/O chip needs before and after an access, in both directions: its key, its logical device, its exit.
[sequences]
gpio = [
  {{ port = 0x2E, get = "write and or", set = "write and or", or = 0x87 }},
  {{ port = 0x2E, get = "write and or", set = "write and or", or = 0x87 }},
  {{ index_port = 0x2E, data_port = 0x2F, register = 0x07, get = "write and or", set = "write and or", or = 0x07 }},
]
leave = [{{ port = 0x2E, get = "write and or", set = "write and or", or = 0xAA }}]

[[fields]]
each = [
  {{ function = "DigitalIOState", index = "0..7", values = {{ low = 0, high = 1 }}, index_port = 0x2E, data_port = 0x2F, register = 0xE1, bit = "index", before = "gpio", after = "leave" }},
]

[[sensor]]
quantity = "voltage"
kind = 2
name = "+12V"
r1 = 56
r2 = 10
commands = [{{ index_port = 0x295, data_port = 0x296, register = 0x20, get = "read" }}]

# --- the machine ---

[[super_io]]
index_port = 0x2E
data_port = 0x2F
enter = [0x87, 0x87]

[[super_io.device]]
number = 0x07
registers = {{ 0xE1 = 0x00 }}

[[index_data]]
index_port = 0x295
data_port = 0x296
registers = {{ 0x20 = 227 }}
)";

bool IsPlain(const std::string& text) {
  return !text.empty() &&
         std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

std::string Ask(const Question& question) {
  commandline::Say(fmt::format("{} (up to {} characters): ", question.text, question.most));
  std::string answer;
  for (int c; (c = std::getchar()) != EOF && c != '\n';) answer += static_cast<char>(c);
  return answer;
}

void Complete(Options* options) {
  const bool terminal = isatty(STDIN_FILENO) != 0;
  for (const Question& question : kQuestions) {
    std::string& answer = options->*question.answer;
    if (answer.empty() && !terminal)
      throw BadInput(fmt::format("new needs {}, or a terminal to ask at", question.option));
    if (answer.empty()) answer = Ask(question);
    if (!IsPlain(answer) || answer.size() > question.most)
      throw BadInput(
          fmt::format("{} takes up to {} characters of plain text, not '{}'", question.option, question.most, answer));
  }
}

int New(Options options) {
  Complete(&options);
  const std::string text = fmt::format(kTemplate, fmt::arg("model", options.model), fmt::arg("maker", options.maker),
                                       fmt::arg("board", options.board), fmt::arg("chip", options.chip));
  if (options.output.empty()) {
    fmt::print("{}", text);
    return kExitOk;
  }
  if (access(options.output.c_str(), F_OK) == 0) throw BadInput(options.output + ": is there already");
  WriteFile(options.output, text);
  return kExitOk;
}

}  // namespace

Syntax DescribeNew() {
  const auto options = std::make_shared<Options>();
  options->chip = 0x94D2;
  return {.arguments = {{.name = "--maker", .target = &options->maker, .help = "oem_id, up to 6 characters"},
                        {.name = "--board", .target = &options->board, .help = "oem_table_id, up to 8 characters"},
                        {.name = "--model", .target = &options->model, .help = "the model's name"},
                        {.name = "--chip",
                         .target = &options->chip,
                         .help = "identifier of the I/O chip (0x94D2)",
                         .range = {1, kLastChip}},
                        {.name = "-o,--output",
                         .target = &options->output,
                         .help = "board file to write; default: standard output"}},
          .run = [options] { return New(*options); }};
}

}  // namespace vyntable

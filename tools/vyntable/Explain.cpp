// SPDX-License-Identifier: MIT
// explain: the bytes of tables with words beside them.
#include <unistd.h>

#include <algorithm>
#include <memory>

#include <fmt/color.h>
#include <fmt/core.h>

#include "boardfile/FirmwareText.h"
#include "commandline/Words.h"
#include "diagnosis/Words.h"
#include "layout/BiosRecord.h"
#include "layout/Checksum.h"
#include "layout/Walk.h"
#include "vyntable/Commands.h"
#include "vyntable/Files.h"

namespace vyntable {

using namespace diagnosis;
using namespace layout;
using boardfile::Hex;
namespace {

struct Options {
  std::vector<std::string> files;
};

constexpr size_t kBytesPerLine = 16;
constexpr size_t kHexColumns = 3 * kBytesPerLine - 1;
constexpr size_t kWordColumns = 60;

/// Words left behind the bytes, as many lines as the longer of the two takes. Colour on terminals only; what firmware
/// holds reaches them escaped.
class Printer {
 public:
  void Title(const std::string& text) const {
    fmt::print("{}\n", Styled(fmt::emphasis::bold, commandline::Printable(text)));
  }

  void Block(size_t offset, View bytes, const std::vector<std::string>& words) const {
    const size_t hexLines = (bytes.size() + kBytesPerLine - 1) / kBytesPerLine;
    for (size_t i = 0; i < std::max(hexLines, words.size()); ++i) {
      const size_t first = std::min(i * kBytesPerLine, bytes.size());
      const View line = bytes.subspan(first, std::min(kBytesPerLine, bytes.size() - first));
      const std::string place = line.empty() ? std::string(6, ' ') : fmt::format("{:#06x}", offset + first);
      const std::string hex = i < words.size() ? fmt::format("{:<{}}", Hex(line), kHexColumns) : Hex(line);
      fmt::print("  {}{}\n", Styled(fmt::fg(fmt::terminal_color::bright_black), place + "  " + hex),
                 i < words.size() ? "  " + commandline::Printable(words[i]) : "");
    }
  }

 private:
  std::string Styled(fmt::text_style style, const std::string& text) const {
    return colour_ ? fmt::format(style, "{}", text) : text;
  }
  bool colour_ = isatty(STDOUT_FILENO) != 0;
};

/// Cut at blanks to fit the column of words.
std::vector<std::string> Wrapped(const std::vector<std::string>& phrases) {
  std::vector<std::string> lines;
  for (std::string phrase : phrases) {
    while (phrase.size() > kWordColumns) {
      size_t cut = phrase.rfind(' ', kWordColumns);
      if (cut == std::string::npos || cut < 4) cut = kWordColumns;
      lines.push_back(phrase.substr(0, cut));
      phrase = "    " + phrase.substr(std::min(cut + 1, phrase.size()));
    }
    lines.push_back(phrase);
  }
  return lines;
}

std::string NameOf(const Image& image) {
  return image.base ? fmt::format("{} at {:#x}", image.name, image.base) : image.name;
}

void ExplainHeader(const Image& image, const Printer& out) {
  const View table(image.bytes);
  RequireHeader(image);
  const std::string signature(table.begin(), table.begin() + 4);
  out.Title(fmt::format("{}: {} table, {} bytes", NameOf(image), signature, table.size()));
  out.Block(0, table.first(acpi::kHeaderBytes),
            {fmt::format("length {}, revision {}", Load(table, acpi::kLengthOffset, 4), table[acpi::kRevisionOffset]),
             fmt::format("checksum {:#04x}, {}", table[acpi::kChecksumOffset],
                         ByteSum(table.data(), table.size()) ? "wrong" : "right")});
}

std::string RecordWords(const RecordView& record) {
  const std::string use = record.Row() ? "" : ", which the library passes over";
  return fmt::format("{}, {} bytes{}", Title(record), record.length, use);
}

void ExplainParameters(const RecordView& record, const RecordType& type, const Printer& out) {
  for (const RecordParameter& parameter : type.parameters)
    if (parameter.offset < record.length)
      out.Block(record.offset + parameter.offset, record.Bytes().subspan(parameter.offset, parameter.bytes),
                {fmt::format("{} {}", parameter.name, Load(record.Bytes(), parameter.offset, parameter.bytes))});
}

void ExplainRecord(const RecordView& record, const Printer& out) {
  const RecordType* type = record.Row();
  const bool sensor = type && type->IsSensor();
  const View bytes = record.Bytes();
  fmt::print("\n");
  out.Title(RecordWords(record));
  out.Block(record.offset, bytes.first(std::min(iadt::kBody, bytes.size())), {"record header"});
  if (sensor) ExplainParameters(record, *type, out);
  const CommandContext context = ContextOf(record);
  bool run = true;
  for (const CommandView& command : sensor ? SensorCommands(record) : Commands(record)) {
    out.Block(command.offset, command.bytes,
              run ? Wrapped(Words(command, context)) : std::vector<std::string>{"behind the last command that is run"});
    run = run && (sensor || !command.layout || command.layout->steps);
  }
}

void ExplainRest(size_t offset, View rest, const Printer& out) {
  if (rest.empty()) return;
  fmt::print("\n");
  out.Title("The library's walk ends here");
  out.Block(offset, rest, {});
}

void ExplainIadt(const Image& image, const Printer& out) {
  ExplainHeader(image, out);
  RecordCursor cursor(Covered(image.bytes));
  for (; cursor.Valid(); cursor.Next()) ExplainRecord(cursor.Current(), out);
  ExplainRest(cursor.Offset(), View(image.bytes).subspan(cursor.Offset()), out);
}

void ExplainIamt(const Image& image, const Printer& out) {
  ExplainHeader(image, out);
  BoardRecordCursor cursor(Covered(image.bytes));
  for (; cursor.Valid(); cursor.Next()) {
    const BoardRecordView record = cursor.Current();
    fmt::print("\n");
    out.Title(fmt::format("record of type {}, {} bytes", record.rest[iamt::kType], record.length));
    std::vector<std::string> words;
    if (record.IsBoardRecord())
      for (size_t i = 0; i < std::size(iamt::kChipIds); ++i)
        words.push_back(fmt::format("chip {} {:#06x}", i + 1, Load(record.Kept(), iamt::kChipIds[i], 2)));
    out.Block(record.offset, record.Bytes(), words);
  }
  ExplainRest(cursor.Offset(), View(image.bytes).subspan(cursor.Offset()), out);
}

void ExplainBiosInfo(const Image& image, const Printer& out) {
  const View record(image.bytes);
  const View model = record.subspan(std::min(record.size(), bios::kModel));
  const std::string name(model.begin(), std::find(model.begin(), model.end(), uint8_t{0}));
  out.Title(fmt::format("{}: BIOS information record, {} bytes", NameOf(image), record.size()));
  out.Block(
      0, record,
      {fmt::format("model \"{}\"", name), ByteSum(record.data(), record.size()) ? "checksum wrong" : "checksum right"});
}

int Explain(const Options& options) {
  const Printer out;
  bool first = true;
  for (const Image& image : ReadImages(options.files)) {
    if (!first) fmt::print("\n");
    first = false;
    switch (image.kind) {
      case Kind::kIadt:
        ExplainIadt(image, out);
        break;
      case Kind::kIamt:
        ExplainIamt(image, out);
        break;
      case Kind::kBiosInfo:
        ExplainBiosInfo(image, out);
        break;
    }
  }
  return kExitOk;
}

}  // namespace

Syntax DescribeExplain() {
  const auto options = std::make_shared<Options>();
  return {.arguments = {{.name = "FILE",
                         .target = &options->files,
                         .help = "tables, a directory that holds them, or a board file",
                         .required = true}},
          .run = [options] { return Explain(*options); }};
}

}  // namespace vyntable

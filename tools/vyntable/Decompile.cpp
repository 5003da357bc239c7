// SPDX-License-Identifier: MIT
// decompile: tables become text that compiles to them.
#include <algorithm>
#include <memory>

#include <fmt/core.h>

#include "boardfile/BoardFile.h"
#include "boardfile/FirmwareText.h"
#include "vyntable/Commands.h"
#include "vyntable/Files.h"

namespace vyntable {
namespace {

struct Options {
  std::vector<std::string> files;
  std::string output;
};

std::string TextOf(const Image& image) {
  switch (image.kind) {
    case Kind::kIadt:
      RequireHeader(image);
      return boardfile::IadtText(image.bytes);
    case Kind::kIamt:
      RequireHeader(image);
      return boardfile::IamtText(image.bytes);
    case Kind::kBiosInfo:
      return boardfile::BiosInfoText(image.bytes);
  }
  return "";
}

int Decompile(const Options& options) {
  std::vector<Image> images = ReadImages(options.files);
  for (size_t i = 0; i < images.size(); ++i)
    for (size_t j = 0; j < i; ++j)
      if (images[i].kind == images[j].kind && images[i].bytes != images[j].bytes)
        throw BadInput(
            fmt::format("{}: another table of the kind of {}: name one", PlaceOf(images[i], 0), PlaceOf(images[j], 0)));
  std::string text;
  // BIOS information record, board information and function description, in this order.
  for (const Kind kind : {Kind::kBiosInfo, Kind::kIamt, Kind::kIadt})
    if (const auto image = std::ranges::find(images, kind, &Image::kind); image != images.end())
      text += (text.empty() ? "" : "\n") + TextOf(*image);
  if (text.size() > boardfile::kBoardFileLimit)
    throw BadInput(fmt::format("{}: its text would be longer than the {} MiB of a board file", images.front().name,
                               boardfile::kBoardFileLimit >> 20));
  if (options.output.empty())
    fmt::print("{}", text);
  else
    WriteFile(options.output, text);
  return kExitOk;
}

}  // namespace

Syntax DescribeDecompile() {
  const auto options = std::make_shared<Options>();
  return {.arguments = {{.name = "FILE",
                         .target = &options->files,
                         .help = "tables, or a directory that holds them",
                         .required = true},
                        {.name = "-o,--output",
                         .target = &options->output,
                         .help = "board file to write; default: standard output"}},
          .run = [options] { return Decompile(*options); }};
}

}  // namespace vyntable

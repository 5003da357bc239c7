#include <filesystem>
#include <memory>

#include <fmt/core.h>

#include "vyntable/Commands.h"
#include "vyntable/Files.h"

namespace vyntable {
namespace {

struct Options {
  std::string board, directory;
};

int Compile(const Options& options) {
  const std::vector<Image> images = CompileBoard(options.board);
  std::error_code error;
  std::filesystem::create_directories(options.directory, error);
  if (error) throw BadInput(options.directory + ": " + error.message());
  for (const Image& image : images) {
    const std::string path = (std::filesystem::path(options.directory) / image.name).string();
    WriteFile(path, {reinterpret_cast<const char*>(image.bytes.data()), image.bytes.size()});
    fmt::print("{}: {} bytes\n", path, image.bytes.size());
  }
  return kExitOk;
}

}  // namespace

Syntax DescribeCompile() {
  const auto options = std::make_shared<Options>();
  return {.arguments = {{.name = "BOARD.toml", .target = &options->board, .help = "the board file", .required = true},
                        {.name = "-o,--output",
                         .target = &options->directory,
                         .help = "directory for the tables; made when missing",
                         .required = true}},
          .run = [options] { return Compile(*options); }};
}

}  // namespace vyntable

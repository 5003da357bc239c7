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

std::function<int()> SetupCompile(CLI::App* command) {
  const auto options = std::make_shared<Options>();
  command->add_option("BOARD.toml", options->board, "the board file")->required();
  command->add_option("-o,--output", options->directory, "directory for the tables; made when missing")->required();
  return [options] { return Compile(*options); };
}

}  // namespace vyntable

// SPDX-License-Identifier: MIT
// 'vyntable compile': the tables of a board file, into a folder or one of them into a file.
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>

#include <fmt/core.h>

#include "commandline/Streams.h"
#include "commandline/Words.h"
#include "vyntable/Commands.h"
#include "vyntable/Files.h"
#include "vyntable/Judgement.h"
#include "vyntable/Kinds.h"
#include "vyntable/Outputs.h"

namespace vyntable {

using namespace diagnosis;
namespace {

namespace fs = std::filesystem;

struct Options {
  std::string board, output, table, dependencyFile;
  std::vector<std::string> allow;
  bool dependencies = false, force = false;
};

constexpr const char* kFileEndings[] = {".bin", ".dat", ".aml"};

/// Where a table goes.
struct Target {
  const Image* image;
  std::string path;
};

bool NamesFile(const std::string& output) {
  return !fs::is_directory(output) &&
         std::ranges::any_of(kFileEndings, [&](const char* ending) { return output.ends_with(ending); });
}

std::string_view Content(const Image& image) {
  return {reinterpret_cast<const char*>(image.bytes.data()), image.bytes.size()};
}

const char* StemOf(Kind kind) { return std::ranges::find(kKinds, kind, &KindRow::kind)->stem; }

std::vector<const Image*> Wanted(const Options& options, const std::vector<Image>& images) {
  std::vector<const Image*> wanted;
  for (const Image& image : images)
    if (options.table.empty() || options.table == StemOf(image.kind)) wanted.push_back(&image);
  if (wanted.empty())
    throw BadInput(options.board + ": describes no " + (options.table.empty() ? "table" : options.table));
  return wanted;
}

std::vector<Target> Targets(const Options& options, const std::vector<const Image*>& images) {
  if (NamesFile(options.output)) {
    if (images.size() > 1)
      throw BadInput(fmt::format("{}: one file for the {} tables of {}: --table says which", options.output,
                                 images.size(), options.board));
    return {{images.front(), options.output}};
  }
  std::vector<Target> targets;
  for (const Image* image : images)
    targets.push_back({image, (fs::path(options.output) / StemOf(image->kind)).string() + ".bin"});
  return targets;
}

/// What an earlier board left there and this one does not have.
std::vector<std::string> Leftovers(const Options& options, const std::vector<Target>& targets) {
  std::vector<std::string> paths;
  if (NamesFile(options.output) || !options.table.empty()) return paths;
  for (const KindRow& row : kKinds) {
    const std::string path = (fs::path(options.output) / row.stem).string() + ".bin";
    if (std::ranges::find(targets, path, &Target::path) == targets.end()) paths.push_back(path);
  }
  return paths;
}

/// A file name as makefiles have it.
std::string MakeName(const std::string& path) {
  std::string name;
  for (char c : path) {
    if (c == '$') name += '$';
    if (c == ' ' || c == '#' || c == '\\') name += '\\';
    name += c;
  }
  return name;
}

std::string DependencyPath(const Options& options, const std::vector<Target>& targets) {
  if (!options.dependencyFile.empty()) return options.dependencyFile;
  if (NamesFile(options.output)) return fs::path(targets.front().path).replace_extension(".d").string();
  return (fs::path(options.output) / fs::path(options.board).stem()).string() + ".d";
}

/// A rule for make: the tables depend on all files that they were compiled from.
std::string Dependencies(const CompiledBoard& board, const std::vector<Target>& targets) {
  std::string rule, empty;
  for (const Target& target : targets) rule += (rule.empty() ? "" : " ") + MakeName(target.path);
  rule += ":";
  for (const std::string& file : board.files) rule += " \\\n  " + MakeName(file);
  // A file that is gone is no error: the tables are made again without it.
  for (size_t i = 1; i < board.files.size(); ++i) empty += "\n" + MakeName(board.files[i]) + ":\n";
  return rule + "\n" + empty;
}

void MakeFolder(const Options& options) {
  if (NamesFile(options.output)) return;
  std::error_code error;
  fs::create_directories(options.output, error);
  if (error) throw BadInput(options.output + ": " + error.message());
}

/// Whether the tables may leave the desk: no rule of the gravest kind is broken. Those that are, are told.
bool Passes(const Options& options, const std::vector<Image>& images) {
  Judgement judgement;
  for (const std::string& text : options.allow) judgement.Allow(text);
  for (const Image& image : images) judgement.Add(image);
  if (judgement.Count(Severity::kError) == 0) return true;
  std::string lines;
  for (const Verdict& verdict : judgement.Verdicts())
    if (verdict.severity == Severity::kError) lines += LineOf(verdict) + "\n";
  commandline::Say(lines);
  if (!options.force) commandline::Say("vyntable: nothing is written for these errors; --force writes all the same\n");
  return options.force;
}

int Compile(const Options& options) {
  const CompiledBoard board = CompileBoard(options.board);
  const std::vector<Target> targets = Targets(options, Wanted(options, board.images));
  if (!Passes(options, board.images)) return kExitFindings;
  MakeFolder(options);
  Outputs outputs;
  std::vector<std::string> removed;
  for (const Target& target : targets) outputs.Write(target.path, Content(*target.image));
  for (const std::string& path : Leftovers(options, targets))
    if (outputs.Remove(path)) removed.push_back(path);
  if (options.dependencies) outputs.Write(DependencyPath(options, targets), Dependencies(board, targets));
  outputs.Commit();
  for (const Target& target : targets)
    fmt::print("{}: {} bytes\n", commandline::Printable(target.path), target.image->bytes.size());
  for (const std::string& path : removed) fmt::print("{}: removed\n", commandline::Printable(path));
  return kExitOk;
}

}  // namespace

Syntax DescribeCompile() {
  const auto options = std::make_shared<Options>();
  return {
      .arguments = {{.name = "BOARD.toml", .target = &options->board, .help = "the board file", .required = true},
                    {.name = "-o,--output",
                     .target = &options->output,
                     .help = "folder for the tables, made when missing; or, ending in .bin, .dat or .aml, the file "
                             "for a single one",
                     .required = true},
                    {.name = "--table",
                     .target = &options->table,
                     .help = "this one alone",
                     .choices = {"iadt", "iamt", "biosinfo"}},
                    {.name = "--force", .target = &options->force, .help = "write tables with errors"},
                    {.name = "--allow",
                     .target = &options->allow,
                     .help = "RULE or RULE:PLACE, which may be broken (everywhere, or there)",
                     .oneEach = true},
                    {.name = "--MD",
                     .target = &options->dependencies,
                     .help = "also write a dependency file for make; -MD says the same"},
                    {.name = "--MF",
                     .target = &options->dependencyFile,
                     .help = "the dependency file, instead of the board's or table's name with .d; -MF says the same",
                     .needs = "--MD"}},
      .run = [options] { return Compile(*options); }};
}

}  // namespace vyntable

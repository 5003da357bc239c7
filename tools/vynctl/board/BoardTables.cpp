// SPDX-License-Identifier: MIT
// Bytes from the kernel's copy or the compiled board description; what was found, by asking the library for anything
// that a table makes it offer, and the doctor for what the machine shows.
#include "board/BoardTables.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "board/Controls.h"
#include "board/Features.h"
#include "board/Sensors.h"
#include "doctor/Tables.h"
#include "layout/AcpiLayout.h"
#include "view/Text.h"

namespace vynctl {
namespace {

constexpr char kIadtFile[] = "IADT";
constexpr char kIamtFile[] = "IAMT";

/// The file's bytes; nothing when it cannot be read or is larger than any table.
std::vector<uint8_t> FileBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<uint8_t> bytes(layout::acpi::limits::kLargestTable);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (file.bad() || !file.eof()) return {};
  bytes.resize(static_cast<size_t>(file.gcount()));
  bytes.shrink_to_fit();
  return bytes;
}

}  // namespace

BoardTables::BoardTables(std::string board, std::string kernelTables)
    : board_(std::move(board)), kernelTables_(std::move(kernelTables)) {}

const boardfile::Description& BoardTables::Read() {
  if (description_) return *description_;
  if (!board_.empty()) return description_.emplace(boardfile::Describe(board_));
  const std::filesystem::path folder = kernelTables_;
  return description_.emplace(
      boardfile::Description{.iadt = FileBytes(folder / kIadtFile), .iamt = FileBytes(folder / kIamtFile)});
}

namespace {

bool OffersAnything(const Library& library) {
  const auto measured = [&](const Quantity& quantity) { return CountSensors(library, quantity) > 0; };
  const auto offered = [&](const Feature& feature) { return Offers(library, feature); };
  return std::ranges::any_of(Quantities(), measured) || std::ranges::any_of(Features(), offered) ||
         OffersWatchdog(library) || !FanNames(library).empty();
}

std::string FoundOf(const doctor::Findings& findings, std::string_view id) {
  const auto finding = std::ranges::find(findings, id, &doctor::Finding::id);
  return finding == findings.end() ? "" : finding->found;
}

const char* SourceWords(doctor::Source source) {
  switch (source) {
    case doctor::Source::kMemory:
      return "memory (/dev/mem)";
    case doctor::Source::kKernel:
      return "the kernel's copies (/sys/firmware/acpi/tables)";
    case doctor::Source::kNone:
      break;
  }
  return "nowhere";
}

/// The kernel's copy is root's; whoever may map memory has the table from there.
std::vector<uint8_t> FromMemory(doctor::FirmwareTable doctor::Tables::*table) {
  const doctor::Tables tables = doctor::LookAtTables(doctor::Machine());
  const std::string& bytes = (tables.*table).Used();
  return {bytes.begin(), bytes.end()};
}

std::string InDescription(bool has) {
  return has ? "in the board description, but the library sees nothing of it" : "not in the board description";
}

}  // namespace

bool HasBothTables(const Library& library) { return library.Functions().TableSupported(VYNLIB_PERFORM) != 0; }

bool HasIadt(const Library& library) { return HasBothTables(library) || OffersAnything(library); }

TablesSought SeekTables(const doctor::Machine& machine) {
  const doctor::Tables tables = doctor::LookAtTables(machine);
  const doctor::Findings memory = doctor::JudgeMemory(tables, {});
  const doctor::Findings judged = doctor::JudgeTables(tables, {});
  const std::string closed = tables.deviceError == 0 ? "" : "; /dev/mem: " + FoundOf(memory, "dev-mem");
  const bool described = tables.iadt.source != doctor::Source::kNone;
  return {.source = SourceWords(described ? tables.iadt.source : tables.iamt.source),
          .iadt = FoundOf(judged, "iadt") + closed,
          .iamt = FoundOf(judged, "iamt") + closed,
          .hasIadt = !tables.iadt.Used().empty(),
          .hasIamt = !tables.iamt.Used().empty()};
}

bool HasIamt(const Library& library, const TablesSought& sought) {
  if (HasBothTables(library)) return true;
  return sought.hasIamt && !sought.hasIadt;
}

std::vector<uint8_t> IadtOf(const LoadOptions& options) {
  const std::vector<uint8_t> bytes = BoardTables(options.board).Iadt();
  return bytes.empty() && options.board.empty() ? FromMemory(&doctor::Tables::iadt) : bytes;
}

std::vector<uint8_t> IamtOf(const LoadOptions& options) {
  const std::vector<uint8_t> bytes = BoardTables(options.board).Iamt();
  return bytes.empty() && options.board.empty() ? FromMemory(&doctor::Tables::iamt) : bytes;
}

TablesSought SeekTables(const LoadOptions& options) {
  if (options.board.empty()) return SeekTables(doctor::Machine());
  const bool iadt = !IadtOf(options).empty(), iamt = !IamtOf(options).empty();
  return {.source = "the simulated memory",
          .iadt = InDescription(iadt),
          .iamt = InDescription(iamt),
          .hasIadt = iadt,
          .hasIamt = iamt};
}

std::optional<Refusal> RefuseWithoutTables(const Library& library, const LoadOptions& options) {
  if (HasIadt(library)) return std::nullopt;
  return Refusal{
      0, fmt::format("the firmware table IADT was not found: {}{}", SeekTables(options).iadt, DoctorHint(options))};
}

}  // namespace vynctl

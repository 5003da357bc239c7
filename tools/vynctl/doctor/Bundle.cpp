// SPDX-License-Identifier: MIT
// Collects the findings, the tables, the kernel's version and what the kernel's log says about ACPI.
#include "doctor/Bundle.h"

#include <fmt/core.h>

#include <algorithm>
#include <charconv>

#include "doctor/Tar.h"

namespace vynctl::doctor {
namespace {

constexpr char kFolder[] = "vynctl-doctor/";
constexpr uint64_t kMicrosecondsPerSecond = 1000000;

/// "[    0.012345] ACPI: ..." of a record "6,123,12345,-;ACPI: ..."; empty for lines that carry no message.
std::string LogLine(std::string_view record) {
  const size_t end = record.find(';');
  if (end == std::string_view::npos || record.starts_with(' ')) return {};
  std::string_view time = record.substr(0, end);
  for (int field = 0; field < 2; ++field) time.remove_prefix(std::min(time.find(',') + 1, time.size()));
  uint64_t microseconds = 0;
  std::from_chars(time.data(), time.data() + time.size(), microseconds);
  return fmt::format("[{:5}.{:06}] {}\n", microseconds / kMicrosecondsPerSecond, microseconds % kMicrosecondsPerSecond,
                     record.substr(end + 1));
}

std::string AcpiLines(std::string_view log) {
  std::string lines;
  while (!log.empty()) {
    const std::string_view record = log.substr(0, log.find('\n'));
    log.remove_prefix(std::min(record.size() + 1, log.size()));
    if (record.find("ACPI") != std::string_view::npos) lines += LogLine(record);
  }
  return lines;
}

BundleFile Text(const char* name, const char* holds, std::string content, const std::string& missing) {
  BundleFile file{.name = std::string(kFolder) + name, .holds = holds, .content = std::move(content)};
  if (file.content.empty()) file.missing = missing;
  return file;
}

BundleFile Table(const char* name, const FirmwareTable& table) {
  const std::string& bytes = table.Used().empty() ? table.kernel : table.Used();
  return Text(name, table.signature, bytes, table.kernelError != 0 ? ErrorWords(table.kernelError) : "it is empty");
}

}  // namespace

std::vector<BundleFile> CollectBundle(const Machine& machine, const Tables& tables, const std::string& json) {
  const Machine::Content version = machine.Read("/proc/version");
  const Machine::Content log = machine.Read("/dev/kmsg");
  return {
      Text("doctor.json", "these findings", json, ""),
      Table("iadt.bin", tables.iadt),
      Table("iamt.bin", tables.iamt),
      Text("biosinfo.bin", "BIOS information record", tables.record, "there is no sound one"),
      Text("kernel-version.txt", "version of the kernel", version.bytes, ErrorWords(version.error)),
      Text("kernel-log.txt", "what the kernel's log says about ACPI", AcpiLines(log.bytes),
           log.error != 0 ? ErrorWords(log.error) : "it says nothing"),
  };
}

std::string PackBundle(const std::vector<BundleFile>& files, uint64_t now) {
  Tar tar(now);
  for (const BundleFile& file : files) {
    if (file.missing.empty()) tar.Add(file.name, file.content);
  }
  return tar.Finish();
}

}  // namespace vynctl::doctor

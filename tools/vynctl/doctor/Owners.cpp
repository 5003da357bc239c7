// SPDX-License-Identifier: MIT
// Compares what the table touches with /proc/ioports and /proc/iomem.
#include "doctor/Owners.h"

#include <fmt/core.h>
#include <unistd.h>

#include <algorithm>
#include <map>

#include "view/Text.h"

namespace vynctl::doctor {
namespace {

/// What differs between ports and memory.
struct Kind {
  const char* file;
  const char* id;
  const char* what;
  const char* unit;
  const char* ownerId;
  const char* owner;
};
constexpr Kind kPorts = {"/proc/ioports", "ports", "Ports of the table", "port", "port-owner", "Owner of ports"};
constexpr Kind kPages = {"/proc/iomem", "pages", "Pages of the table", "page", "page-owner", "Owner of memory"};

/// The kernel's own window to the registers of PCI functions, by its old and its new name.
constexpr std::string_view kConfigurationSpace[] = {"PCI MMCONFIG", "PCI ECAM"};
constexpr char kRelaxed[] = "boot with 'iomem=relaxed' on the kernel's command line";

using Owned = std::map<const Resource*, std::set<uint64_t>>;

/// Single ports, or the first bytes of whole pages.
std::set<uint64_t> Split(const std::set<Range>& ranges, uint64_t unit) {
  std::set<uint64_t> parts;
  for (const Range& range : ranges) {
    for (uint64_t part = range.first / unit * unit; part <= range.last; part += unit) parts.insert(part);
  }
  return parts;
}

Owned FindOwners(const Resources& resources, const std::set<uint64_t>& parts, uint64_t unit) {
  Owned owned;
  for (const uint64_t part : parts) {
    for (const Resource* owner : resources.Owners({part, part + unit - 1})) owned[owner].insert(part);
  }
  return owned;
}

std::string TakeOff(const Machine& machine, const Resource& owner) {
  std::string module = owner.name;
  std::ranges::replace(module, '-', '_');
  if (machine.HasModule(module)) return TakeOffModule(Printable(module));
  return "Find out which module this driver is in ('lsmod', 'dmesg') and take it off; one that is built into the "
         "kernel "
         "stays, and readings may then be wrong now and then.";
}

std::string Next(const Machine& machine, const Kind& kind, const Resource& owner) {
  const bool window =
      std::ranges::any_of(kConfigurationSpace, [&](std::string_view name) { return owner.name.starts_with(name); });
  if (window) return fmt::format("The kernel may refuse to map it. If what the board keeps there fails, {}.", kRelaxed);
  if (&kind == &kPages)
    return fmt::format("{} If the memory is refused all the same, {}.", TakeOff(machine, owner), kRelaxed);
  return TakeOff(machine, owner);
}

/// "0x295, 0x296 and 3 more"
std::string Places(const std::set<uint64_t>& parts) {
  constexpr size_t kShown = 4;
  std::string text;
  size_t shown = 0;
  for (const uint64_t part : parts) {
    if (shown++ == kShown) return text + fmt::format(" and {} more", parts.size() - kShown);
    text += fmt::format("{}0x{:X}", text.empty() ? "" : ", ", part);
  }
  return text;
}

Finding Owner(const Machine& machine, const Kind& kind, const Resource& owner, const std::set<uint64_t>& parts) {
  return {.id = fmt::format("{}/{:x}", kind.ownerId, owner.range.first),
          .what = kind.owner,
          .found = fmt::format("{} claims 0x{:X} to 0x{:X}; the table touches {}", Printable(owner.name),
                               owner.range.first, owner.range.last, Places(parts)),
          .verdict = Verdict::kWarning,
          .next = Next(machine, kind, owner)};
}

Findings Judge(const Machine& machine, const Kind& kind, const std::set<Range>& ranges, uint64_t unit) {
  const std::set<uint64_t> parts = Split(ranges, unit);
  Finding all{.id = kind.id, .what = kind.what, .found = "none"};
  if (parts.empty()) return {all};
  all.found = Counted(parts.size(), kind.unit);
  const Resources resources(machine, kind.file);
  if (resources.Hidden()) {
    all.found += fmt::format("; whose they are is not shown in {}", kind.file);
    all.verdict = Verdict::kWarning;
    all.next = "See 'User': the kernel shows this to root alone.";
    return {all};
  }
  const Owned owned = FindOwners(resources, parts, unit);
  all.found += owned.empty() ? ", no driver claims any" : "; their owners follow";
  Findings findings = {all};
  for (const auto& [owner, touched] : owned) findings.push_back(Owner(machine, kind, *owner, touched));
  return findings;
}

Finding Unknown(const Kind& kind) {
  return {.id = kind.id,
          .what = kind.what,
          .found = "not known, there is no table",
          .verdict = Verdict::kWarning,
          .next = "See 'Table IADT'."};
}

}  // namespace

std::string TakeOffModule(const std::string& module) {
  return fmt::format(
      "Take the driver off: 'modprobe -r {0}' now, and 'blacklist {0}' in /etc/modprobe.d/vynlib.conf for the next "
      "start.",
      module);
}

Findings JudgeOwners(const Machine& machine, const std::optional<TableUse>& use) {
  if (!use.has_value()) return {Unknown(kPorts), Unknown(kPages)};
  Findings findings = Judge(machine, kPorts, use->ports, 1);
  for (Finding& finding : Judge(machine, kPages, use->memory, static_cast<uint64_t>(sysconf(_SC_PAGESIZE))))
    findings.push_back(std::move(finding));
  return findings;
}

}  // namespace vynctl::doctor

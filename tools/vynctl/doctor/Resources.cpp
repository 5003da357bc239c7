// SPDX-License-Identifier: MIT
// Reads "  0290-0297 : it87": two spaces per level, both ends in hexadecimal.
#include "doctor/Resources.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>

#include "view/Text.h"

namespace vynctl::doctor {
namespace {

/// Beginnings of names that stand for no driver.
constexpr std::string_view kDescriptions[] = {"PCI Bus", "PCI conf1", "pnp ", "Reserved", "RESERVED"};
/// The end of a device that another driver has announced.
constexpr std::string_view kAnnounced = ".auto";
constexpr size_t kIndent = 2;

/// "0000:00:1f.3": the registers of a PCI function.
bool IsPciAddress(std::string_view name) {
  constexpr std::string_view kShape = "hhhh:hh:hh.h";
  return name.size() == kShape.size() && std::equal(name.begin(), name.end(), kShape.begin(), [](char c, char shape) {
           return shape == 'h' ? isxdigit(static_cast<unsigned char>(c)) != 0 : c == shape;
         });
}

bool IsDescription(std::string_view name) {
  return name.empty() || name.ends_with(kAnnounced) || IsPciAddress(name) ||
         std::ranges::any_of(kDescriptions, [&](std::string_view beginning) { return name.starts_with(beginning); });
}

std::optional<Resource> Parse(std::string_view line) {
  const size_t indent = std::min(line.find_first_not_of(' '), line.size());
  Resource resource{.depth = static_cast<unsigned>(indent / kIndent)};
  const char* const end = line.data() + line.size();
  const auto first = std::from_chars(line.data() + indent, end, resource.range.first, 16);
  if (first.ec != std::errc() || first.ptr == end || *first.ptr != '-') return std::nullopt;
  const auto last = std::from_chars(first.ptr + 1, end, resource.range.last, 16);
  const std::string_view rest(last.ptr, static_cast<size_t>(end - last.ptr));
  constexpr std::string_view kSeparator = " : ";
  if (last.ec != std::errc() || !rest.starts_with(kSeparator)) return std::nullopt;
  resource.name = Trim(rest.substr(kSeparator.size()));
  return resource;
}

}  // namespace

Resources::Resources(const Machine& machine, std::string_view path) {
  const std::string bytes = machine.Read(path).bytes;
  for (size_t start = 0; start < bytes.size();) {
    const size_t end = std::min(bytes.find('\n', start), bytes.size());
    const std::optional<Resource> resource = Parse(std::string_view(bytes).substr(start, end - start));
    if (resource.has_value()) list_.push_back(*resource);
    start = end + 1;
  }
  hidden_ = std::ranges::all_of(list_, [](const Resource& resource) { return resource.range.last == 0; });
}

std::vector<const Resource*> Resources::Owners(const Range& range) const {
  std::vector<const Resource*> owners;
  for (const Resource& resource : list_) {
    if (resource.range.first > range.last || resource.range.last < range.first || IsDescription(resource.name))
      continue;
    // A claim inside of the one before is the more exact of the two.
    if (!owners.empty() && owners.back()->depth < resource.depth && owners.back()->range.last >= resource.range.last)
      owners.pop_back();
    owners.push_back(&resource);
  }
  return owners;
}

}  // namespace vynctl::doctor

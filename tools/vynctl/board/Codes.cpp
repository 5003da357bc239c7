// SPDX-License-Identifier: MIT
// The words of vynlib/error_text.h, and what they leave open.
#include "board/Codes.h"

#include <fmt/core.h>

#include "vynlib/error_text.h"
#include "vynlib/vynlib.h"

namespace vynctl {
namespace {

constexpr uint64_t kUnavailable[] = {
    0x305, 0x405, 0x506, 0x1A05, 0x1707, 0x1708, 0x1709, 0x170A, 0x1806, VYNLIB_ERROR_NO_ID_ENTRY,
};

constexpr uint64_t kFirstFamilyCode = 0x100;
constexpr uint64_t kNoCode = ~uint64_t{0};

/// What the family of a code is about; null for global codes and unknown families.
const char* FamilyOf(uint64_t code) {
  return code >= kFirstFamilyCode && code <= UINT16_MAX ? FamilyName(VYNLIB_FAMILY(code)) : nullptr;
}

}  // namespace

std::string Hex(uint64_t code) { return fmt::format("0x{:X}", code); }

const char* FamilyName(unsigned family) { return vynlib_error_family(family); }

std::string ReasonFor(uint64_t code) {
  const std::string reason = vynlib_error_reason(code);
  if (reason != vynlib_error_text(kNoCode)) return reason;
  return FamilyOf(code) != nullptr ? "unknown reason" : fmt::format("unknown code {}", Hex(code));
}

std::string WordsFor(uint64_t code) {
  const char* family = FamilyOf(code);
  return family == nullptr ? ReasonFor(code) : fmt::format("{}: {}", family, ReasonFor(code));
}

bool MeansUnavailable(uint64_t code) {
  for (uint64_t row : kUnavailable) {
    if (row == code) return true;
  }
  return code >= kFirstFamilyCode && VYNLIB_SUB(code) == 0;
}

}  // namespace vynctl

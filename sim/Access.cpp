// SPDX-License-Identifier: MIT
// Accesses in words.
#include <cinttypes>
#include <cstdio>
#include <ostream>

#include "sim/Access.h"

namespace sim {
namespace {

constexpr size_t kLineBytes = 96;

template <typename... Arguments>
std::string Line(const char* format, Arguments... arguments) {
  char line[kLineBytes];
  std::snprintf(line, sizeof line, format, arguments...);
  return line;
}

std::string PortText(const Access& a) {
  const char* verb = a.kind == Access::kIn ? "in" : "out";
  const char* arrow = a.kind == Access::kIn ? "->" : "<-";
  const int digits = static_cast<int>(2 * a.width);
  return Line("%s%u 0x%02" PRIx64 " %s 0x%0*" PRIx64, verb, 8 * a.width, a.address, arrow, digits, a.value);
}

}  // namespace

std::string ToString(const Access& a) {
  switch (a.kind) {
    case Access::kIn:
    case Access::kOut:
      return PortText(a);
    case Access::kIopl:
      return Line("iopl %" PRId64, static_cast<int64_t>(a.value));
    case Access::kOpen:
      return "open " + a.text + (a.value ? " read/write/sync" : " read");
    case Access::kClose:
      return "close";
    case Access::kMap:
      return Line("map 0x%" PRIx64 " +%" PRIu64 "%s", a.address, a.value, a.width ? " writable" : "");
    case Access::kUnmap:
      return Line("unmap 0x%" PRIx64 " +%" PRIu64, a.address, a.value);
    case Access::kMemWrite:
      return Line("mem8 0x%" PRIx64 " <- 0x%02" PRIx64, a.address, a.value);
    case Access::kReadAt:
      return Line("pread 0x%" PRIx64 " +%" PRIu64, a.address, a.value);
    case Access::kCommand:
      return "command " + a.text;
    case Access::kSleep:
      return Line("sleep %" PRIu64 " us", a.value);
  }
  return "unknown access";
}

void PrintTo(const Access& access, std::ostream* stream) { *stream << ToString(access); }

}  // namespace sim

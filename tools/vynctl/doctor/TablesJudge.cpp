// SPDX-License-Identifier: MIT
// What was found of the firmware's tables and records, in words.
#include <fmt/core.h>

#include <cerrno>

#include "doctor/Tables.h"

namespace vynctl::doctor {
namespace {

constexpr char kKernelTables[] = "/sys/firmware/acpi/tables";

/// Where it is told why the BIOS area was not seen.
const char* SeeArea(const Tables& tables) {
  return tables.deviceError != 0 ? "See '/dev/mem'." : "See 'Memory below 1 MiB'.";
}

Finding Unseen(const Tables& tables, const char* id, const char* what) {
  return {.id = id, .what = what, .found = "not looked at", .verdict = Verdict::kWarning, .next = SeeArea(tables)};
}

Finding Device(const Tables& tables, const Privilege& privilege) {
  Finding finding{.id = "dev-mem", .what = "/dev/mem", .found = "opens"};
  if (tables.deviceError == 0 && tables.writeError == 0) return finding;
  if (tables.deviceError == 0) {
    finding.found = fmt::format("opens for reading alone: {}", ErrorWords(tables.writeError));
    finding.verdict = Verdict::kWarning;
    finding.next =
        "Registers in memory need more. In a container or a service: let it be written too "
        "(DeviceAllow=/dev/mem rw).";
    return finding;
  }
  finding.verdict = Verdict::kProblem;
  if (tables.deviceError == ENOENT) {
    finding.found = "not there";
    finding.next =
        "In a container or a service: let the device in (DeviceAllow=/dev/mem rw, no PrivateDevices=). Else boot a "
        "kernel with CONFIG_DEVMEM=y, such as Debian's own.";
    return finding;
  }
  finding.found = fmt::format("does not open: {}", ErrorWords(tables.deviceError));
  if (!privilege.rawIo) {
    finding.next = "See 'Capability CAP_SYS_RAWIO'.";
  } else if (privilege.LockedDown()) {
    finding.next = "See 'Kernel lockdown'.";
  } else {
    finding.next = "In a container or a service: let the device in (DeviceAllow=/dev/mem rw).";
  }
  return finding;
}

Finding LowMemory(const Tables& tables) {
  Finding finding{.id = "low-memory", .what = "Memory below 1 MiB", .found = "maps (0xE0000 to 0xFFFFF)"};
  if (tables.deviceError != 0) return Unseen(tables, "low-memory", "Memory below 1 MiB");
  if (tables.areaError == 0) return finding;
  finding.found = fmt::format("refused: {}", ErrorWords(tables.areaError));
  finding.verdict = Verdict::kProblem;
  finding.next = "Boot with 'iomem=relaxed' on the kernel's command line.";
  return finding;
}

/// Why the library does not read the tables from memory.
std::string WhyNotMemory(const Tables& tables) {
  if (!tables.pointer.has_value()) return "there is no root pointer below 1 MiB";
  if (!tables.PointerSound()) return "the root pointer below 1 MiB is not sound";
  return fmt::format("the kernel refuses /dev/mem at 0x{:X}", tables.firstRefused);
}

void AddStandIn(const Tables& tables, Finding* finding, const char* next) {
  if (tables.UsesCopies()) {
    finding->found += "; the kernel's copies stand in";
    return;
  }
  if (tables.iadt.source == Source::kMemory) {
    finding->found += "; the table IADT lies elsewhere";
    return;
  }
  finding->verdict = Verdict::kWarning;
  finding->next = next;
}

Finding RootPointer(const Tables& tables) {
  Finding finding{.id = "root-pointer", .what = "Root pointer"};
  if (!tables.AreaSeen()) return Unseen(tables, "root-pointer", "Root pointer");
  constexpr char kNext[] =
      "Boot a kernel with ACPI that shows the tables in /sys/firmware/acpi/tables, or switch BIOS start (CSM) on in "
      "the "
      "firmware's setup.";
  constexpr char kNextBehind[] =
      "Install the board's firmware again, or send a bundle to the board's maker: 'vynctl doctor --bundle FILE.tar'.";
  if (!tables.pointer.has_value()) {
    finding.found = "none below 1 MiB";
    AddStandIn(tables, &finding, kNext);
  } else if (!tables.PointerSound()) {
    finding.found = fmt::format("at 0x{:X}, but {}{}", *tables.pointer,
                                tables.pointerSums ? "it names no root table of 32 bits" : "its bytes do not sum to 0",
                                tables.soundBehind ? "; the sound one behind it is not tried" : "");
    AddStandIn(tables, &finding, tables.soundBehind ? kNextBehind : kNext);
  } else {
    finding.found = fmt::format("at 0x{:X}, root table at 0x{:X}", *tables.pointer, tables.rootTable);
  }
  return finding;
}

Finding TableMemory(const Tables& tables) {
  Finding finding{.id = "table-memory", .what = "Memory of the tables"};
  if (!tables.AreaSeen()) return Unseen(tables, "table-memory", "Memory of the tables");
  if (tables.pages == 0) {
    finding.found = "not looked for, no sound root pointer leads there";
  } else if (tables.refusal == 0) {
    finding.found = fmt::format("maps ({})", Counted(tables.pages, "page"));
  } else {
    finding.found = fmt::format("refused at 0x{:X}: {}", tables.firstRefused, ErrorWords(tables.refusal));
    AddStandIn(tables, &finding, "Boot with 'iomem=relaxed' on the kernel's command line.");
  }
  return finding;
}

std::string KernelSide(const FirmwareTable& table) {
  if (table.kernelError == 0) return fmt::format("{} bytes in {}", table.kernel.size(), kKernelTables);
  if (table.kernelError == ENOENT) return fmt::format("not in {}", kKernelTables);
  if (table.kernelError == EBADMSG) return fmt::format("damaged in {}", kKernelTables);
  return fmt::format("not readable in {}: {}", kKernelTables, ErrorWords(table.kernelError));
}

std::string LibrarySide(const Tables& tables, const FirmwareTable& table) {
  switch (table.source) {
    case Source::kMemory:
      return fmt::format("the library reads it from memory (/dev/mem) at 0x{:X}", *table.address);
    case Source::kKernel:
      return fmt::format("the library is served this copy because {}", WhyNotMemory(tables));
    case Source::kNone:
      break;
  }
  if (tables.UsesCopies())
    return fmt::format("the library is served the kernel's copies because {}", WhyNotMemory(tables));
  return tables.Walked() ? "not among the tables in memory (/dev/mem)" : "the library cannot read it";
}

/// What to do about a table that the library does not find.
std::string NextForMissing(const Tables& tables, const FirmwareTable& table, const Privilege& privilege,
                           const std::string& missing) {
  const bool known = table.kernelError == 0 || table.kernelError == ENOENT || table.kernelError == EBADMSG;
  if (!known && !privilege.rawIo) return "See 'User'.";
  if (table.kernelError == ENOENT && (tables.kernelLists || tables.Walked())) return missing;
  if (!tables.AreaSeen()) return SeeArea(tables);
  if (tables.refusal != 0) return "See 'Memory of the tables'.";
  if (!tables.PointerSound()) return "See 'Root pointer'.";
  return "The firmware's list of tables is not in order. Send a bundle to the board's maker: "
         "'vynctl doctor --bundle FILE.tar'.";
}

/// @param missing  what is said, but for `found`, where the firmware lacks the table
Finding Presence(const Tables& tables, const FirmwareTable& table, const Privilege& privilege, const Finding& missing) {
  Finding finding{.id = missing.id, .what = missing.what};
  finding.found = fmt::format("{}; {}", KernelSide(table), LibrarySide(tables, table));
  if (table.Used().empty()) {
    finding.verdict = missing.verdict;
    finding.next = NextForMissing(tables, table, privilege, missing.next);
  } else if (!table.kernel.empty() && table.kernel != table.Used()) {
    finding.found += "; the two differ";
    finding.verdict = Verdict::kWarning;
    finding.next =
        "Look for tables in the initial file system (an ACPI override): take them out, or ask who put them there.";
  }
  return finding;
}

Finding Record(const Tables& tables) {
  Finding finding{.id = "bios-record", .what = "BIOS information record"};
  if (!tables.AreaSeen()) return Unseen(tables, "bios-record", "BIOS information record");
  if (!tables.recordAddress.has_value()) {
    finding.found = "none: the model is not known, nothing else depends on it";
  } else if (tables.record.empty()) {
    finding.found =
        fmt::format("at 0x{:X}, but its bytes do not sum to 0: the model is not known", *tables.recordAddress);
    finding.verdict = Verdict::kWarning;
    finding.next = "Install the board's firmware again; nothing else depends on the record.";
  } else {
    finding.found = fmt::format("at 0x{:X}, model '{}'", *tables.recordAddress, tables.Model());
  }
  return finding;
}

Finding FirmwareKind(const Privilege& privilege) {
  return {.id = "firmware", .what = "Firmware", .found = privilege.uefi ? "UEFI" : "BIOS"};
}

}  // namespace

Findings JudgeMemory(const Tables& tables, const Privilege& privilege) {
  return {Device(tables, privilege), LowMemory(tables), TableMemory(tables)};
}

Findings JudgeTables(const Tables& tables, const Privilege& privilege) {
  Finding noIadt{.id = "iadt", .what = "Table IADT", .verdict = Verdict::kProblem};
  noIadt.next =
      "The firmware of this machine does not describe its board. Install the firmware that the board's maker gives for "
      "it.";
  Finding noIamt{.id = "iamt", .what = "Table IAMT", .verdict = Verdict::kWarning};
  noIamt.next =
      "Nothing but the question which I/O chip serves a function ('vynctl chip') depends on it. If that matters, "
      "install "
      "the firmware that the board's maker gives for this board.";
  return {FirmwareKind(privilege), RootPointer(tables), Presence(tables, tables.iadt, privilege, noIadt),
          Presence(tables, tables.iamt, privilege, noIamt), Record(tables)};
}

}  // namespace vynctl::doctor

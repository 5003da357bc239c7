// SPDX-License-Identifier: MIT
// Looks at the PCI functions for the controller and whoever has it.
#include "doctor/Smbus.h"

#include <fmt/core.h>

#include "doctor/Owners.h"
#include "doctor/SmbusRecords.h"
#include "view/Text.h"

namespace vynctl::doctor {
namespace {

using Use = std::optional<TableUse>;

std::string Named(const PciFunction& function) {
  return fmt::format("{:04X}:{:04X} at {}", function.vendor, function.device, Printable(function.address));
}

Finding Controller(const SmbusChoice& choice, const Use& use) {
  Finding finding{.id = "smbus-controller", .what = "SMBus controller"};
  if (choice.record != nullptr) {
    finding.found = choice.host != nullptr ? fmt::format("{}, record '{}'", Named(*choice.host), choice.record)
                                           : fmt::format("hidden by the firmware, record '{}'", choice.record);
  } else {
    finding.found = choice.host != nullptr ? fmt::format("{}, and no record fits it", Named(*choice.host)) : "none";
  }
  if (use.has_value() && !use->smbus) finding.found += "; the board's table does not use it";
  if (choice.record == nullptr && use.has_value() && use->smbus) {
    finding.found += "; the board's table uses it";
    finding.verdict = Verdict::kWarning;
    finding.next =
        "What the board has on this bus cannot be reached. docs/add-a-chipset.md tells how a record is added.";
  }
  return finding;
}

std::string NextForDriver(const PciFunction& host) {
  constexpr char kWhy[] = "The driver and the library corrupt each other's transfers.";
  if (!host.module.empty()) return fmt::format("{} {}", TakeOffModule(Printable(host.module)), kWhy);
  return fmt::format("Take the driver off: 'echo {} > /sys/bus/pci/drivers/{}/unbind' after every start. {}",
                     Printable(host.address), Printable(host.driver), kWhy);
}

Finding Driver(const SmbusChoice& choice, const Use& use) {
  Finding finding{.id = "smbus-driver", .what = "SMBus driver", .found = "none bound"};
  const PciFunction* host = choice.host;
  if (host == nullptr || host->driver.empty()) return finding;
  finding.found = fmt::format("{} is bound to {}", Printable(host->driver), Printable(host->address));
  if (use.has_value() && !use->smbus) {
    finding.found += "; the board's table does not use the bus";
  } else {
    finding.verdict = Verdict::kWarning;
    finding.next = NextForDriver(*host);
  }
  return finding;
}

}  // namespace

Findings JudgeSmbus(const Machine& machine, const std::optional<TableUse>& use) {
  const std::vector<PciFunction> functions = PciFunctions(machine);
  const SmbusChoice choice = ChooseSmbusRecord(functions);
  return {Controller(choice, use), Driver(choice, use)};
}

}  // namespace vynctl::doctor

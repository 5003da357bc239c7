// SPDX-License-Identifier: MIT
// Reads /sys/bus/pci/devices.
#include "doctor/PciFunctions.h"

#include <cstdlib>

namespace vynctl::doctor {
namespace {

constexpr char kDevices[] = "/sys/bus/pci/devices/";
constexpr char kDomain[] = "0000:";

uint32_t Number(const Machine& machine, const std::string& path) {
  return static_cast<uint32_t>(strtoul(machine.Line(path).c_str(), nullptr, 16));
}

}  // namespace

std::vector<PciFunction> PciFunctions(const Machine& machine) {
  std::vector<PciFunction> functions;
  for (const std::string& address : machine.Names(kDevices)) {
    if (!address.starts_with(kDomain)) continue;
    const std::string folder = kDevices + address;
    functions.push_back({.address = address,
                         .vendor = static_cast<uint16_t>(Number(machine, folder + "/vendor")),
                         .device = static_cast<uint16_t>(Number(machine, folder + "/device")),
                         .classCode = Number(machine, folder + "/class"),
                         .driver = machine.LinkName(folder + "/driver"),
                         .module = machine.LinkName(folder + "/driver/module")});
  }
  return functions;
}

}  // namespace vynctl::doctor

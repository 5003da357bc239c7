// SPDX-License-Identifier: MIT
// Chipsets by their PCI functions and the host that they carry, one row each.
#include "sim/chips/SmbusPlatforms.h"

namespace sim {
namespace {

using Platform = SmbusPlatform;
using Extra = SmbusPlatform::Extra;

constexpr unsigned kId = 0, kCommand = 4, kRevision = 8, kClass = 9, kHeaderType = 0xE;
constexpr uint32_t kMultifunction = 0x80;
constexpr uint32_t kSmbusClass = 0x0C0500, kIsaBridgeClass = 0x060100, kOtherBridgeClass = 0x068000;
constexpr uint16_t kIntelBase = 0xEFA0;

std::vector<PciValue> Function(PciAt at, uint32_t id, uint32_t classCode, uint32_t revision = 0) {
  return {{at, kId, 4, id},
          {at, kRevision, 1, revision},
          {at, kClass, 2, classCode & 0xFFFF},
          {at, kClass + 2, 1, classCode >> 16}};
}

template <typename T>
std::vector<T> operator+(std::vector<T> left, const std::vector<T>& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

/// LPC bridge with the power management block at 0x400, SMBus function with its base in BAR 4.
Platform Intel(std::string_view name, uint32_t lpc, PciAt host, uint32_t smbus, Extra extra) {
  const PciAt bridge = {0x1f, 0};
  const auto id = [](uint32_t device) { return device << 16 | 0x8086; };
  return {.name = name,
          .make = MakeSmbusIch,
          .host = host,
          .values = Function(bridge, id(lpc), kIsaBridgeClass) +
                    std::vector<PciValue>{{bridge, kHeaderType, 1, kMultifunction}, {bridge, 0x40, 4, 0x0401}} +
                    Function(host, id(smbus), kSmbusClass),
          .windows = {{0x20, 4, 0xFFE0, 0, 1}},
          .gates = {{host, kCommand, 1}, {host, 0x40, 1}},
          .extra = extra,
          .defaultBase = kIntelBase};
}

Platform WithFunction(Platform platform, PciAt at, uint32_t id, uint32_t classCode) {
  platform.values = platform.values + Function(at, id, classCode);
  return platform;
}

Platform Via(std::string_view name, uint32_t id, bool commandGate) {
  const PciAt host = {0x11, 0};
  Platform platform = {.name = name,
                       .make = MakeSmbusVia,
                       .host = host,
                       .values = Function(host, id << 16 | 0x1106, kIsaBridgeClass),
                       .windows = {{0xD0, 2, 0xFFF0, 0, 1}},
                       .gates = {{host, 0xD2, 1}},
                       .ports = 0x10,
                       .defaultBase = 0x0500};
  if (commandGate) platform.gates.push_back({host, kCommand, 1});
  return platform;
}

Platform Uli(std::string_view name, uint32_t id, PciAt host) {
  return {.name = name,
          .make = MakeSmbusAli,
          .host = host,
          .values = Function(host, id << 16 | 0x10B9, kIsaBridgeClass),
          .windows = {{0x80, 2, 0xFFF0, 0, 0}},
          .gates = {{host, 0x80, 3}},
          .ports = 0x10,
          .defaultBase = 0x0400};
}

Platform Sis962(std::string_view name, uint32_t id) {
  const PciAt bridge = {2, 0}, host = {2, 1};
  return {.name = name,
          .make = MakeSmbusSis96x,
          .host = host,
          .values = Function(bridge, id << 16 | 0x1039, kIsaBridgeClass) +
                    std::vector<PciValue>{{bridge, kHeaderType, 1, kMultifunction}} +
                    Function(host, 0x00161039, kSmbusClass),
          .windows = {{0x20, 4, 0xFFE0, 0, 1}},
          .gates = {{host, kCommand, 1}, {host, 0x40, 1}},
          .extra = Extra::kBridgeHide,
          .defaultBase = 0x9000};
}

/// The host lies in the ACPI block.
Platform Sis964(std::string_view name, uint32_t id, SmbusMaker make, uint16_t offset, bool smbusGate) {
  const PciAt host = {2, 0};
  Platform platform = {.name = name,
                       .make = make,
                       .host = host,
                       .values = Function(host, id << 16 | 0x1039, kIsaBridgeClass),
                       .windows = {{0x74, 2, 0xFF00, offset, 0}},
                       .gates = {{host, 0x40, 0x80}},
                       .ports = 0x30,
                       .defaultBase = static_cast<uint16_t>(0x0800 + offset)};
  if (smbusGate) platform.gates.push_back({host, 0x76, 3});
  return platform;
}

Platform Nvidia(std::string_view name, uint32_t id, unsigned firstBase, PciAt host) {
  return {.name = name,
          .make = MakeSmbusNforce,
          .host = host,
          .values = Function({host.device, 0}, 0x006010DE, kIsaBridgeClass) +
                    std::vector<PciValue>{{{host.device, 0}, kHeaderType, 1, kMultifunction}} +
                    Function(host, id << 16 | 0x10DE, kSmbusClass),
          .windows = {{firstBase, 2, 0xFFFC, 0, 1}, {firstBase + 4, 2, 0xFFFC, 0, 1}},
          .gates = {{host, kCommand, 1}},
          .ports = 0x40,
          .defaultBase = 0x1C00};
}

Platform ServerWorks(std::string_view name, uint32_t id) {
  const PciAt host = {0xf, 0};
  return {.name = name,
          .make = MakeSmbusServerWorks,
          .host = host,
          .values = Function(host, id << 16 | 0x1166, kIsaBridgeClass),
          .windows = {{0x90, 2, 0xFFF0, 0, 1}},
          .gates = {{host, 0xD2, 1}},
          .ports = 0x10,
          .defaultBase = 0x0580};
}

/// ATI and AMD: 0:14.0. The old ones hold the base in configuration space.
Platform Fch(std::string_view name, uint32_t id, uint32_t revision, Extra extra,
             const Platform::Multiplexer& multiplexer = {}) {
  const PciAt host = {0x14, 0};
  Platform platform = {.name = name,
                       .make = extra == Extra::kNone ? MakeSmbusPiix4 : MakeSmbusFch,
                       .host = host,
                       .values = Function(host, id, kSmbusClass, revision),
                       .windows = {},
                       .gates = {},
                       .extra = extra,
                       .defaultBase = 0x0B00,
                       .multiplexer = multiplexer};
  if (extra != Extra::kNone) return platform;
  platform.windows = {{0x90, 2, 0xFFF0, 0, 1}};
  platform.gates = {{host, 0xD2, 1}};
  return platform;
}

Platform Sch(std::string_view name, uint32_t id) {
  const PciAt host = {0x1f, 0};
  return {.name = name,
          .make = MakeSmbusSch,
          .host = host,
          .values = Function(host, id << 16 | 0x8086, kIsaBridgeClass),
          .windows = {{0x40, 4, 0xFFC0, 0, 0}},
          .gates = {{host, 0x43, 0x80}},
          .ports = 0x40,
          .defaultBase = 0x1040};
}

/// No record covers it.
Platform Piix4() {
  const PciAt host = {1, 3};
  return {.name = "piix4",
          .make = MakeSmbusPiix4,
          .host = host,
          .values = Function({1, 0}, 0x70008086, kIsaBridgeClass) +
                    std::vector<PciValue>{{{1, 0}, kHeaderType, 1, kMultifunction}} +
                    Function(host, 0x71138086, kOtherBridgeClass),
          .windows = {{0x90, 2, 0xFFF0, 0, 1}},
          .gates = {{host, 0xD2, 1}},
          .ports = 0x10,
          .defaultBase = 0xB100};
}

std::vector<SmbusPlatform> IntelPlatforms() {
  constexpr PciAt k1f1 = {0x1f, 1}, k1f3 = {0x1f, 3}, k1f4 = {0x1f, 4};
  constexpr Extra kRcba = Extra::kRootComplexHide, kNone = Extra::kNone;
  return {
      Intel("ich5", 0x24D0, k1f3, 0x24D3, Extra::kLpcHide),
      Intel("ich6", 0x2640, k1f3, 0x266A, kNone),
      Intel("6300esb", 0x25A1, k1f3, 0x25A4, kNone),
      Intel("ep80579", 0x5031, k1f3, 0x5032, kRcba),
      Intel("ich7", 0x27B8, k1f3, 0x27DA, kRcba),
      Intel("ich8", 0x2810, k1f3, 0x283E, kRcba),
      Intel("ich9", 0x2918, k1f3, 0x2930, kRcba),
      Intel("ich10", 0x3A16, k1f3, 0x3A30, kRcba),
      Intel("pch5", 0x3B06, k1f3, 0x3B30, kRcba),
      Intel("pch6", 0x1C4E, k1f3, 0x1C22, kRcba),
      Intel("pch7", 0x1E44, k1f3, 0x1E22, kRcba),
      Intel("pch8", 0x8C4E, k1f3, 0x8C22, kRcba),
      Intel("pch9", 0x8CC6, k1f3, 0x8CA2, kRcba),
      Intel("pch8-lp", 0x9C43, k1f3, 0x9C22, kRcba),
      Intel("x79", 0x1D41, k1f3, 0x1D22, kRcba),
      Intel("x99", 0x8D44, k1f3, 0x8D22, kRcba),
      Intel("dh89xx", 0x2310, k1f3, 0x2330, kRcba),
      WithFunction(Intel("avoton", 0x1F38, k1f3, 0x1F3C, kNone), {0x13, 0}, 0x1F158086, kSmbusClass),
      Intel("bay-trail", 0x0F1C, k1f3, 0x0F12, kNone),
      Intel("braswell", 0x229C, k1f3, 0x2292, kNone),
      Intel("skylake", 0xA145, k1f4, 0xA123, kNone),
      Intel("skylake-lp", 0x9D48, k1f4, 0x9D23, kNone),
      Intel("kaby-lake", 0xA2C5, k1f4, 0xA2A3, kNone),
      Intel("c620", 0xA1C1, k1f4, 0xA1A3, kNone),
      Intel("apollo-lake", 0x5AE8, k1f1, 0x5AD4, kNone),
      Intel("cannon-lake", 0xA306, k1f4, 0xA323, kNone),
      Intel("tiger-lake", 0xA082, k1f4, 0xA0A3, kNone),
      WithFunction(Intel("denverton", 0x19DC, k1f4, 0x19DF, kNone), {0x12, 0}, 0x19AC8086, kSmbusClass),
  };
}

std::vector<SmbusPlatform> OtherPlatforms() {
  constexpr Extra kNone = Extra::kNone;
  constexpr Platform::Multiplexer kSb800Ports = {0x2C, 6, 0x2F, 0x2E}, kHudsonPorts = {0x2E, 6}, kFchPorts = {2, 0x18};
  return {
      Sch("sch", 0x8119),
      Sch("sch-e6xx", 0x8186),
      Uli("m1563", 0x1563, {3, 0}),
      Uli("m1573", 0x1573, {0x1e, 0}),
      Uli("m1575", 0x1575, {0x1e, 0}),
      Via("vt8233", 0x3074, true),
      Via("vt8233a", 0x3147, true),
      Via("vt8235", 0x3177, true),
      Via("vt8237", 0x3227, true),
      Via("vt8237a", 0x3337, true),
      Via("vt8251", 0x3287, true),
      Via("cx700", 0x8324, false),
      Via("vx800", 0x8353, false),
      Via("vx855", 0x8409, false),
      Via("vx900", 0x8410, false),
      Sis962("sis961", 0x0961),
      Sis962("sis962", 0x0962),
      Sis962("sis963", 0x0963),
      Sis964("sis964", 0x0964, MakeSmbusSis964, 0xE0, false),
      Sis964("sis965", 0x0965, MakeSmbusSis965, 0xD0, true),
      Sis964("sis966", 0x0966, MakeSmbusSis965, 0xD0, true),
      Sis964("sis968", 0x0968, MakeSmbusSis965, 0xD0, true),
      Nvidia("nforce2", 0x0064, 0x50, {1, 1}),
      Nvidia("nforce2-ultra", 0x0084, 0x50, {1, 1}),
      Nvidia("nforce3", 0x00D4, 0x50, {1, 1}),
      Nvidia("ck804", 0x0052, 0x20, {1, 1}),
      Nvidia("mcp51", 0x0264, 0x20, {0xa, 1}),
      Nvidia("mcp55", 0x0368, 0x20, {0xa, 1}),
      Nvidia("mcp61", 0x03EB, 0x20, {1, 1}),
      ServerWorks("osb4", 0x0200),
      ServerWorks("csb5", 0x0201),
      ServerWorks("csb6", 0x0203),
      ServerWorks("ht1000", 0x0205),
      Fch("sb400", 0x43721002, 0x80, kNone),
      Fch("sb600", 0x43851002, 0x14, kNone),
      Fch("sb700", 0x43851002, 0x3A, kNone),
      Fch("sb800", 0x43851002, 0x41, Extra::kPm2c, kSb800Ports),
      Fch("hudson", 0x780B1022, 0x14, Extra::kPm2c, kHudsonPorts),
      Fch("mullins", 0x780B1022, 0x42, Extra::kPmDecode, kHudsonPorts),
      Fch("carrizo", 0x790B1022, 0x4A, Extra::kPmDecode, kFchPorts),
      Fch("promontory", 0x790B1022, 0x61, Extra::kPmDecode, kFchPorts),
      Fch("fch-early", 0x790B1022, 0x42, Extra::kPm2c, kFchPorts),
      Piix4(),
  };
}

}  // namespace

const std::vector<SmbusPlatform>& SmbusPlatforms() {
  static const std::vector<SmbusPlatform> platforms = IntelPlatforms() + OtherPlatforms();
  return platforms;
}

const SmbusPlatform* FindSmbusPlatform(std::string_view name) {
  for (const SmbusPlatform& platform : SmbusPlatforms())
    if (platform.name == name) return &platform;
  return nullptr;
}

}  // namespace sim

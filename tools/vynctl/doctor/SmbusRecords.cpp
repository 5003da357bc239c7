// SPDX-License-Identifier: MIT
// The identifiers that the records are found by, in the order in which the library tries the records.
#include "doctor/SmbusRecords.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace vynctl::doctor {
namespace {

constexpr uint32_t kSmbusClass = 0x0C0500;
/// Function 0 of any device of bus 0.
constexpr std::string_view kBusZero;
/// Bus 0 at this place and not another.
constexpr std::string_view kLpc = "0000:00:1f.0", kThird = "0000:00:1f.3", kFourth = "0000:00:1f.4",
                           kVia = "0000:00:11.0", kAmd = "0000:00:14.0", kSis = "0000:00:02.0",
                           kSisHost = "0000:00:02.1";
/// The first SMBus controller by class, wherever it is.
constexpr std::string_view kFirstByClass = "class";
/// The SMBus controller among the functions of 0:1f.
constexpr std::string_view kDevice1f = "1f";

struct Row {
  const char* record;
  std::string_view place;  ///< of the function that is known by its identifier
  uint16_t vendor;
  uint16_t mask;  ///< of the bits of the device identifier that are compared
  std::vector<uint16_t> devices;
  std::string_view host = {};  ///< place of the controller itself, where it is another function
};

constexpr uint16_t kExactly = 0xFFFF, kFamily = 0xFF00, kSixteen = 0xFFF0, kAnyDevice = 0;
constexpr uint16_t kIntel = 0x8086, kSiS = 0x1039, kUli = 0x10B9, kViaVendor = 0x1106, kNvidia = 0x10DE,
                   kAmdVendor = 0x1022, kHygon = 0x1D94, kAti = 0x1002, kServerWorks = 0x1166;
constexpr std::string_view kAutoPch = "Intel Auto PCH";

// clang-format off
const Row kRows[] = {
    {"SiS 964",                            kSis,          kSiS,         kExactly, {0x0964}},
    {"SiS 968",                            kSis,          kSiS,         kExactly, {0x0968}},
    {"Intel SCH",                          kLpc,          kIntel,       kExactly, {0x8119, 0x8186, 0x0C60}},
    {"ULI M1563",                          kBusZero,      kUli,         kExactly, {0x1563}},
    {"ULI M1573",                          kBusZero,      kUli,         kExactly, {0x1573}},
    {"ULI M1575",                          kBusZero,      kUli,         kExactly, {0x1575}},
    {"VIA VX900",                          kVia,          kViaVendor,   kExactly, {0x8410, 0x8324, 0x8353, 0x8409}},
    {"Intel ICHx",                         kLpc,          kIntel,       kFamily,  {0x2400, 0x2600}, kThird},
    {"SiS 962/963",                        kSis,          kSiS,         kExactly, {0x0961, 0x0962, 0x0963}, kSisHost},
    {"SiS 965/966",                        kSis,          kSiS,         kExactly, {0x0965, 0x0966}},
    {"nVidia MCP2",                        kFirstByClass, kNvidia,      kExactly, {0x0064, 0x0084}},
    {"AMD Promontory",                     kAmd,          kAmdVendor,   kExactly, {0x790B}},
    {"AMD Promontory",                     kAmd,          kHygon,       kExactly, {0x790B}},
    {"Intel Auto PCH",                     kDevice1f,     kIntel,       kAnyDevice, {0}},
    {"Intel Kaby lake",                    kFourth,       kIntel,       kExactly, {0xA2A3}},
    {"Intel Avoton PCH",                   kThird,        kIntel,       kExactly, {0x1F3C}},
    {"Intel Skylake PCH",                  kFourth,       kIntel,       kExactly, {0xA123, 0x9D23}},
    {"Intel Braswell PCH",                 kThird,        kIntel,       kExactly, {0x2292, 0x0F12}},
    {"nVidia nForce3/CK804",               kFirstByClass, kNvidia,      kExactly,
     {0x00D4, 0x00E4, 0x0052, 0x0034, 0x0264, 0x0368, 0x03EB, 0x0446, 0x0542, 0x07D8, 0x0752, 0x0AA2, 0x0D79}},
    {"Intel PCH/P67/Z77/Z87",              kLpc,          kIntel,       kFamily,
     {0x3B00, 0x1C00, 0x1E00, 0x8C00, 0x1D00, 0x8D00, 0x9C00, 0x2300}, kThird},
    {"ServerWorks OSB4/CSB5",              kBusZero,      kServerWorks, kExactly, {0x0200, 0x0201, 0x0203, 0x0205}},
    {"VIA 8235/8237/8237A/8251",           kVia,          kViaVendor,   kExactly,
     {0x3074, 0x3147, 0x3177, 0x3227, 0x3337, 0x3372, 0x3287}},
    {"Intel ICH7/ICH8/ICH9/ICH10",         kLpc,          kIntel,       kSixteen,
     {0x27B0, 0x2810, 0x2910, 0x3A10, 0x25A0, 0x5030}, kThird},
    {"ATI SB400/SB600/SB700/SB800/Hudson", kAmd,          kAti,         kExactly, {0x4372, 0x4385}},
    {"ATI SB400/SB600/SB700/SB800/Hudson", kAmd,          kAmdVendor,   kExactly, {0x780B}},
};
// clang-format on

using Functions = std::vector<PciFunction>;

const PciFunction* At(const Functions& functions, std::string_view place) {
  const auto found = std::ranges::find(functions, place, &PciFunction::address);
  return found != functions.end() ? &*found : nullptr;
}

const PciFunction* FirstByClass(const Functions& functions) {
  const auto found = std::ranges::find(functions, kSmbusClass, &PciFunction::classCode);
  return found != functions.end() ? &*found : nullptr;
}

bool HasIdentifier(const Row& row, const PciFunction& function) {
  const auto device = static_cast<uint16_t>(function.device & row.mask);
  return function.vendor == row.vendor && std::ranges::count(row.devices, device) != 0;
}

/// From function 4 on, as the library looks, and by class and subclass alone.
const PciFunction* OnDevice1f(const Functions& functions) {
  for (const char number : {'4', '5', '6', '7', '0', '1', '2', '3'}) {
    const PciFunction* function = At(functions, std::string("0000:00:1f.") + number);
    if (function != nullptr && function->classCode >> 8 == kSmbusClass >> 8) return function;
  }
  return nullptr;
}

bool IsOnBusZero(const PciFunction& function) {
  return function.address.starts_with("0000:00:") && function.address.ends_with(".0");
}

/// Not at 1f.3, which the other Intel records cover, none that one of them names, and not Denverton's.
bool IsAutoPch(const PciFunction& function) {
  constexpr uint16_t kOthers[] = {0xA123, 0x9D23, 0xA2A3, 0x19DF};
  return function.address != kThird && std::ranges::count(kOthers, function.device) == 0;
}

/// The function that makes the library take this row; null when it does not.
const PciFunction* Match(const Row& row, const Functions& functions) {
  if (row.place == kBusZero) {
    const auto found =
        std::ranges::find_if(functions, [&](const PciFunction& f) { return IsOnBusZero(f) && HasIdentifier(row, f); });
    return found != functions.end() ? &*found : nullptr;
  }
  const PciFunction* function = row.place == kFirstByClass ? FirstByClass(functions)
                                : row.place == kDevice1f   ? OnDevice1f(functions)
                                                           : At(functions, row.place);
  if (function == nullptr || !HasIdentifier(row, *function)) return nullptr;
  return row.record != kAutoPch || IsAutoPch(*function) ? function : nullptr;
}

}  // namespace

SmbusChoice ChooseSmbusRecord(const Functions& functions) {
  for (const Row& row : kRows) {
    const PciFunction* match = Match(row, functions);
    if (match != nullptr) return {row.record, !row.host.empty() ? At(functions, row.host) : match};
  }
  return {nullptr, FirstByClass(functions)};
}

}  // namespace vynctl::doctor

// SPDX-License-Identifier: MIT
// Features by the functions of their rows, and their values as the records of the firmware tell them.
#include "board/Features.h"

#include <fmt/core.h>

#include <map>
#include <set>

#include "board/Codes.h"
#include "layout/RecordLayout.h"
#include "layout/Walk.h"

namespace vynctl {
namespace {

using PlainGetter = int(uint8_t* result, uint8_t selector);
using PlainSetter = int(uint8_t value, uint8_t selector);
using IndexedGetter = int(uint8_t index, uint8_t* result, uint8_t selector);
using IndexedSetter = int(uint8_t index, uint8_t value, uint8_t selector);
using VersionGetter = int(uint16_t* result, uint8_t selector);

// The sub-code of an indexed reading whose index no entry has.
constexpr unsigned kNoSuchIndex = 0x04;
constexpr unsigned kInstances = 256;

Value Blank(const Feature& feature) {
  Value value;
  value.id = fmt::format("feature/{}", feature.name);
  value.name = FamilyName(feature.family);
  value.quantity = feature.shape == Shape::kVersion ? "version" : "state";
  return value;
}

/// Calls the getter; 0 or the library's code.
uint64_t CallGetter(const Library& library, const Feature& feature, uint8_t index, uint8_t selector, int64_t* state) {
  uint8_t byte = 0;
  uint16_t word = 0;
  int done = 0;
  switch (feature.shape) {
    case Shape::kPlain:
      done = library.Find<PlainGetter>(feature.getter)(&byte, selector);
      break;
    case Shape::kIndexed:
      done = library.Find<IndexedGetter>(feature.getter)(index, &byte, selector);
      break;
    case Shape::kVersion:
      done = library.Find<VersionGetter>(feature.getter)(&word, selector);
      break;
  }
  *state = feature.shape == Shape::kVersion ? word : byte;
  return done != 0 ? VYNLIB_OK : library.LastError();
}

uint64_t CallSetter(const Library& library, const Feature& feature, uint8_t index, uint8_t value, uint8_t selector) {
  const int done = feature.shape == Shape::kIndexed
                       ? library.Find<IndexedSetter>(feature.setter)(index, value, selector)
                       : library.Find<PlainSetter>(feature.setter)(value, selector);
  return done != 0 ? VYNLIB_OK : library.LastError();
}

Value CannotBeRead(const Feature& feature) {
  Value value = Blank(feature);
  value.state = State::kUnavailable;
  value.words = fmt::format("{} can only be set, not read", feature.name);
  return value;
}

consteval uint8_t TypeOf(std::string_view record) { return layout::Feature(record).type; }

}  // namespace

const std::vector<Feature>& Features() {
  static const std::vector<Feature> kFeatures = {
      {"com-type", VYNLIB_FAMILY_COM_TYPE, Shape::kIndexed, "VynLibGetComType", "VynLibSetComType", TypeOf("ComType")},
      {"com-power", VYNLIB_FAMILY_COM_POWER, Shape::kIndexed, "VynLibGetCOMPowerState", "VynLibSetCOMPowerState",
       TypeOf("COMPowerState")},
      {"lvds-state", VYNLIB_FAMILY_LVDS_STATE, Shape::kPlain, "VynLibGetLVDSState", "VynLibSetLVDSState",
       TypeOf("LVDSState")},
      {"lvds-type", VYNLIB_FAMILY_LVDS_TYPE, Shape::kPlain, "VynLibGetLVDSType", "VynLibSetLVDSType",
       TypeOf("LVDSType")},
      {"backlight", VYNLIB_FAMILY_BACKLIGHT, Shape::kPlain, nullptr, "VynLibBacklightCtrl", TypeOf("Backlight")},
      {"usb-power", VYNLIB_FAMILY_USB_POWER, Shape::kPlain, "VynLibGetUsbPwrState", "VynLibSetUsbPwrState",
       TypeOf("UsbPwrState")},
      {"bluetooth", VYNLIB_FAMILY_BLUETOOTH, Shape::kPlain, "VynLibGetBTState", "VynLibSetBTState", TypeOf("BTState")},
      {"wifi", VYNLIB_FAMILY_WIFI, Shape::kPlain, "VynLibGetWifiState", "VynLibSetWifiState", TypeOf("WifiState")},
      {"digital-io", VYNLIB_FAMILY_DIGITAL_IO, Shape::kIndexed, "VynLibGetDigitalIOState", "VynLibSetDigitalIOState",
       TypeOf("DigitalIOState")},
      {"dio-config", VYNLIB_FAMILY_DIO_CONFIG, Shape::kIndexed, "VynLibGetDioConfig", "VynLibSetDioConfig",
       TypeOf("DioConfig")},
      {"dio-enable", VYNLIB_FAMILY_DIO_ENABLE, Shape::kPlain, "VynLibGetDioEnPin", "VynLibSetDioEnPin",
       TypeOf("DioEnPin")},
      {"user-led", VYNLIB_FAMILY_USER_LED_STATE, Shape::kPlain, "VynLibGetUserLEDState", "VynLibSetUserLEDState",
       TypeOf("UserLEDState")},
      {"user-led-color", VYNLIB_FAMILY_USER_LED_COLOR, Shape::kIndexed, "VynLibGetUserLEDColor",
       "VynLibSetUserLEDColor", TypeOf("UserLEDColor")},
      {"debug-led-color", VYNLIB_FAMILY_DEBUG_LED_COLOR, Shape::kIndexed, "VynLibGetDbgLedColor",
       "VynLibSetDbgLedColor", TypeOf("DbgLedColor")},
      {"jgpio-power", VYNLIB_FAMILY_JGPIO_POWER, Shape::kPlain, "VynLibGetJGPIOPowerState", "VynLibSetJGPIOPowerState",
       TypeOf("JGPIOPowerState")},
      {"tpm", VYNLIB_FAMILY_ONBOARD_TPM, Shape::kPlain, "VynLibGetOnboardTPMState", "VynLibSetOnboardTPMState",
       TypeOf("OnboardTPMState"), true},
      {"otp", VYNLIB_FAMILY_OTP, Shape::kPlain, "VynLibGetOTPState", "VynLibSetOTPState", TypeOf("OTPState"), true},
      {"me-descriptor", VYNLIB_FAMILY_ME_DESCRIPTOR, Shape::kPlain, "VynLibGetMEDescriptorState",
       "VynLibSetMEDescriptorState", TypeOf("MEDescriptorState"), true},
      {"intel-power", VYNLIB_FAMILY_INTEL_POWER, Shape::kPlain, "VynLibGetIntelPwrSolutionState",
       "VynLibSetIntelPwrSolutionState", TypeOf("IntelPwrSolutionState")},
      {"at-mode", VYNLIB_FAMILY_AT_MODE, Shape::kPlain, "VynLibGetATModeState", nullptr, TypeOf("ATModeState")},
      {"mfg-state", VYNLIB_FAMILY_MFG_STATE, Shape::kPlain, "VynLibGetMFGState", nullptr, TypeOf("MFGState")},
      {"pcie-bandwidth", VYNLIB_FAMILY_PCIE_BANDWIDTH, Shape::kPlain, "VynLibGetPcieBandwidthMode", nullptr,
       TypeOf("PcieBandwidthMode")},
      {"tb-cio-plug", VYNLIB_FAMILY_TB_CIO_PLUG, Shape::kPlain, "VynLibDetectTbCIOPlug", nullptr, TypeOf("TbCIOPlug")},
      {"tb-frc-power", VYNLIB_FAMILY_TB_FRC_POWER, Shape::kPlain, "VynLibGetTbFRCPowerState", nullptr,
       TypeOf("TbFRCPowerState")},
      {"board-version", VYNLIB_FAMILY_BOARD_VERSION, Shape::kVersion, "VynLibMBVersionState", nullptr,
       TypeOf("MBVersionState")},
  };
  return kFeatures;
}

std::vector<std::string> FeatureNames() {
  std::vector<std::string> names;
  for (const Feature& feature : Features()) names.push_back(feature.name);
  return names;
}

const Feature* FindFeature(const std::string& name) {
  for (const Feature& feature : Features()) {
    if (name == feature.name) return &feature;
  }
  return nullptr;
}

bool OffersReading(const Library& library, const Feature& feature) {
  int64_t ignored = 0;
  return feature.getter != nullptr && CallGetter(library, feature, 0, VYNLIB_QUERY, &ignored) == VYNLIB_OK;
}

bool OffersSetting(const Library& library, const Feature& feature) {
  return feature.setter != nullptr && CallSetter(library, feature, 0, 0, VYNLIB_QUERY) == VYNLIB_OK;
}

Value ReadFeatureAt(const Library& library, const Feature& feature, uint8_t index) {
  if (feature.getter == nullptr) return CannotBeRead(feature);
  Value value = BlankState(feature, index);
  int64_t state = 0;
  const uint64_t code = CallGetter(library, feature, index, VYNLIB_PERFORM, &state);
  if (code != VYNLIB_OK) return Failed(value, code);
  value.data = state;
  return value;
}

std::vector<Value> ReadFeature(const Library& library, const Feature& feature) {
  if (!Offers(library, feature)) return {Failed(Blank(feature), library.LastError())};
  if (feature.shape != Shape::kIndexed) return {ReadFeatureAt(library, feature, 0)};
  std::vector<Value> values;
  for (unsigned index = 0; index < kInstances; ++index) {
    Value value = ReadFeatureAt(library, feature, static_cast<uint8_t>(index));
    if (value.code != ((feature.family << 8) | kNoSuchIndex)) values.push_back(std::move(value));
  }
  if (values.empty()) values.push_back(Failed(Blank(feature), library.LastError()));
  return values;
}

uint64_t SetFeature(const Library& library, const Feature& feature, uint8_t index, uint8_t value) {
  return CallSetter(library, feature, index, value, VYNLIB_PERFORM);
}

Value BlankState(const Feature& feature, uint8_t index) {
  Value value = Blank(feature);
  if (feature.shape != Shape::kIndexed) return value;
  value.id += fmt::format("/{}", index);
  value.name += fmt::format(" {}", index);
  return value;
}

std::string InstanceOf(const Value& value) {
  const size_t first = value.id.find('/'), last = value.id.rfind('/');
  return first == last ? "" : value.id.substr(last + 1);
}

// The library compares what it is given with the entries of the firmware's table; this reads the same entries.
namespace {

/// "4", "4 to 7", or two numbers where that is all there is between them.
std::vector<std::string> Runs(const std::vector<uint8_t>& ascending) {
  constexpr size_t kShortestRun = 3;
  std::vector<std::string> runs;
  for (size_t first = 0; first < ascending.size();) {
    size_t end = first + 1;
    while (end < ascending.size() && ascending[end] == ascending[end - 1] + 1) ++end;
    if (end - first < kShortestRun) end = first + 1;
    const std::string start = fmt::format("{}", ascending[first]);
    runs.push_back(end - first == 1 ? start : fmt::format("{} to {}", start, ascending[end - 1]));
    first = end;
  }
  return runs;
}

std::string NameAt(const Feature& feature, uint8_t index) {
  return feature.shape == Shape::kIndexed ? fmt::format("{} {}", feature.name, index) : feature.name;
}

}  // namespace

std::vector<AllowedValues> FindAllowed(std::span<const uint8_t> iadt, const Feature& feature) {
  if (feature.shape == Shape::kVersion || iadt.size() < layout::acpi::kHeaderBytes) return {};
  std::map<uint8_t, std::set<uint8_t>> found;
  for (layout::RecordCursor cursor(layout::Covered(iadt)); cursor.Valid(); cursor.Next()) {
    const layout::RecordView record = cursor.Current();
    if (record.Type() != feature.recordType) continue;
    found[feature.shape == Shape::kIndexed ? record.Index() : uint8_t{0}].insert(record.Value());
  }
  std::vector<AllowedValues> allowed;
  for (const auto& [index, values] : found) allowed.push_back({index, {values.begin(), values.end()}});
  return allowed;
}

std::vector<uint8_t> AllowedAt(const std::vector<AllowedValues>& allowed, uint8_t index) {
  for (const AllowedValues& row : allowed) {
    if (row.index == index) return row.values;
  }
  return {};
}

std::string NumberWords(const std::vector<uint8_t>& ascending, const char* last) {
  const std::vector<std::string> runs = Runs(ascending);
  std::string text;
  for (size_t i = 0; i < runs.size(); ++i) {
    if (i > 0) text += i + 1 == runs.size() ? fmt::format(" {} ", last) : ", ";
    text += runs[i];
  }
  return text;
}

std::string WrongIndex(const std::vector<AllowedValues>& allowed, const Feature& feature, uint8_t index) {
  if (allowed.empty() || feature.shape != Shape::kIndexed || !AllowedAt(allowed, index).empty()) return "";
  std::vector<uint8_t> instances;
  for (const AllowedValues& row : allowed) instances.push_back(row.index);
  return fmt::format("{} has the instance{} {}, not {}", feature.name, instances.size() == 1 ? "" : "s",
                     NumberWords(instances, "and"), index);
}

std::string WrongValue(const std::vector<AllowedValues>& allowed, const Feature& feature, uint8_t index,
                       uint8_t value) {
  const std::string wrongIndex = WrongIndex(allowed, feature, index);
  if (allowed.empty() || !wrongIndex.empty()) return wrongIndex;
  const std::vector<uint8_t> values = AllowedAt(allowed, index);
  for (uint8_t known : values) {
    if (known == value) return "";
  }
  return fmt::format("{} takes {}, not {}", NameAt(feature, index), NumberWords(values, "or"), value);
}

}  // namespace vynctl

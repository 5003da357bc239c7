#include "Features.h"

#include <fmt/core.h>

#include "Codes.h"
#include "layout/RecordLayout.h"

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

std::string ShownState(const Feature& feature, const Value& value) {
  const int64_t* number = std::get_if<int64_t>(&value.data);
  if (number == nullptr || feature.shape != Shape::kVersion) return ShownData(value);
  return fmt::format("0x{:04X}", *number);
}

std::string Explain(const Feature& feature, const Value& value) {
  if (value.state != State::kOk) return ShownFailure(value);
  const int64_t* number = std::get_if<int64_t>(&value.data);
  if (number == nullptr || feature.shape != Shape::kVersion) return value.name;
  return fmt::format("{}: bits {:08b}, {} matching", value.name, *number & 0xFF, *number >> 8);
}

}  // namespace vynctl

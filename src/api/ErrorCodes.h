/// Every code that the library leaves in its last error. Codes below 0x100 are global; the others are family * 256 +
/// sub-code.
#pragma once

#include <cstdint>

namespace api {

enum GlobalCode : uint64_t {
  kOk = 0,
  kNotInitialised = 1,
  kBadSelector = 12,
  kBadKind = 13,
  kNoIdEntry = 16,
  kNoBoardRecord = 17,
  kNoIoNumber = 18,
  kChipNotListed = 19,
  kIdCommandFailed = 20,
  kUnknownAccess = 21,
};

enum Family : uint8_t {
  kComType = 0x02,
  kVoltage = 0x03,
  kTemperature = 0x04,
  kFanSpeed = 0x05,
  kLvdsState = 0x06,
  kLvdsType = 0x07,
  kMfgState = 0x08,
  kOnboardTpm = 0x09,
  kMeDescriptor = 0x0A,
  kPcieBandwidth = 0x0B,
  kUsbPower = 0x0C,
  kBluetooth = 0x0D,
  kWifi = 0x0E,
  kOtp = 0x0F,
  kAtMode = 0x11,
  kIntelPower = 0x12,
  kTbCioPlug = 0x13,
  kTbFrcPower = 0x14,
  kBoardVersion = 0x15,
  kDigitalIo = 0x16,
  kWatchdog = 0x17,
  kFanConfig = 0x18,
  kBacklight = 0x19,
  kCurrent = 0x1A,
  kUserLedState = 0x1B,
  kJgpioPower = 0x1C,
  kComPower = 0x1D,
  kDebugLedColor = 0x1E,
  kUserLedColor = 0x1F,
  kDioConfig = 0x20,
  kDioEnable = 0x21,
};

/// Sub-code of every family: the board has no list for it.
inline constexpr uint8_t kAbsent = 0x00;

constexpr uint64_t Code(uint8_t family, uint8_t subCode) { return uint64_t{family} << 8 | subCode; }

}  // namespace api

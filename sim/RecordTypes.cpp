#include "sim/RecordTypes.h"

namespace sim {
namespace {

constexpr SensorParameter kDivider[] = {{"r1", 27}, {"r2", 28}};
constexpr SensorParameter kStepDivider[] = {{"step", 27}, {"r1", 28}, {"r2", 29}};
constexpr SensorParameter kDivisors[] = {
    {"divisor", 27}, {"shift", 28}, {"fraction_divisor", 101}, {"fraction_shift", 102}};
constexpr SensorParameter kFields[] = {
    {"shift", 27}, {"width", 28}, {"subtrahend_shift", 69}, {"subtrahend_width", 70}};

constexpr CommandPlace kTwoAt29[] = {{29, 36}, {65, 36}};
constexpr CommandPlace kOneAt29[] = {{29, 36}};
constexpr CommandPlace kOneAt30[] = {{30, 21}};
constexpr CommandPlace kTwoAt29And103[] = {{29, 36}, {65, 36}, {103, 36}, {139, 36}};
constexpr CommandPlace kOneAt27[] = {{27, 36}};
constexpr CommandPlace kAt29And71[] = {{29, 40}, {71, 40}};
constexpr CommandPlace kShortAt27And48[] = {{27, 21}, {48, 21}};
constexpr CommandPlace kFourAt27[] = {{27, 36}, {63, 36}, {99, 36}, {135, 36}};
constexpr CommandPlace kTwoAt31[] = {{31, 36}, {67, 36}};
constexpr CommandPlace kShortAt31And52[] = {{31, 21}, {52, 21}};
constexpr CommandPlace kShortAt27[] = {{27, 21}};

constexpr RecordType kRecordTypes[] = {
    {"ComType", 1},
    {"voltage", 2, 1, 101, kDivider, kTwoAt29},
    {"voltage", 2, 2, 65, kDivider, kOneAt29},
    {"voltage", 2, 3, 51, kStepDivider, kOneAt30},
    {"temperature", 3, 1, 175, kDivisors, kTwoAt29And103},
    {"temperature", 3, 2, 63, {}, kOneAt27},
    {"temperature", 3, 3, 111, kFields, kAt29And71},
    {"temperature", 3, 4, 69, {}, kShortAt27And48},
    {"fan", 4, 1, 171, {}, kFourAt27},
    {"fan", 4, 2, 103, {}, kTwoAt31},
    {"fan", 4, 3, 73, {}, kShortAt31And52},
    {"LVDSState", 5},
    {"LVDSType", 6},
    {"MFGState", 7},
    {"OnboardTPMState", 8},
    {"Type9", 9},
    {"MEDescriptorState", 10},
    {"Type11", 11},
    {"Type12", 12},
    {"PcieBandwidthMode", 13},
    {"UsbPwrState", 14},
    {"BTState", 15},
    {"WifiState", 16},
    {"OTPState", 17},
    {"Type18", 18},
    {"ATModeState", 19},
    {"IntelPwrSolutionState", 20},
    {"TbCIOPlug", 21},
    {"TbFRCPowerState", 22},
    {"MBVersionState", 23},
    {"DigitalIOState", 24},
    {"Watchdog", 25},
    {"FanConfig", 26},
    {"Backlight", 27},
    {"UserLEDState", 28},
    {"JGPIOPowerState", 29},
    {"COMPowerState", 30},
    {"current", 31, 1, 56, {}, kShortAt27},
    {"DbgLedColor", 32},
    {"UserLEDColor", 33},
    {"DioConfig", 34},
    {"DioEnPin", 35},
};

}  // namespace

std::span<const RecordType> RecordTypes() { return kRecordTypes; }

const RecordType* FindFeature(std::string_view name) {
  for (const RecordType& row : kRecordTypes)
    if (!row.IsSensor() && row.name == name) return &row;
  return nullptr;
}

const RecordType* FindRecordType(uint8_t type, uint8_t subType) {
  for (const RecordType& row : kRecordTypes)
    if (row.type == type && (!row.IsSensor() || row.subType == subType)) return &row;
  return nullptr;
}

const RecordType* FindSensor(std::string_view quantity, uint8_t subType) {
  for (const RecordType& row : kRecordTypes)
    if (row.IsSensor() && row.name == quantity && row.subType == subType) return &row;
  return nullptr;
}

}  // namespace sim

// SPDX-License-Identifier: MIT
// Words for families and sub-codes, one row each.
#include "board/Codes.h"

#include <fmt/core.h>

#include "vynlib/vynlib.h"

namespace vynctl {
namespace {

struct Words {
  uint64_t code;
  const char* text;
};

constexpr Words kFamilies[] = {
    {VYNLIB_FAMILY_COM_TYPE, "COM port type"},
    {VYNLIB_FAMILY_VOLTAGE, "voltage"},
    {VYNLIB_FAMILY_TEMPERATURE, "temperature"},
    {VYNLIB_FAMILY_FAN_SPEED, "fan speed"},
    {VYNLIB_FAMILY_LVDS_STATE, "LVDS panel state"},
    {VYNLIB_FAMILY_LVDS_TYPE, "LVDS panel type"},
    {VYNLIB_FAMILY_MFG_STATE, "manufacturing mode"},
    {VYNLIB_FAMILY_ONBOARD_TPM, "on-board TPM"},
    {VYNLIB_FAMILY_ME_DESCRIPTOR, "ME descriptor"},
    {VYNLIB_FAMILY_PCIE_BANDWIDTH, "PCIe bandwidth mode"},
    {VYNLIB_FAMILY_USB_POWER, "USB power"},
    {VYNLIB_FAMILY_BLUETOOTH, "Bluetooth"},
    {VYNLIB_FAMILY_WIFI, "Wi-Fi"},
    {VYNLIB_FAMILY_OTP, "OTP"},
    {VYNLIB_FAMILY_AT_MODE, "AT mode"},
    {VYNLIB_FAMILY_INTEL_POWER, "Intel power solution"},
    {VYNLIB_FAMILY_TB_CIO_PLUG, "Thunderbolt CIO plug"},
    {VYNLIB_FAMILY_TB_FRC_POWER, "Thunderbolt FRC power"},
    {VYNLIB_FAMILY_BOARD_VERSION, "board version"},
    {VYNLIB_FAMILY_DIGITAL_IO, "digital I/O"},
    {VYNLIB_FAMILY_WATCHDOG, "watchdog"},
    {VYNLIB_FAMILY_FAN_CONFIG, "fan configuration"},
    {VYNLIB_FAMILY_BACKLIGHT, "backlight"},
    {VYNLIB_FAMILY_CURRENT, "current"},
    {VYNLIB_FAMILY_USER_LED_STATE, "user LED state"},
    {VYNLIB_FAMILY_JGPIO_POWER, "JGPIO power"},
    {VYNLIB_FAMILY_COM_POWER, "COM port power"},
    {VYNLIB_FAMILY_DEBUG_LED_COLOR, "debug LED colour"},
    {VYNLIB_FAMILY_USER_LED_COLOR, "user LED colour"},
    {VYNLIB_FAMILY_DIO_CONFIG, "digital I/O configuration"},
    {VYNLIB_FAMILY_DIO_ENABLE, "digital I/O enable pin"},
};

constexpr Words kGlobal[] = {
    {VYNLIB_OK, "success"},
    {VYNLIB_ERROR_NOT_INITIALISED, "not initialised, or the I/O privilege level could not be raised"},
    {VYNLIB_ERROR_SELECTOR, "the function does not accept this selector"},
    {VYNLIB_ERROR_KIND, "the kind is not 1 to 26"},
    {VYNLIB_ERROR_NO_ID_ENTRY, "the board has no identifying entry of that name"},
    {VYNLIB_ERROR_NO_BOARD_RECORD, "the firmware has no board information record"},
    {VYNLIB_ERROR_NO_IO_NUMBER, "the chip was found but has no I/O number"},
    {VYNLIB_ERROR_CHIP_NOT_LISTED, "the chip is none of those in the board information record"},
    {VYNLIB_ERROR_ID_COMMAND, "a command of the identifying entry failed"},
    {VYNLIB_ERROR_UNKNOWN_ACCESS, "the firmware lists a command of a kind that cannot be stepped over"},
};

constexpr Words kSpecific[] = {
    {0x301, "the sensor read 0, which counts as no reading"},
    {0x302, "the sensor read 0, which counts as no reading"},
    {0x304, "a name buffer is missing"},
    {0x305, "the board has no sensor of that name"},
    {0x306, "the sensor read 0, which counts as no reading"},
    {0x404, "a name buffer is missing"},
    {0x405, "the board has no sensor of that name"},
    {0x407, "the sensor read 0 in both bytes, which counts as no reading"},
    {0x501, "the sensor read all ones, which counts as no reading"},
    {0x505, "a name buffer is missing"},
    {0x506, "the board has no sensor of that name"},
    {0x1A03, "a name buffer is missing"},
    {0x1A04, "the sensor read 0, which counts as no reading"},
    {0x1A05, "the board has no sensor of that name"},
    {0x1501, "no version entry of the board matched"},
    {0x1701, "the commands that activate or deactivate it failed"},
    {0x1702, "the commands that read the interval failed"},
    {0x1703, "the commands that set the interval failed"},
    {0x1704, "the commands that start or stop counting failed"},
    {0x1705, "the commands that read the count mode failed"},
    {0x1706, "the commands that set the count mode failed"},
    {0x1707, "the board has no count modes"},
    {0x1708, "the board has no entry that activates it or holds the interval"},
    {0x1709, "the board has no entry that starts or stops counting"},
    {0x170A, "the board has no such count mode"},
    {0x1801, "no entry of the fan could be read"},
    {0x1802, "the commands of the mode failed"},
    {0x1803, "the number of names differs"},
    {0x1804, "no parameters given"},
    {0x1805, "the mode takes another number of parameters"},
    {0x1806, "the board has no such fan or mode"},
    {0x1901, "the commands of the entry failed"},
};

constexpr Words kSubCodes[] = {
    {0x00, "the board does not offer it"},
    {0x01, "the hardware is in none of the listed states"},
    {0x02, "the commands of the entry failed"},
    {0x03, "no entry of the board has this value"},
    {0x04, "no entry of the board has this value or index"},
};

constexpr uint64_t kUnavailable[] = {
    0x305, 0x405, 0x506, 0x1A05, 0x1707, 0x1708, 0x1709, 0x170A, 0x1806, VYNLIB_ERROR_NO_ID_ENTRY,
};

constexpr uint64_t kFirstFamilyCode = 0x100;

template <size_t count>
const char* Find(const Words (&table)[count], uint64_t code) {
  for (const Words& row : table) {
    if (row.code == code) return row.text;
  }
  return nullptr;
}

}  // namespace

std::string Hex(uint64_t code) { return fmt::format("0x{:X}", code); }

const char* FamilyName(unsigned family) { return Find(kFamilies, family); }

std::string ReasonFor(uint64_t code) {
  if (const char* global = Find(kGlobal, code)) return global;
  if (code < kFirstFamilyCode || code > UINT16_MAX || FamilyName(VYNLIB_FAMILY(code)) == nullptr) {
    return fmt::format("unknown code {}", Hex(code));
  }
  if (const char* specific = Find(kSpecific, code)) return specific;
  const char* shared = Find(kSubCodes, VYNLIB_SUB(code));
  return shared != nullptr ? shared : "unknown reason";
}

std::string WordsFor(uint64_t code) {
  const char* family = code >= kFirstFamilyCode && code <= UINT16_MAX ? FamilyName(VYNLIB_FAMILY(code)) : nullptr;
  return family == nullptr ? ReasonFor(code) : fmt::format("{}: {}", family, ReasonFor(code));
}

bool MeansUnavailable(uint64_t code) {
  for (uint64_t row : kUnavailable) {
    if (row == code) return true;
  }
  return code >= kFirstFamilyCode && VYNLIB_SUB(code) == 0;
}

}  // namespace vynctl

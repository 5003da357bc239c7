/* SPDX-License-Identifier: MIT */
/*
 * The library's codes in words: what VynLibDllGetLastError() tells, for people.
 *
 *     if (!VynLibSetWifiState(7, VYNLIB_PERFORM))
 *       fprintf(stderr, "%s\n", vynlib_error_text(VynLibDllGetLastError()));
 *
 * prints "Wi-Fi: no entry of the board has this value or index". C99 and C++, header only. The words are ASCII and stay
 * where they are. Written by scripts/error-text from docs/error-codes.md, which says more.
 */
#ifndef VYNLIB_ERROR_TEXT_H
#define VYNLIB_ERROR_TEXT_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#ifdef __cplusplus
extern "C" {
#endif

/* For this header alone. */
typedef struct vynlib_error_row {
  uint64_t code;
  const char* text;
} vynlib_error_row;

static inline const char* vynlib_error_find(const vynlib_error_row* row, size_t rows, uint64_t code) {
  for (; rows > 0; ++row, --rows)
    if (row->code == code) return row->text;
  return NULL;
}

/* What a family number, the high byte of a code, is about: "Wi-Fi"; NULL for a number that is not used. */
static inline const char* vynlib_error_family(unsigned family) {
  static const vynlib_error_row rows[] = {
      {0x02, "COM port type"},
      {0x03, "voltage"},
      {0x04, "temperature"},
      {0x05, "fan speed"},
      {0x06, "LVDS panel state"},
      {0x07, "LVDS panel type"},
      {0x08, "manufacturing mode"},
      {0x09, "on-board TPM"},
      {0x0A, "ME descriptor"},
      {0x0B, "PCIe bandwidth mode"},
      {0x0C, "USB power"},
      {0x0D, "Bluetooth"},
      {0x0E, "Wi-Fi"},
      {0x0F, "OTP"},
      {0x11, "AT mode"},
      {0x12, "Intel power solution"},
      {0x13, "Thunderbolt CIO plug"},
      {0x14, "Thunderbolt FRC power"},
      {0x15, "board version"},
      {0x16, "digital I/O"},
      {0x17, "watchdog"},
      {0x18, "fan configuration"},
      {0x19, "backlight"},
      {0x1A, "current"},
      {0x1B, "user LED state"},
      {0x1C, "JGPIO power"},
      {0x1D, "COM port power"},
      {0x1E, "debug LED colour"},
      {0x1F, "user LED colour"},
      {0x20, "digital I/O configuration"},
      {0x21, "digital I/O enable pin"},
  };
  return vynlib_error_find(rows, sizeof rows / sizeof rows[0], family);
}

/* Family and reason: "Wi-Fi: the board does not offer it"; "unknown code" for one that no function leaves. */
static inline const char* vynlib_error_text(uint64_t code) {
  static const vynlib_error_row rows[] = {
      {0x00, "success"},
      {0x01, "not initialised, or the I/O privilege level could not be raised"},
      {0x0C, "the function does not accept this selector"},
      {0x0D, "the kind is not 1 to 26"},
      {0x10, "the board has no identifying entry of that name"},
      {0x11, "the firmware has no board information record"},
      {0x12, "the chip was found but has no I/O number"},
      {0x13, "the chip is none of those in the board information record"},
      {0x14, "a command of the identifying entry failed"},
      {0x15, "the firmware lists a command of a kind that cannot be stepped over"},
      {0x200, "COM port type: the board does not offer it"},
      {0x201, "COM port type: the hardware is in none of the listed states"},
      {0x202, "COM port type: the commands of the entry failed"},
      {0x204, "COM port type: no entry of the board has this value or index"},
      {0x300, "voltage: the board does not offer it"},
      {0x301, "voltage: the sensor read 0, which counts as no reading"},
      {0x302, "voltage: the sensor read 0, which counts as no reading"},
      {0x304, "voltage: a name buffer is missing"},
      {0x305, "voltage: the board has no sensor of that name"},
      {0x306, "voltage: the sensor read 0, which counts as no reading"},
      {0x400, "temperature: the board does not offer it"},
      {0x404, "temperature: a name buffer is missing"},
      {0x405, "temperature: the board has no sensor of that name"},
      {0x407, "temperature: the sensor read 0 in both bytes, which counts as no reading"},
      {0x500, "fan speed: the board does not offer it"},
      {0x501, "fan speed: the sensor read all ones, which counts as no reading"},
      {0x505, "fan speed: a name buffer is missing"},
      {0x506, "fan speed: the board has no sensor of that name"},
      {0x600, "LVDS panel state: the board does not offer it"},
      {0x601, "LVDS panel state: the hardware is in none of the listed states"},
      {0x602, "LVDS panel state: the commands of the entry failed"},
      {0x604, "LVDS panel state: no entry of the board has this value or index"},
      {0x700, "LVDS panel type: the board does not offer it"},
      {0x701, "LVDS panel type: the hardware is in none of the listed states"},
      {0x702, "LVDS panel type: the commands of the entry failed"},
      {0x704, "LVDS panel type: no entry of the board has this value or index"},
      {0x800, "manufacturing mode: the board does not offer it"},
      {0x801, "manufacturing mode: the hardware is in none of the listed states"},
      {0x900, "on-board TPM: the board does not offer it"},
      {0x901, "on-board TPM: the hardware is in none of the listed states"},
      {0x902, "on-board TPM: the commands of the entry failed"},
      {0x904, "on-board TPM: no entry of the board has this value or index"},
      {0xA00, "ME descriptor: the board does not offer it"},
      {0xA01, "ME descriptor: the hardware is in none of the listed states"},
      {0xA02, "ME descriptor: the commands of the entry failed"},
      {0xA04, "ME descriptor: no entry of the board has this value or index"},
      {0xB00, "PCIe bandwidth mode: the board does not offer it"},
      {0xB01, "PCIe bandwidth mode: the hardware is in none of the listed states"},
      {0xC00, "USB power: the board does not offer it"},
      {0xC01, "USB power: the hardware is in none of the listed states"},
      {0xC02, "USB power: the commands of the entry failed"},
      {0xC04, "USB power: no entry of the board has this value or index"},
      {0xD00, "Bluetooth: the board does not offer it"},
      {0xD01, "Bluetooth: the hardware is in none of the listed states"},
      {0xD02, "Bluetooth: the commands of the entry failed"},
      {0xD04, "Bluetooth: no entry of the board has this value or index"},
      {0xE00, "Wi-Fi: the board does not offer it"},
      {0xE01, "Wi-Fi: the hardware is in none of the listed states"},
      {0xE02, "Wi-Fi: the commands of the entry failed"},
      {0xE04, "Wi-Fi: no entry of the board has this value or index"},
      {0xF00, "OTP: the board does not offer it"},
      {0xF01, "OTP: the hardware is in none of the listed states"},
      {0xF02, "OTP: the commands of the entry failed"},
      {0xF04, "OTP: no entry of the board has this value or index"},
      {0x1100, "AT mode: the board does not offer it"},
      {0x1101, "AT mode: the hardware is in none of the listed states"},
      {0x1200, "Intel power solution: the board does not offer it"},
      {0x1201, "Intel power solution: the hardware is in none of the listed states"},
      {0x1202, "Intel power solution: the commands of the entry failed"},
      {0x1204, "Intel power solution: no entry of the board has this value or index"},
      {0x1300, "Thunderbolt CIO plug: the board does not offer it"},
      {0x1301, "Thunderbolt CIO plug: the hardware is in none of the listed states"},
      {0x1400, "Thunderbolt FRC power: the board does not offer it"},
      {0x1401, "Thunderbolt FRC power: the hardware is in none of the listed states"},
      {0x1500, "board version: the board does not offer it"},
      {0x1501, "board version: no version entry of the board matched"},
      {0x1600, "digital I/O: the board does not offer it"},
      {0x1601, "digital I/O: the hardware is in none of the listed states"},
      {0x1602, "digital I/O: the commands of the entry failed"},
      {0x1604, "digital I/O: no entry of the board has this value or index"},
      {0x1700, "watchdog: the board does not offer it"},
      {0x1701, "watchdog: the commands that activate or deactivate it failed"},
      {0x1702, "watchdog: the commands that read the interval failed"},
      {0x1703, "watchdog: the commands that set the interval failed"},
      {0x1704, "watchdog: the commands that start or stop counting failed"},
      {0x1705, "watchdog: the commands that read the count mode failed"},
      {0x1706, "watchdog: the commands that set the count mode failed"},
      {0x1707, "watchdog: the board has no count modes"},
      {0x1708, "watchdog: the board has no entry that activates it or holds the interval"},
      {0x1709, "watchdog: the board has no entry that starts or stops counting"},
      {0x170A, "watchdog: the board has no such count mode"},
      {0x1800, "fan configuration: the board does not offer it"},
      {0x1801, "fan configuration: no entry of the fan could be read"},
      {0x1802, "fan configuration: the commands of the mode failed"},
      {0x1803, "fan configuration: the number of names differs"},
      {0x1804, "fan configuration: no parameters given"},
      {0x1805, "fan configuration: the mode takes another number of parameters"},
      {0x1806, "fan configuration: the board has no such fan or mode"},
      {0x1900, "backlight: the board does not offer it"},
      {0x1901, "backlight: the commands of the entry failed"},
      {0x1903, "backlight: no entry of the board has this value"},
      {0x1A00, "current: the board does not offer it"},
      {0x1A03, "current: a name buffer is missing"},
      {0x1A04, "current: the sensor read 0, which counts as no reading"},
      {0x1A05, "current: the board has no sensor of that name"},
      {0x1B00, "user LED state: the board does not offer it"},
      {0x1B01, "user LED state: the hardware is in none of the listed states"},
      {0x1B02, "user LED state: the commands of the entry failed"},
      {0x1B03, "user LED state: no entry of the board has this value"},
      {0x1C00, "JGPIO power: the board does not offer it"},
      {0x1C01, "JGPIO power: the hardware is in none of the listed states"},
      {0x1C02, "JGPIO power: the commands of the entry failed"},
      {0x1C03, "JGPIO power: no entry of the board has this value"},
      {0x1D00, "COM port power: the board does not offer it"},
      {0x1D01, "COM port power: the hardware is in none of the listed states"},
      {0x1D02, "COM port power: the commands of the entry failed"},
      {0x1D04, "COM port power: no entry of the board has this value or index"},
      {0x1E00, "debug LED colour: the board does not offer it"},
      {0x1E01, "debug LED colour: the hardware is in none of the listed states"},
      {0x1E02, "debug LED colour: the commands of the entry failed"},
      {0x1E04, "debug LED colour: no entry of the board has this value or index"},
      {0x1F00, "user LED colour: the board does not offer it"},
      {0x1F01, "user LED colour: the hardware is in none of the listed states"},
      {0x1F02, "user LED colour: the commands of the entry failed"},
      {0x1F04, "user LED colour: no entry of the board has this value or index"},
      {0x2000, "digital I/O configuration: the board does not offer it"},
      {0x2001, "digital I/O configuration: the hardware is in none of the listed states"},
      {0x2002, "digital I/O configuration: the commands of the entry failed"},
      {0x2004, "digital I/O configuration: no entry of the board has this value or index"},
      {0x2100, "digital I/O enable pin: the board does not offer it"},
      {0x2101, "digital I/O enable pin: the hardware is in none of the listed states"},
      {0x2102, "digital I/O enable pin: the commands of the entry failed"},
      {0x2104, "digital I/O enable pin: no entry of the board has this value or index"},
  };
  const char* text = vynlib_error_find(rows, sizeof rows / sizeof rows[0], code);
  return text != NULL ? text : "unknown code";
}

/* The same without the family, "the board does not offer it", for messages that name the thing already. */
static inline const char* vynlib_error_reason(uint64_t code) {
  const char* text = vynlib_error_text(code);
  const char* colon = strstr(text, ": ");
  return colon != NULL ? colon + 2 : text;
}

#ifdef __cplusplus
}
#endif

#endif

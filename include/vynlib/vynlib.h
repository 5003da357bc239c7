/* SPDX-License-Identifier: MIT */
/*
 * VynLib: sensors, watchdog, digital I/O, LEDs, fan control and switches of industrial motherboards, described by the
 * board's own firmware tables.
 *
 * Conventions
 *
 * Start    Call VynLibDllInit() first and VynLibDllUnInit() last. The process must run as root or hold CAP_SYS_RAWIO
 *          and the right to open /dev/mem (the simulated library, libvynlib-sim, needs no privilege). After
 *          VynLibDllUnInit() the functions report, by design, that the board does not offer them, until the next
 *          VynLibDllInit().
 * Threads  Any thread may call, those made before VynLibDllInit() included. Calls must not overlap, nor those of other
 *          processes: the library takes no locks, and <vynlib/lock.h> is one for all programs. The right to use ports
 *          belongs to a thread: VynLibDllInit() gives it to its own, any other gets it when it first calls.
 *          VynLibDllUnInit() takes it from its own thread; others keep it until they end. Threads and processes inherit
 *          it from the thread that makes them.
 * Result   Truth values are int: 1 success, 0 failure. Every call leaves a code in the last error, 0 on success, with
 *          the exceptions named at the functions.
 * Selector The last argument of most functions. 0 asks only whether the board offers the function: no hardware is
 *          touched, and index and value are not looked at. 1 or 2 performs it ("performs with 2 only" where noted: 1 is
 *          refused there, 0 still asks). Anything else is VYNLIB_ERROR_SELECTOR.
 * Values   Entry values (which byte means "on", which LVDS type, which colour) are the firmware's and pass through
 *          unchanged.
 * Outputs  Pointers must be valid. Readers write a sentinel first (0xFF, 0xFFFF, 0, 0.0) and leave it on failure.
 * Codes    Global codes are below 0x100. Others are family * 256 + sub-code: VYNLIB_FAMILY(code), VYNLIB_SUB(code).
 *          Sub-code 0x00 means that the board does not offer the function. Shared by the state functions: 0x01 no
 *          entry's state matched (reading), 0x02 the entry's commands failed (setting), 0x04 no entry has the requested
 *          value or index. <vynlib/error_text.h> has words for all.
 * Firmware The library runs the board's access commands exactly as the tables state them. Two loops are not bounded by
 *          the library: a command whose addressing form does not fit its kind is repeated until it fails, and a script
 *          WAIT with count 0 runs until its value appears.
 *
 * Strings are ASCII. Name buffers are VYNLIB_NAME_BYTES bytes and always end up NUL-terminated.
 */
#ifndef VYNLIB_VYNLIB_H
#define VYNLIB_VYNLIB_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define VYNLIB_API __attribute__((visibility("default")))
#else
#define VYNLIB_API
#endif

/* The version of this header. VYNLIB_VERSION_NUMBER is for comparisons: 1.2.3 is 10203. */
#define VYNLIB_VERSION_MAJOR 1
#define VYNLIB_VERSION_MINOR 0
#define VYNLIB_VERSION_PATCH 0
#define VYNLIB_VERSION "1.0.0"
#define VYNLIB_VERSION_NUMBER (VYNLIB_VERSION_MAJOR * 10000 + VYNLIB_VERSION_MINOR * 100 + VYNLIB_VERSION_PATCH)

#define VYNLIB_NAME_BYTES 20

#define VYNLIB_QUERY 0   /* selector: does the board offer it? */
#define VYNLIB_PERFORM 2 /* selector: do it; accepted by every function that takes a selector */

/* Global codes. */
#define VYNLIB_OK 0
/* Also: the I/O privilege level could not be raised, be it for want of root or CAP_SYS_RAWIO, by kernel lockdown
 * (Secure Boot), by a service's sandbox, or because the kernel has no iopl; "vynctl doctor" tells which. A call that
 * runs out of memory leaves it too, with a result of 0 and the SMBus controller put back. */
#define VYNLIB_ERROR_NOT_INITIALISED 1
#define VYNLIB_ERROR_SELECTOR 12
#define VYNLIB_ERROR_KIND 13        /* VynLibGetWhichIOToBeUse: kind not 1 to 26 */
#define VYNLIB_ERROR_NO_ID_ENTRY 16 /* no identifying entry of that name */
#define VYNLIB_ERROR_NO_BOARD_RECORD 17
#define VYNLIB_ERROR_NO_IO_NUMBER 18    /* the chip was found but has no I/O number */
#define VYNLIB_ERROR_CHIP_NOT_LISTED 19 /* the chip is none of those in the board record */
#define VYNLIB_ERROR_ID_COMMAND 20      /* a command of the identifying entry failed */
#define VYNLIB_ERROR_UNKNOWN_ACCESS 21  /* a command of a kind that a command list cannot step over */

/* Families: the high byte of all other codes. */
#define VYNLIB_FAMILY(code) ((unsigned)((code) >> 8) & 0xFFu)
#define VYNLIB_SUB(code) ((unsigned)((code)&0xFFu))
#define VYNLIB_FAMILY_COM_TYPE 0x02
#define VYNLIB_FAMILY_VOLTAGE 0x03
#define VYNLIB_FAMILY_TEMPERATURE 0x04
#define VYNLIB_FAMILY_FAN_SPEED 0x05
#define VYNLIB_FAMILY_LVDS_STATE 0x06
#define VYNLIB_FAMILY_LVDS_TYPE 0x07
#define VYNLIB_FAMILY_MFG_STATE 0x08
#define VYNLIB_FAMILY_ONBOARD_TPM 0x09
#define VYNLIB_FAMILY_ME_DESCRIPTOR 0x0A
#define VYNLIB_FAMILY_PCIE_BANDWIDTH 0x0B
#define VYNLIB_FAMILY_USB_POWER 0x0C
#define VYNLIB_FAMILY_BLUETOOTH 0x0D
#define VYNLIB_FAMILY_WIFI 0x0E
#define VYNLIB_FAMILY_OTP 0x0F
#define VYNLIB_FAMILY_AT_MODE 0x11
#define VYNLIB_FAMILY_INTEL_POWER 0x12
#define VYNLIB_FAMILY_TB_CIO_PLUG 0x13
#define VYNLIB_FAMILY_TB_FRC_POWER 0x14
#define VYNLIB_FAMILY_BOARD_VERSION 0x15
#define VYNLIB_FAMILY_DIGITAL_IO 0x16
#define VYNLIB_FAMILY_WATCHDOG 0x17
#define VYNLIB_FAMILY_FAN_CONFIG 0x18
#define VYNLIB_FAMILY_BACKLIGHT 0x19
#define VYNLIB_FAMILY_CURRENT 0x1A
#define VYNLIB_FAMILY_USER_LED_STATE 0x1B
#define VYNLIB_FAMILY_JGPIO_POWER 0x1C
#define VYNLIB_FAMILY_COM_POWER 0x1D
#define VYNLIB_FAMILY_DEBUG_LED_COLOR 0x1E
#define VYNLIB_FAMILY_USER_LED_COLOR 0x1F
#define VYNLIB_FAMILY_DIO_CONFIG 0x20
#define VYNLIB_FAMILY_DIO_ENABLE 0x21

/* ---- Library ---- */

/*
 * Raises the I/O privilege level, finds the firmware tables and the SMBus controller, and prints "ModelName::..." on
 * standard output. Succeeds on a board without tables: each function then reports that it is not offered.
 * Codes: 1 when the privilege level could not be raised.
 */
VYNLIB_API int VynLibDllInit(void);

/* Releases everything. Returns 1 and leaves code 0; 0, leaving the code alone, when there was no VynLibDllInit. */
VYNLIB_API int VynLibDllUnInit(void);

/* The code of the most recent call; unchanged by this one. */
VYNLIB_API uint64_t VynLibDllGetLastError(void);

/*
 * ---- Feature states ----
 *
 * Get: stores 0xFF, then the value of the first entry whose state the hardware is in.
 * Set: runs the entry with that value; later entries of the same value are fallbacks.
 * Indexed functions take the instance (which COM port, which I/O group) first.
 * Codes of all: 0, 1, 12, 21, family << 8 (not offered); reading 0x01; setting 0x02 and 0x04; indexed reading also
 * 0x04.
 */

/* COM port type, family 0x02. */
VYNLIB_API int VynLibGetComType(uint8_t index, uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetComType(uint8_t index, uint8_t value, uint8_t selector);
/* LVDS panel state, family 0x06. Set performs with 2 only. */
VYNLIB_API int VynLibGetLVDSState(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetLVDSState(uint8_t value, uint8_t selector);
/* LVDS panel type, family 0x07. Set performs with 2 only. */
VYNLIB_API int VynLibGetLVDSType(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetLVDSType(uint8_t value, uint8_t selector);
/* Backlight, family 0x19; can only be set. Failure is sub-code 0x01, no entry 0x03. */
VYNLIB_API int VynLibBacklightCtrl(uint8_t value, uint8_t selector);
/* Manufacturing mode, family 0x08. Performs with 2 only. */
VYNLIB_API int VynLibGetMFGState(uint8_t* result, uint8_t selector);
/* On-board TPM, family 0x09. Set performs with 2 only. */
VYNLIB_API int VynLibGetOnboardTPMState(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetOnboardTPMState(uint8_t value, uint8_t selector);
/* ME descriptor, family 0x0A. Performs with 2 only. */
VYNLIB_API int VynLibGetMEDescriptorState(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetMEDescriptorState(uint8_t value, uint8_t selector);
/* PCIe bandwidth mode, family 0x0B. Performs with 2 only. */
VYNLIB_API int VynLibGetPcieBandwidthMode(uint8_t* result, uint8_t selector);
/* USB power, family 0x0C. */
VYNLIB_API int VynLibGetUsbPwrState(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetUsbPwrState(uint8_t value, uint8_t selector);
/* Bluetooth, family 0x0D. */
VYNLIB_API int VynLibGetBTState(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetBTState(uint8_t value, uint8_t selector);
/* Wi-Fi, family 0x0E. */
VYNLIB_API int VynLibGetWifiState(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetWifiState(uint8_t value, uint8_t selector);
/* OTP, family 0x0F. Set performs with 2 only. */
VYNLIB_API int VynLibGetOTPState(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetOTPState(uint8_t value, uint8_t selector);
/* AT mode, family 0x11. */
VYNLIB_API int VynLibGetATModeState(uint8_t* result, uint8_t selector);
/* Intel power solution, family 0x12. Performs with 2 only. */
VYNLIB_API int VynLibGetIntelPwrSolutionState(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetIntelPwrSolutionState(uint8_t value, uint8_t selector);
/* Thunderbolt CIO plug detection, family 0x13. Performs with 2 only. */
VYNLIB_API int VynLibDetectTbCIOPlug(uint8_t* result, uint8_t selector);
/* Thunderbolt FRC power, family 0x14. Performs with 2 only. */
VYNLIB_API int VynLibGetTbFRCPowerState(uint8_t* result, uint8_t selector);
/*
 * Board version, family 0x15. Performs with 2 only. Stores 0xFFFF, then (number of matching entries) * 256 + bits,
 * where an entry of index i (0 to 7) and odd value sets bit i. Code 0x1501 when no entry matches.
 */
VYNLIB_API int VynLibMBVersionState(uint16_t* result, uint8_t selector);
/* Digital I/O state, family 0x16. The result is 0, not 0xFF, once an entry of the index was tried and failed. */
VYNLIB_API int VynLibGetDigitalIOState(uint8_t index, uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetDigitalIOState(uint8_t index, uint8_t value, uint8_t selector);
/* Digital I/O configuration, family 0x20. Result as for the digital I/O state. */
VYNLIB_API int VynLibGetDioConfig(uint8_t index, uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetDioConfig(uint8_t index, uint8_t value, uint8_t selector);
/* Digital I/O enable pin, family 0x21. */
VYNLIB_API int VynLibGetDioEnPin(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetDioEnPin(uint8_t value, uint8_t selector);
/* User LED state, family 0x1B. No entry is sub-code 0x03. */
VYNLIB_API int VynLibGetUserLEDState(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetUserLEDState(uint8_t value, uint8_t selector);
/* User LED colour, family 0x1F. Setting on a board that does not offer it leaves 0x1E00; querying leaves 0x1F00. */
VYNLIB_API int VynLibGetUserLEDColor(uint8_t index, uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetUserLEDColor(uint8_t index, uint8_t value, uint8_t selector);
/* JGPIO power, family 0x1C. No entry is sub-code 0x03. */
VYNLIB_API int VynLibGetJGPIOPowerState(uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetJGPIOPowerState(uint8_t value, uint8_t selector);
/* COM port power, family 0x1D. */
VYNLIB_API int VynLibGetCOMPowerState(uint8_t index, uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetCOMPowerState(uint8_t index, uint8_t value, uint8_t selector);
/* Debug LED colour, family 0x1E. */
VYNLIB_API int VynLibGetDbgLedColor(uint8_t index, uint8_t* result, uint8_t selector);
VYNLIB_API int VynLibSetDbgLedColor(uint8_t index, uint8_t value, uint8_t selector);

/*
 * ---- Sensors ----
 *
 * Readers find the sensor by name (at most 20 characters are compared) and store 0 first. Codes of all: 0, 1, 12,
 * family << 8 (no sensor of the kind). Failing accesses are not detected as such; they show as the raw values below.
 */

/*
 * Volts. A raw reading of 0 counts as no reading: 0x301, 0x302 or 0x306 by record kind. 0x305: no sensor of that name.
 * The query answers 0 only on a board whose voltage records are all of the third kind, and 1 on a board with none.
 */
VYNLIB_API int VynLibGetVoltage(const char* name, float* volts, uint8_t selector);
/*
 * Degrees Celsius. 0x405: no sensor of that name. 0x407: a 16-bit sensor read 0 in both bytes. Sensors of the 16-bit
 * kind are read after a wait of 5 ms. A negative reading with a fraction comes out as -10 + 0.5 = -9.5.
 */
VYNLIB_API int VynLibGetTemperature(const char* name, float* celsius, uint8_t selector);
/* Revolutions per minute; a missing or stalled fan reads 0, with success. 0x506: no such name. 0x501: reads all ones.
 */
VYNLIB_API int VynLibGetFanSpeed(const char* name, uint16_t* rpm, uint8_t selector);
/* Tenths of the firmware's unit, times 0.1 (amperes on most boards). 0x1A05: no such name. 0x1A04: reads 0. */
VYNLIB_API int VynLibGetCurrent(const char* name, float* value, uint8_t selector);

/*
 * Sensor names. With `names` null, stores how many there are in `*count`. Otherwise `names` is an array of `*count`
 * pointers, each to a buffer of VYNLIB_NAME_BYTES. A count that differs from the number of sensors returns 1, copies
 * nothing and leaves the last error as it was; so does a successful copy leave it. A null buffer is 0x304, 0x404, 0x505
 * or 0x1A03. A name that fills all 20 bytes of its record without a terminator is returned empty.
 */
VYNLIB_API int VynLibGetVoltageNames(char** names, uint8_t* count, uint8_t selector);
VYNLIB_API int VynLibGetTemperatureNames(char** names, uint8_t* count, uint8_t selector);
VYNLIB_API int VynLibGetFanSpeedNames(char** names, uint8_t* count, uint8_t selector);
VYNLIB_API int VynLibGetCurrentNames(char** names, uint8_t* count, uint8_t selector);

/*
 * ---- Watchdog, family 0x17 ----
 *
 * The unit of the interval and the meaning of count modes 0 and 1 are the firmware's. Codes: 0x1700 no watchdog;
 * failed commands of 0x1701 (de)activation, 0x1702 get interval, 0x1703 set interval, 0x1704 start or stop counting,
 * 0x1705 get mode, 0x1706 set mode; no entry for 0x1707 any count mode (query), 0x1708 (de)activation or interval,
 * 0x1709 start or stop, 0x170A the count mode.
 */

/*
 * Activates, sets the count mode, sets the interval, starts counting. Failures of the mode and of starting are
 * tolerated: the call then returns 1, and the last error holds 0x1704 or 0x1709 when starting failed. A count mode that
 * was refused leaves no trace in the last error: ask VynLibWDTGetCountMode() where it matters.
 */
VYNLIB_API int VynLibWDTEnable(uint8_t interval, uint8_t mode, uint8_t selector);
/*
 * Stops counting (tolerating failure), waits 50 ms, sets the interval to 0, deactivates. The query and bad-selector
 * paths wait 50 ms too.
 */
VYNLIB_API int VynLibWDTDisable(uint8_t selector);
/* Writing the interval again is what feeds the watchdog on most boards. */
VYNLIB_API int VynLibWDTSetInterval(uint8_t interval, uint8_t selector);
/* Leaves `*interval` untouched on failure. */
VYNLIB_API int VynLibWDTGetInterval(uint32_t* interval, uint8_t selector);
VYNLIB_API int VynLibWDTSetCountMode(uint8_t mode, uint8_t selector);
VYNLIB_API int VynLibWDTGetCountMode(uint8_t* mode, uint8_t selector);

/*
 * ---- Fan configuration, family 0x18 ----
 *
 * A parameter block is bytes: element 0 the mode number, then that mode's parameters. Codes: 0x1800 not offered;
 * 0x1801 the commands of no entry succeeded (reading), 0x1802 (setting); 0x1803 the name count differs; 0x1804 no
 * block; 0x1805 the count is not that of the mode in element 0; 0x1806 no entry of the fan matched.
 */

/*
 * As the sensor names, but a differing count returns 0 with 0x1803 and success leaves code 0. The names of entries that
 * identify the fan's controller (they contain "Id") are among them; VynLibGetFANModeSupport() finds no modes of those.
 */
VYNLIB_API int VynLibGetFanConfigNames(char** names, uint8_t* count, uint8_t selector);
/* Bit m of `*modes` (0 to 2) is set when the fan has mode m. The outcome is the last error alone. */
VYNLIB_API void VynLibGetFANModeSupport(const char* name, uint8_t* modes);
/*
 * The fan's current mode and parameters. `*count` 255 asks for the mode (block[0]) and its count alone; otherwise
 * `*count` must be the count of the mode in block[0]. On success `*count` is the current mode's own count, while at
 * most the caller's `*count` elements were written.
 */
VYNLIB_API int VynLibGetFANConfig(const char* name, uint8_t* block, uint8_t* count, uint8_t selector);
/* Sets mode block[0] with parameters block[1] to block[count - 1]. */
VYNLIB_API int VynLibSetFANConfig(const char* name, const uint8_t* block, uint8_t count, uint8_t selector);

/* ---- Capability queries ---- */

/*
 * 1 when both firmware tables were found and the selector is 2. The last error changes only when not initialised (1).
 * After VynLibDllUnInit the call throws the C++ exception std::logic_error; no other function throws.
 */
VYNLIB_API int VynLibTableSupported(uint8_t selector);
/*
 * Which I/O chip serves a function; the outcome is `*io` and the last error (0, 1, 13, 16 to 21). Kinds 1 to 24 depend
 * on the board record alone and do nothing when the last error is 16; 25 is the watchdog, 26 fan configuration, both
 * with the name of the identifying entry.
 */
VYNLIB_API void VynLibGetWhichIOToBeUse(uint8_t kind, const char* name, uint8_t* io);

#ifdef __cplusplus
}
#endif

#endif

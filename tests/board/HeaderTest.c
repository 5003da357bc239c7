/* SPDX-License-Identifier: MIT */
/* A C99 program over the simulated library: the public header needs nothing before it and is C. */
#include "vynlib/vynlib.h"

#include <stdio.h>
#include <string.h>

static int failures = 0;

static void expect(int holds, const char* sentence) {
  if (holds) return;
  printf("not so: %s\n", sentence);
  ++failures;
}

#if VYNLIB_VERSION_NUMBER < 10000
#error "the preprocessor can compare versions"
#endif

static void version(void) {
  char parts[32];
  sprintf(parts, "%d.%d.%d", VYNLIB_VERSION_MAJOR, VYNLIB_VERSION_MINOR, VYNLIB_VERSION_PATCH);
  expect(strcmp(VYNLIB_VERSION, PROJECT_VERSION) == 0, "the header has the version of the project");
  expect(strcmp(parts, PROJECT_VERSION) == 0, "and so have its parts");
  expect(VYNLIB_VERSION_NUMBER / 10000 == VYNLIB_VERSION_MAJOR, "the number begins with the major version");
  expect(VYNLIB_VERSION_NUMBER % 100 == VYNLIB_VERSION_PATCH, "and ends with the patch");
}

static void without_a_start(void) {
  uint8_t state = 0x5A;
  expect(VynLibDllGetLastError() == VYNLIB_OK, "there is no code at first");
  expect(VynLibGetLVDSState(&state, VYNLIB_PERFORM) == 0, "a feature fails without a start");
  expect(VynLibDllGetLastError() == VYNLIB_ERROR_NOT_INITIALISED, "its code says so");
  expect(state == 0x5A, "its result is untouched");
}

static void sensors(void) {
  char buffers[8][VYNLIB_NAME_BYTES];
  char* names[8];
  uint8_t count = 0;
  uint8_t i;
  expect(VynLibGetVoltageNames(NULL, &count, VYNLIB_PERFORM) == 1, "voltages can be counted");
  expect(count > 0 && count <= 8, "there are one to eight");
  for (i = 0; i < 8; ++i) names[i] = buffers[i];
  expect(VynLibGetVoltageNames(names, &count, VYNLIB_PERFORM) == 1, "they have names");
  for (i = 0; i < count && i < 8; ++i) {
    float volts = 0;
    expect(strlen(names[i]) > 0, "a name is not empty");
    expect(VynLibGetVoltage(names[i], &volts, VYNLIB_PERFORM) == 1 && volts > 0, "a voltage can be read by its name");
  }
}

static void codes(void) {
  uint8_t state = 0;
  expect(VynLibGetLVDSState(&state, 9) == 0, "selector 9 is refused");
  expect(VynLibDllGetLastError() == VYNLIB_ERROR_SELECTOR, "its code says so");
  expect(VynLibSetLVDSState(0xEE, VYNLIB_PERFORM) == 0, "no entry has the value 0xEE");
  expect(VYNLIB_FAMILY(VynLibDllGetLastError()) == VYNLIB_FAMILY_LVDS_STATE, "the code names the family");
  expect(VYNLIB_SUB(VynLibDllGetLastError()) == 0x04, "and the sub-code");
}

int main(void) {
  version();
  without_a_start();
  expect(VynLibDllInit() == 1, "the library starts");
  expect(VynLibTableSupported(VYNLIB_PERFORM) == 1, "both tables are there");
  expect(VynLibGetLVDSState(NULL, VYNLIB_QUERY) == 1, "the board offers the LVDS state");
  sensors();
  codes();
  expect(VynLibDllUnInit() == 1, "the library stops");
  expect(VynLibDllGetLastError() == VYNLIB_OK, "and leaves no code");
  return failures == 0 ? 0 : 1;
}

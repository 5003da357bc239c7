/* SPDX-License-Identifier: MIT */
/* A C99 program: vynlib/error_text.h is C, complete on its own, and has the words of docs/error-codes.md. */
#include "vynlib/error_text.h"

#include <stdio.h>
#include <string.h>

#include "vynlib/vynlib.h"

static int failures = 0;

static void expect_words(const char* words, const char* expected) {
  if (words != NULL && strcmp(words, expected) == 0) return;
  printf("'%s' instead of '%s'\n", words != NULL ? words : "(null)", expected);
  ++failures;
}

static void whole_codes(void) {
  expect_words(vynlib_error_text(VYNLIB_OK), "success");
  expect_words(vynlib_error_text(VYNLIB_ERROR_SELECTOR), "the function does not accept this selector");
  expect_words(vynlib_error_text(0xE00), "Wi-Fi: the board does not offer it");
  expect_words(vynlib_error_text(0x601), "LVDS panel state: the hardware is in none of the listed states");
  expect_words(vynlib_error_text(0x1C03), "JGPIO power: no entry of the board has this value");
  expect_words(vynlib_error_text(0x2104), "digital I/O enable pin: no entry of the board has this value or index");
}

/* Whole codes whose words are not those of their sub-code. */
static void words_of_their_own(void) {
  expect_words(vynlib_error_text(0x305), "voltage: the board has no sensor of that name");
  expect_words(vynlib_error_text(0x1501), "board version: no version entry of the board matched");
  expect_words(vynlib_error_text(0x170A), "watchdog: the board has no such count mode");
  expect_words(vynlib_error_text(0x1804), "fan configuration: no parameters given");
  expect_words(vynlib_error_text(0x1901), "backlight: the commands of the entry failed");
}

static void parts(void) {
  expect_words(vynlib_error_reason(0xE00), "the board does not offer it");
  expect_words(vynlib_error_reason(VYNLIB_ERROR_KIND), "the kind is not 1 to 26");
  expect_words(vynlib_error_family(VYNLIB_FAMILY_DIO_ENABLE), "digital I/O enable pin");
}

static void unknown_codes(void) {
  expect_words(vynlib_error_text(0x7F42), "unknown code");
  expect_words(vynlib_error_reason(0x7F42), "unknown code");
  /* Wi-Fi knows no sub-code 0x03, and codes have 16 bits. */
  expect_words(vynlib_error_text(0xE03), "unknown code");
  expect_words(vynlib_error_text(0x10E00), "unknown code");
  if (vynlib_error_family(0x10) != NULL) expect_words(vynlib_error_family(0x10), "no family 0x10");
}

int main(void) {
  whole_codes();
  words_of_their_own();
  parts();
  unknown_codes();
  return failures == 0 ? 0 : 1;
}

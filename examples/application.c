/* SPDX-License-Identifier: MIT */
/* A controller: shows the sensors, lights a LED and drives a fan by the hottest temperature, feeds the watchdog. */
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>
#include <vynlib/error_text.h>
#include <vynlib/lock.h>
#include <vynlib/vynlib.h>

/* What values mean is the firmware's business. These are those of the reference board. */
enum { LED_STEADY = 1, LED_BLINKING = 2, FULL_SPEED = 0, WATCHDOG_SECONDS = 60 };
static const float too_hot = 45;
static const char fan_name[] = "CPU Fan";

/* For the outcome of a call that was not made. */
#define BUSY UINT64_MAX

static vynlib_lock lock;

static int my_turn(void) { return vynlib_lock_take(&lock, 10000) == VYNLIB_LOCK_OK; }

static uint64_t end_turn(int done) {
  const uint64_t code = done ? VYNLIB_OK : VynLibDllGetLastError();
  vynlib_lock_give(&lock);
  return code;
}

/* Calls the library in this program's turn. Is the code of the call. */
#define CALL(call) (my_turn() ? end_turn(call) : BUSY)

/* Says so when a call failed. */
static int worked(const char* what, uint64_t code) {
  if (code == VYNLIB_OK) return 1;
  printf("%s: %s\n", what, code == BUSY ? "another program keeps the hardware" : vynlib_error_text(code));
  return 0;
}

/* ---- sensors ---- */

static int read_fan_speed(const char* name, float* value, uint8_t selector) {
  uint16_t rpm = 0;
  const int done = VynLibGetFanSpeed(name, &rpm, selector);
  *value = rpm;
  return done;
}

static const struct quantity {
  const char* unit;
  int (*list)(char** names, uint8_t* count, uint8_t selector);
  int (*read)(const char* name, float* value, uint8_t selector);
} quantities[] = {
    {"V", VynLibGetVoltageNames, VynLibGetVoltage},
    {"C", VynLibGetTemperatureNames, VynLibGetTemperature},
    {"rpm", VynLibGetFanSpeedNames, read_fan_speed},
};

/* Stores the names of a quantity's sensors. Is how many they are. */
static uint8_t list_names(const struct quantity* quantity, char names[][VYNLIB_NAME_BYTES]) {
  char* buffers[UINT8_MAX];
  uint8_t count = 0, i;
  const uint64_t code = CALL(quantity->list(NULL, &count, VYNLIB_PERFORM));
  if (code != VYNLIB_OK && VYNLIB_SUB(code) == 0) return 0; /* the board has none */
  if (!worked("sensors", code)) return 0;
  for (i = 0; i < count; ++i) buffers[i] = names[i];
  return worked("sensors", CALL(quantity->list(buffers, &count, VYNLIB_PERFORM))) ? count : 0;
}

/* Shows all sensors. Is the hottest temperature. */
static float show_sensors(void) {
  char names[UINT8_MAX][VYNLIB_NAME_BYTES];
  float hottest = 0;
  size_t q;
  for (q = 0; q < sizeof quantities / sizeof quantities[0]; ++q) {
    const uint8_t count = list_names(&quantities[q], names);
    uint8_t i;
    for (i = 0; i < count; ++i) {
      float value = 0;
      if (!worked(names[i], CALL(quantities[q].read(names[i], &value, VYNLIB_PERFORM)))) continue;
      printf("%s: %.1f %s\n", names[i], value, quantities[q].unit);
      if (strcmp(quantities[q].unit, "C") == 0 && value > hottest) hottest = value;
    }
  }
  return hottest;
}

/* ---- LED and fan ---- */

/* What the fan was set to before: mode and parameters. */
static uint8_t setting[UINT8_MAX], setting_count;

static void remember_fan(void) {
  setting_count = UINT8_MAX; /* asks for the mode and its count */
  if (!worked(fan_name, CALL(VynLibGetFANConfig(fan_name, setting, &setting_count, VYNLIB_PERFORM))) ||
      !worked(fan_name, CALL(VynLibGetFANConfig(fan_name, setting, &setting_count, VYNLIB_PERFORM))))
    setting_count = 0;
}

static void restore_fan(void) {
  if (setting_count == 0) return;
  worked(fan_name, CALL(VynLibSetFANConfig(fan_name, setting, setting_count, VYNLIB_PERFORM)));
}

static void act_on(float hottest) {
  const int hot = hottest >= too_hot;
  const uint8_t full_speed[] = {FULL_SPEED};
  printf("%s at %.1f C\n", hot ? "too hot" : "good", hottest);
  worked("LED", CALL(VynLibSetUserLEDState(hot ? LED_BLINKING : LED_STEADY, VYNLIB_PERFORM)));
  if (!hot) restore_fan();
  if (hot) worked(fan_name, CALL(VynLibSetFANConfig(fan_name, full_speed, sizeof full_speed, VYNLIB_PERFORM)));
}

/* ---- watchdog ---- */

/* Is 0 on a board without one. */
static int start_watchdog(void) {
  /* The call succeeds as well when the watchdog does not count; the code tells. */
  return worked("starting",
                CALL((VynLibWDTEnable(WATCHDOG_SECONDS, 0, VYNLIB_PERFORM), VynLibDllGetLastError() == VYNLIB_OK)));
}

static void feed_watchdog(void) {
  /* What fails is tried again in the next round, long before the interval is over. */
  worked("feeding", CALL(VynLibWDTSetInterval(WATCHDOG_SECONDS, VYNLIB_PERFORM)));
}

static void stop_watchdog(void) { worked("stopping", CALL(VynLibWDTDisable(VYNLIB_PERFORM))); }

/* ---- the program ---- */

static volatile sig_atomic_t ended = 0;

/* A signal ends the program between two calls of the library, never in one. */
static void end(int number) {
  (void)number;
  ended = 1;
}

static void run(long rounds) {
  const int watched = start_watchdog();
  remember_fan();
  while (!ended) {
    act_on(show_sensors());
    if (watched) feed_watchdog();
    fflush(stdout);
    if (--rounds == 0) break;
    sleep(1);
  }
  restore_fan();
  if (watched) stop_watchdog();
}

/* application [ROUNDS [LOCK-FILE]]: without ROUNDS until a signal comes. */
int main(int count, char** arguments) {
  const char* lock_file = count > 2 ? arguments[2] : VYNLIB_LOCK_PATH;
  int started;
  signal(SIGINT, end);
  signal(SIGTERM, end);
  if (vynlib_lock_open(&lock, lock_file) != VYNLIB_LOCK_OK) {
    printf("cannot lock %s\n", lock_file);
    return 1;
  }
  started = worked("starting", CALL(VynLibDllInit()));
  if (started) {
    run(count > 1 ? atol(arguments[1]) : 0);
    VynLibDllUnInit();
  }
  vynlib_lock_close(&lock);
  return started ? 0 : 1;
}

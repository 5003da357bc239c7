// SPDX-License-Identifier: MIT
// A library that offers nothing: it starts, unless STUB_FAILS is set, has found both tables, and prints what matters
// of its environment. Where the file "feedings" lies in the working folder, it has a watchdog: each character is the
// fate of one feeding, the last one that of all further ones ('1' done, '0' failed, 's' done after half a second), and
// the file "log" gets a line with the time for each call.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <initializer_list>
#include <string>

#include "vynlib/vynlib.h"

namespace {

uint64_t lastError = 0;

int No(uint64_t code) {
  lastError = code;
  return 0;
}

/// The variable as the program was started with it, whatever became of it since.
bool WasStartedWith(const std::string& name) {
  std::ifstream file("/proc/self/environ", std::ios::binary);
  for (std::string variable; std::getline(file, variable, '\0');) {
    if (variable.starts_with(name + '=')) return true;
  }
  return false;
}

int Yes() {
  lastError = VYNLIB_OK;
  return 1;
}

std::string Fates() {
  std::string text;
  std::ifstream("feedings") >> text;
  return text;
}

void Log(const char* what) {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  std::ofstream("log", std::ios::app) << std::fixed << what << ' '
                                      << static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9
                                      << std::endl;
}

const char* Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "(unset)";
}

}  // namespace

int VynLibDllInit(void) {
  std::puts("ModelName::STUB");
  for (const char* name : {"PATH", "VYNLIB_BOARD", "VYNLIB_LIVE"}) std::printf("%s is %s\n", name, Environment(name));
  for (char** variable = environ; *variable != nullptr; ++variable) std::printf("<%s>\n", *variable);
  std::fflush(stdout);
  if (std::system("echo from a command") != 0) return No(VYNLIB_ERROR_NOT_INITIALISED);
  if (!WasStartedWith("STUB_FAILS")) return 1;
  std::puts("Please run as root!");
  return No(VYNLIB_ERROR_NOT_INITIALISED);
}
int VynLibDllUnInit(void) {
  std::puts("Goodbye");
  return 1;
}
uint64_t VynLibDllGetLastError(void) { return lastError; }
int VynLibGetVoltage(const char*, float*, uint8_t) { return No(0x300); }
int VynLibGetTemperature(const char*, float*, uint8_t) { return No(0x400); }
int VynLibGetFanSpeed(const char*, uint16_t*, uint8_t) { return No(0x500); }
int VynLibGetCurrent(const char*, float*, uint8_t) { return No(0x1A00); }
int VynLibGetVoltageNames(char**, uint8_t*, uint8_t) {
  std::puts("noise");
  return No(0x300);
}
int VynLibGetTemperatureNames(char**, uint8_t*, uint8_t) { return No(0x400); }
int VynLibGetFanSpeedNames(char**, uint8_t*, uint8_t) { return No(0x500); }
int VynLibGetCurrentNames(char**, uint8_t*, uint8_t) { return No(0x1A00); }
int VynLibWDTEnable(uint8_t, uint8_t, uint8_t selector) {
  // As on a board whose counter cannot be started: the call succeeds, the code tells.
  lastError = selector == VYNLIB_QUERY ? 0 : 0x1704;
  return 1;
}
int VynLibWDTDisable(uint8_t) {
  if (Fates().empty()) return No(0x1703);
  Log("stop");
  return Yes();
}
int VynLibWDTSetInterval(uint8_t, uint8_t) {
  static size_t done = 0;
  const std::string fates = Fates();
  if (fates.empty()) return No(0x1703);
  const char fate = fates[std::min(done++, fates.size() - 1)];
  Log("begin");
  const timespec half{0, 500000000};
  if (fate == 's') nanosleep(&half, nullptr);
  Log(fate == '0' ? "failed" : "fed");
  return fate == '0' ? No(0x1703) : Yes();
}
int VynLibWDTGetInterval(uint32_t*, uint8_t) { return No(0x1702); }
int VynLibWDTGetCountMode(uint8_t*, uint8_t) { return No(0x170A); }
int VynLibGetFanConfigNames(char**, uint8_t*, uint8_t) { return No(0x1800); }
void VynLibGetFANModeSupport(const char*, uint8_t*) { No(0x1800); }
int VynLibGetFANConfig(const char*, uint8_t*, uint8_t*, uint8_t) { return No(0x1800); }
int VynLibSetFANConfig(const char*, const uint8_t*, uint8_t, uint8_t) { return No(0x1800); }
int VynLibTableSupported(uint8_t) { return 1; }
void VynLibGetWhichIOToBeUse(uint8_t, const char*, uint8_t* io) {
  *io = 0;
  No(0x7F42);
}

// SPDX-License-Identifier: MIT
/// The virtual machine as the tests see it beside the library: the same registers by other ways, and the host's
/// answers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace guest {

/// Raises the process's I/O privilege level. To be called before anything below touches a port.
void AllowPorts();

uint8_t In8(uint16_t port);
uint16_t In16(uint16_t port);
uint32_t In32(uint16_t port);
void Out8(uint16_t port, uint8_t value);
void Out16(uint16_t port, uint16_t value);
void Out32(uint16_t port, uint32_t value);

/// A byte of the NVRAM behind the index/data ports 0x70 and 0x71.
uint8_t Nvram(uint8_t reg);
void SetNvram(uint8_t reg, uint8_t value);

/// The SMBus host controller, as PciDword names it, and its configuration register.
inline constexpr const char* kSmbusFunction = "0000:00:1f.3";
inline constexpr unsigned kSmbusConfiguration = 0x40;

/// A dword of PCI configuration space, by the kernel's files.
uint32_t PciDword(const std::string& function, unsigned reg);

/// A byte register of an SMBus slave, driven straight through the ICH9 host controller. -1 when no slave answers.
int Smbus(uint8_t slave, uint8_t reg);
void SetSmbus(uint8_t slave, uint8_t reg, uint8_t value);

/// Whether the ICH9 host controller is at rest: not busy, and no outcome of a transaction left to be cleared.
bool SmbusIsIdle();

/// Bytes of physical memory as the host reads them from outside the machine.
std::vector<uint8_t> HostMemory(uint32_t address, unsigned count);

/// How often the machine's watchdog has expired since power-on, by the host's count.
int WatchdogExpiries();

void SleepMilliseconds(unsigned milliseconds);
double SecondsSinceBoot();

struct CommandResult {
  int status;
  std::string output;
};
/// Runs a shell command and returns its exit status and standard output.
CommandResult Run(const std::string& command);

}  // namespace guest

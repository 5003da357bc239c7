// SPDX-License-Identifier: MIT
// The machine's registers by ways of the test's own.
#include "Machine.h"

#include <fcntl.h>
#include <sys/io.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <stdexcept>

namespace guest {
namespace {

constexpr uint16_t kNvramIndex = 0x70, kNvramData = 0x71;

// ICH9 SMBus host controller: registers from its I/O base.
constexpr unsigned kSmbusBaseRegister = 0x20;
constexpr uint16_t kStatus = 0, kControl = 2, kCommand = 3, kAddress = 4, kData = 5;
constexpr uint8_t kClearAll = 0xFF, kStartByteData = 0x48, kBusy = 0x01, kDone = 0x02, kOutcome = 0x9E;

constexpr uint8_t kNothingThere = 0xFF, kHostEnable = 0x01;
constexpr int kMostPolls = 100000;

std::string ConfigurationFile(const std::string& function) { return "/sys/bus/pci/devices/" + function + "/config"; }

uint16_t SmbusBase() {
  static const auto base = static_cast<uint16_t>(PciDword(kSmbusFunction, kSmbusBaseRegister) & 0xFFE0);
  return base;
}

/// Turns the host controller on where firmware left it off, as long as this lives.
class SmbusTurnedOn {
 public:
  SmbusTurnedOn() : wasOff_(In8(SmbusBase() + kStatus) == kNothingThere) {
    if (wasOff_) SetConfiguration(kHostEnable);
  }
  SmbusTurnedOn(const SmbusTurnedOn&) = delete;
  SmbusTurnedOn& operator=(const SmbusTurnedOn&) = delete;
  ~SmbusTurnedOn() {
    if (wasOff_) SetConfiguration(0);
  }

 private:
  static void SetConfiguration(char value) {
    std::fstream file(ConfigurationFile(kSmbusFunction), std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(kSmbusConfiguration).put(value);
  }
  bool wasOff_;
};

/// One byte-data transaction; `data` goes out, and what came in comes back. False when the slave did not answer.
bool SmbusTransaction(uint8_t address, uint8_t reg, uint8_t* data) {
  const SmbusTurnedOn on;
  const uint16_t base = SmbusBase();
  Out8(base + kStatus, kClearAll);
  Out8(base + kData, *data);
  Out8(base + kAddress, address);
  Out8(base + kCommand, reg);
  Out8(base + kControl, kStartByteData);
  uint8_t status = In8(base + kStatus);
  for (int polls = 0; status == 0 || (status & kBusy) != 0; polls++) {
    if (polls == kMostPolls) throw std::runtime_error("the SMBus controller does not finish");
    status = In8(base + kStatus);
  }
  *data = In8(base + kData);
  Out8(base + kStatus, kClearAll);
  return (status & kDone) != 0;
}

/// The second serial port, on whose other end the host answers one line per question.
class HostLine {
 public:
  HostLine() : descriptor_(open("/dev/ttyS1", O_RDWR | O_NOCTTY)) {
    termios settings{};
    if (tcgetattr(descriptor_, &settings) != 0) throw std::runtime_error("/dev/ttyS1 does not answer");
    cfmakeraw(&settings);
    tcsetattr(descriptor_, TCSANOW, &settings);
  }
  HostLine(const HostLine&) = delete;
  HostLine& operator=(const HostLine&) = delete;
  ~HostLine() { close(descriptor_); }

  std::string Ask(const std::string& question) {
    const std::string line = "?" + question + "\n";
    if (write(descriptor_, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
      throw std::runtime_error("the host does not listen");
    std::string answer;
    for (char c = 0; read(descriptor_, &c, 1) == 1 && c != '\n';) answer += c;
    return answer;
  }

 private:
  int descriptor_;
};

std::string AskHost(const std::string& question) {
  static HostLine line;
  return line.Ask(question);
}

}  // namespace

void AllowPorts() {
  if (iopl(3) != 0) throw std::runtime_error("iopl failed");
}

uint8_t In8(uint16_t port) { return inb(port); }
uint16_t In16(uint16_t port) { return inw(port); }
uint32_t In32(uint16_t port) { return inl(port); }
void Out8(uint16_t port, uint8_t value) { outb(value, port); }
void Out16(uint16_t port, uint16_t value) { outw(value, port); }
void Out32(uint16_t port, uint32_t value) { outl(value, port); }

uint8_t Nvram(uint8_t reg) {
  Out8(kNvramIndex, reg);
  return In8(kNvramData);
}

void SetNvram(uint8_t reg, uint8_t value) {
  Out8(kNvramIndex, reg);
  Out8(kNvramData, value);
}

uint32_t PciDword(const std::string& function, unsigned reg) {
  std::ifstream file(ConfigurationFile(function), std::ios::binary);
  file.seekg(reg);
  uint32_t value = 0;
  for (unsigned i = 0; i < 4; i++) value |= static_cast<uint32_t>(file.get() & 0xFF) << (8 * i);
  if (!file) throw std::runtime_error("no PCI function " + function);
  return value;
}

int Smbus(uint8_t slave, uint8_t reg) {
  uint8_t value = 0;
  return SmbusTransaction(slave | 1, reg, &value) ? value : -1;
}

void SetSmbus(uint8_t slave, uint8_t reg, uint8_t value) {
  if (!SmbusTransaction(slave & 0xFE, reg, &value)) throw std::runtime_error("no SMBus slave answers");
}

bool SmbusIsIdle() { return (In8(SmbusBase() + kStatus) & (kBusy | kOutcome)) == 0; }

std::vector<uint8_t> HostMemory(uint32_t address, unsigned count) {
  const std::string digits = AskHost("memory " + std::to_string(address) + " " + std::to_string(count));
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2)
    bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  return bytes;
}

int WatchdogExpiries() { return std::stoi(AskHost("watchdog-events")); }

void SleepMilliseconds(unsigned milliseconds) { usleep(milliseconds * 1000); }

double SecondsSinceBoot() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

CommandResult Run(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  std::string output;
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) output += static_cast<char>(c);
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

}  // namespace guest

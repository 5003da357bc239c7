// SPDX-License-Identifier: MIT
// The kernel's SMBus devices, beside the library.
#include "KernelSmbus.h"

#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "Machine.h"

namespace guest {
namespace {

bool Transfer(int descriptor, uint8_t direction, uint8_t reg, i2c_smbus_data* data) {
  i2c_smbus_ioctl_data transfer{direction, reg, I2C_SMBUS_BYTE_DATA, data};
  return ioctl(descriptor, I2C_SMBUS, &transfer) == 0;
}

/// Starts a program with its output into a pipe, and returns the pipe's end to read from; `child` is the program.
int Start(char* const arguments[], pid_t* child) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  const int error = posix_spawnp(child, arguments[0], &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  if (error != 0) {
    close(ends[0]);
    throw std::runtime_error(std::string("cannot start ") + arguments[0]);
  }
  return ends[0];
}

}  // namespace

int LoadSmbusDriver() {
  if (Run("modprobe i2c-i801 && modprobe i2c-dev").status != 0) return -1;
  int bus = -1;
  for (const auto& entry : std::filesystem::directory_iterator(std::string("/sys/bus/pci/devices/") + kSmbusFunction))
    std::sscanf(entry.path().filename().c_str(), "i2c-%d", &bus);
  return bus;
}

KernelSmbus::KernelSmbus(int bus, uint8_t slave)
    : descriptor_(open(("/dev/i2c-" + std::to_string(bus)).c_str(), O_RDWR | O_CLOEXEC)) {
  if (descriptor_ < 0) throw std::runtime_error("the bus has no device file");
  if (ioctl(descriptor_, I2C_SLAVE, slave >> 1) != 0) {
    close(descriptor_);
    throw std::runtime_error("the driver offers no such slave");
  }
}

KernelSmbus::~KernelSmbus() { close(descriptor_); }

int KernelSmbus::Read(uint8_t reg) const {
  i2c_smbus_data data{};
  return Transfer(descriptor_, I2C_SMBUS_READ, reg, &data) ? data.byte : -1;
}

bool KernelSmbus::Write(uint8_t reg, uint8_t value) const {
  i2c_smbus_data data{.byte = value};
  return Transfer(descriptor_, I2C_SMBUS_WRITE, reg, &data);
}

int I2cget(int bus, uint8_t slave, uint8_t reg) {
  std::string words[] = {"i2cget", "-y", std::to_string(bus), std::to_string(slave >> 1), std::to_string(reg), "b"};
  char* arguments[std::size(words) + 1] = {};
  for (size_t i = 0; i < std::size(words); i++) arguments[i] = words[i].data();
  pid_t child = 0;
  const int output = Start(arguments, &child);
  char text[16] = {};
  const ssize_t length = read(output, text, sizeof text - 1);
  close(output);
  int status = -1, byte = -1;
  if (waitpid(child, &status, 0) != child || status != 0 || length <= 0) return -1;
  return std::sscanf(text, "%i", &byte) == 1 ? byte : -1;
}

}  // namespace guest

// SPDX-License-Identifier: MIT
/// The SMBus controller as the kernel offers it: by its own driver through i2c-dev, and by i2cget on top of that.
#pragma once

#include <cstdint>
#include <string>

namespace guest {

/// Loads the driver and the character device. The number of the controller's bus, or -1 when the driver did not take
/// the controller.
int LoadSmbusDriver();

/// Byte registers of one slave, given by its 8-bit address as everywhere beside the kernel.
class KernelSmbus {
 public:
  KernelSmbus(int bus, uint8_t slave);
  KernelSmbus(const KernelSmbus&) = delete;
  KernelSmbus& operator=(const KernelSmbus&) = delete;
  ~KernelSmbus();

  /// The register's byte, or -1.
  int Read(uint8_t reg) const;
  bool Write(uint8_t reg, uint8_t value) const;

 private:
  int descriptor_;
};

/// The byte that i2cget prints, or -1. Starts the program without a shell.
int I2cget(int bus, uint8_t slave, uint8_t reg);

}  // namespace guest

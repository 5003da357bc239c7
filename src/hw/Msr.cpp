// SPDX-License-Identifier: MIT
// Model-specific registers of the first processor, through the kernel's device file.
#include <cstdint>

#include <safe_str_lib.h>

#include "hw/DeviceFile.h"
#include "hw/TReadWrite.h"
#include "layout/LittleEndian.h"

using namespace layout;

unsigned long long TReadWrite::rdmsr_on_cpu(unsigned int msr) {
  constexpr int kCpu = 0;  // Contract: always the first CPU, whatever the name suggests
  platform::RunCommand("modprobe msr");
  char path[32];
  sprintf_s(path, sizeof path, "/dev/cpu/%d/msr", kCpu);
  hw::DeviceFile device(path, platform::OpenMode::kRead);
  if (!device.IsOpen()) return 0;
  uint8_t bytes[8];
  if (platform::ReadAt(device.Descriptor(), bytes, sizeof bytes, msr) < static_cast<long>(sizeof bytes)) {
    device.Abandon();  // Contract: a short read leaves the descriptor open
    return 0;
  }
  return Load64(bytes);
}

// SPDX-License-Identifier: MIT
// A Super I/O chip: its key, its global registers and those of its logical devices.
#include "sim/chips/SuperIo.h"

namespace sim {
namespace {

constexpr uint8_t kDeviceSelect = 0x07;
constexpr uint8_t kFirstDeviceRegister = 0x30;

}  // namespace

SuperIo::SuperIo(uint16_t indexPort, std::vector<uint8_t> enter, uint8_t leave)
    : indexPort_(indexPort), enter_(std::move(enter)), leave_(leave), open_(enter_.empty()) {}

/// The register under the index; null when the selected logical device does not exist.
uint8_t* SuperIo::Selected() {
  if (index_ < kFirstDeviceRegister) return &(*global)[index_];
  const auto device = devices.find((*global)[kDeviceSelect]);
  return device == devices.end() ? nullptr : &(*device->second)[index_];
}

uint32_t SuperIo::Read(Board&, uint16_t port, unsigned) {
  if (!open_) return 0xFF;
  if (port == indexPort_) return index_;
  const uint8_t* cell = Selected();
  return cell ? *cell : 0xFF;
}

void SuperIo::WriteIndex(uint8_t value) {
  if (open_) {
    index_ = value;
    if (value == leave_ && !enter_.empty()) open_ = false;
    return;
  }
  keys_ = value == enter_[keys_] ? keys_ + 1 : size_t{value == enter_[0]};
  if (keys_ < enter_.size()) return;
  keys_ = 0;
  open_ = true;
}

void SuperIo::Write(Board&, uint16_t port, unsigned, uint32_t value) {
  if (port == indexPort_) return WriteIndex(static_cast<uint8_t>(value));
  uint8_t* cell = open_ ? Selected() : nullptr;
  if (cell) *cell = static_cast<uint8_t>(value);
}

}  // namespace sim

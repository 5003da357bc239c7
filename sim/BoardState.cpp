// SPDX-License-Identifier: MIT
// What programs have changed on a board, taken down and put back.
#include "sim/BoardImpl.h"

namespace sim {
namespace {

constexpr unsigned kFunctionShift = 12, kFileShift = 8;
constexpr uint64_t kOffsetMask = 0xFFF, kIndexMask = 0xFF;

}  // namespace

Cells Board::State() const {
  Cells cells;
  for (const auto& [port, value] : impl_->ports) cells.ports[port] = value;
  for (const uint64_t address : impl_->written) cells.memory[address] = MemoryByte(address);
  for (const auto& [key, function] : impl_->functions)
    for (size_t i = 0; i < function->config.size(); ++i)
      cells.pci[uint64_t{key} << kFunctionShift | i] = function->config[i];
  for (size_t file = 0; file < registerFiles.size(); ++file)
    for (size_t i = 0; i < registerFiles[file]->size(); ++i)
      cells.registers[file << kFileShift | i] = (*registerFiles[file])[i];
  return cells;
}

void Board::Restore(const Cells& cells) {
  for (const auto& [port, value] : cells.ports) {
    const auto found = impl_->ports.find(static_cast<uint16_t>(port));
    if (port <= UINT16_MAX && found != impl_->ports.end()) found->second = value;
  }
  for (const auto& [address, value] : cells.memory) StoreMemoryByte(address, value);
  for (const auto& [number, value] : cells.pci) {
    const uint64_t key = number >> kFunctionShift;
    const auto found = impl_->functions.find(static_cast<uint16_t>(key));
    if (key > UINT16_MAX || found == impl_->functions.end()) continue;
    const auto offset = static_cast<unsigned>(number & kOffsetMask);
    PciFunction& function = *found->second;
    function.Set(offset, 1, value);
    if (function.onWrite) function.onWrite(*this, offset, 1);
  }
  for (const auto& [number, value] : cells.registers) {
    const uint64_t file = number >> kFileShift;
    if (file < registerFiles.size()) (*registerFiles[file])[number & kIndexMask] = value;
  }
}

}  // namespace sim

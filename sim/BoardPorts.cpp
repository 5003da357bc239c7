// SPDX-License-Identifier: MIT
// Ports and PCI mechanism #1 of the simulated board.
#include <algorithm>

#include "sim/BoardImpl.h"

namespace sim {
namespace {

constexpr uint16_t kPciAddressPort = 0xCF8;
constexpr uint16_t kPciDataPort = 0xCFC;
constexpr unsigned kPciDataPorts = 4;
constexpr uint32_t kPortCount = 0x10000;

constexpr uint32_t OnesOf(unsigned width) { return width >= 4 ? 0xFFFFFFFF : (1u << (8 * width)) - 1; }

constexpr bool IsPciData(uint32_t port) { return port >= kPciDataPort && port < kPciDataPort + kPciDataPorts; }

constexpr uint16_t FunctionKey(unsigned bus, unsigned device, unsigned function) {
  return static_cast<uint16_t>((bus & 0xFF) << 8 | (device & 0x1F) << 3 | (function & 7));
}

/// Bits 2-7 of the latch, and bits 24-27 as register bits 8-11.
constexpr unsigned RegisterOf(uint32_t latch, uint32_t port) {
  return (latch >> 24 & 0xF) << 8 | (latch & 0xFC) | (port & 3);
}

}  // namespace

uint32_t PciFunction::Get(unsigned offset, unsigned width) const {
  uint32_t value = 0;
  for (unsigned i = 0; i < width; ++i)
    value |= uint32_t{offset + i < config.size() ? config[offset + i] : uint8_t{0xFF}} << (8 * i);
  return value;
}

PciFunction& PciFunction::Set(unsigned offset, unsigned width, uint32_t value) {
  for (unsigned i = 0; i < width && offset + i < config.size(); ++i)
    config[offset + i] = static_cast<uint8_t>(value >> (8 * i));
  return *this;
}

PciFunction& Board::Pci(unsigned bus, unsigned device, unsigned function) {
  auto& slot = impl_->functions[FunctionKey(bus, device, function)];
  if (!slot) slot = std::make_unique<PciFunction>();
  return *slot;
}

PciFunction* Board::FindPci(unsigned bus, unsigned device, unsigned function) {
  const auto found = impl_->functions.find(FunctionKey(bus, device, function));
  return found == impl_->functions.end() ? nullptr : found->second.get();
}

PciFunction* Board::Impl::Selected() const {
  const auto found = functions.find(static_cast<uint16_t>(pciAddress >> 8));
  return PciEnabled() && found != functions.end() ? found->second.get() : nullptr;
}

std::shared_ptr<PortDevice> Board::Impl::DeviceAt(uint16_t port) const {
  for (const Claim& claim : claims)
    if (claim.Covers(port)) return claim.device;
  return nullptr;
}

uint8_t Board::ReadPortByte(uint16_t port) {
  if (const auto device = impl_->DeviceAt(port)) return static_cast<uint8_t>(device->Read(*this, port, 1));
  if (IsPciData(port) && impl_->PciEnabled()) {
    const PciFunction* function = impl_->Selected();
    return static_cast<uint8_t>(function ? function->Get(RegisterOf(impl_->pciAddress, port), 1) : 0xFF);
  }
  return PortValue(port);
}

void Board::WritePortByte(uint16_t port, uint8_t value) {
  if (const auto device = impl_->DeviceAt(port)) return device->Write(*this, port, 1, value);
  if (IsPciData(port) && impl_->PciEnabled()) {
    PciFunction* function = impl_->Selected();
    const unsigned offset = RegisterOf(impl_->pciAddress, port);
    if (!function || offset >= function->config.size()) return;
    const uint8_t mask = offset < function->writeMask.size() ? function->writeMask[offset] : uint8_t{0};
    uint8_t& cell = function->config[offset];
    cell = static_cast<uint8_t>((cell & ~mask) | (value & mask));
  } else if (const auto found = impl_->ports.find(port); found != impl_->ports.end()) {
    found->second = value;
  }
}

uint32_t Board::ReadPorts(uint16_t port, unsigned width) {
  if (const auto device = impl_->DeviceAt(port)) return device->Read(*this, port, width) & OnesOf(width);
  if (port == kPciAddressPort && width == 4) return impl_->pciAddress;
  uint32_t value = 0;
  for (unsigned i = 0; i < width; ++i) {
    const uint32_t each = port + i;
    value |= uint32_t{each < kPortCount ? ReadPortByte(static_cast<uint16_t>(each)) : uint8_t{0xFF}} << (8 * i);
  }
  return value;
}

void Board::WritePorts(uint16_t port, unsigned width, uint32_t value) {
  if (const auto device = impl_->DeviceAt(port)) return device->Write(*this, port, width, value);
  if (port == kPciAddressPort && width == 4) {
    impl_->pciAddress = value;
    return;
  }
  for (unsigned i = 0; i < width && port + i < kPortCount; ++i)
    WritePortByte(static_cast<uint16_t>(port + i), static_cast<uint8_t>(value >> (8 * i)));
  if (!IsPciData(port)) return;
  PciFunction* function = impl_->Selected();
  const unsigned inside = std::min(width, kPciDataPort + kPciDataPorts - port);
  if (function && function->onWrite) function->onWrite(*this, RegisterOf(impl_->pciAddress, port), inside);
}

uint32_t Board::In(uint16_t port, unsigned width) {
  const bool fails = Fails(Access::kIn);
  Spend();
  const uint32_t value = (fails ? faultAnswer : ReadPorts(port, width)) & OnesOf(width);
  Record(Access::kIn, port, width, value);
  return value;
}

void Board::Out(uint16_t port, unsigned width, uint32_t value) {
  const bool fails = Fails(Access::kOut);
  Spend();
  Record(Access::kOut, port, width, value & OnesOf(width));
  if (fails) return;
  WritePorts(port, width, value & OnesOf(width));
  Tick();
}

}  // namespace sim

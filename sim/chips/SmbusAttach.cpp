// SPDX-License-Identifier: MIT
// A chipset's registers on a board, and its host at the ports that they name.
#include <algorithm>
#include <bit>

#include "sim/chips/SmbusPlatforms.h"

namespace sim {
namespace {

using Extra = SmbusPlatform::Extra;

constexpr uint64_t kRootComplex = 0xFED1C000, kFunctionDisable = kRootComplex + 0x3418;
constexpr uint8_t kHideBit = 8, kBridgeHideBit = 0x10;
constexpr PciAt kLpc = {0x1f, 0}, kSisBridge = {2, 0};
constexpr unsigned kLpcHideRegister = 0xF2, kRootComplexRegister = 0xF0, kBridgeHideRegister = 0x77;
constexpr unsigned kReadOnlyIdentity[] = {0, 1, 2, 3, 8, 9, 10, 11, 14};
constexpr uint64_t kPmMemory = 0xFED80300;
constexpr uint16_t kPmIndex = 0xCD6, kPmData = 0xCD7;

/// Keeps a host at the ports that its function's registers name.
class Decoder {
 public:
  Decoder(const SmbusPlatform& platform, const SmbusPlatform::Window& window, std::shared_ptr<SmbusHost> host)
      : platform_(platform), window_(window), host_(std::move(host)) {}

  void Refresh(Board& board, bool hidden) {
    const uint16_t base = hidden ? uint16_t{0} : Base(board);
    if (base == at_) return;
    if (at_ != 0) board.Detach(host_.get());
    if (base != 0) board.Attach(base, platform_.ports, host_);
    at_ = host_->base = base;
  }

 private:
  /// 0: the host answers nowhere.
  uint16_t Base(Board& board) const {
    const auto open = [&](const PciGate& gate) {
      return (board.Pci(0, gate.at.device, gate.at.function).Get(gate.offset, 1) & gate.mask) == gate.mask;
    };
    const PciFunction& function = board.Pci(0, platform_.host.device, platform_.host.function);
    const uint32_t base = function.Get(window_.offset, window_.width) & window_.mask;
    const bool on = base != 0 && std::all_of(platform_.gates.begin(), platform_.gates.end(), open);
    return static_cast<uint16_t>(on ? base + window_.add : 0);
  }

  const SmbusPlatform& platform_;
  const SmbusPlatform::Window& window_;
  std::shared_ptr<SmbusHost> host_;
  uint16_t at_ = 0;
};

/// A function that answers nothing while it is hidden.
class Hideable {
 public:
  explicit Hideable(PciFunction& function)
      : function_(function), config_(function.config.size(), 0xFF), mask_(function.writeMask.size(), 0) {}

  void Set(bool hidden) {
    if (hidden == hidden_) return;
    hidden_ = hidden;
    function_.config.swap(config_);
    function_.writeMask.swap(mask_);
  }

 private:
  PciFunction& function_;
  std::vector<uint8_t> config_, mask_;  ///< what the function does not show at the moment
  bool hidden_ = false;
};

void SetIdentity(Board& board, const SmbusPlatform& platform) {
  for (const PciValue& value : platform.values) {
    PciFunction& function = board.Pci(0, value.at.device, value.at.function);
    function.Set(value.offset, value.width, value.value);
    for (const unsigned offset : kReadOnlyIdentity) function.writeMask[offset] = 0;
  }
}

void SetWindow(Board& board, const SmbusPlatform& platform, const SmbusPlatform::Window& window, uint16_t base) {
  PciFunction& function = board.Pci(0, platform.host.device, platform.host.function);
  const uint32_t value = (base != 0 ? static_cast<uint32_t>(base - window.add) & window.mask : 0) | window.flags;
  function.Set(window.offset, window.width, value);
  if (window.flags == 0) return;
  for (unsigned i = 0; i < window.width; ++i)
    function.writeMask[window.offset + i] = static_cast<uint8_t>(window.mask >> (8 * i));
}

void SetGates(Board& board, const SmbusPlatform& platform, bool open) {
  for (const PciGate& gate : platform.gates) {
    PciFunction& function = board.Pci(0, gate.at.device, gate.at.function);
    const uint32_t value = function.Get(gate.offset, 1);
    function.Set(gate.offset, 1, open ? value | gate.mask : value & ~uint32_t{gate.mask});
  }
}

/// Power management registers as the port pair and memory show them: what is written one way is read the other.
class PowerManagement {
 public:
  using Registers = std::array<uint8_t, 256>;
  /// Either way may be closed.
  PowerManagement(std::shared_ptr<Registers> ports, bool memory) : ports_(std::move(ports)), memory_(memory) {}

  uint8_t Get(unsigned offset) const { return (*ports_)[offset]; }
  void Refresh(Board& board, unsigned offset) {
    if (!memory_) return;
    uint8_t& known = known_.try_emplace(offset, Get(offset)).first->second;
    const uint8_t memory = board.MemoryByte(kPmMemory + offset);
    known = memory != known ? memory : Get(offset);
    (*ports_)[offset] = known;
    board.StoreMemoryByte(kPmMemory + offset, known);
  }

 private:
  std::shared_ptr<Registers> ports_;
  bool memory_;
  std::map<unsigned, uint8_t> known_;
};

PowerManagement SetPowerManagement(Board& board, const SmbusPlatform& platform, const SmbusSetup& setup,
                                   uint16_t base) {
  constexpr uint8_t kDecodes = 0x10, kEnabled = 1;
  const bool enabled = setup.Option("enabled", 1) != 0;
  PowerManagement::Registers registers{};
  const unsigned low = platform.extra == Extra::kPm2c ? 0x2C : 0;
  const uint8_t flag = platform.extra == Extra::kPm2c ? kEnabled : kDecodes;
  registers[low] = static_cast<uint8_t>((base & 0xE0) | (enabled ? flag : 0));
  registers[low + 1] = static_cast<uint8_t>(base >> 8);
  const bool memory = setup.Option("pm_memory", 1) != 0;
  if (memory) board.Memory(kPmMemory, registers.data(), registers.size());
  const auto ports = setup.Option("pm_ports", 1) != 0 ? board.IndexData(kPmIndex, kPmData)
                                                      : std::make_shared<PowerManagement::Registers>();
  *ports = registers;
  return {ports, memory};
}

/// The host's segment follows the multiplexer.
void FollowMultiplexer(Board& board, const SmbusPlatform::Multiplexer& multiplexer, PowerManagement registers,
                       std::shared_ptr<SmbusHost> host) {
  board.OnTick([=](Board& now) mutable {
    for (const unsigned offset : {multiplexer.at, multiplexer.chooser, multiplexer.otherwise})
      registers.Refresh(now, offset);
    const bool moved = multiplexer.chooser != 0 && (registers.Get(multiplexer.chooser) & 1) != 0;
    const uint8_t value = registers.Get(moved ? multiplexer.otherwise : multiplexer.at) & multiplexer.mask;
    host->segment = static_cast<unsigned>(value >> std::countr_zero(multiplexer.mask));
  });
}

bool Hidden(Board& board, Extra extra) {
  switch (extra) {
    case Extra::kLpcHide:
      return (board.Pci(0, kLpc.device, kLpc.function).Get(kLpcHideRegister, 1) & kHideBit) != 0;
    case Extra::kRootComplexHide:
      return (board.MemoryByte(kFunctionDisable) & kHideBit) != 0;
    case Extra::kBridgeHide:
      return (board.Pci(0, kSisBridge.device, kSisBridge.function).Get(kBridgeHideRegister, 1) & kBridgeHideBit) != 0;
    default:
      return false;
  }
}

void SetHiding(Board& board, Extra extra, bool hidden) {
  const uint8_t bit = hidden ? kHideBit : 0;
  if (extra == Extra::kLpcHide) board.Pci(0, kLpc.device, kLpc.function).Set(kLpcHideRegister, 1, bit);
  if (extra == Extra::kRootComplexHide) {
    board.Pci(0, kLpc.device, kLpc.function).Set(kRootComplexRegister, 4, static_cast<uint32_t>(kRootComplex | 1));
    board.Memory(kFunctionDisable, {bit, 0, 0, 0});
  }
  if (extra == Extra::kBridgeHide)
    board.Pci(0, kSisBridge.device, kSisBridge.function).Set(kBridgeHideRegister, 1, hidden ? kBridgeHideBit : 0);
}

PciFunction& HostFunction(Board& board, const SmbusPlatform& platform) {
  return board.Pci(0, platform.host.device, platform.host.function);
}

/// A host on each of the platform's buses, the slaves behind one of them.
std::vector<std::shared_ptr<SmbusHost>> MakeHosts(const SmbusPlatform& platform, const SmbusSetup& setup, size_t own) {
  std::vector<std::shared_ptr<SmbusHost>> hosts;
  SmbusSetup empty = setup;
  empty.slaves.clear();
  for (size_t i = 0; i <= own; ++i) hosts.push_back(platform.make(i == own ? setup : empty));
  return hosts;
}

}  // namespace

std::shared_ptr<SmbusHost> AttachSmbus(Board& board, const SmbusPlatform& platform, SmbusSetup setup) {
  if (setup.base == 0) setup.base = platform.defaultBase;
  const uint16_t base = setup.Option("no_base", 0) != 0 ? 0 : setup.base;
  const size_t own = setup.Option("second_bus", 0) != 0 && platform.windows.size() > 1 ? 1 : 0;
  const auto hosts = MakeHosts(platform, setup, own);
  SetIdentity(board, platform);
  if (platform.windows.empty()) {
    FollowMultiplexer(board, platform.multiplexer, SetPowerManagement(board, platform, setup, base), hosts[own]);
    hosts[own]->base = base;
    if (base != 0 && setup.Option("enabled", 1) != 0) board.Attach(base, platform.ports, hosts[own]);
    return hosts[own];
  }
  std::vector<Decoder> decoders;
  for (size_t i = 0; i < platform.windows.size(); ++i) {
    const bool present = i < hosts.size() && base != 0;
    const auto at = static_cast<uint16_t>(base + i * platform.ports);
    SetWindow(board, platform, platform.windows[i], present ? at : uint16_t{0});
    if (i < hosts.size()) decoders.emplace_back(platform, platform.windows[i], hosts[i]);
  }
  SetGates(board, platform, setup.Option("enabled", 1) != 0);
  SetHiding(board, platform.extra, setup.Option("hidden", 0) != 0);
  const auto refresh = [&platform, decoders, hideable = Hideable(HostFunction(board, platform))](Board& now) mutable {
    const bool hidden = Hidden(now, platform.extra);
    hideable.Set(hidden);
    for (Decoder& decoder : decoders) decoder.Refresh(now, hidden);
  };
  board.OnTick(refresh);
  return hosts[own];
}

}  // namespace sim

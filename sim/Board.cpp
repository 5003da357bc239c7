// SPDX-License-Identifier: MIT
// What a machine is built of, its clock and its log.
#include "sim/Board.h"

#include <algorithm>

#include "sim/BoardImpl.h"

namespace sim {

Board::Board() : impl_(std::make_unique<Impl>()) {}

Board::~Board() {
  if (atEnd) atEnd(*this);
}

namespace {

Board* current = nullptr;
std::unique_ptr<Board> fallback;

/// 256 plain registers behind an index port and a data port.
class IndexDataDevice : public PortDevice {
 public:
  IndexDataDevice(uint16_t indexPort, std::shared_ptr<std::array<uint8_t, 256>> registers)
      : indexPort_(indexPort), registers_(std::move(registers)) {}

  uint32_t Read(Board&, uint16_t port, unsigned) override {
    return port == indexPort_ ? index_ : (*registers_)[index_];
  }
  void Write(Board&, uint16_t port, unsigned, uint32_t value) override {
    (port == indexPort_ ? index_ : (*registers_)[index_]) = static_cast<uint8_t>(value);
  }

 private:
  uint16_t indexPort_;
  std::shared_ptr<std::array<uint8_t, 256>> registers_;
  uint8_t index_ = 0;
};

}  // namespace

Board& Board::Current() {
  if (current) return *current;
  if (!fallback) fallback = DefaultBoard();
  return *fallback;
}

void Board::MakeCurrent(Board* board) {
  current = board;
  if (!board) fallback.reset();
}

std::unique_ptr<Board> Board::Unprivileged() {
  auto board = std::make_unique<Board>();
  board->logging = false;
  board->privileged = false;
  return board;
}

// --- building ---

Board& Board::Ports(uint16_t first, std::vector<uint8_t> values) {
  for (size_t i = 0; i < values.size(); ++i) SetPort(static_cast<uint16_t>(first + i), values[i]);
  return *this;
}

uint8_t Board::PortValue(uint16_t port) const {
  const auto found = impl_->ports.find(port);
  return found == impl_->ports.end() ? 0xFF : found->second;
}

void Board::SetPort(uint16_t port, uint8_t value) { impl_->ports[port] = value; }

Board& Board::Attach(uint16_t first, unsigned count, std::shared_ptr<PortDevice> device) {
  impl_->claims.insert(impl_->claims.begin(), {first, count, std::move(device)});
  return *this;
}

void Board::Detach(const PortDevice* device) {
  std::erase_if(impl_->claims, [device](const Impl::Claim& claim) { return claim.device.get() == device; });
}

std::shared_ptr<std::array<uint8_t, 256>> Board::IndexData(uint16_t indexPort, uint16_t dataPort) {
  auto registers = std::make_shared<std::array<uint8_t, 256>>();
  const auto device = std::make_shared<IndexDataDevice>(indexPort, registers);
  Attach(indexPort, 1, device);
  Attach(dataPort, 1, device);
  return registers;
}

Board& Board::Msr(uint32_t number, uint64_t value) {
  impl_->msrs[number] = value;
  return *this;
}

// --- running ---

uint64_t Board::Microseconds() const {
  if (!live && !realTime) return clock_;
  const auto real = std::chrono::steady_clock::now() - impl_->made;
  return clock_ + static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(real).count());
}

void Board::Sleep(uint64_t microseconds) {
  const bool fails = Fails(Access::kSleep);
  Record(Access::kSleep, 0, 0, microseconds);
  if (fails) return;
  const uint64_t whole = microseconds + pace.sleepExtra;
  const uint64_t longest = pace.step != 0 ? pace.step : whole;
  for (uint64_t left = whole; left > longest; left -= longest) {
    clock_ += longest;
    Tick();
  }
  clock_ += whole == 0 ? 0 : (whole - 1) % longest + 1;
  Tick();
}

void Board::OnTick(std::function<void(Board&)> callback) { impl_->ticks.push_back(std::move(callback)); }

void Board::Tick() {
  for (size_t i = 0; i < impl_->ticks.size(); ++i) impl_->ticks[i](*this);
}

/// The processor's time for a port access.
void Board::Spend() {
  ++accesses_;
  clock_ += pace.portAccess;
  Tick();
}

int Board::SetIoPrivilegeLevel(int level) {
  const bool fails = Fails(Access::kIopl);
  Record(Access::kIopl, 0, 0, static_cast<uint64_t>(level));
  return privileged && !fails ? 0 : -1;
}

void Board::RunCommand(const char* command) {
  Fails(Access::kCommand);
  Record(Access::kCommand, 0, 0, 0, command);
}

// --- observing ---

void Board::Record(Access::Kind kind, uint64_t address, unsigned width, uint64_t value, const char* text) {
  if (logging) log_.push_back({kind, address, width, value, text});
}

bool Board::Fails(Access::Kind kind) {
  const uint64_t number = impl_->calls++;
  return fault && fault(kind, number);
}

std::vector<Access> Board::PortLog() const {
  std::vector<Access> ports;
  std::copy_if(log_.begin(), log_.end(), std::back_inserter(ports), [](const Access& access) {
    return access.kind == Access::kIn || access.kind == Access::kOut || access.kind == Access::kSleep;
  });
  return ports;
}

int Board::OpenDescriptors() const { return static_cast<int>(impl_->descriptors.size()); }

int Board::LiveMappings() const { return static_cast<int>(impl_->mappings.size()); }

}  // namespace sim

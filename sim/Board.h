// SPDX-License-Identifier: MIT
/// A simulated machine: ports, PCI functions, physical memory, model-specific registers and a clock that only sleeping
/// advances, unless its pace says otherwise. The simulated platform acts on `Board::Current()`; tests and the board
/// loader build one.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "sim/Access.h"
#include "sim/PciFunction.h"
#include "sim/PortDevice.h"

namespace sim {

/// What takes time on a machine besides what is slept, in microseconds.
struct Pace {
  uint64_t portAccess = 0;  ///< of the processor, for each
  uint64_t sleepExtra = 0;  ///< by which a sleep is longer than asked for
  uint64_t step = 0;        ///< the longest in which chips follow the clock during a sleep; 0: the whole sleep is one
};

/// What programs can change on a board: bytes by their numbers. Of memory those alone that were written since the board
/// was made; of PCI functions bus << 20 | device << 15 | function << 12 | offset; of register files number << 8 |
/// index.
struct Cells {
  using Bytes = std::map<uint64_t, uint8_t>;
  Bytes ports, memory, pci, registers;
};

class Board {
 public:
  Board();
  ~Board();  ///< calls `atEnd` first
  Board(const Board&) = delete;
  Board& operator=(const Board&) = delete;

  /// The board that the simulated platform acts on: DefaultBoard() while none was made current.
  static Board& Current();
  /// Makes `board` current (not owned); null returns to the default, which is then made afresh.
  static void MakeCurrent(Board* board);
  /// Without privilege and without a log.
  static std::unique_ptr<Board> Unprivileged();

  // --- building ---
  bool privileged = true;                  ///< iopl succeeds
  bool memDevice = true;                   ///< "/dev/mem" can be opened
  bool msrDevice = true;                   ///< "/dev/cpu/0/msr" can be opened
  bool live = false;                       ///< the clock follows the time of day as well, and readings may drift
  bool realTime = false;                   ///< the clock follows the time of day as well; implied by `live`
  size_t mappingLimit = size_t{64} << 20;  ///< bytes; longer mappings fail

  Pace pace;

  /// Plain read/write byte registers at consecutive ports (each independent of the others).
  Board& Ports(uint16_t first, std::vector<uint8_t> values);
  uint8_t PortValue(uint16_t port) const;
  /// Changes one plain register, which comes into being if need be. Not an access: nothing is logged.
  void SetPort(uint16_t port, uint8_t value);
  /// Answers at `count` ports from `first` on; takes precedence over plain registers, the latest over earlier ones. An
  /// access that starts below the first port reaches the device byte by byte.
  Board& Attach(uint16_t first, unsigned count, std::shared_ptr<PortDevice> device);
  void Detach(const PortDevice* device);
  /// An index/data pair over 256 plain registers that tests can read and write.
  std::shared_ptr<std::array<uint8_t, 256>> IndexData(uint16_t indexPort, uint16_t dataPort);

  PciFunction& Pci(unsigned bus, unsigned device, unsigned function);  ///< made on first use
  PciFunction* FindPci(unsigned bus, unsigned device, unsigned function);

  /// Physical memory exists where it was written here; elsewhere it reads 0xFF and swallows writes.
  Board& Memory(uint64_t address, const void* bytes, size_t count);
  Board& Memory(uint64_t address, const std::vector<uint8_t>& bytes);
  uint8_t MemoryByte(uint64_t address) const;
  void StoreMemoryByte(uint64_t address, uint8_t value);

  Board& Msr(uint32_t number, uint64_t value);

  // --- keeping ---
  /// The registers of the devices, in the order in which these were added.
  std::vector<std::shared_ptr<std::array<uint8_t, 256>>> registerFiles;
  /// What chips know beside registers, by names of their own.
  std::map<std::string, uint64_t> remembered;
  std::function<void(const Board&)> atEnd;
  Cells State() const;
  /// Puts bytes back. What the board does not have is passed over; nothing is logged.
  void Restore(const Cells& cells);

  // --- running ---
  /// What was slept so far, and what the accesses took; in real time also the time since the board was made.
  uint64_t Microseconds() const;
  void Sleep(uint64_t microseconds);
  /// Made so far, whatever their width.
  uint64_t PortAccesses() const { return accesses_; }
  /// Called after every sleep (and within it, as the pace says), before every port access and after every port write,
  /// for chips whose state follows the clock or their registers.
  void OnTick(std::function<void(Board&)> callback);

  // --- observing ---
  std::vector<Access>& Log() { return log_; }
  /// Port accesses and sleeps only: the usual subject of a test.
  std::vector<Access> PortLog() const;
  /// Nothing is recorded while this is false.
  bool logging = true;
  /// Descriptors and mappings that the library holds at the moment.
  int OpenDescriptors() const;
  int LiveMappings() const;

  /// Called before each platform call (with its kind and a running number from 0); returning true makes the call fail
  /// (privilege level, opens, maps, reads), answer `faultAnswer` (IN) or do nothing (OUT, commands, sleeps). Closing
  /// and unmapping are announced too, but always done.
  std::function<bool(Access::Kind, uint64_t)> fault;
  uint32_t faultAnswer = 0xFFFFFFFF;

  // What the simulated platform calls; see SimPlatform.cpp.
  int SetIoPrivilegeLevel(int level);
  uint32_t In(uint16_t port, unsigned width);
  void Out(uint16_t port, unsigned width, uint32_t value);
  int Open(const char* path, bool writable);
  void Close(int descriptor);
  void* Map(int descriptor, uint64_t offset, size_t length, bool writable);
  void Unmap(void* address, size_t length);
  long ReadAt(int descriptor, void* buffer, size_t count, uint64_t offset);
  void RunCommand(const char* command);

 private:
  struct Impl;
  void Record(Access::Kind kind, uint64_t address, unsigned width, uint64_t value, const char* text = "");
  bool Fails(Access::Kind kind);
  void Tick();
  void Spend();
  uint8_t ReadPortByte(uint16_t port);
  void WritePortByte(uint16_t port, uint8_t value);
  uint32_t ReadPorts(uint16_t port, unsigned width);
  void WritePorts(uint16_t port, unsigned width, uint32_t value);

  std::unique_ptr<Impl> impl_;
  uint64_t clock_ = 0;
  uint64_t accesses_ = 0;
  std::vector<Access> log_;
};

/// What acts while no board was made current. The linker chooses: an unprivileged board (DefaultBoard.cpp), or in the
/// simulated library the board file that the environment names.
std::unique_ptr<Board> DefaultBoard();

}  // namespace sim

/// A simulated machine: ports, PCI functions, physical memory, model-specific registers and a clock that only sleeping
/// advances. The simulated platform acts on `Board::Current()`; tests and the board loader build one.
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

namespace sim {

/// One thing the library did to the machine, in order.
struct Access {
  enum Kind {
    kIopl,      ///< value = level
    kIn,        ///< address = port, width = bytes, value = what was read
    kOut,       ///< address = port, width = bytes, value = what was written
    kOpen,      ///< text = path, value = 0 read, 1 read/write/sync
    kClose,     ///< (nothing)
    kMap,       ///< address = file offset, width = 1 when writable, value = length in bytes
    kUnmap,     ///< address = file offset, value = length in bytes
    kMemWrite,  ///< one byte that a writable mapping changed: address = physical, width = 1, value = new byte
    kReadAt,    ///< address = file offset, value = bytes asked for
    kCommand,   ///< text = the shell command
    kSleep,     ///< value = microseconds
  };
  Kind kind;
  uint64_t address = 0;
  unsigned width = 0;
  uint64_t value = 0;
  std::string text;

  bool operator==(const Access&) const = default;
};

/// Readable constructors for expected logs: In8(0x80, 0x5A), Out32(0xCF8, 0x8000FB20), Sleep(10).
inline Access In8(uint16_t port, uint8_t value) { return {Access::kIn, port, 1, value, {}}; }
inline Access In16(uint16_t port, uint16_t value) { return {Access::kIn, port, 2, value, {}}; }
inline Access In32(uint16_t port, uint32_t value) { return {Access::kIn, port, 4, value, {}}; }
inline Access Out8(uint16_t port, uint8_t value) { return {Access::kOut, port, 1, value, {}}; }
inline Access Out16(uint16_t port, uint16_t value) { return {Access::kOut, port, 2, value, {}}; }
inline Access Out32(uint16_t port, uint32_t value) { return {Access::kOut, port, 4, value, {}}; }
inline Access MemWrite(uint64_t address, uint8_t value) { return {Access::kMemWrite, address, 1, value, {}}; }
inline Access Sleep(uint64_t microseconds) { return {Access::kSleep, 0, 0, microseconds, {}}; }
/// "out8 0x2e <- 0x55", for failure messages and vynprobe.
std::string ToString(const Access& access);
/// So that GoogleTest prints accesses readably.
void PrintTo(const Access& access, std::ostream* stream);

class Board;

/// Something that answers at ports. `width` is 1, 2 or 4 bytes; `port` is absolute.
class PortDevice {
 public:
  virtual ~PortDevice() = default;
  virtual uint32_t Read(Board& board, uint16_t port, unsigned width) = 0;
  virtual void Write(Board& board, uint16_t port, unsigned width, uint32_t value) = 0;
};

/// A PCI function: 256 or 4096 bytes of configuration space. Writes go through `writeMask` (bit set = writable; all
/// writable unless a test or model narrows it) and then to `onWrite`, if set.
struct PciFunction {
  std::vector<uint8_t> config = std::vector<uint8_t>(4096, 0);
  std::vector<uint8_t> writeMask = std::vector<uint8_t>(4096, 0xFF);
  std::function<void(Board&, unsigned offset, unsigned width)> onWrite;

  uint32_t Get(unsigned offset, unsigned width) const;
  PciFunction& Set(unsigned offset, unsigned width, uint32_t value);  ///< ignores writeMask
};

class Board {
 public:
  Board();
  ~Board();
  Board(const Board&) = delete;
  Board& operator=(const Board&) = delete;

  /// The board that the simulated platform acts on. When none was made current, the board file named by VYNLIB_BOARD is
  /// loaded on first use; when that fails, one line on standard error says why and an unprivileged board stands in.
  static Board& Current();
  /// Makes `board` current (not owned); null returns to the default, which is then loaded afresh.
  static void MakeCurrent(Board* board);

  // --- building ---
  bool privileged = true;                  ///< iopl succeeds
  bool memDevice = true;                   ///< "/dev/mem" can be opened
  bool msrDevice = true;                   ///< "/dev/cpu/0/msr" can be opened
  bool live = false;                       ///< the clock follows the time of day as well, and readings may drift
  size_t mappingLimit = size_t{64} << 20;  ///< bytes; longer mappings fail

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

  // --- running ---
  /// What was slept so far; on a live board also the real time since the board was made.
  uint64_t Microseconds() const;
  void Sleep(uint64_t microseconds);
  /// Called after every sleep, before every port access and after every port write, for chips whose state follows the
  /// clock or their registers.
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
  uint8_t ReadPortByte(uint16_t port);
  void WritePortByte(uint16_t port, uint8_t value);
  uint32_t ReadPorts(uint16_t port, unsigned width);
  void WritePorts(uint16_t port, unsigned width, uint32_t value);

  std::unique_ptr<Impl> impl_;
  uint64_t clock_ = 0;
  std::vector<Access> log_;
};

}  // namespace sim

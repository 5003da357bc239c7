// SPDX-License-Identifier: MIT
/// A machine in place of the real one for the production platform: no hardware, no privilege, no simulated platform.
///
/// Linking `trapped_machine` puts definitions of iopl, open, fopen, close, mmap, munmap, pread, sysconf, system and
/// usleep into the test program. They serve the program's own copy of the platform as well as that of libvynlib.so.1
/// and act on the machine that lives at the moment; calls that are none of its business pass through. IN and OUT trap,
/// for the I/O privilege level is never raised, and are carried out by the machine.
///
///     TrappedMachine machine;
///     machine.SetPort(0x80, 0x5A);
///     platform::In8(0x80);
///     EXPECT_THAT(machine.Log(), ElementsAre("in8 0x80 -> 0x5a"));
#pragma once

#include <sys/types.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

class TrappedMachine {
 public:
  /// Takes over until destroyed. One at a time, on one thread.
  TrappedMachine();
  ~TrappedMachine();
  TrappedMachine(const TrappedMachine&) = delete;
  TrappedMachine& operator=(const TrappedMachine&) = delete;

  // --- what the machine is ---
  bool privileged = true;  ///< iopl succeeds
  bool memDevice = true;   ///< "/dev/mem" can be opened
  bool mappable = true;    ///< and mapped
  bool msrDevice = true;   ///< "/dev/cpu/0/msr" can be opened
  long pageSize = 4096;    ///< what sysconf says; mappings need a multiple of 4096

  /// Physical addresses from the first up to, without, the second: "/dev/mem" does not map any page of them.
  std::vector<std::pair<uint64_t, uint64_t>> refused;
  std::string tableFolder;  ///< stands for "/sys/firmware/acpi/tables"; none when empty
  std::string memoryMap;    ///< stands for "/proc/iomem"; none when empty

  /// Answer IN and OUT; `width` is 1, 2 or 4 bytes. At first over independent byte registers, 0xFF where none was set.
  std::function<uint32_t(uint16_t port, unsigned width)> in;
  std::function<void(uint16_t port, unsigned width, uint32_t value)> out;
  void SetPort(uint16_t port, uint8_t value) { ports_[port] = value; }
  uint8_t Port(uint16_t port) const;

  /// Physical memory: a sparse image of 1 TiB, zero at first.
  void StoreMemory(uint64_t address, const std::vector<uint8_t>& bytes);
  std::vector<uint8_t> LoadMemory(uint64_t address, size_t count) const;

  /// The bytes that a read at the register number yields; fewer than 8 make a short read. Others fail.
  std::map<uint64_t, std::vector<uint8_t>> msrs;

  // --- what happened ---

  /// One line per event, in order:
  ///     iopl 3                                        sysconf _SC_PAGESIZE
  ///     in8 0x80 -> 0x5a                              out32 0xcf8 <- 0x8000fb20
  ///     open /dev/mem O_RDONLY|O_CLOEXEC              open /dev/mem O_RDWR|O_SYNC|O_CLOEXEC
  ///     open /sys/firmware/acpi/tables O_RDONLY|...   fopen /proc/iomem
  ///     mmap 0x1000+36 PROT_READ MAP_SHARED           munmap 36
  ///     pread 8 at 0x19c                              close
  ///     system modprobe msr                           usleep 10
  /// and, with `watchMemory`, one per access to mapped memory at its lowest physical address:
  ///     load 0x1000                                   store 0x1002 <- ef be    (the bytes up to the last that changed)
  const std::vector<std::string>& Log() const { return log_; }
  void ClearLog() { log_.clear(); }
  bool logging = true;
  /// Mappings made while this is set are watched access by access.
  bool watchMemory = false;

  size_t OpenDescriptors() const { return descriptors_.size(); }
  size_t LiveMappings() const { return mappings_.size(); }

  /// The living machine, or null.
  static TrappedMachine* Current();

  // What the replaced functions and signal handlers call.
  static bool IsDevice(const char* path);
  bool Owns(int descriptor) const { return descriptors_.count(descriptor) != 0; }
  bool Owns(const void* address) const { return mappings_.count(address) != 0; }
  int Iopl(int level);
  int Open(const char* path, int flags);
  const char* OpenStream(const char* path);
  int Close(int descriptor);
  void* Map(void* hint, size_t length, int protection, int flags, int descriptor, off_t offset);
  int Unmap(void* address, size_t length);
  ssize_t ReadAt(int descriptor, void* buffer, size_t count, off_t offset);
  long PageSize();
  int RunCommand(const char* command);
  int Sleep(unsigned microseconds);
  bool RunPortInstruction(void* context);
  bool BeginWatchedAccess(void* address, void* context);
  bool EndWatchedAccess(void* context);

 private:
  enum class Device { kMemory, kMsr };
  struct Mapping {
    uint64_t offset;
    size_t length;
    int protection;
    bool watched;
  };
  /// Between the fault on a watched mapping and the trap after the instruction that caused it.
  struct WatchedAccess {
    uint8_t* address = nullptr;
    uint64_t physical = 0;
    bool store = false;
    std::vector<uint8_t> before;
    void* base = nullptr;
    size_t length = 0;
  };

  void Write(const char* format, ...) __attribute__((format(printf, 2, 3)));

  int image_;
  std::map<uint16_t, uint8_t> ports_;
  std::map<int, Device> descriptors_;
  std::map<const void*, Mapping> mappings_;
  WatchedAccess access_;
  std::vector<std::string> log_;
  struct sigaction oldSegv_ {};
  struct sigaction oldTrap_ {};
};

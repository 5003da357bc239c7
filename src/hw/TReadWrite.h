// SPDX-License-Identifier: MIT
/// Every kind of hardware access that the library makes.
#pragma once

#include "hw/Set.h"

struct _PCI_SEQ_INFO;

/// The one object through which the library touches hardware: I/O ports, PCI and PCI Express configuration space,
/// physical memory, PCI search and model-specific registers, all from user space after raising the I/O privilege level.
///
/// Without privilege (`IoplFailed` nonzero) an operation prints "Please run as root!" and fails without touching the
/// machine: reads of one value return all ones of their width, everything else false.
///
/// Not for use by several threads at once: the last four fields are scratch state of the last translation, and
/// index/data and 0xCF8/0xCFC sequences are not atomic.
class TReadWrite {
 public:
  static constexpr unsigned int kNotFound = 0xFFFFFFFF;    ///< of searches of memory and PCI
  static constexpr unsigned int kNoPcieBase = 0xFFFFFFFF;  ///< PcieBase while it is unknown

  unsigned char IoplFailed;     ///< nonzero when the I/O privilege level could not be raised
  unsigned int PcieBase;        ///< physical base of the enhanced configuration space, or kNoPcieBase
  unsigned int PcieAddress;     ///< physical address composed by the last PCI Express translation
  unsigned int PcieByteOffset;  ///< low two bits of the register number of that translation
  unsigned int PciAddress;      ///< value last composed for the address port 0xCF8
  unsigned short PciDataPort;   ///< data port last chosen, 0xCFC..0xCFF

  static TReadWrite* g_Instance;

  /// The instance, created on first use; null when the I/O privilege level cannot be raised.
  static TReadWrite* GetInstance();
  /// Drops the I/O privilege and destroys the instance, if there is one.
  static void FreeInstance();

  TReadWrite();
  ~TReadWrite();
  TReadWrite(const TReadWrite&) = delete;
  TReadWrite& operator=(const TReadWrite&) = delete;

  /// True when privileged; otherwise prints "Please run as root!" and returns false.
  bool CheckPrivilege() { return IoplFailed == 0 || Refuse(); }

  // --- I/O ports (PortIo.cpp) ---

  unsigned char IoBaseReadByte(unsigned short port);
  unsigned short IoBaseReadWord(unsigned short port);
  unsigned int IoBaseReadDword(unsigned short port);
  bool IoBaseWriteByte(unsigned short port, unsigned char value);
  bool IoBaseWriteWord(unsigned short port, unsigned short value);
  bool IoBaseWriteDword(unsigned short port, unsigned int value);
  /// Moves `count` bytes, one 8-bit access each, over consecutive port numbers (wrapping at 16 bits).
  bool IoBaseReadBlock(unsigned short port, void* buffer, unsigned int count);
  bool IoBaseWriteBlock(unsigned short port, void* buffer, unsigned int count);

  /// Index/data pairs: every access is 8 bits wide, index arithmetic wraps modulo 256. Words and dwords are read from
  /// the highest register down and written from the lowest up; the low register holds the low byte.
  unsigned char IoIndexReadByte(unsigned short indexPort, unsigned short dataPort, unsigned char index);
  unsigned short IoIndexReadWord(unsigned short indexPort, unsigned short dataPort, unsigned char index);
  unsigned int IoIndexReadDword(unsigned short indexPort, unsigned short dataPort, unsigned char index);
  bool IoIndexWriteByte(unsigned short indexPort, unsigned short dataPort, unsigned char index, unsigned char value);
  bool IoIndexWriteWord(unsigned short indexPort, unsigned short dataPort, unsigned char index, unsigned short value);
  bool IoIndexWriteDword(unsigned short indexPort, unsigned short dataPort, unsigned char index, unsigned int value);
  /// Moves registers `startIndex` to `endIndex` - 1, ascending; `endIndex` is exclusive, not a count.
  bool IoIndexReadBlock(unsigned short indexPort, unsigned short dataPort, unsigned char startIndex, void* buffer,
                        unsigned short endIndex);
  bool IoIndexWriteBlock(unsigned short indexPort, unsigned short dataPort, unsigned char startIndex, void* buffer,
                         unsigned short endIndex);

  // --- PCI configuration space, mechanism #1: ports 0xCF8 and 0xCFC..0xCFF (PciConfig.cpp) ---

  /// Composes the 0xCF8 value and the data port, stores both in the fields and returns the value. Device and function
  /// are added unmasked, so numbers beyond 31 and 7 carry into the neighbouring fields.
  unsigned int TranslatePciAddress(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg);
  unsigned int TranslatePciAddress(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                                   unsigned int* address, unsigned short* port);

  unsigned char PciReadByte(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg);
  unsigned short PciReadWord(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg);
  unsigned int PciReadDword(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg);
  bool PciWriteByte(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                    unsigned char value);
  bool PciWriteWord(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                    unsigned short value);
  bool PciWriteDword(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                     unsigned int value);

  /// The low byte of each of the 64 dword registers 0, 4, ..., 252, to and from 64 bytes. Writing stores the
  /// zero-extended byte as the whole dword.
  bool PciReadConfig(unsigned char bus, unsigned char device, unsigned char function, void* buffer);
  bool PciWriteConfig(unsigned char bus, unsigned char device, unsigned char function, void* buffer);
  /// The same, leaving registers in `skip` alone; a skipped register reads as 0.
  bool PciReadConfigEx(unsigned char bus, unsigned char device, unsigned char function, void* buffer,
                       Set<unsigned char, 0, 255> skip);
  bool PciWriteConfigEx(unsigned char bus, unsigned char device, unsigned char function, void* buffer,
                        Set<unsigned char, 0, 255> skip);
  /// `count` bytes from register `start` on, one byte access each.
  bool PciReadBlock(unsigned char bus, unsigned char device, unsigned char function, unsigned short start, void* buffer,
                    unsigned short count);
  bool PciWriteBlock(unsigned char bus, unsigned char device, unsigned char function, unsigned short start,
                     void* buffer, unsigned short count);

  /// The ePci forms name the function by one word: bus in bits 8-15, device in bits 3-7, function in bits 0-2.
  unsigned char ePciReadByte(unsigned short bdf, unsigned short reg);
  unsigned short ePciReadWord(unsigned short bdf, unsigned short reg);
  unsigned int ePciReadDword(unsigned short bdf, unsigned short reg);
  bool ePciWriteByte(unsigned short bdf, unsigned short reg, unsigned char value);
  bool ePciWriteWord(unsigned short bdf, unsigned short reg, unsigned short value);
  bool ePciWriteDword(unsigned short bdf, unsigned short reg, unsigned int value);
  bool ePciReadConfig(unsigned short bdf, void* buffer);
  bool ePciWriteConfig(unsigned short bdf, void* buffer);
  bool ePciReadConfigEx(unsigned short bdf, void* buffer, Set<unsigned char, 0, 255> skip);
  bool ePciWriteConfigEx(unsigned short bdf, void* buffer, Set<unsigned char, 0, 255> skip);
  bool ePciReadBlock(unsigned short bdf, unsigned short start, void* buffer, unsigned short count);
  bool ePciWriteBlock(unsigned short bdf, unsigned short start, void* buffer, unsigned short count);

  // --- Physical memory through /dev/mem, opened and mapped afresh by every call (Memory.cpp) ---

  /// Words and dwords are accessed at the address rounded down to their size. Failure: all ones, or false.
  unsigned char MemoryReadByte(unsigned long long address);
  unsigned short MemoryReadWord(unsigned long long address);
  unsigned int MemoryReadDword(unsigned long long address);
  bool MemoryWriteByte(unsigned long long address, unsigned char value);
  bool MemoryWriteWord(unsigned long long address, unsigned short value);
  bool MemoryWriteDword(unsigned long long address, unsigned int value);

  /// Copies `count` bytes in ascending order. A count of 0 at a page-aligned address fails.
  bool MemoryReadBlock(unsigned long long address, void* buffer, unsigned int count);
  bool MemoryWriteBlock(unsigned long long address, void* buffer, unsigned int count);
  /// The same in units of `width`: 0 bytes, 1 words, 2 dwords, aligned as above; a remainder of `count` is not moved.
  /// Another width moves nothing and succeeds.
  bool MemoryReadBlock(unsigned long long address, void* buffer, unsigned int count, unsigned int width);
  bool MemoryWriteBlock(unsigned long long address, void* buffer, unsigned int count, unsigned int width);

  /// A page is 256 bytes here, whatever the system's page size.
  bool MemoryReadPage(unsigned int address, void* buffer);
  bool MemoryReadPage(unsigned int address, void* buffer, int width);
  bool MemoryWritePage(unsigned int address, void* buffer);
  bool MemoryWritePage(unsigned int address, void* buffer, int width);

  /// Searches `length` bytes from `start` (downwards from it when `backward`) for the match of the pattern that comes
  /// after `occurrence` earlier ones, in spans of at most 4096 bytes, comparing every `step` bytes (0 counts as 1).
  /// @return the physical address, or kNotFound when there is none. A pattern longer than a span finds nothing.
  unsigned long long MemoryFindData(unsigned long long start, unsigned int length, unsigned int step,
                                    unsigned int occurrence, unsigned char* pattern, unsigned int patternLength,
                                    bool backward);

  // --- PCI Express configuration space, 4096 bytes per function (PcieConfig.cpp) ---

  /// Composes `PcieAddress` and `PcieByteOffset`; false, changing nothing, when the base is unknown.
  bool TranslatePciEAddress(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg);

  /// Reads use memory whenever the base is known, writes only from register 0x100 up. With the base unknown, reads
  /// from 0x100 up are all ones, and writes there go to the address of the last translation.
  unsigned char PciEReadByte(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg);
  unsigned short PciEReadWord(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg);
  unsigned int PciEReadDword(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg);
  bool PciEWriteByte(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                     unsigned char value);
  bool PciEWriteWord(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                     unsigned short value);
  bool PciEWriteDword(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                      unsigned int value);

  /// The low byte of each dword register: registers 0..0xFFC to 1024 bytes.
  bool PciEReadConfig(unsigned char bus, unsigned char device, unsigned char function, void* buffer);
  /// Registers 0..0xFC to 64 bytes.
  bool PciEReadPage(unsigned char bus, unsigned char device, unsigned char function, void* buffer);
  /// Registers 0x100..0xFFC to bytes 256..1215 of a buffer of 1216 bytes.
  bool PciEReadConfig100(unsigned char bus, unsigned char device, unsigned char function, void* buffer);
  bool PciEReadConfigEx(unsigned char bus, unsigned char device, unsigned char function, void* buffer,
                        Set<unsigned short, 0, 255> skip);
  /// Each of 1024 bytes, zero-extended, to the whole dword register; false at the first failure.
  bool PciEWriteConfig(unsigned char bus, unsigned char device, unsigned char function, void* buffer);
  bool PciEWriteConfigEx(unsigned char bus, unsigned char device, unsigned char function, void* buffer,
                         Set<unsigned short, 0, 255> skip);

  unsigned char ePciEReadByte(unsigned short bdf, unsigned short reg);
  unsigned short ePciEReadWord(unsigned short bdf, unsigned short reg);
  unsigned int ePciEReadDword(unsigned short bdf, unsigned short reg);
  bool ePciEWriteByte(unsigned short bdf, unsigned short reg, unsigned char value);
  bool ePciEWriteWord(unsigned short bdf, unsigned short reg, unsigned short value);
  bool ePciEWriteDword(unsigned short bdf, unsigned short reg, unsigned int value);
  bool ePciEReadConfig(unsigned short bdf, void* buffer);
  bool ePciEReadPage(unsigned short bdf, void* buffer);
  bool ePciEReadConfig100(unsigned short bdf, void* buffer);
  bool ePciEReadConfigEx(unsigned short bdf, void* buffer, Set<unsigned short, 0, 255> skip);
  bool ePciEWriteConfig(unsigned short bdf, void* buffer);
  bool ePciEWriteConfigEx(unsigned short bdf, void* buffer, Set<unsigned short, 0, 255> skip);

  // --- PCI search, bus then device then function ascending (PciSearch.cpp) ---

  /// Finds the match after `index` earlier ones. Mode 0: `id` is device << 16 | vendor, 0xFFFF in either half matches
  /// any. Mode 1: `id` is the 24-bit class code, 0xFF in a byte matches any, but not in all three.
  /// @return the bus/device/function word, or kNotFound.
  unsigned int FindPci(unsigned int id, unsigned char index, unsigned char mode);
  unsigned int FindPciDevice(unsigned int id, unsigned char index);
  unsigned int FindPciDevice(unsigned int id);
  unsigned int FindPciClass(unsigned int classCode, unsigned char index);
  unsigned int FindPciClass(unsigned int classCode);
  /// Finds a capability in the capability lists; on success `*capabilityOffset` is its configuration-space offset.
  unsigned int FindPciCapabilityDevice(unsigned char capabilityId, unsigned char* capabilityOffset,
                                       unsigned char index);
  /// Whether that one function matches.
  bool FindPciCheckId(unsigned char bus, unsigned char device, unsigned char function, unsigned int id,
                      unsigned char mode);
  /// Does nothing.
  void PciSequence(_PCI_SEQ_INFO* sequence);

  // --- Model-specific registers (Msr.cpp) ---

  /// Reads a register of CPU 0 through "/dev/cpu/0/msr", after "modprobe msr". 0 stands for failure too. Needs no I/O
  /// privilege level.
  unsigned long long rdmsr_on_cpu(unsigned int msr);

 private:
  /// Prints the message; false.
  static bool Refuse();
};

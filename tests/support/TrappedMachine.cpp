// SPDX-License-Identifier: MIT
// The fortified headers define some of the functions that stand below.
#undef _FORTIFY_SOURCE

#include "tests/support/TrappedMachine.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

constexpr char kMemoryPath[] = "/dev/mem";
constexpr char kMsrPath[] = "/dev/cpu/0/msr";
constexpr char kTableFolder[] = "/sys/firmware/acpi/tables";
constexpr char kMemoryMap[] = "/proc/iomem";
constexpr off_t kImageBytes = off_t{1} << 40;
constexpr greg_t kGeneralProtection = 13;
constexpr greg_t kWriteFault = 2;
constexpr greg_t kTrapFlag = 0x100;
constexpr size_t kWidestAccess = 64;

TrappedMachine* current = nullptr;

int Fail(int error) {
  errno = error;
  return -1;
}

/// Names of set bits joined by '|', with what remains in hexadecimal.
struct Flag {
  int bits;
  const char* name;
};

template <size_t n>
std::string Words(int value, const char* none, const Flag (&flags)[n]) {
  std::string words;
  for (const Flag& flag : flags) {
    if ((value & flag.bits) != flag.bits) continue;
    words += (words.empty() ? "" : "|") + std::string(flag.name);
    value &= ~flag.bits;
  }
  if (words.empty() && none) words = none;
  if (value != 0) {
    char rest[16];
    std::snprintf(rest, sizeof rest, "|0x%x", static_cast<unsigned>(value));
    words += rest;
  }
  return words;
}

std::string OpenFlags(int flags) {
  const std::string mode = (flags & O_ACCMODE) == O_RDONLY ? "O_RDONLY" : "";
  const std::string rest = Words(flags, nullptr,
                                 {{O_RDWR, "O_RDWR"},
                                  {O_WRONLY, "O_WRONLY"},
                                  {O_SYNC, "O_SYNC"},
                                  {O_DIRECTORY, "O_DIRECTORY"},
                                  {O_CLOEXEC, "O_CLOEXEC"}});
  return mode.empty() || rest.empty() ? mode + rest : mode + "|" + rest;
}
std::string Protection(int protection) {
  return Words(protection, "PROT_NONE",
               {{PROT_READ, "PROT_READ"}, {PROT_WRITE, "PROT_WRITE"}, {PROT_EXEC, "PROT_EXEC"}});
}
std::string MapFlags(int flags) {
  return Words(flags, "0", {{MAP_SHARED, "MAP_SHARED"}, {MAP_PRIVATE, "MAP_PRIVATE"}});
}

greg_t* Registers(void* context) { return static_cast<ucontext_t*>(context)->uc_mcontext.gregs; }

/// IN and OUT with the port in DX (EC to EF) or in a byte that follows (E4 to E7), the word forms after an operand size
/// prefix.
struct PortInstruction {
  unsigned width = 0;  ///< bytes; 0 when it is no port instruction
  unsigned length = 0;
  uint16_t port = 0;
  bool out = false;
};

PortInstruction DecodePortInstruction(const greg_t* registers) {
  const auto* code = reinterpret_cast<const uint8_t*>(registers[REG_RIP]);
  const unsigned prefixes = code[0] == 0x66 ? 1 : 0;
  const uint8_t opcode = code[prefixes];
  const bool immediate = (opcode & 0xFC) == 0xE4;
  if (!immediate && (opcode & 0xFC) != 0xEC) return {};
  const unsigned wide = prefixes != 0 ? 2 : 4;
  const auto port = static_cast<uint16_t>(immediate ? code[prefixes + 1] : registers[REG_RDX]);
  return {(opcode & 1) != 0 ? wide : 1, prefixes + (immediate ? 2 : 1), port, (opcode & 2) != 0};
}

constexpr uint32_t OnesOf(unsigned width) { return width == 4 ? 0xFFFFFFFF : (1u << (8 * width)) - 1; }

/// A fault that is not the machine's happens again without a handler and ends the program.
void OnSegv(int, siginfo_t* info, void* context) {
  if (current && (current->RunPortInstruction(context) || current->BeginWatchedAccess(info->si_addr, context))) return;
  std::signal(SIGSEGV, SIG_DFL);
}

void OnTrap(int, siginfo_t*, void* context) {
  if (current && current->EndWatchedAccess(context)) return;
  std::signal(SIGTRAP, SIG_DFL);
}

void Handle(int signal, void (*handler)(int, siginfo_t*, void*), struct sigaction* old) {
  struct sigaction action {};
  action.sa_flags = SA_SIGINFO;
  action.sa_sigaction = handler;
  sigaction(signal, &action, old);
}

}  // namespace

TrappedMachine* TrappedMachine::Current() { return current; }

TrappedMachine::TrappedMachine() : image_(memfd_create("physical-memory", MFD_CLOEXEC)) {
  if (current || image_ < 0 || ftruncate(image_, kImageBytes) != 0) {
    std::perror("TrappedMachine");
    std::abort();
  }
  in = [this](uint16_t port, unsigned width) {
    uint32_t value = 0;
    for (unsigned i = 0; i < width; ++i) value |= uint32_t{Port(static_cast<uint16_t>(port + i))} << (8 * i);
    return value;
  };
  out = [this](uint16_t port, unsigned width, uint32_t value) {
    for (unsigned i = 0; i < width; ++i)
      SetPort(static_cast<uint16_t>(port + i), static_cast<uint8_t>(value >> (8 * i)));
  };
  Handle(SIGSEGV, OnSegv, &oldSegv_);
  Handle(SIGTRAP, OnTrap, &oldTrap_);
  current = this;
}

TrappedMachine::~TrappedMachine() {
  current = nullptr;
  sigaction(SIGSEGV, &oldSegv_, nullptr);
  sigaction(SIGTRAP, &oldTrap_, nullptr);
  for (const auto& [descriptor, device] : descriptors_) close(descriptor);
  close(image_);
}

void TrappedMachine::Write(const char* format, ...) {
  if (!logging) return;
  char line[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  log_.emplace_back(line);
}

uint8_t TrappedMachine::Port(uint16_t port) const {
  const auto found = ports_.find(port);
  return found == ports_.end() ? 0xFF : found->second;
}

void TrappedMachine::StoreMemory(uint64_t address, const std::vector<uint8_t>& bytes) {
  const ssize_t written = pwrite(image_, bytes.data(), bytes.size(), static_cast<off_t>(address));
  if (written != static_cast<ssize_t>(bytes.size())) std::abort();
}

std::vector<uint8_t> TrappedMachine::LoadMemory(uint64_t address, size_t count) const {
  std::vector<uint8_t> bytes(count);
  if (syscall(SYS_pread64, image_, bytes.data(), count, address) != static_cast<long>(count)) std::abort();
  return bytes;
}

// --- system calls ---

bool TrappedMachine::IsDevice(const char* path) {
  return std::strcmp(path, kMemoryPath) == 0 || std::strncmp(path, "/dev/cpu/", 9) == 0 ||
         std::strcmp(path, kTableFolder) == 0;
}

int TrappedMachine::Iopl(int level) {
  Write("iopl %d", level);
  return privileged ? 0 : Fail(EPERM);
}

int TrappedMachine::Open(const char* path, int flags) {
  Write("open %s %s", path, OpenFlags(flags).c_str());
  if (std::strcmp(path, kTableFolder) == 0) {
    if (tableFolder.empty()) return Fail(ENOENT);
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, tableFolder.c_str(), flags, 0));
  }
  const bool memory = memDevice && std::strcmp(path, kMemoryPath) == 0;
  if (!memory && !(msrDevice && std::strcmp(path, kMsrPath) == 0)) return Fail(ENOENT);
  // A descriptor of its own, in the access mode asked for, so that the kernel refuses what /dev/mem would refuse.
  const std::string file = memory ? "/proc/self/fd/" + std::to_string(image_) : "/dev/null";
  const long descriptor = syscall(SYS_openat, AT_FDCWD, file.c_str(), flags, 0);
  if (descriptor >= 0) descriptors_[static_cast<int>(descriptor)] = memory ? Device::kMemory : Device::kMsr;
  return static_cast<int>(descriptor);
}

/// The file to open in place of `path`; null when there is none.
const char* TrappedMachine::OpenStream(const char* path) {
  if (std::strcmp(path, kMemoryMap) != 0) return path;
  Write("fopen %s", path);
  if (memoryMap.empty()) errno = ENOENT;
  return memoryMap.empty() ? nullptr : memoryMap.c_str();
}

int TrappedMachine::Close(int descriptor) {
  Write("close");
  descriptors_.erase(descriptor);
  return static_cast<int>(syscall(SYS_close, descriptor));
}

void* TrappedMachine::Map(void* hint, size_t length, int protection, int flags, int descriptor, off_t offset) {
  Write("mmap 0x%llx+%zu %s %s", static_cast<unsigned long long>(offset), length, Protection(protection).c_str(),
        MapFlags(flags).c_str());
  const bool inside = offset >= 0 && offset < kImageBytes && length <= static_cast<size_t>(kImageBytes - offset);
  const auto page = static_cast<uint64_t>(offset);
  const bool hidden = std::any_of(refused.begin(), refused.end(), [&](const auto& range) {
    return range.first / 4096 * 4096 < page + length && page < (range.second + 4095) / 4096 * 4096;
  });
  const bool allowed = mappable && inside && !hidden && descriptors_.at(descriptor) == Device::kMemory;
  if (!allowed) {
    errno = EPERM;
    return MAP_FAILED;
  }
  const long result = syscall(SYS_mmap, hint, length, protection, flags, descriptor, offset);
  void* address = reinterpret_cast<void*>(result);
  if (address == MAP_FAILED) return address;
  mappings_[address] = {static_cast<uint64_t>(offset), length, protection, watchMemory};
  if (watchMemory) mprotect(address, length, PROT_NONE);
  return address;
}

int TrappedMachine::Unmap(void* address, size_t length) {
  Write("munmap %zu", length);
  mappings_.erase(address);
  return static_cast<int>(syscall(SYS_munmap, address, length));
}

ssize_t TrappedMachine::ReadAt(int descriptor, void* buffer, size_t count, off_t offset) {
  Write("pread %zu at 0x%llx", count, static_cast<unsigned long long>(offset));
  if (descriptors_.at(descriptor) == Device::kMemory) return syscall(SYS_pread64, descriptor, buffer, count, offset);
  const auto msr = msrs.find(static_cast<uint64_t>(offset));
  if (msr == msrs.end()) return Fail(EIO);
  const size_t bytes = std::min(count, msr->second.size());
  std::copy_n(msr->second.begin(), bytes, static_cast<uint8_t*>(buffer));
  return static_cast<ssize_t>(bytes);
}

long TrappedMachine::PageSize() {
  Write("sysconf _SC_PAGESIZE");
  return pageSize;
}

int TrappedMachine::RunCommand(const char* command) {
  Write("system %s", command);
  return 0;
}

int TrappedMachine::Sleep(unsigned microseconds) {
  Write("usleep %u", microseconds);
  return 0;
}

// --- instructions ---

bool TrappedMachine::RunPortInstruction(void* context) {
  greg_t* registers = Registers(context);
  if (registers[REG_TRAPNO] != kGeneralProtection) return false;
  const PortInstruction instruction = DecodePortInstruction(registers);
  if (instruction.width == 0) return false;
  const uint32_t ones = OnesOf(instruction.width);
  const int digits = static_cast<int>(2 * instruction.width);
  const uint16_t port = instruction.port;
  if (instruction.out) {
    const uint32_t value = static_cast<uint32_t>(registers[REG_RAX]) & ones;
    Write("out%u 0x%x <- 0x%0*x", 8 * instruction.width, port, digits, value);
    out(port, instruction.width, value);
  } else {
    const uint32_t value = in(port, instruction.width) & ones;
    Write("in%u 0x%x -> 0x%0*x", 8 * instruction.width, port, digits, value);
    // A 32-bit result clears the upper half of RAX, narrower ones leave the rest as it is.
    const greg_t kept = instruction.width == 4 ? 0 : registers[REG_RAX] & ~greg_t{ones};
    registers[REG_RAX] = kept | greg_t{value};
  }
  registers[REG_RIP] += instruction.length;
  return true;
}

bool TrappedMachine::BeginWatchedAccess(void* address, void* context) {
  greg_t* registers = Registers(context);
  auto* byte = static_cast<uint8_t*>(address);
  for (const auto& [base, mapping] : mappings_) {
    auto* first = static_cast<uint8_t*>(const_cast<void*>(base));
    if (!mapping.watched || byte < first || byte >= first + mapping.length) continue;
    const auto offset = static_cast<size_t>(byte - first);
    const bool store = (registers[REG_ERR] & kWriteFault) != 0;
    if (store && (mapping.protection & PROT_WRITE) == 0) return false;
    mprotect(first, mapping.length, mapping.protection);
    const size_t visible = std::min(kWidestAccess, mapping.length - offset);
    access_ = {byte, mapping.offset + offset, store, std::vector<uint8_t>(byte, byte + visible), first, mapping.length};
    registers[REG_EFL] |= kTrapFlag;
    return true;
  }
  return false;
}

bool TrappedMachine::EndWatchedAccess(void* context) {
  if (!access_.address) return false;
  Registers(context)[REG_EFL] &= ~kTrapFlag;
  std::string bytes;
  size_t changed = 0;
  for (size_t i = 0; i < access_.before.size(); ++i)
    if (access_.address[i] != access_.before[i]) changed = i + 1;
  for (size_t i = 0; access_.store && i < changed; ++i) {
    char text[4];
    std::snprintf(text, sizeof text, " %02x", access_.address[i]);
    bytes += text;
  }
  Write("%s 0x%llx%s%s", access_.store ? "store" : "load", static_cast<unsigned long long>(access_.physical),
        access_.store ? " <-" : "", bytes.c_str());
  mprotect(access_.base, access_.length, PROT_NONE);
  access_ = {};
  return true;
}

// --- the replaced functions: default visibility, so that shared objects find them too ---

#pragma GCC visibility push(default)

extern "C" {

long __sysconf(int name) noexcept;

int iopl(int level) noexcept { return current ? current->Iopl(level) : Fail(EPERM); }

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = va_arg(arguments, mode_t);
  va_end(arguments);
  if (current && TrappedMachine::IsDevice(path)) return current->Open(path, flags);
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

FILE* fopen(const char* path, const char* mode) {
  static const auto real = reinterpret_cast<FILE* (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "fopen"));
  const char* file = current ? current->OpenStream(path) : path;
  return file ? real(file, mode) : nullptr;
}

int close(int descriptor) {
  if (current && current->Owns(descriptor)) return current->Close(descriptor);
  return static_cast<int>(syscall(SYS_close, descriptor));
}

void* mmap(void* hint, size_t length, int protection, int flags, int descriptor, off_t offset) noexcept {
  if (current && current->Owns(descriptor)) return current->Map(hint, length, protection, flags, descriptor, offset);
  return reinterpret_cast<void*>(syscall(SYS_mmap, hint, length, protection, flags, descriptor, offset));
}

int munmap(void* address, size_t length) noexcept {
  if (current && current->Owns(address)) return current->Unmap(address, length);
  return static_cast<int>(syscall(SYS_munmap, address, length));
}

ssize_t pread(int descriptor, void* buffer, size_t count, off_t offset) {
  if (current && current->Owns(descriptor)) return current->ReadAt(descriptor, buffer, count, offset);
  return syscall(SYS_pread64, descriptor, buffer, count, offset);
}

long sysconf(int name) noexcept { return current && name == _SC_PAGESIZE ? current->PageSize() : __sysconf(name); }

int system(const char* command) {
  if (current) return current->RunCommand(command);
  static const auto real = reinterpret_cast<int (*)(const char*)>(dlsym(RTLD_NEXT, "system"));
  return real(command);
}

int usleep(useconds_t microseconds) {
  if (current) return current->Sleep(microseconds);
  const timespec time = {microseconds / 1000000, static_cast<long>(microseconds % 1000000) * 1000};
  return static_cast<int>(syscall(SYS_nanosleep, &time, nullptr));
}

}  // extern "C"

#pragma GCC visibility pop

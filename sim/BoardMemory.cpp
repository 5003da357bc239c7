// SPDX-License-Identifier: MIT
// Physical memory, model-specific registers and the device files of the simulated board.
#include <algorithm>
#include <cstring>
#include <limits>

#include "sim/BoardImpl.h"

namespace sim {
namespace {

constexpr char kMemoryPath[] = "/dev/mem";
constexpr char kMsrPath[] = "/dev/cpu/0/msr";
constexpr size_t kMsrBytes = 8;
constexpr int kFirstDescriptor = 3;

}  // namespace

Board& Board::Memory(uint64_t address, const void* bytes, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    auto& page = impl_->pages[(address + i) / kPageBytes];
    if (!page) page = std::make_unique<Impl::Page>();
    page->bytes[(address + i) % kPageBytes] = static_cast<const uint8_t*>(bytes)[i];
    page->present.set((address + i) % kPageBytes);
  }
  return *this;
}

Board& Board::Memory(uint64_t address, const std::vector<uint8_t>& bytes) {
  return Memory(address, bytes.data(), bytes.size());
}

uint8_t Board::MemoryByte(uint64_t address) const {
  const auto found = impl_->pages.find(address / kPageBytes);
  if (found == impl_->pages.end() || !found->second->present[address % kPageBytes]) return 0xFF;
  return found->second->bytes[address % kPageBytes];
}

void Board::StoreMemoryByte(uint64_t address, uint8_t value) {
  const auto found = impl_->pages.find(address / kPageBytes);
  if (found == impl_->pages.end() || !found->second->present[address % kPageBytes]) return;
  found->second->bytes[address % kPageBytes] = value;
  impl_->written.insert(address);
}

int Board::Open(const char* path, bool writable) {
  const bool fails = Fails(Access::kOpen);
  Record(Access::kOpen, 0, 0, writable, path);
  const bool memory = memDevice && std::strcmp(path, kMemoryPath) == 0;
  const bool msr = msrDevice && std::strcmp(path, kMsrPath) == 0;
  if (fails || (!memory && !msr)) return -1;
  int descriptor = kFirstDescriptor;
  while (impl_->descriptors.contains(descriptor)) ++descriptor;
  impl_->descriptors[descriptor] = memory ? Impl::File::kMemory : Impl::File::kMsr;
  return descriptor;
}

void Board::Close(int descriptor) {
  Fails(Access::kClose);
  Record(Access::kClose, 0, 0, 0);
  impl_->descriptors.erase(descriptor);
}

void* Board::Map(int descriptor, uint64_t offset, size_t length, bool writable) {
  const bool fails = Fails(Access::kMap);
  Record(Access::kMap, offset, writable, length);
  const auto file = impl_->descriptors.find(descriptor);
  const bool memory = file != impl_->descriptors.end() && file->second == Impl::File::kMemory;
  const bool wraps = offset + length < offset;
  if (fails || !memory || length == 0 || length > mappingLimit || offset % kPageBytes != 0 || wraps) return nullptr;
  auto bytes = std::make_unique<uint8_t[]>(length);
  for (size_t i = 0; i < length; ++i) bytes[i] = MemoryByte(offset + i);
  Impl::Mapping mapping{offset, writable, std::move(bytes), {}};
  if (writable) mapping.before.assign(mapping.bytes.get(), mapping.bytes.get() + length);
  void* address = mapping.bytes.get();
  impl_->mappings.emplace(address, std::move(mapping));
  return address;
}

void Board::Unmap(void* address, size_t length) {
  Fails(Access::kUnmap);
  const auto found = impl_->mappings.find(address);
  if (found == impl_->mappings.end()) return Record(Access::kUnmap, 0, 0, length);
  const Impl::Mapping& mapping = found->second;
  for (size_t i = 0; i < mapping.before.size(); ++i) {
    if (mapping.bytes[i] == mapping.before[i]) continue;
    Record(Access::kMemWrite, mapping.offset + i, 1, mapping.bytes[i]);
    StoreMemoryByte(mapping.offset + i, mapping.bytes[i]);
  }
  Record(Access::kUnmap, mapping.offset, 0, length);
  impl_->mappings.erase(found);
}

long Board::ReadAt(int descriptor, void* buffer, size_t count, uint64_t offset) {
  const bool fails = Fails(Access::kReadAt);
  Record(Access::kReadAt, offset, 0, count);
  const auto file = impl_->descriptors.find(descriptor);
  if (fails || file == impl_->descriptors.end()) return -1;
  auto* out = static_cast<uint8_t*>(buffer);
  if (file->second == Impl::File::kMemory) {
    for (size_t i = 0; i < count; ++i) out[i] = MemoryByte(offset + i);
    return static_cast<long>(count);
  }
  const bool numbered = offset <= std::numeric_limits<uint32_t>::max();
  const auto msr = numbered ? impl_->msrs.find(static_cast<uint32_t>(offset)) : impl_->msrs.end();
  if (msr == impl_->msrs.end() || count % kMsrBytes != 0) return -1;
  for (size_t i = 0; i < count; ++i) out[i] = static_cast<uint8_t>(msr->second >> (8 * (i % kMsrBytes)));
  return static_cast<long>(count);
}

}  // namespace sim

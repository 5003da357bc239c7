// SPDX-License-Identifier: MIT
// Counts the program's heap allocations.
#include <cstdlib>
#include <new>

#include "bench/NullMachine.h"

namespace bench {

namespace {
uint64_t allocations = 0;
}

uint64_t Allocations() { return allocations; }

void* Allocate(size_t size) {
  ++allocations;
  if (void* block = std::malloc(size)) return block;
  std::abort();
}

}  // namespace bench

void* operator new(size_t size) { return bench::Allocate(size); }
void* operator new[](size_t size) { return bench::Allocate(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return bench::Allocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return bench::Allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t) noexcept { std::free(block); }

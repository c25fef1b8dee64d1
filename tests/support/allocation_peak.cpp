// Replaces the program's operator new, which counts what the allocator sets aside and not only what was asked
// for.
#include "tests/support/allocation_peak.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> held{0};
std::atomic<std::size_t> peak{0};

void Add(std::size_t bytes) {
  const std::size_t now = held += bytes;
  std::size_t most = peak;
  while (most < now && !peak.compare_exchange_weak(most, now)) {
  }
}

void Free(void* memory) {
  if (memory == nullptr) return;
  held -= ::malloc_usable_size(memory);
  std::free(memory);
}

}  // namespace

namespace test_support {

AllocationPeak::AllocationPeak() : before_(held) {
  peak = before_;
}

std::size_t AllocationPeak::Bytes() const {
  return peak - before_;
}

}  // namespace test_support

void* operator new(std::size_t size) {
  void* const memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  Add(::malloc_usable_size(memory));
  return memory;
}

void operator delete(void* memory) noexcept {
  Free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  Free(memory);
}

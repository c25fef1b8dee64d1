#include "tests/support/refused_allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocationsLeft{-1};  // negative: none is refused
std::atomic<bool> refusesForGood{false};
std::atomic<bool> ofAllThreads{false};
std::atomic<long> refusals{0};
thread_local bool isThisThread = false;

bool IsRefused() {
  if (allocationsLeft < 0 || !(ofAllThreads || isThisThread)) return false;
  const long left = allocationsLeft--;
  if (left > 0) return false;
  if (refusesForGood) allocationsLeft = 0;
  ++refusals;
  return true;
}

}  // namespace

namespace test_support {

RefusedAllocations::RefusedAllocations(Of threads, long granted, bool forGood) {
  refusals = 0;
  refusesForGood = forGood;
  ofAllThreads = threads == Of::AllThreads;
  isThisThread = true;
  allocationsLeft = granted;
}

RefusedAllocations::~RefusedAllocations() {
  End();
}

void RefusedAllocations::End() {
  allocationsLeft = -1;
  isThisThread = false;
}

long RefusedAllocations::Count() const {
  return refusals;
}

}  // namespace test_support

// g++ inlines these operators and then takes the memory of the one for the memory of another.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

void* operator new(std::size_t size) {
  void* const memory = IsRefused() ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return IsRefused() ? nullptr : std::malloc(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}

// Replaces the program's allocation functions. The counter is switched on by a watch only, so that the start
// of the program and of its threads passes untouched.
#include "tests/support/allocation_watch.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORBEL_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ORBEL_SANITIZED 1
#endif
#endif

namespace {

thread_local int watches = 0;
thread_local int allocations = 0;

void Count() {
  if (watches > 0) ++allocations;
}

}  // namespace

namespace test_support {

AllocationWatch::AllocationWatch() : before_(allocations) {
  ++watches;
}

AllocationWatch::~AllocationWatch() {
  --watches;
}

int AllocationWatch::Count() const {
  return allocations - before_;
}

}  // namespace test_support

#ifdef ORBEL_SANITIZED

void* operator new(std::size_t size) {
  Count();
  void* const memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

#else

// operator new ends here as well.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) {
  Count();
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  Count();
  return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
  Count();
  return __libc_realloc(memory, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  Count();
  return __libc_memalign(alignment, size);
}
}

#endif

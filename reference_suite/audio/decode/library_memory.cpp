#include "reference_suite/audio/decode/library_memory.h"

#include <sys/mman.h>

#include <atomic>
#include <new>

namespace tesk_audio {

namespace {

// What a library takes for one file, several times over; and the stack of a thread that is started meanwhile.
constexpr std::size_t kClaimBytes = std::size_t{16} << 20;

std::atomic<std::size_t> claims{0};

bool IsFree(std::size_t bytes) {
  void* const taken = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (taken == MAP_FAILED) return false;
  ::munmap(taken, bytes);
  return true;
}

}  // namespace

LibraryMemoryClaim::LibraryMemoryClaim() {
  if (IsFree(++claims * kClaimBytes)) return;
  --claims;
  throw std::bad_alloc();
}

LibraryMemoryClaim::~LibraryMemoryClaim() {
  --claims;
}

void RequireMemoryBesidesClaims(std::size_t bytes) {
  if (!IsFree(bytes + claims * kClaimBytes)) throw std::bad_alloc();
}

}  // namespace tesk_audio

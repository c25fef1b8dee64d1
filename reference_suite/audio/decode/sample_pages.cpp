#include "reference_suite/audio/decode/sample_pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <new>

#include "reference_suite/audio/decode/library_memory.h"

namespace tesk_audio {

SamplePages::SamplePages() {
  RequireMemoryBesidesClaims(2 * kBytes);
  // Twice as much, so that an aligned piece lies in it; what stands over goes back at once.
  void* const taken = ::mmap(nullptr, 2 * kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (taken == MAP_FAILED) throw std::bad_alloc();
  auto* const bytes = static_cast<char*>(taken);
  const std::size_t over = reinterpret_cast<std::uintptr_t>(bytes) % kBytes;
  const std::size_t before = over == 0 ? 0 : kBytes - over;
  if (before > 0) ::munmap(bytes, before);
  ::munmap(bytes + before + kBytes, kBytes - before);
  start_ = bytes + before;
  // Advice: a system that does not take it gives small pages.
  ::madvise(start_, kBytes, MADV_HUGEPAGE);
}

SamplePages::~SamplePages() {
  ::munmap(start_, bytes_);
}

void SamplePages::GiveBackBehind(std::size_t bytes) {
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const std::size_t keep = (bytes + page - 1) / page * page;
  if (keep == 0 || keep >= bytes_) return;
  if (::munmap(static_cast<char*>(start_) + keep, bytes_ - keep) == 0) bytes_ = keep;
}

}  // namespace tesk_audio

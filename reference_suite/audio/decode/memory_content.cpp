#include "reference_suite/audio/decode/memory_content.h"

#include <algorithm>
#include <utility>

namespace tesk_audio {

MemoryContent::MemoryContent(std::unique_ptr<FrameStore> store, double rateHz)
    : store_(std::move(store)), rateHz_(rateHz) {}

unsigned MemoryContent::Read(long long start, long long* count, void* buffer) const {
  const long long total = store_->FrameCount();
  const bool inside = start >= 0 && start < total;
  *count = inside ? std::clamp(*count, 0LL, total - start) : 0;
  store_->Read(start, *count, buffer);
  return static_cast<unsigned>(*count);
}

}  // namespace tesk_audio

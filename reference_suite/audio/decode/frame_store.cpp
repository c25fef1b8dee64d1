#include "reference_suite/audio/decode/frame_store.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tesk_audio {

float* FrameStore::Tail_(std::size_t* room) {
  const auto used = static_cast<std::size_t>(frames_) % kBlockFrames;
  const auto block = static_cast<std::size_t>(frames_) / kBlockFrames;
  if (block == blocks_.size()) {
    // Owned before the list grows, which can fail as well.
    std::unique_ptr<float[]> fresh(new float[kBlockFrames * channels_]);
    blocks_.push_back(std::move(fresh));
  }
  *room = kBlockFrames - used;
  return blocks_[block].get() + used * channels_;
}

void FrameStore::Append(const float* frames, std::size_t count) {
  while (count > 0) {
    std::size_t room = 0;
    float* tail = Tail_(&room);
    const std::size_t part = std::min(room, count);
    std::copy_n(frames, part * channels_, tail);
    frames += part * channels_;
    frames_ += static_cast<long long>(part);
    count -= part;
  }
}

void FrameStore::AppendSilence(std::size_t count) {
  while (count > 0) {
    std::size_t room = 0;
    float* tail = Tail_(&room);
    const std::size_t part = std::min(room, count);
    std::fill_n(tail, part * channels_, 0.0F);
    frames_ += static_cast<long long>(part);
    count -= part;
  }
}

void FrameStore::Truncate(long long count) {
  if (count >= frames_) return;
  frames_ = count;
  const auto needed = (static_cast<std::size_t>(count) + kBlockFrames - 1) / kBlockFrames;
  blocks_.resize(needed);
}

void FrameStore::Read(long long start, long long count, void* buffer) const {
  auto* out = static_cast<char*>(buffer);
  const std::size_t frameBytes = channels_ * sizeof(float);
  while (count > 0) {
    const auto offset = static_cast<std::size_t>(start) % kBlockFrames;
    const auto block = static_cast<std::size_t>(start) / kBlockFrames;
    const std::size_t part = std::min(kBlockFrames - offset, static_cast<std::size_t>(count));
    std::memcpy(out, blocks_[block].get() + offset * channels_, part * frameBytes);
    out += part * frameBytes;
    start += static_cast<long long>(part);
    count -= static_cast<long long>(part);
  }
}

}  // namespace tesk_audio

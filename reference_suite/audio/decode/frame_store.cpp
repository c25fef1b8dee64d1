#include "reference_suite/audio/decode/frame_store.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace tesk_audio {

FrameStore::FrameStore(unsigned channels)
    : channels_(channels), blockFrames_(SamplePages::kBytes / sizeof(float) / channels) {}

float* FrameStore::Room(std::size_t* room) {
  const auto used = static_cast<std::size_t>(frames_) % blockFrames_;
  const auto block = static_cast<std::size_t>(frames_) / blockFrames_;
  if (block == blocks_.size()) {
    // Owned before the list grows, which can fail as well.
    auto fresh = std::make_unique<SamplePages>();
    blocks_.push_back(std::move(fresh));
  }
  *room = blockFrames_ - used;
  return blocks_[block]->Samples() + used * channels_;
}

void FrameStore::Append(const float* frames, std::size_t count) {
  while (count > 0) {
    std::size_t room = 0;
    float* tail = Room(&room);
    const std::size_t part = std::min(room, count);
    std::copy_n(frames, part * channels_, tail);
    frames += part * channels_;
    Added(part);
    count -= part;
  }
}

void FrameStore::AppendSilence(std::size_t count) {
  while (count > 0) {
    std::size_t room = 0;
    float* tail = Room(&room);
    const std::size_t part = std::min(room, count);
    std::fill_n(tail, part * channels_, 0.0F);
    Added(part);
    count -= part;
  }
}

void FrameStore::Append(FrameStore&& next) {
  blocks_.insert(blocks_.end(), std::make_move_iterator(next.blocks_.begin()),
                 std::make_move_iterator(next.blocks_.end()));
  frames_ += next.frames_;
  next.blocks_.clear();
  next.frames_ = 0;
}

void FrameStore::Truncate(long long count) {
  if (count >= frames_) return;
  frames_ = count;
  const auto needed = (static_cast<std::size_t>(count) + blockFrames_ - 1) / blockFrames_;
  blocks_.resize(needed);
}

void FrameStore::Close() {
  const std::size_t used = static_cast<std::size_t>(frames_) % blockFrames_;
  if (used > 0) blocks_.back()->GiveBackBehind(used * channels_ * sizeof(float));
}

void FrameStore::Read(long long start, long long count, void* buffer) const {
  auto* out = static_cast<char*>(buffer);
  const std::size_t frameBytes = channels_ * sizeof(float);
  while (count > 0) {
    const auto offset = static_cast<std::size_t>(start) % blockFrames_;
    const auto block = static_cast<std::size_t>(start) / blockFrames_;
    const std::size_t part = std::min(blockFrames_ - offset, static_cast<std::size_t>(count));
    std::memcpy(out, blocks_[block]->Samples() + offset * channels_, part * frameBytes);
    out += part * frameBytes;
    start += static_cast<long long>(part);
    count -= static_cast<long long>(part);
  }
}

}  // namespace tesk_audio

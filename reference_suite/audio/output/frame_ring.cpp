#include "reference_suite/audio/output/frame_ring.h"

#include <algorithm>
#include <bit>

namespace tesk_audio {

FrameRing::FrameRing(std::size_t frames, unsigned channels, std::size_t kept)
    : mask_(std::bit_ceil(std::max<std::size_t>(frames + kept, 1)) - 1),
      channels_(channels),
      kept_(kept),
      samples_((mask_ + 1) * channels) {}

std::size_t FrameRing::GetFree() const {
  const std::size_t used = static_cast<std::size_t>(GetWritePosition() - GetReadPosition()) + kept_;
  return mask_ + 1 - std::min(used, mask_ + 1);
}

std::size_t FrameRing::GetAvailable() const {
  return static_cast<std::size_t>(GetWritePosition() - GetReadPosition());
}

void FrameRing::Write(const float* frames, std::size_t count) {
  const std::uint64_t position = write_.load(std::memory_order_relaxed);
  const std::size_t start = static_cast<std::size_t>(position) & mask_;
  const std::size_t first = std::min(count, mask_ + 1 - start);
  std::copy_n(frames, first * channels_, samples_.data() + start * channels_);
  std::copy_n(frames + first * channels_, (count - first) * channels_, samples_.data());
  write_.store(position + count, std::memory_order_release);
}

void FrameRing::Read(float* frames, std::size_t count) {
  const std::uint64_t position = read_.load(std::memory_order_relaxed);
  const std::size_t start = static_cast<std::size_t>(position) & mask_;
  const std::size_t first = std::min(count, mask_ + 1 - start);
  std::copy_n(samples_.data() + start * channels_, first * channels_, frames);
  std::copy_n(samples_.data(), (count - first) * channels_, frames + first * channels_);
  furthest_ = std::max(furthest_, position + count);
  read_.store(position + count, std::memory_order_release);
}

void FrameRing::SkipTo(std::uint64_t position) {
  if (position <= read_.load(std::memory_order_relaxed)) return;
  furthest_ = std::max(furthest_, position);
  skipped_ = position;
  read_.store(position, std::memory_order_release);
}

void FrameRing::GoBackTo(std::uint64_t position) {
  const std::uint64_t oldest = furthest_ > kept_ ? furthest_ - kept_ : 0;
  const std::uint64_t target = std::max({position, oldest, skipped_});
  if (target < read_.load(std::memory_order_relaxed)) read_.store(target, std::memory_order_release);
}

}  // namespace tesk_audio

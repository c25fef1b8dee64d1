#include "reference_suite/audio/output/frame_ring.h"

#include <algorithm>
#include <bit>

namespace tesk_audio {

FrameRing::FrameRing(std::size_t frames, unsigned channels)
    : mask_(std::bit_ceil(std::max<std::size_t>(frames, 1)) - 1),
      channels_(channels),
      samples_((mask_ + 1) * channels) {}

std::size_t FrameRing::GetFree() const {
  return mask_ + 1 - static_cast<std::size_t>(GetWritePosition() - GetReadPosition());
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
  read_.store(position + count, std::memory_order_release);
}

void FrameRing::SkipTo(std::uint64_t position) {
  if (position > read_.load(std::memory_order_relaxed)) read_.store(position, std::memory_order_release);
}

}  // namespace tesk_audio

#include "reference_suite/audio/stretch/raised_frames.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tesk_audio {

namespace {

constexpr std::size_t kReach = InBetweenReader::kReach;

}  // namespace

RaisedFrames::RaisedFrames(unsigned channels, std::size_t mostFrames)
    : channels_(channels),
      most_(2 * mostFrames),
      held_(2 * most_ * channels),
      reader_(*this, channels, most_) {}

void RaisedFrames::Begin(double step) {
  count_ = 0;
  place_ = 0.0;
  step_ = step;
}

void RaisedFrames::Put(const float* frames, std::size_t count) {
  ForgetWhatIsPassed_();
  if (held_.size() < (count_ + count) * channels_) held_.resize((count_ + count) * channels_);
  std::copy_n(frames, count * channels_, held_.data() + count_ * channels_);
  count_ += count;
}

void RaisedFrames::ForgetWhatIsPassed_() {
  const auto reached = static_cast<std::size_t>(place_);
  if (reached <= kReach) return;
  const std::size_t passed = std::min(reached - kReach, count_);
  count_ -= passed;
  place_ -= static_cast<double>(passed);
  std::copy_n(held_.data() + passed * channels_, count_ * channels_, held_.data());
}

std::size_t RaisedFrames::Take(float* frames, std::size_t room) {
  // The last that can come out lies so far before the end.
  const double last = static_cast<double>(count_) - static_cast<double>(kReach) - 1.0;
  if (place_ > last) return 0;
  const double ready = std::floor((last - place_) / step_) + 1.0;
  const double most = std::floor(static_cast<double>(most_) / step_);
  const std::size_t count = std::min(room, static_cast<std::size_t>(std::min(ready, most)));
  reader_.Read(place_, step_, std::numeric_limits<long long>::max() / 2, frames, count);
  place_ += step_ * static_cast<double>(count);
  return count;
}

void RaisedFrames::ReadAt(long long index, float* frames, std::size_t count) {
  const auto before =
      static_cast<std::size_t>(std::clamp<long long>(-index, 0, static_cast<long long>(count)));
  std::fill_n(frames, before * channels_, 0.0F);
  const auto from = static_cast<std::size_t>(std::max(index, 0LL));
  const std::size_t known = std::min(count - before, count_ - std::min(from, count_));
  std::copy_n(held_.data() + from * channels_, known * channels_, frames + before * channels_);
  std::fill_n(frames + (before + known) * channels_, (count - before - known) * channels_, 0.0F);
}

}  // namespace tesk_audio

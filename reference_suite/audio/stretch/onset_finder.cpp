#include "reference_suite/audio/stretch/onset_finder.h"

#include <algorithm>
#include <cmath>

namespace tesk_audio {

namespace {

// Short enough to tell places by, and long enough that of two of them one is loud, wherever waves pass
// through zero.
constexpr double kSliceSeconds = 1.0 / 3000.0;
constexpr double kMostSeconds = 0.003;
constexpr double kBeforeSeconds = 0.008;  // half a wave of the lowest tones
// How many times the power of the loudest slice before it a rise has.
constexpr double kAbove = 2.0;

std::size_t CountOf(double seconds) {
  return static_cast<std::size_t>(std::lround(seconds / kSliceSeconds));
}

}  // namespace

OnsetFinder::OnsetFinder(FrameSource& source, double rateHz, unsigned channels)
    : source_(source),
      channels_(channels),
      slice_(static_cast<std::size_t>(std::lround(kSliceSeconds * rateHz))),
      most_(CountOf(kMostSeconds)),
      before_(CountOf(kBeforeSeconds)),
      powers_(before_ + most_ + 1) {
  frames_.resize((powers_.size() * slice_ + 1) * channels);
}

long long OnsetFinder::Find(long long seen) {
  // One frame more: the first step leads from it.
  source_.ReadAt(seen - static_cast<long long>((before_ + most_) * slice_ + 1), frames_.data(),
                 frames_.size() / channels_);
  MeasureFrames_();
  const std::size_t whole = ReachBack_();
  MeasureSteps_();
  return seen - static_cast<long long>(std::max(whole, ReachBack_()) * slice_);
}

void OnsetFinder::MeasureFrames_() {
  const float* frame = frames_.data() + channels_;
  for (double& power : powers_) {
    power = 0.0;
    for (std::size_t i = 0; i < slice_ * channels_; ++i, ++frame) {
      power += static_cast<double>(*frame) * static_cast<double>(*frame);
    }
  }
}

void OnsetFinder::MeasureSteps_() {
  const float* frame = frames_.data() + channels_;
  for (double& power : powers_) {
    power = 0.0;
    for (std::size_t i = 0; i < slice_ * channels_; ++i, ++frame) {
      const double step = static_cast<double>(*frame) - static_cast<double>(*(frame - channels_));
      power += step * step;
    }
  }
}

std::size_t OnsetFinder::ReachBack_() const {
  const auto end = powers_.begin() + static_cast<std::ptrdiff_t>(before_);
  const double quiet = kAbove * *std::max_element(powers_.begin(), end);
  std::size_t back = 0;
  for (std::size_t i = 0; i <= most_ && i <= back + 1; ++i) {
    if (powers_[powers_.size() - 1 - i] > quiet) back = i;
  }
  return back;
}

}  // namespace tesk_audio

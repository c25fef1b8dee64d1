#include "reference_suite/audio/stretch/level_watch.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tesk_audio {

namespace {

constexpr double kBlockSeconds = 0.01;
// The share of its power that a weakened sound keeps at most, and the power that is worth a look. Noise loses
// three decibels whenever it is stretched to twice its length or half of it.
constexpr double kWeak = 0.5;
constexpr double kFaint = 1e-8;

}  // namespace

LevelWatch::LevelWatch(double rateHz, unsigned channels)
    : channels_(channels), blockFrames_(static_cast<std::size_t>(std::ceil(kBlockSeconds * rateHz))) {}

void LevelWatch::Forget() {
  in_ = out_ = {};
  known_ = 0;
}

void LevelWatch::Sum::Add(const float* samples, std::size_t count, unsigned channels) {
  float sum = 0.0F;
  for (std::size_t i = 0; i < count * channels; ++i) sum += samples[i] * samples[i];
  power += static_cast<double>(sum);
  frames += count;
}

void LevelWatch::See(const float* in, std::size_t inFrames, const float* out, std::size_t outFrames) {
  in_.Add(in, inFrames, channels_);
  out_.Add(out, outFrames, channels_);
  if (out_.frames < blockFrames_ || in_.frames == 0) return;
  blocks_[index_] = {in_.Mean(), out_.Mean()};
  index_ = (index_ + 1) % kBlocks;
  known_ = std::min(known_ + 1, kBlocks);
  in_ = out_ = {};
}

bool LevelWatch::IsWeakened() const {
  if (known_ < kBlocks) return false;
  double weakest = std::numeric_limits<double>::max();
  double sum = 0.0;
  for (std::size_t age = 0; age < kBlocks; ++age) {
    const Block& block = blocks_[(index_ + kBlocks - 1 - age) % kBlocks];
    weakest = std::min(weakest, block.in);
    if (age < kAveraged) sum += block.out;
  }
  return weakest > kFaint && sum / static_cast<double>(kAveraged) < kWeak * weakest;
}

}  // namespace tesk_audio

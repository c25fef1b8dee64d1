#include "reference_suite/audio/stretch/seam_level.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tesk_audio {

namespace {

constexpr double kBlockSeconds = 0.001;
// A window's power may be so many times beyond that of the music. What is more is squared, and those of all
// windows added up: so much is worth a change.
constexpr double kFine = 1.06;
constexpr double kHeard = 0.01;
// The most that a frame is raised and lowered; in steps of as much.
constexpr double kMostRaised = 1.0;
constexpr double kMostLowered = -0.5;
constexpr double kStep = 0.1;
// What a change costs in that, for twice the gain: the smallest is best among those that do.
constexpr double kCost = 0.03;
constexpr std::array<std::size_t, 5> kRises{2, 4, 6, 8, 10};
constexpr std::array<std::size_t, 3> kFalls{5, 10, 18};
// How many times as far as the music's own a bend may go.
constexpr float kMostBent = 1.15F;
constexpr std::size_t kLeastFall = 3;
constexpr double kFaint = 1e-9;

}  // namespace

SeamLevel::SeamLevel(double rateHz, unsigned channels)
    : channels_(channels),
      block_(std::max<std::size_t>(1, static_cast<std::size_t>(std::lround(kBlockSeconds * rateHz)))),
      before_(kWindow * block_ * channels),
      gains_(kWindow * block_) {}

void SeamLevel::See(const float* frames, std::size_t count) {
  const std::size_t fresh = std::min(count, GetFrames());
  std::copy(before_.begin() + fresh * channels_, before_.end(), before_.begin());
  std::copy_n(frames + (count - fresh) * channels_, fresh * channels_, before_.end() - fresh * channels_);
}

SeamLevel::Block SeamLevel::Measure_(const float* frames) const {
  float power = 0.0F;
  float peak = 0.0F;
  float bend = 0.0F;
  for (std::size_t i = 0; i < block_ * channels_; ++i) {
    power += frames[i] * frames[i];
    peak = std::max(peak, std::fabs(frames[i]));
    if (i < 2 * channels_) continue;
    const float last = frames[i] - frames[i - channels_];
    bend = std::max(bend, std::fabs(last - (frames[i - channels_] - frames[i - 2 * channels_])));
  }
  return {static_cast<double>(power), peak, bend};
}

void SeamLevel::LetReach_(const Block& block) {
  peak_ = std::max(peak_, block.peak);
  bend_ = std::max(bend_, block.bend);
}

void SeamLevel::SetAround(const float* around) {
  std::array<double, kAround> powers;
  peak_ = bend_ = 0.0F;
  loudest_ = 0.0;
  weakest_ = std::numeric_limits<double>::max();
  double power = 0.0;
  for (std::size_t i = 0; i < kAround; ++i) {
    const Block block = Measure_(around + i * block_ * channels_);
    LetReach_(block);
    powers[i] = block.power;
    power += powers[i];
    if (i >= kWindow) power -= powers[i - kWindow];
    if (i + 1 < kWindow) continue;
    weakest_ = std::min(weakest_, power);
    loudest_ = std::max(loudest_, power);
  }
}

double SeamLevel::Bump::At(double block) const {
  const auto up = static_cast<double>(rise);
  const auto end = static_cast<double>(length);
  if (block >= end) return 1.0;
  const double way = block < up ? block / up : (end - block) / (end - up);
  return 1.0 + height * way * way * (3.0 - 2.0 * way);
}

float SeamLevel::GainOf_(const Bump& bump, std::size_t frame) const {
  return static_cast<float>(bump.At((static_cast<double>(frame) + 0.5) / static_cast<double>(block_)));
}

double SeamLevel::BeyondWith_(const Bump& bump) const {
  double power = 0.0;
  double beyond = 0.0;
  std::array<double, 2 * kWindow> powers;
  for (std::size_t i = 0; i < known_; ++i) {
    const double gain = i < kWindow ? 1.0 : bump.At(static_cast<double>(i - kWindow) + 0.5);
    powers[i] = span_[i].power * gain * gain;
    power += powers[i];
    if (i < kWindow) continue;
    power -= powers[i - kWindow];
    const double excess = std::max(weakest_ / power, power / loudest_) - kFine;
    if (excess > 0.0) beyond += excess * excess;
  }
  return beyond;
}

bool SeamLevel::GoesTooFarWith_(const Bump& bump, const float* after) const {
  std::array<float, 3> gains{1.0F, 1.0F, 1.0F};
  for (std::size_t i = 0; i < bump.length * block_; ++i) {
    gains = {gains[1], gains[2], GainOf_(bump, i)};
    const Block& plain = span_[kWindow + i / block_];
    const float mostBend = std::max(kMostBent * bend_, plain.bend);
    const float most = std::max(peak_, plain.peak);
    const float* at = after + i * channels_;
    for (unsigned channel = 0; channel < channels_; ++channel, ++at) {
      const float here = gains[2] * at[0];
      if (std::fabs(here) > most) return true;
      if (i < 2) continue;
      const float last = gains[1] * at[-static_cast<std::ptrdiff_t>(channels_)];
      const float before = gains[0] * at[-2 * static_cast<std::ptrdiff_t>(channels_)];
      if (std::fabs(here - 2.0F * last + before) > mostBend) return true;
    }
  }
  return false;
}

SeamLevel::Bump SeamLevel::FindBump_(const float* after) const {
  Bump best;
  double least = BeyondWith_(best);
  for (double height = kMostLowered; height <= kMostRaised + 0.5 * kStep; height += kStep) {
    for (const std::size_t rise : kRises) {
      for (const std::size_t fall : kFalls) {
        const Bump bump{height, rise, std::min(rise + fall, known_ - kWindow)};
        if (bump.length < rise + kLeastFall) continue;
        const double cost = BeyondWith_(bump) + kCost * height * height;
        if (cost >= least || GoesTooFarWith_(bump, after)) continue;
        least = cost;
        best = bump;
      }
    }
  }
  return best;
}

bool SeamLevel::Fit(const float* after, std::size_t frames) {
  known_ = kWindow + std::min(frames / block_, kWindow);
  for (std::size_t i = 0; i < known_; ++i) {
    const bool isBefore = i < kWindow;
    span_[i] = Measure_(isBefore ? before_.data() + i * block_ * channels_
                                 : after + (i - kWindow) * block_ * channels_);
    if (isBefore) LetReach_(span_[i]);
  }
  if (weakest_ < kFaint || BeyondWith_({}) < kHeard) return false;
  // Where nothing else cross-fades any more, all of it is music.
  for (std::size_t i = 3 * kWindow / 2; i < known_; ++i) LetReach_(span_[i]);
  const Bump bump = FindBump_(after);
  if (bump.length == 0) return false;
  for (std::size_t i = 0; i < gains_.size(); ++i) gains_[i] = GainOf_(bump, i);
  return true;
}

}  // namespace tesk_audio

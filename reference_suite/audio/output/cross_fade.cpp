#include "reference_suite/audio/output/cross_fade.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tesk_audio {

namespace {

constexpr double kQuarter = std::numbers::pi / 2.0;

// How far along a fade of `frames` the middle of its frame `i` is.
double Way(std::size_t i, std::size_t frames) {
  return (static_cast<double>(i) + 0.5) / static_cast<double>(frames);
}

// What the two sounds are multiplied by.
struct Gains {
  double in = 1.0;
  double out = 0.0;
};

Gains GainsAt(std::size_t i, std::size_t frames, double correlation) {
  if (i >= frames) return {};
  const double way = Way(i, frames);
  // It sets out and arrives without a bend, which would be heard as a click in a low and steady tone.
  const double angle = kQuarter * way * way * (3.0 - 2.0 * way);
  const double in = std::sin(angle);
  const double out = std::cos(angle);
  // Where the two weaken each other, making up for it would bend a low tone many times as much as it sways by
  // itself.
  const double level = 1.0 / std::sqrt(1.0 + 2.0 * std::max(correlation, 0.0) * in * out);
  return {in * level, out * level};
}

}  // namespace

CrossFade::CrossFade(unsigned channels, std::size_t frames, std::size_t most)
    : channels_(channels),
      usual_(frames),
      in_(std::max(frames, most)),
      out_(in_.size()),
      fresh_(in_.size() * channels),
      outgoing_(fresh_.size()) {}

void CrossFade::GoOnInOutgoing(std::size_t frames) {
  Apply(fresh_.data(), frames);
  Cancel();
}

void CrossFade::Take_(std::size_t frames) {
  GoOnInOutgoing(frames);
  outgoing_.swap(fresh_);
  length_ = frames;
  position_ = 0;
}

void CrossFade::Begin() {
  Take_(usual_);
  for (std::size_t i = 0; i < usual_; ++i) {
    const double angle = kQuarter * Way(i, usual_);
    in_[i] = static_cast<float>(std::sin(angle));
    out_[i] = static_cast<float>(std::cos(angle));
  }
}

void CrossFade::Begin(std::size_t frames, double correlation) {
  Take_(frames);
  for (std::size_t i = 0; i < frames; ++i) {
    const Gains gains = GainsAt(i, frames, correlation);
    in_[i] = static_cast<float>(gains.in);
    out_[i] = static_cast<float>(gains.out);
  }
}

double CrossFade::BendWith(const float* coming, std::size_t frames, double correlation,
                           std::size_t within) const {
  std::array<Gains, 3> gains{GainsAt(0, frames, correlation), GainsAt(1, frames, correlation)};
  const auto mixed = [&](std::size_t i, unsigned channel) {
    const std::size_t sample = i * channels_ + channel;
    return gains[i % 3].in * static_cast<double>(coming[sample]) +
           gains[i % 3].out * static_cast<double>(fresh_[sample]);
  };
  double largest = 0.0;
  for (std::size_t i = 2; i < within; ++i) {
    gains[i % 3] = GainsAt(i, frames, correlation);
    for (unsigned channel = 0; channel < channels_; ++channel) {
      const double bend = mixed(i, channel) - 2.0 * mixed(i - 1, channel) + mixed(i - 2, channel);
      largest = std::max(largest, std::fabs(bend));
    }
  }
  return largest;
}

void CrossFade::BeginTail(std::size_t frames) {
  Begin(frames, 0.0);
  std::fill_n(in_.begin(), frames, 1.0F);
}

void CrossFade::Scale(const float* gains, std::size_t frames) {
  if (!IsActive()) length_ = position_ = 0;
  const std::size_t end = std::min(position_ + frames, in_.size());
  if (length_ < end) {
    std::fill(in_.begin() + length_, in_.begin() + end, 1.0F);
    std::fill(out_.begin() + length_, out_.begin() + end, 0.0F);
    std::fill(outgoing_.begin() + length_ * channels_, outgoing_.begin() + end * channels_, 0.0F);
    length_ = end;
  }
  for (std::size_t i = position_; i < end; ++i) {
    in_[i] *= *gains;
    out_[i] *= *gains++;
  }
}

void CrossFade::Apply(float* frames, std::size_t count) {
  position_ = Mix_(frames, count, position_);
}

void CrossFade::Preview(float* frames, std::size_t count) const {
  Mix_(frames, count, position_);
}

std::size_t CrossFade::Mix_(float* frames, std::size_t count, std::size_t position) const {
  const std::size_t end = std::min(length_, position + count);
  for (; position < end; ++position) {
    const float* from = outgoing_.data() + position * channels_;
    for (unsigned channel = 0; channel < channels_; ++channel, ++frames) {
      *frames = *frames * in_[position] + from[channel] * out_[position];
    }
  }
  return position;
}

}  // namespace tesk_audio

#include "host/demo/sound/oscillators.h"

#include <array>
#include <cmath>
#include <numbers>

#include "host/demo/sound/sound.h"

namespace orbel::host::demo {

namespace {

constexpr std::size_t kTableSize = 4096;

const std::array<float, kTableSize + 1>& SineTable() {
  static const auto table = [] {
    std::array<float, kTableSize + 1> values{};
    for (std::size_t index = 0; index <= kTableSize; ++index) {
      values[index] =
          static_cast<float>(std::sin(2.0 * std::numbers::pi * static_cast<double>(index) / kTableSize));
    }
    return values;
  }();
  return table;
}

// What rounds a jump of the sawtooth over one sample on either side of it.
double Rounding(double phase, double step) {
  if (phase < step) {
    const double part = phase / step - 1.0;
    return -part * part;
  }
  if (phase > 1.0 - step) {
    const double part = (phase - 1.0) / step + 1.0;
    return part * part;
  }
  return 0.0;
}

}  // namespace

SineWave::SineWave(double hertz, double phase) : phase_(phase), step_(hertz / kSampleRate) {}

float SineWave::Next(double bend) {
  const float value = At(phase_);
  phase_ += step_ * (1.0 + bend);
  phase_ -= std::floor(phase_);
  return value;
}

float SineWave::At(double phase) {
  const double position = (phase - std::floor(phase)) * kTableSize;
  const auto index = static_cast<std::size_t>(position);
  const auto fraction = static_cast<float>(position - static_cast<double>(index));
  const auto& table = SineTable();
  return table[index] + fraction * (table[index + 1] - table[index]);
}

SawWave::SawWave(double hertz, double phase) : phase_(phase), step_(hertz / kSampleRate) {}

float SawWave::Next(double bend) {
  const double step = step_ * (1.0 + bend);
  const double value = 2.0 * phase_ - 1.0 - Rounding(phase_, step);
  phase_ += step;
  phase_ -= std::floor(phase_);
  return static_cast<float>(value);
}

float Noise::Next() {
  state_ ^= state_ << 13;
  state_ ^= state_ >> 17;
  state_ ^= state_ << 5;
  return static_cast<float>(static_cast<std::int32_t>(state_)) / 2147483648.0F;
}

LowPass::LowPass(double hertz)
    : factor_(static_cast<float>(1.0 - std::exp(-2.0 * std::numbers::pi * hertz / kSampleRate))) {}

}  // namespace orbel::host::demo

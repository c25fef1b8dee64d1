#pragma once

#include <cstdint>

namespace orbel::host::demo {

// A sine, read from a table: fast, and the same on every run.
class SineWave {
 public:
  explicit SineWave(double hertz, double phase = 0.0);

  // The next sample. `bend` is added to the step in periods: 0.01 raises the pitch by a hundredth.
  float Next(double bend = 0.0);

  // The value at `phase`, in periods; any number.
  static float At(double phase);

 private:
  double phase_;
  double step_;
};

// A sawtooth with its corner rounded, so that high notes do not fold back into audible ones.
class SawWave {
 public:
  SawWave(double hertz, double phase);

  float Next(double bend = 0.0);

 private:
  double phase_;
  double step_;
};

// White noise in [-1, 1) that is the same for the same seed.
class Noise {
 public:
  explicit Noise(std::uint32_t seed) : state_(seed * 2654435761U + 0x9E3779B9U) {}

  float Next();

 private:
  std::uint32_t state_;
};

// Lets through what lies below `hertz`, falling by 6 dB per octave above it.
class LowPass {
 public:
  explicit LowPass(double hertz);

  float Next(float sample) { return state_ += factor_ * (sample - state_); }

 private:
  float factor_;
  float state_ = 0.0F;
};

// What the low pass takes away.
class HighPass {
 public:
  explicit HighPass(double hertz) : below_(hertz) {}

  float Next(float sample) { return sample - below_.Next(sample); }

 private:
  LowPass below_;
};

}  // namespace orbel::host::demo

#pragma once

#include <cmath>

namespace tesk_audio {

// A number of samples together with a scale, seen from two sides: unscaled samples are samples of the song's
// own audio, scaled samples are what is left of them after division by the scale. Rounding is to the nearest
// integer, halves away from zero. A plain value.
template <typename Real, typename Integer>
class SampleCountBase {
 public:
  SampleCountBase(Integer unscaled, Real scale) : scale_(scale), count_(static_cast<Real>(unscaled)) {}

  Integer GetUnscaled() const { return static_cast<Integer>(std::round(count_)); }
  void SetUnscaled(Integer count) { count_ = static_cast<Real>(count); }

  Integer GetScaled() const { return static_cast<Integer>(std::round(count_ / scale_)); }
  // A remainder of less than half an unscaled sample becomes exactly 0.
  void SetScaled(Integer count) {
    count_ = static_cast<Real>(count) * scale_;
    if (GetUnscaled() == 0) count_ = 0;
  }

  Real GetScale() const { return scale_; }

 private:
  Real scale_;
  Real count_;
};

using SampleCount = SampleCountBase<long double, long long>;

}  // namespace tesk_audio

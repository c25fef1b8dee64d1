#pragma once

#include <cmath>
#include <limits>

#include "Sources/types.h"

// The arithmetic between seconds, ticks and samples. Which step is double and which is long double decides on
// which sample a tick begins: another order moves tick boundaries by a sample.

#ifdef __FAST_MATH__
#error "The timing core needs IEEE arithmetic: NaN comparisons and the order of rounding are contracts."
#endif
static_assert(std::numeric_limits<long double>::digits >= 64, "the timing core needs 80-bit long double");

namespace samples_ticks_converter {

// What the language leaves open is 0 here: a NaN, and values that 64 bits do not hold. They come from sample
// rates and tempos that no song has, and fail in the conversions' checks instead of in the arithmetic.
template <typename Real>
long long ToInteger(Real value) {
  constexpr Real kLimit = 9223372036854775808.0L;  // 2^63
  return value >= -kLimit && value < kLimit ? static_cast<long long>(value) : 0;
}

// Truncated to 64 bits, of which the low 32 are taken.
inline TickIndex ToTicks(double ticks) {
  return static_cast<TickIndex>(ToInteger(ticks));
}

// ToInteger(roundl(value)), bit for bit, without the call where the integer part surely fits: the fraction
// that is left after truncating is exact.
inline long long RoundedToInteger(long double value) {
  constexpr long double kSurelyFits = 4611686018427387904.0L;  // 2^62
  if (!(value > -kSurelyFits && value < kSurelyFits)) return ToInteger(::roundl(value));
  const auto whole = static_cast<long long>(value);
  const long double fraction = value - static_cast<long double>(whole);
  return whole + (fraction >= 0.5L) - (fraction <= -0.5L);
}

// Seconds in double, the product in long double, halves away from zero.
inline SampleCount RoundedSamples(double seconds, long double sampleRate) {
  return RoundedToInteger(static_cast<long double>(seconds) * sampleRate);
}

// Modulo 2^64, so that counts that no song reaches wrap instead of being undefined.
inline SampleCount AddSamples(SampleCount a, SampleCount b) {
  return static_cast<SampleCount>(static_cast<unsigned long long>(a) + static_cast<unsigned long long>(b));
}

// The product in long double, the result in double.
inline double SamplesPerTick(double secondsPerTick, long double sampleRate) {
  return static_cast<double>(static_cast<long double>(secondsPerTick) * sampleRate);
}

}  // namespace samples_ticks_converter

#include "reference_suite/audio/stretch/seam_match.h"

#include <algorithm>
#include <cmath>

namespace tesk_audio {

namespace {

// Below the first, two sounds go together so badly that time gives way, if that gains as much as the second.
constexpr double kBad = 0.3;
constexpr double kGain = 0.4;
// What the whole way to the side costs.
constexpr double kCost = 0.1;

SeamMatch BestWithin(const float* outgoing, const float* incoming, std::size_t samples, unsigned channels,
                     std::size_t reach, std::size_t within) {
  SeamMatch best{reach, -2.0};
  double bestScore = -2.0;
  for (std::size_t lag = reach - within; lag <= reach + within; ++lag) {
    const double correlation = Correlation(outgoing, incoming + lag * channels, samples);
    const double aside = std::fabs(static_cast<double>(lag) - static_cast<double>(reach));
    const double score = correlation - kCost * aside / static_cast<double>(std::max<std::size_t>(within, 1));
    if (score <= bestScore) continue;
    bestScore = score;
    best = {lag, correlation};
  }
  return best;
}

}  // namespace

double Correlation(const float* one, const float* other, std::size_t samples) {
  float both = 0.0F;
  float first = 0.0F;
  float second = 0.0F;
  for (std::size_t i = 0; i < samples; ++i) {
    both += one[i] * other[i];
    first += one[i] * one[i];
    second += other[i] * other[i];
  }
  const double size = std::sqrt(static_cast<double>(first) * static_cast<double>(second));
  return size > 1e-12 ? std::clamp(static_cast<double>(both) / size, -1.0, 1.0) : 0.0;
}

SeamMatch FindSeam(const float* outgoing, const float* incoming, std::size_t length, unsigned channels,
                   std::size_t reach, std::size_t near) {
  const std::size_t samples = length * channels;
  const SeamMatch match = BestWithin(outgoing, incoming, samples, channels, reach, std::min(near, reach));
  if (match.correlation >= kBad || near >= reach) return match;
  const SeamMatch further = BestWithin(outgoing, incoming, samples, channels, reach, reach);
  return further.correlation > match.correlation + kGain ? further : match;
}

}  // namespace tesk_audio

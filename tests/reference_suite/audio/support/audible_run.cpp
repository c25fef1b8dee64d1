#include "tests/reference_suite/audio/support/audible_run.h"

#include <algorithm>
#include <cmath>
#include <complex>

void AudibleRun::Play(const std::function<void()>& beforeStep) {
  Start();
  while (true) {
    if (beforeStep) beforeStep();
    const auto before = static_cast<double>(heard.size());
    if (!Step()) return;
    if (report.frames == 0) continue;
    const auto scale = static_cast<double>(report.scale);
    // Rounding to whole frames is the output's own affair: what lies between is counted exactly.
    const double place = pieces.empty() ? before
                                        : pieces.back().output +
                                              static_cast<double>(pieces.back().frames) / pieces.back().scale;
    pieces.push_back({report.sampleIndex, report.frames, place, scale});
  }
}

std::vector<double> AudibleRun::PlacesOf(long long frame) const {
  std::vector<double> places;
  for (const Piece& piece : pieces) {
    if (frame < piece.song || frame >= piece.song + piece.frames) continue;
    places.push_back(piece.output + static_cast<double>(frame - piece.song) / piece.scale);
  }
  return places;
}

std::shared_ptr<const std::vector<float>> Clicks(const std::vector<long long>& at, std::size_t frames) {
  auto sound = std::make_shared<std::vector<float>>(frames);
  for (const long long frame : at) (*sound)[static_cast<std::size_t>(frame)] = 0.9F;
  return sound;
}

std::shared_ptr<const std::vector<float>> Tones(const std::vector<double>& hertz, double level,
                                                std::size_t frames) {
  auto sound = std::make_shared<std::vector<float>>(frames);
  for (std::size_t i = 0; i < frames; ++i) {
    double sum = 0.0;
    for (const double each : hertz)
      sum += std::sin(2.0 * M_PI * each * static_cast<double>(i) / 48000.0 + each);
    (*sound)[i] = static_cast<float>(level * sum);
  }
  return sound;
}

double LoudestNear(const std::vector<float>& heard, double place, int reach, double rateHz) {
  const auto middle = static_cast<long long>(std::llround(place));
  const auto last = static_cast<long long>(heard.size()) - 1;
  long long best = std::clamp(middle, 0LL, last);
  for (long long i = std::max(0LL, middle - reach); i <= std::min(last, middle + reach); ++i) {
    const auto at = static_cast<std::size_t>(i);
    if (std::fabs(heard[at]) > std::fabs(heard[static_cast<std::size_t>(best)])) best = i;
  }
  return (static_cast<double>(best) - place) * 1000.0 / rateHz;
}

double Level(const std::vector<float>& heard, std::size_t from, std::size_t frames) {
  double sum = 0.0;
  for (std::size_t i = from; i < from + frames; ++i) sum += static_cast<double>(heard[i]) * heard[i];
  return std::sqrt(sum / static_cast<double>(frames));
}

namespace {

// How strong a sine is in a stretch of sound, under a window that is soft at both ends.
double Strength(const std::vector<float>& heard, std::size_t from, std::size_t frames, double hertz) {
  std::complex<double> sum;
  for (std::size_t i = 0; i < frames; ++i) {
    const double time = static_cast<double>(i);
    const double window = 0.5 - 0.5 * std::cos(2.0 * M_PI * time / static_cast<double>(frames));
    sum += window * heard[from + i] * std::polar(1.0, -2.0 * M_PI * hertz * time / 48000.0);
  }
  return std::abs(sum);
}

}  // namespace

double PitchNear(const std::vector<float>& heard, std::size_t from, std::size_t frames, double hertz) {
  double best = hertz;
  // From a semitone to a tenth of a cent, ever closer around the best so far.
  for (double step = 20.0; step >= 0.1; step /= 4.0) {
    const double middle = best;
    double strongest = -1.0;
    for (int i = -5; i <= 5; ++i) {
      const double each = middle * std::exp2(i * step / 1200.0);
      const double strength = Strength(heard, from, frames, each);
      if (strength <= strongest) continue;
      strongest = strength;
      best = each;
    }
  }
  return best;
}

double LargestStep(const std::vector<float>& heard, std::size_t from, std::size_t to) {
  double largest = 0.0;
  for (std::size_t i = from + 1; i < to; ++i) {
    largest = std::max(largest, std::fabs(static_cast<double>(heard[i]) - heard[i - 1]));
  }
  return largest;
}

double LargestBend(const std::vector<float>& heard, std::size_t from, std::size_t to) {
  double largest = 0.0;
  for (std::size_t i = from + 2; i < to; ++i) {
    const double bend =
        static_cast<double>(heard[i]) - 2.0 * static_cast<double>(heard[i - 1]) + heard[i - 2];
    largest = std::max(largest, std::fabs(bend));
  }
  return largest;
}

#include "reference_suite/audio/stretch/attack_offset.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tesk_audio {

namespace {

// At quarters of an octave from a stretch of 1/4 on, in milliseconds at 48 kHz, where half a window has 1,024
// frames (faster) and 2,048 frames (finer). The faster engine is not used beyond a stretch of 2.
constexpr int kFirst = -8;
constexpr std::array<double, 13> kFaster{12.83, 11.83, 10.53, 9.93,  8.63,   7.03,  5.18,
                                         2.93,  0.03,  -3.47, -7.67, -12.97, -19.57};
constexpr std::array<double, 17> kFiner{-0.37, -0.47, -0.37, -0.07, 0.08,  0.43,   0.48,   0.28,  -0.07,
                                        -0.67, -1.97, -3.67, -5.62, -7.77, -10.97, -14.17, -20.02};
// What the faster engine adds where the song is read more densely, which leaves out the highest frequencies.
constexpr double kDenserByAnOctave = 0.55;
// What the faster engine adds after a beginning where it shortens by an octave; nothing at all by three.
constexpr double kShorterAtFirst = -1.3;
constexpr double kFramesPerMillisecond = 48.0;

// The value at `place` of a curve of straight lines; beyond its ends it goes on as it ended.
template <typename Table>
double Along(const Table& table, double place) {
  const double last = static_cast<double>(table.size() - 1);
  const double at = std::clamp(place, 0.0, last);
  const auto before = static_cast<std::size_t>(std::min(std::floor(at), last - 1.0));
  const double between = at - static_cast<double>(before);
  return table[before] * (1.0 - between) + table[before + 1] * between;
}

}  // namespace

double MeasuredAttackOffset(StretchQuality quality, double stretch, double step) {
  const double place = 4.0 * std::log2(stretch) - kFirst;
  if (quality == StretchQuality::Finer) return Along(kFiner, place) * kFramesPerMillisecond / 2048.0;
  const double denser = -kDenserByAnOctave * std::log2(step);
  return (Along(kFaster, place) + denser) * kFramesPerMillisecond / 1024.0;
}

double MeasuredAttackOffsetAtFirst(StretchQuality quality, double stretch) {
  // What the finer one puts forward later on, it does not put forward at first.
  if (quality == StretchQuality::Finer) return std::max(0.0, -MeasuredAttackOffset(quality, stretch, 1.0));
  const double octaves = -std::log2(stretch);
  const double share = std::clamp(std::min(octaves, 1.5 - 0.5 * octaves), 0.0, 1.0);
  return share * kShorterAtFirst * kFramesPerMillisecond / 1024.0;
}

}  // namespace tesk_audio

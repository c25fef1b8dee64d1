#include "reference_suite/audio/stretch/stretched_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "tests/reference_suite/audio/support/recorded_song.h"

namespace {

using tesk_audio::StretchedStream;
using tesk_audio::StretchFactors;
using tesk_audio::StretchQuality;

constexpr double kRateHz = 48000.0;
constexpr long long kRise = 20'000;

// Noise over a low tone: it takes its time to rise.
std::vector<float> Rising(double seconds) {
  std::mt19937 random(3);
  std::normal_distribution<double> noise(0.0, 0.15);
  std::vector<float> sound(2 * kRise);
  for (std::size_t i = 0; i < sound.size(); ++i) {
    const double time = static_cast<double>(i) / kRateHz;
    const double since = time - static_cast<double>(kRise) / kRateHz;
    const double risen = std::clamp(since / seconds, 0.0, 1.0);
    sound[i] = static_cast<float>(0.15 * std::sin(2.0 * M_PI * 65.4 * time) + risen * noise(random));
  }
  return sound;
}

// Or beginning anew for it would lead back to the same beginning, and so for ever.
TEST(StretchedStream, AnAttackToBeginAnewForLiesBehindTheBeginning) {
  constexpr double kLeadSeconds = 0.0013;  // what is heard as recorded before an attack
  int attacks = 0;
  for (const StretchFactors factors : {StretchFactors{0.25, 0}, {0.5, 0}, {0.8, 0}, {1.0, -5}}) {
    for (const double rise : {0.001, 0.002, 0.003}) {
      RecordedSong song(Rising(rise), 1);
      StretchedStream stream(CreateStretchEngine(StretchQuality::Faster, kRateHz, 1), song, kRateHz, 1, true);
      for (long long begun = kRise - 600; begun < kRise + 120; begun += 8) {
        stream.Start(begun, factors, 120);
        stream.Peek(4'000);
        if (stream.GetAttack() == StretchedStream::kNever) continue;
        ++attacks;
        ASSERT_GT(stream.GetAttack(), begun + std::lround(kLeadSeconds * kRateHz * factors.scale))
            << factors.scale << ", " << factors.semitones << ", begun at " << begun - kRise << ", rise "
            << rise;
      }
    }
  }
  EXPECT_GT(attacks, 0);
}

}  // namespace

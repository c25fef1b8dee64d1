#include "reference_suite/audio/stretch/onset_finder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "tests/reference_suite/audio/support/recorded_song.h"

namespace {

using tesk_audio::OnsetFinder;

constexpr double kRateHz = 48000.0;
constexpr long long kOnset = 4'000;
constexpr double kSlice = 16.0;  // frames: it is not told more exactly

long long Find(const std::vector<float>& sound, long long seen) {
  RecordedSong song(sound, 2);
  return OnsetFinder(song, kRateHz, 2).Find(seen);
}

// A tone, from the onset on rising to full scale within that time.
void AddNote(std::vector<float>* sound, double hertz, double rise) {
  for (std::size_t i = kOnset; i < sound->size(); ++i) {
    const double seconds = static_cast<double>(i - kOnset) / kRateHz;
    (*sound)[i] += static_cast<float>(std::min(1.0, seconds / rise) * std::sin(2.0 * M_PI * hertz * seconds));
  }
}

std::vector<float> Tone(double hertz, double level) {
  std::vector<float> sound(8'000);
  for (std::size_t i = 0; i < sound.size(); ++i) {
    sound[i] =
        static_cast<float>(level * std::sin(2.0 * M_PI * hertz * static_cast<double>(i) / kRateHz + 1.0));
  }
  return sound;
}

TEST(OnsetFinder, TellsWhereASoftNoteBeginsHoweverLateItIsSeen) {
  for (const double hertz : {82.0, 220.0, 440.0, 1500.0}) {
    for (const double tail : {0.0, 0.03, 0.06}) {
      std::vector<float> sound = Tone(0.7 * hertz, tail);
      AddNote(&sound, hertz, 0.002);
      for (const long long late : {30LL, 60LL, 100LL}) {
        EXPECT_NEAR(static_cast<double>(Find(sound, kOnset + late)), kOnset, 2.0 * kSlice)
            << hertz << " Hz, " << late << " frames after its beginning, tail " << tail;
      }
    }
  }
}

TEST(OnsetFinder, LeavesAClickWhereItIsSeen) {
  std::vector<float> sound = Tone(110.0, 0.01);
  sound[kOnset + 5] = 0.9F;
  EXPECT_EQ(Find(sound, kOnset), kOnset);
}

TEST(OnsetFinder, HearsAHighRiseOverALowTone) {
  std::vector<float> sound = Tone(60.0, 0.8);
  for (std::size_t i = kOnset; i < sound.size(); ++i) sound[i] += i % 2 == 0 ? 0.2F : -0.2F;
  EXPECT_NEAR(static_cast<double>(Find(sound, kOnset + 64)), kOnset, kSlice);
}

TEST(OnsetFinder, DoesNotTakeWhatWentBeforeForTheRise) {
  std::mt19937 random(3);
  std::normal_distribution<float> normal(0.0F, 0.05F);
  std::vector<float> hiss(8'000);
  for (float& frame : hiss) frame = normal(random);
  EXPECT_EQ(Find(hiss, kOnset), kOnset) << "nothing rises in it";
  AddNote(&hiss, 330.0, 0.002);
  EXPECT_NEAR(static_cast<double>(Find(hiss, kOnset + 80)), kOnset, 3.0 * kSlice);
}

TEST(OnsetFinder, LooksBackNoFurtherThanThreeMilliseconds) {
  std::vector<float> sound(8'000);
  AddNote(&sound, 440.0, 0.05);
  EXPECT_GE(Find(sound, kOnset + 1'000), kOnset + 1'000 - 144);
}

}  // namespace

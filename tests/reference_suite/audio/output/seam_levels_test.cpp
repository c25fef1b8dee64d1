// What beats against itself is as loud where the stretcher comes in, changes and goes as elsewhere.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "tests/reference_suite/audio/support/audible_run.h"

namespace {

using tesk_audio::StretchQuality;

// The quietest and the loudest fiftieth of a second of a stretch of sound, in decibels.
std::pair<double, double> Range(const std::vector<float>& heard, std::size_t from, std::size_t to) {
  double quietest = 100.0;
  double loudest = -100.0;
  for (std::size_t i = from; i + 960 <= to; i += 60) {
    const double level = 20.0 * std::log10(Level(heard, i, 960));
    quietest = std::min(quietest, level);
    loudest = std::max(loudest, level);
  }
  return {quietest, loudest};
}

// A chord whose tones beat against each other, more than fifty times a second: two of its swells are further
// apart where a stretched one meets the recorded one, or another, than anywhere else.
struct Levels {
  int changes = 0;
  int beside = 0;  // with a fiftieth of a second more than a decibel beside all of the music around
  double weakest = 0.0;
  double loudest = 0.0;
};

Levels LevelsOfLiveChanges(const std::vector<double>& tones, unsigned seed) {
  constexpr long long kFrames = 720'000;
  AudibleRun run(
      Songs{{.frames = kFrames, .sound = Tones(tones, 0.5 / static_cast<double>(tones.size()), kFrames)}},
      5.0, 0.0, 48000.0, 1, StretchQuality::Finer);
  constexpr double kScales[] = {0.5, 0.6, 0.75, 0.9, 0.97, 1.0, 1.03, 1.1, 1.25, 1.5, 2.0};
  constexpr int kSemitones[] = {0, 0, 0, 0, -3, -1, 2, 5};
  std::mt19937 random(seed);
  std::vector<std::size_t> changes;
  int step = 0;
  run.Play([&] {
    if (++step % 80 != 0) return;
    // Every other time as recorded: entering and leaving are most of what a performer does.
    const bool isRecorded = step % 160 == 0;
    run.player.liveScale = isRecorded ? 1.0 : kScales[random() % 11];
    run.player.liveSemitones = isRecorded ? 0 : kSemitones[random() % 8];
    changes.push_back(run.heard.size());
  });
  Levels levels;
  for (std::size_t i = 0; i + 1 < changes.size(); ++i) {
    const std::size_t seam = changes[i];
    const std::size_t last = i == 0 ? 0 : changes[i - 1] + 4'000;
    const auto before = Range(run.heard, std::max(last, seam - 9'600), seam - 1'000);
    const auto after = Range(run.heard, seam + 4'000, std::min(changes[i + 1], seam + 12'600));
    const auto around = Range(run.heard, seam - 1'200, seam + 2'200);
    const double weak = std::min(before.first, after.first) - around.first;
    const double loud = around.second - std::max(before.second, after.second);
    ++levels.changes;
    levels.beside += weak > 1.0 || loud > 1.0 ? 1 : 0;
    levels.weakest = std::max(levels.weakest, weak);
    levels.loudest = std::max(levels.loudest, loud);
  }
  return levels;
}

TEST(LevelOfSeams, IsThatOfTheMusicAroundWithTheFinerEngine) {
  Levels all;
  for (const auto& tones :
       {std::vector<double>{220.0, 277.18, 329.63}, {146.8, 220.0, 293.7, 370.0, 440.0}}) {
    for (unsigned seed = 1; seed <= 2; ++seed) {
      const Levels levels = LevelsOfLiveChanges(tones, seed);
      all.changes += levels.changes;
      all.beside += levels.beside;
      all.weakest = std::max(all.weakest, levels.weakest);
      all.loudest = std::max(all.loudest, levels.loudest);
    }
  }
  EXPECT_GT(all.changes, 100);
  EXPECT_LE(20 * all.beside, all.changes);
  EXPECT_LE(all.weakest, 2.5);
  EXPECT_LE(all.loudest, 1.3);
}

}  // namespace

// The music follows the tempo map to the frame.

#include "host/demo/sound/perform.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/demo/score/phrase.h"
#include "host/demo/score/tempo_map.h"

namespace {

using namespace orbel::host::demo;

// The first frame from `start` on that is not silent.
std::size_t FirstSound(const StereoSound& sound, std::size_t start) {
  while (start < sound.FrameCount() && std::abs(sound.left[start]) < 1e-5F) ++start;
  return start;
}

Score WithRitardando() {
  Score score("Song", 480);
  score.Meter(1, 4, 4);
  score.Tempo(0, 120);
  score.Ramp(score.At(2), score.At(4), 120, 55, 16);
  score.End(score.At(5));
  return score;
}

TEST(Perform, HasExactlyTheFramesBetweenItsTicks) {
  const Score score = WithRitardando();
  const TempoMap whole(score, 0, kSampleRate);
  EXPECT_EQ(Perform(score, 0, score.End()).FrameCount(),
            static_cast<std::size_t>(whole.FrameAt(score.End())));
  const TempoMap fromTwo(score, score.At(2), kSampleRate);
  EXPECT_EQ(Perform(score, score.At(2), score.At(3)).FrameCount(),
            static_cast<std::size_t>(fromTwo.FrameAt(score.At(3))));
}

TEST(Perform, EveryNoteBeginsOnTheFrameOfItsTick) {
  for (const Tick tick : {0u, 480u, 1920u, 2077u, 3000u, 4561u, 6000u}) {
    Score score = WithRitardando();
    Part& part = score.Add({"Guitar", Voice::kGuitar});
    part.room = 0.0F;
    part.notes.push_back({tick, 480, 60, 100});
    const StereoSound sound = Perform(score, 0, score.End());
    const auto frame = static_cast<std::size_t>(TempoMap(score, 0, kSampleRate).FrameAt(tick));
    const std::size_t first = FirstSound(sound, 0);
    EXPECT_GE(first, frame) << "tick " << tick;
    EXPECT_LE(first, frame + 12) << "tick " << tick
                                 << ": a string is heard within a quarter of a millisecond";
  }
}

TEST(Perform, NotesBeforeTheAudioAreLeftOut) {
  Score score = WithRitardando();
  Part& part = score.Add({"Guitar", Voice::kGuitar});
  part.notes.push_back({0, 4000, 60, 100});
  const StereoSound sound = Perform(score, score.At(2), score.End());
  EXPECT_EQ(FirstSound(sound, 0), sound.FrameCount());
}

TEST(Perform, TheSameScoreGivesTheSameSamples) {
  Score score = WithRitardando();
  Part& part = score.Add({"Guitar", Voice::kGuitar});
  Play(part, score, 0, "C4:1 E4:1 G4:1 C5:1", 90);
  const StereoSound first = Perform(score, 0, score.End());
  const StereoSound second = Perform(score, 0, score.End());
  EXPECT_EQ(first.left, second.left);
  EXPECT_EQ(first.right, second.right);
}

}  // namespace

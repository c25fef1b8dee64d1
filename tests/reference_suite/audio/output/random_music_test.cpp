// Any music at any tempo and in any key, changed at any moment, and with jumps to anywhere.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <stdexcept>
#include <tuple>

#include "reference_suite/audio/output/render_step.h"
#include "tests/reference_suite/audio/support/audible_run.h"
#include "tests/reference_suite/audio/support/open_gate.h"

namespace {

using tesk_audio::StepOutcome;
using tesk_audio::StretchQuality;

constexpr double kRateHz = 48000.0;
constexpr long long kFrames = 144'000;

class Chance {
 public:
  explicit Chance(unsigned seed) : random_(seed) {}
  double Between(double least, double most) {
    return std::uniform_real_distribution<double>(least, most)(random_);
  }
  long long Whole(long long least, long long most) {
    return std::uniform_int_distribution<long long>(least, most)(random_);
  }
  bool OneIn(int count) { return Whole(1, count) == 1; }

 private:
  std::mt19937 random_;
};

// Tones that go on.
void AddBed(Chance& chance, std::vector<float>& sound) {
  const double angle = 2.0 * M_PI * 40.0 * std::exp2(chance.Between(0.0, 4.0)) / kRateHz;
  const double level = chance.Between(0.02, 0.2);
  for (std::size_t i = 0; i < sound.size(); ++i)
    sound[i] += static_cast<float>(level * std::sin(angle * static_cast<double>(i)));
}

// A click, a tone, or noise; it begins at once or rises, and dies away.
void AddNote(Chance& chance, std::vector<float>& sound, std::size_t at) {
  const double level = chance.Between(0.02, 0.4);
  const double rise = chance.OneIn(2) ? 0.0 : chance.Between(0.0, 0.01);
  const double decay = chance.OneIn(4) ? 4'000.0 : chance.Between(4.0, 60.0);
  const double angle = 2.0 * M_PI * 50.0 * std::exp2(chance.Between(0.0, 5.0));
  const bool isNoise = chance.OneIn(3);
  const std::size_t end = std::min(sound.size(), at + 9'600);
  for (std::size_t i = at; i < end; ++i) {
    const double seconds = static_cast<double>(i - at) / kRateHz;
    const double risen = seconds < rise ? seconds / rise : 1.0;
    const double wave = isNoise ? chance.Between(-1.0, 1.0) : std::cos(angle * seconds);
    sound[i] += static_cast<float>(level * risen * std::exp(-decay * seconds) * wave);
  }
}

std::shared_ptr<const std::vector<float>> Music(Chance& chance) {
  auto sound = std::make_shared<std::vector<float>>(kFrames, 0.0F);
  for (long long beds = chance.Whole(0, 3); beds > 0; --beds) AddBed(chance, *sound);
  for (long long at = chance.Whole(0, 9'000); at < kFrames; at += chance.Whole(1'500, 15'000))
    AddNote(chance, *sound, static_cast<std::size_t>(at));
  return sound;
}

// Fails a step that never ends.
class ImpatientPlayer : public ScriptedPlayer {
 public:
  using ScriptedPlayer::ScriptedPlayer;
  long long ReadSamplesAt(long long index, long long* ioCount, void* buffer) override {
    if (++reads > 1'000) throw std::runtime_error("a render step that does not end");
    return ScriptedPlayer::ReadSamplesAt(index, ioCount, buffer);
  }
  int reads = 0;
};

class RandomMusic : public testing::TestWithParam<std::tuple<StretchQuality, unsigned>> {};

TEST_P(RandomMusic, IsPlayedToItsEndWithoutAStandStillOrABlast) {
  Chance chance(std::get<1>(GetParam()));
  const auto sound = Music(chance);
  const auto louder = [](float one, float other) { return std::fabs(one) < std::fabs(other); };
  const float loudest = std::fabs(*std::max_element(sound->begin(), sound->end(), louder));
  ScriptedPlayer::Song song{.frames = kFrames, .sound = sound};
  for (int jumps = 0; jumps < 3; ++jumps)
    song.jumps[chance.Whole(9'000, kFrames - 1)] = {chance.Whole(0, kFrames / 2)};
  ImpatientPlayer player(Songs{song}, 1);
  tesk_audio::RenderStep step(player, 1, kRateHz, chance.Between(0.0, 10.0), std::get<0>(GetParam()),
                              tesk_audio::StretchPace::InTime);
  OpenGate gate;
  const long long every = chance.Whole(3, 60);
  for (long long steps = 0;; ++steps) {
    if (steps % every == 0) {
      player.liveScale = chance.OneIn(3) ? 1.0 : std::exp2(chance.Between(-2.0, 2.0));
      player.liveSemitones = chance.OneIn(2) ? 0 : static_cast<int>(chance.Whole(-24, 24));
    }
    player.reads = 0;
    const tesk_audio::StepResult result = step.Run(gate);
    if (result.outcome != StepOutcome::Frames) break;
    for (std::size_t i = 0; i < result.deviceFrames; ++i) {
      ASSERT_TRUE(std::isfinite(step.Frames()[i])) << "step " << steps;
      ASSERT_LE(std::fabs(step.Frames()[i]), 3.0F * loudest) << "step " << steps;
    }
  }
  EXPECT_EQ(player.GetSampleIndex(), kFrames);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomMusic,
                         testing::Combine(testing::Values(StretchQuality::Faster, StretchQuality::Finer),
                                          testing::Range(1U, 17U)));

}  // namespace

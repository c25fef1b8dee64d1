// Where notes and beats begin, which are more than a click, at other tempos and in other keys; and that
// nothing of them is heard before. Right behind a jump too.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <tuple>
#include <utility>

#include "reference_suite/audio/output/render_step.h"
#include "tests/reference_suite/audio/support/audible_run.h"
#include "tests/reference_suite/audio/support/counting_player.h"
#include "tests/reference_suite/audio/support/open_gate.h"

namespace {

using tesk_audio::StretchQuality;

constexpr double kAudible = 3.0;  // milliseconds
constexpr double kRateHz = 48000.0;

enum class Kind { Beep, Snare, Plucked };

float SampleOf(Kind kind, double seconds, double noise) {
  const double wave = 2.0 * M_PI * seconds;
  double sample = 0.0;
  if (kind == Kind::Beep) sample = 0.8 * std::exp(-seconds / 0.02) * std::cos(1500.0 * wave);
  if (kind == Kind::Snare) sample = 0.8 * std::exp(-seconds / 0.04) * noise;
  for (int partial = 1; kind == Kind::Plucked && partial <= 8; ++partial) {
    sample += 0.25 * std::exp(-seconds / 0.15) * std::sin(220.0 * partial * wave) / partial;
  }
  return static_cast<float>(sample);
}

// Two tenths of a second of it from each of these frames on.
std::shared_ptr<const std::vector<float>> Notes(Kind kind, const std::vector<long long>& at,
                                                std::size_t frames, double rateHz = kRateHz) {
  auto sound = std::make_shared<std::vector<float>>(frames, 0.0F);
  std::mt19937 random(5);
  std::uniform_real_distribution<double> noise(-1.0, 1.0);
  for (const long long first : at) {
    for (std::size_t i = 0; static_cast<double>(i) < 0.18 * rateHz; ++i) {
      (*sound)[static_cast<std::size_t>(first) + i] =
          SampleOf(kind, static_cast<double>(i) / rateHz, noise(random));
    }
  }
  return sound;
}

// The first frame near `place` that is as loud as `enough`, in milliseconds from it.
double OnsetNear(const std::vector<float>& heard, double place, float enough, double rateHz) {
  const auto reach = static_cast<std::ptrdiff_t>(0.02 * rateHz);
  const auto begin = heard.begin() + std::max<std::ptrdiff_t>(0, static_cast<std::ptrdiff_t>(place) - reach);
  const auto end = heard.begin() + static_cast<std::ptrdiff_t>(place) + reach;
  const auto onset = std::find_if(begin, end, [&](float each) { return std::fabs(each) >= enough; });
  return (static_cast<double>(onset - heard.begin()) - place) / rateHz * 1000.0;
}

// Of its first ten milliseconds.
float LoudestOf(const std::vector<float>& sound, long long note, double rateHz) {
  const auto begin = sound.begin() + note;
  const auto softer = [](float a, float b) { return std::fabs(a) < std::fabs(b); };
  return std::fabs(*std::max_element(begin, begin + std::lround(0.01 * rateHz), softer));
}

// Of two dozen notes a quarter of a second and more apart.
std::vector<double> OnsetErrors(Kind kind, double scale, int semitones, StretchQuality quality,
                                double rateHz = kRateHz) {
  const auto frames = static_cast<long long>(6.9 * rateHz);
  std::mt19937 random(7);
  std::uniform_int_distribution<long long> distance(std::lround(0.25 * rateHz), std::lround(0.3125 * rateHz));
  std::vector<long long> notes{std::lround(0.125 * rateHz)};
  while (notes.back() + std::lround(0.5 * rateHz) < frames) notes.push_back(notes.back() + distance(random));
  const auto sound = Notes(kind, notes, static_cast<std::size_t>(frames), rateHz);
  AudibleRun run(
      Songs{{.frames = frames, .scales = {{0, scale}}, .transpositions = {{0, semitones}}, .sound = sound}},
      5.0, 0.0, rateHz, 1, quality);
  run.Play();
  std::vector<double> errors;
  for (const long long note : notes) {
    const float enough = 0.5F * LoudestOf(*sound, note, rateHz);
    errors.push_back(OnsetNear(run.heard, run.PlacesOf(note).at(0), enough, rateHz) -
                     OnsetNear(*sound, static_cast<double>(note), enough, rateHz));
  }
  return errors;
}

class Onset : public testing::TestWithParam<Kind> {};

TEST_P(Onset, IsInItsPlaceWithTheFasterEngine) {
  for (const double scale : {0.5, 0.8, 0.9, 0.95, 1.05, 1.1, 1.25, 1.5, 2.0}) {
    for (const double error : OnsetErrors(GetParam(), scale, 0, StretchQuality::Faster)) {
      EXPECT_NEAR(error, 0.0, kAudible) << scale;
    }
  }
  for (const int semitones : {-12, -3, 2, 12}) {
    for (const double error : OnsetErrors(GetParam(), 1.0, semitones, StretchQuality::Faster)) {
      EXPECT_NEAR(error, 0.0, kAudible) << semitones << " semitones";
    }
  }
}

TEST_P(Onset, IsWithinThreeMillisecondsWithTheFinerEngine) {
  for (const double scale : {0.25, 0.5, 0.6, 0.7, 0.8, 0.95, 1.1, 1.5, 2.0}) {
    for (const double error : OnsetErrors(GetParam(), scale, 0, StretchQuality::Finer)) {
      EXPECT_NEAR(error, 0.0, kAudible) << scale;
    }
  }
  for (const int semitones : {-12, -3, 2, 7, 12}) {
    for (const double error : OnsetErrors(GetParam(), 1.0, semitones, StretchQuality::Finer)) {
      EXPECT_NEAR(error, 0.0, kAudible) << semitones << " semitones";
    }
  }
}

TEST_P(Onset, IsInItsPlaceAtOtherRates) {
  for (const double rateHz : {44'100.0, 96'000.0}) {
    for (const StretchQuality quality : {StretchQuality::Faster, StretchQuality::Finer}) {
      for (const double scale : {0.25, 0.5, 0.8, 1.1, 1.5, 2.0}) {
        for (const double error : OnsetErrors(GetParam(), scale, 0, quality, rateHz)) {
          EXPECT_NEAR(error, 0.0, kAudible) << rateHz << " Hz, " << scale;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sounds, Onset, testing::Values(Kind::Beep, Kind::Snare, Kind::Plucked));

TEST(PreEcho, IsNotHeardBeforeANote) {
  constexpr long long kFrames = 100'000;
  const std::vector<long long> notes{20'000, 40'011, 60'301, 80'107};
  for (const double scale : {0.5, 0.7, 0.9, 1.1, 1.5, 2.0}) {
    AudibleRun run(
        Songs{{.frames = kFrames, .scales = {{0, scale}}, .sound = Notes(Kind::Beep, notes, kFrames)}}, 5.0);
    run.Play();
    for (const long long note : notes) {
      const auto place = static_cast<std::size_t>(run.PlacesOf(note).at(0));
      EXPECT_LT(Level(run.heard, place - 1'500, 1'420), 1e-3) << scale << ", note at " << note;
    }
  }
}

// What a device that waits is given of it.
std::vector<float> RenderedInTime(const Songs& songs, unsigned channels, StretchQuality quality) {
  ScriptedPlayer player(songs, channels);
  tesk_audio::RenderStep step(player, channels, kRateHz, 5.0, quality, tesk_audio::StretchPace::InTime);
  OpenGate gate;
  std::vector<float> heard;
  for (;;) {
    const tesk_audio::StepResult result = step.Run(gate);
    if (result.outcome != tesk_audio::StepOutcome::Frames) return heard;
    heard.insert(heard.end(), step.Frames(), step.Frames() + result.deviceFrames * channels);
  }
}

// Where it would not be ready in time it does not begin anew at them: nothing of them may be lost for all
// that.
TEST(OnsetInManyChannels, IsHeard) {
  constexpr long long kFrames = 100'000;
  const std::vector<long long> notes{20'000, 40'011, 60'301, 80'107};
  const auto sound = Notes(Kind::Plucked, notes, kFrames);
  for (const auto& [quality, scale, channels] :
       {std::tuple(StretchQuality::Faster, 0.9, 5U), std::tuple(StretchQuality::Finer, 0.6, 5U)}) {
    const Songs songs{{.frames = kFrames, .scales = {{0, scale}}, .sound = sound}};
    const std::vector<float> heard = RenderedInTime(songs, channels, quality);
    for (const long long note : notes) {
      const auto at = static_cast<std::size_t>(static_cast<double>(note) / scale) * channels;
      EXPECT_GT(Level(heard, at, channels * std::size_t{960}),
                0.7 * Level(*sound, static_cast<std::size_t>(note), 960));
    }
  }
}

// A beginning takes a dozen chunks. Done at once, they take longer than what waits for the device may last.
TEST(OnsetInTwoChannels, IsPreparedLittleByLittle) {
  constexpr long long kFrames = 100'000;
  const auto sound = Notes(Kind::Snare, {20'000, 40'011, 60'301, 80'107}, kFrames);
  for (const StretchQuality quality : {StretchQuality::Faster, StretchQuality::Finer}) {
    CountingPlayer player(Songs{{.frames = kFrames, .scales = {{0, 0.6}}, .sound = sound}}, 2);
    tesk_audio::RenderStep step(player, 2, kRateHz, 5.0, quality, tesk_audio::StretchPace::InTime);
    OpenGate gate;
    EXPECT_EQ(step.Run(gate).outcome, tesk_audio::StepOutcome::Frames);
    EXPECT_GT(player.chunks, 10) << "nobody has seen the song's beginning coming";
    int most = 0;
    for (player.chunks = 0; step.Run(gate).outcome == tesk_audio::StepOutcome::Frames;) {
      most = std::max(most, std::exchange(player.chunks, 0));
    }
    EXPECT_LE(most, 12)
        << "five of them a look at where the attack begins, what is before and behind it, and "
           "what stands in for it";
  }
}

// It would be heard that it does, for it begins at attacks as they were recorded.
TEST(OnsetInManyChannels, IsBegunAtOnlyWhereNobodyWaits) {
  constexpr long long kFrames = 60'000;
  for (const StretchQuality quality : {StretchQuality::Faster, StretchQuality::Finer}) {
    const Songs songs{
        {.frames = kFrames, .scales = {{0, 0.6}}, .sound = Notes(Kind::Beep, {20'000, 40'011}, kFrames)}};
    const auto atLeisure = [&](unsigned channels) {
      AudibleRun run(songs, 5.0, 0.0, kRateHz, channels, quality);
      run.Play();
      return run.heard;
    };
    EXPECT_TRUE(RenderedInTime(songs, 1, quality) == atLeisure(1));
    EXPECT_TRUE(RenderedInTime(songs, 4, quality) == atLeisure(4));
    EXPECT_FALSE(RenderedInTime(songs, 5, quality) == atLeisure(5));
  }
}

// Notes that rise out of silence for so many seconds, and die away.
std::shared_ptr<const std::vector<float>> SoftNotes(double hertz, double rise,
                                                    const std::vector<long long>& at, std::size_t frames) {
  auto sound = std::make_shared<std::vector<float>>(frames, 0.0F);
  for (const long long first : at) {
    for (std::size_t i = 0; i < 9'000; ++i) {
      const double seconds = static_cast<double>(i) / kRateHz;
      const double level = std::min(1.0, seconds / rise) * std::min(1.0, (0.1875 - seconds) / 0.05);
      double sum = 0.0;
      for (const int partial : {1, 2, 3}) sum += std::sin(2.0 * M_PI * hertz * partial * seconds) / partial;
      (*sound)[static_cast<std::size_t>(first) + i] = static_cast<float>(0.3 * level * sum);
    }
  }
  return sound;
}

class SoftOnset : public testing::TestWithParam<StretchQuality> {};

TEST_P(SoftOnset, IsHeardWithoutAStepAndWithoutAHole) {
  constexpr long long kFrames = 100'000;
  const std::vector<long long> notes{6'000, 20'000, 33'011, 46'301, 60'107, 75'007};
  for (const double hertz : {82.0, 330.0}) {
    for (const double rise : {0.005, 0.01, 0.02, 0.04}) {
      const auto sound = SoftNotes(hertz, rise, notes, kFrames);
      for (const double scale : {0.5, 0.7, 0.9, 1.1, 1.5}) {
        AudibleRun run(Songs{{.frames = kFrames, .scales = {{0, scale}}, .sound = sound}}, 5.0, 0.0, kRateHz,
                       1, GetParam());
        run.Play();
        EXPECT_LE(LargestBend(run.heard, 0, run.heard.size()), 1.2 * LargestBend(*sound, 0, sound->size()))
            << hertz << " Hz, " << rise << " s, " << scale;
        if (GetParam() == StretchQuality::Faster) continue;
        for (const long long note : notes) {
          const auto at = static_cast<std::size_t>(run.PlacesOf(note).at(0));
          const auto steady = static_cast<std::size_t>(note) + 4'800;
          EXPECT_GT(Level(run.heard, at + 2'400, 2'400), 0.7 * Level(*sound, steady, 2'400))
              << hertz << " Hz, " << rise << " s, " << scale;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Qualities, SoftOnset,
                         testing::Values(StretchQuality::Faster, StretchQuality::Finer));

// Struck softly, each into what is left of the one before.
std::shared_ptr<const std::vector<float>> StruckNotes(const std::vector<long long>& at, std::size_t frames) {
  auto sound = std::make_shared<std::vector<float>>(frames, 0.0F);
  int key = 0;
  for (const long long first : at) {
    const double hertz = 220.0 * std::exp2((key = (key + 5) % 13) / 12.0);
    for (auto i = static_cast<std::size_t>(first); i < frames; ++i) {
      const double seconds = static_cast<double>(i - static_cast<std::size_t>(first)) / kRateHz;
      const double level = 0.3 * std::min(1.0, seconds / 0.002) * std::exp(-seconds / 0.09);
      double sum = 0.0;
      for (const int partial : {1, 2, 3}) sum += std::sin(2.0 * M_PI * hertz * partial * seconds) / partial;
      (*sound)[i] += static_cast<float>(level * sum);
    }
  }
  return sound;
}

// As soon as in the recording, though the rise itself could be drawn out: a moment of it is heard as
// recorded.
TEST_P(SoftOnset, OutOfWhatIsLeftOfTheNoteBeforeIsHeardInItsPlace) {
  constexpr long long kFrames = 170'000;
  std::vector<long long> notes;
  for (long long note = 12'000; note < kFrames - 12'000; note += 12'000) notes.push_back(note);
  const auto sound = StruckNotes(notes, kFrames);
  for (const auto& [scale, semitones] : {std::pair(0.25, 0),
                                         {0.35, 0},
                                         {0.5, 0},
                                         {0.6, 0},
                                         {0.7, 0},
                                         {1.3, 0},
                                         {2.0, 0},
                                         {1.0, -7},
                                         {1.0, 12}}) {
    AudibleRun run(
        Songs{
            {.frames = kFrames, .scales = {{0, scale}}, .transpositions = {{0, semitones}}, .sound = sound}},
        5.0, 0.0, kRateHz, 1, GetParam());
    run.Play();
    for (const long long note : notes) {
      const float enough = 0.5F * LoudestOf(*sound, note, kRateHz);
      const double recorded = OnsetNear(*sound, static_cast<double>(note), enough, kRateHz);
      const double heard = OnsetNear(run.heard, run.PlacesOf(note).at(0), enough, kRateHz);
      EXPECT_NEAR(heard, recorded, kAudible) << scale << ", " << semitones << ", note at " << note;
    }
  }
}

class AttackAfterAJump : public testing::TestWithParam<StretchQuality> {};

TEST_P(AttackAfterAJump, IsInItsPlaceHoweverCloseBehindIt) {
  constexpr long long kFrames = 200'000;
  const std::vector<long long> attacks{20'000, 41'000, 100'300, 120'000, 150'000};
  for (const double scale : {0.5, 0.7, 0.8, 0.9, 1.1, 1.3, 1.7, 2.0}) {
    for (const long long before : {0LL, 1LL, 50LL, 130LL, 300LL, 700LL, 1'500LL, 3'000LL}) {
      AudibleRun run(
          Songs{{.frames = kFrames,
                 .jumps = {{44'000, {100'300 - before, 20'000 - before}}, {104'000, {150'000 - before}}},
                 .scales = {{0, scale}},
                 .sound = Clicks(attacks, kFrames)}},
          5.0, 0.0, kRateHz, 1, GetParam());
      run.Play();
      for (const long long attack : {100'300LL, 150'000LL, 20'000LL}) {
        for (const double place : run.PlacesOf(attack)) {
          EXPECT_LE(std::fabs(LoudestNear(run.heard, place, 600)), kAudible)
              << scale << ", " << before << " frames before the attack at " << attack;
        }
      }
    }
  }
}

// Of a click of 0.9, within three milliseconds of its place.
float LoudnessOf(const AudibleRun& run, double place) {
  const auto at = static_cast<std::size_t>(std::llround(place));
  float loudest = 0.0F;
  for (std::size_t i = at > 144 ? at - 144 : 0; i < at + 144; ++i)
    loudest = std::max(loudest, std::fabs(run.heard[i]));
  return loudest;
}

constexpr float kLoud = 0.32F;  // elsewhere too, a click is heard about half as loud
constexpr long long kBehind[] = {0, 20, 40, 62, 84, 105, 130, 164};

TEST_P(AttackAfterAJump, IsLoudHoweverCloseBehindIt) {
  constexpr long long kFrames = 40'000;
  constexpr long long kAttack = 20'000;
  for (const auto& [scale, semitones] : std::vector<std::pair<double, int>>{
           {0.5, 0}, {0.7, 0}, {0.8, 0}, {0.95, 0}, {1.25, 0}, {2.0, 0}, {1.0, -3}, {1.0, 3}, {1.0, 11}}) {
    for (const long long behind : kBehind) {
      AudibleRun run(Songs{{.frames = kFrames,
                            .jumps = {{10'000, {kAttack - behind}}},
                            .scales = {{0, scale}},
                            .transpositions = {{0, semitones}},
                            .sound = Clicks({kAttack}, kFrames)}},
                     5.0, 0.0, kRateHz, 1, GetParam());
      run.Play();
      EXPECT_GT(LoudnessOf(run, run.PlacesOf(kAttack).at(0)), kLoud)
          << scale << ", " << semitones << " semitones, " << behind << " frames behind the jump";
    }
  }
}

struct Live {
  double scale;
  int semitones;
  double thenScale;
  int thenSemitones;
};

void ExpectLoudBehindAChange(const Live& live, long long behind, StretchQuality quality) {
  constexpr long long kFrames = 40'000;
  constexpr long long kAttack = 20'000;
  const long long change = kAttack - behind;
  AudibleRun run(Songs{{.frames = kFrames,
                        .scales = {{0, live.scale}, {change, live.thenScale}},
                        .transpositions = {{0, live.semitones}, {change, live.thenSemitones}},
                        .sound = Clicks({kAttack}, kFrames)}},
                 5.0, 0.0, kRateHz, 1, quality);
  run.Play();
  EXPECT_GT(LoudnessOf(run, run.PlacesOf(kAttack).at(0)), kLoud)
      << live.scale << " " << live.semitones << " to " << live.thenScale << " " << live.thenSemitones << ", "
      << behind << " frames behind the change";
}

// What goes out has turned back for it, and what comes in has just begun.
TEST_P(AttackAfterAJump, IsLoudHoweverCloseBehindAChangeToo) {
  for (const Live& live :
       {Live{1.03, -7, 1.0, 11}, Live{0.9, -2, 1.03, 10}, Live{1.1, 0, 0.9, 0}, Live{0.8, 0, 0.5, 0},
        Live{1.1, 0, 1.1, 2}, Live{0.6, 0, 0.8, 0}, Live{0.5, 0, 2.0, 0}, Live{1.2, -5, 0.8, 5}}) {
    for (const long long behind : kBehind) ExpectLoudBehindAChange(live, behind, GetParam());
  }
}

// Recorded sound that goes out would bring it late, and one that comes in has not risen when it should be
// heard.
TEST_P(AttackAfterAJump, IsLoudHoweverCloseBehindTheRecordedTempo) {
  for (const Live& live :
       {Live{1.0, 0, 1.3, 0}, Live{1.0, 0, 2.0, 0}, Live{1.0, 0, 0.5, 0}, Live{0.5, 0, 1.0, 0},
        Live{0.8, 0, 1.0, 0}, Live{0.95, 0, 1.0, 0}, Live{1.3, 0, 1.0, 0}, Live{2.0, 0, 1.0, 0},
        Live{1.0, 5, 1.0, 0}, Live{1.0, 12, 1.0, 0}}) {
    for (long long behind = 0; behind <= 480; behind += 24) ExpectLoudBehindAChange(live, behind, GetParam());
  }
}

// What ends in the middle of a sound ends with what looks like an attack: nothing of what is done for that
// is done to the next song.
TEST_P(AttackAfterAJump, IsWholeAtTheBeginningOfASongBehindOneThatEndsInASound) {
  for (const double scale : {0.5, 0.7, 0.9, 1.2, 2.0}) {
    AudibleRun run(
        Songs{
            {.frames = 9'000, .scales = {{0, 0.9}}, .isAttacca = true, .sound = Tones({220.0}, 0.05, 9'000)},
            {.frames = 20'000, .scales = {{0, scale}}, .sound = Clicks({0}, 20'000)}},
        5.0, 0.0, kRateHz, 1, GetParam());
    run.Play();
    EXPECT_NEAR(run.heard[10'000], 0.9F, 0.06F) << scale;
  }
}

INSTANTIATE_TEST_SUITE_P(Qualities, AttackAfterAJump,
                         testing::Values(StretchQuality::Faster, StretchQuality::Finer));

}  // namespace

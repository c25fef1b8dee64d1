// A stretched sound is as loud as it was recorded, for as long as it lasts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "tests/reference_suite/audio/support/audible_run.h"

namespace {

using tesk_audio::StretchQuality;

constexpr std::size_t kNote = 48'000;
constexpr double kNotes[] = {440.0, 523.25, 659.26, 783.99, 220.0, 329.63};
constexpr double kScales[] = {0.5, 0.7, 0.9, 1.1, 1.3, 2.0};

enum class Playing { Detached, Legato };

// Notes of a second. What is detached begins with an attack; what is legato goes on without one.
std::shared_ptr<const std::vector<float>> Melody(Playing playing) {
  auto sound = std::make_shared<std::vector<float>>();
  double phase = 0.0;
  for (const double hertz : kNotes) {
    for (std::size_t i = 0; i < kNote; ++i) {
      phase += 2.0 * M_PI * hertz / 48000.0;
      const bool sounds = playing == Playing::Legato || i < kNote - 4'800;
      sound->push_back(sounds ? static_cast<float>(0.5 * std::sin(phase)) : 0.0F);
    }
  }
  return sound;
}

// By how many decibels each note, half a second after it began in the song, is louder than recorded.
std::vector<double> Gains(Playing playing, double scale, StretchQuality quality, unsigned channels = 1) {
  const auto sound = Melody(playing);
  AudibleRun run(
      Songs{{.frames = static_cast<long long>(sound->size()), .scales = {{0, scale}}, .sound = sound}}, 5.0,
      0.0, 48000.0, channels, quality);
  run.Play();
  std::vector<double> gains;
  for (std::size_t note = 0; note < std::size(kNotes); ++note) {
    const std::size_t from = note * kNote + kNote / 2;
    const auto heardFrom = static_cast<std::size_t>(static_cast<double>(from) / scale) * channels;
    const auto heard = static_cast<std::size_t>(static_cast<double>(kNote) / 4.0 / scale) * channels;
    gains.push_back(20.0 * std::log10(Level(run.heard, heardFrom, heard) / Level(*sound, from, kNote / 4)));
  }
  return gains;
}

TEST(StretchedLevel, TheFinerEngineKeepsItWithinAFifthOfADecibel) {
  for (const Playing playing : {Playing::Detached, Playing::Legato}) {
    for (const double scale : kScales) {
      for (const double gain : Gains(playing, scale, StretchQuality::Finer))
        EXPECT_NEAR(gain, 0.0, 0.2) << scale;
    }
  }
}

// It puts a note together out of phase where the one before it rings in the same chunk, and would leave it
// there, up to 25 dB too weak.
TEST(StretchedLevel, TheFasterEngineLosesNoNoteForLong) {
  for (const Playing playing : {Playing::Detached, Playing::Legato}) {
    for (const double scale : kScales) {
      for (const double gain : Gains(playing, scale, StretchQuality::Faster)) {
        EXPECT_GT(gain, -3.1) << scale;
        EXPECT_LT(gain, 0.5) << scale;
      }
    }
  }
}

TEST(StretchedLevel, OfManyChannelsIsKeptWhereNobodyWaits) {
  for (const double gain : Gains(Playing::Detached, 0.5, StretchQuality::Faster, 5)) EXPECT_GT(gain, -3.1);
}

// The decibels by which notes that begin with an attack are louder than recorded, from 15 to 85 milliseconds
// behind it.
std::vector<double> GainsAfterAttacks(double scale, int semitones, double hertz) {
  constexpr std::size_t kFrames = 160'000;
  auto sound = std::make_shared<std::vector<float>>(kFrames);
  std::vector<std::size_t> attacks;
  for (std::size_t at = 12'000; at + 15'000 < kFrames; at += 24'000) attacks.push_back(at);
  for (const std::size_t at : attacks) {
    for (std::size_t i = 0; i < 12'000; ++i) {
      const double time = static_cast<double>(i) / 48000.0;
      const double wave =
          0.7 * std::cos(2.0 * M_PI * hertz * time) + 0.3 * std::cos(4.0 * M_PI * hertz * time);
      (*sound)[at + i] = static_cast<float>(0.4 * std::exp(-3.0 * time) * wave);
    }
  }
  AudibleRun run(
      Songs{{.frames = kFrames, .scales = {{0, scale}}, .transpositions = {{0, semitones}}, .sound = sound}},
      5.0, 0.0, 48000.0, 1, StretchQuality::Faster);
  run.Play();
  std::vector<double> gains;
  for (const std::size_t at : attacks) {
    const auto heardAt = static_cast<std::size_t>(run.PlacesOf(static_cast<long long>(at)).at(0));
    const double heard = Level(run.heard, heardAt + 720, 3'360);
    const auto songFrames = [=](double frames) { return static_cast<std::size_t>(frames * scale); };
    gains.push_back(20.0 * std::log10(heard / Level(*sound, at + songFrames(720), songFrames(3'360))));
  }
  return gains;
}

// It finds an attack at the end of a chunk, and would put the note together as if all of it were there.
TEST(StretchedLevel, TheFasterEngineIsAsLoudBehindAnAttack) {
  const std::vector<std::pair<double, int>> all{{0.5, 0}, {0.6, 0}, {0.68, 0}, {0.8, 0},  {0.9, 0},
                                                {1.1, 0}, {1.0, 3}, {1.0, 7},  {1.0, 12}, {0.8, 5}};
  for (const auto& [scale, semitones] : all) {
    std::vector<double> gains;
    for (const double hertz : {110.0, 220.0, 440.0, 880.0}) {
      for (const double gain : GainsAfterAttacks(scale, semitones, hertz)) gains.push_back(gain);
    }
    const auto middle = gains.begin() + static_cast<std::ptrdiff_t>(gains.size() / 2);
    std::nth_element(gains.begin(), middle, gains.end());
    EXPECT_NEAR(*middle, 0.0, 1.6) << scale << ", " << semitones << " semitones";
    EXPECT_GT(*std::min_element(gains.begin(), gains.end()), -5.0) << scale << ", " << semitones;
  }
}

// Half a note, and from a jump on another that goes on from `target`: the decibels by which that is louder
// than recorded.
double GainAfterAJump(double scale, long long target) {
  auto sound = std::make_shared<std::vector<float>>(*Tones({440.0}, 0.5, 160'000));
  const auto other = Tones({587.33}, 0.5, 160'000);
  std::copy(other->begin() + 96'000, other->end(), sound->begin() + 96'000);
  AudibleRun run(Songs{{.frames = 160'000,
                        .jumps = {{20'000, {target}}},
                        .scales = {{0, 1.0L}, {10'000, scale}},
                        .sound = sound}},
                 5.0, 0.0, 48000.0, 1, StretchQuality::Faster);
  run.Play();
  const auto jump = static_cast<std::size_t>(run.PlacesOf(target).at(0));
  return 20.0 * std::log10(Level(run.heard, jump + 480, 2'400) / Level(*sound, 120'000, 4'800));
}

// Where the first chunk lies in a wave still decides whether it gains a few decibels less, in one of five.
TEST(StretchedLevel, ANewBeginningHasNothingOfWhatWasPlayedBeforeInIt) {
  for (const double scale : {0.5, 0.6, 0.8, 1.2, 1.9}) {
    std::vector<double> gains;
    for (long long i = 0; i < 9; ++i) gains.push_back(GainAfterAJump(scale, 120'000 + 17 * i));
    std::nth_element(gains.begin(), gains.begin() + 4, gains.end());
    EXPECT_NEAR(gains[4], 0.0, 0.3) << scale;
  }
}

// The faster engine begins anew where a note has faded, a tenth of a second behind the change to it.
TEST(StretchedLevel, ABeginningInTheMiddleOfANoteMakesNoStep) {
  const auto sound = Melody(Playing::Legato);
  const double own = LargestStep(*sound, 2'000, sound->size() - 2'000);
  for (const double scale : {0.5, 0.7, 0.8, 1.3, 2.0}) {
    AudibleRun run(
        Songs{{.frames = static_cast<long long>(sound->size()), .scales = {{0, scale}}, .sound = sound}},
        5.0);
    run.Play();
    for (std::size_t note = 0; note < std::size(kNotes); ++note) {
      const auto heardAt = [=](std::size_t frame) {
        return static_cast<std::size_t>(static_cast<double>(note * kNote + frame) / scale);
      };
      EXPECT_LE(LargestStep(run.heard, heardAt(2'400), heardAt(kNote - 2'400)), 1.2 * own) << scale;
    }
  }
}

}  // namespace

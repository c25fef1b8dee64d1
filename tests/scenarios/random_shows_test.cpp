// Random songs, played through the whole engine from files on disk, against a simple model of what must be
// heard. Every frame of the audio holds its own index, so that each sample that comes out says where it is
// from.

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/output/output_settings.h"
#include "tests/scenarios/duet.h"
#include "tests/scenarios/show_on_disk.h"

namespace scenarios {
namespace {

constexpr unsigned kSongsPerShow = 12;

std::vector<SongPlan> RandomShow(Dice* dice, unsigned rate) {
  std::vector<SongPlan> songs;
  for (unsigned i = 0; i < kSongsPerShow; ++i) {
    SongPlan song = RandomSong(dice, rate);
    song.firstValue = 1 + (static_cast<long long>(i) << 19);
    songs.push_back(song);
  }
  songs.back().attacca = false;
  return songs;
}

class RandomShows : public testing::TestWithParam<unsigned> {};

TEST_P(RandomShows, EverySampleIsTheOneThatTheModelExpects) {
  static constexpr std::array<unsigned, 5> kRates = {44100, 48000, 22050, 32000, 96000};
  Dice dice(GetParam());
  const unsigned rate = kRates[GetParam() % kRates.size()];
  const std::vector<SongPlan> songs = RandomShow(&dice, rate);
  const ShowOnDisk show(songs, rate);

  tesk_audio::OutputSettings settings;
  settings.device = tesk_audio::DeviceKind::Offline;
  settings.crossfadeMs = 0;
  settings.fadeMs = 0;
  tesk_audio::ConfigureOutput(settings);

  AudioPlayerWrapper wrapper(show.Path().string(), "");
  auto* player = dynamic_cast<AudioPlayer*>(wrapper.GetPlayer());
  ASSERT_NE(player, nullptr);
  Duet duet(player, songs, rate, &dice);
  for (std::size_t song = 0; song < songs.size() && !HasFailure();) song = duet.Run(song);
  EXPECT_GT(duet.FramesCompared(), 50000);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomShows, testing::Range(1u, 31u));

}  // namespace
}  // namespace scenarios

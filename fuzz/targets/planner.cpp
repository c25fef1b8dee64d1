#include <gtest/gtest.h>

#include "fuzz/targets/targets.h"
#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/output/output_settings.h"
#include "tests/scenarios/duet.h"
#include "tests/scenarios/show_on_disk.h"

namespace fuzz {
namespace {

std::vector<scenarios::SongPlan> Show(scenarios::Dice* dice, unsigned rate) {
  std::vector<scenarios::SongPlan> songs;
  const unsigned count = dice->Between(1, 2);
  for (unsigned song = 0; song < count; ++song) {
    songs.push_back(scenarios::RandomSong(dice, rate));
    songs.back().firstValue = 1 + (static_cast<long long>(song) << 19);
  }
  songs.back().attacca = false;
  return songs;
}

void UseOfflineOutput() {
  tesk_audio::OutputSettings settings;
  settings.device = tesk_audio::DeviceKind::Offline;
  settings.crossfadeMs = 0;
  settings.fadeMs = 0;
  tesk_audio::ConfigureOutput(settings);
}

}  // namespace

void Planner(Bytes input) {
  // Few frames, so that many songs are tried: a tick is rounded to samples at any rate.
  constexpr unsigned kRates[] = {8000, 11025, 8820};
  constexpr long long kMostFrames = 40'000;
  scenarios::Dice dice(input);
  const unsigned rate = kRates[dice.Between(0, 2)];
  const std::vector<scenarios::SongPlan> songs = Show(&dice, rate);
  const scenarios::ShowOnDisk show(songs, rate);
  UseOfflineOutput();
  AudioPlayerWrapper wrapper(show.Path().string(), "");
  auto* player = dynamic_cast<AudioPlayer*>(wrapper.GetPlayer());
  Require(player != nullptr, "a show of valid songs has a player");
  scenarios::Duet duet(player, songs, rate, &dice, kMostFrames);
  for (std::size_t song = 0; song < songs.size() && !testing::Test::HasFailure();) song = duet.Run(song);
  Require(!testing::Test::HasFailure(), "every sample is the one that the model expects");
}

}  // namespace fuzz

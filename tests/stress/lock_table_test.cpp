// The table of locks in the documents is neither short nor long: one session that does everything a host can
// do takes every pair of it, and the program's check sees no other.
#include <gtest/gtest.h>

#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/output/offline_output.h"
#include "reference_suite/audio/output/output_settings.h"
#include "suite/player_core/gui_update.h"
#include "tests/stress/disk_calls.h"
#include "tests/stress/stress_show.h"
#include "tests/support/lock_order/lock_table.h"
#include "tests/support/wait_until.h"

namespace stress {
namespace {

using test_support::WaitUntil;
namespace lock_order = test_support::lock_order;

constexpr unsigned kBeat = 480;

std::vector<lock_order::AllowedPair> Table() {
  return lock_order::ReadLockTable(ORBEL_SOURCE_DIR "/docs/threads-and-locks.md");
}

void PlayOffline(const StressShow& show) {
  tesk_audio::OutputSettings settings;
  settings.device = tesk_audio::DeviceKind::Offline;
  tesk_audio::ConfigureOutput(settings);
  AudioPlayerWrapper wrapper(show.Path(), "");
  wrapper.GetPlayer()->Play();
  for (int i = 0; i < 300; ++i) {
    tesk_audio::StepReport report;
    tesk_audio::StepOfflineOutput(&report, [](const float*, std::size_t) {});
  }
}

bool PlaysSong(AudioPlayer& player, const std::string& song) {
  return WaitUntil([&] { return player.IsPlaying() && player.GetCurrentSongNumber() == song; });
}

void PlayLive(const StressShow& show) {
  tesk_audio::ConfigureOutput({});
  AudioPlayerWrapper wrapper(show.Path(), "");
  AudioPlayer& player = *wrapper.GetPlayer();
  player.Play();
  ASSERT_TRUE(PlaysSong(player, "2")) << "by attacca";
  ASSERT_TRUE(WaitUntil([&] { return player.GetTickIndex() > kBeat; }));
  ASSERT_TRUE(WaitUntil([&] { return player.GetLastJumpSampleIndex() > 0; })) << "round the vamp";
  player.FlowControlExit();
  ASSERT_TRUE(PlaysSong(player, "3"));
  ASSERT_TRUE(WaitUntil([&] { return player.GetPlayerState() == PlayerState::PAUSE; })) << "at the caesura";
  EXPECT_TRUE(player.Continue());
  player.Pause();
  player.Seek(kBeat);
  // Not decoded yet, and not before it is waited for: its loader hands it over and starts it.
  disk::SetSlowness(100000);
  player.LoadSong("7");
  disk::SetSlowness(0);
  ASSERT_TRUE(PlaysSong(player, "7"));
  player.Seek(3 * kBeat);  // onto the caesura, which stops the output
  ASSERT_TRUE(WaitUntil([&] { return !player.IsPlaying(); }));
  player.NextSong();
  player.PreviousSong();
  player.StopAndReset();
}

TEST(LockTable, OneSessionTakesEveryPairOfIt) {
  const StressShow show;
  PlayOffline(show);
  PlayLive(show);
  for (const std::string& unreached : lock_order::FindUnreached(lock_order::GetNestings(), Table())) {
    ADD_FAILURE() << unreached;
  }
}

TEST(LockTable, HasNoRing) {
  EXPECT_EQ(lock_order::FindRings(Table()), std::vector<std::string>());
}

}  // namespace
}  // namespace stress

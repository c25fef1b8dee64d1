// What the display shows while one song runs on into the next, through the whole engine.
#include <gtest/gtest.h>

#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "reference_suite/audio/output/offline_output.h"
#include "reference_suite/audio/output/output_settings.h"
#include "tests/scenarios/show_on_disk.h"

namespace scenarios {
namespace {

constexpr unsigned kRate = 48000;
constexpr unsigned kFramesPerTick = 25;

SongPlan Song(bool attacca) {
  SongPlan song;
  song.tempos = {{0, 250000}};
  song.midiEnd = 960;
  song.audioFrames = song.midiEnd * kFramesPerTick;
  song.attacca = attacca;
  return song;
}

TEST(AttaccaDisplay, StaysWithTheSongBeforeUntilTheListenerHasComeToTheNext) {
  tesk_audio::OutputSettings settings;
  settings.device = tesk_audio::DeviceKind::Offline;
  tesk_audio::ConfigureOutput(settings);
  const ShowOnDisk show({Song(true), Song(true), Song(false)}, kRate);
  AudioPlayerWrapper wrapper(show.Path().string(), "");
  AudioPlayer& player = *wrapper.GetPlayer();
  player.Play();
  int attaccas = 0;
  unsigned shown = 0;
  for (;;) {
    tesk_audio::StepReport report;
    ASSERT_TRUE(tesk_audio::StepOfflineOutput(&report, [](const float*, std::size_t) {}));
    if (report.event == tesk_audio::StepEvent::End) break;
    unsigned tick = 0;
    ASSERT_TRUE(player.GetAudibleTickIndex(&tick));
    if (report.event == tesk_audio::StepEvent::Attacca) {
      ++attaccas;
      EXPECT_GT(tick, 900u);
      EXPECT_EQ(tick, shown) << "nothing of the next song has been heard yet";
    } else if (shown > 900u && tick < shown) {
      EXPECT_LE(tick, 20u) << "a read into the next song";
    }
    shown = tick;
  }
  EXPECT_EQ(attaccas, 2);
}

}  // namespace
}  // namespace scenarios

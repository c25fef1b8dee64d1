#include "tests/stress/stress_life.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <random>

#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/core/callback_dispatcher.h"
#include "suite/core/notification_names.h"
#include "suite/player_core/gui_update.h"
#include "tests/stress/display.h"
#include "tests/stress/vandal.h"
#include "tests/support/wait_until.h"

namespace stress {

namespace {

using Random = std::mt19937;

unsigned Below(Random& random, unsigned limit) {
  return static_cast<unsigned>(random()) % limit;
}

struct Command {
  const char* name;
  unsigned weight;
  std::function<void(AudioPlayer&, StressShow&, Random&)> act;
};

std::string AnySong(StressShow& show, Random& random) {
  return std::to_string(1 + Below(random, show.CountSongs()));
}

const std::array<Command, 17>& Commands() {
  static const std::array<Command, 17> commands = {{
      {"Play", 8, [](AudioPlayer& player, StressShow&, Random&) { player.Play(); }},
      {"Pause", 4, [](AudioPlayer& player, StressShow&, Random&) { player.Pause(); }},
      {"Stop", 4, [](AudioPlayer& player, StressShow&, Random&) { player.Stop(); }},
      {"StopAndReset", 2, [](AudioPlayer& player, StressShow&, Random&) { player.StopAndReset(); }},
      {"Seek", 5,
       [](AudioPlayer& player, StressShow& show, Random& random) {
         player.Seek(Below(random, show.LongestSong() + 100));
       }},
      {"SeekLeft", 1, [](AudioPlayer& player, StressShow&, Random&) { player.SeekLeft(); }},
      {"SeekRight", 1, [](AudioPlayer& player, StressShow&, Random&) { player.SeekRight(); }},
      {"SeekToNextMeasure", 1, [](AudioPlayer& player, StressShow&, Random&) { player.SeekToNextMeasure(); }},
      {"SeekToPreviousMeasure", 1,
       [](AudioPlayer& player, StressShow&, Random&) { player.SeekToPreviousMeasure(); }},
      {"LoadSong", 4,
       [](AudioPlayer& player, StressShow& show, Random& random) { player.LoadSong(AnySong(show, random)); }},
      {"NextSong", 4, [](AudioPlayer& player, StressShow&, Random&) { player.NextSong(); }},
      {"PreviousSong", 3, [](AudioPlayer& player, StressShow&, Random&) { player.PreviousSong(); }},
      {"SetAttaccaState", 3,
       [](AudioPlayer& player, StressShow& show, Random& random) {
         player.SetAttaccaState(AnySong(show, random), static_cast<unsigned char>(Below(random, 2)));
       }},
      {"Continue", 3, [](AudioPlayer& player, StressShow&, Random&) { player.Continue(); }},
      {"FlowControlExit", 2, [](AudioPlayer& player, StressShow&, Random&) { player.FlowControlExit(); }},
      {"RepeatSafety", 1, [](AudioPlayer& player, StressShow&, Random&) { player.RepeatSafety(); }},
      {"waiting", 6,
       [](AudioPlayer&, StressShow&, Random& random) {
         std::this_thread::sleep_for(std::chrono::microseconds(Below(random, 30000)));
       }},
  }};
  return commands;
}

const Command& AnyCommand(Random& random) {
  unsigned total = 0;
  for (const Command& command : Commands()) total += command.weight;
  unsigned drawn = Below(random, total);
  for (const Command& command : Commands()) {
    if (drawn < command.weight) return command;
    drawn -= command.weight;
  }
  return Commands().front();
}

// A recording of another format is refused, and a song that was broken when the show was opened is left out.
void Do(const Command& command, AudioPlayer& player, StressShow& show, Random& random, bool destroysFiles) {
  try {
    command.act(player, show, random);
  } catch (const AudioPlayer::AudioFormatError& error) {
    if (!destroysFiles) ADD_FAILURE() << command.name << ": " << error.what();
  } catch (const AudioPlayer::NoAudioForSong& error) {
    if (!destroysFiles) ADD_FAILURE() << command.name << ": no audio for song " << error.what();
  } catch (const std::exception& error) {
    ADD_FAILURE() << command.name << ": " << error.what();
  }
}

// Hears of the end of a song while it lives.
class EndOfSong {
 public:
  EndOfSong() {
    notify::callbackDispatcher.Add(this, notify::names::stopped_at_end_of_song, [this](void*) { ++count_; });
  }
  ~EndOfSong() { notify::callbackDispatcher.Remove(this); }
  EndOfSong(const EndOfSong&) = delete;
  EndOfSong& operator=(const EndOfSong&) = delete;
  int Count() const { return count_; }

 private:
  std::atomic<int> count_{0};
};

// Whatever has happened: a song that is loaded now plays from its start to its end.
void PlayOneSongWhole(AudioPlayer& player) {
  const std::string song = StressShow::kPlainSong;
  player.SetAttaccaState(song, 0);
  player.LoadSong(song);
  player.Play();
  player.StopAndReset();
  EXPECT_EQ(player.GetGuiUpdate().GetTickIndex(), 0u);
  EXPECT_EQ(player.GetCurrentSongContent()->GetSampleCount(), 3u * 11025u);
  const EndOfSong end;
  player.Play();
  EXPECT_TRUE(test_support::WaitUntil([&] { return end.Count() == 1; }));
  EXPECT_EQ(player.GetPlayerState(), PlayerState::STOP);
  EXPECT_EQ(player.GetElapsedSampleCount(), 3 * 11025);
}

}  // namespace

LifeResult LiveOneLife(StressShow* show, const LifePlan& plan, Watchdog* watchdog) {
  LifeResult result;
  Random random(plan.seed);
  watchdog->Beat("opening the show");
  show->Restore();
  std::unique_ptr<AudioPlayerWrapper> wrapper;
  const Vandal vandal(show, plan.seed, plan.destroysFiles);
  try {
    wrapper = std::make_unique<AudioPlayerWrapper>(show->Path(), "");
  } catch (const std::exception& error) {
    if (!plan.destroysFiles) ADD_FAILURE() << "opening: " << error.what();
    return result;
  }
  result.opened = true;
  AudioPlayer& player = *wrapper->GetPlayer();
  {
    const Display display(&player);
    for (; result.commands < plan.commands && !testing::Test::HasFailure(); ++result.commands) {
      const Command& command = AnyCommand(random);
      watchdog->Beat(command.name);
      Do(command, player, *show, random, plan.destroysFiles);
    }
    watchdog->Beat("playing one song whole");
    const bool playsWhole = plan.commands == 0 || random() % 4 == 0;
    if (!plan.destroysFiles && playsWhole) PlayOneSongWhole(player);
  }
  watchdog->Beat("destroying the player");
  wrapper.reset();
  watchdog->Beat("ending the life");
  return result;
}

}  // namespace stress

// Which locks the player takes, and between which steps of an operation.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_player.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/journaling_locks.h"
#include "tests/fakes/scripted_show_control.h"

namespace {

class Locks : public PlayerTest {
 protected:
  // What was told during `operation`, with the locks that this thread took and gave up.
  Journal During(const std::function<void()>& operation) {
    Told();
    {
      const fakes::locks::Journaling journaling;
      operation();
    }
    return Told();
  }
  static std::ptrdiff_t Count(const Journal& journal, const std::string& entry) {
    return std::count(journal.begin(), journal.end(), entry);
  }
  // The same without the locks whose names are not among these.
  static Journal Only(Journal journal, const std::vector<std::string>& locks) {
    std::erase_if(journal, [&](const std::string& entry) {
      const bool isLock = entry[0] == '+' || entry[0] == '-';
      return isLock && std::count(locks.begin(), locks.end(), entry.substr(1)) == 0;
    });
    return journal;
  }
};

const Journal kPlayerLockOnce = {"+Player", "-Player"};

TEST_F(Locks, EveryFlagIsReadAndWrittenUnderThePlayerLock) {
  MakePlayer();
  AudioPlayer& player = GetPlayer();
  const std::pair<const char*, std::function<void()>> operations[] = {
      {"GetAttaccaHasOccurred", [&] { player.GetAttaccaHasOccurred(); }},
      {"SetLoadSongAttaccaIsWaiting", [&] { player.SetLoadSongAttaccaIsWaiting(); }},
      {"GetUserRequestedSeek", [&] { player.GetUserRequestedSeek(); }},
      {"SetUserRequestedSeek", [&] { player.SetUserRequestedSeek(false); }},
      {"GetSeekRequestedWhileNotPlay", [&] { player.GetSeekRequestedWhileNotPlay(); }},
      {"GetStopRequested", [&] { player.GetStopRequested(); }},
      {"SetStopRequested", [&] { player.SetStopRequested(false); }},
      {"GetReadSamplesLock", [&] { player.GetReadSamplesLock(); }},
      {"NotifyApproachingStop", [&] { player.NotifyApproachingStop(); }},
  };
  for (const auto& [name, operation] : operations) EXPECT_EQ(During(operation), kPlayerLockOnce) << name;
}

TEST_F(Locks, TheApproachingStopIsClearedUnderThePlayerLockOnceTheGeneratorIsPaused) {
  MakePlayer();
  EXPECT_EQ(During([&] { AsOutputSees().PauseAndClearApproachingStop(); }),
            (Journal{"gui.Pause", "+Player", "-Player"}));
}

TEST_F(Locks, TheContentIsLookedUpUnderThePlayerLock) {
  LoadReady("1");
  EXPECT_EQ(During([&] { GetPlayer().GetCurrentSongContent(); }),
            (Journal{"+Player", "+ActiveSongNumber", "-ActiveSongNumber", "-Player"}));
}

TEST_F(Locks, AReadTakesThePlayerLockForTheLookUpAlone) {
  LoadReady("1");
  float buffer[4];
  tesk_audio::SampleCount count(4, 1.0L);
  const Journal read = During([&] { AsOutputSees().ReadSamples(&count, buffer); });
  EXPECT_EQ(Only(read, {"Player"}), kPlayerLockOnce);
  long long plainCount = 4;
  EXPECT_EQ(Only(During([&] { AsOutputSees().ReadSamplesAt(0, &plainCount, buffer); }), {"Player"}),
            kPlayerLockOnce);
}

// It is the output's to hold, for its whole step; the update generator must not wait for one.
TEST_F(Locks, TheRenderPathDoesNotTakeTheReadSamplesLock) {
  LoadAndPlay("1");
  const Journal told = During([&] {
    float buffer[16];
    tesk_audio::SampleCount count = AsOutputSees().GetNextReadSampleCount(tesk_audio::SampleCount(16, 1.0L));
    AsOutputSees().ReadSamples(&count, buffer);
    long long plainCount = 4;
    AsOutputSees().ReadSamplesAt(0, &plainCount, buffer);
    AsOutputSees().ProcessLoopEventsAtCurrentTickIndex();
    long double scale = 0;
    int transposition = 0;
    AsOutputSees().GetDspFactorsAtCurrentTickIndex(&scale, &transposition);
    AsOutputSees().GetDspFactorsAtCurrentSampleIndex(&scale, &transposition);
    AsOutputSees().GetDspFactorsAt(0, &scale, &transposition);
    unsigned tick = 0;
    GetPlayer().GetAudibleTickIndex(&tick);
    AsOutputSees().NotifyOutputHasStopped();
    GetPlayer().GetAudibleTickIndex(&tick);
  });
  EXPECT_EQ(Count(told, "+ReadSamples"), 0);
  EXPECT_GT(Count(told, "+Player"), 0) << "locks are noted at all";
}

TEST_F(Locks, TheAudibleTickIsConvertedUnderThePlayerLock) {
  LoadAndPlay("1");
  unsigned tick = 0;
  EXPECT_EQ(During([&] { GetPlayer().GetAudibleTickIndex(&tick); }),
            (Journal{"+Player", "-Player",  // which output to ask
                     "+Player", "+SamplesTicksConverter", "-SamplesTicksConverter", "-Player"}));
}

TEST_F(Locks, WhileNotPlayingTheAudibleTickIsReadUnderThePlayerLock) {
  LoadReady("1");
  unsigned tick = 0;
  fakes::show_control::OnLastSeekQuery([] { fakes::Write("last seek"); });
  const Journal told = During([&] { GetPlayer().GetAudibleTickIndex(&tick); });
  EXPECT_EQ(told, (Journal{"+Player", "last seek", "-Player"}));
}

// The song is announced without the lock.
TEST_F(Locks, TheOutputsStopChangesStateAndRequestUnderThePlayerLock) {
  LoadAndPlay("1");
  fakes::player::OnSetState([](PlayerState) { fakes::Write("state"); });
  EXPECT_EQ(Only(During([&] { AsOutputSees().NotifyOutputHasStopped(); }), {"Player"}),
            (Journal{"+Player", "state", "-Player", "notify.EndOfSong"}));
}

// Two clocks restart: what is shown, then what is registered; then the output renders ahead again.
TEST_F(Locks, ASeekForgetsWhatWasRegisteredBeforeTheRefill) {
  LoadReady("1");
  const Journal told = During([&] { GetPlayer().Seek(960); });
  const auto reset = std::find(told.begin(), told.end(), "control.ResetGuiUpdate");
  EXPECT_EQ(Only(Journal(reset, told.end()), {"SamplesTicksConverter"}),
            (Journal{"control.ResetGuiUpdate", "+SamplesTicksConverter", "-SamplesTicksConverter",
                     "output.Refill", "player.EnsureGuiIsCurrent"}));
}

TEST_F(Locks, ACaesuraForgetsWhatWasRegisteredBeforeTheRefill) {
  LoadAndPlay("1");
  const Journal told = During([&] { AsOutputSees().OnCaesuraStop(); });
  EXPECT_EQ(Only(told, {"Player", "SamplesTicksConverter"}),
            (Journal{"+Player", "-Player", "control.ClearFermataCanceledCaesura", "gui.Pause",
                     "control.OnCaesuraStop", "+SamplesTicksConverter", "-SamplesTicksConverter", "+Player",
                     "-Player",  // which output to refill
                     "output.Refill", "player.GUINotifyCaesura", "gui.UpdateOnce", "notify.PlaybackPaused"}));
}

TEST_F(Locks, AResetHoldsItsFlagFromBeforeTheFirstChangeUntilTheEnd) {
  LoadReady("1");
  fakes::show_control::AnswerFullReset(true);
  const Journal told = During([&] { GetPlayer().ResetPlayer(); });
  EXPECT_EQ(Only(told, {"Player", "SamplesTicksConverter", "AudioPlayer_PlayerIsResetting"}),
            (Journal{"+Player", "-Player",  // whether an output runs
                     "+AudioPlayer_PlayerIsResetting", "-AudioPlayer_PlayerIsResetting",  // set
                     "+Player", "-Player", "+SamplesTicksConverter", "-SamplesTicksConverter",
                     "control.FullReset", "+AudioPlayer_PlayerIsResetting",
                     "-AudioPlayer_PlayerIsResetting",                                       // still set
                     "+AudioPlayer_PlayerIsResetting", "-AudioPlayer_PlayerIsResetting"}));  // cancelled
}

TEST_F(Locks, TheShortResetHasNoFlag) {
  LoadReady("1");
  const Journal told = During([&] { GetPlayer().ResetPlayerNoFillBuffers(); });
  EXPECT_EQ(Count(told, "+AudioPlayer_PlayerIsResetting"), 0);
  const auto reset = std::find(told.begin(), told.end(), "control.FullReset");
  EXPECT_EQ(Only(Journal(told.begin(), reset), {"Player", "SamplesTicksConverter"}),
            (Journal{"+Player", "-Player", "+SamplesTicksConverter", "-SamplesTicksConverter"}))
      << "flags, then the registry, then the show control";
}

// The flags by name, in the order in which a load passes them: what was awaited is given up, a reset and a
// loader that is finishing are waited for.
TEST_F(Locks, ALoadPassesThePlayersThreeFlags) {
  LoadReady("1");
  Journal told = During([&] { GetPlayer().LoadSong("2"); });
  std::erase_if(told, [](const std::string& entry) { return entry.rfind("+AudioPlayer_", 0) != 0; });
  told.erase(std::unique(told.begin(), told.end()), told.end());
  ASSERT_GE(told.size(), 4u);
  EXPECT_EQ(Journal(told.begin(), told.begin() + 4),
            (Journal{"+AudioPlayer_WaitForAudio", "+AudioPlayer_PlayerIsResetting",
                     "+AudioPlayer_FileLoaderIsFinishing", "+AudioPlayer_WaitForAudio"}));
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Locks, AnAttaccaSetsItsHoldCountBeforeTheNewSongIsRegisteredAndShown) {
  LoadAndPlay("1");
  const Journal told = During([&] { AsOutputSees().LoadNextSongAttacca(); });
  const auto shown = std::find(told.rbegin(), told.rend(), "gui.ResetAndSeekToTickIndex 0");
  EXPECT_EQ(
      Only(Journal(shown.base(), told.end()), {"Player", "SamplesTicksConverter"}),
      (Journal{"+Player", "-Player", "+SamplesTicksConverter", "-SamplesTicksConverter", "gui.Unpause"}));
  EXPECT_TRUE(AwaitLoaders());
}

TEST_F(Locks, ARecoveryMovesUnderTheReadSamplesLockAndWithoutThePlayerLock) {
  LoadAndPlay("1");
  for (const bool advance : {false, true}) {
    const Journal told = During([&] {
      if (advance) {
        AsOutputSees().ResetForRecoveryAdvance(22050, 30000);
      } else {
        AsOutputSees().ResetForRecovery(22050, 30000);
      }
    });
    EXPECT_EQ(Count(told, "+Player"), 0);
    EXPECT_EQ(told.front(), "+ReadSamples");
    EXPECT_EQ(told.back(), "-ReadSamples");
    EXPECT_EQ(told[1], advance ? "player.ResetForRecoveryAdvance" : "player.ResetForRecovery");
    // The converter comes last, when the show control has moved.
    const auto moved = std::find(told.begin(), told.end(),
                                 advance ? "control.RecoverySeek 1020" : "control.RecoverySeek 1000");
    ASSERT_NE(moved, told.end());
    EXPECT_EQ(Count(Journal(moved, told.end()), "+SamplesTicksConverter"), 2);
  }
}

}  // namespace

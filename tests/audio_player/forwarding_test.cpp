#include <gtest/gtest.h>

#include <atomic>
#include <memory>

#include "exc/lock/scope_lock.h"
#include "tests/audio_player/player_test.h"
#include "tests/fakes/fake_player.h"
#include "tests/fakes/scripted_show_control.h"
#include "tests/support/deleter_clock.h"

namespace {

class Forwarding : public PlayerTest {
 protected:
  // As a render step would, with the locks that a jump is made with.
  void JumpTo(unsigned tick) {
    exc::ScopeLock samples(AsOutputSees().GetReadSamplesLock());
    exc::ScopeLock lock(GetPlayer().GetShowControl());
    GetPlayer().GetShowControl().SetJump(tick, lock, true);
  }
};

TEST_F(Forwarding, MovesAndTellsTheShowControlsSampleIndex) {
  LoadReady("1");
  AsOutputSees().AddToSampleIndex(441);
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 441);
}

TEST_F(Forwarding, ReadsArePlannedByTheShowControl) {
  LoadReady("1");
  const auto count = AsOutputSees().GetNextReadSampleCount(tesk_audio::SampleCount(256, 1.0L));
  EXPECT_EQ(count.GetUnscaled(), 256);
  EXPECT_EQ(GetPlayer().GetShowControl().GetTickIndex(), 11u);
}

TEST_F(Forwarding, LoopEventsAreProcessedByTheShowControl) {
  LoadReady("1");
  AsOutputSees().ProcessLoopEventsAtCurrentTickIndex();
  EXPECT_EQ(Told(), (Journal{"control.ProcessLoopEvents"}));
}

// Counts how often its show control is asked for.
class AskedForItsShowControl : public AudioPlayer {
 public:
  using AudioPlayer::AudioPlayer;
  ShowControl& GetShowControl() override {
    ++asked;
    return AudioPlayer::GetShowControl();
  }
  std::atomic<int> asked{0};
};

TEST_F(Forwarding, LoopEventsGoThroughThePlayersShowControl) {
  test_support::deleter_clock::Hold();
  auto player = std::make_unique<AskedForItsShowControl>("/show", show_, &changeLog_, AudioFiles());
  const AskedForItsShowControl& asked = *player;
  TakePlayer(std::move(player));
  LoadReady("1");
  const int before = asked.asked;
  AsOutputSees().ProcessLoopEventsAtCurrentTickIndex();
  EXPECT_EQ(asked.asked, before + 1);
  EXPECT_EQ(Told(), (Journal{"control.ProcessLoopEvents"}));
  DestroyOwnPlayer();
}

TEST_F(Forwarding, JumpQueriesAnswerAsTheShowControlDoes) {
  LoadReady("1");
  AsOutputSees().AddToSampleIndex(100);
  JumpTo(480);
  EXPECT_EQ(AsOutputSees().GetLastJumpSampleIndex(), 100);
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 10584);
  EXPECT_EQ(AsOutputSees().GetJumpTargetSampleIndex(), 0);
  EXPECT_FALSE(AsOutputSees().GetJumpIsNext());
  EXPECT_FALSE(AsOutputSees().GetCutToEndOfSongIsNext());
  EXPECT_EQ(AsOutputSees().GetNextCaesuraSampleIndex(0), -1);
}

// Answers that nothing but the show control can give.
TEST_F(Forwarding, WhatLiesAheadIsTheShowControlsAnswer) {
  fakes::show_control::SetNextCaesura(100);
  fakes::show_control::SetCut(480, 9600);
  LoadReady("1");
  EXPECT_EQ(AsOutputSees().GetNextCaesuraSampleIndex(0), 2205);
  JumpTo(480);
  EXPECT_EQ(AsOutputSees().GetNextCaesuraSampleIndex(AsOutputSees().GetSampleIndex()), -1);
  EXPECT_TRUE(AsOutputSees().GetCutToEndOfSongIsNext());
  EXPECT_TRUE(AsOutputSees().GetJumpIsNext());
  EXPECT_EQ(AsOutputSees().GetJumpTargetSampleIndex(), 211680);
}

TEST_F(Forwarding, CorrectionsOfTheNextJumpReachTheShowControl) {
  LoadReady("1");
  AsOutputSees().SkipAheadSamplesOnNextJump(100);
  AsOutputSees().AdjustNextJumpSampleIndex(-30);
  JumpTo(480);
  EXPECT_EQ(AsOutputSees().GetSampleIndex(), 10584 + 70);
}

TEST_F(Forwarding, TempoScaleAndTranspositionGoToTheTransients) {
  LoadReady("1");
  GetPlayer().SetTempoScale(1.5);
  GetPlayer().SetTransposition(-2);
  EXPECT_EQ(GetPlayer().GetTransients().GetTempoScale(), 1.5);
  EXPECT_EQ(GetPlayer().GetTransients().GetTransposition(), -2);
}

TEST_F(Forwarding, DspFactorsAnswerAsTheShowControlDoes) {
  LoadReady("1");
  GetPlayer().SetTempoScale(1.5);
  GetPlayer().SetTransposition(-2);
  long double scale = 0;
  int transposition = 0;
  AsOutputSees().GetDspFactorsAtCurrentTickIndex(&scale, &transposition);
  EXPECT_EQ(scale, 1.5L);
  EXPECT_EQ(transposition, -2);
  scale = 0;
  transposition = 0;
  AsOutputSees().GetDspFactorsAtCurrentSampleIndex(&scale, &transposition);
  EXPECT_EQ(scale, 1.5L);
  EXPECT_EQ(transposition, -2);
  scale = 0;
  transposition = 0;
  AsOutputSees().GetDspFactorsAt(1000, &scale, &transposition);
  EXPECT_EQ(scale, 1.5L);
  EXPECT_EQ(transposition, -2);
}

// Each of the three is asked about another moment.
TEST_F(Forwarding, TheThreeDspQueriesAreToldApart) {
  LoadReady("1");
  GetPlayer().SetTempoScale(1.25);
  AsOutputSees().AddToSampleIndex(100);
  JumpTo(480);
  GetPlayer().SetTempoScale(1.75);
  GetPlayer().GetShowControl().DoSkipAhead(500);
  GetPlayer().SetTempoScale(1.5);
  long double scale = 0;
  int transposition = 0;
  AsOutputSees().GetDspFactorsAtCurrentTickIndex(&scale, &transposition);
  EXPECT_EQ(scale, 1.5L) << "now";
  AsOutputSees().GetDspFactorsAtCurrentSampleIndex(&scale, &transposition);
  EXPECT_EQ(scale, 1.75L) << "before the control position moved ahead of the audio";
  AsOutputSees().GetDspFactorsAt(100, &scale, &transposition);
  EXPECT_EQ(scale, 1.25L) << "before the jump";
}

TEST_F(Forwarding, TheReadSamplesLockIsTheShowControls) {
  MakePlayer();
  EXPECT_EQ(&AsOutputSees().GetReadSamplesLock(), &GetPlayer().GetShowControl().GetReadSamplesLock());
}

TEST_F(Forwarding, IdleAndPrepareForExitGoToTheOutput) {
  LoadReady("1");
  GetPlayer().Idle();
  GetPlayer().PrepareForExit();
  EXPECT_EQ(Told(), (Journal{"output.Idle", "output.PrepareForExit"}));
}

TEST_F(Forwarding, WithoutAnOutputThereIsNothingToForward) {
  MakePlayer();
  Told();
  GetPlayer().Idle();
  GetPlayer().PrepareForExit();
  EXPECT_EQ(Told(), (Journal{}));
}

// One answer, whichever of its two bases is asked.
TEST_F(Forwarding, WhetherTheSongIsAttaccaIsTheBasesAnswer) {
  MakePlayer();
  Player& asPlayer = GetPlayer();
  EXPECT_FALSE(asPlayer.CurrentSongIsAttacca());
  EXPECT_FALSE(AsOutputSees().CurrentSongIsAttacca());
  fakes::player::SetSongIsAttacca(true);
  EXPECT_TRUE(asPlayer.CurrentSongIsAttacca());
  EXPECT_TRUE(AsOutputSees().CurrentSongIsAttacca());
}

TEST_F(Forwarding, TimeCodeCallbacksAreDiscarded) {
  LoadReady("1");
  const auto owned = std::make_shared<int>(0);
  GetPlayer().SetTimeCodeCallback([owned](double, double, double) { ++*owned; });
  GetPlayer().SetFullFrameTimeCodeCallback([owned](double) { ++*owned; });
  EXPECT_EQ(owned.use_count(), 1);  // nothing was stored
  GetPlayer().Play();
  Output().Turn(256);
  GetPlayer().Seek(0);
  EXPECT_EQ(*owned, 0);
}

// The same object, reached through the output's bases.
TEST_F(Forwarding, PlayAndResetAreReachedThroughTheVirtualBaseToo) {
  LoadReady("1");
  tesk_audio::PlayerOutputInterface& anyOutput = AsOutputSees();
  anyOutput.Play();
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::PLAY);
  anyOutput.ResetPlayer();
  EXPECT_EQ(GetPlayer().GetPlayerState(), PlayerState::STOP);
}

}  // namespace

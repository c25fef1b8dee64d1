// The order of a class's virtual operations is a binary contract with hosts that were built against it.
#include "tests/support/slot_index.h"

#include <gtest/gtest.h>

#include <optional>

#include "Sources/audio_player/audio_player.h"

namespace {

using test_support::SlotIndex;

struct Slot {
  const char* operation;
  std::optional<std::size_t> index;
};

// Makes protected operations known to the table below.
struct OpenPlayer : Player {
  using Player::DoSeek_;
};

TEST(SlotOrder, OfThePlayersTableIsThatOfTheBase) {
  const Slot slots[] = {
      {"HasPendingCaesura", SlotIndex(&AudioPlayer::HasPendingCaesura)},
      {"CurrentSongIsAttacca", SlotIndex(&AudioPlayer::CurrentSongIsAttacca)},
      {"GetJump", SlotIndex(&AudioPlayer::GetJump)},
      {"ClearJump", SlotIndex(&AudioPlayer::ClearJump)},
      {"GetJumpForVampRepeatOrCut", SlotIndex(&AudioPlayer::GetJumpForVampRepeatOrCut)},
      {"GUINotifyCaesura", SlotIndex(&AudioPlayer::GUINotifyCaesura)},
      {"GetFermataCanceledCaesura", SlotIndex(&AudioPlayer::GetFermataCanceledCaesura)},
      {"EnsureGuiIsCurrent", SlotIndex(&AudioPlayer::EnsureGuiIsCurrent)},
      {"GetElapsedSeconds", SlotIndex(&AudioPlayer::GetElapsedSeconds)},
      {"GetGuiUpdate", SlotIndex(&AudioPlayer::GetGuiUpdate)},
      {"GetShowControl", SlotIndex(&AudioPlayer::GetShowControl)},
      {"GetTotalDurationSeconds", SlotIndex(&AudioPlayer::GetTotalDurationSeconds)},
      {"Idle", SlotIndex(&AudioPlayer::Idle)},
      {"LoadSong", SlotIndex(&AudioPlayer::LoadSong)},
      {"NextSong", SlotIndex(&AudioPlayer::NextSong)},
      {"Pause", SlotIndex(&AudioPlayer::Pause)},
      {"PreviousSong", SlotIndex(&AudioPlayer::PreviousSong)},
      {"Seek", SlotIndex(&AudioPlayer::Seek)},
      {"SeekLeft", SlotIndex(&AudioPlayer::SeekLeft)},
      {"SeekRight", SlotIndex(&AudioPlayer::SeekRight)},
      {"SeekToPreviousMeasure", SlotIndex(&AudioPlayer::SeekToPreviousMeasure)},
      {"SeekToNextMeasure", SlotIndex(&AudioPlayer::SeekToNextMeasure)},
      {"SetAttaccaState", SlotIndex(&AudioPlayer::SetAttaccaState)},
      {"SetTempoScale", SlotIndex(&AudioPlayer::SetTempoScale)},
      {"SetTransposition", SlotIndex(&AudioPlayer::SetTransposition)},
      {"PrepareForExit", SlotIndex(&AudioPlayer::PrepareForExit)},
      {"Shutdown", SlotIndex(&AudioPlayer::Shutdown)},
      {"Stop", SlotIndex(&AudioPlayer::Stop)},
      {"StopAndReset", SlotIndex(&AudioPlayer::StopAndReset)},
      {"FlowControlExit", SlotIndex(&AudioPlayer::FlowControlExit)},
      {"Continue", SlotIndex(&AudioPlayer::Continue)},
      {"SetTimeCodeCallback", SlotIndex(&AudioPlayer::SetTimeCodeCallback)},
      {"SetFullFrameTimeCodeCallback", SlotIndex(&AudioPlayer::SetFullFrameTimeCodeCallback)},
      {"DoSeek_", SlotIndex(&OpenPlayer::DoSeek_)},
      {"ResetPlayerNoFillBuffers", SlotIndex(&AudioPlayer::ResetPlayerNoFillBuffers)},
  };
  std::size_t expected = 9;  // after the lock operations and the destructor pair
  for (const Slot& slot : slots) EXPECT_EQ(slot.index, expected++) << slot.operation;
}

TEST(SlotOrder, OfTheOutputsOperationsFollowsThePlayersTable) {
  const Slot slots[] = {
      {"AddToSampleIndex", SlotIndex(&AudioPlayer::AddToSampleIndex)},
      {"GetNextReadSampleCount", SlotIndex(&AudioPlayer::GetNextReadSampleCount)},
      {"ProcessLoopEventsAtCurrentTickIndex", SlotIndex(&AudioPlayer::ProcessLoopEventsAtCurrentTickIndex)},
      {"GetSampleIndex", SlotIndex(&AudioPlayer::GetSampleIndex)},
      {"GetNextCaesuraSampleIndex", SlotIndex(&AudioPlayer::GetNextCaesuraSampleIndex)},
      {"PauseAndClearApproachingStop", SlotIndex(&AudioPlayer::PauseAndClearApproachingStop)},
      {"NotifyApproachingStop", SlotIndex(&AudioPlayer::NotifyApproachingStop)},
      {"GetLastJumpSampleIndex", SlotIndex(&AudioPlayer::GetLastJumpSampleIndex)},
      {"GetJumpTargetSampleIndex", SlotIndex(&AudioPlayer::GetJumpTargetSampleIndex)},
      {"GetJumpIsNext", SlotIndex(&AudioPlayer::GetJumpIsNext)},
      {"GetCutToEndOfSongIsNext", SlotIndex(&AudioPlayer::GetCutToEndOfSongIsNext)},
      {"LoadNextSongAttacca", SlotIndex(&AudioPlayer::LoadNextSongAttacca)},
      {"OnCaesuraStop", SlotIndex(&AudioPlayer::OnCaesuraStop)},
      {"NotifyOutputHasStopped", SlotIndex(&AudioPlayer::NotifyOutputHasStopped)},
      {"ReadSamplesAt", SlotIndex(&AudioPlayer::ReadSamplesAt)},
      {"ReadSamples", SlotIndex(&AudioPlayer::ReadSamples)},
      {"GetDspFactorsAtCurrentTickIndex", SlotIndex(&AudioPlayer::GetDspFactorsAtCurrentTickIndex)},
      {"GetDspFactorsAtCurrentSampleIndex", SlotIndex(&AudioPlayer::GetDspFactorsAtCurrentSampleIndex)},
      {"GetDspFactorsAt", SlotIndex(&AudioPlayer::GetDspFactorsAt)},
      {"GetReadSamplesLock", SlotIndex(&AudioPlayer::GetReadSamplesLock)},
      {"SkipAheadSamplesOnNextJump", SlotIndex(&AudioPlayer::SkipAheadSamplesOnNextJump)},
      {"AdjustNextJumpSampleIndex", SlotIndex(&AudioPlayer::AdjustNextJumpSampleIndex)},
      {"ResetForRecovery", SlotIndex(&AudioPlayer::ResetForRecovery)},
      {"ResetForRecoveryAdvance", SlotIndex(&AudioPlayer::ResetForRecoveryAdvance)},
      {"GetAttaccaHasOccurred", SlotIndex(&AudioPlayer::GetAttaccaHasOccurred)},
      {"Play", SlotIndex(&AudioPlayer::Play)},
      {"ResetPlayer", SlotIndex(&AudioPlayer::ResetPlayer)},
      {"GetUserRequestedSeek", SlotIndex(&AudioPlayer::GetUserRequestedSeek)},
      {"GetSeekRequestedWhileNotPlay", SlotIndex(&AudioPlayer::GetSeekRequestedWhileNotPlay)},
  };
  std::size_t expected = 44;  // the player's table has nine lock operations and 35 of its own
  for (const Slot& slot : slots) EXPECT_EQ(slot.index, expected++) << slot.operation;
}

}  // namespace

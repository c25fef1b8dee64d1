#include "Sources/audio_player/audio_player.h"
#include "Sources/audio_player/source_path.h"
#include "exc/assertion/require_at.h"
#include "exc/console/cout_buffer.h"
#include "exc/flag/ex_scope_flag.h"
#include "suite/audio/audio_sample_output.h"
#include "suite/core/gui_dispatcher.h"

void AudioPlayer::Play() {
  if (!WaitForLoaderAndGetNoErrors_()) {
    if (GetFileLoaderErrorOccurred()) notify::guiDispatcher.SendPlayerExceptionNotification();
    return;
  }
  StartUnlessPlaying_();
  notify::guiDispatcher.SendPlaybackStarted();
  guiUpdate_.Unpause();
}

// One step for whoever pauses, stops or resets meanwhile: it comes before the change of state, and then finds
// nothing to do, or behind the start, and then finds an output to pause or to stop.
void AudioPlayer::StartUnlessPlaying_() {
  exc::ScopeLock starting(startLock_);
  if (EnterPlay_()) StartOutput_();
}

// One step, because a loader and the host may come here at once: only one of them starts the output.
bool AudioPlayer::EnterPlay_() {
  exc::ScopeLock lock(*this);
  if (IsPlaying()) return false;
  SetPlayerState(PlayerState::PLAY);
  return true;
}

void AudioPlayer::StartOutput_() {
  if (tesk_audio::AudioSampleOutput* const output = Output_()) output->Start();
}

void AudioPlayer::Pause() {
  if (!EnterPause_()) return;
  if (tesk_audio::AudioSampleOutput* const output = Output_()) output->Pause();
  if (!StartAgainIfPlaying_()) notify::guiDispatcher.SendPlaybackPaused();
}

// Somebody else may have it play before the pause comes to the output, which has then paused what plays.
bool AudioPlayer::StartAgainIfPlaying_() {
  exc::ScopeLock starting(startLock_);
  if (!IsPlaying()) return false;
  StartOutput_();
  return true;
}

// One step, because the output may stop by itself at this moment: a song that has ended stays stopped.
bool AudioPlayer::EnterPause_() {
  exc::ScopeLock starting(startLock_);
  exc::ScopeLock lock(*this);
  if (!IsPlaying()) return false;
  SetPlayerState(PlayerState::PAUSE);
  return true;
}

PlayerState AudioPlayer::GetStateBetweenStarts_() {
  exc::ScopeLock starting(startLock_);
  return GetPlayerState();
}

void AudioPlayer::Stop() {
  if (GetStateBetweenStarts_() == PlayerState::STOP) {
    if (!OutputRuns_()) return;
    RequireNoRunningOutputInStop_("Stop", 991);
  }
  SetStopRequested(true);
  if (tesk_audio::AudioSampleOutput* const output = Output_()) {
    output->Stop(true);
  } else {
    NotifyOutputHasStopped();  // what the output would have reported
  }
  exc::ScopeLock lock(*this);
  if (GetPlayerState() == PlayerState::PAUSE) SetPlayerState(PlayerState::STOP);
}

// After the output has been seen running. A loader may have started it since the state was looked at, and
// leaves `STOP` before it does.
void AudioPlayer::RequireNoRunningOutputInStop_(const char* function, int line) {
  if (GetPlayerState() != PlayerState::STOP) return;
  exc::FailAssertion("!(this->audioSampleOutput_->GetOutputIsRunning())", function, audio_player::kSourcePath,
                     line);
}

void AudioPlayer::StopAndReset() {
  if (GetPlayerState() != PlayerState::STOP && OutputRuns_()) Stop();
  ResetPlayer();
}

void AudioPlayer::ResetPlayer() {
  if (OutputRuns_() && !StopRunningOutput_()) {
    exc::CoutBuffer() << "[WARNING] ResetPlayer was called while output was running. Unable to stop output."
                      << exc::EndlT();
    return;
  }
  exc::ExScopeFlag resetting(playerIsResetting_);
  {
    exc::ScopeLock lock(*this);
    continueIsPending_ = false;
    seekRequestedWhileNotPlay_ = true;
    stopRequested_ = false;
    attaccaHasOccurred_ = false;
    attaccaAudibleHold_ = false;
    approachingStop_ = false;
    audibleTickIndex_ = 0;
    attaccaHoldSampleCount_ = 0;
    approachingStopTickIndex_ = 0;
  }
  samplesTicksConverter_.SetElapsedSampleCountAtAudioStart(0);
  if (showControl_.FullReset()) return;
  RefillOutput_();
  EnsureGuiIsCurrent();
}

void AudioPlayer::ResetPlayerNoFillBuffers() {
  {
    exc::ScopeLock lock(*this);
    continueIsPending_ = false;
    seekRequestedWhileNotPlay_ = true;
  }
  samplesTicksConverter_.SetElapsedSampleCountAtAudioStart(0);
  showControl_.FullReset();
}

bool AudioPlayer::StopRunningOutput_() {
  tesk_audio::AudioSampleOutput* const output = Output_();
  SetStopRequested(true);
  for (int retries = 10; !output->Stop(true); --retries) {
    if (retries == 0) return false;
  }
  return true;
}

void AudioPlayer::RefillOutput_() {
  if (tesk_audio::AudioSampleOutput* const output = Output_()) output->Refill();
}

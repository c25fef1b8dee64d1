#include <utility>

#include "Sources/audio_player/audio_player.h"
#include "suite/audio/audio_sample_output.h"
#include "suite/core/gui_dispatcher.h"

void AudioPlayer::NotifyApproachingStop() {
  exc::ScopeLock lock(*this);
  approachingStop_ = true;
  approachingStopTickIndex_ = showControl_.GetTickIndex();
}

void AudioPlayer::PauseAndClearApproachingStop() {
  guiUpdate_.Pause();
  exc::ScopeLock lock(*this);
  approachingStop_ = false;
}

bool AudioPlayer::OnCaesuraStop() {
  bool continueWasPending = false;
  {
    exc::ScopeLock lock(*this);
    continueWasPending = std::exchange(continueIsPending_, false);
    seekRequestedWhileNotPlay_ = true;
  }
  const bool fermataWasCanceled = showControl_.GetFermataCanceledCaesura();
  showControl_.ClearFermataCanceledCaesura();
  guiUpdate_.Pause();
  if (fermataWasCanceled) {
    showControl_.ResetGuiUpdate();
  } else {
    showControl_.OnCaesuraStop();
  }
  samplesTicksConverter_.ResetElapsedSampleCounts();
  RefillOutput_();
  playerState_ = PlayerState::PAUSE;  // the field itself: no change of state that a base could act on
  if (continueWasPending || fermataWasCanceled) return true;

  GUINotifyCaesura();
  guiUpdate_.UpdateOnce();
  notify::guiDispatcher.SendPlaybackPaused();
  return false;
}

bool AudioPlayer::SeekToCaesuraStop_() {
  if (IsPlaying()) {
    if (tesk_audio::AudioSampleOutput* const output = Output_()) {
      output->Stop(false);
      return true;
    }
  }
  exc::ScopeLock lock(*this);
  continueIsPending_ = false;
  seekRequestedWhileNotPlay_ = true;
  return false;
}

#include <optional>

#include "Sources/audio_player/audio_player.h"
#include "exc/console/cout_buffer.h"
#include "exc/flag/ex_scope_flag.h"
#include "suite/audio/audio_sample_output.h"

void AudioPlayer::Seek(unsigned tickIndex) {
  SetUserRequestedSeek(true);
  DoSeek_(tickIndex);
}

void AudioPlayer::SeekLeft() {
  Seek(showControl_.GetSeekLeft());
}

void AudioPlayer::SeekRight() {
  try {
    Seek(showControl_.GetSeekRight());
  } catch (...) {
    // Past the last place there is nowhere to go, and a performer who presses once too often hears of
    // nothing.
  }
}

void AudioPlayer::DoSeek_(unsigned tickIndex) {
  {
    exc::ScopeLock lock(*this);
    if (!IsPlaying()) seekRequestedWhileNotPlay_ = true;
  }
  if (GetPlayerState() == PlayerState::PAUSE && OutputRuns_() && !StopRunningOutput_()) {
    exc::CoutBuffer() << "Unable to stop playback to complete seek." << exc::EndlT();
    return;
  }
  if (!WaitForLoaderAndGetNoErrors_()) return;
  if (GetPlayerState() == PlayerState::PAUSE && OutputRuns_()) return;

  std::optional<exc::ExScopeFlag> seeking;
  if (tesk_audio::AudioSampleOutput* const output = Output_()) seeking.emplace(output->GetSeekFlag());
  if (showControl_.Seek(tickIndex)) return;
  if (!IsPlaying()) StandAtSoughtPosition_();
  EnsureGuiIsCurrent();
}

void AudioPlayer::StandAtSoughtPosition_() {
  if (GetPlayerState() == PlayerState::STOP && OutputRuns_()) RequireNoRunningOutputInStop_("DoSeek_", 927);
  showControl_.ResetGuiUpdate();
  samplesTicksConverter_.ResetElapsedSampleCounts();
  RefillOutput_();
}

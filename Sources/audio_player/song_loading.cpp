#include <new>

#include "Sources/audio_player/audio_player.h"
#include "exc/lock/call_unlocked.h"
#include "exc/lock/scope_unlock.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/audio/audio_sample_output.h"
#include "suite/audio/create.h"
#include "suite/core/gui_dispatcher.h"
#include "suite/player_core/errors.h"

bool AudioPlayer::DoLoadSongAndGetIsFinished_(const std::string& song) {
  {
    exc::ScopeLock lock(*this);
    waitForAudio_.Cancel();
    loadSongAttaccaIsWaiting_ = false;
  }
  playerIsResetting_.WaitForCancel();
  WaitForCancelAndPassItOn_(fileLoaderIsFinishing_);
  if (songAudioFiles_.count(song) == 0) throw NoAudioForSong(song);
  if (!IsPlaying()) Idle();
  SetActiveSongNumber(song);
  PreLoadAudio_();
  showControl_.LoadSong();

  const Placement placement = PutSongInPlace_(song);
  if (placement == Placement::Failed) return false;
  const bool ready = placement == Placement::Ready;
  if (ready) TakeOverRateAndStart_();
  notify::guiDispatcher.SendSongLoaded(song);
  return ready;
}

AudioPlayer::Placement AudioPlayer::PutSongInPlace_(const std::string& song) {
  exc::ScopeLock lock(*this);
  // A song that runs on into the next while its player is destroyed finds no output, and must not make
  // another.
  if (isEnding_) throw EndOfShow("The player is being destroyed.");
  const bool decoded = decodedContents_.count(song) != 0;
  if (decoded) {
    waitForAudio_.Cancel();
  } else {
    waitForAudio_.Set(song);
  }
  if (IsOutputInitialized_()) {
    if (!decoded) return Placement::Loading;
    SwitchOutputTo_(*decodedContents_.at(song));
    return Placement::Ready;
  }
  // The very first song is waited for: the output is made for its format.
  if (!decoded && !WaitUnlockedForLoader_()) return Placement::Failed;
  // Decoded without an error, and not to be found: there was no memory to note it.
  if (decodedContents_.count(song) == 0) throw std::bad_alloc();
  audioSampleOutput_.reset(tesk_audio::CreateAudioSampleOutput(*decodedContents_.at(song), *this));
  IsOutputInitialized_(true);
  NoteTaken_(*decodedContents_.at(song));
  return Placement::Ready;
}

// Lock open: the loader stores the song's content; there is no output yet that it could switch.
// Afterwards: the content is looked up anew.
bool AudioPlayer::WaitUnlockedForLoader_() {
  exc::ScopeUnlock open(*this);
  return WaitForLoaderAndGetNoErrors_();
}

void AudioPlayer::SwitchOutputTo_(const tesk_audio::AudioSampleContent& content) {
  std::string errorText;
  if (!audioSampleOutput_->SwitchContent(content, &errorText)) throw AudioFormatError(errorText);
  NoteTaken_(content);
}

void AudioPlayer::NoteTaken_(const tesk_audio::AudioSampleContent& content) {
  playedFormat_ = {content.GetSampleRateHz(), content.GetChannelCount()};
}

// A song is current before the output is asked whether it takes its content, and stays current when it does
// not. Frames of more channels would not fit into the buffers of an output that reads meanwhile, even after
// it has been taken out to be deleted.
bool AudioPlayer::MayBeRead_(const tesk_audio::AudioSampleContent& content) {
  const std::pair<double, unsigned> format{content.GetSampleRateHz(), content.GetChannelCount()};
  const bool nothingTakenYet = playedFormat_.second == 0;
  return nothingTakenYet || format == playedFormat_;
}

void AudioPlayer::TakeOverRateAndStart_() {
  samplesTicksConverter_.SetSampleRate(GetSampleRateHz());
  guiUpdate_.ResetAndSeekToTickIndex(showControl_.GetStartTickIndex());
}

bool AudioPlayer::WaitForLoaderAndGetNoErrors_() {
  exc::ScopeLock lock(*this);
  if (waitForAudio_.GetIsSet()) {
    const auto entry = fileLoaders_.find(waitForAudio_.GetString());
    if (entry != fileLoaders_.end()) WaitForLoader_(lock, entry->first, entry->second);
  }
  // Lock open: the loader that holds the flag needs the lock to finish.
  // Afterwards: nothing read above is reused.
  exc::CallUnlocked(lock, [this] { WaitForCancelAndPassItOn_(fileLoaderIsFinishing_); });
  return !loaderErrorOccurred_;
}

// Cancelling a flag wakes one waiter, and there may be two: the host, and the output's thread in an attacca.
// So each wakes the next, unless the flag is set again: then the next cancel wakes one.
void AudioPlayer::WaitForCancelAndPassItOn_(exc::ExFlag& flag) {
  flag.WaitForCancel();
  exc::ScopeLock lock(flag);
  if (!flag.GetIsSet()) flag.Cancel();
}

// Copies of the entry's parts, because the loader takes the entry out of the map.
void AudioPlayer::WaitForLoader_(exc::ScopeLock& lock, std::string song, FileLoaderData* fld) {
  if (fld->Joined()) {
    // Another thread joins it already, and deletes it: a thread can be joined only once.
    while (LoaderIsInMap_(song, fld)) loaderLeftMap_.WaitWhileLocked(lock);
    return;
  }
  fld->Joined(true);
  // Lock open: the loader finishes, puts its content in place and leaves the map.
  // Afterwards: the map's entry is gone, the record is not: who joins deletes it.
  exc::CallUnlocked(lock, [fld] { fld->Join(); });
  CheckFileLoaderExceptions(fld);
  TakeLoaderOutOfMap_(song, fld);
  delete fld;
}

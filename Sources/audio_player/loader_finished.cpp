#include <pthread.h>

#include <memory>
#include <utility>

#include "Sources/audio_player/audio_player.h"
#include "exc/flag/ex_scope_flag.h"
#include "suite/audio/audio_sample_content.h"

void AudioPlayer_FileLoaderFinished(FileLoaderData* fld) {
  auto& player = *static_cast<AudioPlayer*>(fld->UserData());
  const LoadersInside::Visit visit(player.loadersInside_);
  player.FileLoaderFinished_(fld);
}

// Who deletes the record: whoever has set its joined flag, for that one still has to join the thread;
// otherwise this operation when the load failed or is awaited. The record of a song that nobody waits for is
// left alone.
void AudioPlayer::FileLoaderFinished_(FileLoaderData* fld) {
  // Before the lock, which is given up before content is freed.
  std::unique_ptr<tesk_audio::AudioSampleContent> unrecorded;
  exc::ScopeLock lock(*this);
  const std::string song = fld->SongNumber();
  if (CheckFileLoaderExceptions(fld)) {
    TakeLoaderOutOfMap_(song, fld);
    ReleaseRecord_(fld);
    return;
  }
  unrecorded.reset(fld->AudioContent());
  decodedContents_[song] = unrecorded.get();  // without memory for that, nobody would ever know of it
  static_cast<void>(unrecorded.release());
  TakeLoaderOutOfMap_(song, fld);
  if (!waitForAudio_.GetIsSet() || waitForAudio_.GetString() != song) return;

  exc::ExScopeFlag finishing(fileLoaderIsFinishing_, song);
  ReleaseRecord_(fld);
  if (!PutAwaitedSongInPlace_()) return;
  lock.Unlock();
  TakeOverRateAndStart_();
  Play();
}

bool AudioPlayer::PutAwaitedSongInPlace_() {
  const tesk_audio::AudioSampleContent& content = *decodedContents_.at(waitForAudio_.GetString());
  waitForAudio_.Cancel();
  if (!IsOutputInitialized_()) return false;  // who waits for the very first song makes the output
  SwitchOutputTo_(content);
  // In an attacca the output's own thread waits and goes on playing by itself.
  return !std::exchange(loadSongAttaccaIsWaiting_, false);
}

void AudioPlayer::ReleaseRecord_(FileLoaderData* fld) {
  if (fld->Joined()) return;
  pthread_detach(*fld->ThreadID());
  delete fld;
}

bool AudioPlayer::LoaderIsInMap_(const std::string& song, const FileLoaderData* fld) {
  const auto entry = fileLoaders_.find(song);
  return entry != fileLoaders_.end() && entry->second == fld;
}

void AudioPlayer::TakeLoaderOutOfMap_(const std::string& song, const FileLoaderData* fld) {
  if (!LoaderIsInMap_(song, fld)) return;
  fileLoaders_.erase(song);
  loaderLeftMap_.Broadcast(*this);
}

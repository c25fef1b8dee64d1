#include "Sources/audio_player/audio_player.h"
#include "Sources/file_loader/file_loader_thread.h"
#include "exc/lock/call_unlocked.h"
#include "exc/text/get_keys.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/player_core/errors.h"
#include "suite/utility/path.h"

void AudioPlayer::PreLoadAudio_() {
  exc::ScopeLock lock(*this);
  const std::set<std::string> wanted = GetWantedSongs_();
  QueueUnwantedContents_(wanted);
  // Lock open: loaders finish and leave the map; each needs the lock for it.
  // Afterwards: contents and loaders are looked up anew; only the set of wanted songs is reused.
  exc::CallUnlocked(lock, [&] { CleanUpExtraFileLoaderThreads_(wanted); });
  StartMissingLoaders_(wanted);
}

// The current song and, as far as they exist and are not skipped, its neighbours with audio.
std::set<std::string> AudioPlayer::GetWantedSongs_() {
  const std::string current = GetCurrentSongNumber();
  std::set<std::string> wanted{current};
  try {
    const std::string previous = GetPreviousSongWithAudio_(current);
    if (showControl_.SongIsNotSkip(previous)) wanted.insert(previous);
  } catch (const StartOfShow&) {
    // No previous song: nothing to decode in advance.
  }
  try {
    const std::string next = GetNextSongWithAudio_(current);
    if (showControl_.SongIsNotSkip(next)) wanted.insert(next);
  } catch (const EndOfShow&) {
    // No next song: nothing to decode in advance.
  }
  return wanted;
}

// Nothing is freed here: that takes long, and the output may be in the middle of a read.
void AudioPlayer::QueueUnwantedContents_(const std::set<std::string>& wanted) {
  for (const std::string& song : exc::get_keys(decodedContents_)) {
    if (wanted.count(song) != 0) continue;
    contentsToDelete_.push_back(decodedContents_.at(song));
    decodedContents_.erase(song);
  }
}

void AudioPlayer::StartMissingLoaders_(const std::set<std::string>& wanted) {
  for (const std::string& song : wanted) {
    if (decodedContents_.count(song) != 0 || fileLoaders_.count(song) != 0) continue;
    const std::string path = exc::path::Join(showPath_, "data", songAudioFiles_.at(song));
    // The entry comes first: a loader that runs is always in the map, whatever memory there is.
    const auto entry = fileLoaders_.try_emplace(song, nullptr).first;
    try {
      entry->second =
          StartFileLoaderThread(song, path, contentArgument_, AudioPlayer_FileLoaderFinished, this);
    } catch (...) {
      fileLoaders_.erase(entry);
      throw;
    }
  }
}

bool AudioPlayer::IsBeingDecoded(const std::string& song) {
  exc::ScopeLock lock(*this);
  return fileLoaders_.count(song) != 0;
}

void AudioPlayer::CleanUpExtraFileLoaderThreads_(std::set<std::string> songsToKeep) {
  std::vector<std::string> songs;
  {
    exc::ScopeLock lock(*this);
    songs = exc::get_keys(fileLoaders_);
  }
  for (const std::string& song : songs) {
    if (songsToKeep.count(song) == 0) CleanUpFileLoaderThread_(song);
  }
}

void AudioPlayer::CleanUpFileLoaderThread_(const std::string& song) {
  exc::ScopeLock lock(*this);
  const auto entry = fileLoaders_.find(song);
  if (entry == fileLoaders_.end()) return;
  FileLoaderData* const fld = entry->second;
  if (fld->Joined()) return;  // another thread waits for it, and deletes it
  fld->Joined(true);
  // Lock open: the loader finishes, stores its content and leaves the map; the song may be made current
  // again. Afterwards: the map's entry is gone, the record is not: who joins deletes it.
  exc::CallUnlocked(lock, [fld] { fld->Join(); });
  CheckFileLoaderExceptions(fld);
  TakeLoaderOutOfMap_(song, fld);
  const std::unique_ptr<FileLoaderData> record(fld);
  const std::unique_ptr<tesk_audio::AudioSampleContent> discarded(TakeDiscardedContent_(*fld));
  lock.Unlock();  // content is never freed with the lock held
}

// What the cleaned-up loader has decoded. Nothing when it failed, and nothing when another thread has put the
// content to use meanwhile: the song has become current again, or the content waits for the deleter already.
tesk_audio::AudioSampleContent* AudioPlayer::TakeDiscardedContent_(const FileLoaderData& fld) {
  const auto decoded = decodedContents_.find(fld.SongNumber());
  if (decoded == decodedContents_.end() || decoded->second != fld.AudioContent()) return nullptr;
  if (IsCurrentSong_(fld.SongNumber())) return nullptr;
  decodedContents_.erase(decoded);
  return fld.AudioContent();
}

bool AudioPlayer::IsCurrentSong_(const std::string& song) {
  return GetActiveSongNumberRef().IsSet() && GetCurrentSongNumber() == song;
}

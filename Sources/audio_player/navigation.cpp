#include <optional>

#include "Sources/audio_player/audio_player.h"
#include "suite/core/gui_dispatcher.h"
#include "suite/player_core/errors.h"

namespace {

// "Previous" restarts a song that has run further than this past its start.
constexpr unsigned kRestartAfterTicks = 1920;

}  // namespace

void AudioPlayer::LoadSong(const std::string& songNumber) {
  Stop();
  LoadThenResetOrReport_(songNumber);
}

bool AudioPlayer::NextSong() {
  Stop();
  notify::guiDispatcher.SendPlaybackStopped();
  std::optional<std::string> next;
  {
    exc::ScopeLock lock(*this);
    try {
      next = GetNextSongWithAudio_("");
    } catch (const EndOfShow&) {
      // The last song: back to its beginning, below and without the lock.
    }
  }
  if (!next) {
    Seek(0);
    return true;
  }
  LoadThenResetOrReport_(*next);
  return false;
}

void AudioPlayer::PreviousSong() {
  Stop();
  notify::guiDispatcher.SendPlaybackStopped();
  if (GetTickIndex() > showControl_.GetStartTickIndex() + kRestartAfterTicks) {
    Seek(0);
    return;
  }
  // Unlike NextSong without the player lock.
  std::string previous;
  try {
    previous = GetPreviousSongWithAudio_("");
  } catch (const StartOfShow&) {
    Seek(0);
    return;
  }
  LoadThenResetOrReport_(previous);
}

void AudioPlayer::LoadThenResetOrReport_(const std::string& songNumber) {
  if (DoLoadSongAndGetIsFinished_(songNumber)) {
    ResetPlayer();
  } else if (GetFileLoaderErrorOccurred()) {
    notify::guiDispatcher.SendPlayerExceptionNotification();
  }
  // Otherwise the song's loader puts it in place.
}

std::string AudioPlayer::GetNextSongWithAudio_(const std::string& from) {
  const std::string start = from.empty() ? GetCurrentSongNumber() : from;
  const std::string candidate = showControl_.GetSongAfter(start);
  return songAudioFiles_.count(candidate) != 0 ? candidate : GetNextSongWithAudio_(candidate);
}

std::string AudioPlayer::GetPreviousSongWithAudio_(const std::string& from) {
  const std::string start = from.empty() ? GetCurrentSongNumber() : from;
  const std::string candidate = showControl_.GetSongBefore(start);
  return songAudioFiles_.count(candidate) != 0 ? candidate : GetPreviousSongWithAudio_(candidate);
}

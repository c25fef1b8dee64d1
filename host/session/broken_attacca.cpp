// An attacca that was broken off: a thread or memory was refused on the way into the next song, or the output
// could not take it. The output, which reports why on the console, then stops as at the end of a song.
#include "Sources/audio_player/audio_player.h"
#include "host/session/failure.h"
#include "host/session/refusals.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"

namespace orbel::host {

// Playback has come to an end by itself. Half way through an attacca the next song is current and not loaded,
// or it has just been loaded and nothing of it was played.
bool Session::AttaccaIsBrokenOff_(bool hasJustBegun) {
  if (IsPlaying()) return false;
  if (GetSongNumber() != loadedSong_) return true;
  return hasJustBegun && GetTick() < GetClock().GetEndTick();
}

void Session::BeginAfterBrokenAttacca_() {
  const std::string song = GetSongNumber();
  WarnOfLoadingAgain_(song, "running straight into it was broken off");
  try {
    BeginAnew_(song);
  } catch (const PlayerLost&) {
    throw;
  } catch (const std::exception& error) {
    LeaveOut_(song, InWords(error));
    BeginAnew_(song);
  }
  if (!IsAtOrBehind_(song))
    throw PlayerLost(Shown(folder_.GetPath()) + ": the show cannot go on: " + WhyLeftOut(song));
}

// Live, the player goes on in silence through a song that could not be decoded.
bool Session::AttaccaHasFailed_() const {
  return kind_ == OutputKind::Live && IsPlaying() && SongNamedIn_(GetLoaderError_()) == GetSongNumber();
}

void Session::BeginAfterFailedAttacca_() {
  const std::string song = GetSongNumber();
  player_->StopAndReset();
  Recover_(song);
  if (!IsAtOrBehind_(song))
    throw PlayerLost(Shown(folder_.GetPath()) + ": the show cannot go on: " + WhyLeftOut(song));
}

}  // namespace orbel::host

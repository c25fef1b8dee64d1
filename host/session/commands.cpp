#include <stdexcept>
#include <utility>

#include "Sources/audio_player/audio_player.h"
#include "host/session/failure.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"
#include "suite/player_core/errors.h"

namespace orbel::host {

std::string Session::Do(const Command& command) {
  switch (command.kind) {
    case CommandKind::Go:
      return Go_();
    case CommandKind::Again:
      return player_->RepeatSafety() ? "the safety is played once more" : "no safety to play again here";
    case CommandKind::Next:
      return StepSong_(true);
    case CommandKind::Previous:
      return StepSong_(false);
    case CommandKind::Pause:
      player_->Pause();
      return "";
    case CommandKind::Play:
      Play_();
      return "";
    case CommandKind::Stop:
      Stop_();
      return "";
    case CommandKind::Left:
    case CommandKind::Right:
      waiting_ = ended_ = false;
      command.kind == CommandKind::Left ? player_->SeekLeft() : player_->SeekRight();
      return "";
    case CommandKind::Seek:
      Seek_(command.position);
      return "";
    case CommandKind::Tempo:
      player_->SetTempoScale(command.number);
      return "";
    case CommandKind::Transpose:
      player_->SetTransposition(static_cast<int>(command.number));
      return "";
  }
  return "";
}

std::string Session::Go_() {
  if (IsPlaying()) {
    if (player_->FlowControlExit()) return "go: the loop is left";
    if (player_->Continue()) return "go: the caesura is passed through";
    return "nothing to go on from here";
  }
  if (ended_) {
    const bool moved = NextSongStopped();
    if (!moved) return "the show is over; p plays the last song again";
  } else if (waiting_ && player_->Continue()) {
    waiting_ = false;
    return "";
  } else if (player_->HasPendingCaesura()) {
    // Playback was brought to a stand on the caesura by a seek: seeking there once more leaves it behind.
    player_->Seek(GetTick());
  }
  Play_();
  return "";
}

// Starts playing. A song that failed to load in the meantime is left out first: its error would keep the
// player from ever playing again.
void Session::Play_() {
  if (ended_) player_->StopAndReset();
  waiting_ = ended_ = false;
  player_->Play();
  if (IsPlaying() || !LoadHasFailed_()) return;
  Recover_(GetSongNumber());
  player_->Play();
}

void Session::Stop_() {
  waiting_ = ended_ = false;
  player_->StopAndReset();
}

void Session::Seek_(const std::string& position) {
  const Place place = GetClock().Find(position);
  if (place.tick > GetClock().GetEndTick()) {
    throw Failure("\"" + Shown(position) + "\" lies after the end of playback, which is " +
                  GetClock().PlaceOfTick(GetClock().GetEndTick()).position);
  }
  waiting_ = ended_ = false;
  player_->Seek(place.tick);
}

std::string Session::StepSong_(bool forward) {
  const bool wasPlaying = IsPlaying();
  std::string message;
  if (forward) {
    if (!NextSongStopped()) return "this is the last song; back at its start";
  } else {
    player_->PreviousSong();
    if (!SettleStopped_()) Recover_(GetSongNumber());
  }
  if (wasPlaying) Play_();
  return message;
}

bool Session::NextSongStopped() {
  if (player_->NextSong()) {
    waiting_ = ended_ = false;
    return false;
  }
  if (!SettleStopped_()) Recover_(GetSongNumber());
  return true;
}

void Session::LoadStopped(const std::string& song) {
  if (!folder_.HasAudio(song) || leftOut_.contains(song)) {
    throw Failure("song " + Shown(song) + " cannot be played: " +
                  (leftOut_.contains(song) ? "its audio cannot be used" : "it has no audio"));
  }
  player_->LoadSong(song);
  if (SettleStopped_()) return;
  Recover_(song);
  if (GetSongNumber() != song) throw Failure(tesk_midi::ToString(problems_.back()));
}

// A song that is not decoded yet plays as soon as it is, on its loader's thread. Asking to play waits for
// that loader; stopping and resetting then leaves the song silent at its start, whichever of the two came
// first.
bool Session::SettleStopped_() {
  waiting_ = ended_ = false;
  player_->Play();
  if (!IsPlaying()) return false;
  player_->StopAndReset();
  return true;
}

// A fresh player without the songs that cannot be decoded, at the start of `song`, or of the song after it
// when it is one of them.
void Session::Recover_(const std::string& song) {
  if (!LeaveOutBrokenSongs_()) player_->ThrowIfThreadExceptions();
  BuildWithoutBrokenSongs_();
  bool reached = false;
  for (const std::string& number : folder_.GetData().GetRunningOrder()) {
    reached = reached || number == song;
    if (!reached || !folder_.HasAudio(number) || leftOut_.contains(number)) continue;
    if (GetSongNumber() != number) player_->LoadSong(number);
    if (!SettleStopped_()) player_->ThrowIfThreadExceptions();
    return;
  }
}

}  // namespace orbel::host

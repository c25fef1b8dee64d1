#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include "Sources/audio_player/audio_player.h"
#include "host/session/failure.h"
#include "host/session/long_wait.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"

namespace orbel::host {
namespace {

constexpr double kTempoSteps = 100.0;  // to one

}  // namespace

std::string Session::Do(const Command& command) {
  toldToWait_.clear();
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
      // Play alone would come to a stand on the caesura once more where a seek has led there.
      if (IsWaiting()) return Go_();
      Play_();
      return "";
    case CommandKind::Stop:
      Stop_();
      return "";
    case CommandKind::Left:
      BeginAfresh_();
      player_->SeekLeft();
      return "";
    case CommandKind::Right:
      return SeekRight_();
    case CommandKind::Seek:
      Seek_(command.position);
      return "";
    case CommandKind::Tempo:
      player_->SetTempoScale(command.number);
      return "";
    case CommandKind::Transpose:
      player_->SetTransposition(static_cast<int>(command.number));
      return "";
    case CommandKind::Faster:
      return SetTempoScale_(player_->GetTransients().GetTempoScale() + 1.0 / kTempoSteps);
    case CommandKind::Slower:
      return SetTempoScale_(player_->GetTransients().GetTempoScale() - 1.0 / kTempoSteps);
    case CommandKind::Higher:
      return SetTransposition_(player_->GetTransients().GetTransposition() + 1);
    case CommandKind::Lower:
      return SetTransposition_(player_->GetTransients().GetTransposition() - 1);
    case CommandKind::AsWritten:
      player_->SetTempoScale(1.0);
      player_->SetTransposition(0);
      return "tempo and key as written";
  }
  return "";
}

// A whole number of steps, so that as many steps back are exactly the tempo that was recorded, and two digits
// tell it.
std::string Session::SetTempoScale_(double scale) {
  const double stepped = std::round(scale * kTempoSteps) / kTempoSteps;
  const double allowed = std::clamp(stepped, kSlowestTempo, kFastestTempo);
  player_->SetTempoScale(allowed);
  return "tempo " + ShortNumber(allowed);
}

std::string Session::SetTransposition_(int semitones) {
  const int allowed = std::clamp(semitones, -kMostSemitones, kMostSemitones);
  player_->SetTransposition(allowed);
  return "transpose " + std::to_string(allowed);
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
    if (IsPlaying() || !LoadHasFailed_()) {
      waiting_ = false;
      return "";
    }
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
  const bool leavesCaesura = IsWaiting();
  const bool goesOn = leavesCaesura || IsPaused();
  BeginAfresh_();
  PlayWhenLoaded_();
  const std::string song = GetSongNumber();
  const TickIndex place = GetTick();
  // Of several in a row another may fail before the fresh player plays.
  while (!IsPlaying() && LoadHasFailed_()) {
    Recover_(song);
    if (goesOn && GetSongNumber() == song) StandAgainAt_(place, leavesCaesura);
    player_->Play();
  }
}

// A fresh player stands at the start of its song. Seeking onto a caesura stands on it, and once more leaves
// it behind.
void Session::StandAgainAt_(TickIndex place, bool leavesCaesura) {
  player_->Seek(place);
  if (leavesCaesura && player_->HasPendingCaesura()) player_->Seek(place);
}

void Session::PlayWhenLoaded_() {
  const LongWait wait(say_, WhatIsWaitedForHere_());
  player_->Play();
}

void Session::Stop_() {
  BeginAfresh_();
  // What stands anywhere is not stopped by a reset: it would be paused at the start.
  if (IsPaused()) player_->Stop();
  player_->StopAndReset();
}

// The player itself says nothing of it.
std::string Session::SeekRight_() {
  try {
    static_cast<void>(player_->GetShowControl().GetSeekRight());
  } catch (const std::out_of_range&) {
    return "no place behind this one";
  }
  BeginAfresh_();
  player_->SeekRight();
  return "";
}

void Session::Seek_(const std::string& position) {
  const Place place = GetClock().Find(position);
  if (place.tick > GetClock().GetEndTick()) {
    throw Failure("\"" + Shown(position) + "\" lies after the end of playback, which is " +
                  GetClock().PlaceOfTick(GetClock().GetEndTick()).position);
  }
  BeginAfresh_();
  player_->Seek(place.tick);
}

}  // namespace orbel::host

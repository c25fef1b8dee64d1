#include <utility>

#include "Sources/audio_player/audio_player.h"
#include "host/session/session.h"
#include "host/session/song_clock.h"
#include "suite/player_core/jump.h"
#include "suite/player_core/show_control.h"

namespace orbel::host {

bool Session::IsPlaying() const {
  return player_->GetPlayerState() == PlayerState::PLAY;
}

bool Session::IsPaused() const {
  return player_->GetPlayerState() == PlayerState::PAUSE;
}

// The show control knows it a moment before listeners are told.
bool Session::IsWaiting() const {
  return !IsPlaying() && (waiting_ || player_->GetShowControl().StandsAtCaesura());
}

TickIndex Session::GetTick() const {
  return player_->GetTickIndex();
}

TickIndex Session::GetLandingTick() const {
  return player_->GetShowControl().GetLastSeekTickIndex();
}

// Neither the last moment of a song is told, nor where a seek from elsewhere has led onto a caesura.
TickIndex Session::GetHeardTick() const {
  if (leftAt_) return *leftAt_;
  const notify::PositionUpdate heard = events_.GetPosition();
  const bool hasEnded = ended_ || IsToldToHaveEndedSoon();
  const bool isTold = !hasEnded && !IsWaiting() && heard.songNumber == GetSongNumber();
  return isTold ? heard.tickIndex : GetTick();
}

std::string Session::GetSongNumber() const {
  return player_->GetCurrentSongNumber();
}

const tesk_midi::SongData& Session::GetSong() const {
  return folder_.GetData().GetSong(GetSongNumber());
}

const CL::SongLog& Session::GetLog() const {
  return folder_.GetLog(GetSongNumber());
}

const SongClock& Session::GetClock() {
  if (!clock_ || clockSong_ != GetSongNumber()) {
    clock_ = std::make_unique<SongClock>(GetSong(), choice_.rateHz);
    clockSong_ = GetSongNumber();
  }
  return *clock_;
}

bool Session::GetNextJump(Jump* jump) const {
  return player_->GetJumpForVampRepeatOrCut(jump);
}

// The render thread goes on between any two looks: how far it is to a caesura would be counted from
// elsewhere.
std::optional<TickIndex> Session::GetNextCaesura() const {
  ShowControl& control = player_->GetShowControl();
  if (control.GetCaesuraCountdown() < 0) return std::nullopt;
  const TickIndex tick = control.GetFirstCaesuraStackTickIndex();
  return tick >= GetTick() ? std::optional(tick) : std::nullopt;
}

long long Session::GetElapsedFrames() const {
  return player_->GetElapsedSampleCount();
}

bool Session::RunsAttacca() const {
  return player_->CurrentSongIsAttacca();
}

void Session::GetTempoAndKey(double* scale, int* semitones) const {
  long double exact = 1.0L;
  player_->GetDspFactorsAtCurrentTickIndex(&exact, semitones);
  *scale = static_cast<double>(exact);
}

void Session::ThrowLoaderError() {
  player_->ThrowIfThreadExceptions();
}

std::vector<StageEvent> Session::TakeEvents() {
  toldToWait_.clear();
  std::vector<StageEvent> taken;
  bool hasJustEnded = false;
  bool hasJustBegun = false;
  bool hasFailed = false;
  while (std::optional<StageEvent> event = events_.Take()) {
    // A seek onto a caesura stops the output as the end of a song would; the caesura tells the two apart.
    if (event->kind == StageEvent::Kind::EndOfSong && player_->HasPendingCaesura()) {
      event->kind = StageEvent::Kind::Caesura;
      event->fromTick = GetTick();
    }
    if (event->kind == StageEvent::Kind::Caesura) waiting_ = true;
    if (event->kind == StageEvent::Kind::EndOfSong) hasJustEnded = ended_ = true;
    if (event->kind == StageEvent::Kind::LoadFailed) hasFailed = true;
    if (event->kind == StageEvent::Kind::SongLoaded) {
      loadedSong_ = event->song;
      hasJustBegun = !hasJustEnded;
    }
    taken.push_back(std::move(*event));
  }
  played_ = played_ || IsPlaying();
  const bool isBrokenOff = hasJustEnded && !hasFailed && AttaccaIsBrokenOff_(hasJustBegun);
  const bool couldNotBeDecoded = hasFailed && AttaccaHasFailed_();
  if (isBrokenOff) BeginAfterBrokenAttacca_();
  if (couldNotBeDecoded) BeginAfterFailedAttacca_();
  if (isBrokenOff || couldNotBeDecoded) {
    StageEvent event;
    event.kind = StageEvent::Kind::AttaccaBrokenOff;
    event.song = GetSongNumber();
    taken.push_back(std::move(event));
  }
  return taken;
}

}  // namespace orbel::host

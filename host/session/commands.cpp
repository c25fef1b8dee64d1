#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "Sources/audio_player/audio_player.h"
#include "host/session/failure.h"
#include "host/session/long_wait.h"
#include "host/session/refusals.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"
#include "suite/player_core/errors.h"

namespace orbel::host {
namespace {

constexpr double kTempoStep = 0.01;

}  // namespace

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
    case CommandKind::Faster:
      return SetTempoScale_(player_->GetTransients().GetTempoScale() + kTempoStep);
    case CommandKind::Slower:
      return SetTempoScale_(player_->GetTransients().GetTempoScale() - kTempoStep);
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

// A whole number of steps, so that as many steps back are exactly the tempo that was recorded.
std::string Session::SetTempoScale_(double scale) {
  const double stepped = std::round(scale / kTempoStep) * kTempoStep;
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
  PlayWhenLoaded_();
  if (IsPlaying() || !LoadHasFailed_()) return;
  Recover_(GetSongNumber());
  player_->Play();
}

void Session::PlayWhenLoaded_() {
  const LongWait wait(say_, WhatIsWaitedForHere_());
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
    const SilentOutput silent;
    ChangeSong_(SongFromHere_(-1), [this] { player_->PreviousSong(); });
    if (!SettleStopped_()) Recover_(GetSongNumber());
  }
  if (wasPlaying) Play_();
  return message;
}

bool Session::NextSongStopped() {
  bool wasLast = false;
  const SilentOutput silent;
  ChangeSong_(SongFromHere_(1), [&] { wasLast = player_->NextSong(); });
  if (wasLast) {
    waiting_ = ended_ = false;
    return false;
  }
  if (!SettleStopped_()) Recover_(GetSongNumber());
  return true;
}

std::string Session::WhyLeftOut_(const std::string& song) const {
  for (const tesk_midi::Problem& problem : problems_) {
    if (problem.songNumber == song && !problem.isWarning) return Shown(tesk_midi::ToString(problem));
  }
  return "song " + Shown(song) + " cannot be played: its audio cannot be used";
}

void Session::LoadStopped(const std::string& song) {
  if (leftOut_.contains(song)) throw Failure(WhyLeftOut_(song));
  if (!folder_.HasAudio(song)) throw Failure("song " + Shown(song) + " cannot be played: it has no audio");
  const SilentOutput silent;
  ChangeSong_(song, [&] { player_->LoadSong(song); });
  if (!SettleStopped_()) Recover_(song);
  if (GetSongNumber() != song) throw Failure(WhyLeftOut_(song));
}

// A change for which the system refuses a thread or memory stops half way, the new song current but not
// loaded: a fresh player goes on at that song.
void Session::ChangeSong_(const std::string& target, const std::function<void()>& change) {
  try {
    const LongWait wait(say_, WhatIsWaitedForOnTheWayTo_(target));
    change();
  } catch (const std::exception& error) {
    if (!IsRefusalOfTheMoment(error)) throw;
    tesk_midi::Problem problem;
    problem.songNumber = GetSongNumber();
    problem.file = "data/" + folder_.GetAudioFiles().at(problem.songNumber);
    problem.message =
        "Song " + problem.songNumber + ": " + WhatWasRefused(error) + ". It is loaded once more.";
    problem.isWarning = true;
    problems_.push_back(problem);
    BeginAnew_(problem.songNumber);
  }
}

// A song that is not decoded yet plays as soon as it is, on its loader's thread. Asking to play waits for
// that loader; stopping and resetting then leaves the song silent at its start, whichever of the two came
// first.
bool Session::SettleStopped_() {
  waiting_ = ended_ = false;
  PlayWhenLoaded_();
  if (!IsPlaying()) return false;
  player_->StopAndReset();
  return true;
}

// A fresh player without the songs that cannot be decoded, at the start of `song`, or of the song after it
// when it is one of them.
void Session::Recover_(const std::string& song) {
  if (!LeaveOutBrokenSongs_()) player_->ThrowIfThreadExceptions();
  BeginAnew_(song);
}

// The player before is gone by then: whatever keeps another one from being made ends the performance in
// words.
void Session::BeginAnew_(const std::string& song) {
  const SilentOutput silent;
  for (int attemptsLeft = 2;; --attemptsLeft) {
    try {
      BuildWithoutBrokenSongs_();
    } catch (const PlayerLost&) {
      throw;
    } catch (const std::exception& error) {
      throw PlayerLost(Shown(folder_.GetPath()) + ": the show cannot go on: " + error.what());
    }
    try {
      return StandAtOrBehind_(song);
    } catch (const std::exception& error) {
      if (!IsRefusalOfTheMoment(error)) throw;
      if (attemptsLeft > 0) continue;
      const auto attempt = [&] {
        BuildOnce_();
        StandAtOrBehind_(song);
      };
      if (IsRefusalOfAThread(error) && DoWithoutOneSong_(song, attempt)) return;
      throw PlayerLost(Shown(folder_.GetPath()) + ": the show cannot go on: " + WhatWasRefused(error));
    }
  }
}

// At the start of `song`, or of the one after it that can be played.
void Session::StandAtOrBehind_(const std::string& song) {
  bool reached = false;
  for (const std::string& number : folder_.GetData().GetRunningOrder()) {
    reached = reached || number == song;
    if (!reached || !CanBePlayed_(number)) continue;
    if (GetSongNumber() != number) player_->LoadSong(number);
    if (!SettleStopped_()) player_->ThrowIfThreadExceptions();
    return;
  }
}

}  // namespace orbel::host

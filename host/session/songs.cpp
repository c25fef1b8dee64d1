// From song to song, and a fresh player where one cannot go on.
#include <algorithm>
#include <exception>

#include "Sources/audio_player/audio_player.h"
#include "host/session/failure.h"
#include "host/session/long_wait.h"
#include "host/session/refusals.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"

namespace orbel::host {

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
  toldToWait_.clear();
  bool wasLast = false;
  const SilentOutput silent;
  ChangeSong_(SongFromHere_(1), [&] { wasLast = player_->NextSong(); });
  if (wasLast) {
    BeginAfresh_();
    return false;
  }
  if (SettleStopped_()) return true;
  const std::string wanted = GetSongNumber();
  Recover_(wanted);
  return IsAtOrBehind_(wanted);
}

// Never back to what has been played: there may be nothing behind a song that cannot be.
bool Session::IsAtOrBehind_(const std::string& song) const {
  const std::vector<std::string>& order = folder_.GetData().GetRunningOrder();
  const auto wanted = std::find(order.begin(), order.end(), song);
  return std::find(wanted, order.end(), GetSongNumber()) != order.end();
}

std::string Session::WhyLeftOut(const std::string& song) const {
  for (const tesk_midi::Problem& problem : problems_) {
    if (problem.songNumber == song && !problem.isWarning) return Shown(tesk_midi::ToString(problem));
  }
  return "song " + Shown(song) + " cannot be played: its audio cannot be used";
}

void Session::LoadStopped(const std::string& song) {
  toldToWait_.clear();
  if (leftOut_.contains(song)) throw Failure(WhyLeftOut(song));
  if (!folder_.HasAudio(song)) throw Failure("song " + Shown(song) + " cannot be played: it has no audio");
  const SilentOutput silent;
  ChangeSong_(song, [&] { player_->LoadSong(song); });
  if (!SettleStopped_()) Recover_(song);
  if (GetSongNumber() != song) throw Failure(WhyLeftOut(song));
}

// A change for which the system refuses a thread or memory stops half way, the new song current but not
// loaded: a fresh player goes on at that song.
void Session::ChangeSong_(const std::string& target, const std::function<void()>& change) {
  try {
    const LongWait wait(say_, WhatIsWaitedForOnTheWayTo_(target));
    change();
  } catch (const std::exception& error) {
    if (!IsRefusalOfTheMoment(error)) throw;
    const std::string song = GetSongNumber();
    WarnOfLoadingAgain_(song, WhatWasRefused(error));
    BeginAnew_(song);
  }
}

void Session::WarnOfLoadingAgain_(const std::string& song, const std::string& why) {
  tesk_midi::Problem problem;
  problem.songNumber = song;
  problem.file = "data/" + folder_.GetAudioFiles().at(song);
  problem.message = "Song " + song + ": " + why + ". It is loaded once more.";
  problem.isWarning = true;
  problems_.push_back(std::move(problem));
}

// A song that is not decoded yet plays as soon as it is, on its loader's thread. Asking to play waits for
// that loader; stopping and resetting then leaves the song silent at its start, whichever of the two came
// first.
bool Session::SettleStopped_() {
  BeginAfresh_();
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
  for (int attemptsLeft = 2;;) {
    BuildAnew_();
    try {
      if (StandAtOrBehind_(song)) return;
      if (!LeaveOutBrokenSongs_(true)) player_->ThrowIfThreadExceptions();
    } catch (const std::exception& error) {
      if (!IsRefusalOfTheMoment(error)) throw;
      if (attemptsLeft-- > 0) continue;
      const auto attempt = [&] {
        BuildOnce_();
        if (!StandAtOrBehind_(song)) player_->ThrowIfThreadExceptions();
      };
      if (IsRefusalOfAThread(error) && DoWithoutRefusedSongs_(song, attempt)) return;
      throw PlayerLost(Shown(folder_.GetPath()) + ": the show cannot go on: " + WhyNotPlayed(error));
    }
  }
}

// A fresh player begins with the first song of the show, whichever it is brought to.
void Session::BuildAnew_() {
  try {
    const LongWait wait(say_, WhatIsWaitedForAtTheStart_());
    BuildWithoutBrokenSongs_();
  } catch (const PlayerLost&) {
    throw;
  } catch (const std::exception& error) {
    throw PlayerLost(Shown(folder_.GetPath()) + ": the show cannot go on: " + InWords(error));
  }
}

// At the start of `song`, of the one after it that can be played or, when there is none, of the last. False
// when that cannot be decoded.
bool Session::StandAtOrBehind_(const std::string& song) {
  const std::vector<std::string>& order = folder_.GetData().GetRunningOrder();
  const auto wanted = std::find(order.begin(), order.end(), song);
  const auto found =
      std::find_if(wanted, order.end(), [this](const std::string& number) { return CanBePlayed_(number); });
  const std::string target = found == order.end() ? PlayableSongs_().back() : *found;
  if (GetSongNumber() == target) return SettleStopped_();
  try {
    const LongWait wait(say_, WhatIsWaitedForOnTheWayTo_(target));
    player_->LoadSong(target);
  } catch (const AudioPlayer::NoAudioForSong&) {
    // The player has looked into the folder again.
    LeaveOut_(target, "the file is not there any more; put it back and open the show again");
    return StandAtOrBehind_(song);
  }
  return SettleStopped_();
}

}  // namespace orbel::host

#include <algorithm>
#include <chrono>
#include <iterator>
#include <optional>
#include <thread>
#include <utility>

#include "Sources/audio_player/audio_player.h"
#include "host/session/at_work.h"
#include "host/session/failure.h"
#include "host/session/long_wait.h"
#include "host/session/refusals.h"
#include "host/session/session.h"
#include "host/session/short_ticks.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"
#include "host/session/stray_audio.h"
#include "host/session/told_problems.h"
#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "suite/audio/errors.h"
#include "suite/player_core/content_argument.h"

namespace orbel::host {
Session::Session(const std::string& showPath, const std::string& song, OutputKind kind, OutputChoice choice,
                 Say say)
    : folder_(showPath),
      kind_(kind),
      wantedSong_(song),
      wantedRateHz_(choice.rateHz),
      choice_(choice),
      say_(say ? [this, say = std::move(say)](const std::string& message) {
        if (toldToWait_.insert(message).second) say(message);
      } : Say()) {
  if (!folder_.GetDataFault().empty())
    throw Failure(Shown(folder_.GetPath()) + ": data: " + folder_.GetDataFault());
  TakeOver_(folder_.GetWarnings());
  RequireASongForAllAudio(folder_);
  ChooseFormat_();
  {
    const LongWait wait(say_, WhatIsWaitedForAtTheStart_());
    BuildWithoutBrokenSongs_();
  }
  for (const std::string& number : folder_.GetData().GetRunningOrder()) {
    const bool wanted = song.empty() ? CanBePlayed_(number) : number == song;
    if (!wanted) continue;
    if (GetSongNumber() != number) LoadStopped(number);
    events_.Clear();
    loadedSong_ = GetSongNumber();
    return;
  }
}

// Songs that are being decoded end at their next block, and the player waits for that: it can be long where a
// disk does not answer.
void Session::Leave() {
  try {
    if (!brokenOff_) brokenOff_.emplace();
    const LongWait wait(say_, WhatIsWaitedForAtTheEnd_());
    if (!player_ || !IsPlaying()) return;
    leftAt_ = GetHeardTick();
    player_->Stop();
  } catch (const std::exception&) {
    // the player ends with the wrapper in any case
  }
}

Session::~Session() {
  try {
    Leave();
    const LongWait wait(say_, WhatIsWaitedForAtTheEnd_());
    if (player_) player_->Stop();
    if (player_) player_->PrepareForExit();
    wrapper_.reset();
  } catch (const std::exception&) {
    // the player ends with the wrapper in any case
  }
}

// The output has one format for the whole show: that of the song asked for, or of the first that can be read.
// Songs with other rates are resampled while decoding; songs with other channels cannot be played beside it.
void Session::ChooseFormat_() {
  const std::string wanted = folder_.FindSong(wantedSong_).GetNumber();
  if (!folder_.HasAudio(wanted)) {
    throw Failure(Shown(folder_.GetPath()) + ": song " + Shown(wanted) +
                  " has no audio; put its recording into data/ as \"" + Shown(wanted) + " " +
                  Shown(folder_.GetData().GetSong(wanted).GetName()) + ".obd\"");
  }
  std::optional<tesk_audio::AudioFileInfo> format;
  std::vector<std::string> order = PlayableSongs_();
  std::stable_partition(order.begin(), order.end(),
                        [&](const std::string& number) { return number == wanted; });
  folder_.ProbeAll();
  for (const std::string& number : order) {
    try {
      const tesk_audio::AudioFileInfo info = folder_.Probe(number);
      if (!format) {
        format = info;
        formatSong_ = number;
      }
      if (info.channels != format->channels) {
        leftOutByFormat_.insert(number);
        LeaveOut_(number, "has " + Channels(info.channels) + " where the show plays " +
                              Channels(format->channels) + "; convert it to " + Channels(format->channels));
      }
    } catch (const tesk_audio::TESKAudioError& error) {
      if (number == wantedSong_) throw Failure(Shown(error.what()));
      LeaveOut_(number, error.what());
    }
  }
  if (!format) throw Failure(WhyNothingCanBePlayed_());
  choice_.rateHz = wantedRateHz_ == 0.0 ? format->sampleRateHz : wantedRateHz_;
  channels_ = format->channels;
  LeaveOutShortTicks_();
}

// Nobody has heard or been told of anything yet. The song that the others were held against may turn out to
// be none.
void Session::ChooseFormatAnew_() {
  if (isOpen_ || !leftOut_.contains(formatSong_)) return;
  for (const std::string& song : leftOutByFormat_) leftOut_.erase(song);
  std::erase_if(problems_, [this](const tesk_midi::Problem& problem) {
    return !problem.isWarning && leftOutByFormat_.contains(problem.songNumber);
  });
  leftOutByFormat_.clear();
  ChooseFormat_();
}

std::string Session::WhyNothingCanBePlayed_() const {
  std::string why = Shown(folder_.GetPath()) + ": no song can be played:";
  std::vector<tesk_midi::Problem> errors;
  std::copy_if(problems_.begin(), problems_.end(), std::back_inserter(errors),
               [](const tesk_midi::Problem& problem) { return !problem.isWarning; });
  for (const std::string& line : TellProblems(errors, folder_.GetPath())) why += "\n" + line;
  return why;
}

// The engine ends at such a place with words that help nobody.
void Session::LeaveOutShortTicks_() {
  for (const std::string& song : PlayableSongs_()) {
    std::optional<tesk_midi::Problem> problem = FindShortTick(folder_, song, choice_.rateHz);
    if (!problem) continue;
    if (song == wantedSong_) throw Failure(Shown(tesk_midi::ToString(*problem)));
    leftOutByFormat_.insert(song);
    problem->message += ". Song " + song + " is left out.";
    leftOut_.insert(song);
    problems_.push_back(std::move(*problem));
  }
}

// What the system refuses now it may grant a moment later, when others have ended.
void Session::Build_() {
  for (int attemptsLeft = 2;; --attemptsLeft) {
    try {
      return BuildOnce_();
    } catch (const std::exception& error) {
      if (!IsRefusalOfTheMoment(error)) throw;
      if (attemptsLeft == 0) {
        if (IsRefusalOfAThread(error) && DoWithoutRefusedSongs_("", [this] { BuildOnce_(); })) return;
        throw PlayerLost(Shown(folder_.GetPath()) + ": " + WhyNotPlayed(error));
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

// A file may be replaced by another as long as the show is open.
std::string Session::ContentArgument_() const {
  return "rate=" + ShortNumber(choice_.rateHz) + ",channels=" + std::to_string(channels_);
}

void Session::BuildOnce_() {
  const std::string first = FirstSongBut_({});
  const AtSong atSong(first, first.empty() ? "" : "data/" + folder_.GetAudioFiles().at(first));
  player_ = nullptr;
  wrapper_.reset();
  events_.Clear();  // of a player that is no more
  if (kind_ == OutputKind::Offline) {
    UseOfflineOutput(choice_);
  } else {
    UseLiveOutput(choice_);
  }
  player_core::SetContentArgument(ContentArgument_());
  std::string leaveOut;
  for (const std::string& number : leftOut_) leaveOut += (leaveOut.empty() ? "" : ",") + number;
  wrapper_ = std::make_unique<AudioPlayerWrapper>(folder_.GetPath(), leaveOut);
  player_ = dynamic_cast<AudioPlayer*>(wrapper_->GetPlayer());
  if (!player_) throw Failure(Shown(folder_.GetPath()) + ": no song can be played");
}

void Session::BuildWithoutBrokenSongs_() {
  for (bool again = false;; again = true) {
    if (PlayableSongs_().empty()) throw Failure(WhyNothingCanBePlayed_());
    Build_();
    if (!LoadHasFailed_()) break;
    if (!LeaveOutBrokenSongs_(again)) player_->ThrowIfThreadExceptions();
    ChooseFormatAnew_();
  }
  TakeOver_(wrapper_->GetProblems());
  isOpen_ = true;
}

// What is known already is not said twice.
void Session::TakeOver_(const std::vector<tesk_midi::Problem>& problems) {
  for (const tesk_midi::Problem& problem : problems) {
    const bool known = std::any_of(problems_.begin(), problems_.end(), [&](const tesk_midi::Problem& other) {
      return other.songNumber == problem.songNumber && (other.message == problem.message || !other.isWarning);
    });
    if (known) continue;
    problems_.push_back(problem);
    if (!problem.isWarning && !problem.songNumber.empty()) leftOut_.insert(problem.songNumber);
  }
}

void Session::LeaveOut_(const std::string& song, const std::string& why) {
  leftOut_.insert(song);
  tesk_midi::Problem problem;
  problem.file = "data/" + folder_.GetAudioFiles().at(song);
  problem.songNumber = song;
  problem.message = WithoutFullStop(WithoutPath(why, problem.file)) + ". Song " + song + " is left out.";
  problems_.push_back(std::move(problem));
}

}  // namespace orbel::host

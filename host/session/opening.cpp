#include <algorithm>
#include <chrono>
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
#include "player_core/player_wrapper/audio_player_wrapper.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/audio/errors.h"
#include "suite/player_core/content_argument.h"

namespace orbel::host {
namespace {

std::string ContentArgument(double rateHz) {
  return "rate=" + ShortNumber(rateHz);
}

// Why a song's audio cannot be decoded; nothing when it can.
std::optional<std::string> WhyUndecodable(const std::string& path, double rateHz) {
  try {
    const std::unique_ptr<tesk_audio::AudioSampleContent> content(
        tesk_audio::CreateAudioSampleContent(path, ContentArgument(rateHz)));
    return std::nullopt;
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace

Session::Session(const std::string& showPath, const std::string& song, OutputKind kind, OutputChoice choice,
                 Say say)
    : folder_(showPath), kind_(kind), choice_(choice), say_(std::move(say)) {
  ChooseFormat_(song);
  {
    const std::string first = FirstSongBut_({});
    const LongWait wait(say_, first.empty() ? "" : LoadingText(first));
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

Session::~Session() {
  try {
    if (player_) player_->Stop();
    if (player_) player_->PrepareForExit();
  } catch (const std::exception&) {
    // the player ends with the wrapper in any case
  }
}

// The output has one format for the whole show: that of the song asked for, or of the first that can be read.
// Songs with other rates are resampled while decoding; songs with other channels cannot be played beside it.
void Session::ChooseFormat_(const std::string& song) {
  const std::string wanted = folder_.FindSong(song).GetNumber();
  if (!folder_.HasAudio(wanted)) {
    throw Failure(Shown(folder_.GetPath()) + ": song " + Shown(wanted) +
                  " has no audio; put its recording into data/ as \"" + Shown(wanted) + " " +
                  Shown(folder_.GetData().GetSong(wanted).GetName()) + ".obd\"");
  }
  std::optional<tesk_audio::AudioFileInfo> format;
  std::vector<std::string> order = folder_.GetData().GetRunningOrder();
  std::stable_partition(order.begin(), order.end(),
                        [&](const std::string& number) { return number == wanted; });
  folder_.ProbeAll();
  for (const std::string& number : order) {
    if (!folder_.HasAudio(number)) continue;
    try {
      const tesk_audio::AudioFileInfo info = folder_.Probe(number);
      if (!format) format = info;
      if (info.channels != format->channels) {
        LeaveOut_(number, "has " + Channels(info.channels) + " where the show plays " +
                              Channels(format->channels) + "; convert it to " + Channels(format->channels));
      }
    } catch (const tesk_audio::TESKAudioError& error) {
      if (number == song) throw Failure(Shown(error.what()));
      LeaveOut_(number, error.what());
    }
  }
  if (!format)
    throw Failure(Shown(folder_.GetPath()) + ": no song can be played:\n" +
                  tesk_midi::ToString(problems_.front()));
  if (choice_.rateHz == 0.0) choice_.rateHz = format->sampleRateHz;
  LeaveOutShortTicks_(song);
}

// The engine ends at such a place with words that help nobody.
void Session::LeaveOutShortTicks_(const std::string& wanted) {
  for (const std::string& song : PlayableSongs_()) {
    std::optional<tesk_midi::Problem> problem = FindShortTick(folder_, song, choice_.rateHz);
    if (!problem) continue;
    if (song == wanted) throw Failure(Shown(tesk_midi::ToString(*problem)));
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
      // What keeps a file from being written does not pass, and says itself what to do.
      if (!IsRefusalOfTheMoment(error) || choice_.output == "file") throw;
      if (attemptsLeft == 0) {
        if (IsRefusalOfAThread(error) && DoWithoutRefusedSongs_("", [this] { BuildOnce_(); })) return;
        throw PlayerLost(Shown(folder_.GetPath()) + ": the system refuses what playing needs: " +
                         WhatWasRefused(error) + ". Close other programs and open the show again.");
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

void Session::BuildOnce_() {
  const std::string first = FirstSongBut_({});
  const AtSong atSong(first, first.empty() ? "" : "data/" + folder_.GetAudioFiles().at(first));
  player_ = nullptr;
  wrapper_.reset();
  if (kind_ == OutputKind::Offline) {
    UseOfflineOutput(choice_);
  } else {
    UseLiveOutput(choice_);
  }
  player_core::SetContentArgument(ContentArgument(choice_.rateHz));
  std::string leaveOut;
  for (const std::string& number : leftOut_) leaveOut += (leaveOut.empty() ? "" : ",") + number;
  wrapper_ = std::make_unique<AudioPlayerWrapper>(folder_.GetPath(), leaveOut);
  player_ = dynamic_cast<AudioPlayer*>(wrapper_->GetPlayer());
  if (!player_) throw Failure(Shown(folder_.GetPath()) + ": no song can be played");
}

void Session::BuildWithoutBrokenSongs_() {
  Build_();
  while (LoadHasFailed_()) {
    if (!LeaveOutBrokenSongs_()) player_->ThrowIfThreadExceptions();
    Build_();
  }
  for (const tesk_midi::Problem& problem : wrapper_->GetProblems()) {
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

bool Session::LoadHasFailed_() const {
  return player_->GetFileLoaderErrorOccurred();
}

// A player keeps a loader's error for good and does not say whose it was, so the songs that it had in hand
// are decoded once more here. False when all of them can be.
bool Session::LeaveOutBrokenSongs_() {
  bool found = false;
  for (const auto& [number, file] : folder_.GetAudioFiles()) {
    if (leftOut_.contains(number)) continue;
    const std::optional<std::string> why = WhyUndecodable(folder_.AudioPath(number), choice_.rateHz);
    if (!why) continue;
    LeaveOut_(number, *why);
    found = true;
  }
  return found;
}

}  // namespace orbel::host

// Songs whose audio turns out to be broken when it is decoded.
#include <algorithm>
#include <memory>
#include <optional>

#include "Sources/audio_player/audio_player.h"
#include "host/session/long_wait.h"
#include "host/session/refusals.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/audio/create.h"

namespace orbel::host {
namespace {

// Why a song's audio cannot be decoded; nothing when it can.
std::optional<std::string> WhyUndecodable(const std::string& path, const std::string& contentArgument) {
  try {
    const std::unique_ptr<tesk_audio::AudioSampleContent> content(
        tesk_audio::CreateAudioSampleContent(path, contentArgument));
    return std::nullopt;
  } catch (const std::exception& error) {
    return InWords(error);
  }
}

}  // namespace

bool Session::LoadHasFailed_() const {
  return player_->GetFileLoaderErrorOccurred();
}

// A player keeps a loader's error for good, and says whose it was only in the error's words.
std::string Session::GetLoaderError_() const {
  try {
    if (LoadHasFailed_()) player_->ThrowIfThreadExceptions();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "";
}

std::string Session::SongNamedIn_(const std::string& error) const {
  for (const auto& [number, file] : folder_.GetAudioFiles()) {
    if (error.find("data/" + file) != std::string::npos ||
        error.find("data/" + Shown(file)) != std::string::npos)
      return number;
  }
  return "";
}

std::string Session::WhatFailedToLoad() const {
  const std::string error = GetLoaderError_();
  if (error.empty()) return "";
  const std::string song = SongNamedIn_(error);
  const std::string cure = "; it is left out when you go on";
  if (song.empty()) return "a song could not be loaded: " + Shown(WithoutFullStop(error)) + cure;
  const std::string file = "data/" + folder_.GetAudioFiles().at(song);
  return Shown(file + ": " + WithoutFullStop(WithoutPath(error, file))) + ". Song " + Shown(song) +
         " could not be loaded" + cure;
}

// Only what the loaders may have failed at is decoded once more: the song that the error names or, where it
// names none, those that the player had in hand. False when all of that can be decoded.
bool Session::LeaveOutBrokenSongs_(bool andThoseBehind) {
  const std::string named = SongNamedIn_(GetLoaderError_());
  if (!named.empty() && LeaveOutIfBroken_(named)) {
    if (andThoseBehind) LeaveOutBrokenBehind_(named);
    return true;
  }
  bool found = false;
  for (const std::string& song : SongsInHand_()) found = LeaveOutIfBroken_(song) || found;
  return found;
}

// The current song and the one with which the player began, each with those beside it.
std::vector<std::string> Session::SongsInHand_() const {
  const std::vector<std::string> order = PlayableSongs_();
  std::vector<std::string> songs;
  for (const std::string& song : {FirstSongBut_({}), GetSongNumber()}) {
    const auto at = std::find(order.begin(), order.end(), song) - order.begin();
    for (auto beside = at - 1; beside <= at + 1; ++beside) {
      if (beside >= 0 && beside < std::ssize(order)) songs.push_back(order[static_cast<std::size_t>(beside)]);
    }
  }
  return songs;
}

// A fresh player for every one of many broken songs in a row would take long.
void Session::LeaveOutBrokenBehind_(const std::string& song) {
  const std::vector<std::string>& order = folder_.GetData().GetRunningOrder();
  for (auto next = std::find(order.begin(), order.end(), song); next != order.end(); ++next) {
    if (CanBePlayed_(*next) && !LeaveOutIfBroken_(*next)) return;
  }
}

bool Session::LeaveOutIfBroken_(const std::string& song) {
  if (!CanBePlayed_(song)) return false;
  const LongWait wait(say_, LoadingText(song));
  const std::optional<std::string> why = WhyUndecodable(folder_.AudioPath(song), ContentArgument_());
  if (why) LeaveOut_(song, *why);
  return why.has_value();
}

}  // namespace orbel::host

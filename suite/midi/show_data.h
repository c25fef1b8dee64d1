#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "suite/midi/song_data.h"
#include "suite/utility/numeric_string_compare.h"

namespace tesk_midi {

// The songs of a show and their running order. Filled while the show is loaded; read by any thread.
class ShowData {
 public:
  using SongNames = std::map<std::string, std::string, exc::NumericStringCompare>;

  const std::string& GetTitle() const { return title_; }
  void SetTitle(const std::string& title) { title_ = title; }

  // Song number to song name, ordered by number; a fresh copy each time.
  SongNames GetSongNamesBySongNumber() const;

  bool HasSong(const std::string& songNumber) const;
  // Throws std::out_of_range naming the number when there is no such song.
  const SongData& GetSong(const std::string& songNumber) const;
  void AddSong(SongData song);

  // The order in which the songs are played: every song once.
  const std::vector<std::string>& GetRunningOrder() const { return runningOrder_; }
  void SetRunningOrder(std::vector<std::string> order);

  // Songs that are known but cannot be played (their audio is broken): out of the way of navigation and of
  // preloading.
  void LeaveOut(const std::string& songNumber);
  bool IsLeftOut(const std::string& songNumber) const;

  // Songs without recorded audio; until somebody says so every song has some.
  void SetHasNoAudio(const std::string& songNumber) { withoutAudio_.insert(songNumber); }
  bool HasAudio(const std::string& songNumber) const { return withoutAudio_.count(songNumber) == 0; }

 private:
  std::string title_;
  std::map<std::string, std::shared_ptr<const SongData>, exc::NumericStringCompare> songs_;
  std::vector<std::string> runningOrder_;
  std::set<std::string> leftOut_;
  std::set<std::string> withoutAudio_;
};

}  // namespace tesk_midi

// What the performer has to wait for: songs that are still being decoded.
#include <algorithm>
#include <cstdlib>

#include "Sources/audio_player/audio_player.h"
#include "host/session/session.h"
#include "host/session/shown_text.h"

namespace orbel::host {

bool Session::IsLoading() const {
  return player_->IsBeingDecoded(GetSongNumber());
}

bool Session::CanBePlayed_(const std::string& song) const {
  return folder_.HasAudio(song) && !leftOut_.contains(song);
}

std::vector<std::string> Session::PlayableSongs_() const {
  std::vector<std::string> songs = folder_.GetData().GetRunningOrder();
  std::erase_if(songs, [this](const std::string& song) { return !CanBePlayed_(song); });
  return songs;
}

std::string Session::SongFromHere_(int places) const {
  const std::vector<std::string> songs = PlayableSongs_();
  const auto here = std::find(songs.begin(), songs.end(), GetSongNumber());
  const auto wanted = here - songs.begin() + places;
  return wanted < 0 || wanted >= std::ssize(songs) ? GetSongNumber()
                                                   : songs[static_cast<std::size_t>(wanted)];
}

// A loader is never broken off: whoever goes away from the songs beside the current one waits until those
// that were being decoded there are done.
std::string Session::WhatIsWaitedForOnTheWayTo_(const std::string& song) const {
  const std::vector<std::string> songs = PlayableSongs_();
  const auto target = std::find(songs.begin(), songs.end(), song);
  for (auto other = songs.begin(); other != songs.end(); ++other) {
    if (std::abs(other - target) > 1 && player_->IsBeingDecoded(*other)) return LoadingText(*other);
  }
  return "";
}

// A fresh player loads its first song and opens the device.
std::string Session::WhatIsWaitedForAtTheStart_() const {
  const std::string first = FirstSongBut_({});
  if (first.empty()) return "";
  const bool hasDevice = kind_ == OutputKind::Live && choice_.output != "null" && choice_.output != "file";
  if (!hasDevice) return LoadingText(first);
  return "song " + Shown(first) + " is still loading, or the audio device still opening: waiting for them";
}

std::string Session::WhatIsWaitedForHere_() const {
  return IsLoading() ? LoadingText(GetSongNumber()) : "";
}

std::string Session::WhatIsWaitedForAtTheEnd_() const {
  if (!player_) return "";
  const std::vector<std::string> songs = PlayableSongs_();
  const auto found = std::find_if(songs.begin(), songs.end(),
                                  [this](const std::string& song) { return player_->IsBeingDecoded(song); });
  return found == songs.end() ? "" : LoadingText(*found);
}

// Nothing else behind the current song is ever being decoded.
std::string Session::WhatAnAttaccaWaitsFor() const {
  if (!RunsAttacca()) return "";
  const std::vector<std::string> songs = PlayableSongs_();
  const auto here = std::find(songs.begin(), songs.end(), GetSongNumber());
  const auto next = std::find_if(here, songs.end(),
                                 [this](const std::string& song) { return player_->IsBeingDecoded(song); });
  return next == songs.end() ? "" : LoadingText(*next);
}

std::string LoadingText(const std::string& song) {
  return "song " + Shown(song) + " is still loading: waiting for it";
}

}  // namespace orbel::host

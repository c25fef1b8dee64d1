#include "suite/midi/show_data.h"

#include <stdexcept>
#include <utility>

namespace tesk_midi {

ShowData::SongNames ShowData::GetSongNamesBySongNumber() const {
  SongNames names;
  for (const auto& [number, song] : songs_) names.emplace(number, song->GetName());
  return names;
}

bool ShowData::HasSong(const std::string& songNumber) const {
  return songs_.count(songNumber) != 0;
}

const SongData& ShowData::GetSong(const std::string& songNumber) const {
  const auto found = songs_.find(songNumber);
  if (found == songs_.end()) throw std::out_of_range("The show has no song " + songNumber + ".");
  return *found->second;
}

void ShowData::AddSong(SongData song) {
  const std::string number = song.GetNumber();
  songs_.insert_or_assign(number, std::make_shared<const SongData>(std::move(song)));
}

void ShowData::SetRunningOrder(std::vector<std::string> order) {
  runningOrder_ = std::move(order);
}

void ShowData::LeaveOut(const std::string& songNumber) {
  leftOut_.insert(songNumber);
}

bool ShowData::IsLeftOut(const std::string& songNumber) const {
  return leftOut_.count(songNumber) != 0;
}

}  // namespace tesk_midi

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/bar_grid.h"
#include "reference_suite/player_core/show_control/state.h"
#include "suite/midi/song_data.h"
#include "suite/midi/song_log.h"
#include "suite/player_core/gui_update.h"

namespace {

// Where a seek left or right leads: in ascending order, all between the start and the end of the song.
std::vector<unsigned> GetPlaces(const CL::SongLog& log, unsigned start, unsigned end) {
  std::vector<unsigned> places = {start};
  for (const CL::Marker& marker : log.markers) places.push_back(marker.abs_time());
  for (const CL::Caesura& caesura : log.caesuras) places.push_back(caesura.abs_time());
  for (const CL::Loop& loop : log.loops) places.push_back(loop.abs_time());
  for (const CL::Cut& cut : log.cuts) places.push_back(cut.GetEndTime());
  std::sort(places.begin(), places.end());
  places.erase(std::remove_if(places.begin(), places.end(),
                              [=](unsigned place) { return place < start || place > end; }),
               places.end());
  places.erase(std::unique(places.begin(), places.end()), places.end());
  return places;
}

}  // namespace

unsigned ShowControl::GetSeekLeft() {
  const unsigned shown = GetGuiUpdate().GetTickIndex();
  exc::ScopeLock lock(*this);
  const unsigned start = GetStartTickIndex();
  if (state_->song == nullptr) return start;
  const std::vector<unsigned> places = GetPlaces(*state_->log, start, GetEndTickIndex());
  auto place = std::upper_bound(places.begin(), places.end(), shown);
  if (place == places.begin()) return start;
  --place;
  const bool isCloseBehind = shown - *place < player_core::GetTicksPerBeat(*state_->song, *place);
  if (isCloseBehind && place != places.begin()) --place;
  return *place;
}

unsigned ShowControl::GetSeekRight() {
  const unsigned shown = GetGuiUpdate().GetTickIndex();
  exc::ScopeLock lock(*this);
  if (state_->song != nullptr) {
    const std::vector<unsigned> places = GetPlaces(*state_->log, GetStartTickIndex(), GetEndTickIndex());
    const auto place = std::upper_bound(places.begin(), places.end(), shown);
    if (place != places.end()) return *place;
  }
  throw std::out_of_range("No place to seek to after tick " + std::to_string(shown) + ".");
}

#include <algorithm>

#include "exc/lock/scope_lock.h"
#include "reference_suite/player_core/show_control/state.h"
#include "suite/midi/change_log.h"
#include "suite/midi/show_data.h"
#include "suite/player_core/errors.h"

namespace {

// The first song from `next` on that can be played; `end` when there is none.
template <typename Iterator>
Iterator FindPlayable(const tesk_midi::ShowData& show, Iterator next, Iterator end) {
  return std::find_if(next, end, [&](const std::string& number) { return !show.IsLeftOut(number); });
}

}  // namespace

std::string ShowControl::GetSongAfter(const std::string& songNumber) {
  const std::vector<std::string>& order = state_->showData.GetRunningOrder();
  auto song = std::find(order.begin(), order.end(), songNumber);
  if (song != order.end()) song = FindPlayable(state_->showData, song + 1, order.end());
  if (song == order.end()) throw EndOfShow("No song after " + songNumber + ".");
  return *song;
}

std::string ShowControl::GetSongBefore(const std::string& songNumber) {
  const std::vector<std::string>& order = state_->showData.GetRunningOrder();
  auto song = std::find(order.rbegin(), order.rend(), songNumber);
  if (song != order.rend()) song = FindPlayable(state_->showData, song + 1, order.rend());
  if (song == order.rend()) throw StartOfShow("No song before " + songNumber + ".");
  return *song;
}

bool ShowControl::HasSongWithAudioAfter(const std::string& songNumber) {
  const tesk_midi::ShowData& show = state_->showData;
  const std::vector<std::string>& order = show.GetRunningOrder();
  const auto song = std::find(order.begin(), order.end(), songNumber);
  return song != order.end() && std::any_of(song + 1, order.end(), [&](const std::string& number) {
           return !show.IsLeftOut(number) && show.HasAudio(number);
         });
}

bool ShowControl::SongIsNotSkip(const std::string& songNumber) {
  if (state_->showData.IsLeftOut(songNumber)) return false;
  exc::ScopeLock lock(*this);
  return state_->changeLog == nullptr || !state_->changeLog->GetSongLog(songNumber).skip;
}

void ShowControl::SetAttaccaState(const std::string& songNumber, unsigned char state) {
  exc::ScopeLock lock(*this);
  state_->attaccaStates[songNumber] = state;
}

unsigned char ShowControl::GetAttaccaState(const std::string& songNumber) {
  exc::ScopeLock lock(*this);
  const auto set = state_->attaccaStates.find(songNumber);
  if (set != state_->attaccaStates.end()) return set->second;
  return state_->changeLog == nullptr ? 0 : state_->changeLog->GetSongLog(songNumber).attacca;
}

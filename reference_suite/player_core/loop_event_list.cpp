#include <algorithm>
#include <stdexcept>

#include "suite/player_core/loop_event.h"

namespace {

bool IsLive(const LoopEvent& event) {
  return !event.GetCanceled();
}

bool IsLiveVampOrRepeat(const LoopEvent& event) {
  return IsLive(event) && (event.is_vamp() || event.is_repeat());
}

}  // namespace

std::size_t LoopEventList::GetSize() const {
  return static_cast<std::size_t>(std::count_if(events_.begin(), events_.end(), IsLive));
}

LoopEvent& LoopEventList::GetFirstLoopEvent() {
  const auto found = std::find_if(events_.begin(), events_.end(), IsLive);
  if (found == events_.end()) throw std::logic_error("LoopEventList is empty");
  return *found;
}

bool LoopEventList::HasVampOrRepeat() const {
  return std::any_of(events_.begin(), events_.end(), IsLiveVampOrRepeat);
}

LoopEvent& LoopEventList::GetFirstVampOrRepeat() {
  const auto found = std::find_if(events_.begin(), events_.end(), IsLiveVampOrRepeat);
  if (found == events_.end()) throw std::logic_error("LoopEventList does not have a vamp or repeat.");
  return *found;
}

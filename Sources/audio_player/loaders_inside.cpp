#include "Sources/audio_player/loaders_inside.h"

#include <utility>

#include "exc/lock/scope_lock.h"

LoadersInside::LoadersInside() : exc::Lockable("LoadersInside") {}

LoadersInside::~LoadersInside() = default;

LoadersInside::Visit::Visit(std::shared_ptr<LoadersInside> place) : place_(std::move(place)) {
  place_->Count_(1);
}

LoadersInside::Visit::~Visit() {
  place_->Count_(-1);
}

void LoadersInside::Count_(int change) {
  exc::ScopeLock lock(*this);
  visits_ += change;
  if (visits_ == 0) left_.SignalWhileLocked();  // only the destructor of one player waits
}

void LoadersInside::WaitUntilNone() {
  exc::ScopeLock lock(*this);
  while (visits_ > 0) left_.WaitWhileLocked(lock);
}

#include "suite/player_core/active_song_number.h"

#include <stdexcept>

#include "exc/lock/scope_lock.h"

ActiveSongNumber::ActiveSongNumber() : Lockable("ActiveSongNumber") {}

ActiveSongNumber::~ActiveSongNumber() = default;

std::string ActiveSongNumber::Get() const {
  exc::ScopeLock lock(this);
  if (!isSet_) throw std::out_of_range("No song is active.");
  return songNumber_;
}

bool ActiveSongNumber::IsSet() const {
  exc::ScopeLock lock(this);
  return isSet_;
}

void ActiveSongNumber::Set(const std::string& songNumber) {
  exc::ScopeLock lock(this);
  songNumber_ = songNumber;
  isSet_ = true;
}

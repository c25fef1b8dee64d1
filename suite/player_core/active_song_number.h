#pragma once

#include <string>

#include "exc/lock/lockable.h"

// The number of the song that is played now; shared by the player and its show control. Threads: ANY.
class ActiveSongNumber : public exc::Lockable {
 public:
  ActiveSongNumber();
  ~ActiveSongNumber() override;

  // Throws std::out_of_range "No song is active." before the first Set.
  std::string Get() const;
  bool IsSet() const;
  void Set(const std::string& songNumber);

 private:
  std::string songNumber_ EXC_GUARDED_BY(this);
  bool isSet_ EXC_GUARDED_BY(this) = false;
};

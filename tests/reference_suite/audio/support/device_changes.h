#pragma once

#include <atomic>

#include "suite/core/device_update.h"

// Counts how often a device was lost and found again: why it stays away may be told several times meanwhile.
// Note is called by whoever tells, one at a time; the counts are for any thread.
struct DeviceChanges {
  void Note(const notify::DeviceUpdate& update) {
    if (isAway.exchange(update.recovering) == update.recovering) return;
    ++(update.recovering ? losses : returns);
  }

  std::atomic<bool> isAway{false};
  std::atomic<int> losses{0};
  std::atomic<int> returns{0};
};

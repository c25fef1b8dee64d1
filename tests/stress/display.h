#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <limits>
#include <thread>

#include "Sources/audio_player/audio_player.h"

namespace stress {

// What a display and a remote control do all the time: ask. On a thread of its own while it lives; no place
// that it is told lies behind `lastTick`.
class Display {
 public:
  explicit Display(AudioPlayer* player, unsigned lastTick = std::numeric_limits<unsigned>::max())
      : lastTick_(lastTick), thread_([this, player] { Run_(player); }) {}
  ~Display() {
    ends_ = true;
    thread_.join();
    EXPECT_LE(furthest_, lastTick_);
  }
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;

 private:
  void Run_(AudioPlayer* player) {
    while (!ends_) {
      unsigned tick = 0;
      player->GetAudibleTickIndex(&tick);
      furthest_ = std::max(furthest_, tick);
      player->GetElapsedSeconds();
      player->GetTotalDurationSeconds();
      player->HasPendingCaesura();
      Jump jump;
      player->GetJumpForVampRepeatOrCut(&jump);
      std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
  }

  const unsigned lastTick_;
  unsigned furthest_ = 0;
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

}  // namespace stress

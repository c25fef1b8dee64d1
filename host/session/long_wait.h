#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "host/session/device_setup.h"

namespace orbel::host {

// Says what is waited for when the wait, which lasts as long as this object, turns out to be one that a
// person notices.
// Threads    the one that waits makes and ends it; `say` is called on another meanwhile, and never after.
class LongWait {
 public:
  // `say` may be empty, and outlives this object. An empty text: nothing is waited for.
  LongWait(const Say& say, std::string text);
  ~LongWait();
  LongWait(const LongWait&) = delete;
  LongWait& operator=(const LongWait&) = delete;

 private:
  void SayWhenItIsLong_();
  void Say_() noexcept;

  const Say& say_;
  const std::string text_;
  std::mutex mutex_;  // guards hasEnded_; innermost
  std::condition_variable ended_;
  bool hasEnded_ = false;
  std::thread thread_;
};

}  // namespace orbel::host

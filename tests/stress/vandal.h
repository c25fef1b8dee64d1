#pragma once

#include <atomic>
#include <thread>

#include "tests/stress/stress_show.h"

namespace stress {

// Does something to a file of the show, or to the whole disk, every now and then while it lives.
class Vandal {
 public:
  // `destroys`: not only slow reads and other recordings, but files that break, vanish and cannot be read.
  Vandal(StressShow* show, unsigned seed, bool destroys);
  ~Vandal();
  Vandal(const Vandal&) = delete;
  Vandal& operator=(const Vandal&) = delete;

 private:
  void Run_(unsigned seed, bool destroys);
  void Annoy_(unsigned song, unsigned what);
  void Destroy_(unsigned song, unsigned what, unsigned howMuch);

  StressShow* show_;
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

}  // namespace stress

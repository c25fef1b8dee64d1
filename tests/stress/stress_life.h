#pragma once

#include <string>

#include "tests/stress/stress_show.h"
#include "tests/stress/watchdog.h"

namespace stress {

struct LifePlan {
  unsigned seed = 1;
  int commands = 100;
  bool destroysFiles = false;
};

struct LifeResult {
  int commands = 0;     // that were carried out
  bool opened = false;  // the show could be opened
};

// One player from the opening of the show to its destruction at any moment, driven at random by a host while
// it plays in real time on the device without sound, others ask it where it stands, and its files change.
// What must not happen is a failure of the current test.
LifeResult LiveOneLife(StressShow* show, const LifePlan& plan, Watchdog* watchdog);

}  // namespace stress

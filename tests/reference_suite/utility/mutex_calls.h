#pragma once

#include <optional>

// How the mutexes of this program were made, and how many went. The linker leads the calls here first (--wrap
// in CMakeLists.txt); they go on to the system unless `failure` says otherwise. One thread at a time.
struct MutexCalls {
  std::optional<int> lastType;      // PTHREAD_MUTEX_RECURSIVE, ...; empty for a mutex without attributes
  std::optional<int> lastProtocol;  // PTHREAD_PRIO_INHERIT, ...
  int inits = 0;
  int destroys = 0;
  int failure = 0;  // what the next init returns, if not 0
};

MutexCalls& TheMutexCalls();

#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>

#include "tests/support/wait_until.h"

namespace test_support {

// The calling thread, as the system knows it.
inline pid_t ThisThread() {
  return gettid();
}

// Until `thread` sleeps, and goes on sleeping: it waits for another thread. Not while anybody but the caller
// could wake it. False when it does not come to rest.
inline bool WaitUntilItSleeps(pid_t thread) {
  int restful = 0;
  return WaitUntil([&] {
    std::ifstream stat("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string line;
    std::getline(stat, line);
    const std::size_t state = line.rfind(") ");  // after the name, which may hold anything
    restful = state != std::string::npos && line[state + 2] == 'S' ? restful + 1 : 0;
    if (restful >= 10) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return false;
  });
}

}  // namespace test_support

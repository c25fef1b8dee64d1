#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

namespace stress {

// Ends the program when nobody has reported progress for too long: writes what was being done and every
// thread's stack to stderr first. A hang is a failure that says where it hangs.
class Watchdog {
 public:
  explicit Watchdog(std::chrono::milliseconds patience);
  ~Watchdog();
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  // What is done next; a text that lives as long as the program. Threads: ANY.
  void Beat(const char* doing);

 private:
  void Watch_(std::chrono::milliseconds patience);

  std::atomic<unsigned long long> beats_{0};
  std::atomic<const char*> doing_{"nothing yet"};
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

// The stack of every thread of the process, as text. Interrupts each with SIGUSR2.
std::string StacksOfAllThreads();

}  // namespace stress

#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace host_tests {

// What a run of the program left behind.
struct Ended {
  int status = -1;  // exit status; -1 when a signal ended it
  std::string out;
  std::string messages;     // standard error
  long long peakBytes = 0;  // of resident memory
};

// Runs the program orbel to its end, without a terminal. Its standard output goes to `outPath`, when that is
// given, and otherwise to where `Ended::out` is read from.
Ended Orbel(const std::vector<std::string>& arguments, const std::string& outPath = "");

// A run that can be looked at while it lasts.
class RunningOrbel {
 public:
  explicit RunningOrbel(const std::vector<std::string>& arguments, const std::string& outPath = "");
  ~RunningOrbel();
  RunningOrbel(const RunningOrbel&) = delete;
  RunningOrbel& operator=(const RunningOrbel&) = delete;

  void Signal(int signal) const;
  pid_t GetProcess() const { return process_; }
  // Whether standard error has this text by now; waits up to a minute for it.
  bool Says(const std::string& text) const;
  // Whether it has come to its end by itself; ends it otherwise. Before WaitForEnd.
  bool EndsWithin(std::chrono::seconds time) const;
  Ended WaitForEnd();

 private:
  pid_t process_ = -1;
  bool ownsOut_;
  std::string outPath_;
  std::string messagesPath_;
};

}  // namespace host_tests

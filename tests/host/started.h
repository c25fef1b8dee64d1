#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace host_tests {

// A program of the system's, ended with this object. Its output goes nowhere.
class Started {
 public:
  explicit Started(std::vector<std::string> words);
  ~Started();
  Started(const Started&) = delete;
  Started& operator=(const Started&) = delete;

  void Signal(int signal) const;
  void End(int signal);
  // For its own end. False when it did not do what it was asked.
  bool Wait();

 private:
  pid_t process_ = -1;
};

}  // namespace host_tests

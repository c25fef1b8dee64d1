#pragma once

#include <map>
#include <string>

namespace orbel::host {

// Lets a line pass that has not passed for a minute. Threads: one.
class SeldomLines {
 public:
  // `now`: seconds of any clock that only grows.
  bool IsNew(const std::string& line, double now);

 private:
  std::map<std::string, double> passed_;  // when, at most a minute ago
};

}  // namespace orbel::host

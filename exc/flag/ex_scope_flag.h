#pragma once

#include <string>

#include "exc/flag/ex_flag.h"

namespace exc {

// Keeps a flag set while it lives.
//
// Threads    belongs to the thread that made it.
class ExScopeFlag {
 public:
  explicit ExScopeFlag(ExFlag& flag);
  ExScopeFlag(ExFlag& flag, const std::string& reason);
  // Cancels the flag unless that has been done. Ends the program when it throws.
  virtual ~ExScopeFlag();
  ExScopeFlag(const ExScopeFlag&) = delete;
  ExScopeFlag& operator=(const ExScopeFlag&) = delete;

  // Before the end of the scope. Nothing when the flag is no longer set.
  virtual void Cancel();

 private:
  ExFlag& flag_;
};

}  // namespace exc

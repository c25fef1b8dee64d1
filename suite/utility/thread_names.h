#pragma once

#include <string>

namespace exc {

// Names for threads, for debuggers, logs and traces. Threads: ANY; each names itself.
class ThreadNames {
 public:
  constexpr ThreadNames() = default;

  // Any text. The system shows its first 15 bytes.
  void SetNameOfCurrentThread(const std::string& name);
  // The whole text, or an empty one when the thread has not been named.
  std::string GetNameOfCurrentThread() const;
};

extern ThreadNames thread_names;

}  // namespace exc

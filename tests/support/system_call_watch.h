#pragma once

#include <initializer_list>

namespace test_support {

// From now on every call of this thread to the system fails and is counted, but for the `allowed` and those
// with which a thread ends. For good: give it a thread of its own. False when the system does not let its
// calls be watched. Sanitizers and Valgrind make calls of their own.
bool ForbidSystemCallsBut(std::initializer_list<long> allowed);

// Of all threads.
int GetForbiddenSystemCalls();

// Notices whether this thread calls the system while it lives; the call passes. For threads that call the
// system rightly before and after.
//
// Not within one another.
class SystemCallWatch {
 public:
  SystemCallWatch();
  ~SystemCallWatch();
  SystemCallWatch(const SystemCallWatch&) = delete;
  SystemCallWatch& operator=(const SystemCallWatch&) = delete;

  // The number of the first call; -1: there was none. On the thread that made it.
  long GetFirst() const;
  // Whether the system, and the kind of machine, let their calls be noticed.
  static bool IsPossible();
};

}  // namespace test_support

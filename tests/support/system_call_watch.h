#pragma once

#include <initializer_list>

namespace test_support {

// From now on every call of this thread to the system fails and is counted, but for the `allowed` and those
// with which a thread ends. For good: give it a thread of its own. False when the system does not let its
// calls be watched. Sanitizers and Valgrind make calls of their own.
bool ForbidSystemCallsBut(std::initializer_list<long> allowed);

// Of all threads.
int GetForbiddenSystemCalls();

}  // namespace test_support

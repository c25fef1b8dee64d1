#include <iostream>

#include "exc/console/thread_safe_ostream.h"

namespace exc {

namespace {

// Made before the first constructor of the program runs and never destroyed: threads and static objects that
// outlive main() still write.
union Console {
  constexpr Console() : stream(std::cout) {}
  ~Console() {}

  ThreadSafeOStream stream;
};

constinit Console console;

}  // namespace

constinit ThreadSafeOStream& thread_safe_cout = console.stream;

}  // namespace exc

// __wrap_pthread_create stands in for the program's pthread_create, and __real_pthread_create is the
// system's.
#include "tests/reference_suite/audio/support/refused_threads.h"

#include <pthread.h>

#include <atomic>
#include <cerrno>

namespace refused_threads {

namespace {

std::atomic<int> refused{0};
std::atomic<bool> refusesForGood{false};
std::atomic<int> asked{0};

bool IsRefused() {
  const int count = ++asked;
  const int nth = refused;
  return nth > 0 && (count == nth || (refusesForGood && count > nth));
}

}  // namespace

void Refuse(int nth, bool forGood) {
  refused = nth;
  refusesForGood = forGood;
  asked = 0;
}

int Asked() {
  return asked;
}

}  // namespace refused_threads

extern "C" {

int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument);

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument) {
  if (refused_threads::IsRefused()) return EAGAIN;
  return __real_pthread_create(thread, attributes, body, argument);
}
}

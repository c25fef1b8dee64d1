#include "tests/reference_suite/utility/mutex_calls.h"

#include <pthread.h>

#include <utility>

MutexCalls& TheMutexCalls() {
  static MutexCalls calls;
  return calls;
}

// The names are the linker's: __wrap_X stands in for X, __real_X is X.
extern "C" {

int __real_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes);
int __real_pthread_mutex_destroy(pthread_mutex_t* mutex);

int __wrap_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) {
  MutexCalls& calls = TheMutexCalls();
  ++calls.inits;
  calls.lastType.reset();
  calls.lastProtocol.reset();
  int value = 0;
  if (attributes != nullptr && pthread_mutexattr_gettype(attributes, &value) == 0) calls.lastType = value;
  if (attributes != nullptr && pthread_mutexattr_getprotocol(attributes, &value) == 0)
    calls.lastProtocol = value;
  const int failure = std::exchange(calls.failure, 0);
  return failure != 0 ? failure : __real_pthread_mutex_init(mutex, attributes);
}

int __wrap_pthread_mutex_destroy(pthread_mutex_t* mutex) {
  ++TheMutexCalls().destroys;
  return __real_pthread_mutex_destroy(mutex);
}
}

// Waits and joins are recorded before they begin. The names are the linker's: __wrap_X stands in for X, and
// __real_X is X; CMakeLists.txt names each.
#include <pthread.h>

#include "tests/support/lock_order/lock_order.h"

namespace lock_order = test_support::lock_order;

extern "C" {

int __real_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex);
int __real_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* until);
int __real_pthread_join(pthread_t thread, void** result);

int __wrap_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
  lock_order::WaitsWith(mutex);
  return __real_pthread_cond_wait(condition, mutex);
}

int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* until) {
  lock_order::WaitsWith(mutex);
  return __real_pthread_cond_timedwait(condition, mutex, until);
}

int __wrap_pthread_join(pthread_t thread, void** result) {
  lock_order::Joins();
  lock_order::CallJoinHook(thread, true);
  const int answer = __real_pthread_join(thread, result);
  lock_order::CallJoinHook(thread, false);
  return answer;
}
}

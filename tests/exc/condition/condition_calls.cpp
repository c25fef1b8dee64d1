#include "tests/exc/condition/condition_calls.h"

void ConditionCalls::Reset() {
  for (auto* counter : {&inits, &initsWithAttributes, &destroys, &waits, &signals, &broadcasts, &result})
    *counter = 0;
  beforeWaking = nullptr;
}

ConditionCalls& TheConditionCalls() {
  static ConditionCalls calls;
  return calls;
}

namespace {

// Only a system call that takes part is counted as one that fails.
template <typename Call>
int CountAndCall(std::atomic<int>& counter, Call call) {
  ++counter;
  const int result = TheConditionCalls().result;
  return result != 0 ? result : call();
}

}  // namespace

// The names are the linker's: __wrap_X stands in for X, __real_X is X.
extern "C" {

int __real_pthread_cond_init(pthread_cond_t* condition, const pthread_condattr_t* attributes);
int __real_pthread_cond_destroy(pthread_cond_t* condition);
int __real_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex);
int __real_pthread_cond_signal(pthread_cond_t* condition);
int __real_pthread_cond_broadcast(pthread_cond_t* condition);

int __wrap_pthread_cond_init(pthread_cond_t* condition, const pthread_condattr_t* attributes) {
  if (attributes != nullptr) ++TheConditionCalls().initsWithAttributes;
  return CountAndCall(TheConditionCalls().inits,
                      [&] { return __real_pthread_cond_init(condition, attributes); });
}

int __wrap_pthread_cond_destroy(pthread_cond_t* condition) {
  return CountAndCall(TheConditionCalls().destroys, [&] { return __real_pthread_cond_destroy(condition); });
}

int __wrap_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
  return CountAndCall(TheConditionCalls().waits, [&] { return __real_pthread_cond_wait(condition, mutex); });
}

int __wrap_pthread_cond_signal(pthread_cond_t* condition) {
  if (TheConditionCalls().beforeWaking) TheConditionCalls().beforeWaking();
  return CountAndCall(TheConditionCalls().signals, [&] { return __real_pthread_cond_signal(condition); });
}

int __wrap_pthread_cond_broadcast(pthread_cond_t* condition) {
  if (TheConditionCalls().beforeWaking) TheConditionCalls().beforeWaking();
  return CountAndCall(TheConditionCalls().broadcasts,
                      [&] { return __real_pthread_cond_broadcast(condition); });
}
}

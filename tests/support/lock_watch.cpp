// Stands before the system's functions that lock or wait.
#include "tests/support/lock_watch.h"

#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>

namespace {

thread_local int watches = 0;
thread_local int locks = 0;

void Count() {
  if (watches > 0) ++locks;
}

template <typename Function>
Function* TheSystems(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace test_support {

LockWatch::LockWatch() : before_(locks) {
  ++watches;
}

LockWatch::~LockWatch() {
  --watches;
}

int LockWatch::Count() const {
  return locks - before_;
}

}  // namespace test_support

// NOLINTBEGIN(bugprone-macro-parentheses): a list of parameters is none
#define ORBEL_WATCHED(name, exceptions, parameters, arguments)   \
  int name parameters exceptions {                               \
    static auto* const next = TheSystems<int parameters>(#name); \
    Count();                                                     \
    return next arguments;                                       \
  }
// NOLINTEND(bugprone-macro-parentheses)

extern "C" {

ORBEL_WATCHED(pthread_mutex_lock, noexcept, (pthread_mutex_t * mutex), (mutex))
ORBEL_WATCHED(pthread_mutex_trylock, noexcept, (pthread_mutex_t * mutex), (mutex))
ORBEL_WATCHED(pthread_mutex_timedlock, noexcept, (pthread_mutex_t * mutex, const timespec* until),
              (mutex, until))
ORBEL_WATCHED(pthread_mutex_clocklock, noexcept,
              (pthread_mutex_t * mutex, clockid_t clock, const timespec* until), (mutex, clock, until))
ORBEL_WATCHED(pthread_rwlock_rdlock, noexcept, (pthread_rwlock_t * lock), (lock))
ORBEL_WATCHED(pthread_rwlock_tryrdlock, noexcept, (pthread_rwlock_t * lock), (lock))
ORBEL_WATCHED(pthread_rwlock_wrlock, noexcept, (pthread_rwlock_t * lock), (lock))
ORBEL_WATCHED(pthread_rwlock_trywrlock, noexcept, (pthread_rwlock_t * lock), (lock))
ORBEL_WATCHED(pthread_spin_lock, noexcept, (pthread_spinlock_t * lock), (lock))
ORBEL_WATCHED(pthread_spin_trylock, noexcept, (pthread_spinlock_t * lock), (lock))
ORBEL_WATCHED(sem_wait, , (sem_t * semaphore), (semaphore))
ORBEL_WATCHED(sem_trywait, noexcept, (sem_t * semaphore), (semaphore))
ORBEL_WATCHED(sem_timedwait, , (sem_t * semaphore, const timespec* until), (semaphore, until))
ORBEL_WATCHED(pthread_cond_wait, , (pthread_cond_t * condition, pthread_mutex_t* mutex), (condition, mutex))
ORBEL_WATCHED(pthread_cond_timedwait, ,
              (pthread_cond_t * condition, pthread_mutex_t* mutex, const timespec* until),
              (condition, mutex, until))

ORBEL_WATCHED(pthread_cond_clockwait, ,
              (pthread_cond_t * condition, pthread_mutex_t* mutex, clockid_t clock, const timespec* until),
              (condition, mutex, clock, until))
ORBEL_WATCHED(sem_clockwait, , (sem_t * semaphore, clockid_t clock, const timespec* until),
              (semaphore, clock, until))
ORBEL_WATCHED(pthread_rwlock_timedrdlock, noexcept, (pthread_rwlock_t * lock, const timespec* until),
              (lock, until))
ORBEL_WATCHED(pthread_rwlock_timedwrlock, noexcept, (pthread_rwlock_t * lock, const timespec* until),
              (lock, until))
ORBEL_WATCHED(pthread_rwlock_clockrdlock, noexcept,
              (pthread_rwlock_t * lock, clockid_t clock, const timespec* until), (lock, clock, until))
ORBEL_WATCHED(pthread_rwlock_clockwrlock, noexcept,
              (pthread_rwlock_t * lock, clockid_t clock, const timespec* until), (lock, clock, until))

}  // extern "C"

#pragma once

#include <memory>
#include <string>

#include "exc/lock/ex_lock.h"

namespace exc {

class LockImpl_;

// A named lock that owns its implementation. The utility library supplies the implementation, so a host can
// record, trace or replace every mutex of the engine by its name.
//
// Threads    ANY. The holder must not take a basic_lock again; a basic_rlock it may, and gives up each take.
// Variants   only `false` exists; both templates are instantiated in basic_lock.cpp.
template <bool b>
class basic_lock : public ExLock {
 public:
  // `name` goes to the implementation.
  explicit basic_lock(const std::string& name);
  ~basic_lock() override;

  void Lock() EXC_TAKES() override;
  void Unlock() EXC_GIVES_UP() override;
  bool TryLock() EXC_TRIES(true) override;
  pthread_mutex_t* get_mutex() override;
  void ForwardArgument(void* argument) override;
  void Forward() override;

 protected:
  // Creates no implementation: the derived class sets its own before anybody locks.
  basic_lock(const std::string& name, bool recursive);

  std::unique_ptr<LockImpl_> impl_;
};

// The same with a recursive mutex.
template <bool b>
class basic_rlock : public basic_lock<b> {
 public:
  explicit basic_rlock(const std::string& name);
  ~basic_rlock() override;
};

extern template class basic_lock<false>;
extern template class basic_rlock<false>;

}  // namespace exc

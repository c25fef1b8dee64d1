#pragma once

#include <string>

#include "exc/lock/basic_lock.h"
#include "exc/lock/basic_lockable.h"

namespace exc {

// Base of objects that are their own recursive lock: an operation that holds it may call another that takes
// it.
//
//   class Counter : public exc::RLockable {
//    public:
//     Counter() : RLockable("Counter") {}
//     int Next() {
//       exc::ScopeLock lock(*this);
//       return ++count_;
//     }
//
//    private:
//     int count_ EXC_GUARDED_BY(this) = 0;
//   };
class RLockable : public BasicLockable {
 public:
  // `name` names the lock in traces and error texts.
  explicit RLockable(const std::string& name);
  ~RLockable() override;

  ExLock* GetLock() override;

 private:
  basic_rlock<false> lock_;
};

}  // namespace exc

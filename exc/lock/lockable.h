#pragma once

#include <string>

#include "exc/lock/basic_lock.h"
#include "exc/lock/basic_lockable.h"

namespace exc {

// Base of objects that are their own lock. Not recursive: the holder must not lock again.
class Lockable : public BasicLockable {
 public:
  // `name` names the lock in traces and error texts.
  explicit Lockable(const std::string& name);
  ~Lockable() override;

  ExLock* GetLock() override;

 private:
  basic_lock<false> lock_;
};

}  // namespace exc

#include "exc/lock/rlockable.h"

namespace exc {

RLockable::RLockable(const std::string& name) : lock_(name) {}

RLockable::~RLockable() = default;

ExLock* RLockable::GetLock() {
  return &lock_;
}

}  // namespace exc

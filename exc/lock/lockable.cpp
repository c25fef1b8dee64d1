#include "exc/lock/lockable.h"

namespace exc {

Lockable::Lockable(const std::string& name) : lock_(name) {}

Lockable::~Lockable() = default;

ExLock* Lockable::GetLock() {
  return &lock_;
}

}  // namespace exc

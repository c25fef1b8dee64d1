#include "exc/lock/ex_lock.h"

namespace exc {

ExLock::~ExLock() = default;

void ExLock::Forward() {}

ExLock* ExLock::GetLock() {
  return this;
}

}  // namespace exc

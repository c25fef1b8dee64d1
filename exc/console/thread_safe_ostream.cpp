#include "exc/console/thread_safe_ostream.h"

namespace exc {

using exc_internal::internal_lockable;

ThreadSafeOStream& ThreadSafeOStream::operator<<(std::string text) {
  internal_lockable::internal_scope_lock lock(&lock_);
  stream_->write(text.data(), static_cast<std::streamsize>(text.size()));
  return *this;
}

void ThreadSafeOStream::flush() {
  internal_lockable::internal_scope_lock lock(&lock_);
  stream_->flush();
}

}  // namespace exc

#include "exc/lock/basic_lock.h"

#include "suite/utility/lock_impl.h"

// Unchecked: a pthread mutex is no lock to the analysis, so these bodies cannot prove what they do.
namespace exc {

template <bool b>
basic_lock<b>::basic_lock(const std::string& name) : impl_(std::make_unique<LockImpl_>(name)) {}

template <bool b>
basic_lock<b>::basic_lock(const std::string& /*name*/, bool /*recursive*/) {}

template <bool b>
basic_lock<b>::~basic_lock() = default;

template <bool b>
void basic_lock<b>::Lock() EXC_UNCHECKED_LOCKING {
  impl_->Lock();
}

template <bool b>
void basic_lock<b>::Unlock() EXC_UNCHECKED_LOCKING {
  impl_->Unlock();
}

template <bool b>
bool basic_lock<b>::TryLock() EXC_UNCHECKED_LOCKING {
  return impl_->TryLock();
}

template <bool b>
pthread_mutex_t* basic_lock<b>::get_mutex() {
  return impl_->get_mutex();
}

template <bool b>
void basic_lock<b>::ForwardArgument(void* argument) {
  impl_->ForwardArgument(argument);
}

template <bool b>
void basic_lock<b>::Forward() {
  impl_->Forward();
}

template <bool b>
basic_rlock<b>::basic_rlock(const std::string& name) : basic_lock<b>(name, true) {
  this->impl_ = std::make_unique<RLockImpl_>(name);
}

template <bool b>
basic_rlock<b>::~basic_rlock() = default;

template class basic_lock<false>;
template class basic_rlock<false>;

}  // namespace exc

#pragma once

#include <pthread.h>

namespace tesk_audio {

// Runs `work`, which must not throw, to its end before the thread that calls can be cancelled.
//
// JACK's library cancels its threads when a client is closed, at whatever instruction they are, in what they
// call of ours as well. Unwinding from there would end the program at the first noexcept function, or leave a
// mutex locked for ever.
// Thread: any, of the library's or not. Locks, allocates and calls nothing of the system.
template <typename Work>
void RunUncancelled(const Work& work) {
  static_assert(noexcept(work()), "Nothing may leave what a C library calls.");
  int before = PTHREAD_CANCEL_ENABLE;
  ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
  work();
  ::pthread_setcancelstate(before, nullptr);
}

}  // namespace tesk_audio

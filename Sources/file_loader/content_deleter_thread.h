#pragma once

#include <pthread.h>

#include "exc/lock/lockable.h"

// What the thread that frees decoded audio works from: whom to call once a second, and whether to go on.
//
// Threads    DELETER asks and calls; HOST ends it.
// Locks      its own, for the should-run flag. None is held while the callback runs.
class AudioContentDeleterThreadData : public exc::Lockable {
 public:
  AudioContentDeleterThreadData(void (*callback)(void*), void* argument);
  ~AudioContentDeleterThreadData() override;

  bool ShouldRun();
  // The thread ends at its next wake-up, within a second.
  void Exit();
  void DoAudioContentDeleterCallback();

 private:
  void (*const callback_)(void*);
  void* const argument_;
  bool shouldRun_ EXC_GUARDED_BY(this) = true;
};

// Starts the thread, named "AudioContentDeleter"; its handle goes to `thread`. The first callback comes a
// second later. The caller owns the record, calls Exit on it and joins the thread before it deletes it.
// Throws std::runtime_error when the system gives no thread. Threads: HOST.
AudioContentDeleterThreadData* StartAudioContentDeleterThread(void (*callback)(void*), void* argument,
                                                              pthread_t* thread);

#pragma once

#include <pthread.h>

#include <functional>

namespace tesk_audio {

// A thread that decodes: never real-time, whatever its creator is, and of less weight than threads
// that play or show something.
class DecodingThread {
 public:
  // `work` throws nothing. `niceValue` as the system counts it, for this thread alone: up to 19, the more the
  // less weight.
  DecodingThread(std::function<void()> work, int niceValue);
  ~DecodingThread() { Join(); }
  DecodingThread(const DecodingThread&) = delete;
  DecodingThread& operator=(const DecodingThread&) = delete;

  // False when the system grants no thread; nothing runs then.
  bool Start();
  // Waits until the work is done. Nothing without a started thread.
  void Join();

 private:
  static void* Run_(void* self);

  const std::function<void()> work_;
  const int niceValue_;
  pthread_t thread_{};
  bool started_ = false;
};

}  // namespace tesk_audio

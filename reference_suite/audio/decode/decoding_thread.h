#pragma once

#include <pthread.h>

#include <functional>

namespace tesk_audio {

class DecodingPlaces;

// A thread that decodes: never real-time, whatever its creator is, and of less weight than threads
// that play or show something.
class DecodingThread {
 public:
  // `work` throws nothing. `places`, which must outlive the thread, tells its weight.
  DecodingThread(std::function<void()> work, const DecodingPlaces& places);
  ~DecodingThread() { Join(); }
  DecodingThread(const DecodingThread&) = delete;
  DecodingThread& operator=(const DecodingThread&) = delete;

  // False when the system grants no thread; nothing runs then.
  bool Start();
  // Waits until the work is done. Nothing without a started thread.
  void Join();

  // Gives the calling thread the weight that its places now tell. Nothing in any other thread. Called now and
  // then by what decodes.
  static void FollowPlaces();

 private:
  static void* Run_(void* self);

  const std::function<void()> work_;
  const DecodingPlaces& places_;
  int niceValue_ = 0;  // of the thread, by the thread
  pthread_t thread_{};
  bool started_ = false;
};

}  // namespace tesk_audio

#include "reference_suite/audio/decode/decoding_thread.h"

#include <sched.h>
#include <sys/resource.h>

#include <utility>

#include "reference_suite/audio/decode/decoding_places.h"

namespace tesk_audio {

namespace {

thread_local DecodingThread* current = nullptr;

}  // namespace

DecodingThread::DecodingThread(std::function<void()> work, const DecodingPlaces& places)
    : work_(std::move(work)), places_(places) {}

bool DecodingThread::Start() {
  pthread_attr_t attributes{};
  if (pthread_attr_init(&attributes) != 0) return false;
  // A loader can be started by the render thread, and would pass its scheduling on.
  const sched_param none{};
  pthread_attr_setschedpolicy(&attributes, SCHED_OTHER);
  pthread_attr_setschedparam(&attributes, &none);
  pthread_attr_setinheritsched(&attributes, PTHREAD_EXPLICIT_SCHED);
  started_ = pthread_create(&thread_, &attributes, Run_, this) == 0;
  pthread_attr_destroy(&attributes);
  return started_;
}

void DecodingThread::Join() {
  if (!std::exchange(started_, false)) return;
  pthread_join(thread_, nullptr);
}

void DecodingThread::FollowPlaces() {
  if (current == nullptr) return;
  const int niceValue = current->places_.NiceValue();
  if (niceValue == current->niceValue_) return;
  current->niceValue_ = niceValue;
  // What the system calls a process here is this thread.
  ::setpriority(PRIO_PROCESS, 0, niceValue);
}

void* DecodingThread::Run_(void* self) {
  current = static_cast<DecodingThread*>(self);
  current->niceValue_ = ::getpriority(PRIO_PROCESS, 0);
  FollowPlaces();
  current->work_();
  return nullptr;
}

}  // namespace tesk_audio

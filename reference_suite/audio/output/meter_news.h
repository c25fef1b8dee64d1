#pragma once

#include <pthread.h>

#include "exc/lock/lockable.h"
#include "reference_suite/audio/output/timed_condition.h"

namespace tesk_audio {

class LiveSampleOutput;

// Tells listeners ten times a second how a live output is doing. Without a thread to be had nobody is told,
// and the console says so.
//
// Threads    its own, on which listeners are called, without a lock.
class MeterNews : private exc::Lockable {
 public:
  // The output outlives it.
  explicit MeterNews(LiveSampleOutput& output);
  ~MeterNews() override;
  MeterNews(const MeterNews&) = delete;
  MeterNews& operator=(const MeterNews&) = delete;

 private:
  static void* ThreadBody_(void* self);
  void Run_();
  bool WaitForNext_();

  LiveSampleOutput& output_;
  TimedCondition changed_;
  bool ends_ EXC_GUARDED_BY(this) = false;
  pthread_t thread_{};
  bool runs_ = false;
};

}  // namespace tesk_audio

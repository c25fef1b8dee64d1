#include "reference_suite/audio/device/start_thread.h"

#include <sched.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <system_error>

#include "exc/console/cout_buffer.h"
#include "suite/audio/errors.h"

namespace tesk_audio {

namespace {

constexpr int kPriority = 60;

int HighestPriority() {
  return std::min(kPriority, ::sched_get_priority_max(SCHED_FIFO));
}

// Up to where the system lets ordinary people go.
int GrantedPriority() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_RTPRIO, &limit) != 0) return 0;
  return static_cast<int>(std::min<rlim_t>(limit.rlim_cur, kPriority));
}

bool TakePriority(int policy, int priority) {
  sched_param parameters{};
  parameters.sched_priority = priority;
  // For the calling thread alone, as Linux has it.
  return ::sched_setscheduler(0, policy, &parameters) == 0;
}

int StartWithPriority(int priority, pthread_t* thread, void* (*body)(void*), void* argument) {
  pthread_attr_t attributes;
  int result = ::pthread_attr_init(&attributes);
  if (result != 0) return result;
  sched_param parameters{};
  parameters.sched_priority = priority;
  ::pthread_attr_setinheritsched(&attributes, PTHREAD_EXPLICIT_SCHED);
  ::pthread_attr_setschedpolicy(&attributes, SCHED_FIFO);
  result = ::pthread_attr_setschedparam(&attributes, &parameters);
  if (result == 0) result = ::pthread_create(thread, &attributes, body, argument);
  ::pthread_attr_destroy(&attributes);
  return result;
}

// Whatever the refusal: an ordinary thread may still be had.
bool StartInRealTime(pthread_t* thread, void* (*body)(void*), void* argument) {
  const int highest = HighestPriority();
  // Some may go beyond their limit.
  if (highest > 0 && StartWithPriority(highest, thread, body, argument) == 0) return true;
  const int granted = std::min(highest, GrantedPriority());
  return granted > 0 && StartWithPriority(granted, thread, body, argument) == 0;
}

void SayOnceThatThereIsNoRealTime() {
  static std::atomic<bool> said{false};
  if (said.exchange(true)) return;
  exc::CoutBuffer()
      << "NOTICE: the system grants the audio output no real-time priority; sound may drop out when "
         "other programs are busy. For a stage machine put \"@audio - rtprio 95\" into "
         "/etc/security/limits.d/audio.conf, add yourself to the group audio, and log in again."
      << exc::EndlT();
}

}  // namespace

pthread_t StartThread(void* (*body)(void*), void* argument, const std::string& who) {
  pthread_t thread{};
  const int result = ::pthread_create(&thread, nullptr, body, argument);
  if (result != 0) {
    throw TESKAudioError(who + " cannot start its thread: " + std::generic_category().message(result) +
                         ". Close other programs.");
  }
  return thread;
}

pthread_t StartRealTimeThread(void* (*body)(void*), void* argument, const std::string& who) {
  pthread_t thread{};
  if (StartInRealTime(&thread, body, argument)) return thread;
  thread = StartThread(body, argument, who);
  SayOnceThatThereIsNoRealTime();
  return thread;
}

void GiveWayTo(int priority) {
  const int policy = ::sched_getscheduler(0);
  if ((policy & ~SCHED_RESET_ON_FORK) != SCHED_FIFO) return;
  const int wanted =
      priority > 0 ? std::clamp(priority - 1, 1, ::sched_get_priority_max(SCHED_FIFO)) : HighestPriority();
  // Some may not go that far, and may have more than they have now.
  if (!TakePriority(policy, wanted)) TakePriority(policy, std::min(wanted, std::max(1, GrantedPriority())));
}

void KeepRealTimeToOneself() {
  int policy = SCHED_OTHER;
  sched_param parameters{};
  if (::pthread_getschedparam(::pthread_self(), &policy, &parameters) != 0 || policy != SCHED_FIFO) return;
  // For the calling thread alone, as Linux has it. Refused, it stays as it is.
  ::sched_setscheduler(0, policy | SCHED_RESET_ON_FORK, &parameters);
}

}  // namespace tesk_audio

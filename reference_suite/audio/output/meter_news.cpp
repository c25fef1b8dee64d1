#include "reference_suite/audio/output/meter_news.h"

#include <exception>

#include "exc/console/cout_buffer.h"
#include "exc/lock/scope_lock.h"
#include "reference_suite/audio/device/start_thread.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "reference_suite/audio/output/monotonic_now.h"
#include "suite/audio/errors.h"
#include "suite/core/callback_dispatcher.h"
#include "suite/core/notification_names.h"
#include "suite/utility/thread_names.h"

namespace tesk_audio {

namespace {

constexpr long long kInterval = 100'000'000;

}  // namespace

MeterNews::MeterNews(LiveSampleOutput& output) : exc::Lockable("MeterNews"), output_(output) {
  try {
    thread_ = StartThread(&MeterNews::ThreadBody_, this, "The meter of the audio output");
    runs_ = true;
  } catch (const TESKAudioError& error) {
    exc::CoutBuffer() << "NOTICE: " << error.what() << exc::EndlT();
  }
}

MeterNews::~MeterNews() {
  {
    exc::ScopeLock lock(*this);
    ends_ = true;
    changed_.WakeAll();
  }
  if (runs_) ::pthread_join(thread_, nullptr);
}

void* MeterNews::ThreadBody_(void* self) {
  exc::thread_names.SetNameOfCurrentThread("MeterNews");
  static_cast<MeterNews*>(self)->Run_();
  return nullptr;
}

void MeterNews::Run_() {
  while (WaitForNext_()) {
    try {
      OutputMeters meters = output_.ReadMeters();
      notify::callbackDispatcher.Notify(notify::names::audio_meters, &meters);
    } catch (const std::exception&) {
      // No memory for them: the next ones come in a tenth of a second.
    }
  }
}

bool MeterNews::WaitForNext_() {
  exc::ScopeLock lock(*this);
  const long long next = MonotonicNow() + kInterval;
  while (!ends_ && MonotonicNow() < next) changed_.WaitFor(lock, next - MonotonicNow());
  return !ends_;
}

}  // namespace tesk_audio

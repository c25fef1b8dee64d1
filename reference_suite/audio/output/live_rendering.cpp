// The render thread of LiveSampleOutput: what it does next, and when it sleeps.
#include <algorithm>
#include <exception>

#include "exc/lock/scope_lock.h"
#include "reference_suite/audio/device/start_thread.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "suite/core/tesk_log_exception.h"
#include "suite/utility/thread_names.h"

namespace tesk_audio {

namespace {

constexpr long long kMillisecond = 1'000'000;

}  // namespace

void LiveSampleOutput::StartThread_() {
  thread_ = StartRealTimeThread(&LiveSampleOutput::ThreadBody_, this, "The audio output");
  threadRuns_ = true;
}

void LiveSampleOutput::JoinThread_() {
  if (!threadRuns_) return;
  {
    exc::ScopeLock lock(*this);
    exits_ = true;
    renderWakes_.WakeAll();
  }
  ::pthread_join(thread_, nullptr);
  threadRuns_ = false;
  renderThread_ = pthread_t{};
  // Also when the device has never obeyed the stop.
  exc::ScopeLock lock(*this);
  state_ = State::Stopped;
}

void* LiveSampleOutput::ThreadBody_(void* self) {
  exc::thread_names.SetNameOfCurrentThread("AudioRender");
  KeepRealTimeToOneself();
  static_cast<LiveSampleOutput*>(self)->Run_();
  return nullptr;
}

bool LiveSampleOutput::OnRenderThread_() const {
  return ::pthread_equal(renderThread_, ::pthread_self()) != 0;
}

void LiveSampleOutput::Run_() {
  renderThread_ = ::pthread_self();
  exc::ScopeLock lock(*this);
  for (Task task = NextTask_(); task != Task::Exit; task = NextTask_()) {
    if (task == Task::Wait) {
      WaitForTask_(lock);
      continue;
    }
    inPlayer_ = true;
    // Lock open: transport commands may change every state.
    // Afterwards: nothing read above is reused.
    lock.Unlock();
    Do_(task);
    lock.Lock();
    inPlayer_ = false;
    changed_.WakeAll();
    if (task == Task::Open || task == Task::LookForMove) WaitForTask_(lock);
  }
}

void LiveSampleOutput::Do_(Task task) noexcept {
  try {
    if (task == Task::Step) StepWhileRunning_();
    if (task == Task::Open) OpenUnlessMoved_();
    if (task == Task::AskAttacca) AskAttacca_();
    if (task == Task::AnnounceStop) AnnounceStop_();
    if (task == Task::LookForMove) LookForMove_();
    if (task == Task::FinishStop) FinishStop_();
    if (task == Task::FinishEnding) FinishEnding_();
  } catch (const std::exception& error) {
    TeskLogException(error.what(), "reference_suite/audio/output", __LINE__);
  }
}

void LiveSampleOutput::WaitForTask_(exc::ScopeLock& lock) {
  if (state_ != State::Running && !stopRequested_) {
    renderWakes_.Wait(lock);
    return;
  }
  // The device does not wake us, so that its thread never has to: look again before it has taken half a read.
  const double frames =
      static_cast<double>(std::min<std::size_t>(quantum_, device_->GetPeriodFrames())) / 2.0;
  const auto nanoseconds = static_cast<long long>(frames / device_->GetRateHz() * 1e9);
  renderWakes_.WaitFor(lock, std::clamp(nanoseconds, kMillisecond / 2, 2 * kMillisecond));
}

LiveSampleOutput::Task LiveSampleOutput::NextTask_() {
  GiveWayToDevice_();
  feed_.SetLatency(device_->GetLatencyFrames());
  NoteWhatWasTaken_();
  if (exits_) return Task::Exit;
  if (stopRequested_) {
    CloseFeed_(stopFadeFrames_);
    return feed_.IsClosed() ? Task::FinishStop : Task::Wait;
  }
  return state_ == State::Running ? NextRunningTask_() : Task::Wait;
}

// Another device, or the same server started in another way, can have another one.
void LiveSampleOutput::GiveWayToDevice_() {
  const int priority = device_->GetRealTimePriority();
  if (priority == givesWayTo_) return;
  givesWayTo_ = priority;
  GiveWayTo(priority);
}

LiveSampleOutput::Task LiveSampleOutput::NextRunningTask_() {
  if (idle_ || refills_ > 0 || seekFlag_.GetIsSet()) return Task::Wait;
  // Another song: neither the frames nor the ending of the one before count any more.
  if (switched_) return Task::LookForMove;
  if (ending_ != Ending::None) return NextEndingTask_();
  if (NeedsFrames_()) return Task::Step;
  // It can have closed by itself at an end that was taken back in the same moment.
  return !feedOpen_ || feed_.IsClosed() ? Task::Open : Task::Wait;
}

LiveSampleOutput::Task LiveSampleOutput::NextEndingTask_() {
  if (ending_ == Ending::SongEnd) return Task::AskAttacca;
  if (ending_ == Ending::Caesura && !stopIsAnnounced_) return Task::AnnounceStop;
  const bool played = feed_.IsClosed() && feed_.GetAudiblePosition() >= endPosition_;
  const bool closedTooEarly = feed_.IsClosed() && ring_.GetReadPosition() < endPosition_;
  if (!feedOpen_ || closedTooEarly) return Task::Open;
  return played ? Task::FinishEnding : Task::LookForMove;
}

bool LiveSampleOutput::MayStep() {
  exc::ScopeLock lock(*this);
  const bool wanted = state_ == State::Running && !stopRequested_ && !idle_ && !exits_;
  return wanted && ending_ == Ending::None && !seekFlag_.GetIsSet();
}

}  // namespace tesk_audio

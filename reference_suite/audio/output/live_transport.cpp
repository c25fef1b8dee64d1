// The commands of LiveSampleOutput.
#include <algorithm>
#include <utility>

#include "exc/lock/scope_lock.h"
#include "reference_suite/audio/output/format_fit.h"
#include "reference_suite/audio/output/frames_of.h"
#include "reference_suite/audio/output/live_sample_output.h"

namespace tesk_audio {

namespace {

constexpr long long kMillisecond = 1'000'000;
// How long a device may take to obey.
constexpr long long kPatience = 500 * kMillisecond;
// What may pass between two looks and still be the device's: a machine that stands still, or a program that
// is stopped and goes on, holds the device up as well.
constexpr long long kLongestLook = 50 * kMillisecond;

// Of somebody who waits for a device, and looks again and again. By the device's clock.
class Patience {
 public:
  explicit Patience(long long now) : last_(now) {}
  void BeginAnew() { spent_ = 0; }
  bool IsLeftAt(long long now) {
    spent_ += std::min(now - last_, kLongestLook);
    last_ = now;
    return spent_ <= kPatience;
  }

 private:
  long long last_;
  long long spent_ = 0;
};

class OpenGate : public StepGate {
 public:
  bool MayStep() override { return true; }
};

}  // namespace

void LiveSampleOutput::Refill() {
  BeginRefill_();
  bool wasAnnounced = false;
  {
    // A stop that is being announced has been by now.
    exc::ScopeLock lock(stepLock_);
    wasAnnounced = TakeBackAnnouncement_();
    RefillRing_();
  }
  EndRefill_();
  // The stop that was announced lies in what was dropped.
  if (wasAnnounced) player_.PauseAndClearApproachingStop();
}

void LiveSampleOutput::BeginRefill_() {
  exc::ScopeLock lock(*this);
  idle_ = false;
  ++refills_;
  CloseFeed_(fadeFrames_);
  if (!OnRenderThread_()) WaitUntilClosed_(lock);
}

// What somebody has started meanwhile, although it was about to be refilled, plays from there: the player
// takes it for playing.
void LiveSampleOutput::EndRefill_() {
  exc::ScopeLock lock(*this);
  --refills_;
  renderWakes_.WakeAll();
}

bool LiveSampleOutput::TakeBackAnnouncement_() {
  exc::ScopeLock lock(*this);
  return std::exchange(stopIsAnnounced_, false);
}

void LiveSampleOutput::RefillRing_() {
  ForgetEnding_();
  const std::uint64_t position = ring_.GetWritePosition();
  switched_ = false;
  step_.Reset();
  elapsed_.Restart(position);
  contentStart_ = position;
  feed_.SetRefill(position);
  feed_.DropBefore(position);
  // Whoever refills has finished moving the position, so that a seek flag of its own does not count.
  OpenGate gate;
  while (NeedsFrames_() && StepIntoRing_(gate) == StepOutcome::Frames) {
  }
}

void LiveSampleOutput::Start() {
  exc::ScopeLock lock(*this);
  if (exits_) return;
  idle_ = false;
  if (!OnRenderThread_()) {
    startedWhileTold_ = telling_ == Telling::Stopped;
    // In the order in which they were asked for: the stop first, until it is told.
    startsAfterStop_ = stopRequested_ || startedWhileTold_;
    if (startsAfterStop_) return;
  }
  state_ = State::Running;
  renderWakes_.WakeAll();
}

void LiveSampleOutput::Pause() {
  exc::ScopeLock lock(*this);
  startsAfterStop_ = false;
  if (state_ != State::Running) return;
  state_ = State::Paused;
  CloseFeed_(fadeFrames_);
  if (!OnRenderThread_()) WaitUntilClosed_(lock);
}

bool LiveSampleOutput::Stop(bool wait) {
  return StopAndWait_(wait, fadeFrames_);
}

bool LiveSampleOutput::StopAndWait_(bool wait, std::size_t fadeFrames) {
  exc::ScopeLock lock(*this);
  if (exits_) return true;
  const bool isTakenBack = std::exchange(startsAfterStop_, false) && telling_ == Telling::Stopped;
  // A start that is under way is stopped when it has come. The player takes itself for playing since one that
  // is taken back.
  if (state_ != State::Stopped || telling_ == Telling::Play || isTakenBack) RequestStop_(fadeFrames);
  if (!wait || OnRenderThread_()) return true;
  Patience patience(clock_());
  while (stopRequested_ || telling_ != Telling::Nothing) {
    // A call to the player may take as long as it takes; the device's time begins when it has returned.
    if (inPlayer_) patience.BeginAnew();
    if (!patience.IsLeftAt(clock_())) return false;
    changed_.WaitFor(lock, kMillisecond);
  }
  return true;
}

void LiveSampleOutput::RequestStop_(std::size_t fadeFrames) {
  stopRequested_ = true;
  stopFadeFrames_ = fadeFrames;
  renderWakes_.WakeAll();
}

bool LiveSampleOutput::SwitchContent(const AudioSampleContent& content, std::string* errorText) {
  if (!FormatFits(content, device_->GetRateHz(), device_->GetChannelCount(), errorText)) return false;
  if (!inAttacca_) switched_ = true;
  return true;
}

void LiveSampleOutput::Idle() {
  {
    exc::ScopeLock lock(*this);
    idle_ = true;
  }
  if (OnRenderThread_()) return;
  // Whoever holds this is in the middle of a step.
  exc::ScopeLock lock(stepLock_);
}

void LiveSampleOutput::PrepareForExit() {
  StopAndWait_(true, FramesOf(kExitFadeMs, device_->GetRateHz()));
  if (OnRenderThread_()) return;
  JoinThread_();
  device_->Stop();
}

void LiveSampleOutput::OpenUnlessMoved_() {
  if (LookForMove_()) return;
  exc::ScopeLock lock(*this);
  if (state_ == State::Running && !stopRequested_ && refills_ == 0) OpenFeed_();
}

void LiveSampleOutput::OpenFeed_() {
  // Asked again at the next look.
  if (LiveOutputsAreHeld()) return;
  feed_.Open();
  feedOpen_ = true;
}

void LiveSampleOutput::CloseFeed_(std::size_t fadeFrames) {
  if (feedOpen_) feed_.Close(fadeFrames);
  feedOpen_ = false;
}

void LiveSampleOutput::WaitUntilClosed_(exc::ScopeLock& lock) {
  Patience patience(clock_());
  while (!feed_.IsClosed() && patience.IsLeftAt(clock_())) changed_.WaitFor(lock, kMillisecond / 2);
}

}  // namespace tesk_audio

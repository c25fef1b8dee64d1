// One render step of LiveSampleOutput, and what follows the last frame.
#include <exception>
#include <utility>

#include "exc/console/thread_safe_ostream.h"
#include "exc/lock/scope_lock.h"
#include "reference_suite/audio/output/go_on_attacca.h"
#include "reference_suite/audio/output/live_sample_output.h"
#include "reference_suite/audio/output/monotonic_now.h"
#include "reference_suite/audio/text/keep_words.h"
#include "suite/core/tesk_log_exception.h"

namespace tesk_audio {

namespace {

const char* const kSourcePath = "reference_suite/audio/output";

// Whether there is memory for the words or not; a buffer that finds none in the end ends the program.
void SayWhyItStops(const std::string& failure) noexcept {
  TeskLogException(failure.c_str(), kSourcePath, __LINE__);
  try {
    exc::thread_safe_cout << "WARNING: playback stops: " + failure + "\n";
  } catch (const std::exception&) {
    // The log has it, or there was no memory for that either.
  }
}

}  // namespace

void LiveSampleOutput::StepWhileRunning_() {
  exc::ScopeLock lock(stepLock_);
  const std::uint64_t before = ring_.GetWritePosition();
  const long long start = MonotonicNow();
  StepIntoRing_(*this);
  const auto frames = static_cast<double>(ring_.GetWritePosition() - before);
  if (frames == 0.0) return;
  load_.Add(static_cast<double>(MonotonicNow() - start) * 1e-9 * device_->GetRateHz() / frames);
}

StepOutcome LiveSampleOutput::StepIntoRing_(StepGate& gate) {
  try {
    const StepResult result = step_.Run(gate);
    // What was rendered before the seek gives way to what was rendered after it, and has begun already.
    if (result.moved) DropRing_();
    if (result.outcome == StepOutcome::Frames) {
      elapsed_.Add(result.deviceFrames, result.frames);
      ring_.Write(step_.Frames(), result.deviceFrames);
      MeterPeaks_(step_.Frames(), result.deviceFrames);
    }
    if (result.outcome == StepOutcome::Caesura) SetEnding_(Ending::Caesura);
    if (result.outcome == StepOutcome::End) SetEnding_(Ending::SongEnd);
    return result.outcome;
  } catch (const std::exception& error) {
    {
      exc::ScopeLock lock(*this);
      KeepWords(&failure_, error);
    }
    SetEnding_(Ending::Failure);
    return StepOutcome::End;
  }
}

void LiveSampleOutput::DropRing_() {
  const std::uint64_t position = ring_.GetWritePosition();
  elapsed_.CountAll();
  contentStart_ = position;
  feed_.DropBefore(position);
}

void LiveSampleOutput::SetEnding_(Ending ending) {
  exc::ScopeLock lock(*this);
  ending_ = ending;
  endPosition_ = ring_.GetWritePosition();
  // Before it is known that nothing follows, the device must not close: an attacca goes on without a gap.
  if (ending != Ending::SongEnd) feed_.EndAt(endPosition_);
}

void LiveSampleOutput::ForgetEnding_() {
  exc::ScopeLock lock(*this);
  ending_ = Ending::None;
  feed_.ClearEnd();
}

void LiveSampleOutput::AskAttacca_() {
  inAttacca_ = true;
  const bool goesOn = GoOnAttacca(player_);
  inAttacca_ = false;
  if (goesOn) {
    {
      exc::ScopeLock lock(stepLock_);
      step_.ForgetPosition();
    }
    ForgetEnding_();
    return;
  }
  exc::ScopeLock lock(*this);
  if (ending_ != Ending::SongEnd) return;
  ending_ = Ending::Stop;
  feed_.EndAt(endPosition_);
}

// Whoever refills meanwhile takes the announcement back when it has been made.
void LiveSampleOutput::AnnounceStop_() {
  exc::ScopeLock step(stepLock_);
  {
    exc::ScopeLock lock(*this);
    if (ending_ != Ending::Caesura) return;
    stopIsAnnounced_ = true;
  }
  player_.NotifyApproachingStop();
}

// What is paused or stopped meanwhile stays so, and is looked at again when it plays on.
bool LiveSampleOutput::LookForMove_() {
  bool wasAnnounced = false;
  {
    exc::ScopeLock lock(stepLock_);
    if (!switched_ && !step_.PositionHasMoved()) return false;
    if (!IsToPlay_()) return true;
    switched_ = false;
    step_.Reset();
    DropRing_();
    ForgetEnding_();
    wasAnnounced = TakeBackAnnouncement_();
  }
  if (wasAnnounced) {
    // The stop that the player holds its display for does not come: only this lets it go on.
    player_.PauseAndClearApproachingStop();
    if (IsToPlay_()) player_.Play();
  }
  return true;
}

bool LiveSampleOutput::IsToPlay_() {
  exc::ScopeLock lock(*this);
  return state_ == State::Running && !stopRequested_;
}

void LiveSampleOutput::FinishStop_() {
  {
    exc::ScopeLock lock(*this);
    stopRequested_ = false;
    state_ = State::Stopped;
    telling_ = Telling::Stopped;
  }
  NotifyStopped_();
}

void LiveSampleOutput::FinishEnding_() {
  // A seek in the last moment: what ends here is no longer what was meant to follow.
  if (LookForMove_()) return;
  std::string failure;
  Ending ending = Ending::None;
  {
    exc::ScopeLock lock(*this);
    // A command that came in between goes first; what ends here ends then.
    if (state_ != State::Running || stopRequested_) return;
    ending = ending_;
    failure.swap(failure_);
    ending_ = Ending::None;
    feed_.ClearEnd();
    feedOpen_ = false;
    stopIsAnnounced_ = false;
    state_ = ending == Ending::Caesura ? State::Paused : State::Stopped;
    if (ending != Ending::Caesura) telling_ = Telling::Stopped;
  }
  if (ending == Ending::Caesura) {
    StopAtCaesura_();
    return;
  }
  if (ending == Ending::Failure) SayWhyItStops(failure);
  NotifyStopped_();
}

void LiveSampleOutput::StopAtCaesura_() {
  try {
    player_.PauseAndClearApproachingStop();
    if (player_.OnCaesuraStop()) player_.Play();
  } catch (const std::exception& error) {
    // Half of a caesura is no state to go on from: the player is told that the music has stopped.
    TeskLogException(error.what(), kSourcePath, __LINE__);
    {
      exc::ScopeLock lock(*this);
      state_ = State::Stopped;
      stopRequested_ = false;
      telling_ = Telling::Stopped;
    }
    NotifyStopped_();
  }
}

void LiveSampleOutput::NotifyStopped_() {
  try {
    player_.NotifyOutputHasStopped();
  } catch (const std::exception& error) {
    TeskLogException(error.what(), kSourcePath, __LINE__);
  }
  bool starts = false;
  {
    exc::ScopeLock lock(*this);
    starts = startsAfterStop_;
    telling_ = starts ? Telling::Play : Telling::Nothing;
  }
  if (!starts) return;
  // Through the player, which takes itself for stopped now.
  StartAgain_();
  exc::ScopeLock lock(*this);
  telling_ = Telling::Nothing;
  // Unless it has been told before it was started, and takes itself for playing already.
  const bool isLeftToUs = startedWhileTold_ && state_ == State::Stopped;
  if (std::exchange(startsAfterStop_, false) && isLeftToUs) state_ = State::Running;
}

void LiveSampleOutput::StartAgain_() {
  try {
    player_.Play();
  } catch (const std::exception& error) {
    TeskLogException(error.what(), kSourcePath, __LINE__);
  }
}

}  // namespace tesk_audio

// What becomes of playback when the device of LiveSampleOutput fails.
#include "exc/lock/scope_lock.h"
#include "reference_suite/audio/output/live_sample_output.h"

namespace tesk_audio {

// The frames in the ring stay, whatever the policy: they are what comes next, and with them stay the passes
// that were counted and the jumps that were taken when they were rendered.
bool LiveSampleOutput::OnDeviceLost() {
  if (lossPolicy_ == DeviceLossPolicy::RunOn) return true;
  exc::ScopeLock lock(*this);
  if (state_ == State::Stopped) return false;
  if (lossPolicy_ == DeviceLossPolicy::Hold) {
    state_ = State::Paused;
    // The gate of the device is closed, and that of the clock not open yet.
    feed_.TakeBackUnheard();
    renderWakes_.WakeAll();
  } else {
    startsAfterStop_ = false;
    RequestStop_(0);
  }
  // Also when a fade-out is under way: nobody hears it, and it would pass over frames.
  feed_.Close(0);
  feedOpen_ = false;
  return false;
}

}  // namespace tesk_audio

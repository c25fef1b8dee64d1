#include "reference_suite/audio/output/live_sample_output.h"

#include <algorithm>
#include <utility>

#include "exc/lock/scope_lock.h"
#include "reference_suite/audio/output/frames_of.h"

namespace tesk_audio {

LiveSampleOutput::LiveSampleOutput(AudioPlayerOutputInterface& player, std::unique_ptr<Device> device,
                                   const OutputSettings& settings, Clock clock)
    : exc::Lockable("AudioSampleOutput"),
      player_(player),
      clock_(std::move(clock)),
      lossPolicy_(settings.onDeviceLoss),
      device_(std::move(device)),
      stepLock_("AudioSampleOutput_Step"),
      step_(player, device_->GetChannelCount(), device_->GetRateHz(), settings.crossfadeMs, settings.stretch),
      quantum_(step_.GetQuantum()),
      mostFrames_(step_.GetMostFrames()),
      // Less than that and the render thread, which looks a few times per read, could come too late.
      aheadFrames_(std::max(FramesOf(settings.aheadMs, device_->GetRateHz()),
                            std::min<std::size_t>(device_->GetPeriodFrames(), quantum_) + quantum_)),
      fadeFrames_(FramesOf(settings.fadeMs, device_->GetRateHz())),
      // Room for what is rendered ahead twice over: while the device has not yet passed over what was
      // dropped, the same amount is rendered anew.
      ring_(4 * (std::max<std::size_t>(aheadFrames_, kMostPeriodFrames + quantum_) + mostFrames_),
            device_->GetChannelCount(), kMostTakenBackFrames),
      feed_(ring_, device_->GetChannelCount(), fadeFrames_),
      // As many reads as the ring can hold at four times the tempo, and some that cues cut short.
      elapsed_(16 * (ring_.GetFree() + kMostTakenBackFrames) / quantum_ + 256),
      peaks_(device_->GetChannelCount()),
      seekFlag_("AudioSampleOutput_Seek") {
  device_->SetLossListener(this);
  device_->Start(feed_);
  try {
    StartThread_();
  } catch (...) {
    device_->Stop();
    throw;
  }
  RegisterLiveOutput(this);
}

LiveSampleOutput::~LiveSampleOutput() {
  news_.reset();
  UnregisterLiveOutput(this);
  {
    exc::ScopeLock lock(*this);
    // Or the render thread would open it again.
    if (state_ == State::Running) state_ = State::Paused;
    CloseFeed_(FramesOf(kExitFadeMs, device_->GetRateHz()));
    WaitUntilClosed_(lock);
  }
  JoinThread_();
  device_->Stop();
}

long long LiveSampleOutput::GetElapsedSampleCount() {
  return elapsed_.GetCount(feed_.GetAudiblePosition());
}

bool LiveSampleOutput::GetOutputIsRunning() {
  exc::ScopeLock lock(*this);
  return state_ == State::Running;
}

std::size_t LiveSampleOutput::GetRingFill_() const {
  const std::uint64_t start = std::max<std::uint64_t>(contentStart_, ring_.GetReadPosition());
  return static_cast<std::size_t>(ring_.GetWritePosition() - start);
}

void LiveSampleOutput::NoteWhatWasTaken_() {
  const std::uint64_t position = ring_.GetReadPosition();
  if (position == takenPosition_) return;
  takenPosition_ = position;
  takenAt_ = clock_();
}

// What is rendered cannot be changed any more by a performer's go, so a frame is rendered when it is due to
// sound in less than a period and what is rendered ahead. A device with a long period takes more than that at
// once: its next period is rendered while the one that it has taken sounds.
std::size_t LiveSampleOutput::GetWantedFill_() const {
  // Another device, or the same server after a change, can have another period.
  const std::size_t most = std::min(device_->GetPeriodFrames(), kMostPeriodFrames) + quantum_;
  const std::size_t waited = std::min<std::size_t>(feed_.GetWaitedFrames(), 2 * kMostPeriodFrames);
  // The first period after a start is taken at once.
  const bool isTakenAtOnce = feed_.IsClosed() || waited > 0;
  if (aheadFrames_ >= most || isTakenAtOnce) return std::max({aheadFrames_, most, waited});
  const double sounding = static_cast<double>(clock_() - takenAt_) * 1e-9 * device_->GetRateHz();
  return std::min(most, aheadFrames_ + static_cast<std::size_t>(std::max(0.0, sounding)));
}

}  // namespace tesk_audio

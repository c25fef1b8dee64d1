// What JackDevice does on the server's process thread.
#include <algorithm>

#include "reference_suite/audio/device/device_clock.h"
#include "reference_suite/audio/device/jack_device.h"
#include "reference_suite/audio/device/uncancelled.h"

namespace tesk_audio {

namespace {

// Without a clock a moment is waited for frames; more than that and something else is wrong, which the server
// must not be held up for.
constexpr int kWaitSteps = 40'000;
constexpr long long kWaitNanoseconds = 50'000;

}  // namespace

int JackDevice::ProcessCallback_(jack_nframes_t frames, void* self) {
  RunUncancelled([&]() noexcept { static_cast<JackDevice*>(self)->Process_(frames); });
  return 0;
}

void JackDevice::Process_(jack_nframes_t frames) noexcept {
  const std::size_t slice = frames_.size() / channels_;
  for (unsigned channel = 0; channel < channels_; ++channel) {
    buffers_[channel] = static_cast<float*>(::jack_port_get_buffer(ports_[channel], frames));
  }
  // Of another rate, for instance: nothing more is to be heard from here.
  if (failed_) {
    for (float* const buffer : buffers_) std::fill_n(buffer, frames, 0.0F);
    return;
  }
  for (std::size_t done = 0; done < frames;) {
    const std::size_t count = std::min<std::size_t>(slice, frames - done);
    if (freewheels_) WaitUntilReady_(count);
    callback_->Process(frames_.data(), count);
    for (unsigned channel = 0; channel < channels_; ++channel) {
      float* const out = buffers_[channel] + done;
      const float* in = frames_.data() + channel;
      for (std::size_t i = 0; i < count; ++i, in += channels_) out[i] = *in;
    }
    done += count;
  }
}

void JackDevice::WaitUntilReady_(std::size_t frames) const {
  for (int i = 0; i < kWaitSteps && !stops_ && !callback_->IsReady(frames); ++i) SleepFor(kWaitNanoseconds);
}

}  // namespace tesk_audio

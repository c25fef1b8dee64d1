// What the JACK server tells JackDevice. Nothing here calls the server back.
#include <algorithm>
#include <mutex>
#include <new>
#include <string>

#include "reference_suite/audio/device/jack_device.h"
#include "reference_suite/audio/device/uncancelled.h"
#include "reference_suite/audio/text/keep_words.h"

namespace tesk_audio {

namespace {

JackDevice& DeviceOf(void* self) {
  return *static_cast<JackDevice*>(self);
}

}  // namespace

void JackDevice::SetCallbacks_() {
  jack_client_t* const client = client_->Get();
  ::jack_set_process_callback(client, &JackDevice::ProcessCallback_, this);
  ::jack_on_info_shutdown(
      client, [](jack_status_t, const char* reason, void* self) { DeviceOf(self).Fail_(reason); }, this);
  ::jack_set_xrun_callback(
      client,
      [](void* self) {
        ++DeviceOf(self).xruns_;
        return 0;
      },
      this);
  ::jack_set_freewheel_callback(
      client, [](int starting, void* self) { DeviceOf(self).freewheels_ = starting != 0; }, this);
  ::jack_set_port_registration_callback(
      client,
      [](jack_port_id_t port, int registered, void* self) {
        if (registered != 0) DeviceOf(self).NotePort_(port);
      },
      this);
  ::jack_set_buffer_size_callback(
      client,
      [](jack_nframes_t frames, void* self) {
        DeviceOf(self).period_ = frames;
        return 0;
      },
      this);
  ::jack_set_sample_rate_callback(
      client,
      [](jack_nframes_t rateHz, void* self) {
        DeviceOf(self).NoteRate_(rateHz);
        return 0;
      },
      this);
  ::jack_set_latency_callback(
      client,
      [](jack_latency_callback_mode_t mode, void* self) {
        if (mode == JackPlaybackLatency) DeviceOf(self).UpdateLatency_();
      },
      this);
}

// Of the port that is heard last. Unknown as long as nothing is connected.
void JackDevice::UpdateLatency_() {
  unsigned latency = 0;
  for (jack_port_t* const port : ports_) {
    jack_latency_range_t range{};
    ::jack_port_get_latency_range(port, JackPlaybackLatency, &range);
    latency = std::max(latency, range.max);
  }
  latency_ = latency;
}

// A server may go on at another rate without a break. What is made for the old one would have the wrong
// pitch.
void JackDevice::NoteRate_(jack_nframes_t rateHz) {
  if (static_cast<double>(rateHz) == rateHz_) return;
  Fail_(("its rate has changed to " + std::to_string(rateHz) + " Hz").c_str());
}

void JackDevice::NotePort_(jack_port_id_t port) {
  RunUncancelled([&]() noexcept {
    try {
      const std::lock_guard lock(mutex_);
      newPorts_.push_back(port);
    } catch (const std::bad_alloc&) {
      // A program that is started again between two looks is not noticed then.
    }
  });
}

void JackDevice::Fail_(const char* reason) {
  RunUncancelled([&]() noexcept {
    {
      const std::lock_guard lock(mutex_);
      const bool isGiven = reason != nullptr && *reason != '\0';
      KeepWords(&failure_, isGiven ? reason : "the server has closed the connection");
    }
    failed_ = true;
  });
}

}  // namespace tesk_audio

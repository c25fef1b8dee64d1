#include "reference_suite/audio/device/desktop_device.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "reference_suite/audio/device/alsa_cards.h"
#include "reference_suite/audio/device/device_clock.h"
#include "reference_suite/audio/device/pulse_audio.h"
#include "reference_suite/audio/device/start_thread.h"
#include "reference_suite/audio/output/monotonic_now.h"
#include "suite/audio/errors.h"
#include "suite/utility/thread_names.h"

namespace tesk_audio {

namespace {

constexpr std::size_t kSliceFrames = kMostPeriodFrames;
constexpr long long kNewsNanoseconds = 50'000'000;
constexpr unsigned kRound = 32;
// Clocks differ: what it seems to hold because its own is faster is forgotten.
constexpr double kForgetting = 0.999;

// Null when neither answers.
SoundIo* Connect() {
  SoundIo* const soundio = ::soundio_create();
  if (soundio == nullptr) return nullptr;
  soundio->app_name = "orbel";
  // What the library does by itself would end the program, as would asking it for devices afterwards.
  bool isLost = false;
  soundio->userdata = &isLost;
  soundio->on_backend_disconnect = [](SoundIo* lost, int) { *static_cast<bool*>(lost->userdata) = true; };
  const bool pulse = PulseAudioRuns() && ::soundio_connect_backend(soundio, SoundIoBackendPulseAudio) == 0;
  if (pulse || (AlsaHasCards() && ::soundio_connect_backend(soundio, SoundIoBackendAlsa) == 0)) {
    ::soundio_flush_events(soundio);
    soundio->on_backend_disconnect = [](SoundIo*, int) {};
    soundio->userdata = nullptr;
    if (!isLost) return soundio;
  }
  ::soundio_destroy(soundio);
  return nullptr;
}

// PulseAudio puts it where an output was while there is none: it takes sound, and nobody hears it.
bool IsDummy(const SoundIoDevice& device) {
  return std::string(device.id) == "auto_null";
}

// The one of that name, or the usual one; null when there is none that can be heard.
SoundIoDevice* FindOutput(SoundIo* soundio, const std::string& name) {
  const int count = ::soundio_output_device_count(soundio);
  for (int i = 0; !name.empty() && i < count; ++i) {
    SoundIoDevice* const device = ::soundio_get_output_device(soundio, i);
    if (name == device->name || name == device->id) return device;
    ::soundio_device_unref(device);
  }
  const int usual = ::soundio_default_output_device_index(soundio);
  if (!name.empty() || usual < 0) return nullptr;
  SoundIoDevice* const device = ::soundio_get_output_device(soundio, usual);
  if (!IsDummy(*device)) return device;
  ::soundio_device_unref(device);
  return nullptr;
}

constexpr char kNoDesktop[] =
    "Neither PulseAudio nor ALSA answers. Log in to a desktop with sound, plug a sound card in, or choose "
    "another output.";
constexpr char kNoOutput[] =
    "The sound of the desktop has no output. Plug a loudspeaker or a sound card in, or choose another "
    "output.";

// Asked for in case of a JACK server.
constexpr char kNoPorts[] =
    "The desktop has no ports, so nothing is connected as --connect asks. Start a JACK server and play "
    "again, or leave --connect out.";

std::string Missing(const std::string& name) {
  if (name.empty()) return kNoOutput;
  return "There is no output \"" + name + "\" on this desktop; \"orbel devices\" lists what there is.";
}

std::string Gone(const std::string& name) {
  return "The output \"" + name + "\" is not there any more. Plug it in again, or choose another output.";
}

std::string Dummy(const std::string& name) {
  return "Nobody hears \"" + name +
         "\": it stands in while there is no output. Plug a loudspeaker or a sound card in, or choose "
         "another "
         "output.";
}

DeviceInfo Unanswered(const std::string& problem) {
  DeviceInfo info;
  info.kind = DeviceKind::Desktop;
  info.problem = problem;
  return info;
}

}  // namespace

DesktopDevice::DesktopDevice(const OutputSettings& settings, double rateHz, unsigned channels,
                             std::shared_ptr<Chosen> chosen)
    : channels_(channels),
      wishedFrames_(settings.periodFrames),
      isToConnect_(!settings.connect.empty()),
      chosen_(std::move(chosen)),
      outputs_(settings.outputs),
      soundio_(Connect()),
      frames_(kSliceFrames * channels),
      period_(settings.periodFrames) {
  if (soundio_ == nullptr) throw TESKAudioError(kNoDesktop);
  soundio_->userdata = this;
  soundio_->on_backend_disconnect = [](SoundIo* soundio, int) {
    static_cast<DesktopDevice*>(soundio->userdata)->failed_ = true;
  };
  FindChosenOutput_(settings.deviceName);
  if (outputs_.empty()) {
    outputs_.resize(std::max(2U, channels));
    std::iota(outputs_.begin(), outputs_.end(), 1U);
  }
  OpenStream_(rateHz);
  const std::lock_guard lock(chosen_->mutex);
  chosen_->id = device_->id;
  chosen_->name = device_->name;
}

void DesktopDevice::FindChosenOutput_(const std::string& wanted) {
  const std::lock_guard lock(chosen_->mutex);
  device_.reset(FindOutput(soundio_.get(), chosen_->id.empty() ? wanted : chosen_->id));
  if (device_ != nullptr) return;
  throw TESKAudioError(chosen_->id.empty() ? Missing(wanted) : Gone(chosen_->name));
}

DesktopDevice::~DesktopDevice() {
  Stop();
}

void DesktopDevice::OpenStream_(double wantedHz) {
  stream_.reset(::soundio_outstream_create(device_.get()));
  stream_->userdata = this;
  stream_->name = "orbel";
  stream_->format = SoundIoFormatFloat32NE;
  stream_->sample_rate =
      ::soundio_device_nearest_sample_rate(device_.get(), static_cast<int>(std::lround(wantedHz)));
  const unsigned highest = *std::max_element(outputs_.begin(), outputs_.end());
  const SoundIoChannelLayout* const layout =
      ::soundio_channel_layout_get_default(static_cast<int>(std::max(2U, highest)));
  if (layout != nullptr && ::soundio_device_supports_layout(device_.get(), layout)) stream_->layout = *layout;
  stream_->software_latency = 2.0 * wishedFrames_ / stream_->sample_rate;
  stream_->write_callback = [](SoundIoOutStream* stream, int, int most) {
    static_cast<DesktopDevice*>(stream->userdata)->Write_(most);
  };
  stream_->underflow_callback = [](SoundIoOutStream* stream) {
    ++static_cast<DesktopDevice*>(stream->userdata)->xruns_;
  };
  stream_->error_callback = [](SoundIoOutStream* stream, int) {
    static_cast<DesktopDevice*>(stream->userdata)->failed_ = true;
  };
  const int error = ::soundio_outstream_open(stream_.get());
  if (error != 0) {
    throw TESKAudioError("The output \"" + std::string(device_->name) + "\" cannot be opened: " +
                         ::soundio_strerror(error) + ". Close other programs, or choose another output.");
  }
  rateHz_ = stream_->sample_rate;
  // More than it has are mixed into those.
  const int has = device_->current_layout.channel_count;
  outputCount_ = static_cast<unsigned>(has > 0 ? has : stream_->layout.channel_count);
}

std::string DesktopDevice::GetDescription() const {
  return std::string(::soundio_backend_name(soundio_->current_backend)) + " \"" + device_->name + "\", " +
         std::to_string(std::lround(rateHz_)) + " Hz";
}

std::string DesktopDevice::WhyUnheard() const {
  return IsDummy(*device_) ? Dummy(device_->name) : "";
}

std::string DesktopDevice::WhatIsMissing() const {
  std::string missing = isToConnect_ ? kNoPorts : "";
  const auto named = static_cast<unsigned>(outputs_.size());
  if (named >= channels_) return missing;
  if (isToConnect_) missing += " ";
  const std::string first = std::to_string(named + 1);
  const bool one = named + 1 == channels_;
  return missing + "Nobody hears " +
         (one ? "channel " + first : "channels " + first + " to " + std::to_string(channels_)) +
         ": --channels names no output for " + (one ? "it" : "them") + ". Name one for each channel.";
}

bool DesktopDevice::HasBegunInVain_() const {
  const double waited = static_cast<double>(MonotonicNow() - startedAt_) * 1e-9;
  return startedAt_ != 0 && !takesSound_ && waited > GetPatienceSeconds();
}

std::string DesktopDevice::GetFailure() const {
  if (isUnplugged_) return "it has been unplugged";
  return failed_ ? "the sound system has ended the stream" : "it does not begin to take sound";
}

void DesktopDevice::Start(DeviceCallback& callback) {
  if (runs_) return;
  callback_ = &callback;
  stops_ = false;
  if (stream_ == nullptr) OpenStream_(rateHz_);
  hasAsked_ = takesSound_ = false;
  startedAt_ = MonotonicNow();
  const int error = ::soundio_outstream_start(stream_.get());
  if (error != 0) {
    throw TESKAudioError("The output \"" + std::string(device_->name) +
                         "\" does not start: " + ::soundio_strerror(error) + ". Choose another output.");
  }
  try {
    news_ = StartThread(&DesktopDevice::NewsBody_, this, "The desktop output");
  } catch (...) {
    CloseStream_();
    throw;
  }
  runs_ = true;
}

void DesktopDevice::Stop() {
  if (!runs_) return;
  stops_ = true;
  ::pthread_join(news_, nullptr);
  CloseStream_();
  runs_ = false;
}

// Until it is closed a call may be under way, which uses the pointer.
void DesktopDevice::CloseStream_() {
  ::soundio_outstream_destroy(stream_.get());
  static_cast<void>(stream_.release());
}

void* DesktopDevice::NewsBody_(void* self) {
  exc::thread_names.SetNameOfCurrentThread("DesktopNews");
  auto& device = *static_cast<DesktopDevice*>(self);
  while (!device.stops_) {
    ::soundio_flush_events(device.soundio_.get());
    device.FailWhenUnplugged_();
    SleepFor(kNewsNanoseconds);
  }
  return nullptr;
}

// A server may go on to take the stream, and let another output have it.
void DesktopDevice::FailWhenUnplugged_() {
  const std::unique_ptr<SoundIoDevice, Closer> listed(FindOutput(soundio_.get(), device_->id));
  if (listed != nullptr || failed_) return;
  isUnplugged_ = true;
  failed_ = true;
}

void DesktopDevice::Write_(int mostFrames) {
  if (hasAsked_.exchange(true)) takesSound_ = true;
  int left = mostFrames;
  while (left > 0 && WriteSome_(&left)) {
  }
  NotePace_(static_cast<unsigned>(std::max(0, mostFrames - left)));
  double seconds = 0.0;
  if (::soundio_outstream_get_latency(stream_.get(), &seconds) == 0) {
    latency_ = static_cast<unsigned>(std::lround(std::max(0.0, seconds) * stream_->sample_rate));
  }
}

// False when no more is taken now: a stream that has run dry goes on, any other error is its end.
bool DesktopDevice::WriteSome_(int* left) {
  SoundIoChannelArea* areas = nullptr;
  int count = std::min(*left, static_cast<int>(kSliceFrames));
  int error = ::soundio_outstream_begin_write(stream_.get(), &areas, &count);
  if (error == 0) {
    if (count <= 0) return false;
    Fill_(areas, count);
    *left -= count;
    error = ::soundio_outstream_end_write(stream_.get());
  }
  if (error == SoundIoErrorUnderflow) {
    ++xruns_;
  } else if (error != 0) {
    failed_ = true;
  }
  return error == 0;
}

// A buffer that is filled up, at the start or after it has run dry, is no period: in its pace a device takes
// what has passed since it took something last.
void DesktopDevice::NotePace_(unsigned taken) {
  const long long now = MonotonicNow();
  const double passed = lastWrite_ == 0 ? 0.0 : static_cast<double>(now - lastWrite_) * 1e-9;
  lastWrite_ = now;
  const double rate = stream_->sample_rate;
  held_ = std::min(kMostHeldSeconds, std::max(0.0, held_ - passed) * kForgetting + taken / rate);
  const auto due = static_cast<unsigned>(std::min(2.0 * kMostHeldSeconds, passed) * rate);
  if (calls_ == kRound) {
    mostBefore_ = most_;
    most_ = calls_ = 0;
    hasPace_ = hasPace_ || mostBefore_ > 0;
  }
  ++calls_;
  most_ = std::max(most_, std::min(taken, wishedFrames_ + due));
  period_ = std::max(most_, mostBefore_);
}

void DesktopDevice::Fill_(SoundIoChannelArea* areas, int frames) {
  const int outputs = stream_->layout.channel_count;
  for (int done = 0; done < frames;) {
    const int count = std::min(frames - done, static_cast<int>(kSliceFrames));
    callback_->Process(frames_.data(), static_cast<std::size_t>(count));
    for (int output = 0; output < outputs; ++output) {
      const auto heard = std::find(outputs_.begin(), outputs_.end(), static_cast<unsigned>(output + 1));
      const std::size_t channel = static_cast<std::size_t>(heard - outputs_.begin()) % channels_;
      for (int i = 0; i < count; ++i) {
        const float sample =
            heard == outputs_.end() ? 0.0F : frames_[static_cast<std::size_t>(i) * channels_ + channel];
        *reinterpret_cast<float*>(areas[output].ptr + areas[output].step * (done + i)) =
            std::clamp(sample, -1.0F, 1.0F);
      }
    }
    done += count;
  }
}

std::vector<DeviceInfo> LookAtDesktop() {
  std::vector<DeviceInfo> found;
  const std::unique_ptr<SoundIo, void (*)(SoundIo*)> soundio(Connect(), &::soundio_destroy);
  if (soundio == nullptr) return {Unanswered(kNoDesktop)};
  const int count = ::soundio_output_device_count(soundio.get());
  for (int i = 0; i < count; ++i) {
    SoundIoDevice* const device = ::soundio_get_output_device(soundio.get(), i);
    DeviceInfo info;
    info.kind = DeviceKind::Desktop;
    info.name = device->name;
    info.answers = !IsDummy(*device);
    if (!info.answers) info.problem = Dummy(info.name);
    info.rateHz = device->sample_rate_current;
    info.outputs = static_cast<unsigned>(device->current_layout.channel_count);
    found.insert(i == ::soundio_default_output_device_index(soundio.get()) ? found.begin() : found.end(),
                 info);
    ::soundio_device_unref(device);
  }
  if (found.empty()) found.push_back(Unanswered(kNoOutput));
  return found;
}

}  // namespace tesk_audio

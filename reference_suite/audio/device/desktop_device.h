#pragma once

#include <pthread.h>
#include <soundio/soundio.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "reference_suite/audio/device/device.h"
#include "reference_suite/audio/device/list_devices.h"

namespace tesk_audio {

// An output of PulseAudio (and of what answers in its place) or of ALSA, for machines without JACK.
//
// Threads    the sound system's thread calls the callback; a thread of our own takes its news.
// Render     the callback's frames are spread over the outputs; nothing is allocated.
class DesktopDevice : public Device {
 public:
  // The output that was opened first. Opening may hang on one thread and succeed on another.
  struct Chosen {
    std::mutex mutex;
    std::string id;  // both guarded by it; empty: none yet
    std::string name;
  };
  // The output called so, or the usual one when the name is empty; at the rate wanted, or the nearest that it
  // has. Where one has been chosen, that one and no other: when it is unplugged the desktop's usual one is
  // another, in which nobody expects the show; and it fails as soon as that one is unplugged. Throws
  // TESKAudioError.
  DesktopDevice(const OutputSettings& settings, double rateHz, unsigned channels,
                std::shared_ptr<Chosen> chosen);
  ~DesktopDevice() override;
  DesktopDevice(const DesktopDevice&) = delete;
  DesktopDevice& operator=(const DesktopDevice&) = delete;

  double GetRateHz() const override { return rateHz_; }
  unsigned GetChannelCount() const override { return channels_; }
  // What it has taken at a time of late; at first what it was asked to.
  unsigned GetPeriodFrames() const override { return period_; }
  unsigned GetLatencyFrames() const override { return latency_; }
  std::string GetDescription() const override;
  unsigned GetOutputCount() const override { return outputCount_; }
  long long GetXrunCount() const override { return xruns_; }
  // A sound server that was idle asks for a little first, then for nothing during up to two seconds, or takes
  // as much at once.
  double GetPatienceSeconds() const override { return 0.5 + (hasPace_ ? held_.load() : kMostHeldSeconds); }
  // Until it asks a second time: the first call fills its buffer, and a server that was idle takes that when
  // it likes, or never, as one whose output is suspended.
  bool IsConnecting() const override { return startedAt_ != 0 && !takesSound_ && !HasFailed(); }
  bool HasFailed() const override { return failed_ || HasBegunInVain_(); }
  std::string GetFailure() const override;
  std::string WhyUnheard() const override;
  std::string WhatIsMissing() const override;
  void Start(DeviceCallback& callback) override;
  void Stop() override;

 private:
  struct Closer {
    void operator()(SoundIo* soundio) const { ::soundio_destroy(soundio); }
    void operator()(SoundIoDevice* device) const { ::soundio_device_unref(device); }
    void operator()(SoundIoOutStream* stream) const { ::soundio_outstream_destroy(stream); }
  };

  static constexpr double kMostHeldSeconds = 2.0;

  void FindChosenOutput_(const std::string& wanted);
  void OpenStream_(double wantedHz);
  void CloseStream_();
  void Write_(int mostFrames);
  bool WriteSome_(int* left);
  void Fill_(SoundIoChannelArea* areas, int frames);
  void NotePace_(unsigned taken);
  bool HasBegunInVain_() const;
  void FailWhenUnplugged_();
  static void* NewsBody_(void* self);

  const unsigned channels_;
  const unsigned wishedFrames_;  // a period
  const bool isToConnect_;       // to ports, which it has none of
  const std::shared_ptr<Chosen> chosen_;
  double rateHz_ = 0.0;
  unsigned outputCount_ = 0;
  std::vector<unsigned> outputs_;  // from 1
  std::unique_ptr<SoundIo, Closer> soundio_;
  std::unique_ptr<SoundIoDevice, Closer> device_;
  DeviceCallback* callback_ = nullptr;
  std::vector<float> frames_;
  std::atomic<unsigned> period_;
  std::atomic<double> held_{0.0};        // seconds that it has taken before their time
  std::atomic<bool> hasPace_{false};     // it has asked often enough
  std::atomic<bool> hasAsked_{false};    // for the first frames
  std::atomic<bool> takesSound_{false};  // and for more
  std::atomic<long long> startedAt_{0};
  std::atomic<unsigned> latency_{0};
  std::atomic<long long> xruns_{0};
  std::atomic<bool> isUnplugged_{false};  // why it has failed
  std::atomic<bool> failed_{false};
  std::atomic<bool> stops_{false};
  // The sound system's thread's.
  long long lastWrite_ = 0;  // 0: none yet
  unsigned calls_ = 0;       // of the round
  unsigned most_ = 0;        // frames at a time, in this round
  unsigned mostBefore_ = 0;  // and in the one before
  // The last, since its thread uses the others. Only closing ends its calls: none once the device has been
  // stopped.
  std::unique_ptr<SoundIoOutStream, Closer> stream_;
  pthread_t news_{};
  bool runs_ = false;
};

}  // namespace tesk_audio

// What LiveSampleOutput tells of how it is doing.
#include <algorithm>
#include <cmath>

#include "reference_suite/audio/output/live_sample_output.h"

namespace tesk_audio {

void LiveSampleOutput::MeterPeaks_(const float* frames, std::size_t count) {
  const std::size_t channels = peaks_.size();
  for (std::size_t channel = 0; channel < channels; ++channel) {
    float peak = peaks_[channel];
    const float before = peak;
    for (std::size_t i = 0; i < count; ++i) peak = std::max(peak, std::fabs(frames[i * channels + channel]));
    if (peak > before) peaks_[channel] = peak;
  }
}

OutputMeters LiveSampleOutput::ReadMeters() {
  const double millisecondsPerFrame = 1000.0 / device_->GetRateHz();
  OutputMeters meters;
  meters.device = device_->GetDescription();
  meters.outputs = device_->GetOutputCount();
  meters.periodFrames = device_->GetPeriodFrames();
  meters.recovering = device_->IsRecovering();
  meters.unheard = device_->WhyUnheard();
  for (auto& peak : peaks_) meters.peaks.push_back(peak.exchange(0.0F));
  meters.ringMs = static_cast<double>(GetRingFill_()) * millisecondsPerFrame;
  meters.latencyMs = device_->GetLatencyFrames() * millisecondsPerFrame;
  meters.loadMedian = load_.GetQuantile(0.5);
  meters.load999 = load_.GetQuantile(0.999);
  meters.loadLongest = load_.GetLongest();
  meters.underrunFrames = GetUnderrunFrames() + device_->GetSilentFrames();
  meters.xruns = device_->GetXrunCount();
  return meters;
}

}  // namespace tesk_audio

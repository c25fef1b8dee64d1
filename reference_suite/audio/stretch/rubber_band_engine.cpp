#include "reference_suite/audio/stretch/rubber_band_engine.h"

#include <algorithm>
#include <cmath>

#include "reference_suite/audio/stretch/attack_offset.h"

namespace tesk_audio {

namespace {

constexpr double kMostOfTheFaster = 2.0;

std::unique_ptr<RubberBand::RubberBandStretcher> Make(int engine, double rateHz, unsigned channels) {
  using Stretcher = RubberBand::RubberBandStretcher;
  const int options = engine | Stretcher::OptionProcessRealTime | Stretcher::OptionThreadingNever |
                      Stretcher::OptionPitchHighConsistency | Stretcher::OptionChannelsTogether;
  auto stretcher =
      std::make_unique<Stretcher>(static_cast<std::size_t>(std::lround(rateHz)), channels, options);
  stretcher->setMaxProcessSize(StretchEngine::kMostFrames);
  return stretcher;
}

}  // namespace

RubberBandEngine::RubberBandEngine(StretchQuality quality, double rateHz, unsigned channels)
    : finer_(Make(Stretcher::OptionEngineFiner, rateHz, channels)),
      stretcher_(finer_.get()),
      halfWindow_(static_cast<double>(stretcher_->getPreferredStartPad())),
      planes_(channels, std::vector<float>(kMostFrames)) {
  if (quality == StretchQuality::Faster) faster_ = Make(Stretcher::OptionEngineFaster, rateHz, channels);
  for (auto& plane : planes_) heads_.push_back(plane.data());
}

StretchQuality RubberBandEngine::QualityFor_(double scale) const {
  const bool isFaster = faster_ != nullptr && step_ * raised_ / scale <= kMostOfTheFaster;
  return isFaster ? StretchQuality::Faster : StretchQuality::Finer;
}

void RubberBandEngine::Begin(const StretchFactors& factors) {
  const double pitch = std::exp2(factors.semitones / 12.0);
  step_ = std::min(pitch, 1.0);
  raised_ = std::max(pitch, 1.0);
  const bool isFaster = QualityFor_(factors.scale) == StretchQuality::Faster;
  stretcher_ = isFaster ? faster_.get() : finer_.get();
  stretcher_->reset();
  SetScale(factors.scale);
  stretcher_->setPitchScale(raised_);
  halfWindow_ = static_cast<double>(stretcher_->getPreferredStartPad());
}

void RubberBandEngine::Process(const float* frames, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    for (float* head : heads_) head[i] = *frames++;
  }
  stretcher_->process(heads_.data(), count, false);
}

std::size_t RubberBandEngine::Retrieve(float* frames, std::size_t room) {
  const int available = stretcher_->available();
  if (available <= 0) return 0;
  const std::size_t wanted = std::min({static_cast<std::size_t>(available), room, kMostFrames});
  const std::size_t count = stretcher_->retrieve(heads_.data(), wanted);
  for (std::size_t i = 0; i < count; ++i) {
    for (const float* head : heads_) *frames++ = head[i];
  }
  return count;
}

double RubberBandEngine::GetAttackOffset(double scale) const {
  return MeasuredAttackOffset(QualityFor_(scale), step_ * raised_ / scale) * halfWindow_ / raised_;
}

}  // namespace tesk_audio

#include "reference_suite/audio/stretch/rubber_band_engine.h"

#include <algorithm>
#include <cmath>

#include "reference_suite/audio/stretch/attack_offset.h"

namespace tesk_audio {

namespace {

// What the engines stretch by at most and at least: beyond, the other plays.
constexpr double kMostOfTheFaster = 2.0;
constexpr double kLeastOfTheFiner = 0.34;
// At higher rates the finer one puts attacks elsewhere, by kinds of sound.
constexpr double kMostRateOfTheFiner = 50'000.0;
// Below this time ratio the faster engine takes longer chunks.
constexpr double kLeastOfAWindow = 0.15;

std::unique_ptr<RubberBand::RubberBandStretcher> Make(int engine, double rateHz, unsigned channels) {
  using Stretcher = RubberBand::RubberBandStretcher;
  const int options = engine | Stretcher::OptionProcessRealTime | Stretcher::OptionThreadingNever |
                      Stretcher::OptionPitchHighConsistency | Stretcher::OptionChannelsTogether;
  auto stretcher =
      std::make_unique<Stretcher>(static_cast<std::size_t>(std::lround(rateHz)), channels, options);
  stretcher->setDebugLevel(-1);  // it would write to the terminal
  stretcher->setMaxProcessSize(StretchEngine::kMostFrames);
  return stretcher;
}

}  // namespace

RubberBandEngine::RubberBandEngine(StretchQuality quality, double rateHz, unsigned channels)
    : finer_(Make(Stretcher::OptionEngineFiner, rateHz, channels)),
      faster_(Make(Stretcher::OptionEngineFaster, rateHz, channels)),
      quality_(rateHz > kMostRateOfTheFiner ? StretchQuality::Faster : quality),
      stretcher_(finer_.get()),
      halfWindow_(static_cast<double>(stretcher_->getPreferredStartPad())),
      watch_(rateHz, channels),
      planes_(channels, std::vector<float>(kMostFrames)) {
  for (auto& plane : planes_) heads_.push_back(plane.data());
}

StretchQuality RubberBandEngine::QualityFor_(double scale) const {
  const double stretch = step_ * raised_ / scale;
  if (stretch > kMostOfTheFaster) return StretchQuality::Finer;
  return stretch < kLeastOfTheFiner ? StretchQuality::Faster : quality_;
}

void RubberBandEngine::Begin(const StretchFactors& factors) {
  const double pitch = std::exp2(factors.semitones / 12.0);
  step_ = std::min(pitch, 1.0);
  raised_ = std::max(pitch, 1.0);
  scale_ = factors.scale;
  const bool isFaster = QualityFor_(factors.scale) == StretchQuality::Faster;
  stretcher_ = isFaster ? faster_.get() : finer_.get();
  stretcher_->reset();
  watch_.Forget();
  keeps_ = 0;
  SetScale(factors.scale);
  stretcher_->setPitchScale(raised_);
  halfWindow_ = static_cast<double>(stretcher_->getPreferredStartPad());
}

bool RubberBandEngine::CanGoOnAt(double scale) const {
  const bool isOneWindow = step_ / std::max(scale, scale_) >= kLeastOfAWindow;
  return isOneWindow && QualityFor_(scale) == QualityFor_(scale_);
}

void RubberBandEngine::KeepAttacks_(const float* frames, std::size_t count) {
  const bool isAttack = watch_.See(frames, count);
  keeps_ = isAttack ? static_cast<std::size_t>(halfWindow_) + count : keeps_ - std::min(keeps_, count);
  if (isCrisp_ == (keeps_ > 0)) return;
  isCrisp_ = keeps_ > 0;
  stretcher_->setTransientsOption(isCrisp_ ? Stretcher::OptionTransientsCrisp
                                           : Stretcher::OptionTransientsSmooth);
}

void RubberBandEngine::Process(const float* frames, std::size_t count) {
  if (stretcher_ == faster_.get()) KeepAttacks_(frames, count);
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

// The faster one begins with a chunk that it does not stretch and makes up for it bit by bit.
double RubberBandEngine::GetRunUp() const {
  return stretcher_ == faster_.get() ? 2.0 * halfWindow_ : 0.5 * halfWindow_;
}

double RubberBandEngine::GetAttackOffsetAtFirst(double scale) const {
  return MeasuredAttackOffsetAtFirst(QualityFor_(scale), step_ * raised_ / scale) * halfWindow_ / raised_;
}

double RubberBandEngine::GetAttackOffset(double scale) const {
  return MeasuredAttackOffset(QualityFor_(scale), step_ * raised_ / scale, step_) * halfWindow_ / raised_;
}

}  // namespace tesk_audio

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
// How much more sparsely the faster engine's song is read: what it takes for one attack after another lies 50
// ms of what it is given apart. And what either may stretch by then. Beyond, the library transposes upwards
// after it has stretched, which brings attacks nearer to their places again and takes half as long again.
constexpr double kMostSparse = 1.13;
constexpr double kMostOfSparse = 2.0;
// Frames that its resampler keeps back.
constexpr double kKeptBack = 32.0;
// The faster engine takes other steps where it stretches than where it compresses, and loses the phases when
// it goes over from one to the other.
constexpr double kOneSide = 1e-7;
// Below this time ratio the faster engine takes longer chunks.
constexpr double kLeastOfAWindow = 0.15;

std::unique_ptr<RubberBand::RubberBandStretcher> Make(int engine, int pitch, double rateHz,
                                                      unsigned channels) {
  using Stretcher = RubberBand::RubberBandStretcher;
  const int options = engine | Stretcher::OptionProcessRealTime | Stretcher::OptionThreadingNever | pitch |
                      Stretcher::OptionChannelsTogether;
  auto stretcher =
      std::make_unique<Stretcher>(static_cast<std::size_t>(std::lround(rateHz)), channels, options);
  stretcher->setDebugLevel(-1);  // it would write to the terminal
  stretcher->setMaxProcessSize(StretchEngine::kMostFrames);
  return stretcher;
}

}  // namespace

RubberBandEngine::Both RubberBandEngine::MakeBoth_(int engine, double rateHz, unsigned channels) {
  return {Make(engine, Stretcher::OptionPitchHighSpeed, rateHz, channels),
          Make(engine, Stretcher::OptionPitchHighConsistency, rateHz, channels)};
}

RubberBandEngine::RubberBandEngine(StretchQuality quality, double rateHz, unsigned channels)
    : finer_(MakeBoth_(Stretcher::OptionEngineFiner, rateHz, channels)),
      faster_(MakeBoth_(Stretcher::OptionEngineFaster, rateHz, channels)),
      quality_(rateHz > kMostRateOfTheFiner ? StretchQuality::Faster : quality),
      stretcher_(finer_.plain.get()),
      halfWindow_(static_cast<double>(stretcher_->getPreferredStartPad())),
      watch_(rateHz, channels),
      planes_(channels, std::vector<float>(kMostFrames)) {
  for (auto& plane : planes_) heads_.push_back(plane.data());
}

StretchQuality RubberBandEngine::QualityFor_(double scale) const {
  const double stretch = pitch_ / scale;
  if (stretch > kMostOfTheFaster) return StretchQuality::Finer;
  return stretch < kLeastOfTheFiner ? StretchQuality::Faster : quality_;
}

void RubberBandEngine::Begin(const StretchFactors& factors) {
  pitch_ = std::exp2(factors.semitones / 12.0);
  raised_ = RaisesAt_(factors.scale) ? pitch_ : 1.0;
  step_ = pitch_ / raised_;
  scale_ = factors.scale;
  isFaster_ = QualityFor_(factors.scale) == StretchQuality::Faster;
  const Both& both = isFaster_ ? faster_ : finer_;
  stretcher_ = raised_ > 1.0 ? both.raising.get() : both.plain.get();
  stretcher_->reset();
  stretcher_->setTransientsOption(Stretcher::OptionTransientsCrisp);
  isCrisp_ = true;
  watch_.Forget();
  keeps_ = 0;
  if (raised_ > 1.0) stretcher_->setPitchScale(raised_);
  SetScale(factors.scale);
  halfWindow_ = static_cast<double>(stretcher_->getPreferredStartPad());
}

bool RubberBandEngine::RaisesAt_(double scale) const {
  if (pitch_ <= 1.0) return false;
  const bool isTooSparse = pitch_ > kMostSparse && QualityFor_(scale) == StretchQuality::Faster;
  return isTooSparse || pitch_ > static_cast<double>(kMostStep) || pitch_ / scale > kMostOfSparse;
}

bool RubberBandEngine::CanGoOnAt(double scale) const {
  if (QualityFor_(scale) != QualityFor_(scale_) || RaisesAt_(scale) != RaisesAt_(scale_)) return false;
  const bool isOneWindow = step_ / std::max(scale, scale_) >= kLeastOfAWindow;
  const bool isOneSide = !isFaster_ || (scale <= pitch_) == (scale_ <= pitch_);
  return isOneWindow && isOneSide;
}

void RubberBandEngine::SetScale(double scale) {
  double stretch = pitch_ / scale;
  if (isFaster_) {
    stretch = scale_ <= pitch_ ? std::max(stretch, 1.0 + kOneSide) : std::min(stretch, 1.0 - kOneSide);
  }
  stretcher_->setTimeRatio(stretch / raised_);
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
  if (isFaster_) KeepAttacks_(frames, count);
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
  return isFaster_ ? 2.0 * halfWindow_ : 0.5 * halfWindow_;
}

double RubberBandEngine::GetAttackOffsetAtFirst(double scale) const {
  return MeasuredAttackOffsetAtFirst(QualityFor_(scale), pitch_ / scale) * halfWindow_ / raised_;
}

double RubberBandEngine::GetAttackOffset(double scale) const {
  const double offset = MeasuredAttackOffset(QualityFor_(scale), pitch_ / scale, step_) * halfWindow_;
  return raised_ > 1.0 ? (offset + kKeptBack) / raised_ : offset;
}

}  // namespace tesk_audio

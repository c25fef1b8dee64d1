#include "reference_suite/audio/stretch/rubber_band_engine.h"

#include <algorithm>
#include <cmath>

#include "reference_suite/audio/stretch/attack_offset.h"

namespace tesk_audio {

namespace {

// What the engines stretch by at most and at least: beyond, the other plays. The faster one finds an attack
// at the end of a chunk, so that what begins there stays weak for as long as it is put together with that in
// mind: by 2 dB here, by 10 at twice its length.
constexpr double kMostOfTheFaster = 1.45;
constexpr double kLeastOfTheFiner = 0.34;
// For more samples a second the finer one takes too long: the faster one plays up to where it doubles
// attacks.
constexpr double kMostSamplesOfTheFiner = 100'000.0;
constexpr double kMostOfMany = 2.0;
// Beyond, the finer one puts the attacks of some sounds beside their places.
constexpr double kMostInPlace = 1.3;
constexpr double kLeastInPlace = 0.72;
// At higher rates the finer one puts attacks elsewhere, by kinds of sound: there the faster one plays up to
// that too.
constexpr double kMostRateOfTheFiner = 50'000.0;
// The faster engine takes other steps where it stretches than where it compresses, and loses the phases when
// it goes over from one to the other.
constexpr double kOneSide = 1e-7;
// A beginning's milliseconds for what is made and, as much again, for what is taken for it; measured.
constexpr double kWorkOfTheFaster = 1.3;
constexpr double kWorkOfTheFiner = 5.0;
constexpr double kStereo = 96'000.0;
// Below this time ratio the faster engine takes longer chunks.
constexpr double kLeastOfAWindow = 0.15;

double MostOfTheFaster(double rateHz, unsigned channels) {
  const bool isMuch = rateHz > kMostRateOfTheFiner || rateHz * channels > kMostSamplesOfTheFiner;
  return isMuch ? kMostOfMany : kMostOfTheFaster;
}

std::unique_ptr<RubberBand::RubberBandStretcher> Make(int engine, double rateHz, unsigned channels) {
  using Stretcher = RubberBand::RubberBandStretcher;
  const int options = engine | Stretcher::OptionProcessRealTime | Stretcher::OptionThreadingNever |
                      Stretcher::OptionPitchHighSpeed | Stretcher::OptionChannelsTogether;
  Stretcher::setDefaultDebugLevel(-1);  // it would write to the terminal
  auto stretcher =
      std::make_unique<Stretcher>(static_cast<std::size_t>(std::lround(rateHz)), channels, options);
  stretcher->setMaxProcessSize(StretchEngine::kMostFrames);
  return stretcher;
}

}  // namespace

RubberBandEngine::RubberBandEngine(StretchQuality quality, double rateHz, unsigned channels)
    : finer_(Make(Stretcher::OptionEngineFiner, rateHz, channels)),
      faster_(Make(Stretcher::OptionEngineFaster, rateHz, channels)),
      load_(rateHz * channels / kStereo),
      quality_(rateHz > kMostRateOfTheFiner ? StretchQuality::Faster : quality),
      mostOfTheFaster_(MostOfTheFaster(rateHz, channels)),
      stretcher_(finer_.get()),
      halfWindow_(static_cast<double>(stretcher_->getPreferredStartPad())),
      higher_(channels, kMostFrames),
      stretched_(kMostFrames * channels),
      planes_(channels, std::vector<float>(kMostFrames)) {
  for (auto& plane : planes_) heads_.push_back(plane.data());
}

StretchQuality RubberBandEngine::QualityOf_(double stretch) const {
  if (stretch > mostOfTheFaster_) return StretchQuality::Finer;
  return stretch < kLeastOfTheFiner ? StretchQuality::Faster : quality_;
}

void RubberBandEngine::Begin(const StretchFactors& factors) {
  pitch_ = std::exp2(factors.semitones / 12.0);
  step_ = std::min(pitch_, 1.0);
  raised_ = std::max(pitch_, 1.0);
  scale_ = factors.scale;
  isFaster_ = QualityFor_(factors.scale) == StretchQuality::Faster;
  stretcher_ = isFaster_ ? faster_.get() : finer_.get();
  stretcher_->reset();
  if (isFaster_) ForgetPhases_();
  higher_.Begin(raised_);
  keeps_ = 0;
  SetScale(factors.scale);
  halfWindow_ = static_cast<double>(stretcher_->getPreferredStartPad());
}

// It keeps the phases of what it played last, on which other waves would be put together so that they weaken
// themselves, by 25 dB at times. Silence as recorded leaves none.
void RubberBandEngine::ForgetPhases_() {
  stretcher_->setTimeRatio(1.0);
  for (float* head : heads_) std::fill_n(head, kMostFrames, 0.0F);
  while (stretcher_->available() == 0) {
    stretcher_->process(heads_.data(), std::min(stretcher_->getSamplesRequired(), kMostFrames), false);
  }
  stretcher_->reset();
}

double RubberBandEngine::GetWorkToBegin(const StretchFactors& factors) const {
  const double stretch = std::exp2(factors.semitones / 12.0) / factors.scale;
  const bool isFaster = QualityOf_(stretch) == StretchQuality::Faster;
  return (isFaster ? kWorkOfTheFaster : kWorkOfTheFiner) * (1.0 + 1.0 / stretch) * load_;
}

bool RubberBandEngine::CanGoOnAt(double scale) const {
  if (QualityFor_(scale) != QualityFor_(scale_)) return false;
  const bool isOneWindow = pitch_ / std::max(scale, scale_) >= kLeastOfAWindow;
  const bool isOneSide = !isFaster_ || (scale <= pitch_) == (scale_ <= pitch_);
  return isOneWindow && isOneSide;
}

void RubberBandEngine::SetScale(double scale) {
  double stretch = pitch_ / scale;
  if (isFaster_) {
    stretch = scale_ <= pitch_ ? std::max(stretch, 1.0 + kOneSide) : std::min(stretch, 1.0 - kOneSide);
  }
  stretcher_->setTimeRatio(stretch);
}

void RubberBandEngine::KeepAttacks_(std::size_t count, bool isAttack) {
  keeps_ = isAttack ? static_cast<std::size_t>(halfWindow_) + count : keeps_ - std::min(keeps_, count);
  if (isCrisp_ == (keeps_ > 0)) return;
  isCrisp_ = keeps_ > 0;
  stretcher_->setTransientsOption(isCrisp_ ? Stretcher::OptionTransientsCrisp
                                           : Stretcher::OptionTransientsSmooth);
}

void RubberBandEngine::Process(const float* frames, std::size_t count, bool isAttack) {
  if (isFaster_) KeepAttacks_(count, isAttack);
  for (std::size_t i = 0; i < count; ++i) {
    for (float* head : heads_) head[i] = *frames++;
  }
  stretcher_->process(heads_.data(), count, false);
}

std::size_t RubberBandEngine::Retrieve(float* frames, std::size_t room) {
  if (raised_ == 1.0) return RetrieveStretched_(frames, std::min(room, kMostFrames));
  higher_.Put(stretched_.data(), RetrieveStretched_(stretched_.data(), kMostFrames));
  return higher_.Take(frames, room);
}

std::size_t RubberBandEngine::RetrieveStretched_(float* frames, std::size_t room) {
  const int available = stretcher_->available();
  if (available <= 0) return 0;
  const std::size_t wanted = std::min(static_cast<std::size_t>(available), room);
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

bool RubberBandEngine::SmearsAttacks() const {
  const double stretch = pitch_ / scale_;
  return isFaster_ || stretch > kMostInPlace || stretch < kLeastInPlace;
}

double RubberBandEngine::GetAttackOffsetAtFirst(double scale) const {
  return MeasuredAttackOffsetAtFirst(QualityFor_(scale), pitch_ / scale) * halfWindow_ / raised_;
}

double RubberBandEngine::GetAttackOffset(double scale) const {
  const double offset = MeasuredAttackOffset(QualityFor_(scale), pitch_ / scale, step_) * halfWindow_;
  return raised_ > 1.0 ? (offset + RaisedFrames::kKeptBack) / raised_ : offset;
}

}  // namespace tesk_audio

#include "reference_suite/audio/stretch/stretched_stream.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tesk_audio {

namespace {

// How the ratio is held: a correction begins at the first error and ends at the second; it would take
// `patience`, if the ratio were not off by `most` at most. In seconds.
struct Rein {
  double noticeable;
  double negligible;
  double patience;
  double most;
};
constexpr Rein kRein{0.0004, 0.00005, 0.03, 0.2};
// How far a change of tempo may put attacks beside their places without a new beginning.
constexpr double kTolerable = 0.0012;
// Between these seconds beside a beginning, as heard, an attack belongs to that. So does, for longer, what is
// left of an attack at the beginning: a note takes its time to rise, in seconds of the song.
constexpr std::size_t kSlice{StretchedStream::kExactly};
constexpr double kBefore = 0.001;
constexpr double kBehind = 0.004;
constexpr double kRise = 0.03;
// And so far behind it one is near.
constexpr double kNear = 0.01;
constexpr std::size_t kRoom = std::size_t{1} << 15;

}  // namespace

StretchedStream::StretchedStream(std::unique_ptr<StretchEngine> engine, FrameSource& source, double rateHz,
                                 unsigned channels, bool asksForBeginnings)
    : engine_(std::move(engine)),
      rateHz_(rateHz),
      channels_(channels),
      asksForBeginnings_(asksForBeginnings),
      source_(source, rateHz, channels, StretchEngine::kMostFrames + 3 * InBetweenReader::kReach),
      between_(source_, channels, StretchEngine::kMostFrames),
      watch_(rateHz, channels),
      onset_(source, rateHz, channels),
      level_(rateHz, channels),
      in_(StretchEngine::kMostFrames * channels),
      out_(kRoom * channels) {}

void StretchedStream::Start(long long index, const StretchFactors& factors, std::size_t lead, long long end) {
  Prepare(index, factors, lead, end);
  while (!PrepareFurther(0)) {
  }
}

void StretchedStream::Prepare(long long index, const StretchFactors& factors, std::size_t lead,
                              long long end) {
  engine_->Begin(factors);
  factors_ = factors;
  active_ = true;
  const double runUp =
      (static_cast<double>(lead) + std::max(0.0, -OffsetAtFirst_()) + engine_->GetRunUp()) * factors.scale;
  origin_ = static_cast<double>(index) - std::ceil(runUp + engine_->GetHalfIn() * engine_->GetStep());
  beginning_ = 0;
  end_ = end;
  silence_ = unknownFrom_ = attack_ = attackTurn_ = firstAttack_ = nearAttack_ = kNever;
  source_.TurnAt(kNever);  // what stood before the same place of another song is not to be heard
  TurnBack_();
  begun_ = index;
  watch_.Forget(engine_->GetStep());
  fed_ = made_ = error_ = 0.0;
  corrects_ = isBased_ = false;
  head_ = ready_ = 0;
  index_ = index;
  lead_ = static_cast<double>(lead);
  isSettling_ = true;
}

bool StretchedStream::PrepareFurther(std::size_t count) {
  if (isSettling_ || ready_ < count) {
    MakeRoom_();
    DoChunk_();
  }
  if (isSettling_ && ready_ > 0) PassOverRunUp_();
  return !isSettling_ && ready_ >= count;
}

// The part of it that passes is not declared: what it moved is made up for little by little.
double StretchedStream::OffsetAtFirst_() const {
  return engine_->GetAttackOffset(factors_.scale) + engine_->GetAttackOffsetAtFirst(factors_.scale);
}

// An engine that has just begun moves its output a little, until it has settled.
void StretchedStream::PassOverRunUp_() {
  const double passed = made_ - static_cast<double>(ready_) + lead_;
  const auto left =
      static_cast<std::size_t>(std::max(0LL, std::llround(base_ + error_ + OffsetAtFirst_() - passed)));
  const std::size_t passes = std::min(left, ready_);
  head_ += passes;
  ready_ -= passes;
  if (ready_ == 0) return;
  isSettling_ = false;
  level_.Forget();
  base_ += error_;
  error_ = 0.0;
}

double StretchedStream::GetSharePrepared(std::size_t count) const {
  if (!isBased_) return 0.0;
  return made_ / (base_ + error_ + OffsetAtFirst_() - lead_ + static_cast<double>(count));
}

double StretchedStream::ErrorOf_(double base, long long index, double scale) const {
  return middleOut_ - base - (middleIn_ - static_cast<double>(index)) / scale;
}

bool StretchedStream::ChangeScale(long long index, double scale) {
  if (!engine_->CanGoOnAt(scale)) return false;
  const double now = base_ + static_cast<double>(index - index_) / factors_.scale;
  const double base = now + engine_->GetAttackOffset(factors_.scale) - engine_->GetAttackOffset(scale);
  if (std::fabs(ErrorOf_(base, index, scale)) > kTolerable * rateHz_) return false;
  error_ = ErrorOf_(base, index, scale);
  base_ = base;
  index_ = index;
  factors_.scale = scale;
  corrects_ = true;
  Correct_();
  return true;
}

void StretchedStream::DeclareHere(long long index) {
  base_ = made_ - static_cast<double>(ready_) - engine_->GetAttackOffset(factors_.scale);
  index_ = index;
  error_ = ErrorOf_(base_, index_, factors_.scale);
}

const float* StretchedStream::Peek(std::size_t count) {
  Fill_(count);
  return out_.data() + head_ * channels_;
}

void StretchedStream::Skip(std::size_t count) {
  while (count > 0) {
    Fill_(1);
    const std::size_t part = std::min(count, ready_);
    head_ += part;
    ready_ -= part;
    count -= part;
  }
}

void StretchedStream::Render(float* frames, std::size_t count) {
  Fill_(count);
  std::copy_n(out_.data() + head_ * channels_, count * channels_, frames);
  head_ += count;
  ready_ -= count;
}

void StretchedStream::Fill_(std::size_t count) {
  if (ready_ >= count) return;
  MakeRoom_();
  while (ready_ < count) DoChunk_();
}

void StretchedStream::MakeRoom_() {
  std::copy_n(out_.data() + head_ * channels_, ready_ * channels_, out_.data());
  head_ = 0;
}

void StretchedStream::DoChunk_() {
  const std::size_t count = std::clamp<std::size_t>(engine_->GetRequired(), 1, StretchEngine::kMostFrames);
  const std::size_t made = ready_;
  Feed_(count);
  Collect_();
  const float* const came = out_.data() + (head_ + made) * channels_;
  if (WatchesLevel_()) level_.See(in_.data(), count, came, ready_ - made);
  MeasureError_();
  Correct_();
}

void StretchedStream::SetEnd(long long index) {
  end_ = index;
  TurnBack_();
}

void StretchedStream::TurnBack_() {
  source_.TurnAt(std::min(end_, attackTurn_));
}

void StretchedStream::Feed_(std::size_t count) {
  Read_(0, count);
  const bool isAttack = LookForAttacks_(count);
  if (isAttack && attack_ != kNever) {
    attackTurn_ = std::max(attack_, static_cast<long long>(std::ceil(PlaceOf_(fed_))));
    TurnBack_();
    const std::size_t same = std::min(CountThatDoNotKnow_(attackTurn_), count);
    Read_(same, count - same);
  }
  engine_->Process(in_.data(), count, isAttack);
  fed_ += static_cast<double>(count);
  if (PlaceOf_(fed_) > static_cast<double>(end_)) unknownFrom_ = std::min(unknownFrom_, end_);
}

// A frame between two of the song's knows of those around it.
std::size_t StretchedStream::CountThatDoNotKnow_(long long index) const {
  const double step = engine_->GetStep();
  const int reach = step == 1.0 ? 0 : InBetweenReader::kReach;
  return static_cast<std::size_t>(
      std::max(0.0, std::ceil((static_cast<double>(index - reach) - PlaceOf_(fed_)) / step)));
}

void StretchedStream::Read_(std::size_t first, std::size_t count) {
  const double step = engine_->GetStep();
  const double place = PlaceOf_(fed_ + static_cast<double>(first));
  float* const in = in_.data() + first * channels_;
  if (step == 1.0) {
    const auto next = static_cast<long long>(place);
    const long long known = std::clamp<long long>(silence_ - next, 0, static_cast<long long>(count));
    const auto sounding = static_cast<std::size_t>(known);
    source_.ReadAt(next, in, sounding);
    std::fill_n(in + sounding * channels_, (count - sounding) * channels_, 0.0F);
  } else {
    between_.Read(place, step, silence_, in, count);
  }
  const auto silent = static_cast<std::size_t>(std::clamp(
      std::ceil((static_cast<double>(beginning_) - place) / step), 0.0, static_cast<double>(count)));
  std::fill_n(in, silent * channels_, 0.0F);
}

// Behind the beginning, attacks matter only to an engine that smears them, and to whoever goes over into it.
bool StretchedStream::LookForAttacks_(std::size_t count) {
  const auto begun = static_cast<double>(begun_);
  const double frames = rateHz_ * factors_.scale;
  bool isAny = false;
  for (std::size_t at = 0; at < count && attack_ == kNever; at += kSlice) {
    const double place = PlaceOf_(fed_ + static_cast<double>(at));
    const double behind = firstAttack_ == kNever ? kBehind * frames : kRise * rateHz_;
    const bool isAtBeginning = place < begun + behind;
    const bool isNear = place < begun + kNear * rateHz_ * std::max(1.0, factors_.scale);
    if (!isAtBeginning && !isNear && !engine_->SmearsAttacks()) break;
    // Behind the end stands what was before it, in which no attack is one.
    if (PlaceOf_(fed_ + static_cast<double>(at + kSlice)) > static_cast<double>(end_)) break;
    float* const slice = in_.data() + at * channels_;
    if (!watch_.See(slice, std::min(kSlice, count - at))) continue;
    isAny = true;
    const bool isKnown = firstAttack_ != kNever || place < begun - kBefore * frames;
    if (isAtBeginning && isKnown) continue;
    // A rise that is seen late may have begun at the beginning: beginning anew for it would change nothing,
    // and never end.
    const long long onset = onset_.Find(static_cast<long long>(place));
    if (isNear) nearAttack_ = std::min(nearAttack_, onset);
    if (static_cast<double>(onset) < begun + behind) {
      if (firstAttack_ == kNever) firstAttack_ = onset;
    } else if (asksForBeginnings_ && engine_->SmearsAttacks()) {
      attack_ = onset;
    }
  }
  return isAny;
}

void StretchedStream::Collect_() {
  std::size_t got = 0;
  do {
    const std::size_t end = head_ + ready_;
    if (out_.size() < (end + StretchEngine::kMostFrames) * channels_) {
      out_.resize((end + kRoom) * channels_);
    }
    got = engine_->Retrieve(out_.data() + end * channels_, StretchEngine::kMostFrames);
    ready_ += got;
    made_ += static_cast<double>(got);
  } while (got > 0);
}

// Every frame that is made moves the middle of the next chunk on.
void StretchedStream::MeasureError_() {
  const auto required = static_cast<double>(engine_->GetRequired());
  middleIn_ = PlaceOf_(fed_ + required - engine_->GetHalfIn());
  middleOut_ = engine_->GetHalfOut() + made_;
  // What the engine holds back from its first chunk on it holds back for ever.
  if (!isBased_ && made_ > 0.0) base_ = ErrorOf_(0.0, index_, factors_.scale);
  isBased_ = made_ > 0.0;
  error_ = ErrorOf_(base_, index_, factors_.scale);
}

void StretchedStream::Correct_() {
  if (!isBased_ || isSettling_) return;
  const double size = std::fabs(error_) / rateHz_;
  if (!corrects_ && size <= kRein.noticeable) return;
  corrects_ = size > kRein.negligible;
  const double wanted = corrects_ ? error_ / (kRein.patience * rateHz_) : 0.0;
  engine_->SetScale(factors_.scale / (1.0 - std::clamp(wanted, -kRein.most, kRein.most)));
}

}  // namespace tesk_audio

// How a stretch plays attacks: it begins anew in time for each, and lays what was recorded over the
// beginning.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

#include "reference_suite/audio/output/stretch_path.h"
#include "reference_suite/audio/stretch/seam_match.h"

namespace tesk_audio {

namespace {

// The share of a seam within which an attack is soon: later, the recorded sound has given way.
constexpr double kSoon = 0.4;
constexpr double kQuarter = std::numbers::pi / 2.0;
// How many times the power of what was there before an attack has that rises out of little.
constexpr double kLittle = 30.0;

double Power(const float* samples, std::size_t count) {
  double sum = 0.0;
  for (std::size_t i = 0; i < count; ++i)
    sum += static_cast<double>(samples[i]) * static_cast<double>(samples[i]);
  return sum;
}

}  // namespace

// Where the stream that plays is to begin anew, in time for an attack, or another one takes its place;
// `index` is the next frame.
long long StretchPath::BorderFrom_(long long index) const {
  return std::max(std::min(AttackBorder_(), change_.at), index);
}

long long StretchPath::AttackBorder_() const {
  return stream_->GetAttack() - std::llround(static_cast<double>(lead_) * stream_->GetFactors().scale);
}

// Goes over into another beginning of what the stream plays.
void StretchPath::BeginAnewAt_(long long index) {
  PrepareNext_(index, index);
  const std::size_t length = AttackSeam_();
  const long long attack = stream_->GetAttack();
  stream_->Render(fade_.Outgoing(), length);
  fade_.GoOnInOutgoing(length);
  std::swap(stream_, next_);
  next_->Stop();
  levels_ = 0;
  LayAttackOver_(attack, index, length, stream_->GetFactors().scale);
  JoinStream_(index, length, near_);
  BeginFade_(stream_->Peek(length), length, false);
}

// In the first chunks a sound rises more slowly than it should: until it is there, the recorded one is heard.
// Where the song is played faster, that one would be too far behind by then.
std::size_t StretchPath::AttackSeam_() const {
  return stream_->GetFactors().scale > 1.0 ? seam_ : mostSeam_;
}

// Whether there is music on both sides of a seam, and nothing begins or ends within it, in the stretched
// sound or in the recorded one. `attack`: the next that is known of. A jump's seam is as long as is wished
// for.
bool StretchPath::IsSteady_(const Place& place, long long attack, double scale) const {
  const auto reach = static_cast<long long>(static_cast<double>(mostSeam_) * std::max(1.0, scale));
  const bool jumps = isSounding_ && place.index != place.before;
  return !jumps && attack >= place.index + reach && stop_ >= place.index + reach;
}

// Whether an attack stands in the recorded sound that a long seam from `index` on would hold. Not every
// stream tells.
bool StretchPath::HasAttackSoon_(long long index) {
  const std::size_t before = level_.GetAroundFrames() / 2;
  ReadAt(index - static_cast<long long>(before), around_.data(), before + mostSeam_);
  watch_.Forget(1.0);
  watch_.See(around_.data(), before);
  return watch_.See(around_.data() + before * channels_, mostSeam_);
}

// An attack a few milliseconds behind a beginning belongs to that: until it is heard, what it is heard in
// must not have given way. `behind`: in frames of the song. `isRecorded`: it is heard in recorded sound,
// which brings it later, or earlier, than the stretched one would.
std::size_t StretchPath::SeamWithAttack_(std::size_t length, long long behind, double scale,
                                         bool isRecorded) const {
  const double recorded = static_cast<double>(std::max(0LL, behind));
  const double until = isRecorded ? std::max(recorded, recorded / scale) : recorded / scale;
  if (until > kSoon * static_cast<double>(mostSeam_)) return length;
  return std::clamp(static_cast<std::size_t>(until / kSoon) + 1, length, mostSeam_);
}

// An attack is seen coming long before it is heard. What begins anew there is made in between, little by
// little: at once, it would take longer than what waits for the device lasts. What comes next is `index`;
// before `soon` nothing more can be made.
void StretchPath::PrepareNext_(long long index, long long soon) {
  if (PreparesChange_(index, soon - index) || stream_->GetAttack() == StretchedStream::kNever) return;
  const long long border = BorderFrom_(index);
  if (!next_->IsFrom(border, stream_->GetFactors())) {
    next_->Prepare(border, stream_->GetFactors(), reach_, stop_);
    if (RisesOutOfLittle_(border)) next_->SetBeginning(border);
    preparedFrom_ = index;
  }
  PrepareUntil_(border, reach_ + near_ + AttackSeam_(), soon);
}

// So that `ahead` frames of what comes are there at the border.
void StretchPath::PrepareUntil_(long long border, std::size_t ahead, long long soon) {
  const double share =
      soon < border ? static_cast<double>(soon - preparedFrom_) / static_cast<double>(border - preparedFrom_)
                    : std::numeric_limits<double>::infinity();
  while (next_->GetSharePrepared(ahead) < share && !next_->PrepareFurther(ahead)) {
  }
}

// Whether what was there before is next to nothing beside what comes. Left in, it would keep the engine from
// noticing a soft attack in the chunks that it draws out, and that would swell for tens of milliseconds.
bool StretchPath::RisesOutOfLittle_(long long index) {
  if (!stream_->GetFactors().DrawOut()) return false;
  const std::size_t length = 2 * seam_;
  ReadAt(index - static_cast<long long>(length), incoming_.data(), length);
  const double before = Power(incoming_.data(), length * channels_);
  ReadAt(index, incoming_.data(), length);
  return Power(incoming_.data(), length * channels_) > kLittle * before;
}

// An attack right behind a beginning is heard as it was recorded, from a moment before it on: whole and in
// its place.
void StretchPath::LayAttackOver_(long long known, long long index, std::size_t length, double scale) {
  if (known == StretchedStream::kNever) return;
  const long long attack = std::max(known, index);
  const auto until = static_cast<double>(attack - index) / scale;
  if (until > kSoon * static_cast<double>(length)) return;
  ReadAt(attack - std::llround(until), incoming_.data(), length);
  const auto lead = static_cast<double>(lead_);
  const double from = std::max(0.0, until - lead);
  // What began before goes on: nothing of it is there at once.
  const bool goesOn = known + StretchedStream::kAlmost < index;
  const double rise = std::max(goesOn ? lead : 1.0, until - from);
  const float* recorded = incoming_.data();
  float* out = fade_.Outgoing();
  // What goes out may hold the same attack: together they are to be as loud as one.
  const auto first = static_cast<std::size_t>(from);
  const double alike = std::max(0.0, Correlation(out + first * channels_, recorded + first * channels_,
                                                 std::min(lead_, length - first) * channels_));
  for (std::size_t i = 0; i < length; ++i) {
    const double way = static_cast<double>(i) + 1.0 - from;
    const double rises = std::sin(kQuarter * std::clamp(way / rise, 0.0, 1.0));
    const double falls = std::cos(kQuarter * std::clamp(way / lead, 0.0, 1.0));
    const double both = rises + falls;
    const double level = 1.0 / std::sqrt(1.0 + alike * (both * both - 1.0));
    const auto in = static_cast<float>(level * rises);
    const auto rest = static_cast<float>(level * falls);
    for (unsigned channel = 0; channel < channels_; ++channel, ++out) *out = *out * rest + *recorded++ * in;
  }
}

}  // namespace tesk_audio

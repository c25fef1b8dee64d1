// When another tempo or key acts. What comes is made before it is heard; where that takes long and a device
// waits, it is made little by little: for a change that is written in the show before its place, and for one
// of the performer while what plays goes on for a moment.
#include <algorithm>
#include <cmath>

#include "reference_suite/audio/output/stretch_path.h"

namespace tesk_audio {

namespace {

// Milliseconds that a beginning may take at once: a third of what is rendered ahead as a rule.
constexpr double kLittleWork = 5.0;
// And those of the longest.
constexpr double kMostWork = 20.0;
// How much longer than the work it is spread over, so that what plays has its time; in seconds at least.
constexpr double kSpread = 2.5;
constexpr double kLeastSpread = 0.02;
// How long a change waits for attacks that are being prepared, in seconds of the song.
constexpr double kPatience = 0.2;

}  // namespace

StretchFactors StretchPath::FactorsInForce_(const Place& place, const StretchFactors& wanted) {
  if (!isInTime_) return wanted;
  const bool goesOn = isSounding_ && place.index == place.before && !place.isNextSong;
  if (!goesOn || change_.at < place.index) ForgetChange_();
  if (!goesOn) {
    writtenAt_ = waitsSince_ = StretchedStream::kNever;
    return wanted;
  }
  if (change_.at == place.index && (!change_.isWritten || change_.to == wanted)) return change_.to;
  const bool isHere = stream_->IsActive() && GoesOn_(place, wanted);
  if (!isHere && !wanted.AreRecorded()) return Await_(place.index, wanted);
  waitsSince_ = StretchedStream::kNever;
  if (!change_.isWritten) ForgetChange_();
  LookAhead_(place.index, wanted);
  return wanted;
}

// What is in force instead, until it can act.
StretchFactors StretchPath::Await_(long long index, const StretchFactors& wanted) {
  if (change_.isWritten) ForgetChange_();
  if (change_.at != StretchedStream::kNever) return GetFactors_();
  const bool isUnknown = stream_->IsActive() && stream_->IsUnknownAt(index);
  if (index == writtenAt_ || isUnknown || !TakesLong_(wanted)) return wanted;
  const long long least = FramesToPrepare_(next_->GetWorkToBegin(wanted));
  change_ = {index + least, wanted, false};
  // Right behind it, too, there would be no time to begin anew for an attack.
  if (!stream_->IsActive() || AttackBorder_() >= change_.at + least) {
    NoteStop_(index);
    return GetFactors_();
  }
  // Where what plays is to begin anew for one: there, if there is time, or else behind it.
  change_.at = AttackBorder_();
  if (change_.at - index >= least / 2) return GetFactors_();
  change_ = {};
  if (waitsSince_ == StretchedStream::kNever) waitsSince_ = index;
  const bool hasPatience = static_cast<double>(index - waitsSince_) < kPatience * rateHz_;
  return hasPatience ? GetFactors_() : wanted;
}

void StretchPath::LookAhead_(long long index, const StretchFactors& wanted) {
  const bool isNear = writtenAt_ != StretchedStream::kNever && writtenAt_ > index;
  if (isNear && FactorsAt_(writtenAt_) == writtenTo_) return;
  ForgetChange_();
  writtenAt_ = StretchedStream::kNever;
  const long long until = index + FramesToPrepare_(kMostWork);
  if (FactorsAt_(until) != wanted) FindWritten_(index, wanted, until);
}

// Where the factors are not `wanted` any more, between `index` and `until`.
void StretchPath::FindWritten_(long long index, const StretchFactors& wanted, long long until) {
  while (until - index > 1) {
    const long long middle = index + (until - index) / 2;
    (FactorsAt_(middle) == wanted ? index : until) = middle;
  }
  writtenAt_ = until;
  writtenTo_ = FactorsAt_(until);
  if (writtenTo_.AreRecorded() || !TakesLong_(writtenTo_)) return;
  if (stream_->IsActive() && AttackBorder_() < writtenAt_) return;
  change_ = {writtenAt_, writtenTo_, true};
  NoteStop_(index);
}

StretchFactors StretchPath::FactorsAt_(long long index) {
  long double scale = 1.0L;
  int semitones = 0;
  player_.GetDspFactorsAt(index, &scale, &semitones);
  return Limited_({static_cast<double>(scale), semitones});
}

StretchFactors StretchPath::GetFactors_() const {
  return stream_->IsActive() ? stream_->GetFactors() : StretchFactors{};
}

bool StretchPath::TakesLong_(const StretchFactors& wanted) const {
  return next_->GetWorkToBegin(wanted) > kLittleWork;
}

// Song frames, as what plays now takes them.
long long StretchPath::FramesToPrepare_(double work) const {
  const double seconds = std::max(kLeastSpread, kSpread * work / 1000.0);
  return std::llround(seconds * rateHz_ * GetFactors_().scale);
}

void StretchPath::ForgetChange_() {
  if (change_.at != StretchedStream::kNever) next_->Stop();
  change_ = {};
}

// Whether there is one to be made before anything else; makes as much of it as is due by `index`, which is
// the next frame, behind a read of so many.
bool StretchPath::PreparesChange_(long long index, long long count) {
  if (change_.at == StretchedStream::kNever) return false;
  if (stream_->IsActive() && AttackBorder_() < change_.at) {
    ForgetChange_();
    return false;
  }
  if (!next_->IsFrom(change_.at, change_.to)) {
    next_->Prepare(change_.at, change_.to, reach_, stop_);
    preparedFrom_ = index - count;
  }
  PrepareUntil_(change_.at, mostSeam_ + 2 * reach_, index);
  return true;
}

// At its place, which is the next frame.
void StretchPath::MakeChange_() {
  BeginStream_({change_.at, change_.at}, StretchFactors(change_.to));
  stream_->SetEnd(stop_);
}

}  // namespace tesk_audio

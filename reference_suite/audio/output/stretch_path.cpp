#include "reference_suite/audio/output/stretch_path.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "reference_suite/audio/stretch/seam_match.h"

namespace tesk_audio {

namespace {

constexpr double kSlowest = 0.25;
constexpr double kSeamSeconds = 0.005;
// Where nothing begins or ends in it, as a low tone wants, and a jump's, when a longer cross-fade is wished
// for: a chunk or two to be made at once.
constexpr double kMostSeamSeconds = 0.010;
constexpr double kReachSeconds = 0.0025;
constexpr double kNearSeconds = 0.001;
// What is looked at before the level of a stretched sound is decided, no more than is made at once anyway or
// a chunk.
constexpr double kKnownSeconds = 0.010;
// What is heard as recorded before an attack.
constexpr double kLeadSeconds = 0.0013;
// Two sounds that weaken each other more than this are not laid on top of each other.
constexpr double kOpposed = -0.3;
// How many times as long as a recorded sound is late its way back takes at least.
constexpr std::size_t kGentle = 8;
// Samples a second of which a stretch begins anew by itself: of more, playing and preparing the beginning at
// once may take longer than there is time.
constexpr double kMostRenewed = 200'000.0;
// The share of the reach by which recorded sound may bring an attack late or early in stretched sound.
constexpr double kBeside = 0.75;
// Frames behind a place between two that have a say there.
constexpr long long kBetween = 2;

std::size_t FramesIn(double seconds, double rateHz) {
  return static_cast<std::size_t>(std::lround(seconds * rateHz));
}

}  // namespace

std::unique_ptr<StretchedStream> StretchPath::MakeStream_(StretchQuality quality, StretchPace pace,
                                                          double rateHz) {
  const bool beginsAnew = pace == StretchPace::AtLeisure || rateHz * channels_ <= kMostRenewed;
  FrameSource& source = *this;
  return std::make_unique<StretchedStream>(CreateStretchEngine(quality, rateHz, channels_), source, rateHz,
                                           channels_, beginsAnew);
}

std::size_t StretchPath::MostSeamFrames(double rateHz) {
  return FramesIn(kMostSeamSeconds, rateHz);
}

std::size_t StretchPath::MostFadeFrames(double rateHz) {
  return 2 * SeamLevel(rateHz, 1).GetFrames();
}

StretchPath::StretchPath(AudioPlayerOutputInterface& player, CrossFade& fade, StretchQuality quality,
                         StretchPace pace, double rateHz, unsigned channels, std::size_t mostFrames)
    : player_(player),
      fade_(fade),
      rateHz_(rateHz),
      channels_(channels),
      seam_(FramesIn(kSeamSeconds, rateHz)),
      mostSeam_(MostSeamFrames(rateHz)),
      reach_(FramesIn(kReachSeconds, rateHz)),
      near_(FramesIn(kNearSeconds, rateHz)),
      lead_(FramesIn(kLeadSeconds, rateHz)),
      stream_(MakeStream_(quality, pace, rateHz)),
      next_(MakeStream_(quality, pace, rateHz)),
      isInTime_(pace == StretchPace::InTime),
      turned_(*this, rateHz, channels, std::max(mostSeam_, fade.GetLength())),
      late_(*this, rateHz, channels, std::max({mostFrames, mostSeam_, fade.GetLength()}), reach_),
      watch_(rateHz, channels),
      level_(rateHz, channels),
      known_(FramesIn(kKnownSeconds, rateHz)),
      around_(level_.GetAroundFrames() * channels),
      incoming_((std::max({mostSeam_, fade.GetLength(), level_.GetFrames()}) + 2 * reach_) * channels),
      out_((static_cast<std::size_t>(std::ceil(static_cast<double>(mostFrames) / kSlowest)) + 1) * channels) {
}

void StretchPath::Drop() {
  stream_->Stop();
  next_->Stop();
  late_.Cancel();
  ForgetChange_();
  due_ = 0.0;
  levels_ = 0;
  isSounding_ = false;
}

std::size_t StretchPath::DropTail(long long index, long long stop, float* out, std::size_t count) {
  const double scale = stream_->IsActive() ? stream_->GetFactors().scale : 1.0;
  if (stop >= 0) count = std::min(count, static_cast<std::size_t>(static_cast<double>(stop - index) / scale));
  if (!isSounding_) count = 0;
  if (count > 0) TakeTail_(index, out, count);
  Drop();
  return count;
}

void StretchPath::TakeTail_(long long index, float* out, std::size_t count) {
  if (stream_->IsActive()) {
    stream_->Render(out, count);
  } else {
    stop_ = StretchedStream::kNever;
    ReadAt(index, out, count);
    late_.Apply(index, out, count);
  }
  fade_.Apply(out, count);
}

void StretchPath::ReadAt(long long index, float* frames, std::size_t count) {
  std::fill_n(frames, count * channels_, 0.0F);
  const auto silent =
      static_cast<std::size_t>(std::clamp<long long>(-index, 0, static_cast<long long>(count)));
  const long long before = std::max(index, 0LL);
  long long wanted = std::min(static_cast<long long>(count - silent), stop_ - before);
  if (wanted > 0) player_.ReadSamplesAt(before, &wanted, frames + silent * channels_);
}

StretchFactors StretchPath::Limited_(const StretchFactors& factors) {
  return {std::max(factors.scale, kSlowest), factors.semitones};
}

void StretchPath::Turn(const Place& place, const StretchFactors& asked) {
  const StretchFactors wanted = Limited_(asked);
  if (stream_->IsActive() || !wanted.AreRecorded() || late_.IsActive() ||
      change_.at != StretchedStream::kNever) {
    // Asked for first: a stream that begins reads ahead at once.
    NoteStop_(place.index);
  }
  GoOver_(place, FactorsInForce_(place, wanted));
  if (change_.at <= place.index) ForgetChange_();
  // Not even the shadow of an attack behind it is heard before it.
  if (stream_->IsActive()) stream_->SetEnd(stop_);
  if (next_->IsActive()) next_->SetEnd(stop_);
}

void StretchPath::NoteStop_(long long index) {
  const long long caesura = player_.GetNextCaesuraSampleIndex(index);
  stop_ = caesura > index ? caesura : StretchedStream::kNever;
}

void StretchPath::GoOver_(const Place& place, const StretchFactors& wanted) {
  if (stream_->IsActive() ? GoesOn_(place, wanted) : wanted.AreRecorded()) {
    if (place.index != place.before) JumpAsRecorded_(place);
  } else if (wanted.AreRecorded()) {
    next_->Stop();
    LeaveStream_(place);
  } else {
    BeginStream_(place, wanted);
  }
}

// Whether the stream that plays is the one to play on.
bool StretchPath::GoesOn_(const Place& place, const StretchFactors& wanted) {
  if (wanted.AreRecorded() || place.isNextSong || place.index != place.before) return false;
  if (stream_->IsUnknownAt(place.index) || wanted.semitones != stream_->GetFactors().semitones) return false;
  if (stream_->IsWeakened()) return false;
  return wanted.scale == stream_->GetFactors().scale || stream_->ChangeScale(place.index, wanted.scale);
}

std::size_t StretchPath::SeamLength_(const Place& place) const {
  if (!isSounding_) return 0;
  // Stretched sound has no splice that is none: it would click where a jump of recorded frames does not.
  return place.index != place.before ? std::clamp(fade_.GetLength(), seam_, mostSeam_) : seam_;
}

void StretchPath::TakeOutgoing_(const Place& place, std::size_t length, long long turn) {
  if (stream_->IsActive()) {
    if (place.isNextSong) stream_->FallSilent();
    stream_->Render(fade_.Outgoing(), length);
  } else {
    TakeRecorded_(place, length, turn);
  }
  fade_.GoOnInOutgoing(length);
}

void StretchPath::TakeRecorded_(const Place& place, std::size_t length, long long turn) {
  const bool jumps = place.index != place.before;
  const long long jumpedFrom = place.stop < 0 ? StretchedStream::kNever : place.stop;
  const long long behind = jumps ? jumpedFrom : stop_;
  const long long ahead = std::exchange(stop_, behind);
  ReadAt(place.before, fade_.Outgoing(), length);
  late_.Apply(place.before, fade_.Outgoing(), length);
  late_.Cancel();
  turn = std::min(turn, behind);
  const auto known =
      static_cast<std::size_t>(std::clamp<long long>(turn - place.before, 0, static_cast<long long>(length)));
  // Where a jump leaves from just before a caesura, nothing is left to fade out.
  TurnAt_(turn);
  turned_.ReadAt(place.before + static_cast<long long>(known), fade_.Outgoing() + known * channels_,
                 length - known);
  stop_ = ahead;
}

// What stood before the same place of another song is not to be heard.
void StretchPath::TurnAt_(long long index) {
  turned_.TurnAt(TurnedBack::kNowhere);
  turned_.TurnAt(index);
}

// Where nothing that came before leads over to it, the first moment is heard as it was recorded: an attack on
// the first frame is there, whole and in time, before the stretcher knows of anything.
void StretchPath::TakeBeginning_(long long index, std::size_t length, bool isAlone, long long turn) {
  TurnAt_(turn);
  if (isAlone) {
    turned_.ReadAt(index, fade_.Outgoing(), length);
    return;
  }
  turned_.ReadAt(index, incoming_.data(), length);
  float* outgoing = fade_.Outgoing();
  for (std::size_t i = 0; i < length * channels_; ++i) outgoing[i] += incoming_[i];
}

void StretchPath::BeginStream_(const Place& place, const StretchFactors& wanted) {
  // As recorded, the next song follows the one before without a fade, and nothing of that one is left.
  const bool follows = place.isNextSong && !stream_->IsActive();
  const std::size_t ending = follows ? 0 : SeamLength_(place);
  const bool begins = ending == 0 || place.isNextSong;
  const bool goesOn = !begins && place.index == place.before;
  const bool isPrepared = change_.at == place.index && next_->IsFrom(place.index, wanted);
  if (!isPrepared) next_->Prepare(place.index, wanted, reach_, stop_);
  change_ = {};
  while (!next_->PrepareFurther(0)) {
  }
  const long long attack = next_->GetFirstAttack();
  // Where the song goes on, an attack is in what goes out already, whole and in its place, unless that has
  // turned back for it.
  const bool isUnknown = stream_->IsActive() && stream_->IsUnknownAt(attack + StretchedStream::kExactly);
  // Recorded sound that would bring it far beside its place turns back for it as well.
  const long long near = next_->GetNearAttack();
  const auto recorded = static_cast<double>(near - place.index);
  const bool isBeside = (begins || (goesOn && !stream_->IsActive())) &&
                        std::fabs(recorded - recorded / wanted.scale) > kBeside * static_cast<double>(reach_);
  const bool hasAttack = goesOn && !isUnknown && !isBeside;
  const bool isRecorded = !isBeside && (begins || (hasAttack && !stream_->IsActive()));
  const bool isSteady = IsSteady_(place, near, wanted.scale);
  const std::size_t length =
      isSteady ? mostSeam_
               : SeamWithAttack_(ending > 0 ? ending : seam_, attack - place.index, wanted.scale, isRecorded);
  const long long turn = isBeside ? near : StretchedStream::kNever;
  if (ending > 0) TakeOutgoing_(place, length, turn);
  const bool isLevel = goesOn && (!stream_->IsActive() || stream_->KeepsLevel());
  if (!stream_->IsActive()) {
    ReadAt(place.index - static_cast<long long>(level_.GetFrames()), level_.Before(), level_.GetFrames());
  }
  if (begins) TakeBeginning_(place.index, length, ending == 0, turn);
  late_.Cancel();
  std::swap(stream_, next_);
  next_->Stop();
  if (isBeside || (!begins && !hasAttack)) LayAttackOver_(attack, place.index, length, wanted.scale);
  JoinStream_(place.index, length, begins || place.index != place.before ? near_ : reach_);
  BeginFade_(stream_->Peek(length), length, isSteady);
  levels_ = 0;
  if (isLevel && stream_->KeepsLevel()) SeeAround_(place.index);
}

// Goes over into it from what is taken already.
void StretchPath::JoinStream_(long long index, std::size_t length, std::size_t reach) {
  stream_->Skip(reach_ - reach);
  const SeamMatch match =
      FindSeam(fade_.Outgoing(), stream_->Peek(length + 2 * reach), length, channels_, reach, near_);
  stream_->Skip(match.lag);
  stream_->DeclareHere(index);
}

// `mayBeShort`: it may be as short as seams are, too. A low tone that meets itself at another phase wants a
// long one; high tones that have just got another key run apart in that.
void StretchPath::BeginFade_(const float* coming, std::size_t length, bool mayBeShort) {
  const double correlation = Correlation(fade_.Outgoing(), coming, length * channels_);
  const double shorter = Correlation(fade_.Outgoing(), coming, seam_ * channels_);
  const bool isShort = mayBeShort && fade_.BendWith(coming, seam_, shorter, length) <=
                                         fade_.BendWith(coming, length, correlation, length);
  fade_.Begin(isShort ? seam_ : length, isShort ? shorter : correlation);
}

// The music goes on at `index`, behind a seam at which its level is to be kept.
void StretchPath::SeeAround_(long long index) {
  const std::size_t frames = level_.GetAroundFrames();
  ReadAt(index - static_cast<long long>(frames / 2), around_.data(), frames);
  level_.SetAround(around_.data());
  levels_ = level_.GetFrames();
}

// What is to be heard next is `coming`, but for the fade.
void StretchPath::LevelSeam_(const float* coming, std::size_t known) {
  std::copy_n(coming, known * channels_, around_.data());
  fade_.Preview(around_.data(), known);
  if (level_.Fit(around_.data(), known)) fade_.Scale(level_.GetGains().data(), known);
}

void StretchPath::JumpAsRecorded_(const Place& place) {
  const std::size_t length = fade_.GetLength();
  if (length > 0) TakeOutgoing_(place, length);
  late_.Cancel();
  if (length > 0) fade_.Begin();
}

void StretchPath::LeaveStream_(const Place& place) {
  const bool goesOn = place.index == place.before && !place.isNextSong;
  const bool isSteady = isSounding_ && !place.isNextSong &&
                        IsSteady_(place, stream_->GetAttack(), stream_->GetFactors().scale) &&
                        !HasAttackSoon_(place.index);
  const std::size_t length = isSteady ? mostSeam_ : SeamLength_(place);
  if (length > 0) TakeOutgoing_(place, length);
  // What goes out has turned back for it, and what comes in has not risen.
  if (length > 0 && goesOn) LayAttackOver_(stream_->GetAttack(), place.index, length, 1.0);
  stream_->Stop();
  if (length == 0) return;
  if (place.isNextSong) {
    fade_.BeginTail(length);
    return;
  }
  ReadAt(place.index - static_cast<long long>(reach_), incoming_.data(),
         std::max(length, level_.GetFrames()) + 2 * reach_);
  const float* here = incoming_.data() + reach_ * channels_;
  const std::size_t compared = isSteady ? seam_ : length;
  SeamMatch match{reach_, Correlation(fade_.Outgoing(), here, compared * channels_)};
  const auto room = static_cast<std::size_t>(std::max(0LL, stop_ - place.index - kBetween));
  // With a caesura at hand there is no time to come back gently.
  const bool mayGiveWay = place.index == place.before && room >= kGentle * reach_;
  if (match.correlation < kOpposed && mayGiveWay) {
    match = FindSeam(fade_.Outgoing(), incoming_.data(), compared, channels_, reach_, reach_);
    late_.Begin(static_cast<double>(reach_) - static_cast<double>(match.lag), room);
  }
  BeginFade_(incoming_.data() + match.lag * channels_, length, isSteady);
  if (place.index == place.before && stream_->KeepsLevel()) {
    SeeAround_(place.index);
    LevelSeam_(incoming_.data() + match.lag * channels_, level_.GetFrames());
  }
  levels_ = 0;
}

std::size_t StretchPath::Render(long long index, float* frames, std::size_t count) {
  isSounding_ = true;
  frames_ = frames;
  const long long end = index + static_cast<long long>(count);
  std::size_t made = 0;
  if (!stream_->IsActive()) {
    made = static_cast<std::size_t>(std::min(end, change_.at) - index);
    late_.Apply(index, frames_, made);
    fade_.Apply(frames_, made);
    if (change_.at >= end) {
      PreparesChange_(end, static_cast<long long>(count));
      return count;
    }
    std::copy_n(frames_, made * channels_, out_.data());
    index = change_.at;
    MakeChange_();
  }
  frames_ = out_.data();
  for (long long border = BorderFrom_(index); border < end; border = BorderFrom_(index)) {
    made += RenderStretched_(frames_ + made * channels_, static_cast<std::size_t>(border - index));
    if (border == change_.at) {
      MakeChange_();
    } else {
      BeginAnewAt_(border);
    }
    index = border;
  }
  made += RenderStretched_(frames_ + made * channels_, static_cast<std::size_t>(end - index));
  PrepareNext_(end, end + static_cast<long long>(count));
  return made;
}

std::size_t StretchPath::RenderStretched_(float* out, std::size_t count) {
  due_ += static_cast<double>(count) / stream_->GetFactors().scale;
  const double whole = std::floor(due_ + 0.5);
  due_ -= whole;
  const auto made = static_cast<std::size_t>(whole);
  if (levels_ > 0) {
    const std::size_t known = std::clamp(made, known_, level_.GetFrames());
    LevelSeam_(stream_->Peek(known), known);
    levels_ -= std::min(levels_, made);
  }
  stream_->Render(out, made);
  fade_.Apply(out, made);
  level_.See(out, made);
  return made;
}

}  // namespace tesk_audio

#include "suite/midi/how_to_play.h"

#include <algorithm>
#include <utility>

#include "exc/lock/scope_lock.h"
#include "reference_suite/midi/dsp_changes.h"
#include "suite/midi/timeline.h"
#include "suite/midi/transients.h"

namespace {

constexpr double kSlowest = 0.25;
constexpr double kFastest = 4.0;
constexpr double kFastestScanning = 16.0;
constexpr int kMostSemitones = 24;

// The values of one moment with the transients of that moment, the scale not yet limited: its limits are
// asked of a virtual operation, which takes the lock itself.
struct DspValues {
  double scale = 1.0;
  int semitones = 0;
};

DspValues InForce(const DspChange& written, const Transients& transients) {
  const long long semitones = static_cast<long long>(written.semitones) + transients.GetTransposition();
  return {written.scale * transients.GetTempoScale(),
          static_cast<int>(std::clamp<long long>(semitones, -kMostSemitones, kMostSemitones))};
}

}  // namespace

struct HowToPlay::State {
  explicit State(const Transients& t) : transients(t) {}

  DspValues At(unsigned tick) const { return InForce(changes.At(tick), transients); }

  const Transients& transients;
  DspChanges changes;
  unsigned tickIndex = 0;
  unsigned endTickIndex = 0;
  double fastest = kFastest;
  DspValues beforeSeek;
  DspValues beforeAdvance;
};

HowToPlay::HowToPlay(Transients& transients)
    : exc::Lockable("HowToPlay"), state_(std::make_unique<State>(transients)) {}

HowToPlay::~HowToPlay() = default;

void HowToPlay::AdvanceToTickIndex(unsigned tickIndex) {
  exc::ScopeLock lock(*this);
  state_->beforeAdvance = state_->At(state_->tickIndex);
  state_->tickIndex = tickIndex;
}

void HowToPlay::FollowClock(unsigned tickIndex, double /*secondsPerTick*/) {
  AdvanceToTickIndex(tickIndex);
}

unsigned HowToPlay::GetEndTickIndex() {
  exc::ScopeLock lock(*this);
  return state_->endTickIndex;
}

void HowToPlay::Seek(unsigned tickIndex) {
  exc::ScopeLock lock(*this);
  state_->beforeSeek = state_->At(state_->tickIndex);
  state_->tickIndex = tickIndex;
}

void HowToPlay::SetData(const CL::SongLog& log, const TL::Timeline& timeline, unsigned startTickIndex) {
  DspChanges changes(log);
  exc::ScopeLock lock(*this);
  state_->changes = std::move(changes);
  state_->endTickIndex = timeline.GetMidiEndTicks();
  state_->tickIndex = startTickIndex;
  state_->beforeSeek = state_->beforeAdvance = state_->At(startTickIndex);
}

void HowToPlay::SetHighSpeed() {
  exc::ScopeLock lock(*this);
  state_->fastest = kFastestScanning;
}

double HowToPlay::LimitTempoScaleToAllowedRange(double scale) {
  exc::ScopeLock lock(*this);
  // Written so that a NaN comes out as the slowest.
  return scale >= kSlowest ? std::min(scale, state_->fastest) : kSlowest;
}

unsigned HowToPlay::GetTickIndex() {
  exc::ScopeLock lock(*this);
  return state_->tickIndex;
}

unsigned HowToPlay::GetTickIndexOfNextDspEvent() {
  exc::ScopeLock lock(*this);
  return state_->changes.NextAfter(state_->tickIndex);
}

// The lock is not recursive: each query reads under it, gives it up, and limits.

double HowToPlay::GetTempoScaleValue() {
  exc::ScopeLock lock(*this);
  const double scale = state_->At(state_->tickIndex).scale;
  lock.Unlock();
  return LimitTempoScaleToAllowedRange(scale);
}

double HowToPlay::GetTempoScaleValueAtTickIndex(unsigned tickIndex) {
  exc::ScopeLock lock(*this);
  const double scale = state_->At(tickIndex).scale;
  lock.Unlock();
  return LimitTempoScaleToAllowedRange(scale);
}

double HowToPlay::GetPreSeekTempoScale() {
  exc::ScopeLock lock(*this);
  const double scale = state_->beforeSeek.scale;
  lock.Unlock();
  return LimitTempoScaleToAllowedRange(scale);
}

double HowToPlay::GetPreAdvanceTempoScale() {
  exc::ScopeLock lock(*this);
  const double scale = state_->beforeAdvance.scale;
  lock.Unlock();
  return LimitTempoScaleToAllowedRange(scale);
}

int HowToPlay::GetTranspositionValue() {
  exc::ScopeLock lock(*this);
  return state_->At(state_->tickIndex).semitones;
}

int HowToPlay::GetTranspositionValueAtTickIndex(unsigned tickIndex) {
  exc::ScopeLock lock(*this);
  return state_->At(tickIndex).semitones;
}

int HowToPlay::GetPreSeekPitchShift() {
  exc::ScopeLock lock(*this);
  return state_->beforeSeek.semitones;
}

int HowToPlay::GetPreAdvanceTransposition() {
  exc::ScopeLock lock(*this);
  return state_->beforeAdvance.semitones;
}

#include "tests/fakes/scripted_how_to_play.h"

#include <string>

#include "exc/lock/scope_lock.h"
#include "suite/midi/how_to_play.h"
#include "suite/midi/timeline.h"
#include "tests/fakes/journal.h"

namespace fakes::how_to_play {

namespace {

Script script;

}  // namespace

Script& GetScript() {
  return script;
}

}  // namespace fakes::how_to_play

using fakes::how_to_play::script;

namespace {

void Tell(const char* operation, unsigned tickIndex) {
  if (script.writesJournal)
    fakes::Write(std::string("stream.") + operation + " " + std::to_string(tickIndex));
}

}  // namespace

struct HowToPlay::State {};

HowToPlay::HowToPlay(Transients& /*transients*/) : exc::Lockable("HowToPlay") {
  script = fakes::how_to_play::Script();
}
HowToPlay::~HowToPlay() = default;

void HowToPlay::AdvanceToTickIndex(unsigned tickIndex) {
  exc::ScopeLock lock(*this);
  Tell("AdvanceToTickIndex", tickIndex);
  script.tick = tickIndex;
}
void HowToPlay::Seek(unsigned tickIndex) {
  exc::ScopeLock lock(*this);
  Tell("Seek", tickIndex);
  script.tick = tickIndex;
}
void HowToPlay::SetData(const CL::SongLog& /*log*/, const TL::Timeline& /*timeline*/,
                        unsigned startTickIndex) {
  exc::ScopeLock lock(*this);
  Tell("SetData", startTickIndex);
  if (script.onSetData) script.onSetData();
  script.tick = startTickIndex;
}
unsigned HowToPlay::GetTickIndex() {
  exc::ScopeLock lock(*this);
  return script.tick;
}

void HowToPlay::FollowClock(unsigned tickIndex, double /*secondsPerTick*/) {
  Tell("FollowClock", tickIndex);
}
unsigned HowToPlay::GetEndTickIndex() {
  return 0;
}
void HowToPlay::SetHighSpeed() {}
double HowToPlay::LimitTempoScaleToAllowedRange(double scale) {
  return scale;
}

double HowToPlay::GetTempoScaleValue() {
  return script.now.tempoScale;
}
int HowToPlay::GetTranspositionValue() {
  return script.now.transposition;
}
double HowToPlay::GetTempoScaleValueAtTickIndex(unsigned tickIndex) {
  return script.atTick[tickIndex].tempoScale;
}
int HowToPlay::GetTranspositionValueAtTickIndex(unsigned tickIndex) {
  return script.atTick[tickIndex].transposition;
}
double HowToPlay::GetPreSeekTempoScale() {
  return script.beforeSeek.tempoScale;
}
int HowToPlay::GetPreSeekPitchShift() {
  return script.beforeSeek.transposition;
}
double HowToPlay::GetPreAdvanceTempoScale() {
  return script.beforeAdvance.tempoScale;
}
int HowToPlay::GetPreAdvanceTransposition() {
  return script.beforeAdvance.transposition;
}
unsigned HowToPlay::GetTickIndexOfNextDspEvent() {
  return script.nextDspEvent;
}

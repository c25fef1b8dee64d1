#include <algorithm>

#include "Sources/ob_show_control/ob_show_control.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/lock/call_unlocked.h"
#include "exc/lock/scope_lock.h"

namespace {

void Write(double scale, int semitones, long double* tempoScale, int* transposition) {
  *tempoScale = scale;
  *transposition = semitones;
}

}  // namespace

void OBShowControl::GetDspFactorsAtCurrentTickIndex(long double* tempoScale, int* transposition) {
  Write(howToPlay_.GetTempoScaleValue(), howToPlay_.GetTranspositionValue(), tempoScale, transposition);
}

TickIndex OBShowControl::GetTickAtOrBefore_(SampleCount sampleIndex) {
  int samplesToTick = 0;
  const TickIndex tick = samplesTicksConverter_.SamplesToTicksRounded(sampleIndex, &samplesToTick);
  return samplesToTick > 0 ? tick - 1 : tick;
}

void OBShowControl::GetDspFactorsAtCurrentSampleIndex(long double* tempoScale, int* transposition) {
  const TickIndex tick = GetTickAtOrBefore_(GetSampleIndex());
  exc::ScopeLock lock(*this);
  if (tick >= tickIndex_) {
    dspTempoScale_ = howToPlay_.GetTempoScaleValue();
    dspTransposition_ = howToPlay_.GetTranspositionValue();
  } else {
    // The control position is already past a change that the audio has not reached.
    dspTempoScale_ = howToPlay_.GetPreAdvanceTempoScale();
    dspTransposition_ = howToPlay_.GetPreAdvanceTransposition();
  }
  Write(dspTempoScale_, dspTransposition_, tempoScale, transposition);
}

void OBShowControl::GetDspFactorsAt(SampleCount sampleIndex, long double* tempoScale, int* transposition) {
  exc::ScopeLock lock(*this);
  if (sampleIndex == sampleIndex_) {
    Write(howToPlay_.GetTempoScaleValue(), howToPlay_.GetTranspositionValue(), tempoScale, transposition);
    return;
  }
  if (sampleIndex == lastJumpSampleIndex_) {
    // As it was before the jump moved the control stream.
    Write(howToPlay_.GetPreSeekTempoScale(), howToPlay_.GetPreSeekPitchShift(), tempoScale, transposition);
    return;
  }
  TickIndex tick = 0;
  // Lock open: the position may move here.
  // Afterwards: only the control stream's values at `tick` are asked for; nothing read above is reused.
  exc::CallUnlocked(lock, [&] { tick = GetTickAtOrBefore_(sampleIndex); });
  Write(howToPlay_.GetTempoScaleValueAtTickIndex(tick), howToPlay_.GetTranspositionValueAtTickIndex(tick),
        tempoScale, transposition);
}

unsigned OBShowControl::ClipTickIndexToNextDspEvent(unsigned tickIndex) {
  return std::min(tickIndex, howToPlay_.GetTickIndexOfNextDspEvent());
}

#include "Sources/ob_show_control/ob_show_control.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/lock/scope_lock.h"

SampleCount OBShowControl::GetNextCaesuraSampleIndex(SampleCount sampleIndex) {
  unsigned samplesPastTick = 0;
  const TickIndex tick = samplesTicksConverter_.SamplesToTicksInteger(sampleIndex, &samplesPastTick);
  TickIndex caesuraTick = 0;
  {
    exc::ScopeLock lock(*this);
    if (pendingCaesuras_.empty()) return -1;
    caesuraTick = pendingCaesuras_.front().GetTickIndex();
  }
  if (caesuraTick > tick) return samplesTicksConverter_.TicksToSamples(caesuraTick);
  return caesuraTick == tick && samplesPastTick == 0 ? sampleIndex : -1;
}

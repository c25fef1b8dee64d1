#pragma once

#include "Sources/types.h"

// The checks that SamplesToTicksInteger makes on its own result, on plain values, so that each can be seen to
// fail, also those that no tempo map can provoke. They throw exc::ExAssertionError and change nothing.
namespace samples_ticks_converter {

// `sampleCountAtResultTicks`: the first sample of the result tick, counted from the tempo in force.
void RequireResultNotAfterSample(SampleCount sampleCount, SampleCount sampleCountAtResultTicks);

// `checkSampleCount`: the low 32 bits of the result tick converted back. Samples past 4,294,967,295 fail
// here.
void RequireSameSampleBack(unsigned checkSampleCount, SampleCount sampleCountAtResultTicks);

// Says the three values on the console before it throws.
void RequireSampleCountsAddUp(SampleCount sampleCount, unsigned checkSampleCount,
                              SampleCount extraSamplesBeyondResultTicks);

// A remainder of a tick or more, or a NaN, fails.
void RequireRemainderWithinTick(SampleCount extraSamplesBeyondResultTicks, double samplesPerTick);

// `sampleCountAtResultPlusOne`: the low 32 bits of the first sample of the tick after the result.
void RequireNextTickAfterSample(unsigned sampleCountAtResultPlusOne, SampleCount sampleCount);

}  // namespace samples_ticks_converter

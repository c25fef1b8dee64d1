#include "Sources/samples_ticks_converter/conversion_checks.h"

#include "Sources/samples_ticks_converter/sample_math.h"
#include "Sources/samples_ticks_converter/source_path.h"
#include "exc/assertion/require_at.h"
#include "exc/console/cout_buffer.h"

namespace samples_ticks_converter {
namespace {

constexpr char kFunction[] = "SamplesToTicksInteger";

}  // namespace

void RequireResultNotAfterSample(SampleCount sampleCount, SampleCount sampleCountAtResultTicks) {
  EXC_REQUIRE_AT(sampleCount >= sampleCountAtResultTicks, kFunction, kSourcePath, 335);
}

void RequireSameSampleBack(unsigned checkSampleCount, SampleCount sampleCountAtResultTicks) {
  EXC_REQUIRE_AT(checkSampleCount == sampleCountAtResultTicks, kFunction, kSourcePath, 352);
}

void RequireSampleCountsAddUp(SampleCount sampleCount, unsigned checkSampleCount,
                              SampleCount extraSamplesBeyondResultTicks) {
  if (sampleCount != checkSampleCount + extraSamplesBeyondResultTicks) {
    exc::CoutBuffer() << "sampleCount = " << sampleCount << " checkSampleCount = " << checkSampleCount
                      << " extraSamplesBeyondResultTicks = " << extraSamplesBeyondResultTicks << exc::EndlT();
  }
  EXC_REQUIRE_AT(sampleCount == checkSampleCount + extraSamplesBeyondResultTicks, kFunction, kSourcePath,
                 364);
}

void RequireRemainderWithinTick(SampleCount extraSamplesBeyondResultTicks, double samplesPerTick) {
  EXC_REQUIRE_AT(static_cast<double>(extraSamplesBeyondResultTicks) < samplesPerTick, kFunction, kSourcePath,
                 367);
}

void RequireNextTickAfterSample(unsigned sampleCountAtResultPlusOne, SampleCount sampleCount) {
  EXC_REQUIRE_AT(sampleCountAtResultPlusOne > sampleCount, kFunction, kSourcePath, 372);
}

}  // namespace samples_ticks_converter

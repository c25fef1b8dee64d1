#include <cmath>
#include <stdexcept>

#include "Sources/samples_ticks_converter/conversion_checks.h"
#include "Sources/samples_ticks_converter/sample_math.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "Sources/samples_ticks_converter/source_path.h"
#include "exc/assertion/require_at.h"
#include "exc/lock/scope_lock.h"

using samples_ticks_converter::AddSamples;
using samples_ticks_converter::kSourcePath;
using samples_ticks_converter::RoundedSamples;
using samples_ticks_converter::TempoSegment;
using samples_ticks_converter::ToInteger;
using samples_ticks_converter::ToTicks;
namespace checks = samples_ticks_converter;

const TempoSegment& SamplesTicksConverter::FindSegmentBySamples_(SampleCount sampleCount) {
  const TempoSegment* const segment = segments_.FindBySamples(sampleCount);
  if (segment == nullptr) throw std::logic_error("found this->tempoEvents_.begin()");
  return *segment;
}

SampleCount SamplesTicksConverter::ComputeSampleCount_(SampleCount samplesAtEvent, unsigned ticksSinceEvent,
                                                       double secondsPerTick) const {
  const double seconds = secondsPerTick * static_cast<double>(ticksSinceEvent);
  return AddSamples(samplesAtEvent, RoundedSamples(seconds, sampleRate_));
}

SamplesTicksConverter::CountedTick SamplesTicksConverter::Count_(const TempoSegment& segment,
                                                                 unsigned ticksSinceEvent) const {
  return {&segment, ticksSinceEvent,
          ComputeSampleCount_(segment.samples, ticksSinceEvent, segment.secondsPerTick)};
}

SampleCount SamplesTicksConverter::TicksToSamples(TickIndex ticks) {
  exc::ScopeLock lock(*this);
  return TicksToSamples_(ticks, CountedTick());
}

SampleCount SamplesTicksConverter::TicksToSamples_(TickIndex ticks, const CountedTick& counted) {
  if (ticks < audioStart_) return 0;
  const TempoSegment* const segment = segments_.FindByTick(ticks);
  if (segment == nullptr) return 0;
  const unsigned ticksSinceEvent = ticks - segment->tick;
  if (segment == counted.segment && ticksSinceEvent == counted.ticksSinceEvent) return counted.samples;
  return Count_(*segment, ticksSinceEvent).samples;
}

TickIndex SamplesTicksConverter::SamplesToTicksRounded(SampleCount sampleCount, int* roundingErrorSamples) {
  exc::ScopeLock lock(*this);
  const TempoSegment& segment = FindSegmentBySamples_(sampleCount);
  const double sampleDelta = static_cast<double>(sampleCount) - static_cast<double>(segment.samples);
  const double samplesPerTick = segment.samplesPerTick;
  const double exactTicks = sampleDelta / samplesPerTick;
  const double roundedTicks = ::round(exactTicks);
  const double roundingErrorTicks = roundedTicks - exactTicks;
  EXC_REQUIRE_AT(fabs(roundingErrorTicks) < 1.0, "SamplesToTicksRounded", kSourcePath, 228);
  if (roundingErrorSamples != nullptr) {
    *roundingErrorSamples = static_cast<int>(ToInteger(::round(roundingErrorTicks * samplesPerTick)));
  }
  return segment.tick + ToTicks(roundedTicks);
}

TickIndex SamplesTicksConverter::SamplesToTicksInteger(SampleCount sampleCount,
                                                       unsigned* extraSamplesBeyondResultTicks) {
  exc::ScopeLock lock(*this);
  const TempoSegment& segment = FindSegmentBySamples_(sampleCount);
  const double sampleDelta = static_cast<double>(sampleCount) - static_cast<double>(segment.samples);
  const double samplesPerTick = segment.samplesPerTick;
  double resultTicks = ::floor(sampleDelta / samplesPerTick);

  // The first sample of a tick can divide to just below the integer. Tried once, and upwards only.
  const CountedTick next = Count_(segment, ToTicks(resultTicks + 1.0));
  if (next.samples == sampleCount) resultTicks += 1.0;

  const CountedTick result = Count_(segment, ToTicks(resultTicks));
  const SampleCount sampleCountAtResultTicks = result.samples;
  checks::RequireResultNotAfterSample(sampleCount, sampleCountAtResultTicks);
  const SampleCount extraSamples = sampleCount - sampleCountAtResultTicks;
  // Before the checks that follow: it is set also when one of them fails.
  if (extraSamplesBeyondResultTicks != nullptr) {
    *extraSamplesBeyondResultTicks = static_cast<unsigned>(extraSamples);
  }

  // The result is converted back and compared in 32 bits, so that samples past 4,294,967,295 fail here.
  const TickIndex resultTick = segment.tick + ToTicks(resultTicks);
  const auto checkSampleCount = static_cast<unsigned>(TicksToSamples_(resultTick, result));
  checks::RequireSameSampleBack(checkSampleCount, sampleCountAtResultTicks);
  checks::RequireSampleCountsAddUp(sampleCount, checkSampleCount, extraSamples);
  checks::RequireRemainderWithinTick(extraSamples, samplesPerTick);
  checks::RequireNextTickAfterSample(static_cast<unsigned>(TicksToSamples_(resultTick + 1, next)),
                                     sampleCount);
  return resultTick;
}

double SamplesTicksConverter::GetSamplesPerTick(SampleCount sampleCount) {
  exc::ScopeLock lock(*this);
  return FindSegmentBySamples_(sampleCount).samplesPerTick;
}

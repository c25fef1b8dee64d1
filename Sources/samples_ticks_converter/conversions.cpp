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
using samples_ticks_converter::SamplesPerTick;
using samples_ticks_converter::ToInteger;
using samples_ticks_converter::ToTicks;
namespace checks = samples_ticks_converter;

const SamplesTicksConverter::TempoEvents::value_type& SamplesTicksConverter::FindEntryBySamples_(
    SampleCount sampleCount) const {
  auto entry = tempoEvents_.begin();
  while (entry != tempoEvents_.end() && entry->second.Samples() <= sampleCount) ++entry;
  if (entry == tempoEvents_.begin()) throw std::logic_error("found this->tempoEvents_.begin()");
  return *--entry;
}

SampleCount SamplesTicksConverter::ComputeSampleCount_(SampleCount samplesAtEvent, unsigned ticksSinceEvent,
                                                       double secondsPerTick) const {
  const double seconds = secondsPerTick * static_cast<double>(ticksSinceEvent);
  return AddSamples(samplesAtEvent, RoundedSamples(seconds, sampleRate_));
}

SampleCount SamplesTicksConverter::TicksToSamples(TickIndex ticks) {
  exc::ScopeLock lock(*this);
  if (ticks < audioStart_) return 0;
  auto entry = tempoEvents_.upper_bound(ticks);
  if (entry == tempoEvents_.begin()) return 0;
  --entry;
  return ComputeSampleCount_(entry->second.Samples(), ticks - entry->first, entry->second.SecondsPerTick());
}

TickIndex SamplesTicksConverter::SamplesToTicksRounded(SampleCount sampleCount, int* roundingErrorSamples) {
  exc::ScopeLock lock(*this);
  const auto& [tick, tempo] = FindEntryBySamples_(sampleCount);
  const double sampleDelta = static_cast<double>(sampleCount) - static_cast<double>(tempo.Samples());
  const double samplesPerTick = SamplesPerTick(tempo.SecondsPerTick(), sampleRate_);
  const double exactTicks = sampleDelta / samplesPerTick;
  const double roundedTicks = ::round(exactTicks);
  const double roundingErrorTicks = roundedTicks - exactTicks;
  EXC_REQUIRE_AT(fabs(roundingErrorTicks) < 1.0, "SamplesToTicksRounded", kSourcePath, 228);
  if (roundingErrorSamples != nullptr) {
    *roundingErrorSamples = static_cast<int>(ToInteger(::round(roundingErrorTicks * samplesPerTick)));
  }
  return tick + ToTicks(roundedTicks);
}

TickIndex SamplesTicksConverter::SamplesToTicksInteger(SampleCount sampleCount,
                                                       unsigned* extraSamplesBeyondResultTicks) {
  exc::ScopeLock lock(*this);
  const auto& [tick, tempo] = FindEntryBySamples_(sampleCount);
  const double secondsPerTick = tempo.SecondsPerTick();
  const double sampleDelta = static_cast<double>(sampleCount) - static_cast<double>(tempo.Samples());
  const double samplesPerTick = SamplesPerTick(secondsPerTick, sampleRate_);
  double resultTicks = ::floor(sampleDelta / samplesPerTick);

  // The first sample of a tick can divide to just below the integer. Tried once, and upwards only.
  if (ComputeSampleCount_(tempo.Samples(), ToTicks(resultTicks + 1.0), secondsPerTick) == sampleCount) {
    resultTicks += 1.0;
  }

  const SampleCount sampleCountAtResultTicks =
      ComputeSampleCount_(tempo.Samples(), ToTicks(resultTicks), secondsPerTick);
  checks::RequireResultNotAfterSample(sampleCount, sampleCountAtResultTicks);
  const SampleCount extraSamples = sampleCount - sampleCountAtResultTicks;
  // Before the checks that follow: it is set also when one of them fails.
  if (extraSamplesBeyondResultTicks != nullptr) {
    *extraSamplesBeyondResultTicks = static_cast<unsigned>(extraSamples);
  }

  // The result is converted back and compared in 32 bits, so that samples past 4,294,967,295 fail here.
  const TickIndex resultTick = tick + ToTicks(resultTicks);
  const auto checkSampleCount = static_cast<unsigned>(TicksToSamples(resultTick));
  checks::RequireSameSampleBack(checkSampleCount, sampleCountAtResultTicks);
  checks::RequireSampleCountsAddUp(sampleCount, checkSampleCount, extraSamples);
  checks::RequireRemainderWithinTick(extraSamples, samplesPerTick);
  checks::RequireNextTickAfterSample(static_cast<unsigned>(TicksToSamples(resultTick + 1)), sampleCount);
  return resultTick;
}

double SamplesTicksConverter::GetSamplesPerTick(SampleCount sampleCount) {
  exc::ScopeLock lock(*this);
  return SamplesPerTick(FindEntryBySamples_(sampleCount).second.SecondsPerTick(), sampleRate_);
}

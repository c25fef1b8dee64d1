#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/console/cout_buffer.h"
#include "exc/lock/scope_lock.h"

namespace {

// The listing's limit, whatever its name says.
constexpr int kMostListed = 100;

}  // namespace

void SamplesTicksConverter::RegisterElapsedSampleCount(SampleCount elapsedSampleCount, TickIndex tickIndex) {
  exc::ScopeLock lock(*this);
  tickIndexByElapsedSampleCount_[elapsedSampleCount] = tickIndex;
}

void SamplesTicksConverter::SetElapsedSampleCountAtAudioStart(SampleCount elapsedSampleCount) {
  exc::ScopeLock lock(*this);
  tickIndexByElapsedSampleCount_.clear();
  tickIndexByElapsedSampleCount_[elapsedSampleCount] = audioStart_;
}

void SamplesTicksConverter::ResetElapsedSampleCounts() {
  exc::ScopeLock lock(*this);
  tickIndexByElapsedSampleCount_.clear();
}

TickIndex SamplesTicksConverter::GetTickIndexFromElapsedSampleCount(SampleCount elapsedSampleCount) {
  const SampleCount elapsed = elapsedSampleCount < 0 ? 0 : elapsedSampleCount;
  exc::ScopeLock lock(*this);
  auto registration = tickIndexByElapsedSampleCount_.upper_bound(elapsed);
  if (registration == tickIndexByElapsedSampleCount_.begin()) {
    exc::CoutBuffer()
        << "[Warning] SamplesTicksConverter::tickIndexByElapsedSampleCount_ is empty. Returning 0."
        << exc::EndlT();
    return 0;
  }
  --registration;
  const SampleCount samplesSince = elapsed - registration->first;
  return SamplesToTicksRounded(TicksToSamples(registration->second) + samplesSince, nullptr);
}

void SamplesTicksConverter::ResetForRecovery(TickIndex tickIndex, SampleCount elapsedSampleCount) {
  exc::ScopeLock lock(*this);
  tickIndexByElapsedSampleCount_.erase(tickIndexByElapsedSampleCount_.upper_bound(elapsedSampleCount),
                                       tickIndexByElapsedSampleCount_.end());
  tickIndexByElapsedSampleCount_[elapsedSampleCount] = tickIndex;
}

void SamplesTicksConverter::PrintLast20(exc::CoutBuffer& out) {
  out << "SamplesTicksConverter::PrintLast20()\n";
  exc::ScopeLock lock(*this);
  auto registration = tickIndexByElapsedSampleCount_.end();
  for (int i = 0; i < kMostListed && registration != tickIndexByElapsedSampleCount_.begin(); ++i)
    --registration;
  for (; registration != tickIndexByElapsedSampleCount_.end(); ++registration) {
    out << "    " << registration->first << ", " << registration->second << "\n";
  }
}

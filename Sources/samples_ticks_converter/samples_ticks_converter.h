#pragma once

#include <map>

#include "Sources/samples_ticks_converter/combined_tempo.h"
#include "Sources/samples_ticks_converter/tempo_segments.h"
#include "Sources/types.h"
#include "exc/lock/rlockable.h"

namespace exc {
class CoutBuffer;
}
namespace tesk_midi {
class SongData;
}

// The one authority that relates the audio position of the current song to its MIDI position.
//
// Units      tick: MIDI ticks from the start of the song. sample: audio frames from the first frame of the
//            decoded audio, unscaled (as recorded, whatever the tempo scale in force). elapsed: samples
//            handed to the output since playback was set up, whatever jumps lay between; it only grows.
// Origin     sample 0 is the first frame of tick GetAudioStart().
// Threads    ANY. Every public operation takes this object's own recursive lock throughout; hold it yourself
//            around two conversions that must see the same map.
// Render     the conversions allocate nothing (but for the text of a failed assertion) and find the
//            tempo in force in an array with one entry per tempo change. RegisterElapsedSampleCount inserts
//            into a map, so it may allocate.
// Arithmetic which step is double and which long double is a contract: see sample_math.h.
class SamplesTicksConverter : public exc::RLockable {
 public:
  SamplesTicksConverter();
  ~SamplesTicksConverter() override;

  // ---- tempo_map.cpp -------------------------------------------------------------------------

  // Rebuilds the map for a song whose audio begins at tick `audioStart`. Of several tempos at one tick the
  // last holds. Throws std::logic_error when the song has no tempo at tick 0.
  void SetData(const tesk_midi::SongData& song, TickIndex audioStart);

  // Frames per second of the decoded audio. Recomputes the map when the rate has changed (a NaN always has).
  // Throws std::out_of_range when the map has no entry at tick 0 although the audio starts later.
  void SetSampleRate(long double rate);

  TickIndex GetAudioStart();

  // ---- conversions.cpp -----------------------------------------------------------------------

  // First sample of `ticks`. 0 for ticks before the audio start and for an empty map.
  SampleCount TicksToSamples(TickIndex ticks);

  // The nearest tick. `roundingErrorSamples` (may be null) receives how far it begins after `sampleCount`;
  // negative: before. Throws std::logic_error for a sample before the map, and on an empty map;
  // exc::ExAssertionError when the tempo in force has no length.
  TickIndex SamplesToTicksRounded(SampleCount sampleCount, int* roundingErrorSamples = nullptr);

  // The tick that contains `sampleCount`. `extraSamplesBeyondResultTicks` (may be null) receives how far the
  // sample lies beyond its start. Throws std::logic_error likewise; exc::ExAssertionError when the map
  // disagrees with itself, which it does for samples past 4,294,967,295 and where ticks are shorter than
  // samples.
  TickIndex SamplesToTicksInteger(SampleCount sampleCount, unsigned* extraSamplesBeyondResultTicks = nullptr);

  // Samples per tick of the tempo segment that contains `sampleCount`. Throws std::logic_error like the
  // others.
  double GetSamplesPerTick(SampleCount sampleCount);

  // ---- elapsed_registry.cpp ------------------------------------------------------------------

  // From `elapsedSampleCount` on, `tickIndex` and what follows it is heard. A later call for the same count
  // replaces the earlier one. The registry grows by one entry a read until it is cleared.
  void RegisterElapsedSampleCount(SampleCount elapsedSampleCount, TickIndex tickIndex);

  // Clears the registry and registers the audio start at `elapsedSampleCount`.
  void SetElapsedSampleCountAtAudioStart(SampleCount elapsedSampleCount);

  void ResetElapsedSampleCounts();

  // The tick nearest to what is heard at `elapsedSampleCount`; negative counts as 0. Without a registration
  // at or before it: a warning line on the console, and 0. Throws like SamplesToTicksRounded.
  TickIndex GetTickIndexFromElapsedSampleCount(SampleCount elapsedSampleCount);

  // Forgets what was registered after `elapsedSampleCount` and registers `tickIndex` there.
  void ResetForRecovery(TickIndex tickIndex, SampleCount elapsedSampleCount);

  // Lists the last 100 registrations, ascending. The heading is written before the lock is taken.
  void PrintLast20(exc::CoutBuffer& out);

 private:
  using TempoEvents = std::map<TickIndex, CombinedTempo>;

  void CreateTempoEventsMap_() EXC_HOLDS(this);
  void FillInCarriedTempos_() EXC_HOLDS(this);
  void CountSamples_() EXC_HOLDS(this);
  // Must follow every change of the map or the rate, also one that fails half-way.
  void IndexSegments_() EXC_HOLDS(this);

  // The last entry whose samples are not greater than `sampleCount`. Throws std::logic_error when there is
  // none.
  const samples_ticks_converter::TempoSegment& FindSegmentBySamples_(SampleCount sampleCount) EXC_HOLDS(this);

  // Arithmetic only: takes no lock, reads sampleRate_.
  SampleCount ComputeSampleCount_(SampleCount samplesAtEvent, unsigned ticksSinceEvent,
                                  double secondsPerTick) const EXC_HOLDS(this);

  // A tick, by its place in a tempo segment, and its first sample.
  struct CountedTick {
    const samples_ticks_converter::TempoSegment* segment = nullptr;
    unsigned ticksSinceEvent = 0;
    SampleCount samples = 0;
  };
  CountedTick Count_(const samples_ticks_converter::TempoSegment& segment, unsigned ticksSinceEvent) const
      EXC_HOLDS(this);
  // TicksToSamples, which is spared the arithmetic where `ticks` is `counted`.
  SampleCount TicksToSamples_(TickIndex ticks, const CountedTick& counted) EXC_HOLDS(this);

  TickIndex audioStart_ EXC_GUARDED_BY(this) = 0;
  long double sampleRate_ EXC_GUARDED_BY(this) = 44100.0L;
  TempoEvents tempoEvents_ EXC_GUARDED_BY(this);
  std::map<SampleCount, TickIndex> tickIndexByElapsedSampleCount_ EXC_GUARDED_BY(this);
  samples_ticks_converter::TempoSegments segments_ EXC_GUARDED_BY(this);  // tempoEvents_ for the conversions
};

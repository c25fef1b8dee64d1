#pragma once

#include <memory>
#include <string>

#include "Sources/types.h"

class SamplesTicksConverter;
namespace tesk_midi {
class SongData;
}

namespace orbel::host {

// One place of a song in every unit.
struct Place {
  std::string position;    // "17.3.120": bar, beat, ticks past the beat
  TickIndex tick = 0;      // the tick that contains the sample
  SampleCount sample = 0;  // frames from the first frame of the audio; 0 before the audio starts
  double seconds = 0.0;    // the same in seconds
};

// Converts between the ticks, samples and seconds of one song, with the engine's own arithmetic.
// Threads    one at a time; the song outlives the clock.
class SongClock {
 public:
  // `sampleRateHz`: frames per second of the audio that the samples count.
  SongClock(const tesk_midi::SongData& song, double sampleRateHz);
  ~SongClock();
  SongClock(const SongClock&) = delete;
  SongClock& operator=(const SongClock&) = delete;

  // First sample of a tick; 0 for ticks before the audio starts.
  SampleCount TickToSample(TickIndex tick) const;
  // The tick that contains a sample, which is not negative.
  TickIndex SampleToTick(SampleCount sample) const;
  double SampleToSeconds(SampleCount sample) const;
  double TickToSeconds(TickIndex tick) const { return SampleToSeconds(TickToSample(tick)); }

  Place PlaceOfTick(TickIndex tick) const;
  Place PlaceOfSample(SampleCount sample) const;
  // "17", "17.3", "17.3.120", "end", "tick:N", "sample:N", "time:M:SS.mmm". Throws Failure, which names what
  // was asked for, when there is no such place in the song.
  Place Find(const std::string& text) const;

  // Where playback ends: the audio end, or the end of the MIDI.
  TickIndex GetEndTick() const;
  TickIndex GetStartTick() const;
  double GetSampleRateHz() const { return sampleRateHz_; }

 private:
  Place InsideSong_(SampleCount sample, const std::string& text) const;

  const tesk_midi::SongData& song_;
  double sampleRateHz_;
  std::unique_ptr<SamplesTicksConverter> converter_;
};

}  // namespace orbel::host

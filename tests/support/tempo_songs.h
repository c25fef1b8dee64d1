#pragma once

#include <utility>
#include <vector>

#include "suite/midi/song_data.h"

// Songs that are nothing but their tempos, and where they begin and end.
namespace test_support {

struct TempoAt {
  unsigned tick;
  unsigned microsecondsPerQuarter;
};

struct SongTicks {
  unsigned midiEnd = 0;
  unsigned audioStart = 0;
  unsigned audioEnd = 0;
};

// At this PPQ a tempo of N microseconds per quarter note is a tick time of N nanoseconds: 500,000 gives
// 0.0005 s, which is 22.05 samples at 44,100 frames per second and 24 at 48,000.
inline constexpr unsigned short kPpq = 1000;

inline tesk_midi::SongData SongWithTempos(const std::vector<TempoAt>& tempos, unsigned short ppq = kPpq,
                                          const SongTicks& ticks = {}) {
  cmn::SequenceTemplate<TL::Tempo> sequence;
  for (const TempoAt& tempo : tempos) sequence.Add(TL::Tempo(tempo.tick, tempo.microsecondsPerQuarter));
  TL::Timeline timeline;
  timeline.SetTempos(std::move(sequence));
  timeline.SetMidiEndTicks(ticks.midiEnd);
  timeline.SetAudioStartTicks(ticks.audioStart);
  timeline.SetAudioEndTicks(ticks.audioEnd);
  return tesk_midi::SongData("1", "Song", ppq, std::move(timeline));
}

}  // namespace test_support

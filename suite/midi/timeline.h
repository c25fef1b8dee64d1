#pragma once

#include <utility>

#include "suite/core/sequence.h"
#include "suite/core/timeline_events.h"

namespace TL {

// A place as musicians say it: bar, beat from 1, ticks past the beat from 0.
struct BarBeatTick {
  int bar = 1;
  unsigned beat = 1;
  unsigned tick = 0;
};

// What a song's MIDI says of its time: tempos, meters, keys, bars, pages, and where song and audio begin and
// end. Plain data, filled once while the show is loaded; read by any thread afterwards without a lock.
class Timeline {
 public:
  // At least one tempo and one meter, the first of each at tick 0; ascending ticks.
  const cmn::SequenceTemplate<Tempo>& GetTempos() const { return tempos_; }
  const cmn::SequenceTemplate<Meter>& GetMeters() const { return meters_; }
  const cmn::SequenceTemplate<Key>& GetKeys() const { return keys_; }
  const cmn::SequenceTemplate<PageNum>& GetPageNums() const { return pageNums_; }
  const cmn::SequenceTemplate<BarsBeats>& GetBarsBeats() const { return barsBeats_; }

  // Ticks. The end of the MIDI is greater than 0; an audio end of 0 means that none is given.
  unsigned GetMidiEndTicks() const { return midiEndTicks_; }
  unsigned GetAudioStartTicks() const { return audioStartTicks_; }
  unsigned GetAudioEndTicks() const { return audioEndTicks_; }

  void SetTempos(cmn::SequenceTemplate<Tempo> tempos) { tempos_ = std::move(tempos); }
  void SetMeters(cmn::SequenceTemplate<Meter> meters) { meters_ = std::move(meters); }
  void SetKeys(cmn::SequenceTemplate<Key> keys) { keys_ = std::move(keys); }
  void SetPageNums(cmn::SequenceTemplate<PageNum> pages) { pageNums_ = std::move(pages); }
  void SetBarsBeats(cmn::SequenceTemplate<BarsBeats> bars) { barsBeats_ = std::move(bars); }
  void SetMidiEndTicks(unsigned ticks) { midiEndTicks_ = ticks; }
  void SetAudioStartTicks(unsigned ticks) { audioStartTicks_ = ticks; }
  void SetAudioEndTicks(unsigned ticks) { audioEndTicks_ = ticks; }

  // The place of a tick; past the end of the last bar, bars like it are counted on, so that a song that ends
  // on a bar line ends at "49.1.0" and not in a fifth beat. Logarithmic.
  BarBeatTick GetBarBeatTick(unsigned tick) const;

  // The first bar line, or beat, at or after `tick`; the end of the MIDI when there is none.
  unsigned GetBarLineAtOrAfter(unsigned tick) const;
  unsigned GetBeatAtOrAfter(unsigned tick) const;
  // The start of the bar, or of the beat, that contains `tick`.
  unsigned GetBarStart(unsigned tick) const;
  unsigned GetBeatStart(unsigned tick) const;

 private:
  cmn::SequenceTemplate<Tempo> tempos_;
  cmn::SequenceTemplate<Meter> meters_;
  cmn::SequenceTemplate<Key> keys_;
  cmn::SequenceTemplate<PageNum> pageNums_;
  cmn::SequenceTemplate<BarsBeats> barsBeats_;
  unsigned midiEndTicks_ = 0;
  unsigned audioStartTicks_ = 0;
  unsigned audioEndTicks_ = 0;
};

}  // namespace TL

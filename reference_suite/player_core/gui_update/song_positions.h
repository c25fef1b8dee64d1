#pragma once

#include <vector>

#include "suite/core/gui_dispatcher.h"

class HowToPlay;
namespace tesk_midi {
class SongData;
}

namespace gui {

// Says of every tick of a song what a listener wants to know about it. Looking a tick up is logarithmic in
// the song's events. No lock of its own.
class SongPositions {
 public:
  SongPositions() = default;
  // `song` outlives this object; null: no song.
  explicit SongPositions(const tesk_midi::SongData* song);

  bool HasSong() const { return song_ != nullptr; }
  // Without a song: the tick alone.
  notify::PositionUpdate GetPosition(unsigned tick) const;
  // With the tempo scale and the transposition in force at the tick.
  notify::PositionUpdate GetPosition(unsigned tick, HowToPlay& howToPlay) const;

 private:
  struct TempoSegment {
    unsigned tick = 0;
    double seconds = 0.0;  // from tick 0 to `tick`
    double secondsPerTick = 0.0;
    double quartersPerMinute = 0.0;
  };

  const TempoSegment& GetSegment_(unsigned tick) const;
  double GetSeconds_(unsigned tick) const;

  const tesk_midi::SongData* song_ = nullptr;
  std::vector<TempoSegment> segments_;  // never empty with a song
};

}  // namespace gui

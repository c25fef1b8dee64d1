#include "reference_suite/player_core/bar_grid.h"

#include <algorithm>

#include "suite/midi/song_data.h"

namespace player_core {

namespace {

TL::BarsBeats GetBarAt(const tesk_midi::SongData& song, unsigned tick) {
  const cmn::SequenceTemplate<TL::BarsBeats>& bars = song.GetTimeline().GetBarsBeats();
  const auto next =
      std::upper_bound(bars.begin(), bars.end(), tick,
                       [](unsigned wanted, const TL::BarsBeats& bar) { return wanted < bar.abs_time(); });
  if (next == bars.begin()) return TL::BarsBeats(0, 1, 4, song.GetPulsesPerQuarterNote());
  return *std::prev(next);
}

}  // namespace

unsigned GetTicksPerBeat(const tesk_midi::SongData& song, unsigned tick) {
  return GetBarAt(song, tick).GetTicksPerBeat();
}

unsigned GetTicksPerBar(const tesk_midi::SongData& song, unsigned tick) {
  const TL::BarsBeats bar = GetBarAt(song, tick);
  return bar.GetBeats() * bar.GetTicksPerBeat();
}

}  // namespace player_core

#include "tests/scenarios/song_plan.h"

#include <algorithm>
#include <sstream>

namespace scenarios {

unsigned SongPlan::Multiplier() const {
  unsigned slowest = 0;
  for (const TempoPlan& tempo : tempos) slowest = std::max(slowest, tempo.microsecondsPerQuarter);
  unsigned multiplier = 1;
  while (division * multiplier < 480 || slowest > 2500ULL * division * multiplier) ++multiplier;
  return multiplier;
}

unsigned SongPlan::PlaybackEnd() const {
  const unsigned end = audioEnd != 0 ? audioEnd : midiEnd;
  const bool loopEndsThere =
      std::any_of(loops.begin(), loops.end(), [end](const LoopPlan& loop) { return loop.to == end; });
  return loopEndsThere ? end + 2 : end;
}

std::string Describe(const SongPlan& song) {
  std::ostringstream out;
  out << "division " << song.division << " ppq " << song.Ppq() << " meter " << song.meter.beats << "/"
      << song.meter.unit << " midi end " << song.midiEnd << " audio " << song.audioStart << ".."
      << song.audioEnd << " frames " << song.audioFrames << (song.attacca ? " attacca" : "") << "\n";
  for (const TempoPlan& tempo : song.tempos) {
    out << "  tempo " << tempo.tick << " " << tempo.microsecondsPerQuarter << "\n";
  }
  for (const LoopPlan& loop : song.loops) {
    out << "  loop " << loop.from << ".." << loop.to << " kind " << static_cast<int>(loop.kind) << " passes "
        << loop.passes << " exit " << static_cast<int>(loop.exit) << "\n";
  }
  for (const CutPlan& cut : song.cuts) out << "  cut " << cut.from << " -> " << cut.to << "\n";
  for (unsigned tick : song.caesuras) out << "  caesura " << tick << "\n";
  return out.str();
}

}  // namespace scenarios

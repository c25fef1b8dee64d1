#include "tests/scenarios/random_song.h"

#include <algorithm>
#include <array>

#include "tests/scenarios/sample_map.h"

namespace scenarios {
namespace {

// Ticks of any length that can be played, or of half a frame to two.
void AddTempos(Dice* dice, unsigned rate, SongPlan* song) {
  const unsigned count = dice->Between(1, 6);
  const auto ofAFrame = static_cast<unsigned>(1000000ULL * song->division / rate);
  const bool isFine = song->division > 1000;
  for (unsigned i = 0; i < count; ++i) {
    const unsigned tempo =
        isFine ? dice->Between(ofAFrame / 2 + 1, 2 * ofAFrame) : dice->Between(150000, 2000000);
    // Half a second a quarter note holds before a first tempo that comes later.
    const bool isFirst = i == 0 && (!dice->OneIn(5) || ofAFrame > 1000000);
    song->tempos.push_back({isFirst ? 0u : 1u, tempo});
  }
  // The multiplier follows from the tempos, and the ticks from the multiplier.
  const unsigned multiplier = song->Multiplier();
  double slowest = 0;
  for (const TempoPlan& tempo : song->tempos) slowest = std::max(slowest, tempo.microsecondsPerQuarter / 1e6);
  const double quarters = (0.5 + 0.25 * dice->Between(0, 8)) / std::max(slowest * 0.6, 0.3);
  const unsigned fileEnd = std::max(16u, static_cast<unsigned>(quarters * song->division));
  for (TempoPlan& tempo : song->tempos) {
    if (tempo.tick != 0) tempo.tick = dice->Between(1, fileEnd - 1) * multiplier;
  }
  std::sort(song->tempos.begin(), song->tempos.end(),
            [](const TempoPlan& a, const TempoPlan& b) { return a.tick < b.tick; });
  song->midiEnd = fileEnd * multiplier;
}

// A tempo so fast that no frame falls into it, as some programs write it for a single tick.
void AddMoment(Dice* dice, SongPlan* song) {
  const unsigned tick = dice->Between(1, song->midiEnd - 8);
  const unsigned behind = tick + dice->Between(1, 4);
  unsigned held = 500000;
  for (const TempoPlan& tempo : song->tempos) {
    if (tempo.tick <= behind) held = tempo.microsecondsPerQuarter;
  }
  std::erase_if(song->tempos,
                [&](const TempoPlan& tempo) { return tempo.tick >= tick && tempo.tick <= behind; });
  song->tempos.push_back({tick, 1});
  song->tempos.push_back({behind, held});
  std::sort(song->tempos.begin(), song->tempos.end(),
            [](const TempoPlan& a, const TempoPlan& b) { return a.tick < b.tick; });
}

// Most songs are shorter than a bar of 4/4.
void AddMeter(Dice* dice, SongPlan* song) {
  static constexpr std::array<MeterPlan, 5> kMeters = {{{4, 4}, {1, 8}, {3, 16}, {1, 16}, {1, 32}}};
  const MeterPlan meter = kMeters[dice->Between(0, kMeters.size() - 1)];
  if (4 * song->Ppq() % meter.unit == 0) song->meter = meter;
}

void AddLoops(Dice* dice, unsigned low, unsigned high, int depth, SongPlan* song) {
  unsigned at = low;
  for (unsigned i = dice->Between(0, depth == 0 ? 3 : 2); i > 0 && high - at > 2; --i) {
    const unsigned from = dice->OneIn(3) ? at : dice->Between(at, high - 2);
    unsigned to = dice->OneIn(3) ? high : dice->Between(from + 1, high);
    if (dice->OneIn(5)) to = std::min(high, from + dice->Between(1, 3));
    if (from == low && to == high && depth > 0) continue;  // the range of the loop around it
    LoopPlan loop{from, to, static_cast<LoopKind>(dice->Between(0, 2)), static_cast<int>(dice->Between(2, 4)),
                  static_cast<Exit>(dice->Between(0, 2))};
    song->loops.push_back(loop);
    if (depth < 3) AddLoops(dice, from, to, depth + 1, song);
    at = to;
  }
}

// A tick for a cue: anywhere, or on or beside a cue that is there already.
unsigned CueTick(Dice* dice, const SongPlan& song, unsigned end) {
  unsigned tick = dice->Between(song.audioStart, end);
  if (!song.loops.empty() && dice->OneIn(2)) {
    const LoopPlan& loop = song.loops[dice->Between(0, static_cast<unsigned>(song.loops.size()) - 1)];
    tick = (dice->OneIn(2) ? loop.from : loop.to) + dice->Between(0, 2);
    if (tick > song.audioStart && dice->OneIn(3)) --tick;
  }
  return std::clamp(tick, song.audioStart, end);
}

void AddCutsAndCaesuras(Dice* dice, SongPlan* song) {
  const unsigned end = song->audioEnd != 0 ? song->audioEnd : song->midiEnd;
  for (unsigned i = dice->Between(0, 2); i > 0; --i) {
    const unsigned from = CueTick(dice, *song, end - 2);
    const unsigned to = dice->OneIn(4) ? end : CueTick(dice, *song, end);
    const bool taken = std::any_of(song->cuts.begin(), song->cuts.end(),
                                   [from](const CutPlan& cut) { return cut.from == from; });
    if (!taken && to > from) song->cuts.push_back({from, to});
  }
  for (unsigned i = dice->Between(0, 3); i > 0; --i) {
    const unsigned tick = dice->OneIn(6) ? end : CueTick(dice, *song, end);
    if (std::find(song->caesuras.begin(), song->caesuras.end(), tick) == song->caesuras.end()) {
      song->caesuras.push_back(tick);
    }
  }
  std::sort(song->caesuras.begin(), song->caesuras.end());
  // An attacca lands on the start like a seek: it stops at a caesura there even though a cut comes first.
  const bool cutAtStart = std::any_of(song->cuts.begin(), song->cuts.end(),
                                      [song](const CutPlan& cut) { return cut.from == song->audioStart; });
  if (cutAtStart) std::erase(song->caesuras, song->audioStart);
}

bool HasAFrame(const SampleMap& map, unsigned tick) {
  return map.FirstSample(tick + 1) > map.FirstSample(tick);
}

// The next tick on which the song can end.
unsigned EndFrom(const SongPlan& song, unsigned rate, unsigned tick) {
  const SampleMap map(song, rate);
  while (!HasAFrame(map, tick)) ++tick;
  return tick;
}

// Whatever has to stop on a tick that begins on the frame of the next one is refused when a show is opened.
void TakeOutWhatIsRefused(unsigned rate, SongPlan* song) {
  const SampleMap map(*song, rate);
  const auto canStop = [&](unsigned stop) {
    if (stop <= song->audioStart) return true;
    for (unsigned tick = std::max(song->audioStart + 2, stop) - 2; tick <= stop; ++tick) {
      if (!HasAFrame(map, tick)) return false;
    }
    return true;
  };
  const unsigned end = song->audioEnd != 0 ? song->audioEnd : song->midiEnd;
  std::erase_if(song->loops, [&](const LoopPlan& loop) {
    return !canStop(loop.to) || (loop.to == end && !HasAFrame(map, end + 2));
  });
  for (LoopPlan& loop : song->loops) {
    const unsigned line = loop.exit == Exit::Bar ? song->BarTicks() : song->BeatTicks();
    for (unsigned tick = loop.from - loop.from % line + line; tick < loop.to; tick += line) {
      if (!canStop(tick)) loop.exit = Exit::End;
    }
  }
  std::erase_if(song->cuts, [&](const CutPlan& cut) { return !canStop(cut.from); });
  std::erase_if(song->caesuras, [&](unsigned tick) { return !canStop(tick); });
}

}  // namespace

SongPlan RandomSong(Dice* dice, unsigned rate) {
  static constexpr std::array<unsigned, 16> kDivisions = {24,  77,  96,   120,   192,   333,   384,   480,
                                                          500, 960, 1000, 12000, 15360, 24000, 30720, 32767};
  SongPlan song;
  song.division = kDivisions[dice->Between(0, kDivisions.size() - 1)];
  AddTempos(dice, rate, &song);
  if (song.Multiplier() == 1 && dice->OneIn(4)) AddMoment(dice, &song);
  AddMeter(dice, &song);
  if (dice->OneIn(2)) song.audioStart = dice->Between(1, song.midiEnd / 4);
  song.midiEnd = EndFrom(song, rate, song.midiEnd);
  if (dice->OneIn(3)) song.audioEnd = dice->Between(song.midiEnd - song.midiEnd / 4, song.midiEnd - 1);
  if (song.audioEnd != 0) song.audioEnd = EndFrom(song, rate, song.audioEnd);
  if (song.audioEnd == song.midiEnd) song.audioEnd = 0;
  const unsigned end = song.audioEnd != 0 ? song.audioEnd : song.midiEnd;
  AddLoops(dice, song.audioStart, end, 0, &song);
  AddCutsAndCaesuras(dice, &song);
  TakeOutWhatIsRefused(rate, &song);
  song.attacca = dice->OneIn(3);

  const long long needed = SampleMap(song, rate).FirstSample(song.PlaybackEnd());
  song.audioFrames =
      dice->OneIn(4) ? std::max(1LL, needed - dice->Between(1, 5000)) : needed + dice->Between(0, 99);
  return song;
}

}  // namespace scenarios

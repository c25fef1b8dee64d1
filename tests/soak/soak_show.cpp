#include "tests/soak/soak_show.h"

namespace soak {

using scenarios::Exit;
using scenarios::LoopKind;
using scenarios::SongPlan;

SongPlan PlainSong(unsigned beats) {
  SongPlan song;
  song.division = kPpq;
  song.tempos = {{0, 250000}};
  song.midiEnd = beats * kPpq;
  song.audioFrames = FirstSample(song.midiEnd) + 100;
  return song;
}

std::vector<SongPlan> Songs() {
  std::vector<SongPlan> songs = {PlainSong(120), PlainSong(240), PlainSong(160), PlainSong(120),
                                 PlainSong(200)};
  songs[0].attacca = true;
  songs[1].loops = {{40 * kPpq, 48 * kPpq, LoopKind::Vamp, 0, Exit::Bar},
                    {100 * kPpq, 116 * kPpq, LoopKind::Repeat, 3, Exit::End}};
  songs[2].caesuras = {30 * kPpq, 90 * kPpq + 7};
  songs[2].attacca = true;
  songs[3].cuts = {{50 * kPpq + 11, 70 * kPpq}};
  songs[4].loops = {{8 * kPpq, 16 * kPpq, LoopKind::Vamp, 0, Exit::End}};
  long long first = 1;
  for (SongPlan& song : songs) {
    song.firstValue = first;
    // The values of a song need not differ from another's by more than this to tell them apart.
    first += 1'000'003;
  }
  return songs;
}

}  // namespace soak

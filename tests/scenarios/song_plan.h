#pragma once

#include <string>
#include <vector>

// A song as a test writes it: what goes into its MIDI file, its change log and its audio. All ticks are ticks
// of the song as loaded, so `division` times `Multiplier()` is its PPQ.
namespace scenarios {

enum class LoopKind { Vamp, Repeat, Safety };
enum class Exit { End, Bar, Beat };

struct TempoPlan {
  unsigned tick = 0;
  unsigned microsecondsPerQuarter = 500000;
};

struct LoopPlan {
  unsigned from = 0;
  unsigned to = 0;
  LoopKind kind = LoopKind::Repeat;
  int passes = 2;  // of a repeat, in all
  Exit exit = Exit::End;
};

struct CutPlan {
  unsigned from = 0;
  unsigned to = 0;
};

struct MeterPlan {
  unsigned beats = 4;
  unsigned unit = 4;  // the denominator; a beat is a whole number of ticks
};

struct SongPlan {
  unsigned division = 480;  // of the MIDI file
  MeterPlan meter;
  std::vector<TempoPlan> tempos;
  unsigned midiEnd = 0;
  unsigned audioStart = 0;
  unsigned audioEnd = 0;  // 0: none given
  std::vector<LoopPlan> loops;
  std::vector<CutPlan> cuts;
  std::vector<unsigned> caesuras;
  bool attacca = false;
  long long audioFrames = 0;
  long long firstValue = 0;  // frame i of the audio holds firstValue + i

  // The smallest whole multiple of the division that gives a PPQ of at least 480 and no tick longer than 2.5
  // ms.
  unsigned Multiplier() const;
  unsigned Ppq() const { return division * Multiplier(); }
  unsigned BeatTicks() const { return 4 * Ppq() / meter.unit; }
  unsigned BarTicks() const { return meter.beats * BeatTicks(); }
  // The end for playback: two ticks later when a loop ends on it, so that the end is still ahead there.
  unsigned PlaybackEnd() const;
};

std::string Describe(const SongPlan& song);

}  // namespace scenarios

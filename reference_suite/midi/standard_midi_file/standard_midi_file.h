#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tesk_midi {

// What a show needs of a Standard MIDI File, as it stands in the file: nothing is added, scaled or made
// whole.
//
// Units      tick: MIDI ticks from the start of the song at the file's own division.
// Order      each sequence in tick order; events of one tick in track order, those of one track as written.
// Threads    plain data.

struct SmfTempo {
  std::uint32_t tick = 0;
  std::uint32_t microsecondsPerQuarter = 0;  // 1 to 16,777,215
};

struct SmfMeter {
  std::uint32_t tick = 0;
  unsigned numerator = 0;    // 1 to 255
  unsigned denominator = 0;  // the note value itself: 1, 2, 4, 8, 16, 32 or 64
};

struct SmfKey {
  std::uint32_t tick = 0;
  int sharps = 0;  // -7 (flats) to 7 (sharps)
  bool minor = false;
};

struct SmfMarker {
  std::uint32_t tick = 0;
  std::string name;  // the bytes of the file, in whatever encoding it was written
};

struct StandardMidiFile {
  unsigned format = 0;    // 0 or 1
  unsigned division = 0;  // ticks per quarter note, 1 to 32,767

  // May be empty, and may begin later than tick 0: then 500,000 microseconds hold until the first.
  std::vector<SmfTempo> tempos;
  std::vector<SmfMeter> meters;
  std::vector<SmfKey> keys;
  std::vector<SmfMarker> markers;

  std::uint32_t endTick = 0;  // the largest End Of Track of all tracks

  std::vector<std::string> warnings;  // complete sentences, each with file and byte
};

}  // namespace tesk_midi

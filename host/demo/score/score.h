#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace orbel::host::demo {

using Tick = std::uint32_t;

enum class Voice { kGuitar, kBass, kElectricPiano, kStrings, kFlute, kClarinet, kAccordion, kBells, kDrums };

struct Note {
  Tick tick = 0;
  Tick length = 0;
  int key = 0;       // MIDI key; for drums the sound of the General MIDI percussion map
  int velocity = 0;  // 1 to 127
};

struct Part {
  std::string name;
  Voice voice;
  unsigned channel = 0;  // MIDI channel, 0 to 15
  unsigned program = 0;  // General MIDI program, 0 to 127
  float level = 1.0F;    // gain in the mix
  float pan = 0.0F;      // -1 left to 1 right
  float room = 0.2F;     // gain into the room
  std::vector<Note> notes = {};
};

struct TempoChange {
  Tick tick = 0;
  std::uint32_t microsecondsPerQuarter = 0;
};

struct MeterChange {
  Tick tick = 0;
  int bar = 0;
  unsigned numerator = 0;
  unsigned denominator = 0;
};

struct KeyChange {
  Tick tick = 0;
  int sharps = 0;
  bool minor = false;
};

struct Marker {
  Tick tick = 0;
  std::string text;
};

// One song as it is written down: what the MIDI file holds and what the players play.
//
// Units      tick: at `Division()` ticks per quarter note. Bars are numbered as in the song's cues.
// Order      meters first, bar by bar upwards; then everything else, in any order.
// Errors     std::logic_error for a bar before the first meter: a song that is written wrongly.
// Threads    plain object.
class Score {
 public:
  Score(std::string title, unsigned division) : title_(std::move(title)), division_(division) {}

  // `bar` is where the meter begins; the first call gives the number of the song's first bar.
  void Meter(int bar, unsigned numerator, unsigned denominator);

  // The tick at which `bar` begins, and `quarters` quarter notes behind it.
  Tick At(int bar, double quarters = 0.0) const;

  bool IsBarLine(Tick tick) const;

  void Tempo(Tick tick, double quartersPerMinute);

  // From one tempo to another in `steps` even steps, the last of which comes one step before `to`.
  void Ramp(Tick from, Tick to, double fromTempo, double toTempo, unsigned steps);

  void Key(Tick tick, int sharps, bool minor) { keys_.push_back({tick, sharps, minor}); }
  void Mark(Tick tick, std::string text) { markers_.push_back({tick, std::move(text)}); }
  void End(Tick tick) { end_ = tick; }

  // The part stays where it is while others are added.
  Part& Add(Part part);

  const std::string& Title() const { return title_; }
  unsigned Division() const { return division_; }
  Tick End() const { return end_; }
  const std::vector<TempoChange>& Tempos() const { return tempos_; }
  const std::vector<MeterChange>& Meters() const { return meters_; }
  const std::vector<KeyChange>& Keys() const { return keys_; }
  const std::vector<Marker>& Markers() const { return markers_; }
  const std::deque<Part>& Parts() const { return parts_; }

 private:
  Tick TicksPerBar_(const MeterChange& meter) const;

  std::string title_;
  unsigned division_;
  Tick end_ = 0;
  std::vector<TempoChange> tempos_;
  std::vector<MeterChange> meters_;
  std::vector<KeyChange> keys_;
  std::vector<Marker> markers_;
  std::deque<Part> parts_;
};

}  // namespace orbel::host::demo

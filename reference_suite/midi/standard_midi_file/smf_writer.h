#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tesk_midi {

// Composes a Standard MIDI File of type 1: a first track with tempos, meters, keys and markers, then one
// track per part with its notes. Events may be added in any order.
//
// Units      tick: at the writer's division. channel 0 to 15, key and velocity 0 to 127 (velocity from 1).
// Order      within a tick: notes end, then everything else as added, so that a repeated note sounds again.
// Errors     std::invalid_argument for a value that the format cannot hold.
// Threads    plain object.
class SmfWriter {
 public:
  // `division` is in ticks per quarter note, 1 to 32,767.
  explicit SmfWriter(unsigned division, const std::string& title = {});

  void Tempo(std::uint32_t tick, std::uint32_t microsecondsPerQuarter);
  void Meter(std::uint32_t tick, unsigned numerator, unsigned denominator);
  void Key(std::uint32_t tick, int sharps, bool minor);
  void Marker(std::uint32_t tick, const std::string& text);

  // A further track; returns its number for Program and Note.
  std::size_t AddPart(const std::string& name);
  void Program(std::size_t part, std::uint32_t tick, unsigned channel, unsigned program);
  void Note(std::size_t part, std::uint32_t tick, std::uint32_t length, unsigned channel, unsigned key,
            unsigned velocity);

  // Every track's End Of Track stands at `tick`, or at its last event if that is later.
  void End(std::uint32_t tick) { endTick_ = tick; }

  std::vector<std::uint8_t> Bytes() const;

 private:
  struct Event {
    std::uint32_t tick;
    int rank;  // 0 for what ends, 1 for what begins
    std::vector<std::uint8_t> bytes;
  };
  using Track = std::vector<Event>;

  void Add_(std::size_t track, std::uint32_t tick, int rank, std::vector<std::uint8_t> bytes);
  void AddMeta_(std::size_t track, std::uint32_t tick, std::uint8_t type,
                const std::vector<std::uint8_t>& data);
  void AddText_(std::size_t track, std::uint32_t tick, std::uint8_t type, const std::string& text);
  std::vector<std::uint8_t> TrackBytes_(const Track& track) const;

  unsigned division_;
  std::uint32_t endTick_ = 0;
  std::vector<Track> tracks_;
};

}  // namespace tesk_midi

#pragma once

#include <string>
#include <utility>

#include "suite/midi/timeline.h"

namespace tesk_midi {

// One song of the show: its number, name, PPQ and timeline. Filled once at load; read by any thread.
class SongData {
 public:
  SongData(std::string number, std::string name, unsigned short pulsesPerQuarterNote, TL::Timeline timeline)
      : number_(std::move(number)),
        name_(std::move(name)),
        pulsesPerQuarterNote_(pulsesPerQuarterNote),
        timeline_(std::move(timeline)) {}

  const std::string& GetNumber() const { return number_; }
  const std::string& GetName() const { return name_; }
  // Ticks per quarter note of the song as loaded, at least 480.
  unsigned short GetPulsesPerQuarterNote() const { return pulsesPerQuarterNote_; }
  const TL::Timeline& GetTimeline() const { return timeline_; }

 private:
  std::string number_;
  std::string name_;
  unsigned short pulsesPerQuarterNote_;
  TL::Timeline timeline_;
};

}  // namespace tesk_midi

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/session/song_clock.h"

namespace CL {
struct SongLog;
}

namespace TL {
class Timeline;
}

namespace orbel::host {

class ShowFolder;

struct TempoSummary {
  Place at;
  double quartersPerMinute = 0.0;
};

struct MeterSummary {
  Place at;
  unsigned beats = 4;
  unsigned unit = 4;
};

// One cue of a song: "vamp", "repeat", "safety", "cut", "caesura", "tempo", "transpose", "marker" or "click".
struct CueSummary {
  std::string kind;
  Place at;
  std::optional<Place> to;
  std::string detail;  // "exit at the next bar", "3 passes", "scale 0.95", a marker's name
  int line = 0;        // of the file of cues; 0: from nowhere in it
};

struct AudioSummary {
  std::string file;  // relative to the show folder
  std::string format;
  double sampleRateHz = 0.0;
  unsigned channels = 0;
  long long frames = -1;  // -1: only decoding can tell
  std::string problem;    // why it cannot be read; empty when it can
};

struct SongSummary {
  std::string number;
  std::string name;
  std::string problem;  // why it cannot be read, and nothing else is known; empty when it can
  bool attacca = false;
  bool skip = false;
  unsigned ticksPerQuarter = 0;
  Place start;  // where the audio begins
  Place end;    // where playback ends
  std::optional<AudioSummary> audio;
  std::vector<TempoSummary> tempos;
  std::vector<MeterSummary> meters;
  std::vector<CueSummary> cues;
};

struct ShowSummary {
  std::string title;
  std::vector<SongSummary> songs;     // in running order
  std::vector<std::string> problems;  // why something is not in it that should be
};

// `song`: only that one, which has to be readable; empty: all. Throws Failure, tesk_midi::ShowError.
ShowSummary Summarise(const std::string& showPath, const std::string& song);

// The places of a song that texts name. Throws Failure.
std::vector<Place> FindPlaces(const std::string& showPath, const std::string& song,
                              const std::vector<std::string>& texts);

// A song's cues in the order of their places.
std::vector<CueSummary> SummariseCues(const CL::SongLog& log, const TL::Timeline& timeline,
                                      const SongClock& clock);

}  // namespace orbel::host

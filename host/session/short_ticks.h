#pragma once

#include <optional>
#include <string>

#include "Sources/types.h"
#include "suite/midi/load_show.h"

namespace CL {
struct SongLog;
}
namespace tesk_midi {
class SongData;
}

// Songs whose ticks are shorter than the frames of their audio. Where a tick lasts a frame or more, each has
// a first frame of its own, and the engine can stand on any of them. Below that some ticks begin on the frame
// of the next one; the engine still plays, as long as no read has to end there. Below about half a frame
// there are frames that it cannot give a tick at all.
namespace orbel::host {

class ShowFolder;

struct ShortTick {
  enum class Kind {
    FrameWithoutTick,  // the engine cannot say in which tick a frame from `tick` on lies
    StopWithoutFrame   // playback has to stop or turn on `tick`, which has no frame, or one of two before it
  };
  Kind kind = Kind::FrameWithoutTick;
  TickIndex tick = 0;
  std::string stop{};  // "the caesura"; of a StopWithoutFrame
  int line = 0;        // of the file of cues; 0: the stop is the end of the song
};

// The first of them at which the engine would end the performance; nothing when the song can be played. It
// takes no time but where ticks last less than half a frame. Threads: ANY.
std::optional<ShortTick> FindShortTick(const tesk_midi::SongData& song, const CL::SongLog& log,
                                       double rateHz);

// The same as a finding with its cure.
std::optional<tesk_midi::Problem> FindShortTick(const ShowFolder& show, const std::string& song,
                                                double rateHz);

}  // namespace orbel::host

#pragma once

#include <map>
#include <utility>

#include "Sources/types.h"

struct Jump;
namespace CL {
struct SongLog;
}
namespace TL {
class Timeline;
}

namespace orbel::host {

// Stands in for the performer's go on a vamp: every vamp is played a fixed number of times in all.
// Threads    one at a time.
class VampLeaver {
 public:
  // `passes`: from 1.
  explicit VampLeaver(int passes) : passes_(passes) {}

  // Another song is current.
  void OnSong() { taken_.clear(); }
  // Playback has jumped from one tick to another in the song with this log.
  void OnJump(TickIndex from, TickIndex to, const CL::SongLog& log);
  // Whether go is to be said now: `next` is the next jump if nobody acts, `position` the control position. A
  // vamp that go leaves at a bar or a beat is left as late as its last bar or beat, so that its last pass is
  // whole.
  bool ShouldSayGo(const Jump& next, TickIndex position, const CL::SongLog& log,
                   const TL::Timeline& timeline) const;
  // Whether the vamp goes on although go was said in its last pass.
  bool IsStuck() const;

 private:
  int passes_;
  // Vamps begun again, by the ticks of their end and start.
  std::map<std::pair<TickIndex, TickIndex>, int> taken_;
};

}  // namespace orbel::host

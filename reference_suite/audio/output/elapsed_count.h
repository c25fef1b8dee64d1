#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "exc/lock/lockable.h"

namespace tesk_audio {

// Relates frames that the device takes to frames of song audio, and so tells how much of the song has been
// heard.
//
// Units      device frames: positions in the ring. Song frames: unscaled, counted from the last restart.
// Threads    ANY; its own lock, held for a few instructions. Never taken by the device.
// Render     allocates nothing.
class ElapsedCount : public exc::Lockable {
 public:
  // `blocks`: how many of different proportions it remembers; as many as the ring can hold.
  explicit ElapsedCount(std::size_t blocks = 256);
  ~ElapsedCount() override;

  // Counts from 0 at this position of the ring.
  void Restart(std::uint64_t position);
  // The next `deviceFrames` in the ring stand for `songFrames`.
  void Add(std::size_t deviceFrames, long long songFrames);
  // What was added so far counts as heard, whether or not it ever will be.
  void CountAll();

  // Song frames heard when the listener has come to `position`. Never less than it told since the restart.
  long long GetCount(std::uint64_t position);

 private:
  struct Block {
    std::uint64_t start = 0;  // in the ring
    std::uint64_t deviceFrames = 0;
    long long songStart = 0;
    long long songFrames = 0;
  };
  Block& Last_() EXC_HOLDS(this) { return blocks_[(first_ + used_ - 1) % blocks_.size()]; }

  std::vector<Block> blocks_ EXC_GUARDED_BY(this);  // oldest at first_, in a circle
  std::size_t first_ EXC_GUARDED_BY(this) = 0;
  std::size_t used_ EXC_GUARDED_BY(this) = 0;
  std::uint64_t end_ EXC_GUARDED_BY(this) = 0;   // in the ring, behind the last block
  long long total_ EXC_GUARDED_BY(this) = 0;     // song frames added
  long long reported_ EXC_GUARDED_BY(this) = 0;  // the most that was told, or counted as heard
};

}  // namespace tesk_audio

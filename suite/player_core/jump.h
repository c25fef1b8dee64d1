#pragma once

// A jump that a performer asked for, or the next one that playback will take.
struct Jump {
  unsigned fromTick = 0;
  unsigned toTick = 0;
  int kind = 0;  // codes::kVamp, kRepeat, kSafety or kCut
};

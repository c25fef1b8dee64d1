#pragma once

#include "host/demo/score/score.h"
#include "host/demo/sound/sound.h"

namespace orbel::host::demo {

// Plays the score from tick `start` to tick `end`: the first frame is the first of tick `start`, and there
// are exactly as many frames as the engine counts between the two. Notes before `start` are left out.
StereoSound Perform(const Score& score, Tick start, Tick end);

}  // namespace orbel::host::demo

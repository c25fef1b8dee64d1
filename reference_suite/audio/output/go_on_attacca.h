#pragma once

#include "suite/audio/output_interface.h"

namespace tesk_audio {

// At the end of a song: loads the next one when the song runs attacca into it. True when playback goes on
// there. On the render thread, without the read-samples lock; may wait for a loader. A load that fails is
// logged.
bool GoOnAttacca(AudioPlayerOutputInterface& player);

}  // namespace tesk_audio

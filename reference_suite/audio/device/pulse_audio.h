#pragma once

namespace tesk_audio {

// Whether there is a PulseAudio server, or what answers in its place, to connect to. Starts none.
bool PulseAudioRuns();

}  // namespace tesk_audio

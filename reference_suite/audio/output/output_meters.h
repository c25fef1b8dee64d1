#pragma once

#include "suite/core/meters_update.h"

namespace tesk_audio {

class LiveSampleOutput;

using OutputMeters = notify::MetersUpdate;

// Of the live output that there is. False, and nothing is written, when there is none. Threads: ANY.
bool ReadOutputMeters(OutputMeters* meters);

// While held, live outputs play to nobody: what is started stands at its first frame. Held by several at once
// it goes on when the last has let go. Threads: ANY.
void HoldLiveOutputs();
void ReleaseLiveOutputs();
bool LiveOutputsAreHeld();

// By the output itself.
void RegisterLiveOutput(LiveSampleOutput* output);
void UnregisterLiveOutput(LiveSampleOutput* output);

}  // namespace tesk_audio

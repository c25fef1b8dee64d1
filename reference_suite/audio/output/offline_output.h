#pragma once

#include <cstddef>
#include <functional>

namespace tesk_audio {

enum class StepEvent { None, Jump, Caesura, End, Attacca };

// What one render step did.
struct StepReport {
  StepEvent event = StepEvent::None;
  long long sampleIndex = 0;   // first frame of song audio read
  long long frames = 0;        // frames of song audio read; 0 at a caesura and at the end
  long long outputFrames = 0;  // what they became, handed out: as many, unless they were stretched
  // With Jump: the sample at which it was taken, and the one at which playback went on. With the other events
  // the two differ when a jump led there: a cut to the end of the song, a loop back onto a caesura.
  long long jumpFrom = 0;
  long long jumpTo = 0;
  long double scale = 1.0L;  // tempo scale and transposition of these frames
  int transposition = 0;
};

// Receives the frames of a step, interleaved. May throw; the step then ends with that exception.
using FrameSink = std::function<void(const float* frames, std::size_t frameCount)>;

// One render step of the offline output that was created last, on the calling thread, which plays the part of
// the render thread. False, and nothing done, when there is none or it does not run (before Start, after a
// caesura that waits, after the end).
bool StepOfflineOutput(StepReport* report, const FrameSink& sink);

// What was playing on that output when it was paused or stopped, and was not seen to end in a step since,
// fades out: into the silence at `frames`, which follows. How many frames there are of it; 0 when nothing
// fades.
void MixOfflineTail(float* frames, std::size_t frameCount);
std::size_t GetOfflineTailFrames();

// Format of that output. 0 when there is none.
unsigned GetOfflineChannelCount();
double GetOfflineSampleRateHz();

}  // namespace tesk_audio

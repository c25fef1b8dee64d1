#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "Sources/types.h"

namespace orbel::host {

// How the output sounds. The one place at which the host meets a particular implementation of the audio
// library.
struct OutputChoice {
  double rateHz = 0.0;       // 0: that of the show's first audio
  double aheadMs = 15.0;     // rendered ahead of the device
  double crossfadeMs = 5.0;  // at jumps; 0: bit-exact splices
  double fadeMs = 3.0;       // on start, pause and stop; 0 leaves every sample as it is
};

// Process-wide, before a show is opened. Threads: HOST.
void UseClockWithoutSound(const OutputChoice& choice);
void UseOfflineOutput(const OutputChoice& choice);

// What one render step of the offline output did; sample positions are unscaled and count from the audio
// start.
struct Step {
  enum class Event { None, Jump, Caesura, End, Attacca };
  Event event = Event::None;
  SampleCount sample = 0;    // first frame of song audio read
  SampleCount frames = 0;    // how many; 0 at a caesura and at the end
  SampleCount jumpFrom = 0;  // differs from jumpTo when a jump was taken, also one that led to the event
  SampleCount jumpTo = 0;
  double scale = 1.0;
  int transposition = 0;
};
using FrameSink = std::function<void(const float* frames, std::size_t frameCount)>;

// On the calling thread, which plays the part of the render thread. False when the output does not run.
bool RenderStep(Step* step, const FrameSink& sink);
unsigned RenderChannels();
double RenderRateHz();

// A sound file that appears under its name when it is complete, or not at all.
class SoundFile {
 public:
  virtual ~SoundFile() = default;
  virtual void Write(const float* frames, std::size_t frameCount) = 0;
  virtual void Commit() = 0;
};
// `format`: float, pcm24, pcm16, flac or ogg. Throws Failure or an error of the audio library, whose text
// names the file.
std::unique_ptr<SoundFile> CreateSoundFile(const std::string& path, const std::string& format, double rateHz,
                                           unsigned channels);

}  // namespace orbel::host

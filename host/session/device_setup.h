#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Sources/types.h"
#include "suite/core/meters_update.h"

namespace orbel::host {

// How the output sounds. The one place at which the host meets a particular implementation of the audio
// library.
struct OutputChoice {
  std::string output = "null";    // or "jack", "desktop", "file"; "auto": the first sound system that answers
  std::string device;             // JACK: the server; empty: the usual one; the name of the file
  double rateHz = 0.0;            // 0: that of the device or, if it takes any, of the show's first audio
  unsigned periodFrames = 256;    // where the device can choose
  std::vector<unsigned> outputs;  // physical ones, from 1, for channel 1, 2, ...; empty: in their order
  std::vector<std::string> connect;     // JACK: regular expressions for ports to play to, instead
  std::string onDeviceLoss = "run-on";  // or "hold", "end"
  double aheadMs = 15.0;                // rendered ahead of the device
  double crossfadeMs = 5.0;             // at jumps; 0: bit-exact splices
  double fadeMs = 3.0;                  // on start, pause, stop and seeks; 0 leaves every sample as it is
  std::string stretch = "faster";       // or "finer": other tempos and keys than the recorded ones
};

// Process-wide, before a show is opened. Threads: HOST.
void UseLiveOutput(const OutputChoice& choice);
void UseOfflineOutput(const OutputChoice& choice);

// A device that could be played to, or why it cannot.
struct DeviceLine {
  std::string output;  // "jack", "desktop", "null", "file"
  std::string name;
  bool answers = false;
  std::string problem;
  double rateHz = 0.0;        // 0: any
  unsigned outputs = 0;       // 0: any
  unsigned periodFrames = 0;  // 0: any
};
// In the order in which they are preferred. A sound system that hangs is waited for three seconds; `say` is
// told so in words. Threads: HOST.
using Say = std::function<void(const std::string& message)>;
std::vector<DeviceLine> LookAtDevices(const std::string& jackServer, const Say& say);
// Throws Failure for a regular expression that is none.
void RequirePortPatterns(const std::vector<std::string>& patterns);

// What the libraries of sound systems would have printed since the last call, oldest first; the last few
// dozen lines.
std::vector<std::string> TakeSoundSystemLines();

// From here on nothing is printed of what libraries that decode say of damaged files: our own warnings do.
// Call it before there are other threads. Threads: HOST.
void KeepDecodersQuiet();

using Meters = notify::MetersUpdate;
// False when there is no live output yet.
bool ReadMeters(Meters* meters);

// While one lives, what is started plays to nobody and stands at its first frame.
class SilentOutput {
 public:
  SilentOutput();
  ~SilentOutput();
  SilentOutput(const SilentOutput&) = delete;
  SilentOutput& operator=(const SilentOutput&) = delete;
};

// While one lives, songs that are being decoded are broken off: nobody waits for them any more.
class BrokenOffDecoding {
 public:
  BrokenOffDecoding();
  ~BrokenOffDecoding();
  BrokenOffDecoding(const BrokenOffDecoding&) = delete;
  BrokenOffDecoding& operator=(const BrokenOffDecoding&) = delete;

 private:
  struct Stop;
  std::unique_ptr<Stop> stop_;
};

// While one lives, the file of the output "file" outlives its player: the next player goes on behind what was
// written. Threads: HOST.
class KeptSoundFile {
 public:
  KeptSoundFile();
  ~KeptSoundFile();
  KeptSoundFile(const KeptSoundFile&) = delete;
  KeptSoundFile& operator=(const KeptSoundFile&) = delete;

 private:
  struct Hold;
  std::unique_ptr<Hold> hold_;
};

// Of the output "file", when there is one: that much more of the show is played into it; the file gets its
// name. Throw the audio library's error, which names the file, when writing has failed.
void PlayIntoFile(double seconds);
void FinishFile();

// What one render step of the offline output did; sample positions are unscaled and count from the audio
// start.
struct Step {
  enum class Event { None, Jump, Caesura, End, Attacca };
  Event event = Event::None;
  SampleCount sample = 0;        // first frame of song audio read
  SampleCount frames = 0;        // how many; 0 at a caesura and at the end
  SampleCount outputFrames = 0;  // what they became
  SampleCount jumpFrom = 0;      // differs from jumpTo when a jump was taken, also one that led to the event
  SampleCount jumpTo = 0;
  double scale = 1.0;
  int transposition = 0;
};
using FrameSink = std::function<void(const float* frames, std::size_t frameCount)>;

// On the calling thread, which plays the part of the render thread. False when the output does not run.
bool RenderStep(Step* step, const FrameSink& sink);
// What was playing when it was paused or stopped fades out into the silence at `frames`; how much of it there
// is.
void MixFadeOut(float* frames, std::size_t frameCount);
std::size_t FadeOutFrames();
unsigned RenderChannels();
double RenderRateHz();

// A sound file that appears under its name when it is complete, or not at all.
class SoundFile {
 public:
  virtual ~SoundFile() = default;
  virtual void Write(const float* frames, std::size_t frameCount) = 0;
  virtual void Commit() = 0;
};
// Whether a name ends as a sound file does: .wav, .flac or .ogg.
bool NamesASoundFile(const std::string& path);
// What a file is in spite of its name, to be told; empty when they agree or the name says nothing. `format`
// as below.
std::string WhatNameHides(const std::string& path, const std::string& format);
// `format`: float, pcm24, pcm16, flac or ogg. Throws Failure or an error of the audio library, whose text
// names the file.
std::unique_ptr<SoundFile> CreateSoundFile(const std::string& path, const std::string& format, double rateHz,
                                           unsigned channels);

}  // namespace orbel::host

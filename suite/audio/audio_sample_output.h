#pragma once

#include <string>

namespace exc {
class ExFlag;
}

namespace tesk_audio {

class AudioSampleContent;

// Plays what the player hands out. Created for the first song's content, kept for the whole show.
// Threads    the operations are called by the host thread, and at a caesura, at the end of a song and in an
//            attacca by the output's own render thread.
class AudioSampleOutput {
 public:
  // Stops without notifying anybody; no call to the player is under way when it returns.
  virtual ~AudioSampleOutput() = default;

  // Frames per second.
  virtual double GetSampleRateHz() = 0;

  // Unscaled frames of song audio that have left the loudspeaker since the last Refill. Takes no lock of the
  // player's; never decreases between two refills.
  virtual long long GetElapsedSampleCount() = 0;

  // The device must not run: drops what is rendered, counts from 0 and renders ahead from the position.
  virtual void Refill() = 0;
  virtual void Start() = 0;
  // Fades out and stops the device; what is rendered stays. A paused output does not count as running.
  virtual void Pause() = 0;
  // The same, then PlayerOutputInterface's NotifyOutputHasStopped. `wait`: return when that has happened;
  // from the render thread itself it returns at once. False when the device did not answer in time.
  virtual bool Stop(bool wait) = 0;
  // Waits for nothing and plans nothing. False, and a text naming both formats, when rate or channels differ.
  virtual bool SwitchContent(const AudioSampleContent& content, std::string* errorText) = 0;
  // Returns when no render step is in progress and none will start until Start or Refill.
  virtual void Idle() = 0;
  virtual void PrepareForExit() = 0;
  virtual bool GetOutputIsRunning() = 0;
  // While it is set no render step starts.
  virtual exc::ExFlag& GetSeekFlag() = 0;
};

}  // namespace tesk_audio

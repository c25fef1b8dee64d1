#pragma once

#include <atomic>
#include <cstddef>

#include "exc/flag/ex_flag.h"
#include "reference_suite/audio/output/dropped_tail.h"
#include "reference_suite/audio/output/fade.h"
#include "reference_suite/audio/output/offline_output.h"
#include "reference_suite/audio/output/output_settings.h"
#include "reference_suite/audio/output/render_step.h"
#include "suite/audio/audio_sample_output.h"

namespace tesk_audio {

// The output without a thread and without a clock: whoever steps it renders, and what was rendered counts as
// heard at once. The same show and the same commands give the same frames every time.
//
// Units      frames.
// Threads    the steps and the transport on one thread, which plays the part of the render thread too.
//            SwitchContent and Start may come from a loader's thread; the queries from any.
// Fades      when the settings ask for it, after a pause or a seek the music fades in. What was handed out
//            has been heard: at a pause, a stop or a seek what would have come next fades out under whatever
//            is handed out then.
class OfflineSampleOutput : public AudioSampleOutput, private StepGate {
 public:
  OfflineSampleOutput(AudioPlayerOutputInterface& player, double rateHz, unsigned channels,
                      const OutputSettings& settings);
  ~OfflineSampleOutput() override;
  OfflineSampleOutput(const OfflineSampleOutput&) = delete;
  OfflineSampleOutput& operator=(const OfflineSampleOutput&) = delete;

  double GetSampleRateHz() override { return rateHz_; }
  unsigned GetChannelCount() const { return channels_; }
  long long GetElapsedSampleCount() override { return elapsed_; }
  void Refill() override;
  void Start() override;
  void Pause() override;
  bool Stop(bool wait) override;
  bool SwitchContent(const AudioSampleContent& content, std::string* errorText) override;
  void Idle() override;
  void PrepareForExit() override;
  bool GetOutputIsRunning() override { return state_ == State::Running; }
  exc::ExFlag& GetSeekFlag() override { return seekFlag_; }

  // See StepOfflineOutput, MixOfflineTail and GetOfflineTailFrames.
  bool Step(StepReport* report, const FrameSink& sink);
  void MixTail(float* frames, std::size_t count) { tail_.MixInto(frames, count); }
  std::size_t GetTailFrames() const { return tail_.GetLeft(); }

 private:
  enum class State { Stopped, Paused, Running };

  bool MayStep() override;
  void HandOut_(const StepResult& result, const FrameSink& sink);
  // What would have come next fades out, and the next step begins afresh.
  void DropTail_();
  void FadeTailOut_();
  void StopAtCaesura_();
  // True when the next song goes on.
  bool EndSong_();

  AudioPlayerOutputInterface& player_;
  double rateHz_;
  unsigned channels_;
  std::size_t fadeFrames_;
  RenderStep step_;
  Fade fade_;
  DroppedTail tail_;
  exc::ExFlag seekFlag_;
  std::atomic<State> state_{State::Stopped};
  std::atomic<long long> elapsed_{0};
  std::atomic<bool> idle_{false};
  std::atomic<bool> switched_{false};  // another content since the last step
  bool afterRefill_ = true;            // no frame was handed out since
};

}  // namespace tesk_audio

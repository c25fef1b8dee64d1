#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "exc/flag/ex_flag.h"
#include "suite/audio/audio_sample_output.h"
#include "suite/audio/output_interface.h"

namespace test_support {

// An output without a thread and without a clock: it plays when the test turns the crank, records what it was
// told, and answers as the test says. Threads: ANY.
class CrankedOutput : public tesk_audio::AudioSampleOutput {
 public:
  CrankedOutput(const tesk_audio::AudioSampleContent& content,
                tesk_audio::AudioPlayerOutputInterface& player);
  ~CrankedOutput() override;

  double GetSampleRateHz() override;
  long long GetElapsedSampleCount() override;
  void Refill() override;
  void Start() override;
  void Pause() override;
  bool Stop(bool wait) override;
  bool SwitchContent(const tesk_audio::AudioSampleContent& content, std::string* errorText) override;
  void Idle() override;
  void PrepareForExit() override;
  bool GetOutputIsRunning() override;
  exc::ExFlag& GetSeekFlag() override { return seekFlag_; }

  const tesk_audio::AudioSampleContent* GetContent() const;

  // ---- what it answers ---------------------------------------------------------------------------
  void SetRunning(bool running);
  void SetElapsedSampleCount(long long count);
  void SetSampleRateHz(double rateHz);
  // So many stops are not carried out and answered with false.
  void RefuseStops(int count);
  // Stops are answered with true and not carried out.
  void IgnoreStops(bool ignore);
  void RefuseContent(const std::string& errorText);
  void AcceptContent();
  // Called at the beginning of every operation, queries included, with its name and
  // without a lock of this object.
  void OnCall(std::function<void(const std::string&)> hook);

  // ---- the crank ---------------------------------------------------------------------------------
  // A stop that nobody waited for is reported now.
  void ReportStop();
  // One render step: plan, read, move on. What was read, frame by frame; empty when it runs no longer.
  std::vector<float> Turn(long long frames);
  // Where the last turn began, in samples.
  long long GetLastReadIndex() const { return lastReadIndex_; }

 private:
  void Record_(const std::string& call);
  void Tell_(const std::string& call);

  tesk_audio::AudioPlayerOutputInterface& player_;
  exc::ExFlag seekFlag_{"CrankedOutput_Seek"};
  mutable std::mutex mutex_;
  const tesk_audio::AudioSampleContent* content_;
  bool running_ = false;
  bool paused_ = false;
  long long elapsed_ = 0;
  double rateHz_;
  int stopsToRefuse_ = 0;
  bool ignoresStops_ = false;
  bool refusesContent_ = false;
  std::string refusal_;
  std::function<void(const std::string&)> hook_;
  long long lastReadIndex_ = 0;
};

// ---- in place of tesk_audio::CreateAudioSampleOutput -------------------------------------------------
namespace cranked {

// Nothing created yet, nothing refused.
void Reset();
// The output that lives now; null when there is none.
CrankedOutput* Get();
int CountCreated();
// The next creations throw TESKAudioError.
void FailCreate(const std::string& text);
// Called at the beginning of each creation.
void OnCreate(std::function<void()> hook);

}  // namespace cranked

}  // namespace test_support

#pragma once

#include <pthread.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "exc/flag/ex_flag.h"
#include "exc/lock/lockable.h"
#include "reference_suite/audio/device/device.h"
#include "reference_suite/audio/output/device_feed.h"
#include "reference_suite/audio/output/elapsed_count.h"
#include "reference_suite/audio/output/frame_ring.h"
#include "reference_suite/audio/output/load_meter.h"
#include "reference_suite/audio/output/meter_news.h"
#include "reference_suite/audio/output/monotonic_now.h"
#include "reference_suite/audio/output/output_meters.h"
#include "reference_suite/audio/output/output_settings.h"
#include "reference_suite/audio/output/render_step.h"
#include "reference_suite/audio/output/timed_condition.h"
#include "suite/audio/audio_sample_output.h"

namespace tesk_audio {

// Plays in real time: a render thread keeps a ring filled with what the player hands out, the device takes
// it.
//
//   player <- render step <- render thread -> ring -> feed -> device
//
// Units      frames at the device's rate, which is the audio's.
// Threads    the transport on any thread; render steps on the render thread while running, and on the
//            caller's thread inside Refill; the device on its own.
// Locks      this object (the states below; never held while the player is called), then, each alone: the
//            step lock, which one render step at a time holds and which encloses the player's read-samples
//            lock; the elapsed count's.
// Errors     what a step throws (a broken invariant of the player) ends playback where it happened, in the
//            log and as a line on the console.
// Failure    a device that something stands in for tells it: playback then runs on unheard, is held, or ends,
//            as the settings say.
class LiveSampleOutput final : public AudioSampleOutput,
                               public exc::Lockable,
                               private StepGate,
                               private DeviceLossListener {
 public:
  // Nanoseconds of the clock by which the device takes frames.
  using Clock = std::function<long long()>;

  // The device runs from now on, with silence. Throws TESKAudioError when it, or a thread, cannot be started.
  LiveSampleOutput(AudioPlayerOutputInterface& player, std::unique_ptr<Device> device,
                   const OutputSettings& settings, Clock clock = &MonotonicNow);
  // The player lock must not be held by whoever deletes, unless PrepareForExit has come before.
  ~LiveSampleOutput() override;
  LiveSampleOutput(const LiveSampleOutput&) = delete;
  LiveSampleOutput& operator=(const LiveSampleOutput&) = delete;

  double GetSampleRateHz() override { return device_->GetRateHz(); }
  long long GetElapsedSampleCount() override;
  void Refill() override;
  void Start() override;
  void Pause() override;
  bool Stop(bool wait) override;
  bool SwitchContent(const AudioSampleContent& content, std::string* errorText) override;
  void Idle() override;
  void PrepareForExit() override;
  bool GetOutputIsRunning() override;
  exc::ExFlag& GetSeekFlag() override { return seekFlag_; }

  // Frames of silence because the ring ran short.
  long long GetUnderrunFrames() const { return feed_.GetUnderrunFrames(); }
  // From now on listeners are told how it is doing.
  void TellMeters() { news_ = std::make_unique<MeterNews>(*this); }
  // The peaks are those since the last call. Threads: one at a time.
  OutputMeters ReadMeters();

 private:
  enum class State { Stopped, Paused, Running };
  // What comes behind the last frame in the ring.
  enum class Ending {
    None,     // more frames
    SongEnd,  // the end of the song; whether another follows has not been asked yet
    Stop,     // nothing
    Caesura,
    Failure,  // nothing, because a step threw
  };
  // What the player is being told by the render thread.
  enum class Telling {
    Nothing,
    Stopped,  // that the output has stopped
    Play,     // to play: it was started again before it knew
  };
  // What the render thread does next.
  enum class Task { Exit, Wait, Step, Open, AskAttacca, AnnounceStop, LookForMove, FinishStop, FinishEnding };

  // ---- live_rendering.cpp: the render thread
  static void* ThreadBody_(void* self);
  void StartThread_();
  void JoinThread_();
  void Run_();
  void Do_(Task task) noexcept;
  Task NextTask_() EXC_HOLDS(this);
  void GiveWayToDevice_();
  Task NextRunningTask_() EXC_HOLDS(this);
  Task NextEndingTask_() EXC_HOLDS(this);
  void WaitForTask_(exc::ScopeLock& lock) EXC_HOLDS(this);
  bool OnRenderThread_() const;
  bool MayStep() override;

  // ---- live_steps.cpp: one step, and what follows it
  void StepWhileRunning_();
  StepOutcome StepIntoRing_(StepGate& gate) EXC_HOLDS(stepLock_);
  void DropRing_() EXC_HOLDS(stepLock_);
  void SetEnding_(Ending ending);
  void ForgetEnding_();
  void AskAttacca_();
  void AnnounceStop_();
  // Drops what was rendered before a seek or a switch. True when there was one.
  bool LookForMove_();
  bool IsToPlay_();
  void FinishStop_();
  void FinishEnding_();
  void StopAtCaesura_();
  void NotifyStopped_();
  void StartAgain_();

  // ---- live_meters.cpp
  void MeterPeaks_(const float* frames, std::size_t count);

  // ---- live_device_loss.cpp: the device's watching thread
  bool OnDeviceLost() override;

  // ---- live_transport.cpp
  void BeginRefill_();
  void RefillRing_() EXC_HOLDS(stepLock_);
  void EndRefill_();
  // Whether the player knew of an approaching caesura; it is forgotten.
  bool TakeBackAnnouncement_();
  static constexpr double kExitFadeMs = 10.0;
  // What a device may have taken and not played when it fails: two of the longest periods.
  static constexpr std::size_t kMostTakenBackFrames = std::size_t{2} * kMostPeriodFrames;
  bool StopAndWait_(bool wait, std::size_t fadeFrames);
  void RequestStop_(std::size_t fadeFrames) EXC_HOLDS(this);
  // What was rendered before the position was moved is dropped instead.
  void OpenUnlessMoved_();
  void OpenFeed_() EXC_HOLDS(this);
  void CloseFeed_(std::size_t fadeFrames) EXC_HOLDS(this);
  void WaitUntilClosed_(exc::ScopeLock& lock) EXC_HOLDS(this);
  // Frames that are rendered and still to be heard.
  std::size_t GetRingFill_() const;
  void NoteWhatWasTaken_();
  std::size_t GetWantedFill_() const;
  bool NeedsFrames_() const { return GetRingFill_() < GetWantedFill_() && ring_.GetFree() >= mostFrames_; }

  AudioPlayerOutputInterface& player_;
  const Clock clock_;
  const DeviceLossPolicy lossPolicy_;
  std::unique_ptr<Device> device_;
  exc::Lockable stepLock_;
  RenderStep step_ EXC_GUARDED_BY(stepLock_);
  std::size_t quantum_;
  std::size_t mostFrames_;  // that one step makes
  std::size_t aheadFrames_;
  std::size_t fadeFrames_;
  FrameRing ring_;
  DeviceFeed feed_;
  ElapsedCount elapsed_;
  LoadMeter load_;                         // of the steps while running
  std::vector<std::atomic<float>> peaks_;  // per channel, of what was rendered
  exc::ExFlag seekFlag_;
  std::atomic<std::uint64_t> takenPosition_{0};  // in the ring, up to which the device had taken frames
  std::atomic<long long> takenAt_{0};            // when that was seen to change; by the clock
  std::atomic<std::uint64_t> contentStart_{0};   // in the ring; what lies before was dropped
  std::atomic<bool> switched_{false};            // another content: the ring still holds the one before
  std::atomic<bool> inAttacca_{false};           // the player switches the content itself, without a gap

  TimedCondition renderWakes_;  // both with this object's lock
  TimedCondition changed_;
  State state_ EXC_GUARDED_BY(this) = State::Stopped;
  Ending ending_ EXC_GUARDED_BY(this) = Ending::None;
  std::uint64_t endPosition_ EXC_GUARDED_BY(this) = 0;
  std::string failure_ EXC_GUARDED_BY(this);
  bool exits_ EXC_GUARDED_BY(this) = false;
  bool idle_ EXC_GUARDED_BY(this) = false;
  int refills_ EXC_GUARDED_BY(this) = 0;               // under way; nothing is opened meanwhile
  bool feedOpen_ EXC_GUARDED_BY(this) = false;         // the last command to the feed was to open
  bool stopIsAnnounced_ EXC_GUARDED_BY(this) = false;  // the player knows of an approaching caesura
  bool stopRequested_ EXC_GUARDED_BY(this) = false;
  bool startsAfterStop_ EXC_GUARDED_BY(this) = false;
  // While the player was being told of a stop: before or behind that, as the player sees it.
  bool startedWhileTold_ EXC_GUARDED_BY(this) = false;
  std::size_t stopFadeFrames_ EXC_GUARDED_BY(this) = 0;
  Telling telling_ EXC_GUARDED_BY(this) = Telling::Nothing;
  bool inPlayer_ EXC_GUARDED_BY(this) = false;  // the render thread is inside calls to the player

  std::unique_ptr<MeterNews> news_;  // goes first
  pthread_t thread_{};
  bool threadRuns_ = false;  // by who constructs, prepares for exit and deletes
  std::atomic<pthread_t> renderThread_{};
  int givesWayTo_ = 0;  // the render thread's: the priority of the device's thread
};

}  // namespace tesk_audio

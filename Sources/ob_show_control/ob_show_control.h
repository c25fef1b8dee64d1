#pragma once

#include <atomic>
#include <functional>

#include "Sources/ob_show_control/how_to_play_orbel.h"
#include "Sources/types.h"
#include "suite/audio/sample_count.h"
#include "suite/player_core/show_control.h"

class SamplesTicksConverter;
class Transients;

// The show control of a song with recorded audio: moves the audio position, a sample, in step with the
// control position, a tick, and plans every read so that it ends exactly on the first sample of the next cue.
//
// Units      sample: frames of the song's audio, unscaled. sample count: frames consumed since the update
//            generator's baseline was set.
// Threads    RENDER plans and reads; HOST moves the position; the getters ANY.
// Locks      its own, re-entrant. Planning takes the converter's first; SetJump, GetJumpIsNext,
//            AddToSampleIndex and the recoveries take this one first. The two orders never meet, because both
//            sides hold the read-samples lock: whoever calls one of these from elsewhere takes it too.
// Render     GetNextReadSampleCount allocates one node of the elapsed registry; the rest allocates nothing.
class OBShowControl : public ShowControl {
 public:
  // `caesuraSeek`: told when a seek lands on a caesura; true when a running output was told to stop.
  OBShowControl(ActiveSongNumber& activeSongNumber, tesk_midi::ShowData& showData, CL::ChangeLog* changeLog,
                SamplesTicksConverter& converter, gui::GuiUpdate& guiUpdate, Transients& transients,
                std::function<bool()> caesuraSeek);
  ~OBShowControl() override;

  // ---- construction.cpp --------------------------------------------------------------------------
  // False, and nothing: the audio keeps the time.
  bool FollowsClock() override;
  void FollowClock(bool follow) override;
  gui::GuiUpdate& GetGuiUpdate() override;
  HowToPlay& GetHowToPlay() override;

  // ---- song_range.cpp ----------------------------------------------------------------------------
  // Ticks; without a lock. The song ends with its audio, or with its MIDI when no audio end is given.
  unsigned GetStartTickIndex() override;
  unsigned GetEndTickIndex() override;
  void LoadStartAndEndTickIndices() override;
  // Takes the locks of the update generator, the converter and this, in this order, and gives them up before
  // the base finishes. Throws std::logic_error when the song has no tempo at tick 0.
  void FinishLoadingSongLog() override;

  // ---- seek.cpp ----------------------------------------------------------------------------------
  // True when nothing changed. A seek onto a caesura performs its stop at once, unless the function given at
  // construction answers true. Throws std::bad_function_call when there is none.
  bool Seek(unsigned tickIndex) override;

  // ---- read_planning.cpp -------------------------------------------------------------------------
  // How many samples may be read next; 0: stop here (a caesura, or the end of the song). Executes a due jump.
  // Throws exc::ExAssertionError for a request of 0 and when the positions have parted; nothing is rolled
  // back then. RENDER
  tesk_audio::SampleCount GetNextReadSampleCount(tesk_audio::SampleCount requestedSampleCount);

  // ---- sample_position.cpp -----------------------------------------------------------------------
  // `samples` have been read. More than were planned move the control position along.
  void AddToSampleIndex(SampleCount samples);
  // Moves `*sampleIndex` to the first sample of the nearest tick that does not begin before it, which goes to
  // `*tickIndex`. Holds the converter's lock throughout.
  void GetAlignedTickAndSampleIndex(SampleCount* sampleIndex, TickIndex* tickIndex);
  SampleCount GetSampleIndex();
  SampleCount GetSampleCount();
  void ResetGuiUpdate() override;
  // Forgets what was planned: the sample index and both counts start from 0. The control position stays.
  void ResetControlVariables() override;

  // ---- jumps.cpp ---------------------------------------------------------------------------------
  // Moves to the first sample of `tickIndex`. `skipAhead`: with the corrections asked for below, which are
  // thrown away otherwise.
  void SetJump(unsigned tickIndex, exc::ExLock& lock, bool skipAhead) override;
  // Whether a vamp, a repeat or a cut is due at the current tick; GetJumpTargetSampleIndex is its target
  // then.
  bool GetJumpIsNext();
  // Without a lock.
  bool GetCutToEndOfSongIsNext();
  // Corrections of where the next jump lands, in samples; each replaces the one before and is good once.
  void AdjustNextJumpSampleIndex(SampleCount samples);
  void SkipAheadSamplesOnNextJump(unsigned samples);
  SampleCount GetLastJumpSampleIndex();
  SampleCount GetJumpTargetSampleIndex();

  // ---- caesuras.cpp ------------------------------------------------------------------------------
  // First sample of the next caesura at or after `sampleIndex`; -1 when none lies ahead.
  SampleCount GetNextCaesuraSampleIndex(SampleCount sampleIndex);

  // ---- dsp_factors.cpp ---------------------------------------------------------------------------
  // Tempo scale, 1.0 as recorded, and transposition in semitones: at the control position (without a lock),
  // for the sample that is read next, and for any sample. At the sample where the last jump was taken they
  // are those from before it, unless that is also the current one.
  void GetDspFactorsAtCurrentTickIndex(long double* tempoScale, int* transposition);
  void GetDspFactorsAtCurrentSampleIndex(long double* tempoScale, int* transposition);
  void GetDspFactorsAt(SampleCount sampleIndex, long double* tempoScale, int* transposition);
  // The smaller of `tickIndex` and the next tick at which a factor changes.
  unsigned ClipTickIndexToNextDspEvent(unsigned tickIndex);

  // ---- recovery.cpp ------------------------------------------------------------------------------
  // Realigns both positions after a fault of the output. Throws RecoveryReachedEndOfSong.
  void ResetForRecovery(SampleCount sampleIndex, SampleCount sampleCount);
  // The same 20 ticks further on, to step over a place that fails again.
  void ResetForRecoveryAdvance(SampleCount sampleIndex, SampleCount sampleCount);

 private:
  // ---- read_planning.cpp -------------------------------------------------------------------------
  // `lock`: the scoped lock on this object that the planning holds, for SetJump.
  tesk_audio::SampleCount PlanRead_(tesk_audio::SampleCount requestedSampleCount, exc::ExLock& lock)
      EXC_HOLDS(samplesTicksConverter_, this);
  void RequireControlStreamInStep_() EXC_HOLDS(this);
  // The audio lags behind the control position: no further than up to it.
  tesk_audio::SampleCount CatchUp_(tesk_audio::SampleCount requestedSampleCount) EXC_HOLDS(this);
  void CutToEndOfSong_(TickIndex endTickIndex, tesk_audio::SampleCount* requestedSampleCount) EXC_HOLDS(this);
  // Every plan passes through here.
  tesk_audio::SampleCount SetExpectedNextAddToSampleIndex_(const tesk_audio::SampleCount& count)
      EXC_HOLDS(this);

  // ---- reads_across_ticks.cpp --------------------------------------------------------------------
  tesk_audio::SampleCount PlanAcrossTicks_(tesk_audio::SampleCount requestedSampleCount,
                                           TickIndex requestedEndTickIndex, unsigned samplesPastTick,
                                           exc::ExLock& lock) EXC_HOLDS(samplesTicksConverter_, this);
  void ProcessLoopEventsUnlocked_() EXC_HOLDS(samplesTicksConverter_, this);
  void CutToFirstLoopEvent_(TickIndex* requestedEndTickIndex, tesk_audio::SampleCount* requestedSampleCount)
      EXC_HOLDS(this);
  void FindNextControlEventUnlocked_(TickIndex from, TickIndex to) EXC_HOLDS(samplesTicksConverter_, this);
  tesk_audio::SampleCount PlanStop_(tesk_audio::SampleCount requestedSampleCount) EXC_HOLDS(this);
  tesk_audio::SampleCount PlanJump_(tesk_audio::SampleCount requestedSampleCount, exc::ExLock& lock)
      EXC_HOLDS(samplesTicksConverter_, this);
  tesk_audio::SampleCount PlanAdvance_(tesk_audio::SampleCount requestedSampleCount,
                                       TickIndex requestedEndTickIndex) EXC_HOLDS(this);

  // ---- dsp_factors.cpp, recovery.cpp -------------------------------------------------------------
  // The nearest tick that does not begin after `sampleIndex`.
  TickIndex GetTickAtOrBefore_(SampleCount sampleIndex);
  void RecoverAt_(SampleCount sampleIndex, SampleCount sampleCount, unsigned ticksAhead);

  SamplesTicksConverter& samplesTicksConverter_;
  gui::GuiUpdate& guiUpdate_;
  HowToPlayOrbel howToPlay_;
  // Read without the lock by contract.
  std::atomic<unsigned> audioStartTickIndex_{0};
  std::atomic<unsigned> audioEndTickIndex_{0};
  SampleCount sampleIndex_ EXC_GUARDED_BY(this) = 0;
  SampleCount lastJumpSampleIndex_ EXC_GUARDED_BY(this) = 0;
  SampleCount jumpTargetSampleIndex_ EXC_GUARDED_BY(this) = 0;
  SampleCount sampleCount_ EXC_GUARDED_BY(this) = 0;
  SampleCount nextJumpSampleAdjustment_ EXC_GUARDED_BY(this) = 0;
  SampleCount expectedNextAddToSampleIndex_ EXC_GUARDED_BY(this) = 0;
  std::function<bool()> caesuraSeekCallback_;
  unsigned skipAheadSamplesOnNextJump_ EXC_GUARDED_BY(this) = 0;
};

#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <string>

#include "exc/lock/lockable.h"
#include "suite/player_core/countdown_caesura.h"
#include "suite/player_core/jump.h"
#include "suite/player_core/loop_event.h"

class ActiveSongNumber;
class HowToPlay;
namespace CL {
class ChangeLog;
struct SongLog;
}  // namespace CL
namespace gui {
class GuiUpdate;
}
namespace tesk_midi {
class ShowData;
class SongData;
}  // namespace tesk_midi

// The control position of the current song, a tick, and the cues around it: what comes next, and what happens
// there. Derived classes move the audio with it.
//
// Locks      its own, which is re-entrant; most operations take it for their whole body. Seek, FullReset,
//            RecoverySeek, LoadSong, OnCaesuraStop, SetChangeLog and what the performer asks for take the
//            read-samples lock first, so that nothing moves in the middle of a render step.
// Threads    ANY, one transport command at a time. No listener is called with the lock held.
// Render     looking for the next event costs the same whatever the number of cues; landing after a jump has
//            the song's loops sorted. Neither allocates.
class ShowControl : public exc::Lockable {
 public:
  ShowControl(ActiveSongNumber& activeSongNumber, tesk_midi::ShowData& showData, CL::ChangeLog* changeLog);
  ~ShowControl() override;

  // Forgets everything that playing has changed and stands at the start tick again. True only when no song is
  // loaded.
  virtual bool FullReset();
  // Whether somebody else's clock moves the position. Ours follows the audio.
  virtual bool FollowsClock();
  // The end of the song for playback.
  virtual unsigned GetEndTickIndex() = 0;
  virtual gui::GuiUpdate& GetGuiUpdate() = 0;
  virtual unsigned GetStartTickIndex() = 0;
  // Takes over the active song's data and log.
  virtual void LoadSong();
  // Playback has stopped at the caesura at the position: it is behind from now on.
  virtual void OnCaesuraStop();
  // The update generator's baseline is set anew.
  virtual void ResetGuiUpdate();
  // Moves to `tickIndex`, raised to the start tick. False when the position moved, true when nothing changed.
  virtual bool Seek(unsigned tickIndex);
  // Replaces the change log between two reads; counts of loops that are still there stay.
  virtual void SetChangeLog(CL::ChangeLog& changeLog);
  virtual void FollowClock(bool follow);
  virtual void ResetControlVariables();
  // Ticks to the next caesura ahead; -1 when there is none.
  virtual long long GetCaesuraCountdown();
  virtual HowToPlay& GetHowToPlay() = 0;
  // The tick of the next caesura ahead; 0 when there is none.
  virtual unsigned GetFirstCaesuraStackTickIndex();
  virtual void FinishLoadingSongLog();
  // The first beat at or after `tickIndex`.
  virtual unsigned GetCaesuraTickIndexAlignedWithClock(unsigned tickIndex);
  virtual void LoadStartAndEndTickIndices();
  // Moves to a jump's target. `lock` is the scoped lock that the caller holds on this object.
  virtual void SetJump(unsigned tickIndex, exc::ExLock& lock, bool skipAhead);
  virtual void SetDataOnGuiAndHowToPlay();

  // The lock that keeps planning and moving apart; recursive. The output holds it for each render step.
  exc::ExLock& GetReadSamplesLock();
  exc::ExLock* GetLock() override;

  // ---- position --------------------------------------------------------------------------------
  unsigned GetTickIndex() const { return tickIndex_; }
  unsigned GetLastSeekTickIndex();
  // The places to which a seek left or right leads from the shown position.
  unsigned GetSeekLeft();
  // Throws std::out_of_range past the last place.
  unsigned GetSeekRight();

  // ---- cues ------------------------------------------------------------------------------------
  // Looks from `from` for the first control event up to `to` and sets the three flags and the reached tick.
  void FindNextControlEventOnAdvance(unsigned from, unsigned to);
  // Arms the cues for a landing on `tick`. `userSeek` false: whichever jump is pending leads there.
  void FindNextControlEventOnSeek(unsigned tick, bool userSeek);
  // Counts loop passes on arriving at the current tick. Idempotent for one arrival.
  void ProcessLoopEventsAtCurrentTickIndex();
  // Moves the position forward; cues passed over are dropped.
  void DoSkipAhead(unsigned tick);
  bool HasPendingCaesura();
  // True when a cut, or a performer's jump, starts at `tick`; its target goes to `target`.
  bool HasCutAtTickIndex(unsigned tick, unsigned* target);
  // Moves the control position alone to `tick`, clamped to the song; returns where it stands then.
  unsigned RecoverySeek(unsigned tick);
  bool GetFermataCanceledCaesura();
  void ClearFermataCanceledCaesura();
  // True from the stop at a caesura, once it cannot be called off any more, until playback goes on or the
  // position moves.
  bool StandsAtCaesura();
  void LeaveCaesura();

  // ---- what the performer asks for -------------------------------------------------------------
  // Cancels the innermost loop around the position that would still be taken. False when there is none.
  bool ExitLoop();
  // Plays the safety around the position once more. False when there is none.
  bool RepeatSafety();
  // Passes the next caesura within a bar by. `alreadyReached` receives whether the reads planned so far have
  // already come to it, so that the output is about to stop there. False when there is none.
  bool CancelCaesura(bool* alreadyReached);
  bool GetPerformersJump(Jump* jump);
  void ClearPerformersJump();
  // The next loop or cut that will be taken if nobody acts.
  bool GetNextJump(Jump* jump);

  // ---- songs -----------------------------------------------------------------------------------
  // In running order, songs that are left out passed over. Throw EndOfShow "No song after NUMBER." and
  // StartOfShow "No song before NUMBER.".
  std::string GetSongAfter(const std::string& songNumber);
  std::string GetSongBefore(const std::string& songNumber);
  // Whether a song that can be played and has audio follows.
  bool HasSongWithAudioAfter(const std::string& songNumber);
  bool SongIsNotSkip(const std::string& songNumber);
  // 0: off; 1: on. Until the first call the change log's state holds.
  void SetAttaccaState(const std::string& songNumber, unsigned char state);
  unsigned char GetAttaccaState(const std::string& songNumber);

  // The loaded song. Throws std::logic_error "No song is loaded." when there is none.
  const tesk_midi::SongData& GetCurrentSongData();
  const CL::SongLog& GetCurrentSongLog();

 protected:
  void SetTickIndex(unsigned tickIndex) { tickIndex_ = tickIndex; }
  void HowToPlayAdvanceToTickIndex(unsigned tickIndex);

  // Read without the lock by contract, hence atomic; written under it.
  std::atomic<unsigned> tickIndex_{0};
  std::atomic<unsigned> midiEndTickIndex_{0};

  // What the last advance found. The reached tick is also the jump's target.
  bool caesuraStop_ EXC_GUARDED_BY(this) = false;
  bool jumpPending_ EXC_GUARDED_BY(this) = false;
  bool replan_ EXC_GUARDED_BY(this) = false;
  unsigned reachedTickIndex_ EXC_GUARDED_BY(this) = 0;

  LoopEventList loopEvents_ EXC_GUARDED_BY(this);
  std::deque<CountdownCaesura> pendingCaesuras_ EXC_GUARDED_BY(this);

  // The DSP factors last handed out for the current sample.
  double dspTempoScale_ EXC_GUARDED_BY(this) = 1.0;
  int dspTransposition_ EXC_GUARDED_BY(this) = 0;

 private:
  struct State;
  // How a position was reached, which decides what becomes of the loops' counts.
  enum class Landing { Seek, Recovery, LoopBack, Cut };

  // ---- arming.cpp: which cues lie ahead --------------------------------------------------------
  void ArmFrom_(unsigned tick, Landing landing) EXC_HOLDS(this);
  void ResetLoopsFor_(unsigned tick, Landing landing) EXC_HOLDS(this);
  void ArmLoopsAfter_(unsigned tick) EXC_HOLDS(this);
  void ArmCaesurasFrom_(unsigned tick, bool alsoOnIt) EXC_HOLDS(this);
  void DropCuesBefore_(unsigned tick) EXC_HOLDS(this);
  void ClearFlags_() EXC_HOLDS(this);
  void ClearJumps_() EXC_HOLDS(this);

  // ---- advance.cpp -----------------------------------------------------------------------------
  void FindNextEvent_(unsigned from, unsigned to) EXC_HOLDS(this);
  bool FindEventAt_(unsigned tick) EXC_HOLDS(this);
  unsigned GetFirstEventTickAfter_(unsigned tick) EXC_HOLDS(this);

  // ---- seek.cpp --------------------------------------------------------------------------------
  bool SeekTo_(unsigned tick);
  void SettleAt_(unsigned tick) EXC_HOLDS(this);

  // ---- song.cpp, change_log.cpp ----------------------------------------------------------------
  void TakeCuesOf_(const CL::SongLog& log) EXC_HOLDS(this);
  void KeepLoopsStillThere_(std::list<LoopEvent>& before) EXC_HOLDS(this);

  std::unique_ptr<State> state_;
};

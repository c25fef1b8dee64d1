#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "exc/lock/rlockable.h"
#include "suite/midi/transients.h"
#include "suite/player_core/active_song_number.h"
#include "suite/player_core/jump.h"
#include "suite/player_core/player_state.h"

class ShowControl;
namespace gui {
class GuiUpdate;
}

// What every kind of player has: its state, the active song, the transients, and the player lock, which is
// the object itself and recursive.
//
// Threads    HOST drives the transport, one command at a time; queries ANY.
// Locks      the player lock is taken by the operation itself where it needs it.
class Player : public exc::RLockable {
 public:
  // `showPath`: the show folder.
  explicit Player(const std::string& showPath);
  ~Player() override;

  // True when a caesura waits at the control position.
  virtual bool HasPendingCaesura();
  // The song's attacca state is on and a next song with audio exists.
  virtual bool CurrentSongIsAttacca();
  // The performer's jump, if one is set.
  virtual bool GetJump(Jump* jump);
  // Takes it back.
  virtual void ClearJump();
  // The next jump that will be taken if nobody acts.
  virtual bool GetJumpForVampRepeatOrCut(Jump* jump);
  // Tells listeners that playback waits at a caesura, and where.
  virtual void GUINotifyCaesura();
  virtual bool GetFermataCanceledCaesura();
  // Sends the position once.
  virtual void EnsureGuiIsCurrent();
  virtual double GetElapsedSeconds() = 0;
  virtual gui::GuiUpdate& GetGuiUpdate() = 0;
  virtual ShowControl& GetShowControl() = 0;
  virtual double GetTotalDurationSeconds() = 0;
  // Returns when the output reads nothing any more until it is started again.
  virtual void Idle() = 0;
  virtual void LoadSong(const std::string& songNumber) = 0;
  virtual bool NextSong() = 0;
  virtual void Pause() = 0;
  virtual void PreviousSong() = 0;
  virtual void Seek(unsigned tickIndex) = 0;
  virtual void SeekLeft() = 0;
  virtual void SeekRight() = 0;
  // The start of this bar, or of the one before when less than a beat into it.
  virtual void SeekToPreviousMeasure();
  virtual void SeekToNextMeasure();
  virtual void SetAttaccaState(const std::string& songNumber, unsigned char state);
  virtual void SetTempoScale(double scale) = 0;
  virtual void SetTransposition(int semitones) = 0;
  virtual void PrepareForExit() = 0;
  virtual void Shutdown() = 0;
  virtual void Stop() = 0;
  virtual void StopAndReset() = 0;
  // The performer's go on a loop: it is left at its end. False when there is none around the position.
  virtual bool FlowControlExit();
  // The performer's go on a caesura. False when there was nothing to continue from. Waits, for less than a
  // second, when playback is just stopping there: hold no lock.
  virtual bool Continue();
  virtual void SetTimeCodeCallback(std::function<void(double, double, double)> callback) = 0;
  virtual void SetFullFrameTimeCodeCallback(std::function<void(double)> callback) = 0;

 protected:
  virtual void DoSeek_(unsigned tickIndex) = 0;

 public:
  virtual void ResetPlayerNoFillBuffers() = 0;

  // Plays the safety around the position once more. False when there is none.
  bool RepeatSafety();

  PlayerState GetPlayerState() const { return playerState_.load(); }
  // Starting to play leaves the caesura at which playback stood, and with it what was asked for there.
  void SetPlayerState(PlayerState state);
  bool IsPlaying() const { return GetPlayerState() == PlayerState::PLAY; }

  // Throws std::out_of_range when no song is active yet.
  std::string GetCurrentSongNumber() const { return activeSongNumber_.Get(); }
  // A continue asked for in the song before is forgotten.
  void SetActiveSongNumber(const std::string& songNumber);
  ActiveSongNumber& GetActiveSongNumberRef() { return activeSongNumber_; }

  Transients& GetTransients() { return transients_; }
  // The control position, in ticks.
  unsigned GetTickIndex();

  // The base parts of a recovery: the pending flag is cleared.
  void ResetForRecovery();
  void ResetForRecoveryAdvance();

 protected:
  // The base starts playback (on go) through this; the derived class connects its own Play.
  void ConnectPlay(std::function<void()> play) { play_ = std::move(play); }

  // Atomic because a caesura stores the state directly while other threads read it.
  std::atomic<PlayerState> playerState_{PlayerState::STOP};
  // Continue is already asked for: a caesura about to stop is passed through.
  bool continueIsPending_ EXC_GUARDED_BY(this) = false;
  // The show folder, and what the decoder is told besides the path (content_argument.h).
  const std::string showPath_;
  const std::string contentArgument_;

 private:
  ActiveSongNumber activeSongNumber_;
  Transients transients_;
  std::function<void()> play_;
};

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "exc/lock/scope_lock.h"
#include "suite/midi/how_to_play.h"
#include "suite/player_core/gui_update.h"
#include "suite/player_core/player.h"
#include "suite/player_core/show_control.h"
#include "tests/reference_suite/player_core/support/test_show.h"

namespace test_support {

// The base of show controls with what a derived class must add, and a look inside. It has no samples: what
// moves is the tick.
class TestShowControl : public ShowControl {
 public:
  TestShowControl(ActiveSongNumber& songNumber, TestShow& show, gui::GuiUpdate& guiUpdate,
                  Transients& transients)
      : ShowControl(songNumber, show.data, &show.log), guiUpdate_(guiUpdate), howToPlay_(transients) {}

  unsigned GetStartTickIndex() override { return start_; }
  unsigned GetEndTickIndex() override { return end_; }
  gui::GuiUpdate& GetGuiUpdate() override { return guiUpdate_; }
  HowToPlay& GetHowToPlay() override { return howToPlay_; }
  void LoadStartAndEndTickIndices() override;

  // Told of the virtual operations that the base calls, by name, before they happen.
  std::function<void(const std::string&)> onCall;
  void ResetControlVariables() override;
  void ResetGuiUpdate() override;
  void SetJump(unsigned tickIndex, exc::ExLock& lock, bool skipAhead) override;
  void SetDataOnGuiAndHowToPlay() override;
  void FinishLoadingSongLog() override;

  // ---- what the base keeps -----------------------------------------------------------------------
  bool IsCaesuraStop();
  bool IsJumpPending();
  bool IsReplan();
  unsigned GetReached();
  unsigned GetMidiEnd() const { return midiEndTickIndex_; }
  std::vector<LoopEvent> GetLoopsAhead();
  std::vector<unsigned> GetCaesurasAhead();
  LoopEvent& GetLoop(unsigned to);  // the one ahead that ends at `to`
  // "limit/done/canceled" of the loop ahead that ends at `to`.
  std::string DescribeLoop(unsigned to);
  // "jump TICK", "caesura TICK", "replan TICK" or "TICK".
  std::string Advance(unsigned from, unsigned to);
  // Advances and carries the outcome out as a plan does.
  std::string Play(unsigned to);
  // Plays in reads of `quantum` ticks until a caesura, the end, or `reads` reads: the passages that are
  // heard, "0..1920 960..1920 caesura".
  std::string Perform(unsigned quantum = 100, int reads = 2000);
  // Plays on to `tick`, which must come without a jump.
  void PlayTo(unsigned tick);
  void MoveTo(unsigned tick);  // as a plain advance does
  void SetDspFactors(double scale, int transposition);
  std::pair<double, int> GetDspFactors();

 private:
  void Tell_(const std::string& call) {
    if (onCall) onCall(call);
  }

  gui::GuiUpdate& guiUpdate_;
  HowToPlay howToPlay_;
  unsigned start_ = 0;
  unsigned end_ = 0;
};

// A player of ticks: base player, base show control and the real generator of position updates.
class TestPlayer : public Player {
 public:
  explicit TestPlayer(TestShow& show, const std::string& showPath = "show");
  ~TestPlayer() override { guiUpdate_.Pause(); }

  gui::GuiUpdate& GetGuiUpdate() override { return guiUpdate_; }
  TestShowControl& GetShowControl() override { return showControl_; }
  double GetElapsedSeconds() override { return 0; }
  double GetTotalDurationSeconds() override { return 0; }
  void Idle() override {}
  void LoadSong(const std::string& songNumber) override;
  bool NextSong() override { return true; }
  void Pause() override {}
  void PreviousSong() override {}
  void Seek(unsigned tickIndex) override { seeks.push_back(tickIndex); }
  void SeekLeft() override {}
  void SeekRight() override {}
  void SetTempoScale(double scale) override { GetTransients().SetTempoScale(scale); }
  void SetTransposition(int semitones) override { GetTransients().SetTransposition(semitones); }
  void PrepareForExit() override {}
  void Shutdown() override {}
  void Stop() override {}
  void StopAndReset() override {}
  void SetTimeCodeCallback(std::function<void(double, double, double)> /*callback*/) override {}
  void SetFullFrameTimeCodeCallback(std::function<void(double)> /*callback*/) override {}
  void ResetPlayerNoFillBuffers() override {}

  using Player::ConnectPlay;
  // What the audible-tick query writes and answers.
  std::function<bool(unsigned*)> audible;
  std::vector<unsigned> seeks;
  int plays = 0;

  bool IsContinuePending();
  void SetContinuePending(bool isPending);
  // A caesura stores the state directly.
  void StorePause() { playerState_ = PlayerState::PAUSE; }
  const std::string& GetShowPath() const { return showPath_; }
  const std::string& GetContentArgument() const { return contentArgument_; }

 protected:
  void DoSeek_(unsigned tickIndex) override { GetShowControl().Seek(tickIndex); }

 private:
  gui::GuiUpdate guiUpdate_;
  TestShowControl showControl_;
};

// One song, loaded.
struct Stage {
  explicit Stage(const TestSong& song) : Stage(std::vector<TestSong>{song}) {}
  explicit Stage(const std::vector<TestSong>& songs);

  TestShow show;
  TestPlayer player;
  TestShowControl& control;
};

// Whether another thread could take the lock now.
bool IsFree(exc::ExLock& lock);

}  // namespace test_support

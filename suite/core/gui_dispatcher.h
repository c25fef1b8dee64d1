#pragma once

#include <memory>
#include <string>

namespace notify {

// Where the listener is in the music now. Sent up to 60 times a second while playing.
struct PositionUpdate {
  std::string songNumber;
  unsigned tickIndex = 0;   // ticks from the start of the song
  int bar = 0;              // as numbered in the song; a pickup bar can be 0
  unsigned beat = 1;        // from 1
  unsigned tickInBeat = 0;  // from 0
  unsigned meterNumerator = 4;
  unsigned meterDenominator = 4;
  double tempo = 120.0;        // quarter notes per minute as recorded
  double scaledTempo = 120.0;  // the same with the tempo scale in force
  double tempoScale = 1.0;
  int transposition = 0;  // semitones
  int keySharps = 0;      // -7 to 7
  bool keyIsMinor = false;
  unsigned page = 0;     // 0: none known
  double seconds = 0.0;  // from the audio start as recorded
};

// The state of one loop when a pass begins.
struct LoopUpdate {
  std::string songNumber;
  unsigned fromTick = 0;
  unsigned toTick = 0;
  int kind = 0;    // codes::kVamp, kRepeat or kSafety
  int pass = 1;    // the pass that begins, from 1
  int passes = 0;  // in all; 0: no limit
};

// Whoever wants to know derives from this and overrides what it needs. Called on the thread on which the
// thing happened, the render thread included: put a message into a queue and return. Never drive the
// transport from here.
class GuiListener {
 public:
  virtual ~GuiListener() = default;
  virtual void OnPlaybackStarted() {}
  virtual void OnPlaybackPaused() {}
  virtual void OnPlaybackStopped() {}
  virtual void OnPlayerException() {}
  virtual void OnSongLoaded(const std::string& /*songNumber*/) {}
  virtual void OnLoadingProgress(const std::string& /*songNumber*/, double /*fraction, 0 to 1*/) {}
  virtual void OnPosition(const PositionUpdate& /*update*/) {}
  virtual void OnCaesura(const std::string& /*songNumber*/, unsigned /*tickIndex*/) {}
  virtual void OnLoopPass(const LoopUpdate& /*update*/) {}
};

// Carries what happens in the engine to every listener. Threads: ANY. The listener table has a lock of its
// own, which is not held while listeners are called.
class GuiDispatcher {
 public:
  GuiDispatcher();
  ~GuiDispatcher();
  GuiDispatcher(const GuiDispatcher&) = delete;
  GuiDispatcher& operator=(const GuiDispatcher&) = delete;

  void AddListener(GuiListener* listener);
  // Returns when no call of this listener is under way any more, unless called from within one.
  void RemoveListener(GuiListener* listener);

  void SendPlaybackStarted();
  void SendPlaybackPaused();
  void SendPlaybackStopped();
  void SendPlayerExceptionNotification();
  void SendSongLoaded(const std::string& songNumber);
  void SendLoadingProgress(const std::string& songNumber, double fraction);
  void SendPosition(const PositionUpdate& update);
  void SendCaesura(const std::string& songNumber, unsigned tickIndex);
  void SendLoopPass(const LoopUpdate& update);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// The one instance of the process.
extern GuiDispatcher guiDispatcher;

}  // namespace notify

#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "exc/lock/rlockable.h"
#include "suite/audio/audio_sample_output.h"
#include "suite/audio/output_interface.h"

// Stands in for the player: plays a song whose cues lie at given samples, and writes down what the output
// asks of it. Frame n of song s holds n + 1 + s * 1 000 000 in every channel, so that silence (0) and every
// frame of every song can be told apart.
//
// Threads    ANY, like the player. Its own recursive lock; the read-samples lock is another one.
class ScriptedPlayer : public tesk_audio::AudioPlayerOutputInterface {
 public:
  struct Song {
    long long frames = 10'000;
    long long audioFrames = -1;  // -1: as long as the song
    std::set<long long> caesuras = {};
    std::map<long long, std::vector<long long>> jumps = {};  // at -> where to, one after the other; then none
    bool announcesJumps = true;                              // false: like a safety's
    std::map<long long, long double> scales = {};            // from -> tempo scale
    bool isAttacca = false;
    std::map<long long, int> transpositions = {};          // from -> semitones
    std::shared_ptr<const std::vector<float>> sound = {};  // in place of the staircase; in every channel
  };

  explicit ScriptedPlayer(std::vector<Song> songs, unsigned channels = 1);
  ~ScriptedPlayer() override;

  // The output under test. Set before anything plays.
  void SetOutput(tesk_audio::AudioSampleOutput* output) { output_ = output; }

  // ---- what a test does, as the player's own operations would
  void SeekTo(long long sampleIndex);  // flag, move, refill unless it plays
  void RewindAndRefill();
  void SetPlays(bool plays);

  // ---- what a test wants to know; each line is one call, without its plain queries
  std::string Log();
  void ClearLog();
  long long Planned();  // frames read or passed over since the last rewind
  long long Position();
  bool HasStopped();  // the output has said so since the last start
  bool Waits();       // at a caesura
  static float Sample(long long frame, int song = 0) {
    return static_cast<float>(frame + 1 + song * 1'000'000LL);
  }

  // ---- what the performer changes while it plays; acts from the next read on
  std::atomic<bool> go{false};  // no jump is taken any more
  std::atomic<double> liveScale{1.0};
  std::atomic<int> liveSemitones{0};

  // ---- what happens when; all called without a lock of this player
  bool goesOnAtCaesura = false;
  std::function<void()> onCaesura;
  std::function<void()> onStopped;
  std::function<void()> onAttacca;          // may throw
  std::function<void()> onIsAttacca;        // may throw
  std::function<void()> onApproachingStop;  // before it is written down
  std::function<void()> onPlay;             // before the output is started
  std::function<void()> onPlayed;           // and after that
  std::function<void()> onPlan;             // inside the read-samples lock; may throw
  std::function<void()> onPosition;         // before it is told

  // ---- AudioPlayerOutputInterface
  void Play() override;
  void ResetPlayer() override {}
  bool CurrentSongIsAttacca() override;
  void AddToSampleIndex(long long samples) override;
  tesk_audio::SampleCount GetNextReadSampleCount(tesk_audio::SampleCount requested) override;
  void ProcessLoopEventsAtCurrentTickIndex() override {}
  long long GetSampleIndex() override;
  long long GetNextCaesuraSampleIndex(long long sampleIndex) override;
  void PauseAndClearApproachingStop() override { Write_("clear approaching stop"); }
  void NotifyApproachingStop() override;
  long long GetLastJumpSampleIndex() override;
  long long GetJumpTargetSampleIndex() override;
  bool GetJumpIsNext() override;
  bool GetCutToEndOfSongIsNext() override { return false; }
  void LoadNextSongAttacca() override;
  bool OnCaesuraStop() override;
  void NotifyOutputHasStopped() override;
  long long ReadSamplesAt(long long sampleIndex, long long* ioCount, void* buffer) override;
  long long ReadSamples(tesk_audio::SampleCount* ioPacketCount, void* buffer) override;
  void GetDspFactorsAtCurrentTickIndex(long double* scale, int* transposition) override;
  void GetDspFactorsAtCurrentSampleIndex(long double* scale, int* transposition) override;
  void GetDspFactorsAt(long long sampleIndex, long double* scale, int* transposition) override;
  exc::ExLock& GetReadSamplesLock() override { return readSamplesLock_; }
  void SkipAheadSamplesOnNextJump(unsigned) override {}
  void AdjustNextJumpSampleIndex(long long) override {}
  void ResetForRecovery(long long, long long) override {}
  void ResetForRecoveryAdvance(long long, long long) override {}
  bool GetAttaccaHasOccurred() override;
  bool GetUserRequestedSeek() override { return false; }
  bool GetSeekRequestedWhileNotPlay() override { return false; }

 private:
  void Write_(const std::string& line);
  // The jump due at the position; null when there is none.
  const long long* DueJump_() EXC_HOLDS(lock_);
  long long FramesToNextCue_() EXC_HOLDS(lock_);
  long long Read_(long long from, long long* count, float* buffer) EXC_HOLDS(lock_);

  unsigned channels_;
  tesk_audio::AudioSampleOutput* output_ = nullptr;
  exc::RLockable readSamplesLock_;
  exc::RLockable lock_;
  std::vector<Song> songs_ EXC_GUARDED_BY(lock_);
  std::size_t song_ EXC_GUARDED_BY(lock_) = 0;
  long long index_ EXC_GUARDED_BY(lock_) = 0;
  long long planned_ EXC_GUARDED_BY(lock_) = 0;
  long long lastJump_ EXC_GUARDED_BY(lock_) = 0;
  long long target_ EXC_GUARDED_BY(lock_) = 0;
  std::map<long long, std::size_t> jumpsDone_ EXC_GUARDED_BY(lock_);
  std::set<long long> caesurasPassed_ EXC_GUARDED_BY(lock_);
  bool plays_ EXC_GUARDED_BY(lock_) = false;
  bool waits_ EXC_GUARDED_BY(lock_) = false;
  bool hasStopped_ EXC_GUARDED_BY(lock_) = false;
  bool attaccaHasOccurred_ EXC_GUARDED_BY(lock_) = false;
  std::string log_ EXC_GUARDED_BY(lock_);
};

using Songs = std::vector<ScriptedPlayer::Song>;

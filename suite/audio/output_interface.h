#pragma once

#include "exc/lock/ex_lock.h"
#include "suite/audio/sample_count.h"

namespace tesk_audio {

// What any output may ask of its player.
class PlayerOutputInterface {
 public:
  virtual ~PlayerOutputInterface() = default;
  virtual void Play() = 0;
  virtual void ResetPlayer() = 0;
  // Whether the end of the current song runs straight on into the next one.
  virtual bool CurrentSongIsAttacca() = 0;
};

// What an output of recorded audio asks of its player, from its render thread. Before every read: the length
// of the next read; then the read itself, which moves the position on. Sample counts are unscaled.
class AudioPlayerOutputInterface : public virtual PlayerOutputInterface {
 public:
  virtual void AddToSampleIndex(long long samples) = 0;
  virtual SampleCount GetNextReadSampleCount(SampleCount requested) = 0;
  virtual void ProcessLoopEventsAtCurrentTickIndex() = 0;
  virtual long long GetSampleIndex() = 0;
  virtual long long GetNextCaesuraSampleIndex(long long sampleIndex) = 0;
  virtual void PauseAndClearApproachingStop() = 0;
  virtual void NotifyApproachingStop() = 0;
  virtual long long GetLastJumpSampleIndex() = 0;
  virtual long long GetJumpTargetSampleIndex() = 0;
  virtual bool GetJumpIsNext() = 0;
  virtual bool GetCutToEndOfSongIsNext() = 0;
  virtual void LoadNextSongAttacca() = 0;
  virtual bool OnCaesuraStop() = 0;
  virtual void NotifyOutputHasStopped() = 0;
  virtual long long ReadSamplesAt(long long sampleIndex, long long* ioCount, void* buffer) = 0;
  virtual long long ReadSamples(SampleCount* ioPacketCount, void* buffer) = 0;
  virtual void GetDspFactorsAtCurrentTickIndex(long double* scale, int* transposition) = 0;
  virtual void GetDspFactorsAtCurrentSampleIndex(long double* scale, int* transposition) = 0;
  virtual void GetDspFactorsAt(long long sampleIndex, long double* scale, int* transposition) = 0;
  virtual exc::ExLock& GetReadSamplesLock() = 0;
  virtual void SkipAheadSamplesOnNextJump(unsigned samples) = 0;
  virtual void AdjustNextJumpSampleIndex(long long samples) = 0;
  virtual void ResetForRecovery(long long sampleIndex, long long elapsedSampleCount) = 0;
  virtual void ResetForRecoveryAdvance(long long sampleIndex, long long elapsedSampleCount) = 0;
  virtual bool GetAttaccaHasOccurred() = 0;
  virtual bool GetUserRequestedSeek() = 0;
  virtual bool GetSeekRequestedWhileNotPlay() = 0;
};

}  // namespace tesk_audio

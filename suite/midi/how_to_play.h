#pragma once

#include <memory>

#include "exc/annotations.h"
#include "exc/lock/lockable.h"

class Transients;
namespace CL {
struct SongLog;
}
namespace TL {
class Timeline;
}

// The control stream of a song: at which tick it stands and which tempo scale and transposition are in force
// there. Tempo scale in force: the log's value times the transient one, limited to [0.25, 4]; transposition:
// the log's semitones plus the transient ones, limited to [-24, 24].
//
// Threads    ANY; every operation takes this object's own lock, which is the innermost of all.
// Render     the queries allocate nothing.
class HowToPlay : public exc::Lockable {
 public:
  explicit HowToPlay(Transients& transients);
  ~HowToPlay() override;

  // Moves forward; the values in force before become the pre-advance values.
  virtual void AdvanceToTickIndex(unsigned tickIndex);
  // For a control stream that follows somebody else's clock; ours follows the audio.
  virtual void FollowClock(unsigned tickIndex, double secondsPerTick);
  // The tick at which the control stream ends.
  virtual unsigned GetEndTickIndex();
  // Moves anywhere; the values in force before become the pre-seek values.
  virtual void Seek(unsigned tickIndex);
  // Takes over a song's values and stands at `startTickIndex`.
  virtual void SetData(const CL::SongLog& log, const TL::Timeline& timeline, unsigned startTickIndex);
  // Widens the limits of the tempo scale to [0.25, 16] for rehearsal scanning.
  virtual void SetHighSpeed();
  virtual double LimitTempoScaleToAllowedRange(double scale);

  unsigned GetTickIndex();

  double GetTempoScaleValue();
  int GetTranspositionValue();
  double GetTempoScaleValueAtTickIndex(unsigned tickIndex);
  int GetTranspositionValueAtTickIndex(unsigned tickIndex);
  double GetPreSeekTempoScale();
  int GetPreSeekPitchShift();
  double GetPreAdvanceTempoScale();
  int GetPreAdvanceTransposition();

  // The first tick after the position at which a value of the log changes; the largest unsigned 32-bit value
  // when none does.
  unsigned GetTickIndexOfNextDspEvent();

 private:
  struct State;
  std::unique_ptr<State> state_ EXC_GUARDED_BY(this);
};

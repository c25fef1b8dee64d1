#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "tests/scenarios/sample_map.h"
#include "tests/scenarios/song_plan.h"

namespace scenarios {

// What a listener must hear of one song, frame by frame, said as simply as possible: play up to the next cue,
// do what it says, play on. Knows nothing of reads, plans or quanta.
class FlowModel {
 public:
  enum class State { Playing, Caesura, Ended };

  FlowModel(const SongPlan& song, long double rate);

  // The next `frames` frame values, appended to `values`; fewer when a caesura or the end comes first.
  State Play(long long frames, std::vector<long long>* values);

  // What comes at once if playback goes on now: acts on every cue at the position.
  State Settle();

  // Leaves the caesura at which Settle has stopped.
  void Continue();

  // ---- what a performer can do while playing ----
  void Go();            // leave the innermost loop around the position
  void Again();         // play the safety around the position once more
  bool CanAsk() const;  // whether Again would find a safety that go has not left
  void SkipCaesura(unsigned ticksPerBar);
  void Seek(unsigned tick);

  long long Sample() const { return sample_; }
  unsigned Tick() const { return map_.TickOf(sample_); }
  // Whether the position is the first sample of a cue that has not been acted on.
  bool OnCue() const { return sample_ == map_.FirstSample(NextCue_()); }
  bool HasPerformersJump() const { return performersJump_.has_value(); }
  std::optional<unsigned> NextCaesura() const;
  const SampleMap& Map() const { return map_; }

 private:
  struct LoopState {
    LoopPlan plan;
    int done = 0;
    int asked = 0;
    bool canceled = false;
    bool MayJump() const;
  };

  unsigned NextCue_() const;
  // True when a cue at `tick` moved the position.
  bool TakeLoop_(unsigned tick);
  bool TakeCut_(unsigned tick);
  void Land_(unsigned tick);
  void Disarm_(unsigned caesura);
  void Reset_(LoopState* loop);
  LoopState* InnermostAround_(unsigned tick, const std::function<bool(const LoopState&)>& wanted);

  SongPlan song_;
  SampleMap map_;
  std::vector<LoopState> loops_;  // innermost first: largest start, then smallest end
  std::vector<bool> caesuraArmed_;
  std::optional<CutPlan> performersJump_;
  long long sample_ = 0;
  unsigned cueFloor_ = 0;   // cuts and caesuras at or after it are ahead
  unsigned loopFloor_ = 0;  // loops that end after it are ahead
  bool jumpedOntoCaesura_ = false;
  bool ended_ = false;
};

}  // namespace scenarios

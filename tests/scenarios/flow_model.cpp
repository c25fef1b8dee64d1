#include "tests/scenarios/flow_model.h"

#include <algorithm>

namespace scenarios {

bool FlowModel::LoopState::MayJump() const {
  if (canceled) return false;
  switch (plan.kind) {
    case LoopKind::Vamp:
      return true;
    case LoopKind::Repeat:
      return done < plan.passes - 1;
    case LoopKind::Safety:
      return done < asked;
  }
  return false;
}

FlowModel::FlowModel(const SongPlan& song, long double rate) : song_(song), map_(song, rate) {
  for (const LoopPlan& plan : song.loops) loops_.push_back({plan});
  std::sort(loops_.begin(), loops_.end(), [](const LoopState& a, const LoopState& b) {
    return a.plan.from != b.plan.from ? a.plan.from > b.plan.from : a.plan.to < b.plan.to;
  });
  caesuraArmed_.assign(song.caesuras.size(), true);
  Land_(song.audioStart);
}

unsigned FlowModel::NextCue_() const {
  unsigned next = song_.PlaybackEnd();
  for (const LoopState& loop : loops_) {
    if (loop.plan.to > loopFloor_) next = std::min(next, loop.plan.to);
  }
  for (const CutPlan& cut : song_.cuts) {
    if (cut.from >= cueFloor_) next = std::min(next, cut.from);
  }
  if (performersJump_ && performersJump_->from >= cueFloor_) next = std::min(next, performersJump_->from);
  if (const auto caesura = NextCaesura()) next = std::min(next, *caesura);
  return next;
}

std::optional<unsigned> FlowModel::NextCaesura() const {
  std::optional<unsigned> next;
  for (std::size_t i = 0; i < song_.caesuras.size(); ++i) {
    const unsigned tick = song_.caesuras[i];
    if (caesuraArmed_[i] && tick >= cueFloor_ && (!next || tick < *next)) next = tick;
  }
  return next;
}

FlowModel::State FlowModel::Settle() {
  while (!ended_) {
    const unsigned cue = NextCue_();
    if (sample_ < map_.FirstSample(cue)) return State::Playing;
    if (jumpedOntoCaesura_) return State::Caesura;
    if (cue > loopFloor_ && TakeLoop_(cue)) continue;
    if (TakeCut_(cue)) continue;
    if (NextCaesura() == cue) return State::Caesura;
    if (cue >= song_.PlaybackEnd()) ended_ = true;
    cueFloor_ = cue + 1;
    loopFloor_ = cue;
  }
  return State::Ended;
}

FlowModel::State FlowModel::Play(long long frames, std::vector<long long>* values) {
  while (true) {
    const State state = Settle();
    if (state != State::Playing || frames == 0) return state;
    const long long count = std::min(frames, map_.FirstSample(NextCue_()) - sample_);
    for (long long i = 0; i < count; ++i, ++sample_) {
      values->push_back(sample_ < song_.audioFrames ? song_.firstValue + sample_ : 0);
    }
    frames -= count;
    if (frames == 0) return State::Playing;  // cues at the position wait for the next call
  }
}

bool FlowModel::TakeLoop_(unsigned tick) {
  for (LoopState& loop : loops_) {
    if (loop.plan.to != tick || !loop.MayJump()) continue;
    ++loop.done;
    for (LoopState& other : loops_) {
      const bool inside = other.plan.from >= loop.plan.from && other.plan.to <= loop.plan.to;
      if (inside && &other != &loop) Reset_(&other);
    }
    const unsigned landing = loop.plan.from;
    Land_(landing);
    for (std::size_t i = 0; i < song_.caesuras.size(); ++i) {
      caesuraArmed_[i] = song_.caesuras[i] != landing;
    }
    return true;
  }
  return false;
}

bool FlowModel::TakeCut_(unsigned tick) {
  std::optional<unsigned> target;
  if (performersJump_ && performersJump_->from == tick) {
    target = performersJump_->to;
    performersJump_.reset();
  } else {
    for (const CutPlan& cut : song_.cuts) {
      if (cut.from == tick && tick >= cueFloor_) target = cut.to;
    }
  }
  if (!target) return false;
  if (*target > song_.PlaybackEnd()) ended_ = true;
  Land_(*target);
  // Where a jump lands on a caesura, playback stops before anything else there is looked at.
  jumpedOntoCaesura_ = NextCaesura() == *target;
  return true;
}

void FlowModel::Land_(unsigned tick) {
  jumpedOntoCaesura_ = false;
  sample_ = map_.FirstSample(tick);
  cueFloor_ = tick;
  loopFloor_ = tick;
  caesuraArmed_.assign(song_.caesuras.size(), true);
}

void FlowModel::Reset_(LoopState* loop) {
  loop->done = 0;
  loop->asked = 0;
  loop->canceled = false;
}

void FlowModel::Continue() {
  jumpedOntoCaesura_ = false;
  Disarm_(*NextCaesura());
}

void FlowModel::Disarm_(unsigned caesura) {
  for (std::size_t i = 0; i < song_.caesuras.size(); ++i) {
    if (song_.caesuras[i] == caesura) caesuraArmed_[i] = false;
  }
}

FlowModel::LoopState* FlowModel::InnermostAround_(unsigned tick,
                                                  const std::function<bool(const LoopState&)>& wanted) {
  for (LoopState& loop : loops_) {
    if (loop.plan.from <= tick && tick < loop.plan.to && wanted(loop)) return &loop;
  }
  return nullptr;
}

void FlowModel::Go() {
  const unsigned tick = Tick();
  LoopState* loop = InnermostAround_(tick, [](const LoopState& l) { return l.MayJump(); });
  if (loop == nullptr) return;
  loop->canceled = true;
  if (loop->plan.kind != LoopKind::Vamp || loop->plan.exit == Exit::End) return;
  const unsigned grid = loop->plan.exit == Exit::Bar ? song_.BarTicks() : song_.BeatTicks();
  const unsigned line = (tick / grid + 1) * grid;
  if (line < loop->plan.to) performersJump_ = CutPlan{line, loop->plan.to};
}

bool FlowModel::CanAsk() const {
  const unsigned tick = Tick();
  for (const LoopState& loop : loops_) {
    if (loop.plan.kind == LoopKind::Safety && loop.plan.from <= tick && tick < loop.plan.to)
      return !loop.canceled;
  }
  return false;
}

void FlowModel::Again() {
  LoopState* loop =
      InnermostAround_(Tick(), [](const LoopState& l) { return l.plan.kind == LoopKind::Safety; });
  if (loop != nullptr) loop->asked = std::max(loop->asked, loop->done) + 1;
}

void FlowModel::SkipCaesura(unsigned ticksPerBar) {
  const auto caesura = NextCaesura();
  if (!caesura || *caesura - Tick() > ticksPerBar) return;
  Disarm_(*caesura);
}

void FlowModel::Seek(unsigned tick) {
  if (tick > song_.PlaybackEnd()) return;
  tick = std::max(tick, song_.audioStart);
  for (LoopState& loop : loops_) {
    if (loop.plan.to > tick) Reset_(&loop);
  }
  performersJump_.reset();
  Land_(tick);
  jumpedOntoCaesura_ = NextCaesura() == tick;
}

}  // namespace scenarios

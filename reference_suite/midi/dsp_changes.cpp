#include "reference_suite/midi/dsp_changes.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "suite/midi/song_log.h"

namespace {

template <typename Event>
const Event* LastAt(const cmn::SequenceTemplate<Event>& events, unsigned tick) {
  const auto after = std::upper_bound(events.begin(), events.end(), tick,
                                      [](unsigned at, const Event& event) { return at < event.abs_time(); });
  return after == events.begin() ? nullptr : &*std::prev(after);
}

std::vector<unsigned> TicksOfEvents(const CL::SongLog& log) {
  std::vector<unsigned> ticks{0};
  for (const CL::TempoScale& event : log.tempoScales) ticks.push_back(event.abs_time());
  for (const CL::Transpose& event : log.transposes) ticks.push_back(event.abs_time());
  std::sort(ticks.begin(), ticks.end());
  ticks.erase(std::unique(ticks.begin(), ticks.end()), ticks.end());
  return ticks;
}

}  // namespace

DspChanges::DspChanges(const CL::SongLog& log) {
  for (const unsigned tick : TicksOfEvents(log)) {
    DspChange change{tick};
    if (const CL::TempoScale* event = LastAt(log.tempoScales, tick)) change.scale = event->GetScale();
    if (const CL::Transpose* event = LastAt(log.transposes, tick)) change.semitones = event->GetSemitones();
    const bool same = !changes_.empty() && changes_.back().scale == change.scale &&
                      changes_.back().semitones == change.semitones;
    if (!same) changes_.push_back(change);
  }
}

const DspChange& DspChanges::At(unsigned tick) const {
  const auto after = std::upper_bound(changes_.begin(), changes_.end(), tick,
                                      [](unsigned at, const DspChange& change) { return at < change.tick; });
  return *std::prev(after);
}

unsigned DspChanges::NextAfter(unsigned tick) const {
  const auto after = std::upper_bound(changes_.begin(), changes_.end(), tick,
                                      [](unsigned at, const DspChange& change) { return at < change.tick; });
  return after == changes_.end() ? std::numeric_limits<unsigned>::max() : after->tick;
}

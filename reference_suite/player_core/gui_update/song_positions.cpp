#include "reference_suite/player_core/gui_update/song_positions.h"

#include <algorithm>

#include "suite/midi/how_to_play.h"
#include "suite/midi/song_data.h"

namespace gui {

namespace {

constexpr unsigned kDefaultMicrosecondsPerQuarter = 500000;

// The event in force at `tick`; null before the first.
template <typename Event>
const Event* GetInForce(const cmn::SequenceTemplate<Event>& events, unsigned tick) {
  const auto next =
      std::upper_bound(events.begin(), events.end(), tick,
                       [](unsigned wanted, const Event& event) { return wanted < event.abs_time(); });
  return next == events.begin() ? nullptr : &*std::prev(next);
}

}  // namespace

SongPositions::SongPositions(const tesk_midi::SongData* song) : song_(song) {
  if (song == nullptr) return;
  const unsigned short ppq = song->GetPulsesPerQuarterNote();
  const auto add = [&](const TL::Tempo& tempo) {
    TempoSegment segment;
    segment.tick = tempo.abs_time();
    segment.seconds = segments_.empty() ? 0.0 : GetSeconds_(segment.tick);
    segment.secondsPerTick = tempo.tick_time(ppq);
    segment.quartersPerMinute = 60'000'000.0 / tempo.GetMicrosecondsPerQuarter();
    segments_.push_back(segment);
  };
  const cmn::SequenceTemplate<TL::Tempo>& tempos = song->GetTimeline().GetTempos();
  if (tempos.GetSize() == 0) add(TL::Tempo(0, kDefaultMicrosecondsPerQuarter));
  for (const TL::Tempo& tempo : tempos) add(tempo);
}

const SongPositions::TempoSegment& SongPositions::GetSegment_(unsigned tick) const {
  const auto next =
      std::upper_bound(segments_.begin(), segments_.end(), tick,
                       [](unsigned wanted, const TempoSegment& segment) { return wanted < segment.tick; });
  return next == segments_.begin() ? segments_.front() : *std::prev(next);
}

double SongPositions::GetSeconds_(unsigned tick) const {
  const TempoSegment& segment = GetSegment_(tick);
  return segment.seconds + segment.secondsPerTick * (tick - segment.tick);
}

notify::PositionUpdate SongPositions::GetPosition(unsigned tick) const {
  notify::PositionUpdate update;
  update.tickIndex = tick;
  if (song_ == nullptr) return update;
  const TL::Timeline& timeline = song_->GetTimeline();
  update.songNumber = song_->GetNumber();
  const TL::BarBeatTick place = timeline.GetBarBeatTick(tick);
  update.bar = place.bar;
  update.beat = place.beat;
  update.tickInBeat = place.tick;
  if (const TL::Meter* meter = GetInForce(timeline.GetMeters(), tick)) {
    update.meterNumerator = meter->GetNumerator();
    update.meterDenominator = meter->GetDenominator();
  }
  if (const TL::Key* key = GetInForce(timeline.GetKeys(), tick)) {
    update.keySharps = key->GetSharps();
    update.keyIsMinor = key->IsMinor();
  }
  if (const TL::PageNum* page = GetInForce(timeline.GetPageNums(), tick)) update.page = page->GetNumber();
  update.tempo = GetSegment_(tick).quartersPerMinute;
  update.scaledTempo = update.tempo;
  update.seconds = GetSeconds_(tick) - GetSeconds_(timeline.GetAudioStartTicks());
  return update;
}

notify::PositionUpdate SongPositions::GetPosition(unsigned tick, HowToPlay& howToPlay) const {
  notify::PositionUpdate update = GetPosition(tick);
  update.tempoScale = howToPlay.GetTempoScaleValueAtTickIndex(tick);
  update.scaledTempo = update.tempo * update.tempoScale;
  update.transposition = howToPlay.GetTranspositionValueAtTickIndex(tick);
  return update;
}

}  // namespace gui

#include "reference_suite/midi/show_folder/build_song_log.h"

#include <algorithm>
#include <utility>

#include "reference_suite/midi/timeline/timeline_builder.h"

namespace tesk_midi {

namespace {

class SongLogBuilder {
 public:
  void Add(const PlacedCue& placed) {
    const WrittenCue& cue = *placed.cue;
    const int line = cue.place.line;
    switch (cue.kind) {
      case CueKind::Tempo:
        log_.tempoScales.Add(CL::TempoScale(placed.begin, cue.scale, line));
        break;
      case CueKind::Transpose:
        log_.transposes.Add(CL::Transpose(placed.begin, cue.number, line));
        break;
      case CueKind::Vamp:
        AddLoop_(placed, codes::kVamp, 0);
        break;
      case CueKind::Safety:
        AddLoop_(placed, codes::kSafety, 1);
        break;
      case CueKind::Repeat:
        AddLoop_(placed, codes::kRepeat, cue.number);
        break;
      case CueKind::Cut:
        log_.cuts.Add(CL::Cut(placed.begin, placed.end, line));
        break;
      case CueKind::Caesura:
        log_.caesuras.Add(CL::Caesura(placed.begin, line));
        break;
      case CueKind::Marker:
        log_.markers.Add(CL::Marker(placed.begin, cue.name, line));
        break;
      case CueKind::Click:
        log_.clicks.Add(CL::Click(placed.begin, placed.end, line));
        break;
      default:  // a page
        pages_.Add(TL::PageNum(placed.begin, static_cast<unsigned>(cue.number)));
        break;
    }
  }

  CL::SongLog TakeLog() { return std::move(log_); }
  cmn::SequenceTemplate<TL::PageNum> TakePages() { return std::move(pages_); }
  unsigned GetLastLoopEnd() const { return lastLoopEnd_; }

 private:
  void AddLoop_(const PlacedCue& placed, int code, int passes) {
    log_.loops.Add(
        CL::Loop(placed.begin, placed.end, code, passes, placed.cue->exit, placed.cue->place.line));
    lastLoopEnd_ = std::max(lastLoopEnd_, placed.end);
  }

  CL::SongLog log_;
  cmn::SequenceTemplate<TL::PageNum> pages_;
  unsigned lastLoopEnd_ = 0;
};

cmn::SequenceTemplate<CL::Marker> WithMarkers(const std::vector<CL::Marker>& first,
                                              const cmn::SequenceTemplate<CL::Marker>& second) {
  std::vector<CL::Marker> markers(first);
  markers.insert(markers.end(), second.begin(), second.end());
  std::stable_sort(markers.begin(), markers.end(),
                   [](const CL::Marker& a, const CL::Marker& b) { return a.abs_time() < b.abs_time(); });
  return cmn::SequenceTemplate<CL::Marker>(std::move(markers));
}

}  // namespace

CL::SongLog BuildSongLog(const WrittenSongLog& written, std::vector<PlacedCue> cues,
                         const std::vector<CL::Marker>& midiMarkers, TL::Timeline* timeline) {
  std::stable_sort(cues.begin(), cues.end(),
                   [](const PlacedCue& a, const PlacedCue& b) { return a.begin < b.begin; });
  SongLogBuilder builder;
  for (const PlacedCue& cue : cues) builder.Add(cue);
  timeline->SetPageNums(builder.TakePages());
  MoveEndBehindLoop(timeline, builder.GetLastLoopEnd());

  CL::SongLog log = builder.TakeLog();
  log.skip = written.skip;
  log.attacca = written.attacca ? 1 : 0;
  log.markers = WithMarkers(midiMarkers, log.markers);
  return log;
}

}  // namespace tesk_midi

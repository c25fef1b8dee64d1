#include <optional>
#include <string>

#include "reference_suite/midi/show_folder/placed_cue.h"
#include "reference_suite/midi/timeline/timeline_builder.h"
#include "suite/midi/positions.h"

namespace tesk_midi {

namespace {

std::optional<unsigned> TickOf(const WrittenPosition& position, const char* key, const TL::Timeline& timeline,
                               FileProblems* problems) {
  try {
    return ResolvePlace(timeline, position.value);
  } catch (const PositionError& error) {
    problems->Error(position.place, Quoted(key) + ": " + error.what() + ".");
    return std::nullopt;
  }
}

std::string ShownTick(const WrittenPosition& position, unsigned tick) {
  if (position.value.kind == WrittenPlace::Kind::Tick) return position.shown;
  return position.shown + " (tick " + std::to_string(tick) + ")";
}

// Holds the positions of one cue against the song.
class CuePlacer {
 public:
  CuePlacer(const TL::Timeline& timeline, FileProblems* problems)
      : timeline_(timeline),
        start_(timeline.GetAudioStartTicks()),
        end_(GetPlaybackEnd(timeline)),
        problems_(problems) {}

  std::optional<PlacedCue> Place(const WrittenCue& cue) {
    return cue.end ? PlaceRange_(cue) : PlacePoint_(cue);
  }

 private:
  std::optional<PlacedCue> PlacePoint_(const WrittenCue& cue) {
    const auto tick = TickOf(cue.begin, "at", timeline_, problems_);
    const bool mayEnd = cue.kind == CueKind::Caesura;
    if (!tick || !LiesInSong_(cue.begin, "at", *tick, mayEnd)) return std::nullopt;
    return PlacedCue{&cue, *tick, *tick};
  }

  std::optional<PlacedCue> PlaceRange_(const WrittenCue& cue) {
    const auto from = TickOf(cue.begin, "from", timeline_, problems_);
    const auto to = TickOf(*cue.end, "to", timeline_, problems_);
    const bool fromLies = from && LiesInSong_(cue.begin, "from", *from, false);
    const bool toLies = to && LiesInSong_(*cue.end, "to", *to, true);
    if (!fromLies || !toLies) return std::nullopt;
    if (*from < *to) return PlacedCue{&cue, *from, *to};
    const std::string positions =
        ShownTick(*cue.end, *to) + " does not lie after " + ShownTick(cue.begin, *from);
    problems_->Error(cue.place, cue.kind == CueKind::Cut
                                    ? "this cut would start inside its own target range: " + positions +
                                          ", so that playback would come to it again and again."
                                    : "this " + std::string(CueWord(cue.kind)) +
                                          " ends before it begins: " + positions + ".");
    return std::nullopt;
  }

  bool LiesInSong_(const WrittenPosition& position, const char* key, unsigned tick, bool mayBeEnd) {
    const std::string lies = Quoted(key) + " lies ";
    if (tick < start_) {
      problems_->Error(position.place, lies + "before the audio: " + ShownTick(position, tick) +
                                           ", while the audio starts at tick " + std::to_string(start_) +
                                           ".");
    } else if (tick > end_) {
      problems_->Error(position.place, lies + "after the end of the song: " + ShownTick(position, tick) +
                                           ", while the song ends at tick " + std::to_string(end_) + ".");
    } else if (tick == end_ && !mayBeEnd) {
      problems_->Error(position.place, lies + "on the end of the song, " + ShownTick(position, tick) +
                                           ", where only a caesura may lie or a range end.");
    } else {
      return true;
    }
    return false;
  }

  const TL::Timeline& timeline_;
  const unsigned start_;
  const unsigned end_;
  FileProblems* problems_;
};

}  // namespace

void PlaceAudio(const WrittenSongLog& log, FileProblems* problems, TL::Timeline* timeline) {
  const int errorsBefore = problems->GetErrorCount();
  std::optional<unsigned> start = 0u;
  std::optional<unsigned> end = timeline->GetMidiEndTicks();
  if (log.audioStart) start = TickOf(*log.audioStart, "audio_start", *timeline, problems);
  if (log.audioEnd) end = TickOf(*log.audioEnd, "audio_end", *timeline, problems);
  if (start && end && *start >= *end) {
    const WrittenPosition& place = log.audioStart ? *log.audioStart : *log.audioEnd;
    const std::string startText = log.audioStart ? ShownTick(*log.audioStart, *start) : "tick 0";
    const std::string endText = log.audioEnd ? ShownTick(*log.audioEnd, *end) + " (line " +
                                                   std::to_string(log.audioEnd->place.line) + ")"
                                             : "tick " + std::to_string(*end);
    problems->Error(place.place, "the audio starts at " + startText +
                                     ", which does not lie before the end of the song, " + endText + ".");
  }
  if (problems->GetErrorCount() != errorsBefore) return;
  timeline->SetAudioStartTicks(*start);
  timeline->SetAudioEndTicks(log.audioEnd ? *end : 0);
}

std::vector<PlacedCue> PlaceCues(const WrittenSongLog& log, const TL::Timeline& timeline,
                                 FileProblems* problems) {
  CuePlacer placer(timeline, problems);
  std::vector<PlacedCue> placed;
  for (const WrittenCue& cue : log.cues) {
    if (const auto place = placer.Place(cue)) placed.push_back(*place);
  }
  return placed;
}

}  // namespace tesk_midi

#include "host/session/short_ticks.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "Sources/samples_ticks_converter/sample_math.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/assertion/ex_assertion_error.h"
#include "host/session/show_folder.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"
#include "suite/midi/positions.h"
#include "suite/midi/song_data.h"
#include "suite/midi/song_log.h"

namespace orbel::host {
namespace {

// A read is planned as if the song went on: no device asks for more than this behind the end.
constexpr double kLookaheadSeconds = 1.0;
// Above this many frames the engine's checks cannot fail, whatever the rounding.
constexpr double kSurelyLongEnough = 0.5 + 1e-6;

// Except that at almost one frame a tick, but not quite, the rounding of a very long song may.
bool MayLackFrames(double framesPerTick) {
  const double fromOne = std::abs(framesPerTick - 1.0);
  return framesPerTick < kSurelyLongEnough || (fromOne > 0.0 && fromOne < 1e-6);
}

struct Stop {
  TickIndex tick;
  std::string name;
  int line;
};

// Lines at which a performer's go may leave a vamp before its end.
void AddExits(const CL::Loop& vamp, const TL::Timeline& timeline, std::vector<Stop>* stops) {
  if (vamp.GetExit() == CL::VampExit::EndOfPass) return;
  const bool atBars = vamp.GetExit() == CL::VampExit::NextBar;
  for (TickIndex after = vamp.abs_time();;) {
    const TickIndex line =
        atBars ? timeline.GetBarLineAtOrAfter(after + 1) : timeline.GetBeatAtOrAfter(after + 1);
    if (line >= vamp.GetEndTime() || line <= after) return;
    stops->push_back(
        {line,
         atBars ? "the bar line at which the vamp may be left" : "the beat on which the vamp may be left",
         vamp.GetLine()});
    after = line;
  }
}

// Every tick on which a read may have to end, but the end of the song.
std::vector<Stop> ListStops(const CL::SongLog& log, const TL::Timeline& timeline) {
  std::vector<Stop> stops;
  for (const CL::Loop& loop : log.loops) {
    const int code = loop.GetEventCode();
    const std::string name = code == codes::kVamp ? "vamp" : code == codes::kRepeat ? "repeat" : "safety";
    stops.push_back({loop.GetEndTime(), "the end of the " + name, loop.GetLine()});
    if (code == codes::kVamp) AddExits(loop, timeline, &stops);
  }
  for (const CL::Cut& cut : log.cuts) stops.push_back({cut.abs_time(), "the cut", cut.GetLine()});
  for (const CL::Caesura& caesura : log.caesuras)
    stops.push_back({caesura.abs_time(), "the caesura", caesura.GetLine()});
  for (const CL::TempoScale& tempo : log.tempoScales)
    stops.push_back({tempo.abs_time(), "the tempo", tempo.GetLine()});
  for (const CL::Transpose& transpose : log.transposes)
    stops.push_back({transpose.abs_time(), "the transposition", transpose.GetLine()});
  return stops;
}

class Search {
 public:
  Search(const tesk_midi::SongData& song, const CL::SongLog& log, double rateHz)
      : song_(song), log_(log), rateHz_(rateHz), timeline_(song.GetTimeline()) {
    start_ = timeline_.GetAudioStartTicks();
    end_ = timeline_.GetAudioEndTicks() == 0 ? timeline_.GetMidiEndTicks() : timeline_.GetAudioEndTicks();
    converter_.SetData(song, start_);
    converter_.SetSampleRate(static_cast<long double>(rateHz));
  }

  std::optional<ShortTick> Find() {
    if (const auto found = FindFrameWithoutTick_()) return found;
    return FindStopWithoutFrame_();
  }

 private:
  // The segments of the tempo map in which frames may be asked for, each asked frame by frame.
  std::optional<ShortTick> FindFrameWithoutTick_() {
    const SampleCount last =
        converter_.TicksToSamples(end_) + static_cast<SampleCount>(kLookaheadSeconds * rateHz_);
    const auto& tempos = timeline_.GetTempos();
    for (auto tempo = tempos.begin(); tempo != tempos.end(); ++tempo) {
      const bool isLast = tempo + 1 == tempos.end();
      const TickIndex from = std::max(tempo->abs_time(), start_);
      const TickIndex to = isLast ? std::numeric_limits<TickIndex>::max() : (tempo + 1)->abs_time();
      if (to <= from || !MayLackFrames(FramesPerTick_(*tempo))) continue;
      const SampleCount begin = converter_.TicksToSamples(from);
      const SampleCount behind = isLast ? last : std::min(last, converter_.TicksToSamples(to));
      if (!EveryFrameHasATick_(begin, behind)) return ShortTick{ShortTick::Kind::FrameWithoutTick, from};
    }
    return std::nullopt;
  }

  bool EveryFrameHasATick_(SampleCount begin, SampleCount behind) {
    try {
      for (SampleCount frame = begin; frame < behind; ++frame) converter_.SamplesToTicksInteger(frame);
    } catch (const exc::ExAssertionError&) {
      return false;
    }
    return true;
  }

  std::optional<ShortTick> FindStopWithoutFrame_() {
    for (const Stop& stop : ListStops(log_, timeline_)) {
      if (stop.tick <= start_ || stop.tick > end_) continue;
      if (CanStopOn_(stop.tick)) continue;
      return ShortTick{ShortTick::Kind::StopWithoutFrame, stop.tick, stop.name, stop.line};
    }
    if (HasAFrame_(end_)) return std::nullopt;
    return ShortTick{ShortTick::Kind::StopWithoutFrame, end_, "the end of the song"};
  }

  // A read ends one tick short of a stop, and the next one on it. The tick before those two counts as well:
  // who lands there by a jump or a seek would be given a read of no frames if it began on the frame of the
  // next.
  bool CanStopOn_(TickIndex stop) {
    const TickIndex first = std::max(start_, stop < 2 ? 0 : stop - 2);
    for (TickIndex tick = first; tick <= stop; ++tick) {
      if (!HasAFrame_(tick)) return false;
    }
    return true;
  }

  bool HasAFrame_(TickIndex tick) {
    return converter_.TicksToSamples(tick + 1) > converter_.TicksToSamples(tick);
  }

  double FramesPerTick_(const TL::Tempo& tempo) const {
    const double seconds = tempo.tick_time(song_.GetPulsesPerQuarterNote());
    return samples_ticks_converter::SamplesPerTick(seconds, static_cast<long double>(rateHz_));
  }

  const tesk_midi::SongData& song_;
  const CL::SongLog& log_;
  const double rateHz_;
  const TL::Timeline& timeline_;
  TickIndex start_ = 0;
  TickIndex end_ = 0;
  SamplesTicksConverter converter_;
};

double TempoAt(const TL::Timeline& timeline, TickIndex tick) {
  double microseconds = 500'000.0;
  for (const TL::Tempo& tempo : timeline.GetTempos()) {
    if (tempo.abs_time() <= tick) microseconds = tempo.GetMicrosecondsPerQuarter();
  }
  return microseconds;
}

// The fewest ticks a quarter note at which the song can be loaded at all.
double FewestTicks(const TL::Timeline& timeline) {
  double fewest = 480.0;
  for (const TL::Tempo& tempo : timeline.GetTempos())
    fewest = std::max(fewest, std::ceil(tempo.GetMicrosecondsPerQuarter() / 2500.0));
  return fewest;
}

std::string Rounded(double value) {
  return ShortNumber(std::round(value * 1000.0) / 1000.0);
}

std::string Cure(const TL::Timeline& timeline, double microseconds, double rateHz) {
  const double fewest = FewestTicks(timeline);
  if (microseconds * 1e-6 * rateHz / fewest >= 1.0)
    return "export the MIDI file with a division of " + ShortNumber(fewest);
  return "correct the tempo in the MIDI file, for which up to " +
         ShortNumber(std::floor(60.0 * rateHz / fewest)) + " can be played at a division of " +
         ShortNumber(fewest);
}

}  // namespace

std::optional<ShortTick> FindShortTick(const tesk_midi::SongData& song, const CL::SongLog& log,
                                       double rateHz) {
  return Search(song, log, rateHz).Find();
}

std::optional<tesk_midi::Problem> FindShortTick(const ShowFolder& show, const std::string& song,
                                                double rateHz) {
  const tesk_midi::SongData& data = show.GetData().GetSong(song);
  const auto found = FindShortTick(data, show.GetLog(song), rateHz);
  if (!found) return std::nullopt;
  const TL::Timeline& timeline = data.GetTimeline();
  const unsigned ticks = data.GetPulsesPerQuarterNote();
  const bool isStop = found->kind == ShortTick::Kind::StopWithoutFrame;
  // What counts for a stop is as often the tempo that ends there.
  const double microseconds = TempoAt(timeline, isStop ? found->tick - 1 : found->tick);
  const std::string place =
      tesk_midi::PositionToString(data, found->tick) + " (tick " + std::to_string(found->tick) + ")";
  const std::string length = "a tick lasts " + Rounded(microseconds * 1e-6 * rateHz / ticks) +
                             " frames: " + std::to_string(ticks) + " ticks a quarter note, " +
                             Rounded(6e7 / microseconds) + " quarter notes a minute, " + ShortNumber(rateHz) +
                             " frames a second";
  tesk_midi::Problem problem;
  problem.songNumber = song;
  problem.file = isStop && found->line > 0 ? show.CueFile(song) : show.MidiFile(song);
  problem.line = found->line;
  if (isStop) {
    problem.message = found->stop + ", " + place +
                      ", or a tick just before it, begins on no frame of its own: " + length +
                      "; move it by a tick, or " + Cure(timeline, microseconds, rateHz);
  } else {
    problem.message = "from " + place + " on " + length + ". That is too short to be played; " +
                      Cure(timeline, microseconds, rateHz);
  }
  return problem;
}

}  // namespace orbel::host

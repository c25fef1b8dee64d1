#include "host/session/show_summary.h"

#include "exc/assertion/ex_assertion_error.h"
#include "host/session/failure.h"
#include "host/session/short_ticks.h"
#include "host/session/show_folder.h"
#include "host/session/shown_text.h"
#include "suite/audio/errors.h"
#include "suite/midi/song_log.h"

namespace orbel::host {
namespace {

AudioSummary SummariseAudio(const ShowFolder& show, const std::string& song) {
  AudioSummary summary;
  summary.file = "data/" + show.GetAudioFiles().at(song);
  try {
    const tesk_audio::AudioFileInfo info = show.Probe(song);
    summary.format = info.format;
    summary.sampleRateHz = info.sampleRateHz;
    summary.channels = info.channels;
    summary.frames = info.frames;
  } catch (const tesk_audio::TESKAudioError& error) {
    summary.problem = error.what();
  }
  return summary;
}

void RequireReadable(const ShowFolder& show, const std::string& song) {
  if (const tesk_midi::Problem* why = show.WhyUnreadable(song)) throw Failure(Shown(ToString(*why)));
}

SongSummary SummariseSong(const ShowFolder& show, const tesk_midi::SongData& song) {
  const std::string& number = song.GetNumber();
  if (const tesk_midi::Problem* why = show.WhyUnreadable(number)) {
    SongSummary unread;
    unread.number = number;
    unread.name = song.GetName();
    unread.problem = ToString(*why);
    return unread;
  }
  const CL::SongLog& log = show.GetLog(number);
  const SongClock clock(song, show.RateOf(number));
  SongSummary summary;
  summary.number = number;
  summary.name = song.GetName();
  summary.attacca = log.attacca != 0;
  summary.skip = log.skip;
  summary.ticksPerQuarter = song.GetPulsesPerQuarterNote();
  summary.start = clock.PlaceOfTick(clock.GetStartTick());
  summary.end = clock.PlaceOfTick(clock.GetEndTick());
  if (show.HasAudio(number)) summary.audio = SummariseAudio(show, number);
  for (const TL::Tempo& tempo : song.GetTimeline().GetTempos()) {
    summary.tempos.push_back({clock.PlaceOfTick(tempo.abs_time()), 6e7 / tempo.GetMicrosecondsPerQuarter()});
  }
  for (const TL::Meter& meter : song.GetTimeline().GetMeters()) {
    summary.meters.push_back(
        {clock.PlaceOfTick(meter.abs_time()), meter.GetNumerator(), meter.GetDenominator()});
  }
  summary.cues = SummariseCues(log, song.GetTimeline(), clock);
  return summary;
}

}  // namespace

ShowSummary Summarise(const std::string& showPath, const std::string& song) {
  const ShowFolder show(showPath);
  ShowSummary summary;
  summary.title = show.GetData().GetTitle();
  if (!show.GetDataFault().empty() && !show.LacksData())
    summary.problems.push_back("data: " + show.GetDataFault());
  if (!song.empty()) {
    RequireReadable(show, show.FindSong(song).GetNumber());
    summary.songs.push_back(SummariseSong(show, show.FindSong(song)));
    return summary;
  }
  for (const std::string& number : show.GetData().GetRunningOrder()) {
    summary.songs.push_back(SummariseSong(show, show.GetData().GetSong(number)));
    if (!summary.songs.back().problem.empty()) summary.problems.push_back(summary.songs.back().problem);
  }
  return summary;
}

std::vector<Place> FindPlaces(const std::string& showPath, const std::string& song,
                              const std::vector<std::string>& texts) {
  const ShowFolder show(showPath);
  const tesk_midi::SongData& data = show.FindSong(song);
  RequireReadable(show, data.GetNumber());
  // Samples are counted at the rate of the audio.
  if (!show.GetDataFault().empty() && !show.LacksData())
    throw Failure(Shown(show.GetPath()) + ": data: " + show.GetDataFault());
  const SongClock clock(data, show.RateOf(data.GetNumber()));
  std::vector<Place> places;
  try {
    for (const std::string& text : texts) places.push_back(clock.Find(text));
  } catch (const exc::ExAssertionError&) {
    const auto problem = FindShortTick(show, data.GetNumber(), clock.GetSampleRateHz());
    if (!problem) throw;
    throw Failure(Shown(tesk_midi::ToString(*problem)));
  }
  return places;
}

}  // namespace orbel::host

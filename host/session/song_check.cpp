#include "host/session/song_check.h"

#include <cmath>
#include <utility>

#include "host/session/seam.h"
#include "host/session/show_folder.h"
#include "host/session/shown_text.h"
#include "host/session/song_clock.h"
#include "suite/audio/audio_sample_content.h"
#include "suite/midi/positions.h"
#include "suite/midi/song_data.h"
#include "suite/midi/song_log.h"

namespace orbel::host {
namespace {

tesk_midi::Problem Make(const std::string& song, std::string file, int line, std::string message,
                        bool isWarning) {
  tesk_midi::Problem problem;
  problem.songNumber = song;
  problem.file = std::move(file);
  problem.line = line;
  problem.message = std::move(message);
  problem.isWarning = isWarning;
  return problem;
}

std::string Percent(double value) {
  return ShortNumber(std::round(value * 1000.0) / 10.0) + " %";
}

// A little less than the song is what every encoder leaves at the end.
constexpr double kUnnoticedSeconds = 0.05;

void CheckLength(const ShowFolder& show, const std::string& song, const SongClock& clock, long long frames,
                 std::vector<tesk_midi::Problem>* out) {
  const long long needed = clock.TickToSample(clock.GetEndTick());
  if (static_cast<double>(needed - frames) <= kUnnoticedSeconds * clock.GetSampleRateHz()) return;
  out->push_back(Make(song, "data/" + show.GetAudioFiles().at(song), 0,
                      "is shorter than the song: " + MinutesAndSeconds(clock.SampleToSeconds(frames)) +
                          " of " + MinutesAndSeconds(clock.SampleToSeconds(needed)) +
                          ", the rest is silence; give audio_end in the song's cues, or the whole recording",
                      true));
}

void CheckSeam(const ShowFolder& show, const std::string& song, const SongClock& clock,
               const tesk_audio::AudioSampleContent& content, const std::string& what, unsigned from,
               unsigned to, int line, std::vector<tesk_midi::Problem>* out) {
  const Seam seam = MeasureSeam(content, clock.TickToSample(from), clock.TickToSample(to));
  if (!seam.Clicks()) return;
  out->push_back(Make(song, show.CueFile(song), line,
                      "the " + what + " from " + clock.PlaceOfTick(from).position + " to " +
                          clock.PlaceOfTick(to).position + " may click: a step of " + Percent(seam.step) +
                          " of full scale where the music's own are up to " + Percent(seam.ownStep) +
                          "; move it to a quieter place, or play with a cross-fade",
                      true));
}

std::string LoopName(const CL::Loop& loop) {
  if (loop.GetEventCode() == codes::kVamp) return "vamp's jump";
  return loop.GetEventCode() == codes::kRepeat ? "repeat's jump" : "safety's jump";
}

bool HasSongAfter(const ShowFolder& show, const std::string& song) {
  bool reached = false;
  for (const std::string& number : show.GetData().GetRunningOrder()) {
    if (reached && show.HasAudio(number)) return true;
    reached = reached || number == song;
  }
  return false;
}

}  // namespace

std::vector<tesk_midi::Problem> CheckSongAudio(const ShowFolder& show, const std::string& song,
                                               const tesk_audio::AudioSampleContent& content) {
  std::vector<tesk_midi::Problem> problems;
  const SongClock clock(show.GetData().GetSong(song), content.GetSampleRateHz());
  CheckLength(show, song, clock, content.GetSampleCount(), &problems);
  const CL::SongLog& log = show.GetLog(song);
  for (const CL::Loop& loop : log.loops) {
    CheckSeam(show, song, clock, content, LoopName(loop), loop.GetEndTime(), loop.abs_time(), loop.GetLine(),
              &problems);
  }
  for (const CL::Cut& cut : log.cuts) {
    if (cut.GetEndTime() >= clock.GetEndTick()) continue;  // nothing sounds after it
    CheckSeam(show, song, clock, content, "cut", cut.abs_time(), cut.GetEndTime(), cut.GetLine(), &problems);
  }
  return problems;
}

std::vector<tesk_midi::Problem> CheckSongCues(const ShowFolder& show, const std::string& song) {
  std::vector<tesk_midi::Problem> problems;
  const CL::SongLog& log = show.GetLog(song);
  if (log.attacca != 0 && !HasSongAfter(show, song)) {
    problems.push_back(
        Make(song, show.CueFile(song), 0,
             "attacca: there is no song with audio to run into, so this one simply ends; take it out, or "
             "add the next song",
             true));
  }
  return problems;
}

}  // namespace orbel::host

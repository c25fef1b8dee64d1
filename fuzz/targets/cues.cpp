#include "fuzz/targets/targets.h"
#include "reference_suite/midi/show_folder/build_song_log.h"
#include "reference_suite/midi/show_folder/placed_cue.h"
#include "reference_suite/midi/show_folder/read_song_log.h"
#include "reference_suite/midi/show_folder/show_toml.h"
#include "reference_suite/midi/timeline/timeline_builder.h"

namespace fuzz {
namespace {

constexpr char kFile[] = "songs/1 Song.toml";

// 64 bars in three meters and two tempos.
tesk_midi::StandardMidiFile Song() {
  tesk_midi::StandardMidiFile midi;
  midi.division = 480;
  midi.tempos = {{0, 500'000}, {30'720, 375'000}};
  midi.meters = {{0, 4, 4}, {30'720, 3, 4}, {76'800, 6, 8}};
  midi.markers = {{1'920, "Verse"}};
  midi.endTick = 99'840;
  return midi;
}

void CheckProblems(const std::vector<tesk_midi::Problem>& problems, std::size_t lines) {
  for (const tesk_midi::Problem& problem : problems) {
    Require(!problem.message.empty() && !problem.file.empty(), "a problem has a file and words");
    Require(problem.line >= 0 && static_cast<std::size_t>(problem.line) <= lines, "its line is in the file");
    for (const char letter : tesk_midi::ToString(problem)) {
      Require(static_cast<unsigned char>(letter) >= 0x20 && letter != 0x7F, "a problem commands no terminal");
    }
  }
}

template <typename Events>
void RequireInside(const Events& events, unsigned first, unsigned last) {
  unsigned before = first;
  for (const auto& event : events) {
    Require(event.abs_time() >= before && event.abs_time() <= last, "cues ascend within the song");
    before = event.abs_time();
  }
}

void CheckLog(const CL::SongLog& log, const TL::Timeline& timeline) {
  const unsigned first = timeline.GetAudioStartTicks();
  const unsigned last = tesk_midi::GetPlaybackEnd(timeline);
  RequireInside(log.loops, first, last);
  RequireInside(log.cuts, first, last);
  RequireInside(log.caesuras, first, last);
  for (const CL::Loop& loop : log.loops) {
    Require(loop.GetEndTime() > loop.abs_time() && loop.GetEndTime() < last,
            "a loop ends before the song does");
  }
  for (const CL::TempoScale& tempo : log.tempoScales) {
    Require(tempo.GetScale() >= 0.25 && tempo.GetScale() <= 4.0, "a scale is 0.25 to 4");
  }
  for (const CL::Transpose& transpose : log.transposes) {
    Require(transpose.GetSemitones() >= -24 && transpose.GetSemitones() <= 24, "semitones are -24 to 24");
  }
}

void ReadCues(const std::string& text, std::size_t lines) {
  std::vector<tesk_midi::Problem> found;
  tesk_midi::FileProblems problems(kFile, "1", &found);
  const tesk_midi::WrittenSongLog written = tesk_midi::ReadSongLog(text, &problems);
  tesk_midi::BuiltTimeline built = tesk_midi::BuildTimeline(Song(), written.firstBar);
  tesk_midi::PlaceAudio(written, &problems, &built.timeline);
  std::vector<tesk_midi::PlacedCue> cues = tesk_midi::PlaceCues(written, built.timeline, &problems);
  tesk_midi::CheckConflicts(cues, &problems);
  CheckProblems(found, lines);
  if (problems.GetErrorCount() != 0) return;
  const CL::SongLog log = tesk_midi::BuildSongLog(written, std::move(cues), built.markers, &built.timeline);
  CheckLog(log, built.timeline);
}

void ReadShow(const std::string& text, std::size_t lines) {
  std::vector<tesk_midi::Problem> found;
  tesk_midi::FileProblems problems(tesk_midi::kShowTomlName, "", &found);
  const tesk_midi::ShowToml show = tesk_midi::ReadShowToml(text, &problems);
  const std::vector<std::string> numbers{"1", "2", "2a", "10"};
  const auto order = tesk_midi::MakeRunningOrder(numbers, show.order, &problems);
  Require(order.size() == numbers.size(), "every song has its place in the running order");
  CheckProblems(found, lines);
}

}  // namespace

void Cues(Bytes input) {
  const std::string text = Text(input);
  // Any kind of line end counts, and an error may stand behind the last.
  std::size_t lines = 2;
  for (const char letter : text) lines += letter == '\n' || letter == '\r' ? 1 : 0;
  ReadCues(text, lines);
  ReadShow(text, lines);
}

}  // namespace fuzz

// The rules of the show folder, one test each, through the whole loader.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "suite/midi/positions.h"
#include "tests/reference_suite/midi/show_folder/show_on_disk.h"

namespace {

using made_show::MidiText;
using made_show::ProblemsOfToml;
using made_show::ShowOnDisk;
using made_show::Song;
using made_show::SongOfToml;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

// ---- the folder --------------------------------------------------------------------------------

TEST(ShowFormat, ShowTomlAndSongTomlsAreOptional) {
  const ShowOnDisk show;
  show.WriteMidi("songs/2 Intro.mid");
  const tesk_midi::LoadedShow loaded = show.Load();
  EXPECT_EQ(loaded.showData->GetTitle(), "");
  EXPECT_THAT(loaded.showData->GetRunningOrder(), ElementsAre("2"));
  EXPECT_EQ(loaded.changeLog->GetSongLog("2").loops.GetSize(), 0u);
  EXPECT_THAT(loaded.warnings, IsEmpty());
}

TEST(ShowFormat, SongIsKnownWhenItHasAMidiFile) {
  const ShowOnDisk show;
  show.WriteMidi("songs/2 Intro.mid");
  std::filesystem::create_directory(show.Path() / "data");
  show.Write("data/2 Intro.obd", "no audio at all");
  show.Write("data/3 Waltz.obd", "");
  EXPECT_THAT(show.Load().showData->GetSongNamesBySongNumber(), ElementsAre(Pair("2", "Intro")));
}

TEST(ShowFormat, MidiFileDecidesTheNameOfTheSong) {
  const ShowOnDisk show;
  show.WriteMidi("songs/12 My Song.mid");
  show.Write("songs/12 Cues.toml", "attacca = true");
  const tesk_midi::LoadedShow loaded = show.Load();
  EXPECT_THAT(loaded.showData->GetSongNamesBySongNumber(), ElementsAre(Pair("12", "My Song")));
  EXPECT_EQ(loaded.changeLog->GetSongLog("12").attacca, 1);
}

TEST(ShowFormat, MidiFilesOfTypeZeroAndOne) {
  const ShowOnDisk show;
  show.Write("songs/1 Zero.mid", MidiText().Tempo(0, 400'000).End(1920));
  show.WriteMidi("songs/2 One.mid", 1);
  const tesk_midi::LoadedShow loaded = show.Load();
  EXPECT_EQ(loaded.showData->GetSong("1").GetTimeline().GetTempos()[0].GetMicrosecondsPerQuarter(), 400'000u);
  EXPECT_EQ(loaded.showData->GetSong("2").GetTimeline().GetMidiEndTicks(), 1920u);
}

TEST(ShowFormat, TwoFilesWithOneNumberAreAnErrorThatNamesBoth) {
  const ShowOnDisk show;
  show.WriteMidi("songs/001 Intro.mid");
  show.WriteMidi("songs/1 Waltz.mid");
  show.Write("songs/001 a.toml", "");
  show.Write("songs/001 b.toml", "");
  EXPECT_THAT(
      show.Problems(),
      ElementsAre(
          "songs/001 b.toml: the number \"001\" is that of \"songs/001 a.toml\" too; a song has one "
          "change log.",
          "songs/1 Waltz.mid: the number \"1\" is that of \"songs/001 Intro.mid\" too; give each song "
          "a number of its own."));
}

TEST(ShowFormat, RunningOrder) {
  const ShowOnDisk show;
  for (const char* file : {"songs/10 d.mid", "songs/1 a.mid", "songs/2a c.mid", "songs/2 b.mid"})
    show.WriteMidi(file);
  EXPECT_THAT(show.Load().showData->GetRunningOrder(), ElementsAre("1", "2", "2a", "10"))
      << "without any order";
  show.Write("show.toml", "format = 1\ntitle = \"An Evening Upstairs\"\norder = [\"2a\", \"10\"]\n");
  EXPECT_THAT(show.Load().showData->GetRunningOrder(), ElementsAre("2a", "10", "1", "2"));
  EXPECT_EQ(show.Load().showData->GetTitle(), "An Evening Upstairs");
}

// ---- a song's file -----------------------------------------------------------------------------

const char kWholeLog[] = R"(format = 1
skip = true             # left out of preloading
attacca = true
first_bar = 0
audio_start = "0.3"
audio_end = "47"

[[tempo]]
at = "17"
scale = 0.95

[[transpose]]
at = "17"
semitones = -2

[[vamp]]
from = "9"
to = "13"
exit = "beat"

[[safety]]
from = "21"
to = "23"

[[repeat]]
from = "17"
to = "25"
passes = 3

[[cut]]
from = "33"
to = "41.3"

[[caesura]]
at = "29.3"

[[marker]]
at = "29"
name = "Dialogue"

[[click]]
from = "1"
to = "3"

[[page]]
at = "1"
number = 7
)";

// Bar 0 begins at tick 0.
unsigned Bar(unsigned number) {
  return number * 1920;
}

TEST(ShowFormat, EveryKeyOfASongsFile) {
  const Song song = SongOfToml(kWholeLog);
  const CL::SongLog& log = song.Log();
  EXPECT_TRUE(log.skip);
  EXPECT_EQ(log.attacca, 1);
  EXPECT_EQ(song.Timeline().GetBarsBeats()[0].GetBar(), 0);
  EXPECT_EQ(song.Timeline().GetAudioStartTicks(), 960u);
  EXPECT_EQ(song.Timeline().GetAudioEndTicks(), Bar(47));

  ASSERT_EQ(log.tempoScales.GetSize(), 1u);
  EXPECT_EQ(log.tempoScales[0].abs_time(), Bar(17));
  EXPECT_EQ(log.tempoScales[0].GetScale(), 0.95);
  EXPECT_EQ(log.tempoScales[0].GetLine(), 8);
  ASSERT_EQ(log.transposes.GetSize(), 1u);
  EXPECT_EQ(log.transposes[0].abs_time(), Bar(17));
  EXPECT_EQ(log.transposes[0].GetSemitones(), -2);
  EXPECT_EQ(log.transposes[0].GetLine(), 12);
  ASSERT_EQ(log.cuts.GetSize(), 1u);
  EXPECT_EQ(log.cuts[0].abs_time(), Bar(33));
  EXPECT_EQ(log.cuts[0].GetEndTime(), Bar(41) + 960);
  EXPECT_EQ(log.cuts[0].GetLine(), 30);
  ASSERT_EQ(log.caesuras.GetSize(), 1u);
  EXPECT_EQ(log.caesuras[0].abs_time(), Bar(29) + 960);
  EXPECT_EQ(log.caesuras[0].GetLine(), 34);
  ASSERT_EQ(log.markers.GetSize(), 1u);
  EXPECT_EQ(log.markers[0].abs_time(), Bar(29));
  EXPECT_EQ(log.markers[0].GetName(), "Dialogue");
  EXPECT_EQ(log.markers[0].GetLine(), 37);
  ASSERT_EQ(log.clicks.GetSize(), 1u);
  EXPECT_EQ(log.clicks[0].abs_time(), Bar(1));
  EXPECT_EQ(log.clicks[0].GetEndTime(), Bar(3));
  EXPECT_EQ(log.clicks[0].GetLine(), 41);
  ASSERT_EQ(song.Timeline().GetPageNums().GetSize(), 1u);
  EXPECT_EQ(song.Timeline().GetPageNums()[0].abs_time(), Bar(1));
  EXPECT_EQ(song.Timeline().GetPageNums()[0].GetNumber(), 7u);
}

TEST(ShowFormat, LoopsOfEveryKindInTheOrderOfTheirBeginnings) {
  const Song song = SongOfToml(kWholeLog);
  const auto& loops = song.Log().loops;
  ASSERT_EQ(loops.GetSize(), 3u);
  EXPECT_EQ(loops[0].GetEventCode(), codes::kVamp);
  EXPECT_EQ(loops[0].abs_time(), Bar(9));
  EXPECT_EQ(loops[0].GetEndTime(), Bar(13));
  EXPECT_EQ(loops[0].GetPasses(), 0) << "no limit";
  EXPECT_EQ(loops[0].GetExit(), CL::VampExit::NextBeat);
  EXPECT_EQ(loops[0].GetLine(), 16);
  EXPECT_EQ(loops[1].GetEventCode(), codes::kRepeat);
  EXPECT_EQ(loops[1].abs_time(), Bar(17));
  EXPECT_EQ(loops[1].GetPasses(), 3);
  EXPECT_EQ(loops[1].GetLine(), 25);
  EXPECT_EQ(loops[2].GetEventCode(), codes::kSafety);
  EXPECT_EQ(loops[2].abs_time(), Bar(21));
  EXPECT_EQ(loops[2].GetPasses(), 1);
}

TEST(ShowFormat, DefaultsOfASongsFile) {
  const Song song = SongOfToml("[[vamp]]\nfrom = \"1\"\nto = \"2\"\n[[repeat]]\nfrom = \"3\"\nto = \"4\"\n");
  EXPECT_FALSE(song.Log().skip);
  EXPECT_EQ(song.Log().attacca, 0);
  EXPECT_EQ(song.Timeline().GetBarsBeats()[0].GetBar(), 1);
  EXPECT_EQ(song.Timeline().GetAudioStartTicks(), 0u) << "tick 0";
  EXPECT_EQ(song.Timeline().GetAudioEndTicks(), 0u) << "none given: the end of the MIDI";
  EXPECT_EQ(song.Log().loops[0].GetExit(), CL::VampExit::EndOfPass);
  EXPECT_EQ(song.Log().loops[1].GetPasses(), 2);
}

TEST(ShowFormat, ExitsOfAVamp) {
  const auto exitOf = [](const std::string& exit) {
    return SongOfToml("[[vamp]]\nfrom = \"1\"\nto = \"2\"\nexit = \"" + exit + "\"\n")
        .Log()
        .loops[0]
        .GetExit();
  };
  EXPECT_EQ(exitOf("end"), CL::VampExit::EndOfPass);
  EXPECT_EQ(exitOf("bar"), CL::VampExit::NextBar);
  EXPECT_EQ(exitOf("beat"), CL::VampExit::NextBeat);
}

TEST(ShowFormat, EndOfACutIsTheEndOfTheMidi) {
  const Song song = SongOfToml("[[cut]]\nfrom = \"33\"\nto = \"end\"\n");
  EXPECT_EQ(song.Log().cuts[0].GetEndTime(), 48u * 1920);
}

TEST(ShowFormat, EventsAreInAscendingTicksAndKeepTheOrderOfTheFileAtOneTick) {
  const Song song = SongOfToml(
      "[[marker]]\nat = \"9\"\nname = \"c\"\n[[marker]]\nat = \"5\"\nname = \"a\"\n[[marker]]\nat = \"5\"\n"
      "name = \"b\"\n");
  const auto& markers = song.Log().markers;
  ASSERT_EQ(markers.GetSize(), 3u);
  EXPECT_EQ(markers[0].GetName() + markers[1].GetName() + markers[2].GetName(), "abc");
}

TEST(ShowFormat, MarkersOfTheMidiJoinThoseOfTheLog) {
  const ShowOnDisk show;
  show.Write("songs/3 Waltz.mid", MidiText()
                                      .Tempo(0, 500'000)
                                      .Marker(0,
                                              "Stra\xDF"
                                              "e")
                                      .Marker(1920, "first")
                                      .Marker(5760, "last")
                                      .End(7680));
  show.Write("songs/3 Waltz.toml",
             "[[marker]]\nat = \"2\"\nname = \"second\"\n[[marker]]\nat = \"3\"\nname = \"t\\u001bx\"\n");
  const tesk_midi::LoadedShow loaded = show.Load();
  std::string text;
  for (const CL::Marker& marker : loaded.changeLog->GetSongLog("3").markers) {
    text += std::to_string(marker.abs_time()) + " " + marker.GetName() + " line " +
            std::to_string(marker.GetLine()) + "; ";
  }
  EXPECT_EQ(
      text,
      "0 Straße line 0; 1920 first line 0; 1920 second line 1; 3840 t\\x1bx line 4; 5760 last line 0; ");
}

// ---- positions ---------------------------------------------------------------------------------

unsigned CaesuraAt(const std::string& position) {
  return SongOfToml("[[caesura]]\nat = " + position + "\n").Log().caesuras[0].abs_time();
}

TEST(ShowFormat, EveryFormOfAPosition) {
  EXPECT_EQ(CaesuraAt("\"17\""), 30720u);
  EXPECT_EQ(CaesuraAt("\"17.3\""), 31680u);
  EXPECT_EQ(CaesuraAt("\"17.3.120\""), 31800u);
  EXPECT_EQ(CaesuraAt("{ tick = 30720 }"), 30720u);
  EXPECT_EQ(CaesuraAt("\"end\""), 92160u);
}

TEST(ShowFormat, TicksAreThoseOfTheSongAsLoaded) {
  const ShowOnDisk show;
  show.Write("songs/3 Waltz.mid", MidiText().Tempo(0, 500'000).End(768, 96));
  show.Write("songs/3 Waltz.toml", "[[caesura]]\nat = { tick = 3001 }\n[[caesura]]\nat = \"1.1.7\"\n");
  const tesk_midi::LoadedShow loaded = show.Load();
  EXPECT_EQ(loaded.showData->GetSong("3").GetPulsesPerQuarterNote(), 480);
  EXPECT_EQ(loaded.showData->GetSong("3").GetTimeline().GetMidiEndTicks(), 3840u);
  EXPECT_EQ(loaded.changeLog->GetSongLog("3").caesuras[0].abs_time(), 7u);
  EXPECT_EQ(loaded.changeLog->GetSongLog("3").caesuras[1].abs_time(), 3001u);
}

TEST(ShowFormat, BarsAndBeatsCountThroughTheMetersOfTheFile) {
  const ShowOnDisk show;
  show.Write("songs/3 Waltz.mid", MidiText().Tempo(0, 500'000).Meter(1920, 6, 8).Meter(4800, 3, 4).End(9120));
  show.Write("songs/3 Waltz.toml",
             "[[caesura]]\nat = \"1.4\"\n[[caesura]]\nat = \"3.6\"\n[[caesura]]\nat = \"6.3\"\n");
  const auto loaded = show.Load();
  const auto& caesuras = loaded.changeLog->GetSongLog("3").caesuras;
  EXPECT_EQ(caesuras[0].abs_time(), 1440u) << "4/4 until the first meter";
  EXPECT_EQ(caesuras[1].abs_time(), 1920u + 1440 + 1200) << "an eighth is a beat";
  EXPECT_EQ(caesuras[2].abs_time(), 4800u + 2 * 1440 + 960);
}

// ---- ticks, tempo, meters ----------------------------------------------------------------------

TEST(ShowFormat, SmpteDivisionIsRefused) {
  const ShowOnDisk show;
  show.Write("songs/3 Waltz.mid", MidiText().Tempo(0, 500'000).End(1920, 0xE728));
  const std::vector<std::string> problems = show.Problems();
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_THAT(problems[0], testing::StartsWith("songs/3 Waltz.mid: byte 12: "));
  EXPECT_THAT(problems[0], testing::HasSubstr("SMPTE"));
}

TEST(ShowFormat, FileIsLoadedAtTheSmallestMultipleThatIsFineEnough) {
  const ShowOnDisk show;
  show.Write("songs/1 a.mid", MidiText().Tempo(0, 500'000).End(960));
  show.Write("songs/2 b.mid", MidiText().Tempo(0, 500'000).Tempo(480, 1'200'001).End(960));
  show.Write("songs/3 c.mid", MidiText().Tempo(0, 500'000).End(960, 77));
  const auto loaded = show.Load();
  EXPECT_EQ(loaded.showData->GetSong("1").GetPulsesPerQuarterNote(), 480);
  EXPECT_EQ(loaded.showData->GetSong("2").GetPulsesPerQuarterNote(), 960);
  EXPECT_EQ(loaded.showData->GetSong("2").GetTimeline().GetTempos()[1].abs_time(), 960u);
  EXPECT_EQ(loaded.showData->GetSong("2").GetTimeline().GetMidiEndTicks(), 1920u);
  EXPECT_EQ(loaded.showData->GetSong("3").GetPulsesPerQuarterNote(), 539);
}

TEST(ShowFormat, SecondsPerTickAreDividedInDoubleInThisOrder) {
  const ShowOnDisk show;
  show.Write("songs/3 Waltz.mid", MidiText().Tempo(0, 461'539).End(1920));
  const auto loaded = show.Load();
  const double expected = (static_cast<double>(461'539) / 1000000.0) / static_cast<double>(480);
  EXPECT_EQ(loaded.showData->GetSong("3").GetTimeline().GetTempos()[0].tick_time(480), expected);
}

TEST(ShowFormat, WithoutTempoAtTickZero120HoldsAndTheOperatorIsTold) {
  const ShowOnDisk show;
  show.Write("songs/3 Waltz.mid", MidiText().Tempo(960, 400'000).End(1920));
  EXPECT_THAT(
      show.Problems(),
      ElementsAre("warning: songs/3 Waltz.mid: byte 0: no tempo at tick 0; 120 quarter notes per minute hold "
                  "until the first one at tick 960."));
  const auto loaded = show.Load();
  const auto& tempos = loaded.showData->GetSong("3").GetTimeline().GetTempos();
  ASSERT_EQ(tempos.GetSize(), 2u);
  EXPECT_EQ(tempos[0].GetMicrosecondsPerQuarter(), 500'000u);
  EXPECT_EQ(loaded.warnings[0].songNumber, "3");
}

TEST(ShowFormat, SongOfLengthZeroIsRefused) {
  const ShowOnDisk show;
  show.Write("songs/3 Waltz.mid", MidiText().Tempo(0, 400'000).End(0));
  EXPECT_THAT(show.Problems(),
              ElementsAre("songs/3 Waltz.mid: the song has a length of 0; let its last track end after "
                          "the music."));
}

TEST(ShowFormat, WarningOfTheMidiReaderNamesTheFileOnce) {
  const ShowOnDisk show;
  std::string midi = MidiText().Tempo(0, 500'000).End(1920);
  midi[11] = 3;  // tracks, by the header
  show.Write("songs/3 Waltz.mid", midi);
  const std::vector<std::string> problems = show.Problems();
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_THAT(problems[0], testing::StartsWith("warning: songs/3 Waltz.mid: byte "));
}

// ---- what a position means in time -------------------------------------------------------------

struct EndRow {
  const char* toml;
  unsigned midiEnd;
  unsigned audioEnd;
};

class EndsOfSongs : public testing::TestWithParam<EndRow> {};

TEST_P(EndsOfSongs, MoveTwoTicksBehindALoopThatEndsThere) {
  const Song song = SongOfToml(GetParam().toml);
  EXPECT_EQ(song.Timeline().GetMidiEndTicks(), GetParam().midiEnd);
  EXPECT_EQ(song.Timeline().GetAudioEndTicks(), GetParam().audioEnd);
  EXPECT_EQ(song.Timeline().GetBarsBeats().GetSize(), 48u) << "no bar is added";
}

INSTANTIATE_TEST_SUITE_P(
    Loops, EndsOfSongs,
    testing::Values(EndRow{"", 92160, 0}, EndRow{"[[vamp]]\nfrom = \"48\"\nto = \"end\"", 92162, 0},
                    EndRow{"[[safety]]\nfrom = \"48\"\nto = \"49\"", 92162, 0},
                    EndRow{"[[vamp]]\nfrom = \"1\"\nto = \"2\"\n[[repeat]]\nfrom = \"48\"\nto = \"end\"",
                           92162, 0},
                    EndRow{"[[vamp]]\nfrom = \"48\"\nto = { tick = 92159 }", 92160, 0},
                    EndRow{"audio_end = \"9\"\n[[vamp]]\nfrom = \"5\"\nto = \"9\"", 92160, 15362},
                    EndRow{"audio_end = \"9\"\n[[vamp]]\nfrom = \"5\"\nto = \"8\"", 92160, 15360},
                    EndRow{"audio_end = \"end\"\n[[vamp]]\nfrom = \"5\"\nto = \"end\"", 92162, 92162},
                    EndRow{"[[cut]]\nfrom = \"48\"\nto = \"end\"", 92160, 0},
                    EndRow{"[[caesura]]\nat = \"end\"", 92160, 0},
                    EndRow{"[[click]]\nfrom = \"48\"\nto = \"end\"", 92160, 0}));

TEST(ShowFormat, EndThatMovedStillHasAPlace) {
  const Song song = SongOfToml("[[vamp]]\nfrom = \"48\"\nto = \"end\"");
  EXPECT_EQ(song.Log().loops[0].GetEndTime(), 92160u);
  EXPECT_EQ(tesk_midi::PositionToString(song.Data(), 92160), "49.1.0");
  EXPECT_EQ(tesk_midi::PositionToString(song.Data(), 92162), "49.1.2");
  EXPECT_EQ(tesk_midi::ParsePosition(song.Data(), "49"), 92160u);
  EXPECT_EQ(tesk_midi::ParsePosition(song.Data(), "end"), 92162u);
}

}  // namespace

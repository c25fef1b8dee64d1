// The show as its cues and MIDI files describe it: between them the songs use every feature.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/demo/score/midi_file.h"
#include "host/demo/songs/demo_song.h"
#include "reference_suite/midi/standard_midi_file/smf_reader.h"
#include "suite/core/event_codes.h"
#include "tests/host/demo/loaded_demo.h"

namespace {

using orbel::host::demo::AllSongs;
using orbel::host::demo::DemoSong;
using testing::ElementsAre;
using testing::IsEmpty;

class DemoCues : public testing::Test {
 protected:
  LoadedDemo demo_;
};

TEST_F(DemoCues, EveryMidiFileIsReadWithoutAWarning) {
  for (const DemoSong& song : AllSongs()) {
    const auto file = tesk_midi::ParseSmf(MidiFileOf(song.score), song.name);
    EXPECT_THAT(file.warnings, IsEmpty()) << song.name;
    EXPECT_EQ(file.endTick, song.score.End()) << song.name;
    EXPECT_EQ(file.tempos.size(), song.score.Tempos().size()) << song.name;
  }
}

TEST_F(DemoCues, TheShowLoadsWithoutAWarning) {
  for (const tesk_midi::Problem& warning : demo_.Show().warnings) ADD_FAILURE() << ToString(warning);
  EXPECT_EQ(demo_.Show().showData->GetTitle(), "A Short Evening");
  EXPECT_THAT(demo_.Show().showData->GetRunningOrder(), ElementsAre("1", "2", "2a", "4", "3", "10", "5"));
}

TEST_F(DemoCues, LoopsOfEveryKind) {
  const auto& waltz = demo_.Log("2").loops;
  ASSERT_EQ(waltz.GetSize(), 2u);
  EXPECT_EQ(waltz[0].GetEventCode(), codes::kVamp);
  EXPECT_EQ(waltz[0].GetExit(), CL::VampExit::EndOfPass);
  EXPECT_EQ(waltz[1].GetEventCode(), codes::kSafety);
  ASSERT_EQ(demo_.Log("2a").loops.GetSize(), 1u);
  EXPECT_EQ(demo_.Log("2a").loops[0].GetExit(), CL::VampExit::NextBar);
  const auto& patter = demo_.Log("4").loops;
  ASSERT_EQ(patter.GetSize(), 3u);
  EXPECT_EQ(patter[0].GetPasses(), 2);
  EXPECT_EQ(patter[1].GetPasses(), 3);
  EXPECT_LT(patter[0].abs_time(), patter[1].abs_time()) << "one repeat inside the other";
  EXPECT_GT(patter[0].GetEndTime(), patter[1].GetEndTime());
  EXPECT_EQ(patter[2].GetExit(), CL::VampExit::NextBeat);
}

TEST_F(DemoCues, ACutACaesuraInsideAndOneOnTheEnd) {
  EXPECT_EQ(demo_.Log("3").cuts.GetSize(), 1u);
  ASSERT_EQ(demo_.Log("3").caesuras.GetSize(), 1u);
  EXPECT_EQ(demo_.Song("3").GetTimeline().GetBarBeatTick(demo_.Log("3").caesuras[0].abs_time()).bar, 5);
  ASSERT_EQ(demo_.Log("1").caesuras.GetSize(), 1u);
  EXPECT_EQ(demo_.Log("1").caesuras[0].abs_time(), demo_.Song("1").GetTimeline().GetMidiEndTicks());
}

TEST_F(DemoCues, ASongThatRunsIntoTheNextAndOneThatIsSkipped) {
  for (const DemoSong& song : AllSongs()) {
    EXPECT_EQ(demo_.Log(song.number).attacca != 0, song.number == "2") << song.name;
    EXPECT_EQ(demo_.Log(song.number).skip, song.number == "5") << song.name;
  }
}

TEST_F(DemoCues, MarkersClicksPagesMetersKeysAndTempos) {
  for (const DemoSong& song : AllSongs()) {
    EXPECT_GE(demo_.Log(song.number).markers.GetSize(), 1u) << song.name;
    EXPECT_GE(demo_.Song(song.number).GetTimeline().GetKeys().GetSize(), 1u) << song.name;
  }
  for (const char* number : {"1", "4", "10"}) EXPECT_EQ(demo_.Log(number).clicks.GetSize(), 1u) << number;
  EXPECT_GE(demo_.Song("1").GetTimeline().GetPageNums().GetSize(), 2u);
  EXPECT_GE(demo_.Song("4").GetTimeline().GetMeters().GetSize(), 3u);
  EXPECT_GE(demo_.Song("3").GetTimeline().GetTempos().GetSize(), 20u) << "two ritardandi";
}

TEST_F(DemoCues, APickupBar) {
  EXPECT_EQ(demo_.Song("2").GetTimeline().GetBarBeatTick(0).bar, 0);
  EXPECT_EQ(demo_.Song("2").GetTimeline().GetBarBeatTick(480).bar, 1);
}

TEST_F(DemoCues, AnAudioThatBeginsAndEndsInsideItsScore) {
  EXPECT_GT(demo_.AudioStart("10"), 0u);
  EXPECT_LT(demo_.AudioEnd("10"), demo_.Song("10").GetTimeline().GetMidiEndTicks());
  for (const DemoSong& song : AllSongs()) {
    EXPECT_EQ(demo_.AudioStart(song.number), song.audioStart) << song.name;
    EXPECT_EQ(demo_.AudioEnd(song.number), song.audioEnd) << song.name;
  }
}

TEST_F(DemoCues, EveryFileLoadsAtItsOwnDivision) {
  for (const DemoSong& song : AllSongs()) {
    EXPECT_EQ(demo_.Song(song.number).GetPulsesPerQuarterNote(), song.score.Division()) << song.name;
  }
}

TEST_F(DemoCues, TempoScalesAndTranspositionsAreShownInOneSongButNotInForce) {
  for (const DemoSong& song : AllSongs()) {
    EXPECT_EQ(demo_.Log(song.number).tempoScales.GetSize(), 0u) << song.name;
    EXPECT_EQ(demo_.Log(song.number).transposes.GetSize(), 0u) << song.name;
    const bool shown = song.cues.find("# [[tempo]]") != std::string::npos &&
                       song.cues.find("# [[transpose]]") != std::string::npos;
    EXPECT_EQ(shown, song.number == "3") << song.name;
  }
}

}  // namespace

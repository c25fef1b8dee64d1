#include "reference_suite/midi/timeline/timeline_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/reference_suite/midi/timeline/made_timeline.h"
#include "tests/support/throws_with_text.h"

namespace {

using made_timeline::Midi;
using tesk_midi::BuildTimeline;
using tesk_midi::BuiltTimeline;
using tesk_midi::TimelineError;
using test_support::ThrowsWithText;
using testing::IsEmpty;

// "0:500000 960:400000"
std::string TemposText(const BuiltTimeline& built) {
  std::string text;
  for (const TL::Tempo& tempo : built.timeline.GetTempos()) {
    if (!text.empty()) text += ' ';
    text += std::to_string(tempo.abs_time()) + ":" + std::to_string(tempo.GetMicrosecondsPerQuarter());
  }
  return text;
}

TEST(TimelineBuilder, SongOfLengthZeroIsRefused) {
  EXPECT_TRUE(
      ThrowsWithText<TimelineError>([] { BuildTimeline(Midi(0), 1); },
                                    "the song has a length of 0; let its last track end after the music."));
}

TEST(TimelineBuilder, MultipliesEveryTickAlike) {
  tesk_midi::StandardMidiFile midi = Midi(400, {{0, 3, 4}, {288, 4, 4}});
  midi.division = 96;
  midi.tempos = {{0, 500'000}, {100, 400'000}};
  midi.keys = {{50, -3, true}};
  midi.markers = {{60, "Dialogue"}};
  const BuiltTimeline built = BuildTimeline(midi, 1);
  EXPECT_EQ(built.pulsesPerQuarterNote, 480);
  EXPECT_EQ(TemposText(built), "0:500000 500:400000");
  ASSERT_EQ(built.timeline.GetMeters().GetSize(), 2u);
  EXPECT_EQ(built.timeline.GetMeters()[1].abs_time(), 1440u);
  EXPECT_EQ(built.timeline.GetMeters()[1].GetNumerator(), 4u);
  ASSERT_EQ(built.timeline.GetKeys().GetSize(), 1u);
  EXPECT_EQ(built.timeline.GetKeys()[0].abs_time(), 250u);
  EXPECT_EQ(built.timeline.GetKeys()[0].GetSharps(), -3);
  EXPECT_TRUE(built.timeline.GetKeys()[0].IsMinor());
  ASSERT_EQ(built.markers.size(), 1u);
  EXPECT_EQ(built.markers[0].abs_time(), 300u);
  EXPECT_EQ(built.markers[0].GetName(), "Dialogue");
  EXPECT_EQ(built.markers[0].GetLine(), 0);
  EXPECT_EQ(built.timeline.GetMidiEndTicks(), 2000u);
  EXPECT_EQ(built.timeline.GetAudioStartTicks(), 0u);
  EXPECT_EQ(built.timeline.GetAudioEndTicks(), 0u);
  EXPECT_THAT(built.warnings, IsEmpty());
}

TEST(TimelineBuilder, WithoutAnyTempo120HoldsThroughout) {
  tesk_midi::StandardMidiFile midi = Midi(1920);
  midi.tempos.clear();
  EXPECT_EQ(TemposText(BuildTimeline(midi, 1)), "0:500000");
}

TEST(TimelineBuilder, WithoutTempoAtTickZero120HoldsUntilTheFirst) {
  tesk_midi::StandardMidiFile midi = Midi(3840);
  midi.tempos = {{2400, 400'000}};
  EXPECT_EQ(TemposText(BuildTimeline(midi, 1)), "0:500000 2400:400000");
}

TEST(TimelineBuilder, OfTwoEventsAtOneTickTheLaterHolds) {
  tesk_midi::StandardMidiFile midi = Midi(3840, {{0, 4, 4}, {0, 3, 4}});
  midi.tempos = {{0, 500'000}, {0, 600'000}, {480, 400'000}, {480, 300'000}};
  midi.keys = {{0, 1, false}, {0, 2, false}, {480, 3, false}};
  const BuiltTimeline built = BuildTimeline(midi, 1);
  EXPECT_EQ(TemposText(built), "0:600000 480:300000");
  ASSERT_EQ(built.timeline.GetMeters().GetSize(), 1u);
  EXPECT_EQ(built.timeline.GetMeters()[0].GetNumerator(), 3u);
  ASSERT_EQ(built.timeline.GetKeys().GetSize(), 2u);
  EXPECT_EQ(built.timeline.GetKeys()[0].GetSharps(), 2);
  EXPECT_EQ(built.timeline.GetKeys()[1].GetSharps(), 3);
  EXPECT_EQ(made_timeline::BarsText(built.timeline), "1@0:3x480 2@1440:3x480 3@2880:3x480");
}

TEST(TimelineBuilder, FirstMeterStandsAtTickZero) {
  const BuiltTimeline built = BuildTimeline(Midi(3840, {{1920, 3, 4}}), 1);
  ASSERT_EQ(built.timeline.GetMeters().GetSize(), 2u);
  EXPECT_EQ(built.timeline.GetMeters()[0].abs_time(), 0u);
  EXPECT_EQ(built.timeline.GetMeters()[0].GetNumerator(), 4u);
  EXPECT_EQ(built.timeline.GetMeters()[0].GetDenominator(), 4u);
}

TL::Timeline Ends(unsigned midiEnd, unsigned audioEnd) {
  TL::Timeline timeline;
  timeline.SetMidiEndTicks(midiEnd);
  timeline.SetAudioEndTicks(audioEnd);
  return timeline;
}

TEST(PlaybackEnd, IsTheAudioEndOrTheEndOfTheMidi) {
  EXPECT_EQ(tesk_midi::GetPlaybackEnd(Ends(1920, 0)), 1920u);
  EXPECT_EQ(tesk_midi::GetPlaybackEnd(Ends(1920, 960)), 960u);
}

struct MovedEnd {
  unsigned midiEnd;
  unsigned audioEnd;
  unsigned loopEnd;
  unsigned midiEndAfter;
  unsigned audioEndAfter;
};

class MovedEnds : public testing::TestWithParam<MovedEnd> {};

TEST_P(MovedEnds, EndLiesTwoTicksBehindALoopThatReachedIt) {
  TL::Timeline timeline = Ends(GetParam().midiEnd, GetParam().audioEnd);
  tesk_midi::MoveEndBehindLoop(&timeline, GetParam().loopEnd);
  EXPECT_EQ(timeline.GetMidiEndTicks(), GetParam().midiEndAfter);
  EXPECT_EQ(timeline.GetAudioEndTicks(), GetParam().audioEndAfter);
}

INSTANTIATE_TEST_SUITE_P(Loops, MovedEnds,
                         testing::Values(MovedEnd{1920, 0, 0, 1920, 0},           // no loop
                                         MovedEnd{1920, 0, 1919, 1920, 0},        // ends one tick before
                                         MovedEnd{1920, 0, 1920, 1922, 0},        // ends with the MIDI
                                         MovedEnd{1920, 960, 960, 1920, 962},     // ends with the audio
                                         MovedEnd{1920, 1919, 1919, 1921, 1921},  // so do both ends
                                         MovedEnd{1920, 1920, 1920, 1922, 1922}));

}  // namespace

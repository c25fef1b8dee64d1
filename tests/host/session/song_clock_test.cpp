#include "host/session/song_clock.h"

#include <gtest/gtest.h>

#include "host/session/failure.h"
#include "suite/midi/song_data.h"

namespace orbel::host {
namespace {

// Four bars of 4/4 at 120 quarter notes a minute and 480 ticks each: 22.96875 samples a tick at 22,050 a
// second.
tesk_midi::SongData Song(TickIndex audioStart = 0, TickIndex audioEnd = 0) {
  TL::Timeline timeline;
  cmn::SequenceTemplate<TL::Tempo> tempos;
  tempos.Add(TL::Tempo(0, 500'000));
  timeline.SetTempos(tempos);
  cmn::SequenceTemplate<TL::Meter> meters;
  meters.Add(TL::Meter(0, 4, 4));
  timeline.SetMeters(meters);
  cmn::SequenceTemplate<TL::BarsBeats> bars;
  for (unsigned bar = 0; bar < 4; ++bar)
    bars.Add(TL::BarsBeats(bar * 1920, static_cast<int>(bar) + 1, 4, 480));
  timeline.SetBarsBeats(bars);
  timeline.SetMidiEndTicks(7680);
  timeline.SetAudioStartTicks(audioStart);
  timeline.SetAudioEndTicks(audioEnd);
  return tesk_midi::SongData("1", "Waltz", 480, timeline);
}

TEST(SongClock, EveryUnitOfOnePlace) {
  const tesk_midi::SongData song = Song();
  const SongClock clock(song, 22050.0);
  const Place place = clock.Find("2.3");
  EXPECT_EQ(place.position, "2.3.0");
  EXPECT_EQ(place.tick, 2880U);
  EXPECT_EQ(place.sample, 66150);
  EXPECT_EQ(place.seconds, 3.0);
}

TEST(SongClock, ASampleLiesInTheTickThatContainsIt) {
  const tesk_midi::SongData song = Song();
  const SongClock clock(song, 22050.0);
  EXPECT_EQ(clock.Find("sample:66149").tick, 2879U);
  EXPECT_EQ(clock.Find("sample:66149").sample, 66149);
  EXPECT_EQ(clock.Find("sample:66150").tick, 2880U);
  EXPECT_EQ(clock.Find("time:3").sample, 66150);
}

TEST(SongClock, CountsSamplesFromTheAudioStart) {
  const tesk_midi::SongData song = Song(1920, 5760);
  const SongClock clock(song, 22050.0);
  EXPECT_EQ(clock.TickToSample(100), 0);
  EXPECT_EQ(clock.TickToSample(1920), 0);
  EXPECT_EQ(clock.TickToSample(3840), 44100);
  EXPECT_EQ(clock.SampleToTick(0), 1920U);
  EXPECT_EQ(clock.GetStartTick(), 1920U);
  EXPECT_EQ(clock.GetEndTick(), 5760U) << "the audio end, when there is one";
}

TEST(SongClock, TheEndIsThatOfTheMidiWhenNoAudioEndIsGiven) {
  const tesk_midi::SongData song = Song();
  EXPECT_EQ(SongClock(song, 22050.0).GetEndTick(), 7680U);
}

// Every way of writing a place by its samples or its time, and every slip.
struct Written {
  const char* text;
  SampleCount sample;
};

class WrittenPlaces : public testing::TestWithParam<Written> {};

void PrintTo(const Written& written, std::ostream* out) {
  *out << written.text;
}

TEST_P(WrittenPlaces, AreFound) {
  const tesk_midi::SongData song = Song();
  EXPECT_EQ(SongClock(song, 22050.0).Find(GetParam().text).sample, GetParam().sample);
}

INSTANTIATE_TEST_SUITE_P(BySampleAndTime, WrittenPlaces,
                         testing::Values(Written{"sample:0", 0}, Written{"sample:66150", 66150},
                                         Written{"time:0", 0}, Written{"time:7.5", 165375},
                                         Written{"time:0:07.5", 165375}, Written{"time:0:0", 0},
                                         Written{"time:0:7.9999", 176398}));

struct Refused {
  const char* text;
  const char* why;
};

void PrintTo(const Refused& refused, std::ostream* out) {
  *out << refused.text;
}

class RefusedPlaces : public testing::TestWithParam<Refused> {};

TEST_P(RefusedPlaces, AreToldInWords) {
  const tesk_midi::SongData song = Song();
  const SongClock clock(song, 22050.0);
  try {
    clock.Find(GetParam().text);
    FAIL() << "found";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.what(), "\"" + std::string(GetParam().text) + "\": " + GetParam().why);
  }
}

constexpr const char* kNoFrames = "after \"sample:\" comes a number of frames, for instance sample:44100";
constexpr const char* kNoTime = "after \"time:\" come minutes and seconds, for instance time:1:07.250";
constexpr const char* kBehind = "lies after the end of the song, which is 5.1.0, sample 176400, 0:08.000";

INSTANTIATE_TEST_SUITE_P(BySampleAndTime, RefusedPlaces,
                         testing::Values(Refused{"sample:", kNoFrames}, Refused{"sample:x", kNoFrames},
                                         Refused{"sample:1x", kNoFrames}, Refused{"sample:-1", kNoFrames},
                                         Refused{"sample:99999999999999999999", kNoFrames},
                                         Refused{"sample:176401", kBehind}, Refused{"time:", kNoTime},
                                         Refused{"time:x", kNoTime}, Refused{"time:1x", kNoTime},
                                         Refused{"time:-1", kNoTime}, Refused{"time:inf", kNoTime},
                                         Refused{"time:nan", kNoTime}, Refused{"time:1:60", kNoTime},
                                         Refused{"time:1:x", kNoTime}, Refused{"time::1", kNoTime},
                                         Refused{"time:x:1", kNoTime}, Refused{"time:1x:1", kNoTime},
                                         Refused{"time:-1:1", kNoTime}, Refused{"time:0:-1", kNoTime},
                                         Refused{"time:8.1", kBehind}, Refused{"time:1:00", kBehind},
                                         Refused{"time:1e300", "lies after the end of the song"},
                                         Refused{"6", "bar 6 does not exist: the song has bars 1 to 4"}));

TEST(SongClock, PlacesPastTheEndAreRefusedInWords) {
  const tesk_midi::SongData song = Song();
  const SongClock clock(song, 22050.0);
  try {
    clock.Find("sample:176401");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_STREQ(
        failure.what(),
        "\"sample:176401\": lies after the end of the song, which is 5.1.0, sample 176400, 0:08.000");
  }
  EXPECT_EQ(clock.Find("sample:176400").tick, 7680U);
}

}  // namespace
}  // namespace orbel::host

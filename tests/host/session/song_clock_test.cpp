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

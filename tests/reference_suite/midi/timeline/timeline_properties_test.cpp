#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>

#include "suite/midi/positions.h"
#include "tests/reference_suite/midi/timeline/made_timeline.h"

namespace {

// Random songs; the seed is fixed, so that every run sees the same ones.
class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}
  unsigned Between(unsigned low, unsigned high) {
    return low + static_cast<unsigned>(engine_() % (std::uint64_t{high} - low + 1));
  }

 private:
  std::mt19937_64 engine_;
};

tesk_midi::StandardMidiFile RandomMidi(Dice* dice) {
  tesk_midi::StandardMidiFile midi = made_timeline::Midi(dice->Between(1, 30'000));
  midi.division = dice->Between(1, dice->Between(0, 1) != 0 ? 2000 : 32'767);
  midi.tempos.clear();
  for (unsigned i = dice->Between(0, 6); i > 0; --i) {
    midi.tempos.push_back({dice->Between(0, midi.endTick), dice->Between(1, 16'777'215)});
  }
  for (unsigned i = dice->Between(0, 6); i > 0; --i) {
    midi.meters.push_back({dice->Between(0, midi.endTick), dice->Between(1, 20), 1u << dice->Between(0, 6)});
  }
  const auto byTick = [](const auto& a, const auto& b) { return a.tick < b.tick; };
  std::sort(midi.tempos.begin(), midi.tempos.end(), byTick);
  std::sort(midi.meters.begin(), midi.meters.end(), byTick);
  return midi;
}

TEST(TimelineProperties, PositionsRoundTrip) {
  Dice dice(1);
  for (int run = 0; run < 300; ++run) {
    const tesk_midi::SongData song =
        made_timeline::Song(RandomMidi(&dice), static_cast<int>(dice.Between(0, 3)));
    const unsigned end = song.GetTimeline().GetMidiEndTicks();
    for (int i = 0; i < 100; ++i) {
      const unsigned tick = i == 0 ? end : dice.Between(0, end);
      const std::string text = tesk_midi::PositionToString(song, tick);
      ASSERT_EQ(tesk_midi::ParsePosition(song, text), tick) << text;
    }
  }
}

// The time of a stretch of ticks is ticks * microseconds / PPQ; as fractions of whole numbers.
TEST(TimelineProperties, TickScalingKeepsTheTimeOfEveryTempoExactly) {
  Dice dice(2);
  for (int run = 0; run < 2000; ++run) {
    const tesk_midi::StandardMidiFile midi = RandomMidi(&dice);
    const tesk_midi::BuiltTimeline built = tesk_midi::BuildTimeline(midi, 1);
    for (const TL::Tempo& tempo : built.timeline.GetTempos()) {
      // The tempo of the file that stands at the same time: its tick over the division is the same number of
      // quarter notes.
      const std::uint64_t quarters = std::uint64_t{tempo.abs_time()} * midi.division;
      ASSERT_EQ(quarters % built.pulsesPerQuarterNote, 0u);
      const std::uint64_t fileTick = quarters / built.pulsesPerQuarterNote;
      unsigned microseconds = 500'000;
      for (const tesk_midi::SmfTempo& written : midi.tempos) {
        if (written.tick == fileTick) microseconds = written.microsecondsPerQuarter;
      }
      ASSERT_EQ(tempo.GetMicrosecondsPerQuarter(), microseconds);
    }
    ASSERT_EQ(std::uint64_t{built.timeline.GetMidiEndTicks()} * midi.division,
              std::uint64_t{midi.endTick} * built.pulsesPerQuarterNote);
  }
}

TEST(TimelineProperties, NoTickIsLongerThanTwoAndAHalfMillisecondsAndNoMultipleIsLargerThanNeeded) {
  Dice dice(3);
  for (int run = 0; run < 2000; ++run) {
    const tesk_midi::StandardMidiFile midi = RandomMidi(&dice);
    const tesk_midi::BuiltTimeline built = tesk_midi::BuildTimeline(midi, 1);
    const unsigned ppq = built.pulsesPerQuarterNote;
    unsigned slowest = midi.tempos.empty() || midi.tempos.front().tick != 0 ? 500'000 : 0;
    for (const auto& tempo : midi.tempos) slowest = std::max(slowest, tempo.microsecondsPerQuarter);
    const auto fineEnough = [&](unsigned p) { return p >= 480 && slowest <= 2500 * p; };
    ASSERT_EQ(ppq % midi.division, 0u);
    ASSERT_TRUE(fineEnough(ppq)) << ppq;
    ASSERT_FALSE(ppq > midi.division && fineEnough(ppq - midi.division)) << ppq;
  }
}

TEST(TimelineProperties, BarsFollowEachOtherWithoutAGap) {
  Dice dice(4);
  for (int run = 0; run < 500; ++run) {
    const tesk_midi::SongData song = made_timeline::Song(RandomMidi(&dice), 1);
    const TL::Timeline& timeline = song.GetTimeline();
    const auto& bars = timeline.GetBarsBeats();
    ASSERT_EQ(bars[0].abs_time(), 0u);
    for (std::size_t i = 0; i < bars.GetSize(); ++i) {
      const bool last = i + 1 == bars.GetSize();
      const unsigned next = last ? timeline.GetMidiEndTicks() : bars[i + 1].abs_time();
      ASSERT_EQ(bars[i].GetBar(), static_cast<int>(i + 1));
      ASSERT_LT(bars[i].abs_time(), next);
      const std::uint64_t length = bars[i].GetBeats() * bars[i].GetSixteenthsPerBeat();
      ASSERT_LE(next, (bars[i].GetStartSixteenths() + length) / 16) << "bar " << i + 1;
      ASSERT_EQ(timeline.GetBarStart(next - 1), bars[i].abs_time());
      ASSERT_EQ(timeline.GetBarLineAtOrAfter(next), next);
    }
  }
}

TEST(TimelineProperties, LinesAroundATickEncloseIt) {
  Dice dice(5);
  for (int run = 0; run < 300; ++run) {
    const tesk_midi::SongData song = made_timeline::Song(RandomMidi(&dice), 1);
    const TL::Timeline& timeline = song.GetTimeline();
    for (int i = 0; i < 100; ++i) {
      const unsigned tick = dice.Between(0, timeline.GetMidiEndTicks());
      const unsigned beat = timeline.GetBeatStart(tick);
      ASSERT_LE(timeline.GetBarStart(tick), beat);
      ASSERT_LE(beat, tick);
      ASSERT_GE(timeline.GetBeatAtOrAfter(tick), tick);
      ASSERT_LE(timeline.GetBeatAtOrAfter(tick), timeline.GetBarLineAtOrAfter(tick));
      ASSERT_EQ(timeline.GetBeatAtOrAfter(beat), beat);
      ASSERT_EQ(timeline.GetBarBeatTick(tick).tick, tick - beat);
    }
  }
}

}  // namespace
